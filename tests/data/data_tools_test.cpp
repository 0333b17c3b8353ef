// The per-channel data tools: what each does to the channels its pattern names.
#include "data/effect_data.h"
#include "support.h"

using namespace zvtest;

namespace {

KDataTable Crowd()
{
    KDataTable t;
    t.Add(KDataChannel::Create("id", kDataInteger, 2));
    t.Channel(0)->ints = {3, 9};
    t.Add(KDataChannel::Create("v", kDataVector2, 2));
    t.Channel(1)->floats = {0.2f, 5.0f, 0.6f, 7.0f};
    t.Add(KDataChannel::Create("w", kDataFloat, 2));
    t.Channel(2)->floats = {-1.0f, 1.0f};
    return t;
}

std::unique_ptr<KDataTable> Computed(Tool<KEffectData>& tool, KDataTable& in)
{
    tool.Field<KDataTable*>("Data", kValueData) = &in;
    auto out = tool.effect->Compute();
    tool.Field<KDataTable*>("Data", kValueData) = nullptr;
    return out;
}

}  // namespace

TEST(DataDelete, DropsWhatThePatternNamesAndKeepsTheOrder)
{
    KDataTable in = Crowd();
    Tool<KEffectData> tool("ZV_DataDelete");
    EXPECT_EQ(Computed(tool, in)->Dump(), in.Dump());  // "#channel" names nothing
    tool.SetText("Channel Name (in/out)", "v, id");
    EXPECT_EQ(Computed(tool, in)->Dump(), "w [2]     float32 [1]      Float\n");
}

TEST(DataRemap, FirstComponentsFromTheSourceRangeToTheDestination)
{
    KDataTable in = Crowd();
    Tool<KEffectData> tool("ZV_DataRemap");
    // By default the maximum is the channel's own, over all its components.
    auto out = Computed(tool, in);
    EXPECT_EQ(out->Channel(0)->ints, (std::vector<int32_t>{3, 9}));  // integers stay
    const float k = 1.0f / 7.0f;
    EXPECT_EQ(out->Channel(1)->floats, (std::vector<float>{0.2f * k, 5.0f, 0.6f * k, 7.0f}));
    EXPECT_EQ(out->Channel(2)->floats, (std::vector<float>{-1.0f, 1.0f}));  // max 1: unchanged
    // Set bounds, and an empty source span counts as 1.
    tool.Set("Source Maximum", 0);
    tool.Set("Source Maximum Value", 0.0f);
    tool.Set("Destination Minimum Value", 0.5f);
    tool.SetText("Channel Name (in/out)", "w");
    EXPECT_EQ(Computed(tool, in)->Channel(2)->floats, (std::vector<float>{0.0f, 1.0f}));  // (x - 0) * 0.5 + 0.5
}

TEST(DataSetConstant, ModesByTypeIntegersInIntegerArithmetic)
{
    KDataTable in = Crowd();
    in.Add(KDataChannel::Create("on", kDataBool, 2));
    in.Channel(3)->ints = {1, 1};
    Tool<KEffectData> tool("ZV_DataSetConstant");
    tool.Set("Integer", 4);
    tool.Set("Float", 0.5f);
    tool.SetPoint("Vector2", 2.0f, -1.0f);
    const struct { int mode; std::vector<int32_t> ids; std::vector<float> v, w; } rows[] = {
        {0, {4, 4}, {2.0f, -1.0f, 2.0f, -1.0f}, {0.5f, 0.5f}},
        {1, {7, 13}, {2.2f, 4.0f, 2.6f, 6.0f}, {-0.5f, 1.5f}},
        {2, {12, 36}, {0.4f, -5.0f, 1.2f, -7.0f}, {-0.5f, 0.5f}},
    };
    for (const auto& r : rows) {
        tool.Set("Type", r.mode);
        auto out = Computed(tool, in);
        EXPECT_EQ(out->Channel(0)->ints, r.ids) << r.mode;
        EXPECT_EQ(out->Channel(1)->floats, r.v) << r.mode;
        EXPECT_EQ(out->Channel(2)->floats, r.w) << r.mode;
        EXPECT_EQ(out->Channel(3)->ints, (std::vector<int32_t>{0, 0})) << r.mode;  // Bool: always false
    }
}

TEST(DataMerge, FirstTableThenTheChannelsOfTheOthersInOrder)
{
    KDataTable a = Crowd(), c;
    c.Add(KDataChannel::Create("extra", kDataColor, 5));
    Tool<KEffectData> tool("ZV_DataMerge");
    tool.Field<KDataTable*>("Data 1 (in)", kValueData) = &a;
    tool.Field<KDataTable*>("Data 3 (in)", kValueData) = &c;
    const auto out = tool.effect->Compute();
    tool.Field<KDataTable*>("Data 1 (in)", kValueData) = nullptr;
    tool.Field<KDataTable*>("Data 3 (in)", kValueData) = nullptr;
    EXPECT_EQ(out->Dump(), a.Dump() + c.Dump());
    EXPECT_EQ(out->minimumCount, 2);
    EXPECT_EQ(out->maximumCount, 5);
}
