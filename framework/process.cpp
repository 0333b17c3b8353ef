#include "framework/process.h"
#include <algorithm>
#include <cstring>
#include <type_traits>
#include "raster/image.h"
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

// Row load and store per depth; the two paths stay separate code.
template <class P> struct RowAccess;

template <> struct RowAccess<KPixel> {
    using T = uint16_t;
    using Stored = KPixelW;
    static T* Row(const KImage& img, int32_t y) { return img.RowW(y); }
    // One 16-byte store per pixel: an effect that reads the pixel whole would
    // stall on a value assembled from narrower stores.
    static void Load(const T* s, KPixel& p)
    {
#if defined(__SSE2__)
        __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(&p), _mm_unpacklo_epi16(v, _mm_setzero_si128()));
#else
        p.r = s[0]; p.g = s[1]; p.b = s[2]; p.a = s[3];
#endif
    }
    // Each channel's low 16 bits, as the narrowing casts keep them.
    static void Store(T* d, const KPixel& p)
    {
#if defined(__SSE2__)
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&p));
        const __m128i halves = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, 0x08), 0x08);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(d), _mm_shuffle_epi32(halves, 0x08));
#else
        d[0] = static_cast<T>(p.r); d[1] = static_cast<T>(p.g);
        d[2] = static_cast<T>(p.b); d[3] = static_cast<T>(p.a);
#endif
    }
    static bool AlphaZero(const T* s) { return s[3] == 0; }
};

template <> struct RowAccess<KPixelF> {
    using T = float;
    using Stored = KPixelF;
    static T* Row(const KImage& img, int32_t y) { return img.RowF(y); }
    // Whole-pixel copies: the effect reads the pixel as one 16-byte value, and
    // four scalar stores in front of that read would stall store forwarding.
    static void Load(const T* s, KPixelF& p)
    {
#if defined(__SSE2__)
        _mm_storeu_ps(&p.r, _mm_loadu_ps(s));
#else
        std::memcpy(static_cast<void*>(&p), s, sizeof p);
#endif
    }
    static void Store(T* d, const KPixelF& p) { std::memcpy(d, &p, sizeof p); }
    static bool AlphaZero(const T* s) { return s[3] == 0.0f; }
};

// Pre-divide and post-multiply, colour by alpha; a zero alpha leaves colour
// alone. One form for every pixel type: the channel type picks the path.
template <class P> inline void Divide(P& p)
{
    if constexpr (std::is_floating_point_v<std::remove_reference_t<decltype(p.r)>>) {
        if (p.a == 0.0f) return;
        const float k = 1.0f / p.a;
        p.r *= k; p.g *= k; p.b *= k;
    } else {
        if (p.a == 0) return;
        for (int c = 0; c < 3; ++c) {
            const auto v = static_cast<uint32_t>((static_cast<uint64_t>(p[c]) * 65535u + p.a / 2) / p.a);
            p[c] = v > 65535u ? 65535u : v;
        }
    }
}

template <class P> inline void Multiply(P& p)
{
    if constexpr (std::is_floating_point_v<std::remove_reference_t<decltype(p.r)>>) {
        p.r *= p.a; p.g *= p.a; p.b *= p.a;
    } else {
        for (int c = 0; c < 3; ++c) p[c] = KScaleInt(p[c], p.a);
    }
}

// Copies into `into` each channel whose switch is on.
template <class P, class Q> inline void MergeOn(P& into, const Q& from, const KRenderSettings& s)
{
    if (s.red) into.r = from.r;
    if (s.green) into.g = from.g;
    if (s.blue) into.b = from.b;
    if (s.alpha) into.a = from.a;
}

// Copies into `into` each channel whose switch is off.
template <class P, class Q> inline void MergeOff(P& into, const Q& from, const KRenderSettings& s)
{
    if (!s.red) into.r = from.r;
    if (!s.green) into.g = from.g;
    if (!s.blue) into.b = from.b;
    if (!s.alpha) into.a = from.a;
}

