// Stretch: a segment without length as nothing to do, the three pieces on
// hand-computed points (straight and turned), and the offsets type.
#include "warp_support.h"

using namespace zvtest;

TEST(Stretch, BeforeInsideAndAfterTheSegment)
{
    Warp w("ZV_Stretch");
    EXPECT_FALSE(w.Start());  // every point at the middle
    w.SetPoint("Source End", 0.75f, 0.5f);
    EXPECT_FALSE(w.Start());  // the destination still has no length
    ExpectSteps(w, 1e-5f, {
        // Inside twice as long; after, following the end; before, the start.
        {{{"Source Start", 0.25, 0.5}, {"Source End", 0.5, 0.5}, {"Destination Start", 0.25, 0.5}, {"Destination End", 0.75, 0.5}},
         {{0.5f, 0.6f, 0.375f, 0.6f}, {0.75f, 0.2f, 0.5f, 0.2f}, {0.9f, 0.6f, 0.65f, 0.6f}, {0.1f, 0.4f, 0.1f, 0.4f}}},
        // A destination turned a quarter counter-clockwise about the start.
        {{{"Source Start", 0.5, 0.5}, {"Source End", 0.75, 0.5}, {"Destination Start", 0.5, 0.5}, {"Destination End", 0.5, 0.75}},
         {{0.5f, 0.6f, 0.6f, 0.5f}, {0.6f, 0.6f, 0.6f, 0.4f}, {0.5f, 0.9f, 0.9f, 0.5f}, {0.6f, 0.4f, 0.4f, 0.4f}}},
        // Source and Offset lengthens the source line; the destination points have no say.
        {{{"Type", 1}, {"Source Start", 0.25, 0.5}, {"Offset Start", 0.05}, {"Offset End", 0.1}, {"Destination End", 0.1, 0.9}},
         {{0.2f, 0.5f, 0.25f, 0.5f}, {0.85f, 0.3f, 0.75f, 0.3f}, {0.525f, 0.5f, 0.5f, 0.5f}, {0.95f, 0.5f, 0.85f, 0.5f}}},
    });
}
