// The data table: channel storage, counts, look-up by name pattern, the dump.
#include <gtest/gtest.h>
#include "data/table.h"

TEST(DataChannel, StorageByTypeAndNamesTrimmed)
{
    const struct { int32_t type; int32_t ints, floats, index; } rows[] = {
        {kDataBool, 1, 0, 1},    {kDataColor, 0, 4, 6},   {kDataInteger, 1, 0, 2}, {kDataFloat, 0, 1, 3},
        {kDataVector2, 0, 2, 4}, {kDataText, 0, 0, 8},    {kDataMatrix, 0, 0, 7},  {kDataVector3, 0, 3, 5},
        {42, 0, 0, 0},
    };
    for (const auto& r : rows) {
        auto c = KDataChannel::Create("  p  ", r.type, 5);
        EXPECT_EQ(c->name, "p");
        EXPECT_EQ(c->intComponents, r.ints) << r.type;
        EXPECT_EQ(c->floatComponents, r.floats) << r.type;
        EXPECT_EQ(c->ints.size() + c->floats.size(), size_t(5 * (r.ints + r.floats))) << r.type;
        EXPECT_EQ(KDataTypeIndex(r.type), r.index) << r.type;
    }
    auto none = KDataChannel::Create("", kDataVector3, -3);
    EXPECT_EQ(none->name, "name");
    EXPECT_EQ(none->count, 0);
    EXPECT_TRUE(none->floats.empty());
    EXPECT_EQ(none->Maximum(), 0.0f);
    auto v = KDataChannel::Create("v", kDataVector2, 2);
    v->floats = {1.5f, -2.0f, 4.0f, 0.5f};
    EXPECT_EQ(std::vector<float>({v->Minimum(), v->Maximum(), v->Sum()}), std::vector<float>({-2.0f, 4.0f, 4.0f}));
}

TEST(DataTable, CountsCloneShareAndDump)
{
    KDataTable t;
    EXPECT_EQ(t.Dump(), "");
    const int32_t types[] = {kDataBool, kDataColor, kDataInteger, kDataFloat, kDataVector2, kDataVector3, kDataText};
    int32_t count = 10;
    for (int32_t type : types) t.Add(KDataChannel::Create("c" + std::to_string(type), type, count--));
    t.Add(nullptr);
    EXPECT_EQ(t.ChannelCount(), 7u);
    EXPECT_EQ(t.minimumCount, 4);
    EXPECT_EQ(t.maximumCount, 10);
    EXPECT_EQ(t.Dump(),
              "c2 [10]     int32 [1]      Bool\n"
              "c3 [9]     float32 [4]      Color\n"
              "c6 [8]     int32 [1]      Integer\n"
              "c7 [7]     float32 [1]      Float\n"
              "c9 [6]     float32 [2]      Vector2\n"
              "c16 [5]     float32 [3]      Vector3\n"
              "c13 [4]     \n");
    t.Channel(3)->floats[0] = 2.5f;
    auto copy = t.Clone();
    copy->Channel(3)->floats[0] = 7.0f;  // deep: the source keeps its value
    EXPECT_EQ(t.Channel(3)->floats[0], 2.5f);
    EXPECT_EQ(copy->Dump(), t.Dump());
    KDataTable shared;
    shared.ShareList(t);
    EXPECT_EQ(shared.Channel(3), t.Channel(3));  // the same channel, not a copy
    EXPECT_EQ(shared.minimumCount, 4);
}

TEST(DataTable, FindByPatternAndType)
{
    const struct { const char* pattern; const char* name; bool match; } names[] = {
        {"*", "x", true},          {"a, b", "b", true},      {"pos*", "position", true}, {"pos*", "pos", true},
        {"*x", "x", true},         {"*x", "ax", true},       {"*x", "xa", false},        {"p?s", "pos", true},
        {"p?s", "ps", false},      {"Pos", "pos", false},    {"", "pos", false},         {" , ,pos", "pos", true},
        {"a*b*c", "aXbYc", true},  {"a*b*c", "abX", false},
    };
    for (const auto& n : names)
        EXPECT_EQ(KDataNameMatches(n.pattern, n.name), n.match) << n.pattern << " / " << n.name;
    EXPECT_FALSE(KDataNameUsable("  #off"));
    EXPECT_FALSE(KDataNameUsable("   "));
    EXPECT_TRUE(KDataNameUsable("on"));

    KDataTable t;
    t.Add(KDataChannel::Create("position", kDataVector3, 3));
    t.Add(KDataChannel::Create("size", kDataFloat, 3));
    t.Add(KDataChannel::Create("position", kDataFloat, 3));
    t.Add(KDataChannel::Create("id", kDataInteger, 3));
    EXPECT_EQ(t.FindAny("pos*", kDataAny), t.Channel(0));  // the first in list order wins
    EXPECT_EQ(t.FindAny("position", kDataFloat), t.Channel(2));
    EXPECT_EQ(t.FindAny("", kDataAny), nullptr);
    EXPECT_EQ(t.FindCompatible("position", kDataFloat), t.Channel(0));  // a Vector3 reads as a Float
    EXPECT_EQ(t.FindCompatible("size", kDataVector2), nullptr);
    EXPECT_EQ(t.FindCompatible("id", kDataBool), t.Channel(3));
    EXPECT_EQ(t.FindAll("*", kDataFloat), (std::vector<KDataChannel*>{t.Channel(1), t.Channel(2)}));
    EXPECT_EQ(KDataTable().FindAny("*", kDataAny), nullptr);
}