inline void Colour(KEffectColor* e, KPixelF& out, const KPixelF& in) { e->ProcessColor(out, in); }
inline void Colour(KEffectColor* e, KPixel& out, const KPixel& in) { e->ProcessColorInt(out, in); }
inline void Colours(KEffectColor* e, KPixelF* out, const KPixelF* in, int32_t n)
{
    e->ProcessColors(out, in, n);
}
inline void Colours(KEffectColor* e, KPixelW* out, const KPixelW* in, int32_t n)
{
    e->ProcessColorsInt(out, in, n);
}

// A chunk of pixels left unset: each is written before it is read, and
// clearing them per chunk would cost as much as the copies.
template <class P, int N> union Chunk {
    Chunk() {}
    alignas(16) P at[N];
    operator P*() { return at; }
};

constexpr float kNoMap = -1e30f;  // grid entry of a failed mapping

}  // namespace

// ---------------------------------------------------------------------------
// KProcessImage

KProcessImage::KProcessImage(KImage* src, KImage** tgt, KEffectImage* e,
                             const KRenderSettings& s)
{
    settings = s;
    skip = false;
    started = false;
    source = src;
    target = tgt;
    if (target && *target) {
        width = (*target)->width;
        height = (*target)->height;
        pixelAspect = (*target)->PixelAspect();
        pictureAspect = (*target)->PictureAspect();
    }
    effect = e;
    if (!settings.red && !settings.green && !settings.blue && !settings.alpha) {
        skip = true;
    } else {
        bool ok = effect->Start(source, target, effect);
        started = true;
        skip = !ok;
    }
}

KProcessImage::~KProcessImage()
{
    if (started) effect->Stop(target);
}

void KProcessImage::Run()
{
    int32_t passes = PassCount();
    for (int32_t pass = 0; pass < passes; ++pass) {
        int32_t jobs = JobCount(0);
        for (int32_t job = 0; job < jobs; ++job) DoJob(job, pass);
    }
}

void KProcessImage::EndPass(int32_t pass)
{
    if (pass != PassCount() - 1 || !(settings.postBlur > 0.0f) || !target || !*target) return;
    int32_t mask = (settings.red ? 1 : 0) | (settings.green ? 2 : 0) | (settings.blue ? 4 : 0) |
                   (settings.alpha ? 8 : 0);
    KImage* blurred = (*target)->Blur(settings.postBlur, settings.postBlur,
                                      settings.quick ? 0 : 4, mask, 1.0f, 1.0f);
    KImage::ReplaceIn(target, blurred);
}

void KProcessImage::CopyRow(int32_t y)
{
    KImage* out = *target;
    if (y < 0 || y >= out->height) return;
    if (!source || y >= source->height || source->IsFloat() != out->IsFloat()) {
        std::memset(out->RowW(y), 0, out->RowBytes());
        return;
    }
    size_t bytes = std::min(out->RowBytes(), source->RowBytes());
    std::memcpy(out->RowW(y), source->RowW(y), bytes);
    int32_t n = std::min(out->width, source->width);
    for (int32_t i = 0; i < out->AuxCount(); ++i) {
        const float* from = source->AuxPlane(out->AuxChannel(i));
        if (from) std::memcpy(out->AuxPlane(out->AuxChannel(i)) + size_t(y) * out->width,
                              from + size_t(y) * source->width, n * sizeof(float));
    }
}

// ---------------------------------------------------------------------------
// Colour: one call per pixel, or n * n calls with super-sampling.

int32_t KProcessImageColor::JobCount(int32_t) { return source ? source->height : height; }

void KProcessImageColor::DoJob(int32_t y, int32_t)
{
    if (skip) return CopyRow(y);
    bool isFloat = settings.depth == 2;
    if (settings.superSampling > 1) {
        if (isFloat) SuperSampledRow<KPixelF>(y);
        else SuperSampledRow<KPixel>(y);
    } else {
        if (isFloat) Row<KPixelF>(y);
        else Row<KPixel>(y);
    }
}

