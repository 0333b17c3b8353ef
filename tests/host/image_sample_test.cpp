// Host image reads: bilinear pixels and area boxes under each edge mode, the
// summed-area table against the direct path, rows against single reads.
#include "support.h"

using host::EdgeBlack, host::EdgeWrap, host::EdgeDuplicate;
using host::Image;
using zvtest::HostImg, zvtest::Make;

namespace {

using U4 = std::array<uint32_t, 4>;
using F4 = std::array<float, 4>;
constexpr int32_t kOne = 1 << 16, kHalf = 1 << 15;

template <typename P>
P Sample(const Image& img, int32_t x, int32_t y, host::Edge e)
{
    P out;
    img.SamplePixel(x, y, e, out.data());
    return out;
}

// The area read of the box [x0, x1] x [y0, y1] in pixel-centre coordinates.
template <typename P>
P Area(const Image& img, double x0, double y0, double x1, double y1, host::Edge e)
{
    auto f = [](double v) { return static_cast<int32_t>(v * 65536.0); };
    const int32_t q[8] = {f(x0), f(y0), f(x1), f(y0), f(x1), f(y1), f(x0), f(y1)};
    P out;
    img.SampleArea(q, e, out.data());
    return out;
}

}  // namespace

TEST(HostSamplePixel, BilinearAtWholeAndHalfPositions)
{
    const int values[4][4] = {{0, 100, 1000, 65535}, {1, 200, 3000, 0}, {10, 300, 5000, 65535}, {20, 401, 7000, 65535}};
    HostImg w = Make(2, 2, false, [&](int x, int y, int c) { return values[x + 2 * y][c]; });
    EXPECT_EQ(Sample<U4>(*w, kOne, kOne, EdgeBlack), (U4{20, 401, 7000, 65535}));
    // Halves round upward: (0 + 1) / 2, (65535 + 0) / 2.
    EXPECT_EQ(Sample<U4>(*w, kHalf, 0, EdgeBlack), (U4{1, 150, 2000, 32768}));
    // Mean of four: 7.75, 250.25, 4000, 49151.25.
    EXPECT_EQ(Sample<U4>(*w, kHalf, kHalf, EdgeBlack), (U4{8, 250, 4000, 49151}));
    EXPECT_EQ(Sample<U4>(*w, kHalf / 2, 0, EdgeBlack)[2], 1500u);
    EXPECT_FLOAT_EQ((Sample<F4>(*w, kHalf, 0, EdgeBlack)[2]), 2000.0f / 65535.0f);

    const float fv[4][4] = {{0, -1, 2, 1}, {1, 3, 2, 0}, {0.5f, 0, 4, 1}, {0.25f, 8, 6, 1}};
    HostImg f = Make(2, 2, true, [&](int x, int y, int c) { return fv[x + 2 * y][c]; });
    EXPECT_EQ(Sample<F4>(*f, 0, kOne, EdgeBlack), (F4{0.5f, 0, 4, 1}));
    EXPECT_EQ(Sample<F4>(*f, kHalf, kHalf, EdgeBlack), (F4{0.4375f, 2.5f, 3.5f, 0.75f}));
    // Floats are not clipped, but their integer read is.
    EXPECT_EQ(Sample<U4>(*f, kHalf, 0, EdgeBlack), (U4{32768, 65535, 65535, 32768}));
}

TEST(HostSamplePixel, EdgesJustOutsideEachSide)
{
    // 3 x 2 with red 1 2 3 / 4 5 6.
    HostImg img = Make(3, 2, false, [](int x, int y, int c) { return c ? 0 : 1 + x + 3 * y; });
    const struct { int32_t x, y; uint32_t black, wrap, duplicate; } cases[] = {
        {-kOne, kOne, 0, 6, 4},         {3 * kOne, 0, 0, 1, 3},          // left, right
        {2 * kOne, -kOne, 0, 6, 3},     {kOne, 2 * kOne, 0, 2, 5},       // row -1, row 2
        {-kHalf, kOne, 2, 5, 4},                                         // half out: 4/2, (6+4)/2
        {-4 * kOne, -3 * kOne, 0, 6, 1}, {7 * kOne, 5 * kOne, 0, 5, 6},  // far out
        {2 * kOne, kOne, 6, 6, 6},                                       // last pixel, whole
    };
    for (const auto& k : cases)
        for (auto [e, want] : {std::pair{EdgeBlack, k.black}, {EdgeWrap, k.wrap}, {EdgeDuplicate, k.duplicate}})
            EXPECT_EQ(Sample<U4>(*img, k.x, k.y, e)[0], want) << k.x << "," << k.y << " edge " << e;
}

