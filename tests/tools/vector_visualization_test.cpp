// Vector Visualization: lines from grid points along their vectors, in Color.
#include <set>
#include "support.h"

using namespace zvtest;

namespace {

// Four hand-chosen vectors at grid points of a 40 x 40 black picture with a
// grid step of 10: right, up, left and a 3-4-5 slant; the other twelve grid
// points have none and show as single dots.
TEST(VectorVisualization, FourVectorsDrawTheirLinesInColor)
{
    Img plate(Solid(40, 40, KPixel{0, 0, 0, 65535})->CreateVectorLike());
    const std::pair<std::pair<int, int>, std::pair<float, float>> vectors[] = {
        {{10, 10}, {5, 0}}, {{30, 10}, {0, 5}}, {{10, 30}, {-5, 0}}, {{30, 30}, {3, -4}}};
    for (auto [at, v] : vectors) {
        plate->AuxPlane(host::ChanVectorX)[at.second * 40 + at.first] = v.first;
        plate->AuxPlane(host::ChanVectorY)[at.second * 40 + at.first] = v.second;
    }
    Tool<KEffectImage> t("ZV_VectorVisualization");
    t.Set("Density", 0.25);
    t.SetColor("Color", KColor{1.0f, 0.5f, 0.0f, 1.0f});
    Img out = t.Run(plate.get());
    std::set<std::pair<int, int>> drawn;
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 40; ++x) {
            const KPixel p = At<KPixel>(*out, x, y);
            if (p.r == 0) continue;
            EXPECT_EQ(Channels(p), Channels(KPixel{65535, 32767, 0, 65535})) << x << "," << y;
            drawn.insert({x, y});
        }
    std::set<std::pair<int, int>> want;
    for (int y = 0; y < 40; y += 10)
        for (int x = 0; x < 40; x += 10) want.insert({x, y});
    for (int i = 0; i <= 5; ++i) want.insert({{10 + i, 10}, {30, 10 + i}, {10 - i, 30}});
    for (int i = 0; i <= 4; ++i)
        want.insert({30 + int(std::lround(3 * i / 4.0f)), 30 - i});
    EXPECT_EQ(drawn, want);
}

TEST(VectorVisualization, EdgesBoxTheBlocksTheTrackerWouldFollow)
{
    // A white square on black: the blocks with edges lie on its outline.
    Img square = Made(30, 30, false, [](int32_t x, int32_t y) {
        return x >= 10 && x < 20 && y >= 10 && y < 20 ? KPixel{65535, 65535, 65535, 65535} : KPixel{0, 0, 0, 65535};
    });
    Img plate(square->CreateVectorLike());
    plate->CopyFrom(*square);
    Tool<KEffectImage> t("ZV_VectorVisualization");
    t.Set("Visualize vector field", 1);
    t.SetColor("Color", KColor{0.0f, 1.0f, 0.0f, 1.0f});
    Img out = t.Run(plate.get());
    int green = 0;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 30; ++x)
            green += Channels(At<KPixel>(*out, x, y)) == Channels(KPixel{0, 65535, 0, 65535});
    EXPECT_GE(green, 16);  // one box outline at least
    EXPECT_EQ(Channels(At<KPixel>(*out, 0, 0)), Channels(KPixel{0, 0, 0, 65535}));  // far from any edge
}

}  // namespace