template <class P> void KProcessImageColor::Row(int32_t y)
{
    using A = RowAccess<P>;
    using T = typename A::T;
    using S = typename A::Stored;
    constexpr int32_t kChunk = 64;
    auto* e = static_cast<KEffectColor*>(effect);
    const T* in = A::Row(*source, y);
    T* out = A::Row(**target, y);
    const int32_t n = std::min(width, source->width);
    const bool all = AllChannels();
    const bool pre = settings.preDivide;
    // Pixels are finished in a small buffer and streamed out a chunk at a time.
    Chunk<S, kChunk> done;
    for (int32_t x0 = 0; x0 < n; x0 += kChunk) {
        const int32_t m = std::min(kChunk, n - x0);
        const T* s = in + 4 * x0;
        // Ask for the next chunk now: a slow effect leaves the memory idle
        // between its reads, and each read would otherwise wait for it.
        if (x0 + 2 * kChunk <= n)
            for (size_t b = 0; b < kChunk * sizeof(S); b += 64)
                __builtin_prefetch(reinterpret_cast<const char*>(s + 4 * kChunk) + b);
        if (all && !pre) {
            // The effect reads the row as stored and writes the buffer.
            Colours(e, done, reinterpret_cast<const S*>(s), m);
        } else {
            Chunk<S, kChunk> from;
            for (int32_t i = 0; i < m; ++i) {
                P p;
                A::Load(s + 4 * i, p);
                if (pre) Divide(p);
                A::Store(&from[i].r, p);
            }
            Colours(e, done, from, m);
            for (int32_t i = 0; i < m; ++i) {
                P o;
                A::Load(&done[i].r, o);
                if (pre) Multiply(o);
                if (!all) {
                    P p;
                    A::Load(s + 4 * i, p);
                    MergeOn(p, o, settings);
                    o = p;
                }
                A::Store(&done[i].r, o);
            }
        }
        KStreamCopy(out + 4 * x0, done, size_t(m) * sizeof(S));
    }
    KStreamFence();
}

template <class P> void KProcessImageColor::SuperSampledRow(int32_t y)
{
    using A = RowAccess<P>;
    auto* e = static_cast<KEffectColor*>(effect);
    typename A::T* out = A::Row(**target, y);
    const int32_t n = settings.superSampling;
    const float step = settings.filterSize / static_cast<float>(n);
    const float start = static_cast<float>(n - 1) * -0.5f * step;
    const float inv = 1.0f / static_cast<float>(n * n);
    for (int32_t x = 0; x < width; ++x, out += 4) {
        P last, o;
        float fsum[4] = {0, 0, 0, 0};
        uint32_t isum[4] = {0, 0, 0, 0};
        for (int32_t i = 0; i < n; ++i) {
            float sy = static_cast<float>(y) + start + static_cast<float>(i) * step;
            for (int32_t j = 0; j < n; ++j) {
                float sx = static_cast<float>(x) + start + static_cast<float>(j) * step;
                source->SamplePixel(sx, sy, last, kEdgeDuplicate);
                P c = last;
                if (settings.preDivide) Divide(c);
                Colour(e, o, c);
                if (settings.preDivide) Multiply(o);
                for (int k = 0; k < 4; ++k) {
                    if constexpr (std::is_same_v<P, KPixelF>) fsum[k] += o[k];
                    else isum[k] += o[k];
                }
            }
        }
        for (int k = 0; k < 4; ++k) {
            if constexpr (std::is_same_v<P, KPixelF>) o[k] = fsum[k] * inv;
            else o[k] = isum[k] / static_cast<uint32_t>(n * n);
        }
        // Switched-off channels keep the last sample's, not the centre pixel's.
        MergeOn(last, o, settings);
        A::Store(out, last);
    }
}

