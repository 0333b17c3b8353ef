// dSet Manual, dSet Ramp and dSet Random: which value each element gets, in
// each apply mode, integers in integer arithmetic.
#include "data_support.h"

using namespace zvtest;

TEST(DataSetManual, EntriesByOutOfRangeMode)
{
    KDataTable in;
    in.Add(KDataChannel::Create("i", kDataInteger, 8));
    in.Add(Channel("on", kDataBool, {0, 1, 0, 0, 1, 0, 0, 0}));
    Tool<KEffectData> tool("ZV_DataSetManual");
    EXPECT_EQ(Computed(tool, in)->Dump(), in.Dump());  // Count 0: nothing set
    EXPECT_EQ(Ints(*Computed(tool, in), "i"), Ints(in, "i"));
    tool.Set("Start Index", 2);
    tool.Set("Count", 3);
    for (int32_t n = 0; n < 4; ++n) tool.Set("Integer " + std::to_string(n), 5 + n);
    const struct { int32_t mode; std::vector<int32_t> want; } rows[] = {
        {0, {0, 0, 5, 6, 7, 0, 0, 0}},  // Keep
        {1, {5, 5, 5, 6, 7, 7, 7, 7}},  // Extend
        {2, {6, 7, 5, 6, 7, 5, 6, 7}},  // Repeat
        {3, {6, 5, 5, 6, 7, 7, 6, 5}},  // Ping Pong
    };
    for (const auto& r : rows) {
        tool.Set("Out Of Range", r.mode);
        auto out = Computed(tool, in);
        EXPECT_EQ(Ints(*out, "i"), r.want) << r.mode;
        EXPECT_EQ(Ints(*out, "on"), Ints(in, "on")) << r.mode;  // a Bool channel keeps its values
    }
    // Repeat reaches one past the last value in use at i = s - c.
    tool.Set("Start Index", 3);
    tool.Set("Out Of Range", 2);
    EXPECT_EQ(Ints(*Computed(tool, in), "i")[0], 8);
    tool.Set("Out Of Range", 4);
    tool.Set("Random Seed", 9);
    const std::vector<int32_t> random = Ints(*Computed(tool, in), "i");
    EXPECT_EQ(Ints(*Computed(tool, in), "i"), random);
    for (int32_t v : random) EXPECT_TRUE(v >= 5 && v <= 7) << v;
}

TEST(DataSetManual, ModesByTypeAndTheEntryPastTheValues)
{
    KDataTable in;
    in.Add(Channel("f", kDataFloat, {1, 1, 1}));
    in.Add(Channel("v", kDataVector2, {1, 1, 1, 1, 1, 1}));
    in.Add(Channel("c", kDataColor, {1, 1, 1, 1}));
    Tool<KEffectData> tool("ZV_DataSetManual");
    tool.Set("Count", 2);
    tool.Set("Float 0", 0.5);
    tool.Set("Float 1", 2.0);
    tool.SetPoint("Vector2 1", 3.0f, -1.0f);
    tool.SetColor("Color 0", {0.25f, 0.5f, 0.75f, 1.0f});
    tool.Set("Type", 1);
    auto out = Computed(tool, in);
    EXPECT_EQ(Floats(*out, "f"), (std::vector<float>{1.5f, 3.0f, 1.0f}));
    EXPECT_EQ(Floats(*out, "v"), (std::vector<float>{1, 1, 4, 0, 1, 1}));
    EXPECT_EQ(Floats(*out, "c"), (std::vector<float>{1.25f, 1.5f, 1.75f, 2.0f}));
    tool.Set("Type", 2);
    EXPECT_EQ(Floats(*Computed(tool, in), "f"), (std::vector<float>{0.5f, 2.0f, 1.0f}));

    // With all 64 values in use, Repeat reaches entry 64, which is zero.
    KDataTable wide;
    wide.Add(KDataChannel::Create("i", kDataInteger, 65));
    std::fill(wide.Channel(0)->ints.begin(), wide.Channel(0)->ints.end(), 1);
    tool.Set("Type", 0);
    tool.Set("Count", 64);
    tool.Set("Start Index", 64);
    tool.Set("Out Of Range", 2);
    tool.Set("Integer 0", 3);
    tool.Set("Integer 1", 4);
    const std::vector<int32_t> got = Ints(*Computed(tool, wide), "i");
    EXPECT_EQ(std::vector<int32_t>({got[0], got[1], got[64]}), std::vector<int32_t>({0, 4, 3}));
}

TEST(DataSetManual, CountShowsTheValuesInUse)
{
    ExpectShown("ZV_DataSetManual", {"Integer0", "Integer1", "Float1", "Vector22", "Boolean1", "Color63Alpha"},
                {{nullptr, 0, "000000"}, {"Count", 2, "111010"}, {"Count", 64, "111111"}});
}

