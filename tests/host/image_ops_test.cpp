#include "support.h"

using host::Image;
using zvtest::HostImg, zvtest::Make;

namespace {

double At(const Image& img, int x, int y, int c)
{
    return img.IsFloat() ? img.RowF(y)[x * 4 + c] : img.RowW(y)[x * 4 + c];
}

bool SamePixels(const Image& a, const Image& b)
{
    for (int y = 0; y < a.Height(); ++y)
        if (std::memcmp(a.Row(y), b.Row(y), a.RowBytes()) != 0) return false;
    return true;
}

// Blur sizes in pixels.
host::BlurSpec Blur(int filter, double x, double y) { return {.filter = filter, .xSize = x / 720.0, .ySize = y / 720.0}; }

}  // namespace

TEST(HostResize, ReduceAveragesAndEnlargeInterpolates)
{
    for (bool isFloat : {false, true}) {
        const double one = isFloat ? 1.0 : 65535.0;
        HostImg img = Make(8, 8, isFloat, [&](int x, int y, int c) { return c == 3 || (c == 0 && (x + y) % 2) ? one : 0; },
                       {host::ChanVectorX});
        for (int i = 0; i < 64; ++i) img->AuxPlane(host::ChanVectorX)[i] = float((i + i / 8) % 2 * 2);
        HostImg quarter(img->ResizeOfImage(2, 2));
        ASSERT_EQ(quarter->Width(), 2);
        ASSERT_EQ(quarter->IsFloat(), isFloat);
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(At(*quarter, i % 2, i / 2, 0), isFloat ? 0.5 : 32768.0);  // 32767.5 rounded
            EXPECT_EQ(At(*quarter, i % 2, i / 2, 3), one);
            EXPECT_EQ(quarter->AuxPlane(host::ChanVectorX)[i], 1.0f);
        }
        // 8 to 3: outer outputs weigh 3/8 3/8 1/4, the middle 1/8 3/8 3/8 1/8. With
        // E the weight on even columns, the checker's mean is Ex (1 - Ey) + (1 - Ex) Ey.
        HostImg third(img->ResizeOfImage(3, 3));
        const double even[3] = {5.0 / 8, 0.5, 3.0 / 8};
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 3; ++x)
                EXPECT_NEAR(At(*third, x, y, 0), (even[x] * (1 - even[y]) + (1 - even[x]) * even[y]) * one,
                            isFloat ? 1e-6 : 0.51);
    }
    // Output centres fall on source 0 (clamped), 0.25, 0.75 and 1 (clamped).
    HostImg pair = Make(2, 1, false, [](int x, int, int c) { return c == 1 ? 40000 * x : 0; });
    HostImg wide(pair->ResizeOfImage(4, 3));
    const int expect[4] = {0, 10000, 30000, 40000};
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_EQ(At(*wide, x, y, 1), expect[x]);
}

TEST(HostBlur, ConstantStaysImpulseSpreadsAndBoxWeightsWithDuplicateEdges)
{
    for (int filter : {host::BlurBox, host::BlurGaussian}) {
        for (bool isFloat : {false, true})
            for (double size : {0.4, 5.3, 40.0}) {  // 40 is wider than the image
                auto value = [&](int, int, int c) { return isFloat ? 0.3 + c : 1234 + 20000 * c; };
                HostImg img = Make(23, 17, isFloat, value);
                HostImg out(img->BlurOfImage(Blur(filter, size, size * 0.7)));
                for (int y = 0; y < 17; ++y)
                    for (int x = 0; x < 23; ++x)
                        for (int c = 0; c < 4; ++c) ASSERT_NEAR(At(*out, x, y, c), value(x, y, c), isFloat ? 2e-6 : 0);
            }
        HostImg img = Make(31, 25, true, [](int x, int y, int c) { return x == 15 && y == 12 && c == 0; });
        HostImg out(img->BlurOfImage(Blur(filter, 6.5, 4.2)));
        double sum = 0.0;
        for (int y = 0; y < 25; ++y)
            for (int x = 0; x < 31; ++x) {
                sum += At(*out, x, y, 0);
                EXPECT_NEAR(At(*out, x, y, 0), At(*out, 30 - x, 24 - y, 0), 1e-7);  // symmetric
            }
        EXPECT_NEAR(sum, 1.0, 1e-5);
        // The Gaussian of width 6.5 is cut 7 pixels out; the box covers 0.75 of the pixels 3 away.
        const int reach = filter == host::BlurBox ? 3 : 7;
        EXPECT_GT(At(*out, 15 + reach, 12, 0), 0.0);
        EXPECT_LT(At(*out, 15 + reach, 12, 0), At(*out, 14 + reach, 12, 0));
        EXPECT_EQ(At(*out, 16 + reach, 12, 0), 0.0);
    }
    // Two pixels wide weighs the neighbours a quarter each.
    HostImg f = Make(5, 1, true, [](int x, int, int c) { return c == 1 && x == 2; });
    HostImg fb(f->BlurOfImage(Blur(host::BlurBox, 2.0, 0.0)));
    const double weights[5] = {0, 0.25, 0.5, 0.25, 0};
    for (int x = 0; x < 5; ++x) EXPECT_EQ(At(*fb, x, 0, 1), weights[x]);
    // Three wide over 0, 300, 600: the ends repeat the edge pixels.
    HostImg w = Make(3, 2, false, [](int x, int, int c) { return c == 2 ? 300 * x : 0; });
    HostImg wb(w->BlurOfImage(Blur(host::BlurBox, 3.0, 3.0)));
    const int means[3] = {100, 300, 500};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_EQ(At(*wb, x, y, 2), means[x]);
}

