// Pixels into channel lanes and back, at every width, against the one-pixel
// conversions.
#include <limits>
#include "support.h"

#if defined(ZV_LANES)
namespace {

// Runs `pixels` through Load and Store at V's width, into pixels of kind Out,
// channel vectors in between passed through `between`.
template <class V, class Out, class In, class F = void (*)(V*)>
[[gnu::always_inline]] inline std::vector<Out> Through(const std::vector<In>& pixels, F between = [](V*) {})
{
    constexpr int n = kLaneCount<V>;
    std::vector<Out> out(pixels.size());
    for (size_t i = 0; i + n <= pixels.size(); i += n) {
        V c[4];
        klanes::Load(pixels.data() + i, c);
        between(c);
        klanes::Store(out.data() + i, c);
    }
    return out;
}

// The wider builds, inlined into code built for AVX2 and AVX-512.
template <class Out, class In> ZV_AVX2 std::vector<Out> Through8(const std::vector<In>& pixels)
{
    return Through<KLanes8, Out>(pixels);
}
template <class Out, class In> ZV_AVX512 ZV_LANE_KERNEL std::vector<Out> Through32(const std::vector<In>& pixels)
{
    return Through<KLanes32, Out>(pixels);
}

}  // namespace

// The integer store truncates v * 65535 as the exact product does, not as a
// single-precision product rounded onto the next code would: every code's
// edge, a few steps either side, and the clipped values.
TEST(FrameworkLanes, IntegerStoreTruncatesAsThroughDouble)
{
    std::vector<float> values = {0.0f, -0.0f, -1e-30f, -1.0f, 1.0f, 1.0000001f, 7.0f,
                                 std::numeric_limits<float>::infinity(),
                                 -std::numeric_limits<float>::infinity(),
                                 std::numeric_limits<float>::quiet_NaN(),
                                 std::numeric_limits<float>::denorm_min(), 1e-38f};
    for (int code = 1; code < 65536; ++code) {
        float v = static_cast<float>(code / 65535.0);
        for (int step = 0; step < 4; ++step) v = std::nextafter(v, 0.0f);
        for (int step = 0; step < 8; ++step, v = std::nextafter(v, 2.0f)) values.push_back(v);
    }
    while (values.size() % 128) values.push_back(0.5f);
    std::vector<KPixelF> pixels(values.size() / 4);  // four consecutive values make one pixel
    std::memcpy(&pixels[0].r, values.data(), values.size() * sizeof(float));
    std::vector<std::vector<KPixelW>> runs = {Through<KLanes4, KPixelW>(pixels)};
    if (KLaneWidth() >= 8) runs.push_back(Through8<KPixelW>(pixels));
    if (KLaneWidth() >= 32) runs.push_back(Through32<KPixelW>(pixels));
    for (const auto& codes : runs)
        for (size_t i = 0; i < values.size(); ++i)
            ASSERT_EQ((&codes[i / 4].r)[i % 4], KFloatToIntDouble(values[i])) << values[i];
}

// Pixels come back as the one-pixel conversions give them, each in its own
// place: float bit for bit, NaN and signed zeros included, and every integer
// code through KIntToFloat and KFloatToIntDouble, at every width.
TEST(FrameworkLanes, PixelsComeBackInPlace)
{
    std::vector<KPixelW> words, wordsBack;
    for (int code = 0; code < 65536; code += 4) {
        words.push_back({uint16_t(code), uint16_t(code + 1), uint16_t(code + 2), uint16_t(code + 3)});
        const auto back = [](int c) { return uint16_t(KFloatToIntDouble(KIntToFloat(uint32_t(c)))); };
        wordsBack.push_back({back(code), back(code + 1), back(code + 2), back(code + 3)});
    }
    std::vector<KPixelF> floats;
    for (int i = 0; i < 64; ++i)
        floats.push_back({i * 0.37f - 3.0f, i % 3 ? -0.0f : std::numeric_limits<float>::quiet_NaN(),
                          1e-40f * i, float(i)});
    const auto same = [](const auto& a, const auto& b) {
        return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
    };
    EXPECT_TRUE(same(Through<KLanes4, KPixelW>(words), wordsBack));
    EXPECT_TRUE(same(Through<KLanes4, KPixelF>(floats), floats));
    if (KLaneWidth() >= 8) {
        EXPECT_TRUE(same(Through8<KPixelW>(words), wordsBack));
        EXPECT_TRUE(same(Through8<KPixelF>(floats), floats));
    }
    if (KLaneWidth() >= 32) {
        EXPECT_TRUE(same(Through32<KPixelW>(words), wordsBack));
        EXPECT_TRUE(same(Through32<KPixelF>(floats), floats));
    }
    // Channels arrive in their own vectors: doubling red leaves the others.
    const auto doubled = Through<KLanes4, KPixelF>(floats, [](KLanes4* c) { c[0] = c[0] * 2.0f; });
    for (size_t i = 0; i < floats.size(); ++i) {
        EXPECT_EQ(doubled[i].r, floats[i].r * 2.0f);
        EXPECT_EQ(std::memcmp(&doubled[i].g, &floats[i].g, 3 * sizeof(float)), 0);
    }
}
#endif
