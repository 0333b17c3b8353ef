// The shared generator, ramps, quadratic roots and the hue segment function.
#include <limits>
#include <thread>
#include "framework/numeric.h"
#include "framework/color_lanes.h"
#include "support.h"

namespace {

// The C standard's reference generator written out independently: `n` draws
// after seeding with `seed` and throwing `skip` away.
std::vector<int32_t> Reference(uint32_t seed, int skip, int n)
{
    std::vector<int32_t> v;
    for (int i = -skip; i < n; ++i) {
        seed = seed * 1103515245u + 12345u;
        if (i >= 0) v.push_back(static_cast<int32_t>((seed / 65536u) % 32768u));
    }
    return v;
}

std::vector<int32_t> Draw(int n)
{
    std::vector<int32_t> v;
    for (int i = 0; i < n; ++i) v.push_back(KRand());
    return v;
}

}  // namespace

TEST(FrameworkRandom, ReferenceSequenceSeedsAndScaledForms)
{
    KSrand(1);
    EXPECT_EQ(Draw(4), (std::vector<int32_t>{16838, 5758, 10113, 17515}));
    KSrand(1);
    EXPECT_EQ(Draw(200), Reference(1, 0, 200));
    KSrand(123456789);
    EXPECT_EQ(Draw(50), Reference(123456789, 0, 50));
    KSrand(42);
    for (int32_t v : Draw(10000)) ASSERT_TRUE(v >= 0 && v <= kRandMax) << v;
    // 97 % 97 is 0: nothing drawn; 98 one value; zero and negative seeds draw nothing.
    const std::pair<int32_t, int> cases[] = {{97, 0}, {98, 1}, {96, 96}, {1000, 1000 % 97},
                                             {0, 0},  {-5, 0}, {-200, 0}};
    for (auto [seed, skip] : cases) {
        KRandomSeed(seed);
        EXPECT_EQ(Draw(3), Reference(static_cast<uint32_t>(seed), skip, 3)) << seed;
    }
    EXPECT_EQ(Reference(0, 0, 1)[0], 0);  // 12345 / 65536 is 0
    // After seed 1 the draws are 16838, 5758, 10113, 17515.
    KSrand(1);
    EXPECT_EQ(KRandom(2.0f), 16838.0f * 2.0f * 3.051851e-05f);
    EXPECT_EQ(KRandomRange(-1.0f, 3.0f), 5758.0f * 4.0f * 3.051851e-05f + -1.0f);
    EXPECT_EQ(KRandomInt(100), 13);          // 10113 % 100
    EXPECT_EQ(KRandomIntRange(10, 20), 15);  // 10 + 17515 % 10
    KSrand(1);
    EXPECT_NEAR(KRandom(1.0f), 0.51387, 1e-5);
    EXPECT_EQ(KRandomIntRange(-3, 3), -3 + 5758 % 6);
}

TEST(FrameworkRandom, TimeNoiseSeedsFromTimeAndSeed)
{
    auto expected = [](uint32_t s) { return static_cast<float>(Reference(s, s % 97, 1)[0]) * 3.051851e-05f; };
    // 1.5 * 10 + 7 = 22: seeded as KRandomSeed(22), then one more draw.
    const float a = KTimeNoise(1.5f, 7);
    EXPECT_EQ(a, expected(22));
    EXPECT_EQ(KTimeNoise(1.5f, 7), a);
    EXPECT_NE(KTimeNoise(1.6f, 7), a);
    // Computed in double: 0.7f is 0.69999998..., so 10 times it truncates to 6
    // (single precision would round to 7).
    EXPECT_EQ(KTimeNoise(0.7f, 0), expected(6));
    EXPECT_EQ(KTimeNoise(0.7f, 100), expected(106));
    EXPECT_EQ(KTimeNoise(12.0f, 3), expected(123));  // 123 % 97 = 26 draws thrown away
}

TEST(FrameworkRandom, StateIsPerThread)
{
    KSrand(1);
    EXPECT_EQ(KRand(), 16838);
    std::vector<int32_t> other;
    std::thread t([&] {
        other.push_back(KRand());  // a fresh thread starts as if seeded with 1
        KRandomSeed(12345);
        for (int i = 0; i < 10; ++i) other.push_back(KRand());
    });
    t.join();
    EXPECT_EQ(other[0], 16838);
    EXPECT_EQ(std::vector<int32_t>(other.begin() + 1, other.end()), Reference(12345, 12345 % 97, 10));
    EXPECT_EQ(KRand(), 5758);  // the main thread's sequence goes on undisturbed
    EXPECT_EQ(KRand(), 10113);
}