// ---------------------------------------------------------------------------
// Pixel: the effect reads the source itself.

void KProcessImagePixel::DoJob(int32_t y, int32_t)
{
    if (skip) return CopyRow(y);
    auto* e = static_cast<KEffectPixel*>(effect);
    KImage& out = **target;
    const bool keep = !effect->HasFeature(kFeatureSource) && !AllChannels() && source;
    if (settings.depth == 2) {
        float* o = out.RowF(y);
        const float* in = keep ? source->RowF(y) : nullptr;
        for (int32_t x = 0; x < width; ++x, o += 4) {
            KPixelF p;
            e->ProcessPixelFloat(p, x, y, source);
            if (keep) {
                KPixelF s;
                RowAccess<KPixelF>::Load(in + 4 * x, s);
                MergeOff(p, s, settings);
            }
            RowAccess<KPixelF>::Store(o, p);
        }
    } else {
        uint16_t* o = out.RowW(y);
        const uint16_t* in = keep ? source->RowW(y) : nullptr;
        for (int32_t x = 0; x < width; ++x, o += 4) {
            KPixel p;
            e->ProcessPixel(p, x, y, source);
            if (keep) {
                KPixel s;
                RowAccess<KPixel>::Load(in + 4 * x, s);
                MergeOff(p, s, settings);
            }
            RowAccess<KPixel>::Store(o, p);
        }
    }
}

// ---------------------------------------------------------------------------
// Position: the effect gets the pixel and its position in units of width.

int32_t KProcessImagePosition::JobCount(int32_t) { return source ? source->height : height; }

void KProcessImagePosition::DoJob(int32_t y, int32_t)
{
    if (skip) return CopyRow(y);
    if (settings.depth == 2) Row<KPositionPixel>(y);
    else Row<KPositionPixelInt>(y);
}

template <class P> void KProcessImagePosition::Row(int32_t y)
{
    constexpr bool isFloat = std::is_same_v<P, KPositionPixel>;
    auto* e = static_cast<KEffectPosition*>(effect);
    KImage& out = **target;
    const int32_t auxIn = std::min(source->AuxCount(), kPositionExtraFloats);
    const float* planesIn[kPositionExtraFloats];
    float* planesOut[kPositionExtraFloats];
    for (int32_t i = 0; i < auxIn; ++i) {
        planesIn[i] = source->AuxPlane(source->AuxChannel(i)) + size_t(y) * source->width;
        float* o = out.AuxPlane(source->AuxChannel(i));
        planesOut[i] = o ? o + size_t(y) * out.width : nullptr;
    }
    const int32_t n = settings.superSampling;
    const float fw = static_cast<float>(width);
    const float fh = static_cast<float>(height) * pictureAspect;
    const float fx = (1.0f / n) / fw;
    const float fy = (1.0f / n) * (1.0f / height) * (1.0f / pictureAspect);
    const float o = (n - 1) * -0.5f;
    const float inv = 1.0f / static_cast<float>(n * n);
    const int32_t w = std::min(width, source->width);
    for (int32_t x = 0; x < w; ++x) {
        P in, res;
        if constexpr (isFloat) {
            const float* s = source->RowF(y) + 4 * x;
            for (int k = 0; k < 4; ++k) in[k] = s[k];
        } else {
            const uint16_t* s = source->RowW(y) + 4 * x;
            for (int k = 0; k < 4; ++k) in[k] = s[k];
        }
        for (int32_t i = 0; i < auxIn; ++i) in.extra[i] = planesIn[i][x];
        if (settings.preDivide) Divide(in);
        if (n <= 1) {
            KPosition pos{x / fw, y / fh};
            if constexpr (isFloat) e->ProcessPosition(res, in, pos);
            else e->ProcessPositionInt(res, in, pos);
        } else {
            // The start offset is divided by the size twice: the grid is
            // deliberately not centred on the pixel.
            float sum[4] = {0, 0, 0, 0};
            KPosition pos;
            float y0 = (y + o * fy) / fh;
            float x0 = (x + o * fx) / fw;
            for (int32_t i = 0; i < n; ++i) {
                pos.y = y0 + i * fy;
                for (int32_t j = 0; j < n; ++j) {
                    pos.x = x0 + j * fx;
                    if constexpr (isFloat) e->ProcessPosition(res, in, pos);
                    else e->ProcessPositionInt(res, in, pos);
                    for (int k = 0; k < 4; ++k) sum[k] += static_cast<float>(res[k]);
                }
            }
            for (int k = 0; k < 4; ++k) {
                if constexpr (isFloat) res[k] = sum[k] * inv;
                else res[k] = static_cast<uint32_t>(sum[k] * inv);
            }
        }
        MergeOff(res, in, settings);
        if (settings.preDivide) Multiply(res);
        if constexpr (isFloat) {
            float* d = out.RowF(y) + 4 * x;
            for (int k = 0; k < 4; ++k) d[k] = res[k];
        } else {
            uint16_t* d = out.RowW(y) + 4 * x;
            for (int k = 0; k < 4; ++k) d[k] = static_cast<uint16_t>(res[k]);
        }
        for (int32_t i = 0; i < auxIn; ++i)
            if (planesOut[i]) planesOut[i][x] = res.extra[i];
    }
}

