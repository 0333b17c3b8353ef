#include "shape/create.h"
#include <potracelib.h>
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>
#include "data/table.h"
#include "raster/image.h"

namespace {

Vector2f OnEllipse(float rx, float ry, float a) { return {rx * std::cos(a), ry * std::sin(a)}; }

void Add(KShape& shape, Vector2f p, bool first)
{
    if (first) shape.MoveTo(p);
    else shape.LineTo(p);
}

}  // namespace

void KAddPrimitive(KShape& shape, int32_t type, Vector2f size, int32_t steps, float angle)
{
    const float hx = size.x * 0.5f, hy = size.y * 0.5f;
    // One step of a full turn, divided in double and kept as a float.
    const float step = static_cast<float>(2.0 * M_PI / static_cast<double>(std::max(steps, 1)));
    switch (type) {
    case 0: {
        const Vector2f cross[12] = {{hy, hx},   {-hy, hx},  {-hy, hy},  {-hx, hy}, {-hx, -hy}, {-hy, -hy},
                                    {-hy, -hx}, {hy, -hx},  {hy, -hy},  {hx, -hy}, {hx, hy},   {hy, hy}};
        for (int i = 0; i < 12; ++i) Add(shape, cross[i], i == 0);
        shape.Close();
        break;
    }
    case 2:
        KAddRoundRect(shape, -hx, hx, -hy, hy, 0.0f, steps);
        break;
    case 4:
        for (int32_t k = 0; k < steps; ++k) {
            const float a = static_cast<float>(k) * step + angle;
            const float b = (static_cast<float>(k) + 0.5f) * step + angle;
            Add(shape, OnEllipse(hx, hx, a), k == 0);
            shape.LineTo(OnEllipse(hy, hy, b));
        }
        if (steps > 0) shape.Close();
        break;
    default:  // 1 and 3
        for (int32_t k = 0; k < steps; ++k)
            Add(shape, OnEllipse(hx, hy, static_cast<float>(k) * step + angle), k == 0);
        if (steps > 2) shape.Close();
        break;
    }
}

void KAddRoundRect(KShape& shape, float x0, float x1, float y0, float y1, float radius, int32_t steps)
{
    if (radius <= 0.0f) {
        shape.MoveTo({x0, y0});
        shape.LineTo({x1, y0});
        shape.LineTo({x1, y1});
        shape.LineTo({x0, y1}, true);
        return;
    }
    radius = std::min(radius, 0.5f * std::min(std::fabs(x1 - x0), std::fabs(y1 - y0)));
    steps = std::max(steps, 1);
    // Corner centres and the quarter each arc sweeps, lower-left first.
    const Vector2f centre[4] = {{x0 + radius, y0 + radius}, {x1 - radius, y0 + radius},
                                {x1 - radius, y1 - radius}, {x0 + radius, y1 - radius}};
    const float quarter = 1.5707964f;
    bool first = true;
    for (int c = 0; c < 4; ++c) {
        const float from = quarter * static_cast<float>(c + 2);
        for (int32_t k = 0; k <= steps; ++k) {
            const float a = from + static_cast<float>(k) / static_cast<float>(steps) * quarter;
            Add(shape, centre[c] + Vector2f{std::cos(a), std::sin(a)} * radius, first);
            first = false;
        }
    }
    shape.Close();
}

void KAddPieSlice(KShape& shape, float angle0, float angle1, float rInner, float rOuter, int32_t steps)
{
    steps = std::max(steps, 1);
    const float sweep = angle1 - angle0;
    for (int32_t k = 0; k <= steps; ++k)
        Add(shape, OnEllipse(rOuter, rOuter, angle0 + sweep * static_cast<float>(k) / static_cast<float>(steps)), k == 0);
    if (rInner > 0.0f) {
        for (int32_t k = steps; k >= 0; --k)
            shape.LineTo(OnEllipse(rInner, rInner, angle0 + sweep * static_cast<float>(k) / static_cast<float>(steps)));
    } else {
        shape.LineTo({0.0f, 0.0f});
    }
    shape.Close();
}

