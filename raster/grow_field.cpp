#include "raster/grow_field.h"
#include <algorithm>
#include <cmath>
#include <functional>
#include <queue>
#include "raster/image.h"

KGrowField::KGrowField(const KImage& source, int32_t channel, KRange2 walls)
    : width(source.width), height(source.height), distance(size_t(width) * height, -1.0f),
      open(size_t(width) * height)
{
    const uint32_t low = static_cast<uint32_t>(std::max(walls.low, 0.0f) * 65535.0f);
    const uint32_t high = static_cast<uint32_t>(std::clamp(walls.high, 0.0f, 1.0f) * 65535.0f);
    source.EachRow([&](int32_t y, const uint16_t* w, const float* f) {
        for (int32_t x = 0; x < width; ++x) {
            const uint32_t v = KImage::ChannelValue(w, f, x, channel);
            open[size_t(y) * width + x] = !(low <= v && v <= high);
        }
    });
}

void KGrowField::Seed(int32_t x, int32_t y, float offset)
{
    if (x < 0 || y < 0 || x >= width || y >= height) return;
    const size_t at = size_t(y) * width + x;
    if (!open[at]) return;
    if (distance[at] < 0.0f || offset < distance[at]) distance[at] = offset;
    seeds.push_back(static_cast<int32_t>(at));
}

void KGrowField::Grow()
{
    // Shortest paths from all seeds at once, nearest pixel first.
    using Entry = std::pair<float, int32_t>;
    std::priority_queue<Entry, std::vector<Entry>, std::greater<Entry>> queue;
    for (int32_t at : seeds) queue.push({distance[at], at});
    constexpr float kDiagonal = 1.41421356f;
    while (!queue.empty()) {
        const auto [d, at] = queue.top();
        queue.pop();
        if (d > distance[at]) continue;
        const int32_t x = at % width, y = at / width;
        for (int32_t dy = -1; dy <= 1; ++dy)
            for (int32_t dx = -1; dx <= 1; ++dx) {
                const int32_t nx = x + dx, ny = y + dy;
                if ((dx == 0 && dy == 0) || nx < 0 || ny < 0 || nx >= width || ny >= height) continue;
                const int32_t n = ny * width + nx;
                if (!open[n]) continue;
                const float nd = d + (dx != 0 && dy != 0 ? kDiagonal : 1.0f);
                if (distance[n] < 0.0f || nd < distance[n]) {
                    distance[n] = nd;
                    queue.push({nd, n});
                }
            }
    }
    seeds.clear();
}
