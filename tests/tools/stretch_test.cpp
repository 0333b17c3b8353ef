// Stretch: declarations, a segment without length as nothing to do, the
// three pieces on hand-computed points (straight and turned), the offsets
// type, and a render stretching the middle of each row.
#include <gtest/gtest.h>
#include "inverse_map_driver.h"
#include "support.h"

using namespace zvwarp;

namespace {

TEST(StretchDeclarations, InputsAsTheHostShowsThem)
{
    host::Flow flow;
    auto* op = flow.Add("s", Registered("ZV_Stretch")).op.get();
    const char* ids[] = {"Type",           "SourceStart", "SourceEnd",  "DestinationStart",
                         "DestinationEnd", "OffsetStart", "OffsetEnd"};
    for (size_t i = 0; i < 7; ++i) {
        ASSERT_EQ(op->Inputs()[i]->id, ids[i]);
        EXPECT_EQ(op->Inputs()[i]->page, "Stretch");
    }
    EXPECT_EQ(op->FindInput("Type")->attrs.items,
              (std::vector<std::string>{"Source and Destination", "Source and Offset"}));
    EXPECT_EQ(*op->FindInput("DestinationEnd")->attrs.defaultPoint, std::make_pair(0.5, 0.5));
    const host::Input* offset = op->FindInput("OffsetEnd");
    EXPECT_EQ(offset->attrs.control, host::Control::Screw);
    EXPECT_FLOAT_EQ(*offset->attrs.softMin, -0.1f);
    EXPECT_FLOAT_EQ(*offset->attrs.softMax, 0.1f);
    Warp w("ZV_Stretch");
    EXPECT_EQ(w.Param("Offset Start").id, "OffS"_id);
    EXPECT_EQ(w.Param("Destination Start").pointUnit, 0);
}

TEST(StretchInverseMap, SegmentsWithoutLengthDoNothing)
{
    Warp w("ZV_Stretch");
    EXPECT_FALSE(w.Start());  // every point at the middle
    w.SetPoint("Source End", 0.75f, 0.5f);
    EXPECT_FALSE(w.Start());  // the destination still has no length
    w.SetPoint("Destination End", 0.5f, 0.75f);
    EXPECT_TRUE(w.Start());
}

TEST(StretchInverseMap, BeforeInsideAndAfterTheSegment)
{
    Warp w("ZV_Stretch");
    w.SetPoint("Source Start", 0.25f, 0.5f);
    w.SetPoint("Source End", 0.5f, 0.5f);
    w.SetPoint("Destination Start", 0.25f, 0.5f);
    w.SetPoint("Destination End", 0.75f, 0.5f);
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.5f, 0.6f, 0.375f, 0.6f);  // inside: twice as long
    ExpectMap(w, 0.75f, 0.2f, 0.5f, 0.2f);
    ExpectMap(w, 0.9f, 0.6f, 0.65f, 0.6f);   // after: follows the end
    ExpectMap(w, 0.1f, 0.4f, 0.1f, 0.4f);    // before: follows the start

    // A destination turned a quarter counter-clockwise about the start.
    w.SetPoint("Source Start", 0.5f, 0.5f);
    w.SetPoint("Source End", 0.75f, 0.5f);
    w.SetPoint("Destination Start", 0.5f, 0.5f);
    w.SetPoint("Destination End", 0.5f, 0.75f);
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.5f, 0.6f, 0.6f, 0.5f);
    ExpectMap(w, 0.6f, 0.6f, 0.6f, 0.4f);
    ExpectMap(w, 0.5f, 0.9f, 0.9f, 0.5f);   // after the end
    ExpectMap(w, 0.6f, 0.4f, 0.4f, 0.4f);   // before the start
}

TEST(StretchInverseMap, SourceAndOffsetLengthensTheSourceLine)
{
    Warp w("ZV_Stretch");
    w.SetInt("Type", 1);
    w.SetPoint("Source Start", 0.25f, 0.5f);
    w.SetPoint("Source End", 0.75f, 0.5f);
    w.SetFloat("Offset Start", 0.05f);
    w.SetFloat("Offset End", 0.1f);
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.2f, 0.5f, 0.25f, 0.5f);
    ExpectMap(w, 0.85f, 0.3f, 0.75f, 0.3f);
    ExpectMap(w, 0.525f, 0.5f, 0.5f, 0.5f);
    ExpectMap(w, 0.95f, 0.5f, 0.85f, 0.5f);
    // The destination points have no say.
    w.SetPoint("Destination End", 0.1f, 0.9f);
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.525f, 0.5f, 0.5f, 0.5f);
}

TEST(StretchRender, MiddleOfEachRowStretched)
{
    // Pixels 4..8 laid over 4..12 of 17: inside, x reads 4 + (x - 4) / 2;
    // after it, x - 4.
    for (bool isFloat : {false, true}) {
        KImage* plate = zvtest::Pattern(17, 17, isFloat);
        Render r("ZV_Stretch", plate);
        r.SetPoint("SourceStart", 0.25, 0.5);
        r.SetPoint("SourceEnd", 0.5, 0.5);
        r.SetPoint("DestinationStart", 0.25, 0.5);
        r.SetPoint("DestinationEnd", 0.75, 0.5);
        KImage* out = r.Run();
        ASSERT_NE(out, nullptr);
        for (int32_t y = 0; y < 17; ++y)
            for (int32_t x = 0; x < 17; ++x) {
                std::array<float, 4> want;
                if (x <= 4) {
                    want = Raw(*plate, x, y);
                } else if (x <= 12) {
                    const auto a = Raw(*plate, 4 + (x - 4) / 2, y);
                    const auto b = Raw(*plate, 4 + (x - 3) / 2, y);
                    for (int c = 0; c < 4; ++c) want[c] = (a[c] + b[c]) / 2.0f;
                } else {
                    want = Raw(*plate, x - 4, y);
                }
                for (int c = 0; c < 4; ++c)
                    EXPECT_NEAR(Raw(*out, x, y)[c], want[c], isFloat ? 2e-5f : 1.0f) << x << "," << y;
            }
        delete plate;
    }
}

}  // namespace
