// Gradient: linear, radial and light positions, merged, added or subtracted,
// the controls each type shows, and auxiliary channels kept.
#include "support.h"

using namespace zvtest;

namespace {

const char* kSigned = "Negative                   signed                   full";

// Over an 8 x 1 plate of one colour: pixel x sits at x / 8. After each step's
// settings, the red of pixel x over 0.25 in floats within `tol` (unless NaN)
// and, where given, over 16384 in integers.
struct Step {
    std::vector<Setting> set;
    int32_t x;
    float red;
    int64_t code = -1;
    float tol = 0.0f;
};
void ExpectSteps(Tool<KEffectPosition>& t, std::initializer_list<Step> steps)
{
    int n = 0;
    for (const Step& s : steps) {
        t.Apply(s.set);
        SCOPED_TRACE("step " + std::to_string(n++));
        const float red = At<KPixelF>(*t.Run(Solid(8, 1, KPixelF{0.25f, 0, 0, 1}).get()), s.x, 0).r;
        if (!std::isnan(s.red)) {
            EXPECT_NEAR(red, s.red, s.tol);
        }
        if (s.code >= 0) {
            EXPECT_EQ(At<KPixel>(*t.Run(Solid(8, 1, KPixel{16384, 0, 0, 65535}).get()), s.x, 0).r, s.code);
        }
    }
}

TEST(Gradient, LinearRampMidpointOffsetSidesAndAZeroLength)
{
    Tool<KEffectPosition> t("ZV_Gradient");
    ExpectSteps(t, {
        // Merge weighs the colour by the transparency: 0 keeps the image.
        {{{"Type", 0}, {"Start", 0, 0}, {"End", 1, 0}, {"Start Transparency", 0}, {"End Transparency", 0}}, 2, 0.25f},
        {{{"Start Transparency", 1}, {"End Transparency", 1}}, 2, 0.75f, 49151},  // 0.75 x 65535, rounded
        {{{"Midpoint", 1}}, 2, 0.5625f},                      // k x k
        {{{"Midpoint", 0}}, 2, 0.9375f},                      // k x (2 - k)
        {{{"Midpoint", 0.5}, {"Start offset", 0.5}}, 2, 1.0f},  // 1.5 limited to 1
        // Before the start: start colour and transparency; past the end, end transparency 0 keeps the image.
        {{{"Start offset", 0}, {"Start", 0.25, 0}, {"End", 0.5, 0}, {"End Transparency", 0}}, 0, 1.0f},
        {{}, 6, 0.25f},
        {{{"End relative to start position", 1}}, 4, 0.375f},  // the end at 0.75; half way, 0.5 at 0.5
        // On neither side: the position 1000000 / 1e-05 drives k far below 0.
        {{{"End relative to start position", 0}, {"Start", 0.5, 0}, {"Start Transparency", 0}, {"Combine", 1}}, 3, NAN, 0},
    });
    EXPECT_LT(At<KPixelF>(*t.Run(Solid(8, 1, KPixelF{0.25f, 0, 0, 1}).get()), 3, 0).r, -1e10f);
    std::swap(t.Field<KColor>("CERd"_id), t.Field<KColor>("CSRd"_id));
    ExpectSteps(t, {{{}, 3, NAN, 65535}});
}

TEST(Gradient, RadialAndLightPositionsByDistanceAndAngle)
{
    Tool<KEffectPosition> t("ZV_Gradient");
    ExpectSteps(t, {
        // Distance 0.25 of 0.5, and the start.
        {{{"Type", 1}, {"Start", 0.5, 0}, {"End", 1, 0}, {"Start Transparency", 1}, {"End Transparency", 1}}, 6, 0.5f},
        {{}, 4, 1.0f},
        // The light half a width above pixel 4: on the cone's axis, then 45 degrees of 90.
        {{{"Type", 2}, {"Start", 0, 0}, {"End", 0.5, 0}, {"Light cone angle", 90}}, 0, 1.0f, -1, 1e-6f},
        {{}, 4, 0.5f, -1, 1e-6f},
        {{{"Light fade with distance", 0.5}}, 4, 0.25f, -1, 1e-6f},  // fades out at distance 1
        {{{"Light fade with distance", 0}, {"Light fade with angle", 1}}, 0, std::sqrt(0.5f), -1, 1e-6f},  // times Z / r
        {{{"Light cone angle", 30}}, 4, 0.0f},  // outside the cone: the end colour
    });
    // The light controls belong to "Light", the signed slider to Add and Subtract.
    ExpectShown("ZV_Gradient", {"LightZdistance", "Lightfadewithangle", "Negativesignedfull"},
                {{"Type", 2, "110"}, {"Combine", 1, "111"}, {"Type", 1, "001"}, {"Combine", 0, "000"}});
}

TEST(Gradient, AddAndSubtractWithTheSignedScaleKeepingAuxiliaryChannels)
{
    Tool<KEffectPosition> t("ZV_Gradient");
    ExpectSteps(t, {
        // Colour 0.75 at pixel 2, added.
        {{{"Type", 0}, {"Start", 0, 0}, {"End", 1, 0}, {"Start Transparency", 0}, {"End Transparency", 0}, {"Combine", 1}},
         2, 1.0f},
        {{{kSigned, 0.5}}, 2, 0.75f, 49152},  // scale 2 about a bias of a half: 16384 + 2 x 16383.75, rounded
        {{{kSigned, 0}}, 2, 0.0f},            // bias 1, scale 1
        {{{"Combine", 2}, {kSigned, 1}}, 2, -0.5f, 0},  // floats are not clipped
    });
    t.Apply({{"Start Transparency", 0.5}, {"End Transparency", 0.5}});
    EXPECT_EQ(At<KPixelF>(*t.Run(Solid(8, 1, KPixelF{1.0f, 0, 0, 1}).get()), 2, 0).r, 0.625f);
    Img in(KImage::Wrap(Blank(7, 3, true, {host::ChanZ}).release(), true));
    in->AuxPlane(host::ChanZ)[19] = 3.5f;
    EXPECT_EQ(t.Run(in.get())->AuxPlane(host::ChanZ)[19], 3.5f);
}

}  // namespace
