// Pixel forms: integer channels 0..65535 and unclipped float channels, both
// red, green, blue, alpha. Conversions between them are exact as stated here.
#pragma once
#include <cstdint>
#include <cstring>

struct KPixel {
    uint32_t r = 0, g = 0, b = 0, a = 0;
    uint32_t& operator[](int i) { return (&r)[i]; }
    uint32_t operator[](int i) const { return (&r)[i]; }
};

// An integer pixel as images store it: four 16-bit words. Colour effects
// take runs of these, so that rows need no widening on the way.
struct KPixelW {
    uint16_t r, g, b, a;
};

struct KPixelF {
    float r = 0.0f, g = 0.0f, b = 0.0f, a = 0.0f;
    float& operator[](int i) { return (&r)[i]; }
    float operator[](int i) const { return (&r)[i]; }
};

// The position family's 256-byte pixel: the colour, then the extended
// channels of the pixel, carried unchanged by the default conversions.
constexpr int kPositionExtraFloats = 60;
struct KPositionPixel {
    float r = 0.0f, g = 0.0f, b = 0.0f, a = 0.0f;
    float extra[kPositionExtraFloats] = {};
    float& operator[](int i) { return (&r)[i]; }
    float operator[](int i) const { return (&r)[i]; }
};
struct KPositionPixelInt {
    uint32_t r = 0, g = 0, b = 0, a = 0;
    float extra[kPositionExtraFloats] = {};
    uint32_t& operator[](int i) { return (&r)[i]; }
    uint32_t operator[](int i) const { return (&r)[i]; }
};
static_assert(sizeof(KPositionPixel) == 256 && sizeof(KPositionPixelInt) == 256);

struct KPosition {
    float x = 0.0f, y = 0.0f;
};

constexpr float kIntToFloat = 1.5259022e-05f;

// x * 65535 in single precision, widened, clipped to 0..65535, truncated.
inline uint32_t KFloatToInt(float v)
{
    double d = static_cast<double>(v * 65535.0f);
    if (!(d > 0.0)) return 0;
    if (d > 65535.0) return 65535;
    return static_cast<uint32_t>(d);
}

inline float KIntToFloat(uint32_t v) { return static_cast<float>(v) * kIntToFloat; }

inline void KToFloat(const KPixel& in, KPixelF& out)
{
    out.r = KIntToFloat(in.r);
    out.g = KIntToFloat(in.g);
    out.b = KIntToFloat(in.b);
    out.a = KIntToFloat(in.a);
}

inline void KToInt(const KPixelF& in, KPixel& out)
{
    out.r = KFloatToInt(in.r);
    out.g = KFloatToInt(in.g);
    out.b = KFloatToInt(in.b);
    out.a = KFloatToInt(in.a);
}

// A coordinate at 16.16 fixed point: the float times 65536, truncated.
// Positions far outside any picture (and NaN) are held at the ends of the
// range, where every edge mode still gives a defined pixel.
inline int32_t KFixed(float v)
{
    if (!(v > -32767.0f)) return -32767 * 65536;
    if (!(v < 32767.0f)) return 32767 * 65536;
    return static_cast<int32_t>(v * 65536.0f);
}

// The integer scale rule: channel c times weight f (both 0..65535), rounded.
inline uint32_t KScaleInt(uint32_t c, uint32_t f)
{
    uint32_t m = c * f + 0x8000u;
    return (m + (m >> 16)) >> 16;
}

// Exact division by 65535 with rounding of a product v.
inline uint32_t KDiv65535(uint32_t v)
{
    uint32_t u = v + 0x8000u;
    return (u + (u >> 16)) >> 16;
}

// Copies finished pixels to their row without reading the destination into
// the cache first: a whole-image pass then moves two bytes per byte, not three.
// Call KStreamFence() before another thread may read what was written.
#if defined(__SSE2__)
#include <emmintrin.h>
inline void KStreamCopy(void* dst, const void* src, size_t bytes)
{
    auto* d = static_cast<uint8_t*>(dst);
    const auto* s = static_cast<const uint8_t*>(src);
    while (bytes && (reinterpret_cast<uintptr_t>(d) & 15)) {
        *d++ = *s++;
        --bytes;
    }
    for (; bytes >= 16; bytes -= 16, d += 16, s += 16)
        _mm_stream_si128(reinterpret_cast<__m128i*>(d),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(s)));
    std::memcpy(d, s, bytes);
}
inline void KStreamFence() { _mm_sfence(); }
#else
inline void KStreamCopy(void* dst, const void* src, size_t bytes) { std::memcpy(dst, src, bytes); }
inline void KStreamFence() {}
#endif
