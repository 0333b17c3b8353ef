#include <gtest/gtest.h>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>
#include "host/image.h"

using host::Image;

namespace {

struct Free {
    void operator()(Image* i) const { i->Recycle(); }
};
using Img = std::unique_ptr<Image, Free>;

Img Make(int w, int h, bool isFloat, std::vector<int> aux = {})
{
    host::ImageSpec spec;
    spec.width = w;
    spec.height = h;
    spec.depth = isFloat ? host::DepthFloat32 : host::DepthInt16;
    spec.aux = std::move(aux);
    return Img(Image::New(spec));
}

// Channel c of pixel x, y on the 0..65535 scale for integer images.
double At(const Image& img, int x, int y, int c)
{
    return img.IsFloat() ? img.RowF(y)[x * 4 + c] : img.RowW(y)[x * 4 + c];
}

void Set(Image& img, int x, int y, int c, double v)
{
    if (img.IsFloat()) img.RowF(y)[x * 4 + c] = static_cast<float>(v);
    else img.RowW(y)[x * 4 + c] = static_cast<uint16_t>(v);
}

bool SamePixels(const Image& a, const Image& b)
{
    if (a.Width() != b.Width() || a.Height() != b.Height()) return false;
    for (int y = 0; y < a.Height(); ++y)
        if (std::memcmp(a.Row(y), b.Row(y), a.RowBytes()) != 0) return false;
    return true;
}

host::BlurSpec Blur(int filter, double xPixels, double yPixels)
{
    host::BlurSpec s;
    s.filter = filter;
    s.xSize = xPixels / 720.0;
    s.ySize = yPixels / 720.0;
    return s;
}

}  // namespace

TEST(HostResize, ReducedCheckerboardIsGrey)
{
    for (bool isFloat : {false, true}) {
        Img img = Make(8, 8, isFloat, {host::ChanVectorX});
        float* aux = img->AuxPlane(host::ChanVectorX);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const bool on = (x + y) & 1;
                Set(*img, x, y, 0, on ? (isFloat ? 1.0 : 65535.0) : 0.0);
                Set(*img, x, y, 3, isFloat ? 1.0 : 65535.0);
                aux[y * 8 + x] = on ? 2.0f : 0.0f;
            }
        Img small(img->ResizeOfImage(2, 2));
        ASSERT_EQ(small->Width(), 2);
        ASSERT_EQ(small->Height(), 2);
        EXPECT_EQ(small->IsFloat(), isFloat);
        const float* sa = small->AuxPlane(host::ChanVectorX);
        ASSERT_NE(sa, nullptr);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 2; ++x) {
                EXPECT_EQ(At(*small, x, y, 0), isFloat ? 0.5 : 32768.0);  // 32767.5 rounded
                EXPECT_EQ(At(*small, x, y, 3), isFloat ? 1.0 : 65535.0);
                EXPECT_EQ(sa[y * 2 + x], 1.0f);
            }
        // 8 to 3 averages 8/3 pixels: the outer outputs weigh their pixels
        // 3/8, 3/8, 1/4, the middle one 1/8, 3/8, 3/8, 1/8. With even and
        // odd columns' shares E and O, the checker's mean is Ex Oy + Ox Ey.
        Img three(img->ResizeOfImage(3, 3));
        const double even[3] = {5.0 / 8, 0.5, 3.0 / 8};
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 3; ++x) {
                const double m = even[x] * (1 - even[y]) + (1 - even[x]) * even[y];
                if (isFloat) EXPECT_NEAR(At(*three, x, y, 0), m, 1e-6);
                else EXPECT_NEAR(At(*three, x, y, 0), m * 65535, 0.51);
            }
    }
}

TEST(HostResize, EnlargeInterpolatesBetweenCentres)
{
    Img img = Make(2, 1, false);
    Set(*img, 1, 0, 0, 40000);
    Img wide(img->ResizeOfImage(4, 3));
    // Output centres at source 0 (clamped from -0.25), 0.25, 0.75, 1 (clamped from 1.25).
    for (int y = 0; y < 3; ++y) {
        EXPECT_EQ(At(*wide, 0, y, 0), 0);
        EXPECT_EQ(At(*wide, 1, y, 0), 10000);
        EXPECT_EQ(At(*wide, 2, y, 0), 30000);
        EXPECT_EQ(At(*wide, 3, y, 0), 40000);
    }
    // The same size is the same picture.
    Img f = Make(5, 3, true);
    for (int i = 0; i < 15 * 4; ++i) f->RowF(0)[i] = 0.37f * i - 3.0f;
    Img same(f->ResizeOfImage(5, 3));
    EXPECT_TRUE(SamePixels(*f, *same));
}

