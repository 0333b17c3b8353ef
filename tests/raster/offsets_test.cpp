// Offset lists from pictures and strokes, the quadrant helper and the
// per-angle table that is filled lazily from several threads.
#include <algorithm>
#include <latch>
#include <thread>
#include "raster/offsets.h"
#include "support.h"

using namespace zvtest;

namespace {

using Entry = std::tuple<int32_t, int32_t, int32_t, bool>;  // x, y, weight, negative

std::vector<Entry> Entries(const KOffsetsList& list)
{
    std::vector<Entry> v;
    for (int32_t i = 0; i < list.count; ++i) {
        const KOffsetsEntry& e = list.entries[i];
        v.emplace_back(e.x, e.y, e.weight, e.negative);
    }
    return v;
}

std::vector<Entry> Build(const KImage* img, int32_t channel, bool mirror, int32_t mode)
{
    KOffsetsList* list = KOffsetsTable::FromImage(img, channel, mirror, mode);
    std::vector<Entry> v = Entries(*list);
    delete list;
    return v;
}

// Sum of the weights per step along the major axis.
std::map<int32_t, int32_t> StepSums(const KOffsetsList& list, bool alongX)
{
    std::map<int32_t, int32_t> sums;
    for (int32_t i = 0; i < list.count; ++i) {
        const KOffsetsEntry& e = list.entries[i];
        sums[alongX ? e.x : e.y] += e.weight;
    }
    return sums;
}

}  // namespace

TEST(RasterOffsetsFromImage, PixelsRowsAndColumnsOfABlock)
{
    // 3x3 with a 2x1 block in red: 100 at 1,1 and 200 at 2,1. The centre is 1,1.
    Img img(KImage::Create(3, 3, false));
    img->SetPixel(1, 1, KPixel{100, 0, 0, 0});
    img->SetPixel(2, 1, KPixel{200, 0, 0, 0});
    const struct { int32_t mode; bool mirror; std::vector<Entry> want; } rows[] = {
        // Every non-zero value; mirrored, x becomes 2 - x and y 2 - y, so 200
        // lands left of the centre.
        {kOffsetsPixels, false, {{0, 0, 100, false}, {1, 0, 200, false}}},
        {kOffsetsPixels, true, {{-1, 0, 200, false}, {0, 0, 100, false}}},
        {9, false, {{0, 0, 100, false}, {1, 0, 200, false}}},  // an unknown mode walks like pixels
        // Horizontal edges: row 1 reads 0, 100, 200 and 0 one step beyond the
        // width. Entering at x 1 gives d = -100 at x - 1 - 1; 100 to 200 is no
        // edge (neither is 0); leaving at x 3 gives d = 200 at 3 - 1 - 1.
        {kOffsetsRows, false, {{-1, 0, 100, true}, {1, 0, 200, false}}},
        {kOffsetsRows, true, {{-2, 0, 200, true}, {0, 0, 100, false}}},  // reads 200, 100, 0, 0
        // Vertical edges, columns outer: column 1 enters at y 1 and leaves at y 2.
        {kOffsetsColumns, false, {{0, -1, 100, true}, {0, 0, 100, false}, {1, -1, 200, true}, {1, 0, 200, false}}},
    };
    for (const auto& r : rows) EXPECT_EQ(Build(img.get(), 0, r.mirror, r.mode), r.want) << r.mode << " " << r.mirror;
    EXPECT_TRUE(Build(img.get(), 1, false, kOffsetsPixels).empty());
}

TEST(RasterOffsetsFromImage, ChannelSelection)
{
    Img img = Row<KPixel>({{10, 20, 30, 40}, {0, 0, 1000, 0}});  // the centre is 1, 0
    const std::pair<int32_t, std::vector<Entry>> rows[] = {
        {1, {{-1, 0, 20, false}}},
        {2, {{-1, 0, 30, false}, {0, 0, 1000, false}}},
        {3, {{-1, 0, 40, false}}},
        // Luminance for any other channel, in floats, truncated: 2.99 + 11.74 + 3.42 and 114.
        {4, {{-1, 0, 18, false}, {0, 0, 114, false}}},
    };
    for (const auto& [channel, want] : rows) EXPECT_EQ(Build(img.get(), channel, false, kOffsetsPixels), want) << channel;
}

