// The data sources: patterns, pictures, packing and files.
#include "data/effect_data.h"
#include "data/table_files.h"
#include "host/errors.h"
#include "support.h"
#include "tools/image/packing.h"

using namespace zvtest;

namespace {

std::unique_ptr<KDataTable> Computed(Tool<KEffectData>& tool, KImage* image = nullptr)
{
    if (image) tool.Field<KImage*>("Image", kValueImage) = image;
    auto out = tool.effect->Compute();
    if (image) tool.Field<KImage*>("Image", kValueImage) = nullptr;
    return out;
}

const KDataChannel& Named(const KDataTable& t, const std::string& name)
{
    KDataChannel* c = t.FindAny(name, kDataAny);
    if (!c) throw std::runtime_error("no channel " + name);
    return *c;
}

// Left half one colour, right half another.
Img Halves(int32_t w, int32_t h, KPixelF left, KPixelF right)
{
    return Made(w, h, true, [&](int32_t x, int32_t) { return x < w / 2 ? left : right; });
}

}  // namespace

TEST(DataPattern, GridNestsXOutermostAndFlattensASingleLayer)
{
    Tool<KEffectData> tool("ZV_DataPatternCreate");
    tool.Set("Grid Number X", 2);
    tool.Set("Grid Number Y", 3);
    tool.Set("Grid Size X", 2.0);
    tool.Set("Grid Size Z", 5.0);  // one layer: z is 0 whatever the size
    tool.SetText("Channel Name Rotation (3f out)", "#off");
    auto t = Computed(tool);
    EXPECT_EQ(t->Dump(),
              "position [6]     float32 [3]      Vector3\n"
              "scale [6]     float32 [3]      Vector3\n"
              "index [6]     int32 [1]      Integer\n"
              "indexx [6]     int32 [1]      Integer\n"
              "indexy [6]     int32 [1]      Integer\n"
              "indexz [6]     int32 [1]      Integer\n");
    EXPECT_EQ(Named(*t, "position").floats, (std::vector<float>{-1, -0.5f, 0, -1, 0, 0, -1, 0.5f, 0,  //
                                                                 1, -0.5f, 0, 1, 0, 0, 1, 0.5f, 0}));
    EXPECT_EQ(Named(*t, "indexx").ints, (std::vector<int32_t>{0, 0, 0, 1, 1, 1}));
    EXPECT_EQ(Named(*t, "indexy").ints, (std::vector<int32_t>{0, 1, 2, 0, 1, 2}));
    EXPECT_EQ(Named(*t, "scale").floats[4], 1.0f);
}

TEST(DataPattern, RingsCountByNumberDistanceAndAngle)
{
    Tool<KEffectData> tool("ZV_DataPatternCreate");
    tool.Set("Pattern Type", 1);
    tool.Set("Ring Count", 2);
    tool.Set("Ring Radius Minimum", 0.2);
    tool.Set("Ring Radius Maximum", 0.4);
    tool.Set("Ring Number Minimum", 4);
    tool.Set("Ring Number Maximum", 6);
    tool.Set("Ring Segment Angle Minimum", 360.0);
    tool.Set("Ring Segment Angle Maximum", 360.0);
    auto t = Computed(tool);
    ASSERT_EQ(Named(*t, "index").count, 10);
    EXPECT_EQ(Named(*t, "indexx").ints, (std::vector<int32_t>{0, 0, 0, 0, 1, 1, 1, 1, 1, 1}));
    // Angles arrive negated: the second item of the outer ring is a sixth turn clockwise.
    const float* p = &Named(*t, "position").floats[5 * 3];
    EXPECT_NEAR(p[0], 0.4 * std::cos(M_PI / 3), 1e-6);
    EXPECT_NEAR(p[1], -0.4 * std::sin(M_PI / 3), 1e-6);
    EXPECT_NEAR(Named(*t, "rotation").floats[5 * 3 + 2], -60.0, 1e-4);

    // By distance: 2 pi R / D items; a zero distance makes none rather than dividing by it.
    tool.Set("Ring Count Type", 1);
    tool.Set("Ring Count", 1);
    tool.Set("Ring Distance Minimum", 0.1);
    EXPECT_EQ(Named(*Computed(tool), "index").count, int32_t(0.2f * 6.2831855f / 0.1f));
    tool.Set("Ring Distance Minimum", 0.0);
    EXPECT_EQ(Named(*Computed(tool), "index").count, 0);
    // By angle: 360 / 45 items, each a step of 45 degrees.
    tool.Set("Ring Count Type", 2);
    tool.Set("Ring Angle Minimum", 45.0);
    EXPECT_EQ(Named(*Computed(tool), "index").count, 8);
}

