// The shared generator, ramps, quadratic roots and the hue segment function.
#include <gtest/gtest.h>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>
#include "framework/numeric.h"

namespace {

// The C standard's reference generator, written out independently.
struct Reference {
    explicit Reference(uint32_t seed) : next(seed) {}
    int32_t operator()()
    {
        next = next * 1103515245u + 12345u;
        return static_cast<int32_t>((next / 65536u) % 32768u);
    }
    uint32_t next;
};

std::vector<int32_t> Draw(int n)
{
    std::vector<int32_t> v;
    for (int i = 0; i < n; ++i) v.push_back(KRand());
    return v;
}

std::vector<int32_t> DrawReference(uint32_t seed, int skip, int n)
{
    Reference r(seed);
    for (int i = 0; i < skip; ++i) r();
    std::vector<int32_t> v;
    for (int i = 0; i < n; ++i) v.push_back(r());
    return v;
}

}  // namespace

TEST(FrameworkRandom, ReferenceSequenceAfterSeedOne)
{
    KSrand(1);
    EXPECT_EQ(Draw(4), (std::vector<int32_t>{16838, 5758, 10113, 17515}));
    KSrand(1);
    EXPECT_EQ(Draw(200), DrawReference(1, 0, 200));
    KSrand(123456789);
    EXPECT_EQ(Draw(50), DrawReference(123456789, 0, 50));
}

TEST(FrameworkRandom, ValuesStayWithinFifteenBits)
{
    KSrand(42);
    for (int i = 0; i < 10000; ++i) {
        int32_t v = KRand();
        ASSERT_GE(v, 0);
        ASSERT_LE(v, kRandMax);
    }
}

TEST(FrameworkRandom, SeedDiscardsSeedModulo97)
{
    // 97 % 97 is 0: nothing is drawn after seeding.
    KRandomSeed(97);
    EXPECT_EQ(Draw(3), DrawReference(97, 0, 3));
    // 98 % 97 is 1: one value is thrown away.
    KRandomSeed(98);
    EXPECT_EQ(Draw(3), DrawReference(98, 1, 3));
    KRandomSeed(96);
    EXPECT_EQ(Draw(3), DrawReference(96, 96, 3));
    KRandomSeed(1000);
    EXPECT_EQ(Draw(3), DrawReference(1000, 1000 % 97, 3));
}

TEST(FrameworkRandom, ZeroAndNegativeSeedsDrawNothing)
{
    KRandomSeed(0);
    EXPECT_EQ(Draw(3), DrawReference(0, 0, 3));
    EXPECT_EQ(DrawReference(0, 0, 1)[0], 0);  // 12345 / 65536 is 0
    KRandomSeed(-5);
    EXPECT_EQ(Draw(3), DrawReference(static_cast<uint32_t>(-5), 0, 3));
    KRandomSeed(-200);
    EXPECT_EQ(Draw(3), DrawReference(static_cast<uint32_t>(-200), 0, 3));
}

TEST(FrameworkRandom, ScaledForms)
{
    // After seed 1 the draws are 16838, 5758, 10113, 17515.
    KSrand(1);
    EXPECT_EQ(KRandom(2.0f), 16838.0f * 2.0f * 3.051851e-05f);
    EXPECT_EQ(KRandomRange(-1.0f, 3.0f), 5758.0f * 4.0f * 3.051851e-05f + -1.0f);
    EXPECT_EQ(KRandomInt(100), 13);         // 10113 % 100
    EXPECT_EQ(KRandomIntRange(10, 20), 15);  // 10 + 17515 % 10

    KSrand(1);
    EXPECT_NEAR(KRandom(1.0f), 0.51387, 1e-5);
    EXPECT_EQ(KRandomIntRange(-3, 3), -3 + 5758 % 6);
}

TEST(FrameworkRandom, LargestDrawScalesToAboutOne)
{
    EXPECT_NEAR(static_cast<float>(kRandMax) * kRandScale, 1.0f, 1e-6f);
}

