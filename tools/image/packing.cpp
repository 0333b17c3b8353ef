#include "tools/image/packing.h"
#include <algorithm>
#include <cmath>
#include <queue>
#include "raster/image.h"

void KPackSettings::Declare(KParameterList& list)
{
    list.BeginNest("Pack", 0, 0);
    list.AddSlider(&tolerance, 0.05f, "Pack Tolerance", "PTol"_id, 0, 0.0, 0.5);
    list.AddSlider(&minimumSize, 4, "Pack Minimum Size", "PMiS"_id, 0, 1, 256);
    list.AddSlider(&maximumSize, 128, "Pack Maximum Size", "PMaS"_id, 0, 2, 4096);
    list.AddSlider(&maximumItems, 5000, "Pack Maximum Items", "PMaI"_id, 0, 1, 100000);
    list.AddCheckbox(&skipTransparent, true, "Pack Skip Transparent", "PSkT"_id, 0, 0);
    list.EndNest();
}

namespace {

struct Piece {
    int32_t left, bottom, right, top;
    KPixelF mean;
    float deviation;  // the largest of the four channels'

    int64_t Area() const { return int64_t(right - left) * (top - bottom); }
    // Larger first, then lower, then further left: one order on every machine.
    bool operator<(const Piece& o) const
    {
        if (Area() != o.Area()) return Area() < o.Area();
        if (bottom != o.bottom) return bottom > o.bottom;
        return left > o.left;
    }
};

Piece Measure(const KImage& image, int32_t left, int32_t bottom, int32_t right, int32_t top)
{
    double sum[4] = {}, squares[4] = {};
    for (int32_t y = bottom; y < top; ++y) {
        for (int32_t x = left; x < right; ++x) {
            float v[4];
            if (image.IsFloat()) {
                std::copy_n(image.RowF(y) + 4 * x, 4, v);
            } else {
                const uint16_t* w = image.RowW(y) + 4 * x;
                for (int c = 0; c < 4; ++c) v[c] = KIntToFloat(w[c]);
            }
            for (int c = 0; c < 4; ++c) sum[c] += v[c], squares[c] += double(v[c]) * v[c];
        }
    }
    const double n = double(right - left) * (top - bottom);
    Piece p{left, bottom, right, top, {}, 0.0f};
    for (int c = 0; c < 4; ++c) {
        const double mean = sum[c] / n;
        p.mean[c] = static_cast<float>(mean);
        p.deviation = std::max(p.deviation, static_cast<float>(std::sqrt(std::max(0.0, squares[c] / n - mean * mean))));
    }
    return p;
}

}  // namespace

std::vector<KPackItem> KPack(const KImage& image, const KPackSettings& s, float scale,
                             std::vector<int32_t>* cover)
{
    const int32_t width = image.width, height = image.height;
    if (width < 1 || height < 1) return {};
    const int32_t smallest = std::max(1, int32_t(std::lround(float(s.minimumSize) * scale)));
    const int32_t largest = std::max(smallest, int32_t(std::lround(float(s.maximumSize) * scale)));
    const size_t budget = size_t(std::max(1, s.maximumItems));

    std::priority_queue<Piece> waiting;
    std::vector<Piece> kept;
    waiting.push(Measure(image, 0, 0, width, height));
    while (!waiting.empty()) {
        const Piece p = waiting.top();
        waiting.pop();
        const int32_t w = p.right - p.left, h = p.top - p.bottom;
        const bool across = w >= h;  // halve the longer side
        const int32_t side = across ? w : h;
        const bool wants = p.deviation > s.tolerance || std::max(w, h) > largest;
        if (!wants || side < 2 * smallest || kept.size() + waiting.size() + 2 > budget) {
            kept.push_back(p);
            continue;
        }
        const int32_t cut = side / 2;
        if (across) {
            waiting.push(Measure(image, p.left, p.bottom, p.left + cut, p.top));
            waiting.push(Measure(image, p.left + cut, p.bottom, p.right, p.top));
        } else {
            waiting.push(Measure(image, p.left, p.bottom, p.right, p.bottom + cut));
            waiting.push(Measure(image, p.left, p.bottom + cut, p.right, p.top));
        }
    }
    std::sort(kept.begin(), kept.end(), [](const Piece& a, const Piece& b) { return b < a; });

    if (cover) cover->assign(size_t(width) * height, -1);
    std::vector<KPackItem> items;
    const float fw = float(width), fh = float(height);
    for (const Piece& p : kept) {
        if (s.skipTransparent && p.mean.a <= 0.0f) continue;
        KPackItem item;
        item.x = (float(p.left) + float(p.right)) * 0.5f / fw;
        item.y = (float(p.bottom) + float(p.top)) * 0.5f / fh;
        item.w = float(p.right - p.left) / fw;
        item.h = float(p.top - p.bottom) / (fw * image.PixelAspect());
        item.color = p.mean;
        item.left = p.left, item.bottom = p.bottom, item.right = p.right, item.top = p.top;
        if (cover)
            for (int32_t y = p.bottom; y < p.top; ++y)
                std::fill_n(cover->begin() + ptrdiff_t(y) * width + p.left, p.right - p.left, int32_t(items.size()));
        items.push_back(item);
    }
    return items;
}
