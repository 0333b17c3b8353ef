// The range generator: starts and lengths by type, and the eased progress at
// the ends and the middle.
#include <algorithm>
#include <numeric>
#include "data/range.h"
#include "framework/numeric.h"
#include "support.h"

namespace {

std::vector<float> Starts(const std::vector<KRangeItem>& items)
{
    std::vector<float> s;
    for (const KRangeItem& it : items) s.push_back(it.start);
    return s;
}

}  // namespace

TEST(Range, StartsFromTheSeedPositions)
{
    KRange r;
    EXPECT_TRUE(r.Generate(0).empty());
    for (const KRangeItem& it : r.Generate(4)) EXPECT_EQ(it.length, 1.0f);
    EXPECT_EQ(Starts(r.Generate(4)), (std::vector<float>{0, 1, 2, 3}));  // forward from 0
    r.seeds = 2;
    EXPECT_EQ(Starts(r.Generate(6)), (std::vector<float>{0, 1, 2, 0, 1, 2}));  // and from 3
    r.seeds = 1;
    r.type = 1;  // outside in: both ways round from 0
    EXPECT_EQ(Starts(r.Generate(5)), (std::vector<float>{0, 1, 2, 2, 1}));
    r.overlap = 0.5f;
    EXPECT_EQ(Starts(r.Generate(5)), (std::vector<float>{0, 0.5f, 1, 1, 0.5f}));
    r.seeds = 0;  // nothing placed: every start lies before the range
    EXPECT_EQ(Starts(r.Generate(3)), (std::vector<float>{-0.5f, -0.5f, -0.5f}));
}

TEST(Range, RandomOrderIsRepeatableAndOneByOneIsAPermutation)
{
    KRange r;
    r.type = 2;
    r.seed = 11;
    const std::vector<float> a = Starts(r.Generate(50));
    EXPECT_EQ(Starts(r.Generate(50)), a);
    for (float s : a) EXPECT_TRUE(s >= 0 && s < 50 && s == std::floor(s)) << s;
    r.oneByOne = true;
    std::vector<float> p = Starts(r.Generate(50)), sorted = p, all(50);
    std::sort(sorted.begin(), sorted.end());
    std::iota(all.begin(), all.end(), 0.0f);
    EXPECT_EQ(sorted, all);
    EXPECT_NE(p, all);
    // No items draw nothing: the generator goes on as if untouched.
    KRandomSeed(5);
    const int32_t next = KRand();
    KRandomSeed(5);
    r.Generate(0);
    EXPECT_EQ(KRand(), next);
}

TEST(Range, EasedProgressAtTheEndsAndTheMiddle)
{
    KRange r;  // forward, one seed: item i runs from i to i + 1 of 0..4
    for (const KRangeItem& it : r.Generate(4)) EXPECT_EQ(std::make_pair(it.c, it.d), std::make_pair(0.0f, 1.0f));
    // Minimum 0.375 puts c at 1.5, inside item 1; maximum 0.8125 puts d at 3.25, inside item 3.
    r.span = {0.375f, 0.8125f};
    const struct { int32_t curve; float c1, d3; } rows[] = {
        {0, 0.5f, 0.25f}, {1, 0.25f, 0.0625f}, {2, 0.75f, 0.4375f}, {3, 0.5f, 0.15625f}};
    for (const auto& row : rows) {
        r.curve = row.curve;
        const auto items = r.Generate(4);
        EXPECT_EQ(std::vector<float>({items[0].c, items[1].c, items[2].c, items[3].c}),
                  std::vector<float>({1.0f, row.c1, 0.0f, 0.0f})) << row.curve;
        EXPECT_EQ(std::vector<float>({items[0].d, items[1].d, items[2].d, items[3].d}),
                  std::vector<float>({1.0f, 1.0f, 1.0f, row.d3})) << row.curve;
    }
    // Length 0: a step at each start, 1 from the start on.
    r = KRange{};
    r.length = 0.0f;
    const auto steps = r.Generate(3);
    EXPECT_EQ(std::vector<float>({steps[0].c, steps[1].c, steps[2].c}), std::vector<float>({1, 0, 0}));
    EXPECT_EQ(std::vector<float>({steps[0].d, steps[1].d, steps[2].d}), std::vector<float>({1, 1, 1}));
    EXPECT_EQ(KRangeEase(2.0f, 3.0f, 1.0f, 0), 1.0f);  // reversed: a step at a
    EXPECT_EQ(KRangeEase(3.5f, 3.0f, 1.0f, 0), 0.0f);
}
