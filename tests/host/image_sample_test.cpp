#include <gtest/gtest.h>
#include <array>
#include <memory>
#include "host/image.h"

using host::Image;

namespace {

struct Free {
    void operator()(Image* i) const { i->Recycle(); }
};
using Img = std::unique_ptr<Image, Free>;

Img Make(int w, int h, bool isFloat)
{
    host::ImageSpec spec;
    spec.width = w;
    spec.height = h;
    spec.depth = isFloat ? host::DepthFloat32 : host::DepthInt16;
    return Img(Image::New(spec));
}

void SetW(Image& img, int x, int y, std::array<uint16_t, 4> v)
{
    std::copy(v.begin(), v.end(), img.RowW(y) + x * 4);
}

void SetF(Image& img, int x, int y, std::array<float, 4> v)
{
    std::copy(v.begin(), v.end(), img.RowF(y) + x * 4);
}

std::array<uint32_t, 4> SampleW(const Image& img, int32_t x, int32_t y, host::Edge e)
{
    std::array<uint32_t, 4> out;
    img.SamplePixel(x, y, e, out.data());
    return out;
}

std::array<float, 4> SampleF(const Image& img, int32_t x, int32_t y, host::Edge e)
{
    std::array<float, 4> out;
    img.SamplePixel(x, y, e, out.data());
    return out;
}

// Quad of the box [x0, x1] x [y0, y1] in pixel-centre coordinates.
std::array<int32_t, 8> Box(double x0, double y0, double x1, double y1)
{
    auto f = [](double v) { return static_cast<int32_t>(v * 65536.0); };
    return {f(x0), f(y0), f(x1), f(y0), f(x1), f(y1), f(x0), f(y1)};
}

std::array<float, 4> AreaF(const Image& img, const std::array<int32_t, 8>& q, host::Edge e)
{
    std::array<float, 4> out;
    img.SampleArea(q.data(), e, out.data());
    return out;
}

std::array<uint32_t, 4> AreaW(const Image& img, const std::array<int32_t, 8>& q, host::Edge e)
{
    std::array<uint32_t, 4> out;
    img.SampleArea(q.data(), e, out.data());
    return out;
}

constexpr int32_t kOne = 1 << 16, kHalf = 1 << 15;
using U4 = std::array<uint32_t, 4>;
using F4 = std::array<float, 4>;

}  // namespace

TEST(HostSamplePixel, IntegerBilinear)
{
    Img img = Make(2, 2, false);
    SetW(*img, 0, 0, {0, 100, 1000, 65535});
    SetW(*img, 1, 0, {1, 200, 3000, 0});
    SetW(*img, 0, 1, {10, 300, 5000, 65535});
    SetW(*img, 1, 1, {20, 401, 7000, 65535});
    // Whole positions read the pixels exactly.
    EXPECT_EQ(SampleW(*img, 0, 0, host::EdgeBlack), (U4{0, 100, 1000, 65535}));
    EXPECT_EQ(SampleW(*img, kOne, kOne, host::EdgeBlack), (U4{20, 401, 7000, 65535}));
    // Half way rounds to nearest, halves upward.
    EXPECT_EQ(SampleW(*img, kHalf, 0, host::EdgeBlack), (U4{1, 150, 2000, 32768}));
    EXPECT_EQ(SampleW(*img, kOne, kHalf, host::EdgeBlack), (U4{11, 301, 5000, 32768}));
    // Centre of four: (0+1+10+20)/4 = 7.75, (100+200+300+401)/4 = 250.25, 4000, 49151.25.
    EXPECT_EQ(SampleW(*img, kHalf, kHalf, host::EdgeBlack), (U4{8, 250, 4000, 49151}));
    // A quarter step: 0.75 * 1000 + 0.25 * 3000.
    EXPECT_EQ(SampleW(*img, kHalf / 2, 0, host::EdgeBlack)[2], 1500u);
    // The float read of an integer image is on the 0..1 scale.
    EXPECT_FLOAT_EQ(SampleF(*img, kHalf, 0, host::EdgeBlack)[2], 2000.0f / 65535.0f);
}

