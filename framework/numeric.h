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

// Segment function of the HLS to RGB conversion, for one pixel or a set of lanes.
// The rise is in single precision, the fall in double. The bounds 1/6 and 2/3
// are double: a float lies below one exactly when it lies below the nearest
// float above it, which is what the two constants are.
constexpr float kSixthAbove = 0.16666667f, kTwoThirdsAbove = 0.6666667f;
static_assert(double(kSixthAbove) > 1.0 / 6.0 && double(kTwoThirdsAbove) > 2.0 / 3.0);

template <class V> [[gnu::always_inline]] inline V KHueSegment(V m1, V m2, V h)
{
    h = KSelect(h > 1.0f, h - 1.0f, h);
    h = KSelect(h < 0.0f, h + 1.0f, h);
    const V rise = (m2 - m1) * h * 6.0f + m1;
    V fall = m1;
    if (KAny((h >= 0.5f) & (h < kTwoThirdsAbove)))
        fall = KNarrow(KWiden(m2 - m1) * (2.0 / 3.0 - KWiden(h)) * 6.0 + KWiden(m1));
    return KSelect(h < kSixthAbove, rise,
                   KSelect(h < 0.5f, m2, KSelect(h < kTwoThirdsAbove, fall, m1)));
}
