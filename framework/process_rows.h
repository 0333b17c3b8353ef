// Row access and the per-pixel steps every image process shares: loads and
// stores per depth, pre-divide and post-multiply, the channel switches.
// Included only by the process sources.
#pragma once
#include <cstring>
#include <type_traits>
#include "framework/process.h"
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

// A chunk of pixels left unset: each is written before it is read, and
// clearing them per chunk would cost as much as the copies.
template <class P, int N> union Chunk {
    Chunk() {}
    alignas(16) P at[N];
    operator P*() { return at; }
};

}  // namespace
