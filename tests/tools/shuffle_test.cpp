// Shuffle: amount 0 as nothing to do, the blank cell that maps to nothing, one
// slide moving the blank to a neighbour (across the border too), one swap
// exchanging two cells, and the cells staying a permutation that follows the seed.
#include <set>
#include <vector>
#include "warp_support.h"

using namespace zvtest;

namespace {

// A shuffle of an h x v grid; `Sources` gives the source cell of each cell,
// read at cell middles, -1 for the blank.
struct Grid : Warp {
    Grid(int seed, int type, int h, int v, float amount) : Warp("ZV_Shuffle"), h(h), v(v)
    {
        SetInt("Random Seed", seed);
        SetInt("Type", type);
        SetInt("Horizontal subdivisions", h);
        SetInt("Vertical subdivisions", v);
        SetFloat("Amount", amount);
    }
    std::vector<int> Sources(float aspect = 1.0f) const
    {
        std::vector<int> from;
        for (int cy = 0; cy < v; ++cy)
            for (int cx = 0; cx < h; ++cx) {
                KPosition out;
                if (!Map((cx + 0.25f) / h, (cy + 0.75f) / v / aspect, out)) {
                    from.push_back(-1);
                    continue;
                }
                // The place within the cell is kept.
                const float sx = out.x * h, sy = out.y * aspect * v;
                EXPECT_NEAR(sx - std::floor(sx), 0.25f, 1e-4f);
                EXPECT_NEAR(sy - std::floor(sy), 0.75f, 1e-4f);
                from.push_back(static_cast<int>(std::floor(sy)) * h + static_cast<int>(std::floor(sx)));
            }
        return from;
    }
    int h, v;
};

TEST(Shuffle, NoAmountIsNothingToDoAndOneCellIsAllBlank)
{
    Grid none(0, 0, 5, 5, 0.0f);
    EXPECT_FALSE(none.Start());
    none.SetFloat("Amount", 0.25f);  // any part of a move makes one
    EXPECT_TRUE(none.Start());
    Grid one(0, 0, 1, 1, 3.0f);
    ASSERT_TRUE(one.Start());
    KPosition out;
    for (float p : {0.0f, 0.3f, 0.999f, 1.0f}) EXPECT_FALSE(one.Map(p, 1.0f - p, out)) << p;
}

TEST(Shuffle, OneSlideMovesTheBlankToANeighbour)
{
    const int h = 5, v = 3;
    for (int seed = 0; seed < 40; ++seed) {
        Grid g(seed, 0, h, v, 1.0f);
        ASSERT_TRUE(g.Start());
        const std::vector<int> from = g.Sources();
        // Every cell but two holds itself; the blank's content now sits where the blank was.
        std::vector<int> moved;
        for (int i = 0; i < h * v; ++i)
            if (from[i] != -1 && from[i] != i) moved.push_back(i);
        ASSERT_EQ(std::count(from.begin(), from.end(), -1), 1) << seed;
        ASSERT_EQ(moved.size(), 1u) << seed;
        const int blank = static_cast<int>(std::find(from.begin(), from.end(), -1) - from.begin());
        const int a = moved[0], ax = a % h, ay = a / h, bx = blank % h, by = blank / h;
        EXPECT_EQ(from[a], blank) << seed;
        // Neighbours, the border wrapping round.
        const bool sideways = ay == by && ((ax + 1) % h == bx || (bx + 1) % h == ax);
        const bool upDown = ax == bx && ((ay + 1) % v == by || (by + 1) % v == ay);
        EXPECT_TRUE(sideways || upDown) << seed << ": " << a << " " << blank;
    }
}

TEST(Shuffle, OneSwapExchangesTwoCells)
{
    int swapped = 0;
    for (int seed = 0; seed < 20; ++seed) {
        Grid g(seed, 1, 4, 4, 1.0f);
        ASSERT_TRUE(g.Start());
        const std::vector<int> from = g.Sources();
        ASSERT_EQ(std::count(from.begin(), from.end(), -1), 0) << "no blank when swapping";
        std::vector<int> moved;
        for (int i = 0; i < 16; ++i)
            if (from[i] != i) moved.push_back(i);
        ASSERT_TRUE(moved.empty() || moved.size() == 2u) << seed;  // a cell may swap with itself
        if (moved.size() == 2u) {
            ++swapped;
            EXPECT_EQ(from[moved[0]], moved[1]);
            EXPECT_EQ(from[moved[1]], moved[0]);
        }
    }
    EXPECT_GT(swapped, 10);
}

TEST(Shuffle, ManyMovesKeepAPermutationAndFollowTheSeed)
{
    for (int type : {0, 1}) {
        auto run = [&](int seed, float aspect) {
            Grid g(seed, type, 6, 4, 60.0f);
            EXPECT_TRUE(g.Start(9, 9, aspect));
            return g.Sources(aspect);
        };
        const std::vector<int> a = run(7, 1.0f);
        const std::set<int> seen(a.begin(), a.end());
        EXPECT_EQ(seen.size(), a.size());  // no source used twice
        EXPECT_EQ(seen.count(-1), type == 0 ? 1u : 0u);
        EXPECT_EQ(run(7, 1.0f), a);
        EXPECT_NE(run(8, 1.0f), a);
        EXPECT_EQ(run(7, 2.0f), a);  // wide pixels give the same cells, y running to 1 / aspect
    }
}

}  // namespace
