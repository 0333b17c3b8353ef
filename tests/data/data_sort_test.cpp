// dSort: each channel by itself, or all by up to three keys; vector keys by
// component or distance; equal keys keep their order.
#include <algorithm>
#include <numeric>
#include "data_support.h"
#include "framework/numeric.h"

using namespace zvtest;

namespace {

KDataTable Crowd()
{
    KDataTable t;
    t.Add(Channel("f", kDataFloat, {3, 1, 2, 1}));
    t.Add(Channel("v", kDataVector3, {0, 5, 1, 1, 4, 0, 2, 3, 3, 3, 2, 2}));
    t.Add(Channel("i", kDataInteger, {10, 20, 30, 40}));
    t.Add(Channel("b", kDataBool, {0, 1, 0, 0}));
    return t;
}

}  // namespace

TEST(DataSort, EachChannelByItsOwnValues)
{
    KDataTable in = Crowd();
    Tool<KEffectData> tool("ZV_DataSort");
    auto out = Computed(tool, in);
    EXPECT_EQ(Floats(*out, "f"), (std::vector<float>{1, 1, 2, 3}));
    EXPECT_EQ(Floats(*out, "v"), Floats(in, "v"));  // already ascending in x
    EXPECT_EQ(Ints(*out, "i"), (std::vector<int32_t>{10, 20, 30, 40}));
    EXPECT_EQ(Ints(*out, "b"), (std::vector<int32_t>{1, 1, 1, 1}));  // a sorted Bool holds only true
    tool.Set("Direction 1", 1);
    tool.Set("Vector Sort 1", 2);  // by z, descending
    out = Computed(tool, in);
    EXPECT_EQ(Floats(*out, "f"), (std::vector<float>{3, 2, 1, 1}));
    EXPECT_EQ(Floats(*out, "v"), (std::vector<float>{2, 3, 3, 3, 2, 2, 0, 5, 1, 1, 4, 0}));
    EXPECT_EQ(Ints(*out, "i"), (std::vector<int32_t>{40, 30, 20, 10}));
    tool.Set("Direction 1", 0);
    tool.Set("Vector Sort 1", 3);
    tool.Field<KXYZ>("Point For Distance", kValueXYZ) = {3, 2, 2};
    tool.SetText("Channel Name (in/out)", "v");
    out = Computed(tool, in);
    EXPECT_EQ(Floats(*out, "v"), (std::vector<float>{3, 2, 2, 2, 3, 3, 1, 4, 0, 0, 5, 1}));
    EXPECT_EQ(Floats(*out, "f"), Floats(in, "f"));  // not named: cloned
}

TEST(DataSort, AllFollowTheKeys)
{
    KDataTable in = Crowd();
    in.Add(Channel("long", kDataFloat, {6, 5, 4, 3, 2, 1}));
    Tool<KEffectData> tool("ZV_DataSort");
    tool.Set("Type", 1);
    tool.SetText("Channel Name Key 1", "f");
    tool.SetText("Channel Name Key 2", "nothing");
    auto out = Computed(tool, in);  // equal keys keep their order: 1 before 3
    EXPECT_EQ(Ints(*out, "i"), (std::vector<int32_t>{20, 40, 30, 10}));
    // Elements past the records, the table's smallest count, keep their values.
    EXPECT_EQ(Floats(*out, "long"), (std::vector<float>{5, 3, 4, 6, 2, 1}));
    tool.SetText("Channel Name Key 2", "i");
    tool.Set("Direction 2", 1);  // the tie goes to the larger i
    out = Computed(tool, in);
    EXPECT_EQ(Floats(*out, "f"), (std::vector<float>{1, 1, 2, 3}));
    EXPECT_EQ(Ints(*out, "i"), (std::vector<int32_t>{40, 20, 30, 10}));
    EXPECT_EQ(Floats(*out, "v"), (std::vector<float>{3, 2, 2, 1, 4, 0, 2, 3, 3, 0, 5, 1}));
    // No key at all: the same channels, uncopied.
    tool.SetText("Channel Name Key 1", "none");
    tool.SetText("Channel Name Key 2", "none");
    out = Computed(tool, in);
    ASSERT_EQ(out->ChannelCount(), in.ChannelCount());
    for (size_t c = 0; c < in.ChannelCount(); ++c) EXPECT_EQ(out->Channel(c), in.Channel(c));
}

TEST(DataSort, ManyKeysAsAStableSortWould)
{
    // Negative, zero of both signs, repeats and wide magnitudes, by two keys.
    const int32_t n = 5000;
    KDataTable in;
    auto a = KDataChannel::Create("a", kDataFloat, n), b = KDataChannel::Create("b", kDataInteger, n);
    KRandomSeed(3);
    for (int32_t i = 0; i < n; ++i) {
        const int32_t r = KRandomIntRange(-40, 40);
        a->floats[size_t(i)] = r == 0 ? (i % 2 ? -0.0f : 0.0f) : float(r) * std::pow(10.0f, float(r % 7));
        b->ints[size_t(i)] = KRandomInt(3);
    }
    in.Add(std::move(a));
    in.Add(std::move(b));
    in.Add(KDataChannel::Create("index", kDataInteger, n));
    std::iota(in.Channel(2)->ints.begin(), in.Channel(2)->ints.end(), 0);
    Tool<KEffectData> tool("ZV_DataSort");
    tool.Set("Type", 1);
    tool.SetText("Channel Name Key 1", "b");
    tool.SetText("Channel Name Key 2", "a");
    tool.Set("Direction 2", 1);
    std::vector<int32_t> want(static_cast<size_t>(n));
    std::iota(want.begin(), want.end(), 0);
    const auto& fa = in.Channel(0)->floats;
    const auto& ib = in.Channel(1)->ints;
    std::stable_sort(want.begin(), want.end(), [&](int32_t x, int32_t y) {
        return ib[size_t(x)] != ib[size_t(y)] ? ib[size_t(x)] < ib[size_t(y)] : fa[size_t(x)] > fa[size_t(y)];
    });
    EXPECT_EQ(Ints(*Computed(tool, in), "index"), want);
}

TEST(DataSort, KeyNamesShowForFollowKey)
{
    // Key 3's name answers to key 2's code and so stays as it is.
    ExpectShown("ZV_DataSort",
                {"ChannelNameKey1", "ChannelNameKey2", "ChannelNameKey3", "Direction1", "Direction2", "VectorSort1",
                 "VectorSort3"},
                {{nullptr, 0, "0011010"}, {"Type", 1, "1111111"}, {"Type", 0, "0011010"}});
}