TEST(FrameworkRamp, ShapesEndsStepsAndReversedRamps)
{
    const struct { float x, a, b; int32_t shape; float want; } rows[] = {
        // x = 0.5 on 0..2 gives t = 0.25; unknown shapes are linear.
        {0.5f, 0, 2, 0, 0.25f}, {0.5f, 0, 2, 1, 0.0625f}, {0.5f, 0, 2, 2, 0.4375f}, {0.5f, 0, 2, 3, 0.15625f},
        {0.5f, 0, 2, 4, 0.25f}, {0.5f, 0, 2, -1, 0.25f},  {1.5f, 1, 3, 0, 0.25f},   {2.0f, 1, 3, 3, 0.5f},
        // Equal ends are a step at a.
        {2.0f, 2, 2, 0, 1}, {2.5f, 2, 2, 1, 1}, {1.999f, 2, 2, 2, 0},
    };
    for (const auto& r : rows) EXPECT_EQ(KRamp(r.x, r.a, r.b, r.shape), r.want) << r.x << " shape " << r.shape;
    for (int shape = 0; shape <= 4; ++shape) {
        // Closed ends.
        for (float x : {1.0f, -5.0f}) EXPECT_EQ(KRamp(x, 1.0f, 3.0f, shape), 0.0f) << shape;
        for (float x : {3.0f, 9.0f}) EXPECT_EQ(KRamp(x, 1.0f, 3.0f, shape), 1.0f) << shape;
        // a = 2 above b = 1: a hard step, 1 up to and including a, 0 above it.
        for (float x : {0.0f, 1.5f, 2.0f}) EXPECT_EQ(KRamp(x, 2.0f, 1.0f, shape), 1.0f) << shape;
        EXPECT_EQ(KRamp(2.001f, 2.0f, 1.0f, shape), 0.0f) << shape;
    }
}

TEST(FrameworkQuadratic, RootsInTheirOrderNoneLeaveTheOutputsAndAZeroLeadingTermDividesByZero)
{
    // Outputs start at 17 and -17; NaN stands for 0 * inf.
    const struct { float a, b, c; bool found; float r1, r2; } rows[] = {
        {1, -3, 2, true, 2, 1},            // x^2 - 3x + 2: the + root first
        {2, 4, 2, true, -1, -1},           // a double root
        {-1, 0, 4, true, -2, 2},           // with a negative a the order turns
        {1, 0, 1, false, 17, -17},         // none: the outputs are left
        {1, NAN, 1, false, 17, -17},
        {0, 2, 5, true, NAN, -INFINITY},   // d = 4: 0 * inf and -4 * inf
        {0, 0, 3, true, NAN, NAN},         // d = 0 with b = 0
        {0, -2, 1, true, INFINITY, NAN},   // b negative: 2 * 2 * inf
    };
    auto same = [](float x, float y) { return x == y || (std::isnan(x) && std::isnan(y)); };
    for (const auto& r : rows) {
        float r1 = 17.0f, r2 = -17.0f;
        EXPECT_EQ(KQuadraticRoots(r.a, r.b, r.c, r1, r2), r.found) << r.a << " " << r.b << " " << r.c;
        EXPECT_TRUE(same(r1, r.r1) && same(r2, r.r2)) << r.a << " " << r.b << " " << r.c << ": " << r1 << ", " << r2;
    }
}

TEST(FrameworkHlsToRgb, EachChannelOnItsSegmentAndItsBounds)
{
    const float m1 = 0.25f, m2 = 0.75f;
    const struct { float h, tolerance, rgb[3]; } cases[] = {
        // Blue sits at 1 - 1/3 rounded to a float just below two thirds: the
        // last sliver of the fall, one step above m1.
        {0.0f, 0, {m2, m1, 0x1.000008p-2f}},
        // One sixth in single precision lies above the double bound, and so
        // does two thirds; at one half the fall starts at m2.
        {0.5f, 0, {m1, m2, m2}}, {1.0f / 6.0f, 0, {m2, m2, m1}}, {2.0f / 3.0f, 0, {m1, m1, m2}}, {1.0f, 0, {m2, m1, m1}},
        {0.1f, 3e-7f, {m2, 0.55f, m1}},   // green rises
        {0.3f, 3e-7f, {0.35f, m2, m1}},   // red falls
        {0.6f, 3e-7f, {m1, 0.45f, m2}},   // green falls
        {0.4f, 3e-7f, {m1, m2, 0.45f}},   // blue rises
        {0.7f, 3e-7f, {0.35f, m1, m2}},   // red rises from its wrapped position, 0.0333
        {0.95f, 3e-7f, {m2, m1, 0.4f}},   // blue falls
    };
    for (const auto& c : cases) {
        float out[3];
        KHlsToRgb(m1, m2, c.h, out);
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(out[k], c.rgb[k], c.tolerance) << c.h << " channel " << k;
    }
}