TEST(DataFromImage, SamplesPixelCentresIntoPositionsAndValues)
{
    Img image = Halves(4, 2, {1.0f, 0.0f, 0.0f, 1.0f}, {0.0f, 1.0f, 0.0f, 0.5f});
    Tool<KEffectData> tool("ZV_DataFromImageCreate");
    tool.Set("Number X", 2);
    tool.Set("Number Y", 1);
    tool.Set("Channel Value Enable 0", 1);
    tool.Set("Channel Value Enable 4", 1);
    tool.Set("Numbers Minimum 4", 0.5);
    tool.Set("Channel Color Enable", 1);  // made, but never handed on
    auto t = Computed(tool, image.get());
    EXPECT_EQ(t->Dump(),
              "position [2]     float32 [3]      Vector3\n"
              "red [2]     float32 [1]      Float\n"
              "luminance [2]     float32 [1]      Float\n");
    // Correct aspect: y is divided by the picture's aspect of 2.
    EXPECT_EQ(Named(*t, "position").floats, (std::vector<float>{-0.25f, 0, 0, 0.25f, 0, 0}));
    EXPECT_EQ(Named(*t, "red").floats, (std::vector<float>{1.0f, 0.0f}));
    EXPECT_EQ(Named(*t, "luminance").floats, (std::vector<float>{0.5f * 0.299f + 0.5f, 0.5f * 0.587f + 0.5f}));
    tool.Set("Position Type Export", 2);
    EXPECT_EQ(Named(*Computed(tool, image.get()), "position").floats, (std::vector<float>{1, 1, 0, 3, 1, 0}));
    EXPECT_EQ(Computed(tool)->ChannelCount(), 0u);  // no image: the input's clone
}

TEST(Packing, HalvesUntilUniformLargestFirstWithinTheBudget)
{
    const KPixelF red{1, 0, 0, 1}, blue{0, 0, 1, 1};
    Img image = Halves(8, 4, red, blue);
    KPackSettings s;
    s.tolerance = 0.0f;
    s.minimumSize = 1;
    std::vector<KPackItem> items = KPack(*image, s, 1.0f);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].left, 0);
    EXPECT_EQ(items[0].right, 4);
    EXPECT_EQ(items[0].color.r, 1.0f);
    EXPECT_EQ(items[1].color.b, 1.0f);
    EXPECT_EQ(items[0].x, 0.25f);
    EXPECT_EQ(items[0].y, 0.5f);
    EXPECT_EQ(items[0].w, 0.5f);
    EXPECT_EQ(items[0].h, 0.5f);  // 4 rows of an 8-wide picture

    // Too small to halve, or no budget to: one item of the mean colour.
    s.minimumSize = 5;
    items = KPack(*image, s, 1.0f);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].color.r, 0.5f);
    s.minimumSize = 1;
    s.maximumItems = 1;
    EXPECT_EQ(KPack(*image, s, 1.0f).size(), 1u);

    // A uniform picture is still cut to the maximum size, and transparent items are left out.
    s.maximumItems = 100;
    s.maximumSize = 2;
    Img clear = Halves(8, 4, {0, 0, 0, 0}, blue);
    std::vector<int32_t> cover;
    items = KPack(*clear, s, 1.0f, &cover);
    EXPECT_EQ(items.size(), 4u);  // the blue half in 2 x 2 pieces
    EXPECT_EQ(cover[0], -1);
    EXPECT_EQ(cover[7], 1);           // bottom to top, then left to right
    EXPECT_EQ(cover[3 * 8 + 4], 2);
}