TEST(HostBlur, ChannelsAxesAndBlend)
{
    HostImg img = Make(16, 12, false, [](int x, int y, int c) { return (x * 7 + y * 13 + c * 5) % 11 * 5000; },
                   {host::ChanZ});
    for (int i = 0; i < 16 * 12; ++i) img->AuxPlane(host::ChanZ)[i] = float(i);
    host::BlurSpec s = Blur(host::BlurGaussian, 3.0, 3.0);
    s.green = s.blue = false;
    HostImg out(img->BlurOfImage(s));
    int redChanged = 0;
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 16; ++x) {
            ASSERT_EQ(At(*out, x, y, 1), At(*img, x, y, 1));
            ASSERT_EQ(At(*out, x, y, 2), At(*img, x, y, 2));
            ASSERT_EQ(out->AuxPlane(host::ChanZ)[y * 16 + x], float(y * 16 + x));
            redChanged += At(*out, x, y, 0) != At(*img, x, y, 0);
        }
    EXPECT_GT(redChanged, 100);

    // A picture varying only across is untouched by a blur only down.
    HostImg ramp = Make(9, 7, false, [](int x, int, int) { return x * 7000; });
    EXPECT_TRUE(SamePixels(*ramp, *HostImg(ramp->BlurOfImage(Blur(host::BlurBox, 0.0, 5.0)))));
    EXPECT_FALSE(SamePixels(*ramp, *HostImg(ramp->BlurOfImage(Blur(host::BlurBox, 5.0, 0.0)))));

    HostImg f = Make(9, 1, true, [](int x, int, int c) { return c == 0 && x == 4; });
    host::BlurSpec half = Blur(host::BlurBox, 3.0, 0.0);
    half.xBlend = 0.5;
    HostImg full(f->BlurOfImage(Blur(host::BlurBox, 3.0, 0.0))), mixed(f->BlurOfImage(half));
    for (int x = 0; x < 9; ++x) EXPECT_NEAR(At(*mixed, x, 0, 0), 0.5 * (At(*f, x, 0, 0) + At(*full, x, 0, 0)), 1e-7);
}

TEST(HostTransform, IdentityRotationMoveAndScale)
{
    for (bool isFloat : {false, true}) {
        HostImg img = Make(7, 5, isFloat, [&](int x, int y, int c) { return isFloat ? x - 0.25 * y + c : 1000 * x + 97 * y + c; });
        EXPECT_TRUE(SamePixels(*img, *HostImg(img->TransformOf(host::TransformSpec{}))));
    }
    // Rows run upward, so 90 degrees counter-clockwise on 3 x 3 sends output
    // x, y to source y, 2 - x: the first pixel lands at 2, 0.
    const host::TransformSpec turn{.angle = 90.0};
    HostImg sq = Make(3, 3, false, [](int x, int y, int c) { return c ? 0 : 1 + x + 3 * y; });
    HostImg sqTurned(sq->TransformOf(turn));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_EQ(At(*sqTurned, x, y, 0), 1 + y + 3 * (2 - x)) << x << "," << y;
    // On 4 x 2 pixels stay square: output x, y takes source y + 1, 2 - x and
    // the outer columns fall outside.
    HostImg wide = Make(4, 2, false, [](int x, int y, int c) { return c ? 0 : 1 + x + 4 * y; });
    HostImg wideTurned(wide->TransformOf(turn));
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(At(*wideTurned, x, y, 0), x == 0 || x == 3 ? 0 : 1 + (y + 1) + 4 * (2 - x)) << x << "," << y;

    // The centre a pixel to the right moves the picture with it.
    for (host::Edge e : {host::EdgeBlack, host::EdgeWrap, host::EdgeDuplicate}) {
        HostImg out(wide->TransformOf({.centerX = 0.75, .edges = e}));
        for (int y = 0; y < 2; ++y) {
            EXPECT_EQ(At(*out, 0, y, 0), e == host::EdgeBlack ? 0 : e == host::EdgeWrap ? 4 + 4 * y : 1 + 4 * y);
            for (int x = 1; x < 4; ++x) EXPECT_EQ(At(*out, x, y, 0), x + 4 * y);
        }
    }
    // Scale 2 about the left edge: output x takes source x / 2 - 0.25.
    HostImg f = Make(4, 1, true, [](int x, int, int c) { return c ? 0 : 10.0 * x; });
    HostImg big(f->TransformOf({.centerX = 0.0, .pivotX = 0.0, .sizeX = 2.0, .edges = host::EdgeDuplicate}));
    const double stretched[4] = {0, 2.5, 7.5, 12.5};
    for (int x = 0; x < 4; ++x) EXPECT_NEAR(At(*big, x, 0, 0), stretched[x], 1e-4);
}
