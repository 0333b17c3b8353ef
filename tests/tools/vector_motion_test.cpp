// Vector Motion and its tracker: a picture shifted by (3, -2) pixels between
// frames gives that motion in the vector channels; no frames or no edges, none.
#include "support.h"

using namespace zvtest;

namespace {

// Blocks of 3 x 3 pixels of hashed colours, moved by (dx, dy).
Img Blocks(int32_t w, int32_t h, int32_t dx, int32_t dy)
{
    return Made(w, h, false, [&](int32_t x, int32_t y) {
        const uint32_t bx = uint32_t(x - dx + 300) / 3, by = uint32_t(y - dy + 300) / 3;
        const uint32_t v = (bx * 2654435761u) ^ (by * 40503u * 977u);
        return KPixel{(v >> 3) & 0xFFFF, (v >> 11) & 0xFFFF, (v * 31u >> 7) & 0xFFFF, 65535};
    });
}

// The vector channels of a run over the middle frame, as (x, y) at the pixel.
struct Vectors {
    Img out;
    std::pair<float, float> At(int32_t x, int32_t y) const
    {
        const size_t i = size_t(y) * out->width + x;
        return {out->AuxPlane(host::ChanVectorX)[i], out->AuxPlane(host::ChanVectorY)[i]};
    }
};
Vectors Motion(Tool<KEffectImage>& t, const Img& now, const Img& before, const Img& after)
{
    LendFrames(t.Image(), {now.get(), before.get(), after.get()});
    return {RunEffect(t.Image(), now.get(), Settings(false), true, Img(now->CreateVectorLike()))};
}

TEST(VectorMotion, AShiftByThreeAndMinusTwoComesBackInTheVectors)
{
    Tool<KEffectImage> t("ZV_VectorMotion");
    // Search far enough; keep off the borders, where the block cannot be
    // followed; take only close matches.
    t.Apply({{"Maximum motion distance", 0.1}, {"Edge separation", 0.05},
             {"Minimum match level to allow tracked points", 0.9}});
    const Img now = Blocks(80, 60, 0, 0), before = Blocks(80, 60, -3, 2), after = Blocks(80, 60, 3, -2);
    for (int direction : {0, 1, 2}) {
        t.Set("Motion analysis direction", direction);
        const Vectors r = Motion(t, now, before, after);
        // Every point found the same motion; the weighted mean of it is that motion, to rounding.
        for (auto [x, y] : {std::pair{0, 0}, {40, 30}, {79, 59}, {13, 47}}) {
            EXPECT_NEAR(r.At(x, y).first, 3.0f, 1e-5f) << direction << " at " << x << "," << y;
            EXPECT_NEAR(r.At(x, y).second, -2.0f, 1e-5f) << direction << " at " << x << "," << y;
        }
        EXPECT_EQ(Differ(*r.out, *now), "");  // the colour passes
    }
}

TEST(VectorMotion, NoNeighbourOrNoEdgesGiveNoMotion)
{
    Tool<KEffectImage> t("ZV_VectorMotion");
    t.Set("Motion analysis direction", 0);  // backward, at a first frame
    const Img now = Blocks(40, 30, 0, 0);
    EXPECT_EQ(Motion(t, now, nullptr, Blocks(40, 30, 3, -2)).At(20, 15), std::make_pair(0.0f, 0.0f));
    const Img flat = Solid(40, 30, KPixel{30000, 30000, 30000, 65535});
    t.Set("Motion analysis direction", 1);
    EXPECT_EQ(Motion(t, flat, flat, flat).At(7, 7), std::make_pair(0.0f, 0.0f));
}

}  // namespace