TEST(FrameworkRandom, TimeNoiseSeedsFromTimeAndSeed)
{
    auto expected = [](int32_t s) {
        KRandomSeed(s);
        return static_cast<float>(KRand()) * 3.051851e-05f;
    };
    // 1.5 * 10 + 7 = 22: seeded as KRandomSeed(22), then one more draw.
    const float a = KTimeNoise(1.5f, 7);
    EXPECT_EQ(a, expected(22));
    EXPECT_EQ(KTimeNoise(1.5f, 7), a);
    EXPECT_NE(KTimeNoise(1.6f, 7), a);

    // Computed in double: 0.7f is 0.69999998..., so 10 times it truncates to 6
    // (single precision would round to 7).
    EXPECT_EQ(KTimeNoise(0.7f, 0), expected(6));
    EXPECT_EQ(KTimeNoise(0.7f, 100), expected(106));
    // Large enough to discard draws: 12 * 10 + 3 = 123, 123 % 97 = 26.
    KSrand(123);
    for (int i = 0; i < 26; ++i) KRand();
    EXPECT_EQ(KTimeNoise(12.0f, 3), static_cast<float>(KRand()) * 3.051851e-05f);
}

TEST(FrameworkRandom, StateIsPerThread)
{
    KSrand(1);
    EXPECT_EQ(KRand(), 16838);
    std::vector<int32_t> other;
    std::thread t([&] {
        // A fresh thread starts as if seeded with 1.
        other.push_back(KRand());
        KRandomSeed(12345);
        for (int i = 0; i < 10; ++i) other.push_back(KRand());
    });
    t.join();
    EXPECT_EQ(other[0], 16838);
    EXPECT_EQ(std::vector<int32_t>(other.begin() + 1, other.end()),
              DrawReference(12345, 12345 % 97, 10));
    EXPECT_EQ(KRand(), 5758);  // the main thread's sequence goes on undisturbed
    EXPECT_EQ(KRand(), 10113);
}

TEST(FrameworkRamp, ShapesBetweenTheEnds)
{
    // x = 0.5 on 0..2 gives t = 0.25.
    EXPECT_EQ(KRamp(0.5f, 0.0f, 2.0f, 0), 0.25f);
    EXPECT_EQ(KRamp(0.5f, 0.0f, 2.0f, 1), 0.0625f);
    EXPECT_EQ(KRamp(0.5f, 0.0f, 2.0f, 2), 0.4375f);
    EXPECT_EQ(KRamp(0.5f, 0.0f, 2.0f, 3), 0.15625f);
    EXPECT_EQ(KRamp(0.5f, 0.0f, 2.0f, 4), 0.25f);
    EXPECT_EQ(KRamp(0.5f, 0.0f, 2.0f, -1), 0.25f);
    EXPECT_FLOAT_EQ(KRamp(1.5f, 1.0f, 3.0f, 0), 0.25f);
    EXPECT_FLOAT_EQ(KRamp(2.0f, 1.0f, 3.0f, 3), 0.5f);
}

TEST(FrameworkRamp, EndsAreClosed)
{
    for (int shape = 0; shape <= 4; ++shape) {
        EXPECT_EQ(KRamp(1.0f, 1.0f, 3.0f, shape), 0.0f) << shape;
        EXPECT_EQ(KRamp(-5.0f, 1.0f, 3.0f, shape), 0.0f) << shape;
        EXPECT_EQ(KRamp(3.0f, 1.0f, 3.0f, shape), 1.0f) << shape;
        EXPECT_EQ(KRamp(9.0f, 1.0f, 3.0f, shape), 1.0f) << shape;
    }
}

TEST(FrameworkRamp, EqualEndsAreAStepAtA)
{
    EXPECT_EQ(KRamp(2.0f, 2.0f, 2.0f, 0), 1.0f);
    EXPECT_EQ(KRamp(2.5f, 2.0f, 2.0f, 1), 1.0f);
    EXPECT_EQ(KRamp(1.999f, 2.0f, 2.0f, 2), 0.0f);
}

TEST(FrameworkRamp, ReversedIsAHardStepNeverInterpolating)
{
    // a = 2 above b = 1: 1 up to and including a, 0 above it.
    for (int shape = 0; shape <= 3; ++shape) {
        EXPECT_EQ(KRamp(0.0f, 2.0f, 1.0f, shape), 1.0f);
        EXPECT_EQ(KRamp(1.5f, 2.0f, 1.0f, shape), 1.0f);
        EXPECT_EQ(KRamp(2.0f, 2.0f, 1.0f, shape), 1.0f);
        EXPECT_EQ(KRamp(2.001f, 2.0f, 1.0f, shape), 0.0f);
    }
}