namespace {

constexpr int kWordBits = 8 * sizeof(potrace_word);
constexpr potrace_word kTopBit = potrace_word(1) << (kWordBits - 1);

// One bit per pixel above the threshold, most significant bit first, a row
// of whole words per image row, row 0 first.
template <class T, class Level>
void FillBitmap(const KImage& image, potrace_word* map, int32_t wordsPerRow, Level level)
{
    for (int32_t y = 0; y < image.height; ++y) {
        const T* row = reinterpret_cast<const T*>(image.IsFloat() ? static_cast<const void*>(image.RowF(y))
                                                                  : static_cast<const void*>(image.RowW(y)));
        potrace_word* out = map + size_t(y) * wordsPerRow;
        for (int32_t w = 0; w < wordsPerRow; ++w) {
            const int32_t x0 = w * kWordBits, n = std::min(kWordBits, image.width - x0);
            potrace_word word = 0;
            for (int32_t b = 0; b < n; ++b)
                if (level(row + size_t(x0 + b) * 4)) word |= kTopBit >> b;
            out[w] = word;
        }
    }
}

}  // namespace

KShape* KTraceShape(const KImage& image, int32_t channel, float threshold)
{
    if (image.width <= 0 || image.height <= 0) return nullptr;
    const int32_t wordsPerRow = (image.width + kWordBits - 1) / kWordBits;
    std::vector<potrace_word> map;
    try {
        map.resize(size_t(wordsPerRow) * image.height);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    const bool luminance = channel < 0 || channel > 3;
    if (image.IsFloat()) {
        FillBitmap<float>(image, map.data(), wordsPerRow, [&](const float* p) {
            const float v = luminance ? 0.587f * p[1] + 0.299f * p[0] + 0.114f * p[2] : p[channel];
            return v > threshold;
        });
    } else {
        // The same test in 16-bit codes; the luminance is weighed in floats.
        const float scaled = threshold * 65535.0f;
        FillBitmap<uint16_t>(image, map.data(), wordsPerRow, [&](const uint16_t* p) {
            const float v = luminance ? 0.587f * p[1] + 0.299f * p[0] + 0.114f * p[2] : float(p[channel]);
            return v > scaled;
        });
    }
    potrace_bitmap_t bitmap{image.width, image.height, wordsPerRow, map.data()};
    std::unique_ptr<potrace_param_t, void (*)(potrace_param_t*)> param(potrace_param_default(), potrace_param_free);
    if (!param) return nullptr;
    std::unique_ptr<potrace_state_t, void (*)(potrace_state_t*)> state(potrace_trace(param.get(), &bitmap),
                                                                      potrace_state_free);
    if (!state || state->status != POTRACE_STATUS_OK) return nullptr;

    auto* shape = new KShape;
    const float k = 1.0f / static_cast<float>(image.width);
    auto at = [k](const potrace_dpoint_t& p) { return Vector2f{float(p.x) * k, float(p.y) * k}; };
    for (const potrace_path_t* path = state->plist; path; path = path->next) {
        const potrace_curve_t& c = path->curve;
        if (c.n <= 0) continue;
        KShape outline;
        outline.MoveTo(at(c.c[c.n - 1][2]));
        for (int i = 0; i < c.n; ++i) {
            if (c.tag[i] == POTRACE_CURVETO) {
                outline.AddCubic(at(c.c[i][0]), at(c.c[i][1]), at(c.c[i][2]));
            } else {
                outline.LineTo(at(c.c[i][1]));
                outline.LineTo(at(c.c[i][2]));
            }
        }
        outline.Close();
        shape->Append(&outline, true);
    }
    return shape;
}

float KDataNumber(const KDataChannel* channel, int32_t i, int32_t c, float fallback)
{
    if (!channel || i < 0 || i >= channel->count) return fallback;
    if (c < channel->floatComponents) return channel->floats[size_t(i) * channel->floatComponents + c];
    if (c < channel->intComponents) return static_cast<float>(channel->ints[size_t(i) * channel->intComponents + c]);
    return fallback;
}
