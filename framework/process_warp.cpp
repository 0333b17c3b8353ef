#include <algorithm>
#include <cmath>
#include "framework/process_rows.h"

namespace {
constexpr float kNoMap = -1e30f;  // grid entry of a failed mapping
}  // namespace

// ---------------------------------------------------------------------------
// Inverse

KProcessImageInverse::KProcessImageInverse(KImage* src, KImage** tgt, KEffectImage* e,
                                           const KRenderSettings& s)
    : KProcessImageWarp(src, tgt, e, s)
{
    // Positions run 0..1 across and 0..1/aspect down, in square units, so that
    // a warp's circles stay round on any picture. A one-pixel axis has no span
    // to normalise by; take 1 so it maps to 0.
    uScale = static_cast<float>(std::max(width - 1, 1));
    vScale = static_cast<float>(std::max(height - 1, 1)) * pictureAspect;
    if (settings.filter == 2 && source) source->UseSAT();
    if (settings.underSample >= 2 && source) {
        gridWidth = source->width / settings.underSample + 2;
        gridHeight = source->height / settings.underSample + 2;
        grid.assign(size_t(gridWidth) * gridHeight, KPosition{});
    }
}

int32_t KProcessImageInverse::PassCount()
{
    return (skip || settings.underSample < 2) ? 1 : 2;
}

int32_t KProcessImageInverse::JobCount(int32_t pass)
{
    if (pass == 0 && !skip && settings.underSample >= 2) return gridHeight;
    return height;
}

bool KProcessImageInverse::Map(float x, float y, KPosition& out) const
{
    KPosition in{x / uScale, y / vScale};
    if (!Warp()->InverseMap(out, in)) return false;
    out.x *= uScale;
    out.y *= vScale;
    return true;
}

bool KProcessImageInverse::GridAt(float x, float y, KPosition& out) const
{
    const float us = static_cast<float>(settings.underSample);
    float gx = std::clamp(x / us, 0.0f, static_cast<float>(gridWidth - 1) - 1e-3f);
    float gy = std::clamp(y / us, 0.0f, static_cast<float>(gridHeight - 1) - 1e-3f);
    int32_t i = static_cast<int32_t>(gx), j = static_cast<int32_t>(gy);
    float fx = gx - i, fy = gy - j;
    const KPosition* g = grid.data() + size_t(j) * gridWidth + i;
    const KPosition &a = g[0], &b = g[1], &c = g[gridWidth], &d = g[gridWidth + 1];
    if (a.x == kNoMap || b.x == kNoMap || c.x == kNoMap || d.x == kNoMap) return false;
    float top = a.x + (b.x - a.x) * fx, bottom = c.x + (d.x - c.x) * fx;
    out.x = top + (bottom - top) * fy;
    top = a.y + (b.y - a.y) * fx;
    bottom = c.y + (d.y - c.y) * fx;
    out.y = top + (bottom - top) * fy;
    return true;
}

void KProcessImageInverse::GridRow(int32_t j)
{
    if (j < 0 || j >= gridHeight) return;
    const int32_t us = settings.underSample;
    KPosition* row = grid.data() + size_t(j) * gridWidth;
    for (int32_t i = 0; i < gridWidth; ++i) {
        KPosition m;
        if (Map(static_cast<float>(i * us), static_cast<float>(j * us), m)) row[i] = m;
        else row[i] = {kNoMap, kNoMap};
    }
}

void KProcessImageInverse::DoJob(int32_t y, int32_t pass)
{
    if (skip) return CopyRow(y);
    const bool under = settings.underSample >= 2;
    if (under && pass == 0) return GridRow(y);
    // The serial run asks for the job count of pass 0 on every pass.
    if (y < 0 || y >= height) return;
    const bool isFloat = settings.depth == 2;
    if (settings.filter == 2) {
        if (isFloat) AreaRow<KPixelF>(y, under);
        else AreaRow<KPixel>(y, under);
    } else {
        if (isFloat) PointRow<KPixelF>(y, under);
        else PointRow<KPixel>(y, under);
    }
}

