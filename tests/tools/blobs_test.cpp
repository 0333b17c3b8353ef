#include "framework/numeric.h"
#include "position_support.h"

using namespace zvposition;

namespace {

// 16 x 16 pixels, pixel x at x / 16, general blobiness 0.125.
struct Blobs : Tool {
    Blobs() : Tool("ZV_Blobs") { Field<float>("Blob"_id) = 0.125f; }
    void Blob(int32_t i, KPoint2 at, int32_t source, float radius, float blobiness = 1.0f)
    {
        Field<KPoint2>("BlP0"_id + i) = at;
        Field<int32_t>("BlS0"_id + i) = source;
        Field<float>("BlR0"_id + i) = radius;
        Field<float>("BlB0"_id + i) = blobiness;
    }
    float Red(int32_t x)
    {
        std::unique_ptr<KImage> img(Make(16, 16, true));
        return At<KPixelF>(*img, x, 0).r;
    }
    KPixel Int(int32_t x)
    {
        std::unique_ptr<KImage> img(Make(16, 16, false));
        return At<KPixel>(*img, x, 0);
    }
};

TEST(BlobsDeclarations, GroupsAfterCountShownByCount)
{
    Flow f("ZV_Blobs");
    EXPECT_EQ(f.Input("Image"), nullptr);
    EXPECT_EQ(*f.Input("RandomSeed")->attrs.softMax, 32768.0);
    EXPECT_EQ(f.Input("LevelsHigh")->attrs.member, 1);
    EXPECT_EQ(*f.Input("GeneralBlobiness")->attrs.softMax, 0.01f);
    EXPECT_EQ(f.Input("Count")->page, "Blobs");
    EXPECT_EQ(f.Input("RadiusSource64")->attrs.items,
              (std::vector<std::string>{"General", "Individual", "Random"}));
    EXPECT_EQ(*f.Input("Blobiness64")->attrs.softMax, 2.0);
    Blobs t;
    EXPECT_EQ(t.effect->inputList.Find("BlP0"_id + 63)->name, "Position 64");
    EXPECT_TRUE(f.Input("Radius3")->attrs.visible);
    EXPECT_FALSE(f.Input("Position4")->attrs.visible);
    f.Set("Count", 5);
    EXPECT_TRUE(f.Input("Blobiness5")->attrs.visible);
    EXPECT_FALSE(f.Input("RadiusSource6")->attrs.visible);
    f.Set("Count", 1);
    EXPECT_FALSE(f.Input("Radius2")->attrs.visible);
}

TEST(BlobsType1, DistancesBeyondTheRadiiMultiply)
{
    Blobs t;
    t.Field<int32_t>("BlCo"_id) = 1;
    t.Blob(0, {0, 0}, 1, 0.0f);  // radius 0: e is the distance
    EXPECT_EQ(t.Red(0), 1.0f);
    EXPECT_EQ(t.Red(1), 0.5f);  // 1 - 0.0625 / 0.125
    EXPECT_EQ(t.Red(2), 0.0f);
    EXPECT_EQ(t.Int(1).a, 32768u);
    t.Field<KColor>("ColR"_id) = {1.0f, 0.5f, 0.0f, 1.0f};
    EXPECT_EQ(t.Int(1).g, 16384u);  // 32767 scaled by 32768, rounded
    t.Field<int32_t>("BlCo"_id) = 2;
    t.Blob(1, {0.5f, 0}, 1, 0.0f);
    EXPECT_EQ(t.Red(4), 0.5f);  // 0.25 x 0.25
    t.Blob(1, {0.5f, 0}, 1, 0.2f);
    EXPECT_EQ(t.Red(7), 1.0f);  // inside the second blob
    t.Field<int32_t>("BlCo"_id) = 1;
    t.Blob(0, {0, 0}, 1, 0.0f, 2.0f);
    EXPECT_EQ(t.Red(4), 0.5f);  // 0.25 squared
    t.Field<float>("Gamm"_id) = 2.0f;
    EXPECT_EQ(t.Red(4), 0.25f);
    EXPECT_EQ(t.Red(6), 0.0f);  // below 0 before the power
    t.Field<float>("Gamm"_id) = 1.0f;
    t.Field<KRange2>("LevL"_id) = {0.25f, 0.75f};
    EXPECT_EQ(t.Red(4), 0.5f);
    EXPECT_EQ(t.Red(0), 1.0f);
}

TEST(BlobsType1, RadiusSourcesAndTheSeed)
{
    Blobs t;
    t.Field<int32_t>("BlCo"_id) = 2;
    t.Field<float>("Radi"_id) = 0.125f;
    t.Field<float>("Blob"_id) = 0.5f;
    t.Blob(0, {0, 0}, 0, 0.5f);     // general: 0.125, not its own 0.5
    t.Blob(1, {0.5f, 0}, 2, 0.0f);  // random: the second draw
    EXPECT_EQ(t.Red(2), 1.0f);
    EXPECT_LT(t.Red(3), 1.0f);
    t.Field<int32_t>("BlS0"_id) = 1;
    EXPECT_EQ(t.Red(3), 1.0f);
    t.Field<int32_t>("BlS0"_id) = 0;
    t.Field<int32_t>("Seed"_id) = 7;
    KRandomSeed(7);
    KRandom(1.0f);
    const float radius = 0.1f + KRandom(1.0f) * (0.3f - 0.1f);
    EXPECT_FLOAT_EQ(t.Red(15), 1.0f - 0.8125f * (0.4375f - radius) / 0.5f);
    t.Field<float>("Blob"_id) = 0.0f;  // no blobiness: only the insides remain
    EXPECT_EQ(t.Red(15), 0.0f);
    EXPECT_EQ(t.Red(1), 1.0f);
}

TEST(BlobsType2, FieldsAddUpToTheirSurface)
{
    Blobs t;
    t.Field<int32_t>("BLST"_id) = 1;
    t.Field<float>("Blob"_id) = 0.004f;
    t.Field<int32_t>("BlCo"_id) = 1;
    t.Blob(0, {0, 0}, 1, 0.125f);
    EXPECT_EQ(t.Red(2), 1.0f);                      // on the radius: a field of 1
    EXPECT_NEAR(t.Red(3), 4.0f / 9.0f, 1e-6f);      // field (2/3)^2, fading over 0.004
    t.Field<int32_t>("BlCo"_id) = 2;
    t.Blob(1, {0.375f, 0}, 1, 0.125f);
    EXPECT_NEAR(t.Red(3), 8.0f / 9.0f, 1e-6f);      // midway two fields of 4/9 add
}

TEST(BlobsSource, FlowAndThreads)
{
    Flow f("ZV_Blobs");
    f.Set("Width", 32);
    f.Set("Height", 16);
    auto img = f.Render();
    ASSERT_NE(img, nullptr);
    EXPECT_EQ(img->width, 32);
    // The first blob sits at (0.65, 0.5): pixel (21, 8) of a 2:1 picture.
    EXPECT_EQ(At<KPixel>(*img, 21, 8).a, 65535u);
    EXPECT_EQ(At<KPixel>(*img, 0, 0).a, 0u);

    Blobs t;
    t.Field<int32_t>("BlCo"_id) = 9;
    t.Field<int32_t>("Seed"_id) = 3;
    t.Field<float>("Blob"_id) = 0.002f;
    for (int32_t i = 0; i < 9; ++i) t.Field<int32_t>("BlS0"_id + i) = i % 3;
    ExpectThreadsAgree([&](bool isFloat, bool threaded) { return t.Make(47, 29, isFloat, threaded, 2); });
}

}  // namespace