TEST(FrameworkQuadratic, RealRoots)
{
    float r1 = 0.0f, r2 = 0.0f;
    // x^2 - 3x + 2: roots 2 and 1, the + root first.
    EXPECT_TRUE(KQuadraticRoots(1.0f, -3.0f, 2.0f, r1, r2));
    EXPECT_EQ(r1, 2.0f);
    EXPECT_EQ(r2, 1.0f);
    // 2x^2 + 4x + 2: a double root at -1.
    EXPECT_TRUE(KQuadraticRoots(2.0f, 4.0f, 2.0f, r1, r2));
    EXPECT_EQ(r1, -1.0f);
    EXPECT_EQ(r2, -1.0f);
    // -x^2 + 4: with a negative a the order of the roots turns.
    EXPECT_TRUE(KQuadraticRoots(-1.0f, 0.0f, 4.0f, r1, r2));
    EXPECT_EQ(r1, -2.0f);
    EXPECT_EQ(r2, 2.0f);
}

TEST(FrameworkQuadratic, NegativeDiscriminantLeavesOutputsAlone)
{
    float r1 = 17.0f, r2 = -17.0f;
    EXPECT_FALSE(KQuadraticRoots(1.0f, 0.0f, 1.0f, r1, r2));
    EXPECT_EQ(r1, 17.0f);
    EXPECT_EQ(r2, -17.0f);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(KQuadraticRoots(1.0f, nan, 1.0f, r1, r2));
    EXPECT_EQ(r1, 17.0f);
}

TEST(FrameworkQuadratic, ZeroLeadingTermDividesByZero)
{
    float r1 = 0.0f, r2 = 0.0f;
    // d = 4: r1 = 0 * inf (NaN), r2 = -4 * inf.
    EXPECT_TRUE(KQuadraticRoots(0.0f, 2.0f, 5.0f, r1, r2));
    EXPECT_TRUE(std::isnan(r1));
    EXPECT_TRUE(std::isinf(r2));
    EXPECT_LT(r2, 0.0f);
    // d = 0 with b = 0: both are 0 * inf.
    EXPECT_TRUE(KQuadraticRoots(0.0f, 0.0f, 3.0f, r1, r2));
    EXPECT_TRUE(std::isnan(r1));
    EXPECT_TRUE(std::isnan(r2));
    // b negative: r1 = 2 * 2 * inf.
    EXPECT_TRUE(KQuadraticRoots(0.0f, -2.0f, 1.0f, r1, r2));
    EXPECT_TRUE(std::isinf(r1));
    EXPECT_GT(r1, 0.0f);
    EXPECT_TRUE(std::isnan(r2));
}

TEST(FrameworkHueSegment, SegmentsAndTheirEnds)
{
    const float m1 = 0.25f, m2 = 0.75f;
    EXPECT_EQ(KHueSegment(m1, m2, 0.0f), m1);
    EXPECT_FLOAT_EQ(KHueSegment(m1, m2, 0.1f), 0.55f);
    // One sixth in single precision lies above the double threshold: already m2.
    EXPECT_EQ(KHueSegment(m1, m2, 1.0f / 6.0f), m2);
    EXPECT_EQ(KHueSegment(m1, m2, 0.3f), m2);
    // At one half the falling segment starts at m2.
    EXPECT_FLOAT_EQ(KHueSegment(m1, m2, 0.5f), m2);
    EXPECT_FLOAT_EQ(KHueSegment(m1, m2, 0.6f), 0.45f);
    // Two thirds in single precision lies above the double threshold: m1.
    EXPECT_EQ(KHueSegment(m1, m2, 2.0f / 3.0f), m1);
    EXPECT_EQ(KHueSegment(m1, m2, 0.9f), m1);
    EXPECT_EQ(KHueSegment(m1, m2, 1.0f), m1);
}

TEST(FrameworkHueSegment, WrapsOnceEachWay)
{
    const float m1 = 0.25f, m2 = 0.75f;
    EXPECT_EQ(KHueSegment(m1, m2, 1.25f), m2);
    EXPECT_EQ(KHueSegment(m1, m2, -0.75f), m2);
    EXPECT_FLOAT_EQ(KHueSegment(m1, m2, 1.1f), KHueSegment(m1, m2, 0.1f));
    // Only once: 2.5 becomes 1.5, which falls in the last segment.
    EXPECT_EQ(KHueSegment(m1, m2, 2.5f), m1);
    // -1.5 becomes -0.5, extrapolated on the rising segment: 0.5 * -0.5 * 6 + 0.25.
    EXPECT_FLOAT_EQ(KHueSegment(m1, m2, -1.5f), -1.25f);
}