TEST(Packing, PackDrawsMeanColoursApartByTheGap)
{
    Img image = Halves(8, 4, {1, 0, 0, 1}, {0, 0, 1, 1});
    Tool<KEffectImage> tool("ZV_Pack");
    tool.Set("Pack Tolerance", 0.0);
    tool.Set("Pack Minimum Size", 1);
    tool.Set("Gap", 0.0);
    EXPECT_EQ(Differ(*tool.Run(image.get()), *image), "");
    tool.Set("Gap", 2.0);  // one pixel off every side
    Img gapped = tool.Run(image.get());
    EXPECT_EQ(At<KPixelF>(*gapped, 0, 0).a, 0.0f);
    EXPECT_EQ(At<KPixelF>(*gapped, 1, 1).r, 1.0f);
    EXPECT_EQ(At<KPixelF>(*gapped, 3, 2).a, 0.0f);

    Tool<KEffectData> data("ZV_DataFromImagePackCreate");
    data.Set("Pack Tolerance", 0.0);
    data.Set("Pack Minimum Size", 1);
    auto t = Computed(data, image.get());
    EXPECT_EQ(Named(*t, "position").floats, (std::vector<float>{-0.25f, 0, 0, 0.25f, 0, 0}));
    EXPECT_EQ(Named(*t, "scale").floats, (std::vector<float>{0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f}));
    EXPECT_EQ(Named(*t, "color").floats, (std::vector<float>{1, 0, 0, 1, 0, 0, 1, 1}));
}

TEST(DataLoader, FirstCellsNameAndTheFirstRowOrColumnCarriesNoNumbers)
{
    TempDir dir;
    Tool<KEffectData> tool("ZV_DataLoaderCreate");
    EXPECT_EQ(Computed(tool)->ChannelCount(), 0u);  // no file
    tool.SetText("Filename", dir.Write("rows.txt", "x,1,2\ny,3\r\nz,2.5e1abc,,\n"));
    auto t = Computed(tool);
    EXPECT_EQ(t->Dump(), "x [2]     \ny [1]     float32 [1]      Float\nz [3]     float32 [1]      Float\n");
    EXPECT_EQ(Named(*t, "y").floats, (std::vector<float>{3.0f}));  // the carriage return ends the number
    EXPECT_EQ(Named(*t, "z").floats, (std::vector<float>{25.0f, 0.0f, 0.0f}));

    tool.Set("Channels Direction", 1);
    tool.SetText("Filename", dir.Write("columns.cvs", "a,b\n1,2,9\n3\n"));
    t = Computed(tool);
    EXPECT_EQ(t->Dump(), "a [2]     \nb [2]     float32 [1]      Float\nValue [2]     float32 [1]      Float\n");
    EXPECT_EQ(Named(*t, "b").floats, (std::vector<float>{2.0f, 0.0f}));  // a short row reads 0
    EXPECT_EQ(Named(*t, "Value").floats, (std::vector<float>{9.0f, 0.0f}));
}