// ---------------------------------------------------------------------------
// Shape and Threads

void KProcessImageShape::DoJob(int32_t, int32_t)
{
    (*target)->CopyFrom(*source);
    if (skip) return;
    // Shapes arrive with the shape value; an effect without any draws nothing.
    if (auto* shapes = dynamic_cast<KEffectImageShape*>(effect)) shapes->GetShapes();
}

int32_t KProcessImageThreads::PassCount()
{
    return skip ? 1 : static_cast<KEffectThreads*>(effect)->GetPassCount();
}

int32_t KProcessImageThreads::JobCount(int32_t pass)
{
    return skip ? height : static_cast<KEffectThreads*>(effect)->GetJobCount(pass);
}

void KProcessImageThreads::DoJob(int32_t job, int32_t pass)
{
    if (skip) return CopyRow(job);
    static_cast<KEffectThreads*>(effect)->ProcessJob(pass, job, source, *target);
}

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
        grid = new KPosition[size_t(gridWidth) * gridHeight]();
    }
}

KProcessImageInverse::~KProcessImageInverse() { delete[] grid; }

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
    const KPosition* g = grid + size_t(j) * gridWidth + i;
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
    KPosition* row = grid + size_t(j) * gridWidth;
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

// ---------------------------------------------------------------------------

KProcessImage* KCreateProcess(KEffect* effect, KImage* source, KImage** target,
                              const KRenderSettings& settings)
{
    // Only image families have a process; any other effect is not a KEffectImage.
    auto* e = dynamic_cast<KEffectImage*>(effect);
    if (!e) return nullptr;
    switch (effect->GetFamily()) {
    case kFamilyColor: return new KProcessImageColor(source, target, e, settings);
    case kFamilyWarp: return new KProcessImageInverse(source, target, e, settings);
    case kFamilyPixel: return new KProcessImagePixel(source, target, e, settings);
    case kFamilyPosition: return new KProcessImagePosition(source, target, e, settings);
    case kFamilyShapeImage: return new KProcessImageShape(source, target, e, settings);
    case kFamilyThreads: return new KProcessImageThreads(source, target, e, settings);
    default: return nullptr;
    }
}

void KRunPasses(KProcessImage& process, const KJobRunner& runner)
{
    for (int32_t pass = 0; pass < process.PassCount(); ++pass) {
        process.BeginPass(pass);
        int32_t jobs = process.JobCount(pass);
        runner(jobs, [&](int32_t job) { process.DoJob(job, pass); });
        process.EndPass(pass);
    }
}