TEST(HostSamplePixel, FloatBilinear)
{
    Img img = Make(2, 2, true);
    SetF(*img, 0, 0, {0.0f, -1.0f, 2.0f, 1.0f});
    SetF(*img, 1, 0, {1.0f, 3.0f, 2.0f, 0.0f});
    SetF(*img, 0, 1, {0.5f, 0.0f, 4.0f, 1.0f});
    SetF(*img, 1, 1, {0.25f, 8.0f, 6.0f, 1.0f});
    EXPECT_EQ(SampleF(*img, kOne, 0, host::EdgeBlack), (F4{1.0f, 3.0f, 2.0f, 0.0f}));
    EXPECT_EQ(SampleF(*img, 0, kOne, host::EdgeBlack), (F4{0.5f, 0.0f, 4.0f, 1.0f}));
    EXPECT_EQ(SampleF(*img, kHalf, 0, host::EdgeBlack), (F4{0.5f, 1.0f, 2.0f, 0.5f}));
    EXPECT_EQ(SampleF(*img, kHalf, kHalf, host::EdgeBlack), (F4{0.4375f, 2.5f, 3.5f, 0.75f}));
    // Values are not clipped; the integer read of a float image is.
    EXPECT_EQ(SampleW(*img, 0, 0, host::EdgeBlack), (U4{0, 0, 65535, 65535}));
    EXPECT_EQ(SampleW(*img, kHalf, 0, host::EdgeBlack), (U4{32768, 65535, 65535, 32768}));
}

TEST(HostSamplePixel, EdgesJustOutsideEachSide)
{
    // 3 x 2, each pixel's red its own number 1..6, row by row.
    Img img = Make(3, 2, false);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) SetW(*img, x, y, {uint16_t(1 + x + 3 * y), 0, 0, 65535});
    auto red = [&](int32_t x, int32_t y, host::Edge e) { return SampleW(*img, x, y, e)[0]; };
    using host::EdgeBlack, host::EdgeWrap, host::EdgeDuplicate;
    // Left, right, below row 0, above the last row.
    EXPECT_EQ(red(-kOne, kOne, EdgeBlack), 0u);
    EXPECT_EQ(red(-kOne, kOne, EdgeWrap), 6u);
    EXPECT_EQ(red(-kOne, kOne, EdgeDuplicate), 4u);
    EXPECT_EQ(red(3 * kOne, 0, EdgeBlack), 0u);
    EXPECT_EQ(red(3 * kOne, 0, EdgeWrap), 1u);
    EXPECT_EQ(red(3 * kOne, 0, EdgeDuplicate), 3u);
    EXPECT_EQ(red(2 * kOne, -kOne, EdgeBlack), 0u);
    EXPECT_EQ(red(2 * kOne, -kOne, EdgeWrap), 6u);
    EXPECT_EQ(red(2 * kOne, -kOne, EdgeDuplicate), 3u);
    EXPECT_EQ(red(kOne, 2 * kOne, EdgeBlack), 0u);
    EXPECT_EQ(red(kOne, 2 * kOne, EdgeWrap), 2u);
    EXPECT_EQ(red(kOne, 2 * kOne, EdgeDuplicate), 5u);
    // Half a pixel outside blends with what lies beyond: 4/2, (6+4)/2, 4.
    EXPECT_EQ(red(-kHalf, kOne, EdgeBlack), 2u);
    EXPECT_EQ(red(-kHalf, kOne, EdgeWrap), 5u);
    EXPECT_EQ(red(-kHalf, kOne, EdgeDuplicate), 4u);
    // Wrap takes the remainder positive however far out.
    EXPECT_EQ(red(-4 * kOne, -3 * kOne, EdgeWrap), 6u);
    EXPECT_EQ(red(7 * kOne, 5 * kOne, EdgeWrap), 5u);
    // The last column read whole needs nothing beyond it.
    EXPECT_EQ(red(2 * kOne, kOne, EdgeBlack), 6u);

    Img f = Make(1, 1, true);
    SetF(*f, 0, 0, {2.0f, 0.0f, 0.0f, 1.0f});
    EXPECT_FLOAT_EQ(SampleF(*f, kHalf, 0, EdgeBlack)[0], 1.0f);
    EXPECT_FLOAT_EQ(SampleF(*f, kHalf, -kHalf, EdgeWrap)[0], 2.0f);
    EXPECT_FLOAT_EQ(SampleF(*f, 5 * kOne, -9 * kOne, EdgeDuplicate)[0], 2.0f);
}