template <class P> void KProcessImageInverse::PointRow(int32_t y, bool interpolated)
{
    using A = RowAccess<P>;
    using T = typename A::T;
    constexpr int32_t kChunk = 64;
    T* out = A::Row(**target, y);
    const KImage* mask = settings.warpMask;
    const int32_t edges = settings.edges;
    const bool nearest = settings.filter == 0;
    // A chunk of pixels is mapped, then read in one call, then streamed out.
    enum : uint8_t { kMapped, kFailed, kOwn };
    uint8_t how[kChunk];
    int32_t xy[2 * kChunk];
    alignas(16) P got[kChunk];
    for (int32_t x0 = 0; x0 < width; x0 += kChunk) {
        const int32_t m = std::min(kChunk, width - x0);
        for (int32_t i = 0; i < m; ++i) {
            const int32_t x = x0 + i;
            if (mask) {
                KPixelF a;
                mask->GetPixel(x, y, a, kEdgeBlack);
                if (a.a == 0.0f) {
                    how[i] = kOwn;
                    xy[2 * i] = x << 16;
                    xy[2 * i + 1] = y << 16;
                    continue;
                }
            }
            KPosition s;
            const bool ok = interpolated ? GridAt(static_cast<float>(x), static_cast<float>(y), s)
                                         : Map(static_cast<float>(x), static_cast<float>(y), s);
            how[i] = ok ? kMapped : kFailed;
            xy[2 * i] = ok ? KFixed(s.x) : 0;
            xy[2 * i + 1] = ok ? KFixed(s.y) : 0;
        }
        if (nearest) {
            // Nearest reads truncate the mapped position toward zero. A whole
            // position that went through the normalised space comes back a hair
            // short of itself, so a 1/256-pixel slack keeps an unmoved pixel in place.
            for (int32_t i = 0; i < m; ++i) {
                if (how[i] == kFailed) continue;
                auto whole = [](int32_t v) { return (v < 0 ? v - 256 : v + 256) / 65536; };
                const int32_t sx = whole(xy[2 * i]), sy = whole(xy[2 * i + 1]);
                source->GetPixel(sx, sy, got[i], edges);
            }
        } else {
            source->SamplePixels(xy, m, got, edges);
        }
        for (int32_t i = 0; i < m; ++i) {
            if (how[i] == kOwn) source->GetPixel(x0 + i, y, got[i], edges);
            else if (how[i] == kFailed) got[i] = P{};
        }
        if constexpr (sizeof(P) == 4 * sizeof(T)) {
            // Float pixels are already laid out as the row stores them.
            KStreamCopy(out + 4 * x0, got, size_t(m) * sizeof(P));
        } else {
            alignas(16) T done[kChunk * 4];
            for (int32_t i = 0; i < m; ++i) A::Store(done + 4 * i, got[i]);
            KStreamCopy(out + 4 * x0, done, size_t(m) * 4 * sizeof(T));
        }
    }
    KStreamFence();
}

template <class P> void KProcessImageInverse::AreaRow(int32_t y, bool interpolated)
{
    using A = RowAccess<P>;
    typename A::T* out = A::Row(**target, y);
    const KImage* mask = settings.warpMask;
    const int32_t edges = settings.edges;
    const float top = static_cast<float>(y) - 0.5f, bottom = static_cast<float>(y) + 0.5f;
    auto map = [&](float x, float yy, KPosition& m) {
        return interpolated ? GridAt(x, yy, m) : Map(x, yy, m);
    };
    // The right pair of one column is the left pair of the next.
    KPosition lt, lb, rt, rb;
    bool leftOk = map(-0.5f, top, lt) & map(-0.5f, bottom, lb);
    for (int32_t x = 0; x < width; ++x, out += 4) {
        const float right = static_cast<float>(x) + 0.5f;
        bool rightOk = map(right, top, rt) & map(right, bottom, rb);
        P p;
        bool unmasked = false;
        if (mask) {
            KPixelF m;
            mask->GetPixel(x, y, m, kEdgeBlack);
            unmasked = m.a == 0.0f;
        }
        if (unmasked) {
            source->GetPixel(x, y, p, edges);
        } else if (leftOk && rightOk) {
            const float quad[8] = {lt.x, lt.y, rt.x, rt.y, rb.x, rb.y, lb.x, lb.y};
            source->SampleArea(quad, p, edges);
        }
        A::Store(out, p);
        lt = rt;
        lb = rb;
        leftOk = rightOk;
    }
}
