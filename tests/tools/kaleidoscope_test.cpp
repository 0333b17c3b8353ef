// Kaleidoscope: declarations, the triangle tiling of "Classic" (every point
// lands in the one triangle and neighbours meet without seams), the wedges and
// rings of "Fancy", and the two matrices.
#include "warp_support.h"

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

TEST(Kaleidoscope, FoldsEveryTriangleOntoTheFirstWithoutSeams)
{
    Warp w("ZV_Kaleidoscope");
    Plain(w);
    ExpectMaps(w, {{0.1f, 0.05f, 0.1f, 0.05f}}, 0.0f);
    ExpectMaps(w, {{0.25f, 0.1f, 0.25f - 0.1f * 0.8660254f, 0.05f},  // across the edge
                   {0.1f, -0.05f, 0.1f, 0.05f},                      // across y = 0
                   {0.1f + 0.75f, 0.05f, 0.1f, 0.05f}},              // three rhombi make a period
               1e-5f);

    const float step = 1e-4f, slope = 2.0f * 0.8660254f, e = 1e-5f;
    int32_t outside = 0, seams = 0;
    for (float y = -0.8f; y < 0.8f; y += 0.0123f)
        for (float x = -0.8f; x < 0.8f; x += 0.0117f) {
            KPosition p, q;
            outside += !w.Map(x, y, p) || p.y < -e || p.y > p.x * slope + e || p.y > (0.25f - p.x) * slope + e;
            // Reflections and turns never stretch a distance.
            for (auto [dx, dy] : {std::pair{step, 0.0f}, {0.0f, step}}) {
                seams += !w.Map(x + dx, y + dy, q) || std::hypot(q.x - p.x, q.y - p.y) > step * 1.01f;
            }
        }
    EXPECT_EQ(outside, 0);
    EXPECT_EQ(seams, 0);
}

TEST(Kaleidoscope, MatricesPlaceLatticeAndSource)
{
    Warp w("ZV_Kaleidoscope");
    w.SetPoint("SoCe"_id, 0.5f, 0.5f);
    w.Set("SoSi"_id, 2.0f);
    w.SetDegrees("Source angle", 90.0f);
    w.SetPoint("Cent"_id, 0.2f, 0.3f);
    w.Set("Size"_id, 0.5f);
    w.Start();
    // (0.1, 0.05) in the lattice, in the triangle; halved and turned to (0.025, -0.05).
    ExpectMaps(w, {{0.25f, 0.325f, 0.525f, 0.45f}}, 1e-5f);
    w.Set("Leng"_id, 0.0f);  // no radius: only the matrices
    w.Start();
    ExpectMaps(w, {{0.2f, 0.5f, 0.7f, 0.5f}}, 1e-5f);
}

TEST(Kaleidoscope, WrapsAnglesIntoWedgesAndRadiiIntoRings)
{
    Warp w("ZV_Kaleidoscope");
    w.SetInt("Type", 1);
    w.SetDegrees("View angle", 90.0f);  // made positive: a quarter turn a wedge
    // Polar rows: degrees and radius in, degrees and radius read.
    auto polar = [&](std::initializer_list<std::array<float, 4>> rows) {
        for (const auto& [a, r, b, s] : rows) {
            SCOPED_TRACE(testing::Message() << a << " degrees at " << r);
            const float ra = a * 0.017453292f, rb = b * 0.017453292f;
            ExpectMaps(w, {{r * std::cos(ra), r * std::sin(ra), s * std::cos(rb), s * std::sin(rb)}},
                       1e-5f);
        }
    };
    Plain(w);
    polar({{100, 0.1f, 10, 0.1f}, {-30, 0.1f, 60, 0.1f}, {10, 0.3f, 10, 0.05f}});
    w.SetBool("Ping-Pong along angle", true);
    w.SetBool("Ping-Pong along radius", true);
    Plain(w);
    polar({{100, 0.1f, 80, 0.1f}, {10, 0.3f, 10, 0.2f}, {10, 0.55f, 10, 0.05f}});
}