TEST(HostSampleArea, CheckerboardIsMidGrey)
{
    for (bool isFloat : {false, true}) {
        Img img = Make(8, 8, isFloat);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const bool on = (x + y) & 1;
                if (isFloat) SetF(*img, x, y, {on ? 1.0f : 0.0f, 0.0f, 0.0f, 1.0f});
                else SetW(*img, x, y, {uint16_t(on ? 65535 : 0), 0, 0, 65535});
            }
        for (int sat = 0; sat < 2; ++sat) {
            if (sat) img->UseSAT();
            // Boxes of 2 x 2 and 8 x 8 pixels, cell edges at half positions.
            for (auto q : {Box(1.5, 3.5, 3.5, 5.5), Box(-0.5, -0.5, 7.5, 7.5)}) {
                if (isFloat) {
                    EXPECT_EQ(AreaF(*img, q, host::EdgeBlack)[0], 0.5f);
                } else {
                    EXPECT_EQ(AreaW(*img, q, host::EdgeBlack)[0], 32768u);  // 32767.5 rounded
                    EXPECT_EQ(AreaF(*img, q, host::EdgeBlack)[0], 0.5f);
                }
                EXPECT_FLOAT_EQ(AreaF(*img, q, host::EdgeBlack)[3], 1.0f);
            }
        }
    }
}

TEST(HostSampleArea, BoxFromCornersAtLeastOnePixel)
{
    Img img = Make(3, 1, true);
    SetF(*img, 0, 0, {1.0f, 0.0f, 0.0f, 0.0f});
    SetF(*img, 1, 0, {3.0f, 0.0f, 0.0f, 0.0f});
    SetF(*img, 2, 0, {8.0f, 0.0f, 0.0f, 0.0f});
    // A point at a centre covers that pixel, at a half position two halves.
    EXPECT_FLOAT_EQ(AreaF(*img, Box(1, 0, 1, 0), host::EdgeBlack)[0], 3.0f);
    EXPECT_FLOAT_EQ(AreaF(*img, Box(1.5, 0, 1.5, 0), host::EdgeBlack)[0], 5.5f);
    // A diamond is taken by its bounding box, here the whole row: (1 + 3 + 8) / 3.
    const std::array<int32_t, 8> diamond = {kOne, -kHalf, 2 * kOne + kHalf, 0, kOne, kHalf, -kHalf, 0};
    EXPECT_FLOAT_EQ(AreaF(*img, diamond, host::EdgeBlack)[0], 4.0f);
    // Fractional ends: [0.25, 1.75] in edge units covers 0.75 of 1 and 0.75 of 3.
    EXPECT_FLOAT_EQ(AreaF(*img, Box(-0.25, 0, 1.25, 0), host::EdgeBlack)[0], (0.75f + 2.25f) / 1.5f);
}

