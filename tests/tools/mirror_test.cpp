// Mirror: the kept side, and reflection across a slanted line.
#include "warp_support.h"

using namespace zvtest;

TEST(Mirror, ReflectsAcrossTheLineThroughBothPoints)
{
    Warp w("ZV_Mirror");
    ExpectSteps(w, 2e-6f, {
        // The normal (-dy, dx) points away: kept; across; on the line.
        {{{"Mirror Left", 0.25, 0.25}, {"Mirror Right", 0.75, 0.75}},
         {{0.5f, 0.25f, 0.5f, 0.25f}, {0.1f, 0.9f, 0.9f, 0.1f}, {0.6f, 0.6f, 0.6f, 0.6f}}},
        {{{"Mirror all", 1}}, {{0.5f, 0.25f, 0.25f, 0.5f}}},
        // From right to left the kept side changes.
        {{{"Mirror all", 0}, {"Mirror Left", 0.75, 0.4}, {"Mirror Right", 0.25, 0.4}}, {{0.3f, 0.5f, 0.3f, 0.5f}, {0.3f, 0.1f, 0.3f, 0.7f}}},
    });
}
