// Shuffle: amount 0 as nothing to do, the blank cell that maps to nothing, one
// slide moving the blank to a neighbour (across the border too), one swap
// exchanging two cells, and the cells staying a permutation that follows the seed.
#include <set>
#include "warp_support.h"

using namespace zvtest;

namespace {

// The source cell of each cell of an h x v shuffle, read at cell middles, -1
// for the blank; the place within a cell must be kept.
std::vector<int> Sources(int seed, int type, int h, int v, float amount, float aspect = 1.0f)
{
    Warp g("ZV_Shuffle");
    g.Apply({{"Random Seed", double(seed)}, {"Type", double(type)}, {"Horizontal subdivisions", double(h)},
             {"Vertical subdivisions", double(v)}, {"Amount", amount}});
    EXPECT_TRUE(g.Start(9, 9, aspect));
    std::vector<int> from;
    for (int cy = 0; cy < v; ++cy)
        for (int cx = 0; cx < h; ++cx) {
            KPosition out;
            if (!g.Map((cx + 0.25f) / h, (cy + 0.75f) / v / aspect, out)) {
                from.push_back(-1);
                continue;
            }
            const float sx = out.x * h, sy = out.y * aspect * v;
            EXPECT_NEAR(sx - std::floor(sx), 0.25f, 1e-4f);
            EXPECT_NEAR(sy - std::floor(sy), 0.75f, 1e-4f);
            from.push_back(static_cast<int>(std::floor(sy)) * h + static_cast<int>(std::floor(sx)));
        }
    return from;
}

// The cells that hold another cell, the blank left out.
std::vector<int> Moved(const std::vector<int>& from)
{
    std::vector<int> moved;
    for (int i = 0; i < int(from.size()); ++i)
        if (from[i] != -1 && from[i] != i) moved.push_back(i);
    return moved;
}

TEST(Shuffle, NoAmountIsNothingToDoOneCellIsAllBlankAndOneSlideMovesTheBlankToANeighbour)
{
    Warp none("ZV_Shuffle");
    none.Apply({{"Amount", 0}});
    EXPECT_FALSE(none.Start());
    none.Apply({{"Amount", 0.25}});  // any part of a move makes one
    EXPECT_TRUE(none.Start());
    EXPECT_EQ(Sources(0, 0, 1, 1, 3.0f), std::vector<int>{-1});
    const int h = 5, v = 3;
    for (int seed = 0; seed < 40; ++seed) {
        // Every cell but two holds itself; the blank's content now sits where the blank was.
        const std::vector<int> from = Sources(seed, 0, h, v, 1.0f), moved = Moved(from);
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

TEST(Shuffle, OneSwapExchangesTwoCellsAndManyMovesKeepAPermutationThatFollowsTheSeed)
{
    int swapped = 0;
    for (int seed = 0; seed < 20; ++seed) {
        const std::vector<int> from = Sources(seed, 1, 4, 4, 1.0f), moved = Moved(from);
        ASSERT_EQ(std::count(from.begin(), from.end(), -1), 0) << "no blank when swapping";
        ASSERT_TRUE(moved.empty() || moved.size() == 2u) << seed;  // a cell may swap with itself
        if (moved.size() == 2u) {
            ++swapped;
            EXPECT_EQ(std::make_pair(from[moved[0]], from[moved[1]]), std::make_pair(moved[1], moved[0]));
        }
    }
    EXPECT_GT(swapped, 10);
    for (int type : {0, 1}) {
        const std::vector<int> a = Sources(7, type, 6, 4, 60.0f);
        const std::set<int> seen(a.begin(), a.end());
        EXPECT_EQ(seen.size(), a.size());  // no source used twice
        EXPECT_EQ(seen.count(-1), type == 0 ? 1u : 0u);
        EXPECT_EQ(Sources(7, type, 6, 4, 60.0f), a);
        EXPECT_NE(Sources(8, type, 6, 4, 60.0f), a);
        EXPECT_EQ(Sources(7, type, 6, 4, 60.0f, 2.0f), a);  // wide pixels give the same cells, y running to 1 / aspect
    }
}

}  // namespace