TEST(RasterOffsetsFromImage, FloatReadsAsIntegersAndNothingGivesNothing)
{
    Img img(KImage::Create(1, 1, true)), zero(KImage::Create(3, 3, false));
    img->SetPixel(0, 0, KPixelF{0.5f, 0, 0, 0});
    EXPECT_EQ(Build(img.get(), 0, false, kOffsetsPixels), (std::vector<Entry>{{0, 0, 32767, false}}));
    for (int32_t mode : {0, 1, 2}) {
        std::unique_ptr<KOffsetsList> missing(KOffsetsTable::FromImage(nullptr, 0, false, mode));
        EXPECT_EQ(missing->count, 0);
        EXPECT_EQ(missing->entries, nullptr);
        for (bool mirror : {false, true}) EXPECT_TRUE(Build(zero.get(), 4, mirror, mode).empty()) << mode;
    }
}

TEST(RasterOffsetsFromImage, MirroredSymmetricKernelGivesTheSameEntries)
{
    // A plus with different arms, symmetric through the centre.
    const uint32_t v[5][5] = {{0, 0, 7, 0, 0}, {0, 0, 50, 0, 0}, {9, 30, 255, 30, 9}, {0, 0, 50, 0, 0}, {0, 0, 7, 0, 0}};
    Img img = Made(5, 5, false, [&](int32_t x, int32_t y) { return KPixel{v[y][x], 0, 0, 0}; });
    for (int32_t mode : {0, 1, 2}) {
        std::vector<Entry> plain = Build(img.get(), 0, false, mode), mirrored = Build(img.get(), 0, true, mode);
        EXPECT_FALSE(plain.empty());
        std::sort(plain.begin(), plain.end());
        std::sort(mirrored.begin(), mirrored.end());
        EXPECT_EQ(plain, mirrored) << mode;
    }
    EXPECT_EQ(Build(img.get(), 0, false, 0).size(), 9u);
}

TEST(RasterOffsetsStroke, StraightAlongTheAxesAndRoundedOnlyWhenAsked)
{
    // Full weight at each step; at a quarter turn toward negative y (fy is -sin).
    const struct { float angle, length; std::vector<std::pair<int32_t, int32_t>> at; } rows[] = {
        {0.0f, 3.0f, {{0, 0}, {1, 0}, {2, 0}, {3, 0}}}, {1.5707964f, 3.0f, {{0, 0}, {0, -1}, {0, -2}, {0, -3}}},
        {3.1415927f, 2.0f, {{0, 0}, {-1, 0}, {-2, 0}}}};
    for (const auto& r : rows) {
        std::vector<Entry> want;
        for (auto [x, y] : r.at) want.emplace_back(x, y, 65535, false);
        std::unique_ptr<KOffsetsList> list(KOffsetsTable::BuildStraight(r.angle, r.length, 1.0f, false));
        EXPECT_EQ(Entries(*list), want) << r.angle;
    }
    // The aspect stretches x: 2 * 2 + 1 steps.
    std::unique_ptr<KOffsetsList> wide(KOffsetsTable::BuildStraight(0.0f, 2.0f, 2.0f, false));
    EXPECT_EQ(wide->count, 5);
    EXPECT_EQ(wide->entries[4].x, 4);
    // cos 0.3 * 3 + 1 = 3.87 steps: 3 without rounding, 4 with it.
    for (bool round : {false, true}) {
        std::unique_ptr<KOffsetsList> list(KOffsetsTable::BuildStraight(0.3f, 3.0f, 1.0f, round));
        EXPECT_EQ(StepSums(*list, true).size(), round ? 4u : 3u);
    }
}

TEST(RasterOffsetsStroke, EachStepSumsToFullWeightAndFollowsTheSlope)
{
    for (float angle : {0.3f, 0.8f, 1.2f, 2.0f, 2.9f, 3.6f, 4.4f, 5.1f, 5.9f}) {
        for (bool thick : {false, true}) {
            const float length = 9.0f;
            KOffsetsList* list = thick ? KOffsetsTable::BuildThick(angle, length, 1.0f, false)
                                       : KOffsetsTable::BuildStraight(angle, length, 1.0f, false);
            const float fx = std::cos(angle), fy = -std::sin(angle);
            const bool alongX = std::fabs(fx) >= std::fabs(fy);
            const float major = alongX ? fx : fy, minor = alongX ? fy : fx;
            ASSERT_EQ(Entries(*list)[0], Entry(0, 0, 65535, false));

            std::map<int32_t, int32_t> sums = StepSums(*list, alongX);
            EXPECT_EQ(sums.size(), size_t(std::fabs(major) * length + 1.0f)) << angle;  // whole steps along the stroke
            std::map<int32_t, double> centre;
            for (int32_t i = 0; i < list->count; ++i) {
                const KOffsetsEntry& e = list->entries[i];
                EXPECT_TRUE(e.weight > 0 && !e.negative);
                const int32_t along = alongX ? e.x : e.y, across = alongX ? e.y : e.x;
                centre[along] += (across + 0.5) * e.weight / 65535.0;
            }
            for (const auto& [along, sum] : sums) {
                EXPECT_EQ(sum, 65535) << angle << " step " << along;
                EXPECT_EQ(along * (major < 0 ? -1 : 1) >= 0, true);
                if (along == 0) continue;
                // The weighted middle of the step's pixels lies on the line.
                const double expected = std::abs(along) * minor / std::fabs(major) + 0.5;
                EXPECT_NEAR(centre[along], expected, 1e-3) << angle << " step " << along;
            }
            delete list;
        }
    }
}