TEST(HostBlur, ConstantStaysConstant)
{
    for (bool isFloat : {false, true})
        for (int filter : {host::BlurBox, host::BlurGaussian})
            for (double size : {0.4, 2.0, 5.3, 40.0}) {
                Img img = Make(23, 17, isFloat);
                for (int y = 0; y < 17; ++y)
                    for (int x = 0; x < 23; ++x)
                        for (int c = 0; c < 4; ++c) Set(*img, x, y, c, isFloat ? 0.3 + c : 1234 + 20000 * c);
                Img out(img->BlurOfImage(Blur(filter, size, size * 0.7)));
                for (int y = 0; y < 17; ++y)
                    for (int x = 0; x < 23; ++x)
                        for (int c = 0; c < 4; ++c) {
                            if (isFloat) ASSERT_NEAR(At(*out, x, y, c), 0.3 + c, 2e-6);
                            else ASSERT_EQ(At(*out, x, y, c), 1234 + 20000 * c);
                        }
            }
}

TEST(HostBlur, ImpulseKeepsItsSum)
{
    for (int filter : {host::BlurBox, host::BlurGaussian}) {
        Img img = Make(31, 25, true);
        Set(*img, 15, 12, 0, 1.0);
        Img out(img->BlurOfImage(Blur(filter, 6.5, 4.2)));
        double sum = 0.0;
        for (int y = 0; y < 25; ++y)
            for (int x = 0; x < 31; ++x) {
                sum += At(*out, x, y, 0);
                // Symmetric about the impulse.
                EXPECT_NEAR(At(*out, x, y, 0), At(*out, 30 - x, 24 - y, 0), 1e-7);
            }
        EXPECT_NEAR(sum, 1.0, 1e-5);
        // A Gaussian of width 6.5 is cut 7 pixels out; a box 6.5 wide covers
        // 0.75 of the pixels 3 away.
        const int reach = filter == host::BlurBox ? 3 : 7;
        EXPECT_GT(At(*out, 15 + reach, 12, 0), 0.0);
        EXPECT_LT(At(*out, 15 + reach, 12, 0), At(*out, 15 + reach - 1, 12, 0));
        EXPECT_EQ(At(*out, 15 + reach + 1, 12, 0), 0.0);
    }
}

TEST(HostBlur, BoxWeightsAndDuplicateEdges)
{
    // A box two pixels wide weighs a pixel's neighbours by a quarter each.
    Img f = Make(5, 1, true);
    Set(*f, 2, 0, 1, 1.0);
    Img fb(f->BlurOfImage(Blur(host::BlurBox, 2.0, 0.0)));
    const double expect[5] = {0.0, 0.25, 0.5, 0.25, 0.0};
    for (int x = 0; x < 5; ++x) EXPECT_DOUBLE_EQ(At(*fb, x, 0, 1), expect[x]);
    // Three wide over 0, 300, 600: the ends repeat the edge pixel.
    Img w = Make(3, 2, false);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) Set(*w, x, y, 2, 300 * x);
    Img wb(w->BlurOfImage(Blur(host::BlurBox, 3.0, 3.0)));
    for (int y = 0; y < 2; ++y) {
        EXPECT_EQ(At(*wb, 0, y, 2), 100);
        EXPECT_EQ(At(*wb, 1, y, 2), 300);
        EXPECT_EQ(At(*wb, 2, y, 2), 500);
    }
}

