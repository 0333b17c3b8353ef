#include <algorithm>
#include <type_traits>
#include "support.h"

using host::ColorSpace;
using host::Image;

namespace {

using zvtest::HostImg;

// Seven levels per channel over the whole cube, then scattered codes; alpha
// varies so that touching it shows.
constexpr int kGrid = 343, kCount = kGrid + 20000;

HostImg Colours(bool isFloat)
{
    static const uint16_t levels[7] = {0, 6553, 16384, 32768, 49151, 58982, 65535};
    HostImg img = zvtest::Blank(kCount, 1, isFloat);
    uint32_t seed = 99;
    for (int i = 0; i < kCount * 4; ++i) {
        seed = seed * 1664525u + 1013904223u;
        const int c = i % 4, p = i / 4;
        const uint16_t v = c == 3 ? uint16_t(p * 7919)
                         : p < kGrid ? levels[(c == 0 ? p : c == 1 ? p / 7 : p / 49) % 7]
                                     : uint16_t(seed >> 16);
        if (isFloat) img->RowF(0)[i] = v / 65535.0f;
        else img->RowW(0)[i] = v;
    }
    return img;
}

template <typename T, typename P>
P Convert(P p, ColorSpace from, ColorSpace to)
{
    HostImg img = zvtest::Blank(1, 1, std::is_same_v<T, float>);
    T* row = reinterpret_cast<T*>(img->Row(0));
    std::copy(p.begin(), p.end(), row);
    img->CSConvert(from, to);
    std::copy(row, row + 4, p.begin());
    return p;
}

using F4 = std::array<float, 4>;
using W4 = std::array<uint16_t, 4>;

}  // namespace

TEST(HostColorSpace, RoundTripsThroughEverySpaceAndBetweenSpaces)
{
    // Floats come back within 1e-5. Integer storage bounds the error: hue
    // steps spread over six sectors (3 codes at full chroma, 4 with HLS's
    // halved lightness), and XYZ to RGB turns one code of X, Y or Z into up to 3.
    const struct { ColorSpace cs; int codes; } cases[] = {{host::CS_HLS, 4}, {host::CS_YUV, 2}, {host::CS_YIQ, 2},
                                                          {host::CS_CMY, 0}, {host::CS_HSV, 3}, {host::CS_XYZ, 3},
                                                          {host::CS_LAB, 4}};
    for (bool isFloat : {true, false}) {
        const HostImg ref = Colours(isFloat);
        for (const auto& k : cases) {
            HostImg img = Colours(isFloat);
            img->CSConvert(host::CS_RGB, k.cs);
            img->CSConvert(k.cs, host::CS_RGB);
            double worst = 0.0;
            for (int i = 0; i < kCount * 4; ++i) {
                const double a = isFloat ? img->RowF(0)[i] : img->RowW(0)[i];
                const double b = isFloat ? ref->RowF(0)[i] : ref->RowW(0)[i];
                ASSERT_TRUE(i % 4 != 3 || a == b) << "alpha changed, space " << k.cs;
                worst = std::max(worst, std::fabs(a - b));
            }
            EXPECT_LE(worst, isFloat ? 1e-5 : k.codes) << "space " << k.cs << (isFloat ? " float" : " integer");
        }
    }
    // Between two spaces as through RGB; the same space on both sides leaves
    // even out-of-range values alone.
    HostImg viaHSV = Colours(true), direct = Colours(true);
    viaHSV->CSConvert(host::CS_RGB, host::CS_HSV);
    viaHSV->CSConvert(host::CS_HSV, host::CS_YIQ);
    direct->CSConvert(host::CS_RGB, host::CS_YIQ);
    for (int i = 0; i < kCount * 4; ++i) ASSERT_NEAR(viaHSV->RowF(0)[i], direct->RowF(0)[i], 1e-5) << i;
    direct->RowF(0)[0] = -3.5f;
    const HostImg before(direct->CopyOfImage());
    direct->CSConvert(host::CS_LAB, host::CS_LAB);
    EXPECT_EQ(std::memcmp(before->RowF(0), direct->RowF(0), kCount * 4 * sizeof(float)), 0);
}

TEST(HostColorSpace, KnownValues)
{
    const struct { F4 rgb; ColorSpace to; F4 expect; } cases[] = {
        {{1, 0, 0, 0.25f}, host::CS_HSV, {0, 1, 1, 0.25f}},
        {{1, 0, 0, 0.25f}, host::CS_HLS, {0, 0.5f, 1, 0.25f}},
        {{0, 0.5f, 0, 1}, host::CS_HSV, {1 / 3.0f, 1, 0.5f, 1}},
        {{0.25f, 0.25f, 0.75f, 1}, host::CS_HLS, {2 / 3.0f, 0.5f, 0.5f, 1}},
        {{1, 1, 1, 1}, host::CS_YUV, {1, 0, 0, 1}},
        {{1, 0, 0, 1}, host::CS_YUV, {0.299f, -0.14713f, 0.615f, 1}},
        {{1, 1, 1, 1}, host::CS_YIQ, {1, 0, 0, 1}},
        {{1, 1, 1, 1}, host::CS_XYZ, {0.95047f, 1, 1.08883f, 1}},
        {{1, 1, 1, 1}, host::CS_LAB, {1, 0, 0, 1}},
        {{0.5f, 0.5f, 0.5f, 1}, host::CS_LAB, {0.760693f, 0, 0, 1}},  // 116 cbrt(0.5) - 16
        {{0.2f, 0.7f, 0.1f, 1}, host::CS_CMY, {0.8f, 0.3f, 0.9f, 1}},
    };
    for (const auto& k : cases) {
        const F4 got = Convert<float>(k.rgb, host::CS_RGB, k.to);
        for (int c = 0; c < 4; ++c) EXPECT_NEAR(got[c], k.expect[c], 1e-5) << "space " << k.to << ", " << c;
    }
    // Integer storage: hue, lightness and saturation at full range, neutral
    // chroma at half range, the chroma range filled by pure colours.
    EXPECT_EQ(Convert<uint16_t>(W4{65535, 0, 0, 1}, host::CS_RGB, host::CS_HSV), (W4{0, 65535, 65535, 1}));
    EXPECT_EQ(Convert<uint16_t>(W4{0, 65535, 0, 1}, host::CS_RGB, host::CS_HLS), (W4{21845, 32768, 65535, 1}));
    EXPECT_EQ(Convert<uint16_t>(W4{100, 2000, 65535, 9}, host::CS_RGB, host::CS_CMY), (W4{65435, 63535, 0, 9}));
    EXPECT_EQ(Convert<uint16_t>(W4{65535, 0, 0, 0}, host::CS_RGB, host::CS_YUV)[2], 65535);
    for (ColorSpace cs : {host::CS_YUV, host::CS_YIQ, host::CS_LAB}) {
        const W4 white = Convert<uint16_t>(W4{65535, 65535, 65535, 7}, host::CS_RGB, cs);
        EXPECT_EQ(white[0], 65535);
        EXPECT_NEAR(white[1], 32767.5, 1.0) << cs;
        EXPECT_NEAR(white[2], 32767.5, 1.0) << cs;
        EXPECT_EQ(white[3], 7);
    }
    // Blue's b of -107.9 still fits above code 0.
    EXPECT_GT((Convert<uint16_t>(W4{0, 0, 65535, 0}, host::CS_RGB, host::CS_LAB)[2]), 0);
}
