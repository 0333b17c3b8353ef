// dMath and dSelect: each operation on hand-computed channels, the offset and
// scale of each value, the override, and which values count.
#include <cmath>
#include "data_support.h"

using namespace zvtest;

namespace {

// a Float, b Integer, p Vector3 whose first components are a's.
KDataTable Values()
{
    KDataTable t;
    t.Add(Channel("a", kDataFloat, {1, -2, 3}));
    t.Add(Channel("b", kDataInteger, {2, 3, 4}));
    t.Add(Channel("p", kDataVector3, {1, 9, 9, -2, 9, 9, 3, 9, 9}));
    return t;
}

}  // namespace

TEST(DataMath, EachOperationCombinesTheNextValue)
{
    const struct { int32_t op; std::vector<float> result; } rows[] = {
        {0, {2, 3, 4}},   {1, {3, 1, 7}},  {2, {-1, -5, -1}},           {3, {2, -6, 12}},
        {4, {0.5f, -2.0f / 3.0f, 0.75f}}, {5, {1, -8, 81}}, {6, {1, 1, 3}},  // -2 mod 3 is 1
    };
    for (const char* first : {"a", "p"}) {
        for (const auto& r : rows) {
            KDataTable in = Values();
            Tool<KEffectData> tool("ZV_DataMath");
            tool.SetText("Channel Name Value 1 (in)", first);
            tool.SetText("Channel Name Value 2 (in)", "b");
            tool.Set("Operation 1", r.op);
            auto out = Computed(tool, in);
            ASSERT_EQ(out->ChannelCount(), 4u);
            EXPECT_EQ(out->Channel(3)->name, "result");
            EXPECT_EQ(out->Channel(3)->type, kDataFloat);
            EXPECT_EQ(out->Channel(3)->floats, r.result) << first << " op " << r.op;
        }
    }
}

TEST(DataMath, ValuesAreOffsetThenScaledAndZeroDividesByOne)
{
    KDataTable in = Values();
    Tool<KEffectData> tool("ZV_DataMath");
    tool.SetText("Channel Name Value 1 (in)", "a");
    tool.Set("Value 1 Add", 1.0);
    tool.Set("Value 1 Multiply", 2.0);
    EXPECT_EQ(Floats(*Computed(tool, in), "result"), (std::vector<float>{4, -2, 8}));  // the first value stands
    tool.SetText("Channel Name Value 2 (in)", "b");
    tool.Set("Value 2 Add", -3.0);  // (b - 3): -1, 0, 1
    tool.Set("Operation 1", 4);
    EXPECT_EQ(Floats(*Computed(tool, in), "result"), (std::vector<float>{-4, -2, 8}));
}

TEST(DataMath, MissingValuesKeepTheOperationAndNoneReplaces)
{
    KDataTable in = Values();
    Tool<KEffectData> tool("ZV_DataMath");
    tool.SetText("Channel Name Value 1 (in)", "a");
    tool.SetText("Channel Name Value 2 (in)", "nothing");
    tool.SetText("Channel Name Value 3 (in)", "b");
    tool.Set("Operation 1", 3);  // applies to value 3, the next that exists
    tool.Set("Operation 2", 1);
    EXPECT_EQ(Floats(*Computed(tool, in), "result"), (std::vector<float>{2, -6, 12}));
    tool.Set("Operation 1", 0);
    EXPECT_EQ(Floats(*Computed(tool, in), "result"), (std::vector<float>{2, 3, 4}));
}

TEST(DataMath, ResultCountNameAndTheOverride)
{
    KDataTable in = Values();
    in.Add(Channel("short", kDataFloat, {7, 7}));
    Tool<KEffectData> tool("ZV_DataMath");
    // No value found: a zero result of the table's smallest count, behind the clones.
    auto out = Computed(tool, in);
    EXPECT_EQ(out->Dump(), in.Dump() + "result [2]     float32 [1]      Float\n");
    EXPECT_EQ(Floats(*out, "result"), (std::vector<float>{0, 0}));
    tool.SetText("Channel Name Result (out)", " #off");
    EXPECT_EQ(Computed(tool, in)->Dump(), in.Dump());

    // The override writes into the tool's copy of the input: the result reads
    // the written values through the offset and scale again, while the
    // table's channels keep their old ones. Integers round.
    KDataTable own = Values();
    tool.SetText("Channel Name Result (out)", "result");
    tool.SetText("Channel Name Value 1 (in)", "b");
    tool.Set("Value 1 Add", 0.6);
    tool.Set("Value 1 Override Channel", 1);
    out = Computed(tool, own);
    EXPECT_EQ(Ints(own, "b"), (std::vector<int32_t>{3, 4, 5}));
    EXPECT_EQ(Ints(*out, "b"), (std::vector<int32_t>{2, 3, 4}));
    EXPECT_EQ(Floats(*out, "result"), (std::vector<float>{3.6f, 4.6f, 5.6f}));
    KDataTable again = Values();
    tool.SetText("Channel Name Value 1 (in)", "p");
    tool.Set("Value 1 Add", 1.0);
    tool.Set("Value 1 Multiply", 2.0);
    out = Computed(tool, again);
    EXPECT_EQ(Floats(again, "p"), (std::vector<float>{4, 9, 9, -2, 9, 9, 8, 9, 9}));
    EXPECT_EQ(Floats(*out, "result"), (std::vector<float>{10, -2, 18}));
    EXPECT_EQ(Floats(*out, "p"), Floats(Values(), "p"));
}

TEST(DataSelect, IsDataMathUnderASecondName)
{
    KDataTable in = Values(), same = Values();
    Tool<KEffectData> math("ZV_DataMath"), select("ZV_DataSelect");
    for (Tool<KEffectData>* t : {&math, &select}) {
        t->SetText("Channel Name Value 1 (in)", "a");
        t->SetText("Channel Name Value 2 (in)", "b");
        t->Set("Operation 1", 5);
    }
    EXPECT_EQ(Floats(*Computed(select, in), "result"), Floats(*Computed(math, same), "result"));
    EXPECT_EQ(select.Param("Data Math").controlKind, kControlLabel);
}
