// Blobs: a source of blobs whose distances multiply (type 1) or whose fields
// add up (type 2), radii from the general value, their own or a seeded draw,
// levels and gamma, and the groups the count shows.
#include "framework/numeric.h"
#include "support.h"

using namespace zvtest;

namespace {

// 16 x 16 pixels, pixel x at x / 16, general blobiness 0.125.
struct Blobs : Tool<KEffectPosition> {
    Blobs() : Tool("ZV_Blobs") { SetFloat("General Blobiness", 0.125f); }
    void Blob(int32_t i, KPoint2 at, int32_t source, float radius, float blobiness = 1.0f)
    {
        Field<KPoint2>("BlP0"_id + i) = at;
        Field<int32_t>("BlS0"_id + i) = source;
        Field<float>("BlR0"_id + i) = radius;
        Field<float>("BlB0"_id + i) = blobiness;
    }
    float Red(int32_t x) { return zvtest::At<KPixelF>(*Make(16, 16, true), x, 0).r; }
};

TEST(Blobs, Type1DistancesBeyondTheRadiiMultiply)
{
    Blobs t;
    t.SetInt("Count", 1);
    t.Blob(0, {0, 0}, 1, 0.0f);  // radius 0: e is the distance
    EXPECT_EQ(t.Red(1), 0.5f);   // 1 - 0.0625 / 0.125
    EXPECT_EQ(t.Red(2), 0.0f);
    t.SetColor("Color", {1.0f, 0.5f, 0.0f, 1.0f});
    EXPECT_EQ(Channels(At<KPixel>(*t.Make(16, 16, false), 1, 0)), Channels(KPixel{32768, 16384, 0, 32768}));  // rounded
    t.SetInt("Count", 2);
    t.Blob(1, {0.5f, 0}, 1, 0.0f);
    EXPECT_EQ(t.Red(4), 0.5f);  // 0.25 x 0.25
    t.Blob(1, {0.5f, 0}, 1, 0.2f);
    EXPECT_EQ(t.Red(7), 1.0f);  // inside the second blob
    t.SetInt("Count", 1);
    t.Blob(0, {0, 0}, 1, 0.0f, 2.0f);
    EXPECT_EQ(t.Red(4), 0.5f);  // 0.25 squared
    t.SetFloat("Gamma", 2.0f);
    EXPECT_EQ(t.Red(4), 0.25f);
    EXPECT_EQ(t.Red(6), 0.0f);  // below 0 before the power
    t.SetFloat("Gamma", 1.0f);
    t.Field<KRange2>("LevL"_id) = {0.25f, 0.75f};
    EXPECT_EQ(t.Red(4), 0.5f);
}

TEST(Blobs, RadiusSourcesTheSeedAndType2Fields)
{
    Blobs t;
    t.Apply({{"Count", 2}, {"General Radius", 0.125}, {"General Blobiness", 0.5}});
    t.Blob(0, {0, 0}, 0, 0.5f);     // general: 0.125, not its own 0.5
    t.Blob(1, {0.5f, 0}, 2, 0.0f);  // random: the second draw
    EXPECT_EQ(t.Red(2), 1.0f);
    EXPECT_LT(t.Red(3), 1.0f);
    t.Field<int32_t>("BlS0"_id) = 1;
    EXPECT_EQ(t.Red(3), 1.0f);
    t.Field<int32_t>("BlS0"_id) = 0;
    t.SetInt("Random Seed", 7);
    KRandomSeed(7);
    KRandom(1.0f);
    const float radius = 0.1f + KRandom(1.0f) * (0.3f - 0.1f);
    EXPECT_FLOAT_EQ(t.Red(15), 1.0f - 0.8125f * (0.4375f - radius) / 0.5f);
    t.SetFloat("General Blobiness", 0.0f);  // no blobiness: only the insides remain
    EXPECT_EQ(t.Red(15), 0.0f);
    // Type 2: on the radius a field of 1, beyond it (2/3)^2 fading over 0.004; fields add.
    Blobs f;
    f.Apply({{"Type", 1}, {"General Blobiness", 0.004}, {"Count", 1}});
    f.Blob(0, {0, 0}, 1, 0.125f);
    EXPECT_EQ(f.Red(2), 1.0f);
    EXPECT_NEAR(f.Red(3), 4.0f / 9.0f, 1e-6f);
    f.SetInt("Count", 2);
    f.Blob(1, {0.375f, 0}, 1, 0.125f);
    EXPECT_NEAR(f.Red(3), 8.0f / 9.0f, 1e-6f);
    ExpectShown("ZV_Blobs", {"Position1", "Radius2", "Radius3", "Position4", "Blobiness5", "RadiusSource6"},
                {{nullptr, 0, "111000"}, {"Count", 5, "111110"}, {"Count", 1, "100000"}});
}

}  // namespace
