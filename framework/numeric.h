// Numeric helpers shared by every tool: the random generator, ramps, roots.
#pragma once
#include <cstdint>
#include "framework/lanes.h"

// The generator is the C standard's reference rand (15 bits, RAND_MAX 32767),
// kept per thread so that a job that seeds and draws gets the same numbers
// whichever thread runs it and however many threads there are.
constexpr int32_t kRandMax = 32767;
constexpr float kRandScale = 3.051851e-05f;  // close to 1 / 32767

void KSrand(uint32_t seed);
int32_t KRand();

float KRandom(float range);
float KRandomRange(float lo, float hi);
int32_t KRandomInt(int32_t n);
int32_t KRandomIntRange(int32_t lo, int32_t hi);
void KRandomSeed(int32_t seed);
float KTimeNoise(float time, int32_t seed);

float KRamp(float x, float a, float b, int32_t shape);
bool KQuadraticRoots(float a, float b, float c, float& r1, float& r2);

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