TEST(HostSampleArea, CheckerboardIsMidGrey)
{
    for (bool isFloat : {false, true}) {
        HostImg img = Make(8, 8, isFloat, [&](int x, int y, int c) {
            return c == 3 || (c == 0 && (x + y) % 2) ? (isFloat ? 1 : 65535) : 0;
        });
        for (int sat = 0; sat < 2; ++sat) {
            if (sat) img->UseSAT();
            for (double size : {2.0, 8.0}) {
                const double x0 = size == 2.0 ? 1.5 : -0.5, y0 = -0.5;  // cell edges
                EXPECT_EQ(Area<F4>(*img, x0, y0, x0 + size, y0 + size, EdgeBlack), (F4{0.5f, 0, 0, 1}));
                if (!isFloat) {  // 32767.5 rounds up
                    EXPECT_EQ(Area<U4>(*img, x0, y0, x0 + size, y0 + size, EdgeBlack), (U4{32768, 0, 0, 65535}));
                }
            }
        }
    }
}

TEST(HostSampleArea, BoxAndEdgeModes)
{
    // One row of 1, 3 (8 beyond it for the first cases); boxes in pixel-edge units.
    HostImg three = Make(3, 1, true, [](int x, int, int c) { return c ? 0 : (x == 2 ? 8 : 1 + 2 * x); });
    auto mean3 = [&](double x0, double x1) { return Area<F4>(*three, x0 - 0.5, 0, x1 - 0.5, 0, EdgeBlack)[0]; };
    EXPECT_FLOAT_EQ(mean3(1.5, 1.5), 3.0f);            // a point widens to its pixel
    EXPECT_FLOAT_EQ(mean3(2, 2), 5.5f);                // two halves
    EXPECT_FLOAT_EQ(mean3(0.25, 1.75), 3.0f / 1.5f);   // 0.75 of 1 and 0.75 of 3
    const int32_t diamond[8] = {kOne, -kHalf, 2 * kOne + kHalf, 0, kOne, kHalf, -kHalf, 0};
    F4 d;
    three->SampleArea(diamond, EdgeBlack, d.data());
    EXPECT_FLOAT_EQ(d[0], 4.0f);  // its bounding box is the whole row

    HostImg img = Make(2, 1, true, [](int x, int, int c) { return c == 3 ? 1 : (c ? 0 : 1 + 2 * x); });
    const struct { double x0, x1; float black, wrap, duplicate; } cases[] = {
        {-1, 1, 0.5f, 2.0f, 1.0f},                  // a pixel beyond the left edge
        {2, 3.5, 0.0f, 2.5f / 1.5f, 3.0f},          // wholly beyond the right edge
        {0, 5, 4.0f / 5, 9.0f / 5, 13.0f / 5},      // 2.5 periods
        {-3, 0, 0.0f, 7.0f / 3, 1.0f},              // 3, 1, 3 wrapped
        {-2, 4, 4.0f / 6, 2.0f, 2.0f},              // both sides
    };
    for (int sat = 0; sat < 2; ++sat) {
        if (sat) img->UseSAT();
        for (const auto& k : cases) {
            const double x0 = k.x0 - 0.5, x1 = k.x1 - 0.5;
            for (auto [e, want] : {std::pair{EdgeBlack, k.black}, {EdgeWrap, k.wrap}, {EdgeDuplicate, k.duplicate}})
                EXPECT_FLOAT_EQ((Area<F4>(*img, x0, 0, x1, 0, e)[0]), want) << k.x0 << ".." << k.x1 << " edge " << e;
        }
        // Half a row above the single row: it vanishes or repeats.
        EXPECT_EQ(Area<F4>(*img, -0.5, -0.5, 1.5, 1.0, EdgeBlack), (F4{2.0f / 1.5f, 0, 0, 1.0f / 1.5f}));
        EXPECT_EQ(Area<F4>(*img, -0.5, -0.5, 1.5, 1.0, EdgeWrap), (F4{2, 0, 0, 1}));
    }
}

