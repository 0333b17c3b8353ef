// Kaleidoscope: declarations, the triangle tiling of "Classic" (every point
// lands in the one triangle and neighbours meet without seams), the wedges and
// rings of "Fancy", and the two matrices.
#include "warp_support.h"

using namespace warptest;
using namespace zvtest;

namespace {

// Lattice and source matrices left as the identity.
void Plain(Warp& w)
{
    w.SetPoint("Cent"_id, 0.0f, 0.0f);
    w.SetPoint("SoCe"_id, 0.0f, 0.0f);
    w.Start();
}

}  // namespace

TEST(KaleidoscopeDeclarations, HostShowsTheControlsOnTwoPages)
{
    ToolFlow t("ZV_Kaleidoscope");
    EXPECT_EQ(t.In("Type")->attrs.items, (std::vector<std::string>{"Classic", "Fancy"}));
    EXPECT_EQ(*t.In("Radius")->attrs.defaultNumber, 0.25);
    EXPECT_EQ(*t.In("Viewangle")->attrs.defaultNumber, 45.0);
    EXPECT_EQ(t.In("PingPongalongradius")->page, "Kaleidoscope");
    EXPECT_EQ(t.In("Sourcecenter")->page, "Source");
    EXPECT_EQ(*t.In("Sourcesize")->attrs.softMax, 2.0);
}

TEST(KaleidoscopeClassic, FoldsEveryTriangleOntoTheFirstWithoutSeams)
{
    Warp w("ZV_Kaleidoscope");
    Plain(w);
    const KPosition inside = w.Map(0.1f, 0.05f);
    EXPECT_EQ(inside.x, 0.1f);
    EXPECT_EQ(inside.y, 0.05f);
    EXPECT_MAPS_NEAR(w, 0.25f, 0.1f, 0.25f - 0.1f * 0.8660254f, 0.05f);  // across the edge
    EXPECT_MAPS_NEAR(w, 0.1f, -0.05f, 0.1f, 0.05f);                      // across y = 0
    EXPECT_MAPS_NEAR(w, 0.1f + 0.75f, 0.05f, 0.1f, 0.05f);  // three rhombi make a period

    const float step = 1e-4f, slope = 2.0f * 0.8660254f, e = 1e-5f;
    int32_t outside = 0, seams = 0;
    for (float y = -0.8f; y < 0.8f; y += 0.0123f)
        for (float x = -0.8f; x < 0.8f; x += 0.0117f) {
            const KPosition p = w.Map(x, y);
            outside += p.y < -e || p.y > p.x * slope + e || p.y > (0.25f - p.x) * slope + e;
            // Reflections and turns never stretch a distance.
            for (auto [dx, dy] : {std::pair{step, 0.0f}, {0.0f, step}}) {
                const KPosition q = w.Map(x + dx, y + dy);
                seams += std::hypot(q.x - p.x, q.y - p.y) > step * 1.01f;
            }
        }
    EXPECT_EQ(outside, 0);
    EXPECT_EQ(seams, 0);
}

TEST(KaleidoscopeClassic, MatricesPlaceLatticeAndSource)
{
    Warp w("ZV_Kaleidoscope");
    w.SetPoint("SoCe"_id, 0.5f, 0.5f);
    w.Set("SoSi"_id, 2.0f);
    w.SetDegrees("SoAn"_id, 90.0f);
    w.SetPoint("Cent"_id, 0.2f, 0.3f);
    w.Set("Size"_id, 0.5f);
    w.Start();
    // (0.1, 0.05) in the lattice, in the triangle; halved and turned to (0.025, -0.05).
    EXPECT_MAPS_NEAR(w, 0.25f, 0.325f, 0.525f, 0.45f);
    w.Set("Leng"_id, 0.0f);  // no radius: only the matrices
    w.Start();
    EXPECT_MAPS_NEAR(w, 0.2f, 0.5f, 0.7f, 0.5f);
}

TEST(KaleidoscopeFancy, WrapsAnglesIntoWedgesAndRadiiIntoRings)
{
    Warp w("ZV_Kaleidoscope");
    w.SetInt("Type"_id, 1);
    w.SetDegrees("AngE"_id, 90.0f);  // made positive: a quarter turn a wedge
    auto polar = [&](float degrees, float r, float toDegrees, float toR, int line) {
        const float a = degrees * 0.017453292f, b = toDegrees * 0.017453292f;
        ExpectMaps(w, r * std::cos(a), r * std::sin(a), toR * std::cos(b), toR * std::sin(b),
                   1e-5f, line);
    };
    Plain(w);
    polar(100.0f, 0.1f, 10.0f, 0.1f, __LINE__);
    polar(-30.0f, 0.1f, 60.0f, 0.1f, __LINE__);
    polar(10.0f, 0.3f, 10.0f, 0.05f, __LINE__);
    w.SetBool("AnPP"_id, true);
    w.SetBool("RaPP"_id, true);
    Plain(w);
    polar(100.0f, 0.1f, 80.0f, 0.1f, __LINE__);
    polar(10.0f, 0.3f, 10.0f, 0.2f, __LINE__);
    polar(10.0f, 0.55f, 10.0f, 0.05f, __LINE__);
}
