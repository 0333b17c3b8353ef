// Stretch: declarations, a segment without length as nothing to do, the
// three pieces on hand-computed points (straight and turned), the offsets
// type, and a render stretching the middle of each row.
#include "warp_support.h"

using namespace zvtest;

namespace {

TEST(Stretch, SegmentsWithoutLengthDoNothing)
{
    Warp w("ZV_Stretch");
    EXPECT_FALSE(w.Start());  // every point at the middle
    w.SetPoint("Source End", 0.75f, 0.5f);
    EXPECT_FALSE(w.Start());  // the destination still has no length
    w.SetPoint("Destination End", 0.5f, 0.75f);
    EXPECT_TRUE(w.Start());
}

TEST(Stretch, BeforeInsideAndAfterTheSegment)
{
    Warp w("ZV_Stretch");
    w.SetPoint("Source Start", 0.25f, 0.5f);
    w.SetPoint("Source End", 0.5f, 0.5f);
    w.SetPoint("Destination Start", 0.25f, 0.5f);
    w.SetPoint("Destination End", 0.75f, 0.5f);
    ASSERT_TRUE(w.Start());
    ExpectMaps(w, {{0.5f, 0.6f, 0.375f, 0.6f},   // inside: twice as long
                   {0.75f, 0.2f, 0.5f, 0.2f},
                   {0.9f, 0.6f, 0.65f, 0.6f},    // after: follows the end
                   {0.1f, 0.4f, 0.1f, 0.4f}},    // before: follows the start
               1e-5f);

    // A destination turned a quarter counter-clockwise about the start.
    w.SetPoint("Source Start", 0.5f, 0.5f);
    w.SetPoint("Source End", 0.75f, 0.5f);
    w.SetPoint("Destination Start", 0.5f, 0.5f);
    w.SetPoint("Destination End", 0.5f, 0.75f);
    ASSERT_TRUE(w.Start());
    ExpectMaps(w, {{0.5f, 0.6f, 0.6f, 0.5f},
                   {0.6f, 0.6f, 0.6f, 0.4f},
                   {0.5f, 0.9f, 0.9f, 0.5f},     // after the end
                   {0.6f, 0.4f, 0.4f, 0.4f}},    // before the start
               1e-5f);
}

TEST(Stretch, SourceAndOffsetLengthensTheSourceLine)
{
    Warp w("ZV_Stretch");
    w.SetInt("Type", 1);
    w.SetPoint("Source Start", 0.25f, 0.5f);
    w.SetPoint("Source End", 0.75f, 0.5f);
    w.SetFloat("Offset Start", 0.05f);
    w.SetFloat("Offset End", 0.1f);
    ASSERT_TRUE(w.Start());
    const auto rows = {MapRow{0.2f, 0.5f, 0.25f, 0.5f}, MapRow{0.85f, 0.3f, 0.75f, 0.3f},
                       MapRow{0.525f, 0.5f, 0.5f, 0.5f}, MapRow{0.95f, 0.5f, 0.85f, 0.5f}};
    ExpectMaps(w, rows, 1e-5f);
    w.SetPoint("Destination End", 0.1f, 0.9f);  // the destination points have no say
    ASSERT_TRUE(w.Start());
    ExpectMaps(w, rows, 1e-5f);
}

}  // namespace