TEST(HostBlur, ChannelsAxesAndBlend)
{
    Img img = Make(16, 12, false, {host::ChanZ});
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 16; ++x) {
            for (int c = 0; c < 4; ++c) Set(*img, x, y, c, ((x * 7 + y * 13 + c * 5) % 11) * 5000);
            img->AuxPlane(host::ChanZ)[y * 16 + x] = float(x * y);
        }
    // Only red and alpha: green and blue stay bit for bit, and the aux plane too.
    host::BlurSpec s = Blur(host::BlurGaussian, 3.0, 3.0);
    s.green = s.blue = false;
    Img out(img->BlurOfImage(s));
    bool redChanged = false;
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 16; ++x) {
            ASSERT_EQ(At(*out, x, y, 1), At(*img, x, y, 1));
            ASSERT_EQ(At(*out, x, y, 2), At(*img, x, y, 2));
            ASSERT_EQ(out->AuxPlane(host::ChanZ)[y * 16 + x], float(x * y));
            redChanged |= At(*out, x, y, 0) != At(*img, x, y, 0);
        }
    EXPECT_TRUE(redChanged);

    // Size 0 across leaves each row's variation along x alone; a picture that
    // varies only along x is then untouched.
    Img cols = Make(9, 7, false);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x) Set(*cols, x, y, 0, x * 7000);
    Img down(cols->BlurOfImage(Blur(host::BlurBox, 0.0, 5.0)));
    EXPECT_TRUE(SamePixels(*cols, *down));
    Img across(cols->BlurOfImage(Blur(host::BlurBox, 5.0, 0.0)));
    EXPECT_FALSE(SamePixels(*cols, *across));

    // A blend of one half lies half way between input and full blur.
    Img f = Make(9, 1, true);
    Set(*f, 4, 0, 0, 1.0);
    host::BlurSpec half = Blur(host::BlurBox, 3.0, 0.0);
    half.xBlend = 0.5;
    Img full(f->BlurOfImage(Blur(host::BlurBox, 3.0, 0.0)));
    Img mixed(f->BlurOfImage(half));
    for (int x = 0; x < 9; ++x)
        EXPECT_NEAR(At(*mixed, x, 0, 0), 0.5 * (At(*f, x, 0, 0) + At(*full, x, 0, 0)), 1e-7);
}

TEST(HostTransform, IdentityAndRotation)
{
    for (bool isFloat : {false, true}) {
        Img img = Make(7, 5, isFloat);
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 7; ++x)
                for (int c = 0; c < 4; ++c) Set(*img, x, y, c, isFloat ? x - 0.25 * y + c : 1000 * x + 97 * y + c);
        Img same(img->TransformOf(host::TransformSpec{}));
        EXPECT_TRUE(SamePixels(*img, *same));
    }

    // 3 x 3 turned 90 degrees counter-clockwise (rows run upward): the output
    // at x, y takes the source at y, 2 - x, so the first pixel goes to 2, 0.
    Img sq = Make(3, 3, false);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) Set(*sq, x, y, 0, 1 + x + 3 * y);
    host::TransformSpec turn;
    turn.angle = 90.0;
    Img turned(sq->TransformOf(turn));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_EQ(At(*turned, x, y, 0), 1 + y + 3 * (2 - x)) << x << "," << y;

    // 4 x 2 keeps square pixels: output x, y takes source y + 1, 2 - x, and
    // the outer columns fall outside the source.
    Img wide = Make(4, 2, false);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) Set(*wide, x, y, 0, 1 + x + 4 * y);
    Img wideTurned(wide->TransformOf(turn));
    for (int y = 0; y < 2; ++y) {
        EXPECT_EQ(At(*wideTurned, 0, y, 0), 0);
        EXPECT_EQ(At(*wideTurned, 3, y, 0), 0);
        for (int x = 1; x < 3; ++x) EXPECT_EQ(At(*wideTurned, x, y, 0), 1 + (y + 1) + 4 * (2 - x));
    }
}

TEST(HostTransform, MoveScaleAndEdges)
{
    Img img = Make(4, 2, false);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) Set(*img, x, y, 0, 1 + x + 4 * y);
    // The centre one pixel to the right moves the picture with it.
    host::TransformSpec move;
    move.centerX = 0.5 + 1.0 / 4.0;
    for (host::Edge e : {host::EdgeBlack, host::EdgeWrap, host::EdgeDuplicate}) {
        move.edges = e;
        Img out(img->TransformOf(move));
        for (int y = 0; y < 2; ++y) {
            const double first = e == host::EdgeBlack ? 0 : e == host::EdgeWrap ? 4 + 4 * y : 1 + 4 * y;
            EXPECT_EQ(At(*out, 0, y, 0), first);
            for (int x = 1; x < 4; ++x) EXPECT_EQ(At(*out, x, y, 0), x + 4 * y);
        }
    }
    // Scale 2 about the left edge's pivot: output x takes source x / 2 - 0.25.
    Img f = Make(4, 1, true);
    for (int x = 0; x < 4; ++x) Set(*f, x, 0, 0, 10.0 * x);
    host::TransformSpec grow;
    grow.sizeX = 2.0;
    grow.centerX = grow.pivotX = 0.0;
    grow.edges = host::EdgeDuplicate;
    Img big(f->TransformOf(grow));
    const double expect[4] = {0.0, 2.5, 7.5, 12.5};
    for (int x = 0; x < 4; ++x) EXPECT_NEAR(At(*big, x, 0, 0), expect[x], 1e-4);
}
