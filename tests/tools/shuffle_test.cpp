// Shuffle: declarations, amount 0 as identity, the blank cell that maps to
// nothing, one slide moving the blank to a neighbour (across the border too),
// one swap exchanging two cells, the cells staying a permutation, seeds, and
// renders whose blocks are the plate's blocks moved, with the blank empty.
#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <set>
#include <vector>
#include "inverse_map_driver.h"
#include "support.h"

using namespace zvwarp;

namespace {

TEST(ShuffleDeclarations, InputsAsTheHostShowsThem)
{
    host::Flow flow;
    auto* op = flow.Add("s", Registered("ZV_Shuffle")).op.get();
    const char* ids[] = {"RandomSeed", "Type", "Horizontalsubdivisions", "Verticalsubdivisions",
                         "Amount"};
    for (size_t i = 0; i < 5; ++i) {
        ASSERT_EQ(op->Inputs()[i]->id, ids[i]);
        EXPECT_EQ(op->Inputs()[i]->page, "Shuffle");
    }
    const host::Input* seed = op->FindInput("RandomSeed");
    EXPECT_EQ(*seed->attrs.defaultNumber, 0.0);
    EXPECT_EQ(*seed->attrs.softMax, 32768.0);
    EXPECT_EQ(op->FindInput("Type")->attrs.items, (std::vector<std::string>{"Slide", "Swap"}));
    const host::Input* h = op->FindInput("Horizontalsubdivisions");
    EXPECT_TRUE(h->attrs.integer);
    EXPECT_EQ(*h->attrs.defaultNumber, 5.0);
    EXPECT_EQ(*h->attrs.softMin, 1.0);
    EXPECT_EQ(*op->FindInput("Verticalsubdivisions")->attrs.softMax, 24.0);
    const host::Input* amount = op->FindInput("Amount");
    EXPECT_EQ(amount->attrs.control, host::Control::Screw);
    EXPECT_FALSE(amount->attrs.integer);
    EXPECT_EQ(*amount->attrs.defaultNumber, 5.0);
    EXPECT_EQ(*amount->attrs.softMax, 100.0);
}

// The source cell of each cell of an h x v grid, read at cell middles; -1 for
// the blank.
std::vector<int> Sources(const Warp& w, int h, int v, float aspect = 1.0f)
{
    std::vector<int> from;
    for (int cy = 0; cy < v; ++cy)
        for (int cx = 0; cx < h; ++cx) {
            KPosition out;
            const float fx = (cx + 0.25f) / h, fy = (cy + 0.75f) / v / aspect;
            if (!w.Map(fx, fy, out)) {
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

bool Neighbours(int a, int b, int h, int v)
{
    const int ax = a % h, ay = a / h, bx = b % h, by = b / h;
    const bool sideways = ay == by && ((ax + 1) % h == bx || (bx + 1) % h == ax);
    const bool upDown = ax == bx && ((ay + 1) % v == by || (by + 1) % v == ay);
    return sideways || upDown;
}

TEST(ShuffleInverseMap, NoAmountIsNothingToDo)
{
    Warp w("ZV_Shuffle");
    w.SetFloat("Amount", 0.0f);
    EXPECT_FALSE(w.Start());
    w.SetFloat("Amount", 0.25f);  // any part of a move makes one
    EXPECT_TRUE(w.Start());
}

TEST(ShuffleInverseMap, OneCellGridIsAllBlank)
{
    Warp w("ZV_Shuffle");
    w.SetInt("Horizontal subdivisions", 1);
    w.SetInt("Vertical subdivisions", 1);
    w.SetFloat("Amount", 3.0f);
    ASSERT_TRUE(w.Start());
    KPosition out;
    for (float p : {0.0f, 0.3f, 0.999f, 1.0f}) EXPECT_FALSE(w.Map(p, 1.0f - p, out)) << p;
}

TEST(ShuffleInverseMap, OneSlideMovesTheBlankToANeighbour)
{
    const int h = 5, v = 3;
    for (int seed = 0; seed < 40; ++seed) {
        Warp w("ZV_Shuffle");
        w.SetInt("Random Seed", seed);
        w.SetInt("Horizontal subdivisions", h);
        w.SetInt("Vertical subdivisions", v);
        w.SetFloat("Amount", 1.0f);
        ASSERT_TRUE(w.Start());
        const std::vector<int> from = Sources(w, h, v);
        // Every cell but two holds itself; the blank's content now sits
        // where the blank was.
        std::vector<int> moved;
        int blank = -1;
        for (int i = 0; i < h * v; ++i) {
            if (from[i] == -1) blank = i;
            else if (from[i] != i) moved.push_back(i);
        }
        ASSERT_NE(blank, -1) << seed;
        ASSERT_EQ(moved.size(), 1u) << seed;
        EXPECT_EQ(from[moved[0]], blank) << seed;
        EXPECT_TRUE(Neighbours(moved[0], blank, h, v)) << seed << ": " << moved[0] << " " << blank;
        EXPECT_EQ(std::count(from.begin(), from.end(), -1), 1) << seed;
    }
}

TEST(ShuffleInverseMap, OneSwapExchangesTwoCells)
{
    const int h = 4, v = 4;
    int swapped = 0;
    for (int seed = 0; seed < 20; ++seed) {
        Warp w("ZV_Shuffle");
        w.SetInt("Random Seed", seed);
        w.SetInt("Type", 1);
        w.SetInt("Horizontal subdivisions", h);
        w.SetInt("Vertical subdivisions", v);
        w.SetFloat("Amount", 1.0f);
        ASSERT_TRUE(w.Start());
        const std::vector<int> from = Sources(w, h, v);
        std::vector<int> moved;
        for (int i = 0; i < h * v; ++i) {
            ASSERT_NE(from[i], -1) << "no blank when swapping";
            if (from[i] != i) moved.push_back(i);
        }
        ASSERT_TRUE(moved.empty() || moved.size() == 2u) << seed;  // a cell may swap with itself
        if (moved.size() == 2u) {
            ++swapped;
            EXPECT_EQ(from[moved[0]], moved[1]);
            EXPECT_EQ(from[moved[1]], moved[0]);
        }
    }
    EXPECT_GT(swapped, 10);
}

TEST(ShuffleInverseMap, ManyMovesKeepAPermutationAndFollowTheSeed)
{
    for (int type : {0, 1}) {
        auto run = [&](int seed, float aspect) {
            Warp w("ZV_Shuffle");
            w.SetInt("Random Seed", seed);
            w.SetInt("Type", type);
            w.SetInt("Horizontal subdivisions", 6);
            w.SetInt("Vertical subdivisions", 4);
            w.SetFloat("Amount", 60.0f);
            EXPECT_TRUE(w.Start(9, 9, aspect));
            return Sources(w, 6, 4, aspect);
        };
        const std::vector<int> a = run(7, 1.0f);
        std::set<int> seen(a.begin(), a.end());
        EXPECT_EQ(seen.size(), a.size());  // no source used twice
        EXPECT_EQ(seen.count(-1), type == 0 ? 1u : 0u);
        EXPECT_EQ(run(7, 1.0f), a);
        EXPECT_NE(run(8, 1.0f), a);
        // Wide pixels give the same cells, y running to 1 / pixel aspect.
        EXPECT_EQ(run(7, 2.0f), a);
    }
}

// The plate block that 4 x 4 block (bx, by) of a 17 x 17 render shows, -1
// when it is empty, -2 when it is neither. The far row and column, normalised
// to exactly 1, are left out.
int BlockSource(const KImage& out, const KImage& plate, int bx, int by)
{
    auto same = [&](int sx, int sy) {
        for (int i = 0; i < 16; ++i)
            if (Raw(out, 4 * bx + i % 4, 4 * by + i / 4) != Raw(plate, 4 * sx + i % 4, 4 * sy + i / 4))
                return false;
        return true;
    };
    for (int b = 0; b < 16; ++b)
        if (same(b % 4, b / 4)) return b;
    const std::array<float, 4> zero{0.0f, 0.0f, 0.0f, 0.0f};
    for (int i = 0; i < 16; ++i)
        if (Raw(out, 4 * bx + i % 4, 4 * by + i / 4) != zero) return -2;
    return -1;
}

TEST(ShuffleRender, BlocksAreMovedAndTheBlankIsEmpty)
{
    for (bool isFloat : {false, true}) {
        KImage* plate = zvtest::Pattern(17, 17, isFloat);
        Render r("ZV_Shuffle", plate);
        r.Set("Horizontalsubdivisions", 4);
        r.Set("Verticalsubdivisions", 4);
        r.Set("Amount", 0.0);
        KImage* same = r.Run();
        ASSERT_NE(same, nullptr);
        EXPECT_EQ(zvtest::Differ(*same, *plate), "");

        r.Set("Amount", 30.0);
        r.Set("RandomSeed", 3);
        r.Set("KFil", 0);
        KImage* out = r.Run();
        ASSERT_NE(out, nullptr);
        std::vector<int> blocks;
        for (int b = 0; b < 16; ++b) blocks.push_back(BlockSource(*out, *plate, b % 4, b / 4));
        EXPECT_EQ(std::count(blocks.begin(), blocks.end(), -2), 0);  // every block accounted for
        EXPECT_EQ(std::count(blocks.begin(), blocks.end(), -1), 1);
        std::set<int> seen(blocks.begin(), blocks.end());
        EXPECT_EQ(seen.size(), blocks.size());
        EXPECT_NE(zvtest::Differ(*out, *plate), "");

        // The draws happen once, before the jobs: a serial render is the same.
        KImage* threaded = out->Clone();
        r.Set("ZVMT", 0);
        EXPECT_EQ(zvtest::Differ(*r.Run(), *threaded), "");
        r.Set("ZVMT", 1);
        delete threaded;
        delete plate;
    }
}

}  // namespace
