#include "raster/offsets.h"
#include <algorithm>
#include <atomic>
#include <cmath>
#include <vector>
#include "raster/image.h"

namespace {

int32_t ChannelValue(const KPixel& p, int32_t channel)
{
    if (channel >= 0 && channel <= 3) return static_cast<int32_t>(p[channel]);
    return static_cast<int32_t>(0.299f * p.r + 0.587f * p.g + 0.114f * p.b);
}

// Reads the picture through the mirror; outside the picture is 0.
int32_t Value(const KImage& img, int32_t x, int32_t y, int32_t channel, bool mirror)
{
    if (x < 0 || y < 0 || x >= img.width || y >= img.height) return 0;
    if (mirror) {
        x = img.width - x - 1;
        y = img.height - y - 1;
    }
    KPixel p;
    img.GetPixel(x, y, p, kEdgeBlack);
    return ChannelValue(p, channel);
}

void Push(KOffsetsList& list, int32_t x, int32_t y, int32_t weight, bool negative = false)
{
    list.entries[list.count++] = {x, y, weight, negative};
}

// Walks a stroke from the centre along its major axis; at each unit step the
// minor-axis position is covered by `width` pixels of box weight, 65535 in all.
void StrokeInto(std::vector<KOffsetsEntry>& out, float angle, float length, float aspect, bool roundUp,
                float width)
{
    const float fx = std::cos(angle) * aspect;
    const float fy = -std::sin(angle);
    const bool alongX = std::fabs(fx) >= std::fabs(fy);
    const float major = alongX ? fx : fy;
    const float minor = alongX ? fy : fx;
    float steps = std::fabs(major) * length + 1.0f;
    if (roundUp) steps = std::ceil(steps);
    const int32_t n = static_cast<int32_t>(steps);
    const float slope = major != 0.0f ? minor / std::fabs(major) : 0.0f;
    const int32_t dir = major < 0.0f ? -1 : 1;

    out.clear();
    out.push_back({0, 0, 65535, false});
    for (int32_t i = 1; i < n; ++i) {
        const int32_t along = i * dir;
        const float lo = static_cast<float>(i) * slope - 0.5f * (width - 1.0f);
        const float hi = lo + width;
        const int32_t first = static_cast<int32_t>(std::floor(lo));
        const int32_t last = static_cast<int32_t>(std::ceil(hi)) - 1;
        int32_t total = 0;
        for (int32_t m = first; m <= last; ++m) {
            const float cover = std::min(hi, m + 1.0f) - std::max(lo, static_cast<float>(m));
            // The last pixel takes what rounding left, so each step sums to 65535.
            int32_t w = m == last ? 65535 - total
                                  : static_cast<int32_t>(cover / width * 65535.0f + 0.5f);
            if (w <= 0) continue;
            total += w;
            if (alongX) out.push_back({along, m, w, false});
            else out.push_back({m, along, w, false});
        }
    }
}

KOffsetsList* Stroke(float angle, float length, float aspect, bool roundUp, float width)
{
    std::vector<KOffsetsEntry> entries;
    StrokeInto(entries, angle, length, aspect, roundUp, width);
    auto* list = new KOffsetsList;
    list->entries = new KOffsetsEntry[std::max<size_t>(entries.size(), static_cast<size_t>(2 * length + 5))];
    for (const KOffsetsEntry& e : entries) list->entries[list->count++] = e;
    return list;
}

}  // namespace

float KAngleQuadrant(float a, int32_t& stepX, int32_t& stepY)
{
    if (a < 0.0f) a += 6.2831855f;
    if (a <= 1.5707964f) {
        stepX = 1; stepY = 1;
        return a;
    }
    if (a <= 3.1415927f) {
        stepX = -1; stepY = 1;
        return 3.1415927f - a;
    }
    if (a <= 4.712389f) {
        stepX = -1; stepY = -1;
        return a - 3.1415927f;
    }
    stepX = 1; stepY = -1;
    return 6.2831855f - a;
}

KOffsetsTable::KOffsetsTable(int32_t count, float asp, bool rounded, bool straight)
    : angleCount(count), aspect(asp), thick(!straight), useEdge(rounded)
{
    lists = new KOffsetsList*[std::max(count, 1)]();
}

KOffsetsTable::~KOffsetsTable()
{
    for (int32_t i = 0; i < angleCount; ++i) delete lists[i];
    delete[] lists;
}

KOffsetsList* KOffsetsTable::FromImage(const KImage* image, int32_t channel, bool mirror,
                                       int32_t mode)
{
    auto* list = new KOffsetsList;
    if (!image || image->width <= 0 || image->height <= 0) return list;
    const int32_t w = image->width, h = image->height, cx = w / 2, cy = h / 2;
    if (mode == kOffsetsRows) {
        list->entries = new KOffsetsEntry[size_t(w + 1) * h];
        for (int32_t y = 0; y < h; ++y) {
            int32_t previous = 0;
            for (int32_t x = 0; x <= w; ++x) {
                const int32_t current = Value(*image, x, y, channel, mirror);
                const int32_t d = previous - current;
                if (d != 0 && (previous == 0 || current == 0))
                    Push(*list, x - cx - 1, y - cy, std::abs(d), d < 0);
                previous = current;
            }
        }
    } else if (mode == kOffsetsColumns) {
        list->entries = new KOffsetsEntry[size_t(h + 1) * w];
        for (int32_t x = 0; x < w; ++x) {
            int32_t previous = 0;
            for (int32_t y = 0; y <= h; ++y) {
                const int32_t current = Value(*image, x, y, channel, mirror);
                const int32_t d = previous - current;
                if (d != 0 && (previous == 0 || current == 0))
                    Push(*list, x - cx, y - cy - 1, std::abs(d), d < 0);
                previous = current;
            }
        }
    } else {
        list->entries = new KOffsetsEntry[size_t(w) * h];
        for (int32_t y = 0; y < h; ++y)
            for (int32_t x = 0; x < w; ++x) {
                const int32_t v = Value(*image, x, y, channel, mirror);
                if (v != 0) Push(*list, x - cx, y - cy, v);
            }
    }
    return list;
}

KOffsetsList* KOffsetsTable::BuildStraight(float angle, float length, float aspect, bool roundUp)
{
    return Stroke(angle, length, aspect, roundUp, 1.0f);
}

void KOffsetsTable::BuildStraightInto(std::vector<KOffsetsEntry>& out, float angle, float length, float aspect,
                                      bool roundUp)
{
    StrokeInto(out, angle, length, aspect, roundUp, 1.0f);
}

KOffsetsList* KOffsetsTable::BuildThick(float angle, float length, float aspect, bool roundUp)
{
    return Stroke(angle, length, aspect, roundUp, 2.0f);
}

const KOffsetsList* KOffsetsTable::Get(int32_t index, float length)
{
    if (index < 0 || index >= angleCount) return nullptr;
    std::atomic_ref<KOffsetsList*> slot(lists[index]);
    if (KOffsetsList* ready = slot.load(std::memory_order_acquire)) return ready;
    std::lock_guard<std::mutex> guard(lock);
    if (!slot.load(std::memory_order_relaxed)) {
        const float angle = static_cast<float>(index) * 6.2831855f / static_cast<float>(angleCount);
        slot.store(thick ? BuildThick(angle, length, aspect, useEdge)
                         : BuildStraight(angle, length, aspect, useEdge),
                   std::memory_order_release);
    }
    return slot.load(std::memory_order_relaxed);
}