TEST(HostSampleArea, EdgeModes)
{
    // One row of 1 and 3; boxes given in pixel-edge units below.
    Img img = Make(2, 1, true);
    SetF(*img, 0, 0, {1.0f, 0.0f, 0.0f, 1.0f});
    SetF(*img, 1, 0, {3.0f, 0.0f, 0.0f, 1.0f});
    auto mean = [&](double x0, double x1, host::Edge e) {
        return AreaF(*img, Box(x0 - 0.5, 0, x1 - 0.5, 0), e)[0];
    };
    for (int sat = 0; sat < 2; ++sat) {
        if (sat) img->UseSAT();
        // [-1, 1]: one pixel beyond the left edge.
        EXPECT_FLOAT_EQ(mean(-1, 1, host::EdgeBlack), 0.5f);
        EXPECT_FLOAT_EQ(mean(-1, 1, host::EdgeWrap), 2.0f);
        EXPECT_FLOAT_EQ(mean(-1, 1, host::EdgeDuplicate), 1.0f);
        // [2, 3.5]: wholly beyond the right edge.
        EXPECT_FLOAT_EQ(mean(2, 3.5, host::EdgeBlack), 0.0f);
        EXPECT_FLOAT_EQ(mean(2, 3.5, host::EdgeWrap), 2.5f / 1.5f);
        EXPECT_FLOAT_EQ(mean(2, 3.5, host::EdgeDuplicate), 3.0f);
        // Wrap over several periods: [0, 5] is 2.5 periods, [-3, 0] three pixels 3, 1, 3.
        EXPECT_FLOAT_EQ(mean(0, 5, host::EdgeWrap), 9.0f / 5.0f);
        EXPECT_FLOAT_EQ(mean(-3, 0, host::EdgeWrap), 7.0f / 3.0f);
        // Duplicate both sides: [-2, 4] is 3 parts of 1 and 3 parts of 3.
        EXPECT_FLOAT_EQ(mean(-2, 4, host::EdgeDuplicate), 2.0f);
        // Vertically the single row repeats or vanishes: 1.5 rows above it.
        const auto q = Box(-0.5, -0.5, 1.5, 1.0);
        EXPECT_FLOAT_EQ(AreaF(*img, q, host::EdgeBlack)[0], 2.0f / 1.5f);
        EXPECT_FLOAT_EQ(AreaF(*img, q, host::EdgeWrap)[0], 2.0f);
        EXPECT_FLOAT_EQ(AreaF(*img, q, host::EdgeDuplicate)[0], 2.0f);
        EXPECT_FLOAT_EQ(AreaF(*img, q, host::EdgeBlack)[3], 1.0f / 1.5f);
    }
}

TEST(HostSampleArea, TableAndDirectPathsAgree)
{
    for (bool isFloat : {false, true}) {
        Img a = Make(13, 9, isFloat), b = Make(13, 9, isFloat);
        uint32_t seed = 12345;
        auto next = [&] { return seed = seed * 1664525u + 1013904223u; };
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 13; ++x)
                for (int c = 0; c < 4; ++c) {
                    const uint32_t v = next() >> 16;
                    if (isFloat) a->RowF(y)[x * 4 + c] = b->RowF(y)[x * 4 + c] = float(v) / 4096.0f - 4.0f;
                    else a->RowW(y)[x * 4 + c] = b->RowW(y)[x * 4 + c] = uint16_t(v);
                }
        b->UseSAT();
        ASSERT_TRUE(b->HasSAT());
        ASSERT_FALSE(a->HasSAT());
        for (int i = 0; i < 300; ++i) {
            std::array<int32_t, 8> q;
            for (int k = 0; k < 8; ++k)
                q[k] = static_cast<int32_t>(next() % (40u << 16)) - (k & 1 ? 15 << 16 : 13 << 16);
            for (host::Edge e : {host::EdgeBlack, host::EdgeWrap, host::EdgeDuplicate}) {
                const F4 fa = AreaF(*a, q, e), fb = AreaF(*b, q, e);
                for (int c = 0; c < 4; ++c) EXPECT_NEAR(fa[c], fb[c], 1e-5) << "edge " << e << " case " << i;
            }
        }
    }
}
