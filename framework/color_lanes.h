// Colour effects written once over one pixel and the lanes. Only tools that
// run on several pixels at once include this: the lane code is heavy to compile.
#pragma once
#include <type_traits>
#include "framework/effect.h"
#include "framework/lanes.h"

// A colour effect written once as `template <bool Integer, class V> void
// Adjust(V r, V g, V b, V a, V out[4]) const` over float and the lanes
// (framework/lanes.h): one pixel, or as many at a time as the processor's
// lanes take, with the same bits. Integer says the channels came from integer pixels, for an effect
// whose integer operation rounds its own way.
template <class E> class KEffectColorLanes : public KEffectColor {
public:
    void ProcessColor(KPixelF& out, const KPixelF& in) override
    {
        KEachPixel<float>(&out, &in, 1, Pixel<false>());
    }
    void ProcessColorInt(KPixel& out, const KPixel& in) override
    {
        KEachPixel<float>(&out, &in, 1, Pixel<true>());
    }
    void ProcessColors(KPixelF* out, const KPixelF* in, int32_t n) override { Run(out, in, n); }
    void ProcessColorsInt(KPixelW* out, const KPixelW* in, int32_t n) override { Run(out, in, n); }

private:
    template <bool Integer> auto Pixel() const
    {
        return [e = static_cast<const E*>(this)](auto r, auto g, auto b, auto a, auto* o)
                   ZV_LANE_INLINE_LAMBDA { e->template Adjust<Integer>(r, g, b, a, o); };
    }
    template <class P> static constexpr bool kInteger = !std::is_same_v<P, KPixelF>;
    template <class P> void Run(P* out, const P* in, int32_t n) const
    {
#if defined(ZV_LANES)
        switch (KLaneWidth()) {
        case 32: return Run32(out, in, n);
        case 8: return Run8(out, in, n);
        default: return KEachPixel<KLanes4>(out, in, n, Pixel<kInteger<P>>());
        }
#else
        KEachPixel<float>(out, in, n, Pixel<kInteger<P>>());
#endif
    }
#if defined(ZV_LANES)
    template <class P> ZV_AVX2 void Run8(P* out, const P* in, int32_t n) const
    {
        KEachPixel<KLanes8>(out, in, n, Pixel<kInteger<P>>());
    }
    template <class P> ZV_AVX512 ZV_LANE_KERNEL void Run32(P* out, const P* in, int32_t n) const
    {
        KEachPixel<KLanes32>(out, in, n, Pixel<kInteger<P>>());
    }
#endif
};

// HLS to RGB from the two bounds m1, m2 and a hue h in [0, 1], for one pixel
// or a set of lanes: each channel is the segment function at its own hue
// position, h + 1/3, h and h - 1/3 wrapped into [0, 1]. The rise is in single
// precision, the fall in double. The bounds 1/6 and 2/3 are double: a float
// lies below one exactly when it lies below the nearest float above it, which
// is what the two constants are. Positions a third apart leave at most one
// channel on the rise and one on the fall, so each is computed once.
constexpr float kSixthAbove = 0.16666667f, kTwoThirdsAbove = 0.6666667f;
static_assert(double(kSixthAbove) > 1.0 / 6.0 && double(kTwoThirdsAbove) > 2.0 / 3.0);

template <class V> [[gnu::always_inline]] inline void KHlsToRgb(V m1, V m2, V h, V out[3])
{
    V at[3] = {KNarrow(KWiden(h) + 1.0 / 3.0), h, KNarrow(KWiden(h) - 1.0 / 3.0)};
    at[0] = KSelect(at[0] > 1.0f, at[0] - 1.0f, at[0]);
    at[2] = KSelect(at[2] < 0.0f, at[2] + 1.0f, at[2]);
    const auto r0 = at[0] < kSixthAbove, r1 = at[1] < kSixthAbove;
    const auto f0 = (at[0] >= 0.5f) & (at[0] < kTwoThirdsAbove);
    const auto f1 = (at[1] >= 0.5f) & (at[1] < kTwoThirdsAbove);
    const auto f2 = (at[2] >= 0.5f) & (at[2] < kTwoThirdsAbove);
    const V rising = KSelect(r0, at[0], KSelect(r1, at[1], at[2]));
    const V rise = (m2 - m1) * rising * 6.0f + m1;
    V fall = m1;
    if (KAny(f0 | f1 | f2)) {
        const V falling = KSelect(f0, at[0], KSelect(f1, at[1], at[2]));
        fall = KNarrow(KWiden(m2 - m1) * (2.0 / 3.0 - KWiden(falling)) * 6.0 + KWiden(m1));
    }
    const auto segment = [&](V x) ZV_LANE_INLINE_LAMBDA {
        return KSelect(x < kSixthAbove, rise,
                       KSelect(x < 0.5f, m2, KSelect(x < kTwoThirdsAbove, fall, m1)));
    };
    out[0] = segment(at[0]);
    out[1] = segment(at[1]);
    out[2] = segment(at[2]);
}