TEST(RasterOffsetsAngle, QuadrantsAndFolding)
{
    const struct { float in; int32_t sx, sy; float folded; } cases[] = {
        {0.5f, 1, 1, 0.5f}, {1.5707964f, 1, 1, 1.5707964f}, {2.0f, -1, 1, 3.1415927f - 2.0f}, {3.1415927f, -1, 1, 0.0f},
        {4.712389f, -1, -1, 4.712389f - 3.1415927f}, {5.0f, 1, -1, 6.2831855f - 5.0f},
        {-1.0f, 1, -1, 1.0f},  // -1 + 2 pi lies in the last quadrant
        {-2.0f, -1, -1, -2.0f + 6.2831855f - 3.1415927f}};
    for (const auto& c : cases) {
        int32_t sx = 0, sy = 0;
        const float folded = KAngleQuadrant(c.in, sx, sy);
        EXPECT_EQ(std::make_pair(sx, sy), std::make_pair(c.sx, c.sy)) << c.in;
        EXPECT_NEAR(folded, c.folded, 1e-6) << c.in;
    }
}

TEST(RasterOffsetsTable, BuildsOnceKeepsTheListAndThickUsesTheWiderStroke)
{
    KOffsetsTable table(8, 1.0f, false, true);
    EXPECT_FALSE(table.thick);
    for (int32_t i = 0; i < 8; ++i) EXPECT_EQ(table.lists[i], nullptr);

    const KOffsetsList* first = table.Get(0, 3.0f);
    ASSERT_NE(first, nullptr);
    // Later calls return the stored list, whatever length they pass.
    EXPECT_EQ(table.Get(0, 50.0f), first);
    EXPECT_EQ(std::make_tuple(first->count, table.lists[0], table.lists[1]), std::make_tuple(4, first, nullptr));

    // Index 2 of 8 is a quarter turn.
    const KOffsetsList* quarter = table.Get(2, 2.0f);
    ASSERT_NE(quarter, nullptr);
    ASSERT_EQ(quarter->count, 3);
    EXPECT_EQ(std::make_pair(quarter->entries[2].x, quarter->entries[2].y), std::make_pair(0, -2));
    EXPECT_TRUE(table.Get(-1, 3.0f) == nullptr && table.Get(8, 3.0f) == nullptr);
    KOffsetsTable thin(4, 1.0f, false, true), thick(4, 1.0f, false, false);
    EXPECT_TRUE(thick.thick);
    const KOffsetsList *a = thin.Get(1, 4.0f), *b = thick.Get(1, 4.0f);
    EXPECT_GT(b->count, a->count);
    for (const auto& [along, sum] : StepSums(*b, false)) EXPECT_EQ(sum, 65535) << along;
}

TEST(RasterOffsetsTable, ConcurrentFirstUseBuildsOneList)
{
    for (int round = 0; round < 50; ++round) {
        KOffsetsTable table(16, 1.0f, true, round % 2 == 0);
        const int kThreads = 4;
        std::latch go(kThreads);
        std::vector<const KOffsetsList*> got(kThreads);
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t)
            threads.emplace_back([&, t] {
                go.arrive_and_wait();
                got[t] = table.Get(5, 12.0f);
            });
        for (std::thread& t : threads) t.join();
        ASSERT_NE(got[0], nullptr);
        for (int t = 1; t < kThreads; ++t) ASSERT_EQ(got[t], got[0]) << round;
        EXPECT_EQ(table.lists[5], got[0]);
    }
}