TEST(DataSetRamp, FromTheMinimumAtTheFirstToTheMaximumAtTheLast)
{
    KDataTable in;
    in.Add(Channel("f", kDataFloat, {2, 2, 2, 2, 2}));
    in.Add(Channel("i", kDataInteger, {1, 1, 1, 1, 1}));
    in.Add(Channel("v", kDataVector3, {0, 0, 0, 0, 0, 0}));
    in.Add(Channel("one", kDataColor, {0, 0, 0, 0}));
    in.Add(Channel("on", kDataBool, {1, 0, 1, 0, 1}));
    Tool<KEffectData> tool("ZV_DataSetRamp");
    tool.Field<KXYZ>("Vector3 Minimum", kValueXYZ) = {1, 2, 3};
    tool.Field<KXYZ>("Vector3 Maximum", kValueXYZ) = {-1, 4, 3};
    auto out = Computed(tool, in);
    EXPECT_EQ(Floats(*out, "f"), (std::vector<float>{0, 0.25f, 0.5f, 0.75f, 1}));
    EXPECT_EQ(Ints(*out, "i"), (std::vector<int32_t>{0, 2, 5, 7, 10}));  // truncated
    EXPECT_EQ(Floats(*out, "v"), (std::vector<float>{1, 2, 3, -1, 4, 3}));
    EXPECT_EQ(Floats(*out, "one"), (std::vector<float>{1, 1, 1, 1}));  // one element: the maximum
    EXPECT_EQ(Ints(*out, "on"), Ints(in, "on"));
    tool.Set("Type", 1);
    EXPECT_EQ(Ints(*Computed(tool, in), "i"), (std::vector<int32_t>{1, 3, 6, 8, 11}));
    tool.Set("Type", 2);
    EXPECT_EQ(Floats(*Computed(tool, in), "f"), (std::vector<float>{0, 0.5f, 1, 1.5f, 2}));
}

TEST(DataSetRandom, RepeatableFromItsSeedComponentsLastToFirst)
{
    KDataTable in;
    in.Add(KDataChannel::Create("f", kDataFloat, 4));
    in.Add(KDataChannel::Create("v2", kDataVector2, 1));
    in.Add(KDataChannel::Create("v3", kDataVector3, 1));
    in.Add(KDataChannel::Create("c", kDataColor, 1));
    in.Add(KDataChannel::Create("i", kDataInteger, 50));
    Tool<KEffectData> tool("ZV_DataSetRandom");
    tool.Set("Seed", 21);
    auto out = Computed(tool, in);
    const std::vector<float> f = Floats(*out, "f");
    for (float x : f) EXPECT_TRUE(x >= 0.0f && x <= 1.0f) << x;
    EXPECT_NE(f[0], f[1]);
    // Every channel starts afresh from the seed: the same numbers, drawn
    // alpha to red and z to x.
    EXPECT_EQ(Floats(*out, "v2"), (std::vector<float>{f[1], f[0]}));
    EXPECT_EQ(Floats(*out, "v3"), (std::vector<float>{f[2], f[1], f[0]}));
    EXPECT_EQ(Floats(*out, "c"), (std::vector<float>{f[3], f[2], f[1], f[0]}));
    for (int32_t v : Ints(*out, "i")) EXPECT_TRUE(v >= 0 && v < 10) << v;
    EXPECT_EQ(Computed(tool, in)->Channel(4)->ints, Ints(*out, "i"));
    tool.Set("Seed", 22);
    EXPECT_NE(Floats(*Computed(tool, in), "f"), f);
    tool.Set("Seed", 21);
    tool.Set("Type", 2);
    std::fill(in.Channel(0)->floats.begin(), in.Channel(0)->floats.end(), 2.0f);
    EXPECT_EQ(Floats(*Computed(tool, in), "f"), (std::vector<float>{2 * f[0], 2 * f[1], 2 * f[2], 2 * f[3]}));
    tool.Set("Type", 0);
    tool.Set("Integer Minimum", 4);
    tool.Set("Integer Maximum", 4);  // an empty range gives its bound
    EXPECT_EQ(Ints(*Computed(tool, in), "i"), std::vector<int32_t>(50, 4));
}

TEST(DataSetRandom, BoolIsTrueOnlyAtTheGeneratorsLargestNumber)
{
    KDataTable in;
    in.Add(KDataChannel::Create("on", kDataBool, 65536));
    Tool<KEffectData> tool("ZV_DataSetRandom");
    const std::vector<int32_t> on = Ints(*Computed(tool, in), "on");
    const auto trues = std::count(on.begin(), on.end(), 1);
    EXPECT_GE(trues, 1);
    EXPECT_LE(trues, 8);  // about two in 65536, where a test before the cut would give half
}
