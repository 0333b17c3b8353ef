// dCopy, dTransform, dGrow, dInfo and dTool on hand-computed tables.
#include <numbers>
#include "data_support.h"

using namespace zvtest;

namespace {

KDataTable Mixed()
{
    KDataTable t;
    t.Add(Channel("f", kDataFloat, {0.5f, 0.7f, -1.2f}));
    t.Add(Channel("i", kDataInteger, {0, 2, -3}));
    t.Add(Channel("v", kDataVector2, {1, 2, 3, 4, 5, 6}));
    t.Add(Channel("p", kDataVector3, {1, 2, 3, 4, 5, 6, 7, 8, 9}));
    t.Add(Channel("c", kDataColor, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    return t;
}

}  // namespace

TEST(DataCopy, ConvertsEachTypeInPlace)
{
    KDataTable in = Mixed();
    Tool<KEffectData> tool("ZV_DataCopy");
    EXPECT_EQ(Computed(tool, in)->Dump(), in.Dump());  // "Type Out" Any: clones
    const struct { int32_t out; std::vector<int32_t> f, i, v; } integers[] = {
        {1, {0, 1, 0}, {0, 1, 1}, {1, 1, 1}},     // Bool: above 0.5, or not zero
        {2, {1, 1, 0}, {0, 2, -3}, {1, 3, 5}},   // Integer: truncated after adding 0.5
    };
    for (const auto& r : integers) {
        tool.Set("Type Out", r.out);
        auto out = Computed(tool, in);
        EXPECT_EQ(std::vector({Ints(*out, "f"), Ints(*out, "i"), Ints(*out, "v")}), std::vector({r.f, r.i, r.v}))
            << r.out;
        EXPECT_EQ(out->Channel(0)->name, "f");
        EXPECT_EQ(out->Channel(0)->type, r.out == 1 ? kDataBool : kDataInteger);
    }
    tool.Set("Type Out", 5);
    auto out = Computed(tool, in);
    EXPECT_EQ(Floats(*out, "f"), (std::vector<float>{0.5f, 0.5f, 0.5f, 0.7f, 0.7f, 0.7f, -1.2f, -1.2f, -1.2f}));
    EXPECT_EQ(Floats(*out, "i"), (std::vector<float>{0, 0, 0, 2, 2, 2, -3, -3, -3}));
    EXPECT_EQ(Floats(*out, "v"), (std::vector<float>{1, 2, 0, 3, 4, 0, 5, 6, 0}));
    EXPECT_EQ(Floats(*out, "c"), (std::vector<float>{1, 2, 3, 5, 6, 7, 9, 10, 11}));
    tool.Set("Type Out", 6);
    out = Computed(tool, in);
    EXPECT_EQ(Floats(*out, "v"), (std::vector<float>{1, 2, 0, 0, 3, 4, 0, 0, 5, 6, 0, 0}));
    EXPECT_EQ(Floats(*out, "p"), (std::vector<float>{1, 2, 3, 1, 4, 5, 6, 1, 7, 8, 9, 1}));
    EXPECT_EQ(Floats(*out, "c"), std::vector<float>(12, 0.0f));  // a colour read as "Any" comes out zero
    tool.Set("Type In", 3);
    tool.Set("Type Out", 4);  // only the Float channel moves
    out = Computed(tool, in);
    EXPECT_EQ(out->Dump(), "f [3]     float32 [2]      Vector2\n" + in.Dump().substr(in.Dump().find('\n') + 1));
    EXPECT_EQ(Floats(*out, "f"), (std::vector<float>{0.5f, 0.5f, 0.7f, 0.7f, -1.2f, -1.2f}));
    tool.Set("Type Out", 3);
    EXPECT_EQ(Floats(*Computed(tool, in), "f"), Floats(in, "f"));
}

TEST(DataTransform, ScaleTurnAndMoveInOrderByTheMultiplier)
{
    KDataTable in;
    in.Add(Channel("p", kDataVector3, {1, 0, 0, 0, 1, 0}));
    in.Add(Channel("q", kDataVector2, {1, 0}));
    Tool<KEffectData> tool("ZV_DataTransform");
    auto& t = tool.Field<KTransformValue>("Transform", kValueTransform);
    EXPECT_EQ(Floats(*Computed(tool, in), "p"), Floats(in, "p"));
    t.translateX = 1.0f, t.scaleX = 2.0f, t.scaleY = 3.0f;  // scale before the move; locked: x for all
    EXPECT_EQ(Floats(*Computed(tool, in), "p"), (std::vector<float>{3, 0, 0, 1, 2, 0}));
    t.scaleLock = false;
    EXPECT_EQ(Floats(*Computed(tool, in), "p"), (std::vector<float>{3, 0, 0, 1, 3, 0}));
    t = KTransformValue{};
    const float quarter = std::numbers::pi_v<float> / 2;
    t.rotateX = quarter, t.rotateZ = quarter;
    const struct { int32_t order; std::vector<float> second; } rows[] = {
        {0, {0, 0, 1}},   // XYZ: up turns to z about x, then stays
        {5, {-1, 0, 0}},  // ZYX: up turns to -x about z, then stays
    };
    for (const auto& r : rows) {
        t.rotationOrder = r.order;
        const std::vector<float> p = Floats(*Computed(tool, in), "p");
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(p[size_t(3 + k)], r.second[size_t(k)], 1e-6f) << r.order;
    }
    t = KTransformValue{};
    t.translateX = 2.0f, t.scaleX = 3.0f;
    in.Add(Channel("multiplier", kDataInteger, {0, 1}));
    EXPECT_EQ(Floats(*Computed(tool, in), "p"), (std::vector<float>{1, 0, 0, 2, 3, 0}));
    in.Add(Channel("half", kDataFloat, {0.5f}));
    tool.SetText("Channel Name Multiplier (in)", "half");  // past its end: none of the transform
    auto out = Computed(tool, in);
    EXPECT_EQ(Floats(*out, "p"), (std::vector<float>{3, 0, 0, 0, 1, 0}));
    EXPECT_EQ(Floats(*out, "q"), Floats(in, "q"));
}

TEST(DataGrow, FloatsScaledByTheRangesProgress)
{
    KDataTable in;
    in.Add(Channel("f", kDataFloat, {2, 2, 2, 2}));
    in.Add(Channel("p", kDataVector3, {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2}));
    Tool<KEffectData> tool("ZV_DataGrow");
    EXPECT_EQ(Floats(*Computed(tool, in), "f"), Floats(in, "f"));  // the whole range: all grown
    tool.Field<KRange2>("Range Min", kValueRange) = {0.375f, 0.8125f};
    auto out = Computed(tool, in);
    EXPECT_EQ(Floats(*out, "f"), (std::vector<float>{0, 1, 2, 0.5f}));  // (1 - c) d: 0, 0.5, 1, 0.25
    EXPECT_EQ(Floats(*out, "p"), Floats(in, "p"));
}

TEST(DataInfo, ShowsTheDumpAndPassesTheTable)
{
    KDataTable in = Mixed();
    Tool<KEffectData> tool("ZV_DataInfo");
    auto& info = tool.Field<std::string>("Information", kValueText);
    EXPECT_EQ(info, "---");
    tool.effect->Compute();
    EXPECT_EQ(info, "- no data -");
    auto out = Computed(tool, in);
    EXPECT_EQ(info, in.Dump());
    EXPECT_EQ(out->Dump(), in.Dump());
    EXPECT_EQ(Floats(*out, "c"), Floats(in, "c"));
}

TEST(DataTool, PassesTheSameChannels)
{
    KDataTable in = Mixed();
    Tool<KEffectData> tool("ZV_DataTool");
    tool.Set("Limit Count Start", 1);
    auto out = Computed(tool, in);
    ASSERT_EQ(out->ChannelCount(), in.ChannelCount());
    for (size_t c = 0; c < in.ChannelCount(); ++c) EXPECT_EQ(out->Channel(c), in.Channel(c));
}
