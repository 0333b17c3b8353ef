// Gradient: linear, radial and light positions, merged, added or subtracted,
// the controls each type shows, and auxiliary channels kept.
#include <cmath>
#include "support.h"

using namespace zvtest;

namespace {

// Over an 8 x 1 plate of one colour: pixel x sits at x / 8.
struct Gradient : Tool<KEffectPosition> {
    Gradient() : Tool("ZV_Gradient") {}
    void Set(int32_t type, KPoint2 start, KPoint2 end, float startT, float endT)
    {
        SetInt("Type", type);
        SetPoint("Start", start.x, start.y);
        SetPoint("End", end.x, end.y);
        SetFloat("Start Transparency", startT);
        SetFloat("End Transparency", endT);
    }
    using Tool::Set;
    float Red(int32_t x, float background = 0.25f)
    {
        return zvtest::At<KPixelF>(*Run(Solid(8, 1, KPixelF{background, 0, 0, 1}).get()), x, 0).r;
    }
    uint32_t RedInt(int32_t x) { return zvtest::At<KPixel>(*Run(Solid(8, 1, KPixel{16384, 0, 0, 65535}).get()), x, 0).r; }
};

TEST(Gradient, LinearRampMidpointOffsetSidesAndAZeroLength)
{
    Gradient t;
    t.Set(0, {0, 0}, {1, 0}, 0.0f, 0.0f);
    EXPECT_EQ(t.Red(2), 0.25f);  // Merge weighs the colour by the transparency: 0 keeps the image
    t.Set(0, {0, 0}, {1, 0}, 1.0f, 1.0f);
    EXPECT_EQ(t.Red(2), 0.75f);
    EXPECT_EQ(t.RedInt(2), 49151u);  // 0.75 x 65535, rounded
    const std::pair<const char*, float> rows[] = {{"Midpoint", 1.0f}, {"Midpoint", 0.0f}, {"Start offset", 0.5f}};
    const float want[] = {0.5625f, 0.9375f, 1.0f};  // k x k, k x (2 - k), 1.5 limited to 1
    for (int i = 0; i < 3; ++i) {
        t.SetFloat("Midpoint", 0.5f);
        t.SetFloat(rows[i].first, rows[i].second);
        EXPECT_EQ(t.Red(2), want[i]) << rows[i].first;
    }
    t.Set(0, {0.25f, 0}, {0.5f, 0}, 1.0f, 0.0f);
    t.SetFloat("Start offset", 0.0f);
    EXPECT_EQ(t.Red(0), 1.0f);   // before the start: start colour and transparency
    EXPECT_EQ(t.Red(6), 0.25f);  // past the end: end transparency 0 keeps the image
    t.SetBool("End relative to start position", true);  // the end lands at 0.75
    EXPECT_EQ(t.Red(4), 0.375f);  // half way: colour 0.5 at transparency 0.5
    t.SetBool("End relative to start position", false);
    t.Set(0, {0.5f, 0}, {0.5f, 0}, 0.0f, 0.0f);
    t.SetInt("Combine", 1);
    // On neither side: the position 1000000 / 1e-05 drives k far below 0.
    EXPECT_LT(t.Red(3), -1e10f);
    EXPECT_EQ(t.RedInt(3), 0u);
    std::swap(t.Field<KColor>("CERd"_id), t.Field<KColor>("CSRd"_id));
    EXPECT_EQ(t.RedInt(3), 65535u);
}

TEST(Gradient, RadialAndLightPositionsByDistanceAndAngle)
{
    Gradient t;
    t.Set(1, {0.5f, 0}, {1, 0}, 1.0f, 1.0f);
    EXPECT_EQ(t.Red(6), 0.5f);  // distance 0.25 of 0.5
    EXPECT_EQ(t.Red(4), 1.0f);
    t.Set(2, {0, 0}, {0.5f, 0}, 1.0f, 1.0f);  // the light half a width above pixel 4
    t.SetFloat("Light cone angle", 90.0f);
    EXPECT_NEAR(t.Red(0), 1.0f, 1e-6f);  // on the cone's axis
    EXPECT_NEAR(t.Red(4), 0.5f, 1e-6f);  // 45 degrees of 90
    t.SetFloat("Light fade with distance", 0.5f);  // fades out at distance 1
    EXPECT_NEAR(t.Red(4), 0.25f, 1e-6f);
    t.SetFloat("Light fade with distance", 0.0f);
    t.SetFloat("Light fade with angle", 1.0f);  // times Z / r
    EXPECT_NEAR(t.Red(0), std::sqrt(0.5f), 1e-6f);
    t.SetFloat("Light cone angle", 30.0f);
    EXPECT_EQ(t.Red(4), 0.0f);  // outside the cone: the end colour
    // The light controls belong to "Light", the signed slider to Add and Subtract.
    ExpectShown("ZV_Gradient", {"LightZdistance", "Lightfadewithangle", "Negativesignedfull"},
                {{"Type", 2, "110"}, {"Combine", 1, "111"}, {"Type", 1, "001"}, {"Combine", 0, "000"}});
}

TEST(Gradient, AddAndSubtractWithTheSignedScaleKeepingAuxiliaryChannels)
{
    Gradient t;
    t.Set(0, {0, 0}, {1, 0}, 0.0f, 0.0f);  // colour 0.75 at pixel 2
    float& scale = t.Field<float>("sCom"_id);
    t.SetInt("Combine", 1);
    EXPECT_EQ(t.Red(2), 1.0f);
    scale = 0.5f;  // scale 2 about a bias of a half
    EXPECT_EQ(t.Red(2), 0.75f);
    EXPECT_EQ(t.RedInt(2), 49152u);  // 16384 + 2 x 16383.75, rounded
    scale = 0.0f;  // bias 1, scale 1
    EXPECT_EQ(t.Red(2), 0.0f);
    t.SetInt("Combine", 2);
    scale = 1.0f;
    EXPECT_EQ(t.Red(2), -0.5f);  // floats are not clipped
    EXPECT_EQ(t.RedInt(2), 0u);
    t.Set(0, {0, 0}, {1, 0}, 0.5f, 0.5f);
    EXPECT_EQ(t.Red(2, 1.0f), 0.625f);
    Img in(KImage::Wrap(Blank(7, 3, true, {host::ChanZ}).release(), true));
    in->AuxPlane(host::ChanZ)[19] = 3.5f;
    EXPECT_EQ(t.Run(in.get())->AuxPlane(host::ChanZ)[19], 3.5f);
}

}  // namespace
