#include <gtest/gtest.h>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include "host/image.h"

using host::ColorSpace;
using host::Image;

namespace {

struct Free {
    void operator()(Image* i) const { i->Recycle(); }
};
using Img = std::unique_ptr<Image, Free>;

Img Make(int w, bool isFloat)
{
    host::ImageSpec spec;
    spec.width = w;
    spec.height = 1;
    spec.depth = isFloat ? host::DepthFloat32 : host::DepthInt16;
    return Img(Image::New(spec));
}

// Every corner, edge and inside step of the cube at seven levels, then
// pseudo-random codes; alpha varies so that touching it shows.
constexpr int kGrid = 343, kCount = kGrid + 20000;

uint16_t Code(int i, int c)
{
    static const uint16_t levels[7] = {0, 6553, 16384, 32768, 49151, 58982, 65535};
    if (c == 3) return static_cast<uint16_t>(i * 7919);
    if (i < kGrid) return levels[(c == 0 ? i : c == 1 ? i / 7 : i / 49) % 7];
    uint32_t h = static_cast<uint32_t>(i * 4 + c) * 2654435761u;
    h ^= h >> 15;
    return static_cast<uint16_t>(h * 2246822519u >> 16);
}

Img Colours(bool isFloat)
{
    Img img = Make(kCount, isFloat);
    for (int i = 0; i < kCount; ++i)
        for (int c = 0; c < 4; ++c) {
            if (isFloat) img->RowF(0)[i * 4 + c] = Code(i, c) / 65535.0f;
            else img->RowW(0)[i * 4 + c] = Code(i, c);
        }
    return img;
}

std::array<float, 4> ConvertF(std::array<float, 4> p, ColorSpace from, ColorSpace to)
{
    Img img = Make(1, true);
    std::copy(p.begin(), p.end(), img->RowF(0));
    img->CSConvert(from, to);
    std::copy(img->RowF(0), img->RowF(0) + 4, p.begin());
    return p;
}

std::array<uint16_t, 4> ConvertW(std::array<uint16_t, 4> p, ColorSpace from, ColorSpace to)
{
    Img img = Make(1, false);
    std::copy(p.begin(), p.end(), img->RowW(0));
    img->CSConvert(from, to);
    std::copy(img->RowW(0), img->RowW(0) + 4, p.begin());
    return p;
}

constexpr ColorSpace kSpaces[] = {host::CS_HLS, host::CS_YUV, host::CS_YIQ, host::CS_CMY,
                                  host::CS_HSV, host::CS_XYZ, host::CS_LAB};

}  // namespace

TEST(HostColorSpace, FloatRoundTrips)
{
    const Img ref = Colours(true);
    for (ColorSpace cs : kSpaces) {
        Img img = Colours(true);
        img->CSConvert(host::CS_RGB, cs);
        img->CSConvert(cs, host::CS_RGB);
        float worst = 0.0f;
        for (int i = 0; i < kCount * 4; ++i) {
            if (i % 4 == 3) {
                ASSERT_EQ(img->RowF(0)[i], ref->RowF(0)[i]) << "alpha, space " << cs;
            }
            worst = std::max(worst, std::fabs(img->RowF(0)[i] - ref->RowF(0)[i]));
        }
        EXPECT_LE(worst, 1e-5f) << "space " << cs;
    }
}

TEST(HostColorSpace, IntegerRoundTrips)
{
    // 16-bit storage bounds the error: hue steps spread over six sectors (3
    // codes at full chroma, 4 with HLS's halved lightness), and the XYZ to RGB
    // matrix amplifies one code of X, Y or Z into up to 3 of RGB.
    struct Case {
        ColorSpace cs;
        int tolerance;
    };
    const Case cases[] = {{host::CS_HLS, 4}, {host::CS_YUV, 2}, {host::CS_YIQ, 2}, {host::CS_CMY, 0},
                          {host::CS_HSV, 3}, {host::CS_XYZ, 3}, {host::CS_LAB, 4}};
    const Img ref = Colours(false);
    for (const Case& k : cases) {
        Img img = Colours(false);
        img->CSConvert(host::CS_RGB, k.cs);
        img->CSConvert(k.cs, host::CS_RGB);
        int worst = 0;
        for (int i = 0; i < kCount * 4; ++i) {
            if (i % 4 == 3) {
                ASSERT_EQ(img->RowW(0)[i], ref->RowW(0)[i]) << "alpha, space " << k.cs;
            }
            worst = std::max(worst, std::abs(int(img->RowW(0)[i]) - int(ref->RowW(0)[i])));
        }
        EXPECT_LE(worst, k.tolerance) << "space " << k.cs;
    }
}

