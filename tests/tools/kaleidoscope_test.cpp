// Kaleidoscope: the triangle tiling of "Classic" (every point lands in the one
// triangle and neighbours meet without seams), the two matrices, and the
// wedges and rings of "Fancy".
#include "warp_support.h"

using namespace zvtest;

TEST(Kaleidoscope, FoldsEveryTriangleOntoTheFirstWithoutSeams)
{
    Warp w("ZV_Kaleidoscope");
    ExpectSteps(w, 1e-5f, {{{{"Center", 0, 0}, {"Source center", 0, 0}},  // both matrices the identity
                            {{0.1f, 0.05f, 0.1f, 0.05f},
                             {0.25f, 0.1f, 0.25f - 0.1f * 0.8660254f, 0.05f},  // across the edge
                             {0.1f, -0.05f, 0.1f, 0.05f},                      // across y = 0
                             {0.1f + 0.75f, 0.05f, 0.1f, 0.05f}}}});           // three rhombi make a period
    const float step = 1e-4f, slope = 2.0f * 0.8660254f, e = 1e-5f;
    int32_t outside = 0, seams = 0;
    for (float y = -0.8f; y < 0.8f; y += 0.0123f)
        for (float x = -0.8f; x < 0.8f; x += 0.0117f) {
            KPosition p, q, r;
            outside += !w.Map(x, y, p) || p.y < -e || p.y > p.x * slope + e || p.y > (0.25f - p.x) * slope + e;
            // Reflections and turns never stretch a distance.
            seams += !w.Map(x + step, y, q) || std::hypot(q.x - p.x, q.y - p.y) > step * 1.01f;
            seams += !w.Map(x, y + step, r) || std::hypot(r.x - p.x, r.y - p.y) > step * 1.01f;
        }
    EXPECT_EQ(outside, 0);
    EXPECT_EQ(seams, 0);
    // (0.1, 0.05) in the lattice, in the triangle; halved and turned to (0.025, -0.05).
    Warp m("ZV_Kaleidoscope");
    ExpectSteps(m, 1e-5f, {
        {{{"Source center", 0.5, 0.5}, {"Source size", 2}, {"Source angle", 90}, {"Center", 0.2, 0.3}, {"Size", 0.5}},
         {{0.25f, 0.325f, 0.525f, 0.45f}}},
        {{{"Radius", 0}}, {{0.2f, 0.5f, 0.7f, 0.5f}}},  // no radius: only the matrices
    });
}

TEST(Kaleidoscope, FancyWrapsAnglesIntoWedgesAndRadiiIntoRings)
{
    Warp w("ZV_Kaleidoscope");
    // Polar rows: degrees and radius in, degrees and radius read; a view
    // angle of 90, made positive, is a quarter turn a wedge.
    auto polar = [&](std::vector<Setting> set, std::initializer_list<std::array<float, 4>> rows) {
        std::vector<MapRow> maps;
        for (const auto& [a, r, b, s] : rows) {
            const float ra = a * 0.017453292f, rb = b * 0.017453292f;
            maps.push_back({r * std::cos(ra), r * std::sin(ra), s * std::cos(rb), s * std::sin(rb)});
        }
        ExpectSteps(w, 1e-5f, {{std::move(set), maps}});
    };
    polar({{"Type", 1}, {"View angle", 90}, {"Center", 0, 0}, {"Source center", 0, 0}},
          {{100, 0.1f, 10, 0.1f}, {-30, 0.1f, 60, 0.1f}, {10, 0.3f, 10, 0.05f}});
    polar({{"Ping-Pong along angle", 1}, {"Ping-Pong along radius", 1}},
          {{100, 0.1f, 80, 0.1f}, {10, 0.3f, 10, 0.2f}, {10, 0.55f, 10, 0.05f}});
}
