// Smart Field Strobe: rows of one field become the mean of their neighbours
// where the picture moves, and stay where it does not.
#include "support.h"

using namespace zvtest;

namespace {

// Rows of codes 0, 1000, 2000, 3000 (row 0 at the bottom).
Img Rows() { return Made(2, 4, false, [](int32_t, int32_t y) { return KPixel{1000u * y, 0, 0, 65535}; }); }

std::vector<uint32_t> Strobe(Tool<KEffectImage>& t, const Img& now, const Img& before, const Img& after, float time = 0.0f)
{
    LendFrames(t.Image(), {now.get(), before.get(), after.get()});
    // A render prepares the tool: the items swap, so the default strips field 0 at whole times.
    Img out = RunEffect(t.Image(), now.get(), {.time = time, .depth = 1, .prepared = true}, false);
    std::vector<uint32_t> reds;
    for (int32_t y = 0; y < 4; ++y) reds.push_back(At<KPixel>(*out, 1, y).r);
    return reds;
}

TEST(SmartFieldStrobe, MovingRowsOfTheFieldBecomeTheirNeighboursMean)
{
    Tool<KEffectImage> t("ZV_SmartFieldStrobe");
    const Img now = Rows(), moved = Solid(2, 4, KPixel{65535, 65535, 65535, 65535});
    // Moving everywhere: rows 0 and 2 take (row 1 + row -1 held at 0) / 2 and (3000 + 1000) / 2.
    EXPECT_EQ(Strobe(t, now, moved, moved), (std::vector<uint32_t>{500, 1000, 2000, 3000}));
    // Past half a frame the other field goes; row 3 takes (2000 + 3000, held) / 2.
    EXPECT_EQ(Strobe(t, now, moved, moved, 0.5f), (std::vector<uint32_t>{0, 1000, 2000, 2500}));
    // At the first frame only the next one counts; still, nothing changes.
    EXPECT_EQ(Strobe(t, now, nullptr, now), (std::vector<uint32_t>{0, 1000, 2000, 3000}));
    // With no neighbours at all everything counts as moving.
    EXPECT_EQ(Strobe(t, now, nullptr, nullptr), (std::vector<uint32_t>{500, 1000, 2000, 3000}));
    t.Set("Strip field", 0);  // "One", swapped to "Two": the odd rows
    EXPECT_EQ(Strobe(t, now, nullptr, nullptr), (std::vector<uint32_t>{0, 1000, 2000, 2500}));
}

}  // namespace