TEST(HostSampleArea, TableAndDirectPathsAgree)
{
    uint32_t seed = 12345;
    auto next = [&] { return seed = seed * 1664525u + 1013904223u; };
    for (bool isFloat : {false, true}) {
        auto value = [&](int, int, int) { return isFloat ? (next() >> 16) / 4096.0 - 4.0 : next() >> 16; };
        HostImg direct = Make(13, 9, isFloat, value);
        HostImg table(direct->CopyOfImage());
        table->UseSAT();
        ASSERT_TRUE(table->HasSAT() && !direct->HasSAT());
        for (int i = 0; i < 300; ++i) {
            int32_t q[8];
            for (int k = 0; k < 8; ++k) q[k] = static_cast<int32_t>(next() % (40u << 16)) - (14 << 16);
            for (host::Edge e : {EdgeBlack, EdgeWrap, EdgeDuplicate}) {
                F4 a, b;
                direct->SampleArea(q, e, a.data());
                table->SampleArea(q, e, b.data());
                for (int c = 0; c < 4; ++c) ASSERT_NEAR(a[c], b[c], 1e-5) << "edge " << e << ", case " << i;
            }
        }
    }
}

TEST(HostSamplePixel, RowReadsEqualSingleReads)
{
    uint32_t seed = 777;
    auto next = [&] { return seed = seed * 1664525u + 1013904223u; };
    for (bool isFloat : {false, true}) {
        auto value = [&](int, int, int) { return isFloat ? (next() >> 16) / 8192.0 - 2.0 : next() >> 16; };
        HostImg img = Make(11, 7, isFloat, value);
        constexpr int n = 500;
        std::vector<int32_t> xy(2 * n);
        for (int i = 0; i < 2 * n; ++i) xy[i] = static_cast<int32_t>(next() % (20u << 16)) - (4 << 16);
        for (host::Edge e : {EdgeBlack, EdgeWrap, EdgeDuplicate}) {
            std::vector<float> f(4 * n);
            std::vector<uint32_t> w(4 * n);
            img->SamplePixels(xy.data(), n, e, f.data());
            img->SamplePixels(xy.data(), n, e, w.data());
            for (int i = 0; i < n; ++i) {
                const F4 one = Sample<F4>(*img, xy[2 * i], xy[2 * i + 1], e);
                const U4 wone = Sample<U4>(*img, xy[2 * i], xy[2 * i + 1], e);
                ASSERT_TRUE(std::equal(one.begin(), one.end(), &f[4 * i])) << "edge " << e << " read " << i;
                ASSERT_TRUE(std::equal(wone.begin(), wone.end(), &w[4 * i])) << "edge " << e << " read " << i;
            }
        }
    }
}

// Plates large enough for the mapped allocation start black, hold what is
// written to their last byte, and copy whole.
TEST(HostImageMemory, LargePlatesStartBlackAndCopyWhole)
{
    const int w = 2049, h = 1031;  // rows not a multiple of any page
    HostImg img = zvtest::Blank(w, h, true);
    ASSERT_GT(img->RowBytes() * h, size_t(8) << 20);
    for (int y : {0, 517, h - 1})
        for (int x : {0, 1024, w - 1})
            for (int c = 0; c < 4; ++c) ASSERT_EQ(img->RowF(y)[4 * x + c], 0.0f) << x << "," << y;
    img->RowF(h - 1)[4 * w - 1] = 0.75f;
    HostImg copy(img->CopyOfImage());
    EXPECT_EQ(copy->RowF(h - 1)[4 * w - 1], 0.75f);
    EXPECT_EQ(copy->RowF(0)[0], 0.0f);
}