TEST(HostColorSpace, KnownValues)
{
    using F4 = std::array<float, 4>;
    using W4 = std::array<uint16_t, 4>;
    auto near = [](F4 a, F4 b) {
        for (int c = 0; c < 4; ++c) EXPECT_NEAR(a[c], b[c], 1e-5) << "component " << c;
    };
    const F4 red{1, 0, 0, 0.25f}, white{1, 1, 1, 1};
    near(ConvertF(red, host::CS_RGB, host::CS_HSV), {0.0f, 1.0f, 1.0f, 0.25f});
    near(ConvertF(red, host::CS_RGB, host::CS_HLS), {0.0f, 0.5f, 1.0f, 0.25f});
    near(ConvertF({0, 0.5f, 0, 1}, host::CS_RGB, host::CS_HSV), {1.0f / 3.0f, 1.0f, 0.5f, 1.0f});
    near(ConvertF({0.25f, 0.25f, 0.75f, 1}, host::CS_RGB, host::CS_HLS), {2.0f / 3.0f, 0.5f, 0.5f, 1.0f});
    near(ConvertF(white, host::CS_RGB, host::CS_YUV), {1.0f, 0.0f, 0.0f, 1.0f});
    near(ConvertF(red, host::CS_RGB, host::CS_YUV), {0.299f, -0.14713f, 0.615f, 0.25f});
    near(ConvertF(white, host::CS_RGB, host::CS_YIQ), {1.0f, 0.0f, 0.0f, 1.0f});
    near(ConvertF(white, host::CS_RGB, host::CS_XYZ), {0.95047f, 1.0f, 1.08883f, 1.0f});
    near(ConvertF(white, host::CS_RGB, host::CS_LAB), {1.0f, 0.0f, 0.0f, 1.0f});
    near(ConvertF({0.2f, 0.2f, 0.2f, 1}, host::CS_RGB, host::CS_HSV), {0.0f, 0.0f, 0.2f, 1.0f});
    near(ConvertF({0.2f, 0.7f, 0.1f, 1}, host::CS_RGB, host::CS_CMY), {0.8f, 0.3f, 0.9f, 1.0f});
    // Mid grey in LAB: Y = 0.5 gives L = 116 * cbrt(0.5) - 16 = 76.0693.
    near(ConvertF({0.5f, 0.5f, 0.5f, 1}, host::CS_RGB, host::CS_LAB), {0.760693f, 0.0f, 0.0f, 1.0f});

    // Integer storage: neutral chroma sits at half range, hue 0..1 at full range.
    const W4 wWhite = ConvertW({65535, 65535, 65535, 7}, host::CS_RGB, host::CS_YUV);
    EXPECT_EQ(wWhite[0], 65535);
    EXPECT_NEAR(wWhite[1], 32767.5, 1.0);
    EXPECT_NEAR(wWhite[2], 32767.5, 1.0);
    EXPECT_EQ(wWhite[3], 7);
    EXPECT_EQ(ConvertW({65535, 0, 0, 1}, host::CS_RGB, host::CS_HSV), (W4{0, 65535, 65535, 1}));
    EXPECT_EQ(ConvertW({0, 65535, 0, 1}, host::CS_RGB, host::CS_HLS), (W4{21845, 32768, 65535, 1}));
    EXPECT_EQ(ConvertW({100, 2000, 65535, 9}, host::CS_RGB, host::CS_CMY), (W4{65435, 63535, 0, 9}));
    const W4 lab = ConvertW({65535, 65535, 65535, 0}, host::CS_RGB, host::CS_LAB);
    EXPECT_EQ(lab[0], 65535);
    EXPECT_NEAR(lab[1], 32767.5, 1.0);
    EXPECT_NEAR(lab[2], 32767.5, 1.0);
    // Blue's b of -107.9 still fits in the integer range (no clipping at 0).
    EXPECT_GT(ConvertW({0, 0, 65535, 0}, host::CS_RGB, host::CS_LAB)[2], 0);
    // Pure colours fill the chroma ranges: red's V is the top code.
    EXPECT_EQ(ConvertW({65535, 0, 0, 0}, host::CS_RGB, host::CS_YUV)[2], 65535);
}

TEST(HostColorSpace, BetweenTwoSpacesGoesThroughRGB)
{
    for (bool isFloat : {true, false}) {
        Img direct = Colours(isFloat), stepped = Colours(isFloat);
        direct->CSConvert(host::CS_RGB, host::CS_HSV);
        direct->CSConvert(host::CS_HSV, host::CS_YIQ);
        stepped->CSConvert(host::CS_RGB, host::CS_YIQ);
        for (int i = 0; i < kCount * 4; ++i) {
            if (isFloat) ASSERT_NEAR(direct->RowF(0)[i], stepped->RowF(0)[i], 1e-5) << i;
            else ASSERT_NEAR(direct->RowW(0)[i], stepped->RowW(0)[i], 3) << i;
        }
    }
}

TEST(HostColorSpace, SameSpaceLeavesPixelsAlone)
{
    Img img = Colours(true);
    const Img ref = Colours(true);
    img->RowF(0)[0] = -3.5f;  // out of range values too
    img->CSConvert(host::CS_LAB, host::CS_LAB);
    EXPECT_EQ(img->RowF(0)[0], -3.5f);
    for (int i = 1; i < kCount * 4; ++i) ASSERT_EQ(img->RowF(0)[i], ref->RowF(0)[i]);
}