TEST(TableFiles, CsvAndJsonRoundTripExactly)
{
    KDataTable t;
    t.Add(KDataChannel::Create("position", kDataVector3, 3));
    t.Channel(0)->floats = {0.1f, -0.0f, 1e-30f, 16777216.0f, 3.4028235e38f, 1.0f / 3.0f, 2, 1.5f, -7};
    t.Add(KDataChannel::Create("color", kDataColor, 2));
    t.Channel(1)->floats = {0.2f, 0.4f, 0.6f, 1, 0, 0, 0, 0};
    t.Add(KDataChannel::Create("index", kDataInteger, 3));
    t.Channel(2)->ints = {-4, 0, 2147483647};
    t.Add(KDataChannel::Create("weight", kDataFloat, 3));
    t.Channel(3)->floats = {1, 2, 3};  // whole floats stay floats
    const std::string csv = KTableToCsv(t);
    EXPECT_EQ(csv.substr(0, csv.find('\n')),
              "item,position.x,position.y,position.z,color.r,color.g,color.b,color.a,index,weight");
    EXPECT_EQ(csv.substr(csv.rfind('\n', csv.size() - 2) + 1), "2,2.0,1.5,-7.0,,,,,2147483647,3.0\n");
    auto back = KTableFromCsv(csv, "t.csv");
    EXPECT_EQ(back->Dump(), t.Dump());
    for (size_t i = 0; i < t.ChannelCount(); ++i) {
        EXPECT_EQ(std::memcmp(back->Channel(i)->floats.data(), t.Channel(i)->floats.data(),
                              t.Channel(i)->floats.size() * sizeof(float)), 0) << t.Channel(i)->name;
        EXPECT_EQ(back->Channel(i)->ints, t.Channel(i)->ints);
    }
    // The loader reads the same file to one float channel per column, with the same numbers.
    TempDir dir;
    Tool<KEffectData> loader("ZV_DataLoaderCreate");
    loader.Set("Channels Direction", 1);
    loader.SetText("Filename", dir.Write("t.csv", csv));
    auto loaded = Computed(loader);
    EXPECT_EQ(Named(*loaded, "position.z").floats, (std::vector<float>{1e-30f, 1.0f / 3.0f, -7}));
    EXPECT_EQ(Named(*loaded, "index").floats, (std::vector<float>{-4, 0, 2147483648.0f}));

    t.Add(KDataChannel::Create("on", kDataBool, 2));
    t.Channel(4)->ints = {1, 0};
    t.Add(KDataChannel::Create("note", kDataText, 1));
    auto json = KTableFromJson(KTableToJson(t), "t.json");
    EXPECT_EQ(json->Dump(), t.Dump());
    EXPECT_EQ(KTableToJson(*json), KTableToJson(t));
}

TEST(TableFiles, BadFilesNameFileLineAndColumn)
{
    const std::vector<std::pair<std::string, std::string>> csv = {
        {"item,a,b\n0,1,2\n1,3\n", "f.csv:3:3: a row of 2 cells under a header of 3"},
        {"item,a\n0,1\n1,x1\n", "f.csv:3:2: 'x1' is not a number"},
        {"item,a\n0,\n1,4\n", "f.csv:3:2: a value below an empty cell of column a"},
        {"item,,b\n", "f.csv:1:2: a column without a name"},
        {"", "f.csv: empty, not a table"},
        {std::string("\x89PNG\0\0", 6), "f.csv: not a text table (it holds binary data)"},
    };
    for (const auto& [text, message] : csv) {
        try {
            KTableFromCsv(text, "f.csv");
            ADD_FAILURE() << "accepted: " << text;
        } catch (const host::BadInput& e) {
            EXPECT_EQ(e.what(), message);
        }
    }
    const std::vector<std::pair<std::string, std::string>> json = {
        {"{\"channels\": [\n {\"name\": \"a\", \"type\": \"Vector4\", \"values\": []}]}",
         "f.json:2:24: unknown channel type \"Vector4\" (Bool, Integer, Float, Vector2, Vector3, Color, Text, Matrix)"},
        {"{\"channels\": [\n {\"name\": \"a\", \"type\": \"Vector2\", \"values\": [1, 2, 3]}]}",
         "f.json:2:35: channel a has 3 values, not a whole number of 2-component items"},
        {"{\"channels\": [{\"name\": \"i\", \"type\": \"Integer\", \"values\": [1.5]}]}",
         "f.json:1:59: channel i: value 0 (1.5) is not a whole number"},
        {"{\"channels\": [}", "f.json:1:15: syntax error while parsing value - unexpected '}'; expected '[', '{', or a literal"},
        {"[1, 2]", "f.json:1:1: not a table: expected an object with \"channels\", a list"},
    };
    for (const auto& [text, message] : json) {
        try {
            KTableFromJson(text, "f.json");
            ADD_FAILURE() << "accepted: " << text;
        } catch (const host::BadInput& e) {
            EXPECT_EQ(e.what(), message);
        }
    }
}
