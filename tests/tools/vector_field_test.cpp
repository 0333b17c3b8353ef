// Vector Field: constant, radial and mapped vectors, in pixels of the full width.
#include "support.h"

using namespace zvtest;

namespace {

std::pair<float, float> VectorAt(const KImage& img, int32_t x, int32_t y)
{
    const size_t i = size_t(y) * img.width + x;
    return {img.AuxPlane(host::ChanVectorX)[i], img.AuxPlane(host::ChanVectorY)[i]};
}

Img Field(Tool<KEffectImage>& t, const Img& source)
{
    return RunEffect(t.Image(), source.get(), Settings(source->IsFloat()), false, Img(source->CreateVectorLike()));
}

TEST(VectorField, ConstantAndRadialVectors)
{
    Img plate = Pattern(20, 10, false);
    Tool<KEffectImage> t("ZV_VectorField");
    t.Apply({{"Angle", 90}, {"Length", 0.1}});  // up, a tenth of the width: 2 pixels
    Img out = Field(t, plate);
    EXPECT_NEAR(VectorAt(*out, 3, 4).first, 0.0f, 1e-6f);
    EXPECT_NEAR(VectorAt(*out, 3, 4).second, 2.0f, 1e-6f);
    EXPECT_EQ(Differ(*out, *plate), "");  // the colour passes
    // Radial about the middle: pointing away from it, longer further out.
    t.Apply({{"Angle", 0}, {"Angle type", 1}, {"Length type", 1}, {"Length", 1.0}});
    t.SetPoint("Center", 0.5f, 0.25f);  // in width units: the middle of a 2:1 picture
    out = Field(t, plate);
    EXPECT_NEAR(VectorAt(*out, 15, 5).first, 5.0f, 1e-5f);
    EXPECT_NEAR(VectorAt(*out, 15, 5).second, 0.0f, 1e-5f);
    EXPECT_NEAR(VectorAt(*out, 10, 9).second, 4.0f, 1e-5f);
    EXPECT_NEAR(VectorAt(*out, 10, 9).first, 0.0f, 1e-5f);
}

// A bitmap angle by channel: black takes "Angle", white "Angle white".
TEST(VectorField, AMapChannelSetsTheAngle)
{
    Img plate = Made(2, 1, false, [](int32_t x, int32_t) { return x ? KPixel{65535, 0, 0, 65535} : KPixel{0, 0, 0, 65535}; });
    Tool<KEffectImage> t("ZV_VectorField");
    t.Apply({{"Angle type", 2}, {"Angle channel", 3}, {"Angle", 0}, {"Angle white", 90}, {"Length", 0.05}});
    Img out = Field(t, plate);
    EXPECT_NEAR(VectorAt(*out, 0, 0).first, 0.1f, 1e-6f);
    EXPECT_NEAR(VectorAt(*out, 1, 0).second, 0.1f, 1e-6f);
    EXPECT_NEAR(VectorAt(*out, 1, 0).first, 0.0f, 1e-6f);
}

TEST(VectorField, ControlsFollowTheTypes)
{
    ExpectShown("ZV_VectorField", {"Anglechannel", "Angle", "Anglewhite", "Center", "Lengthchannel", "Lengthwhite"},
                {{"Angletype", 2, "110000"}, {"Anglechannel", 3, "101000"}, {"Angletype", 1, "010100"},
                 {"Lengthtype", 2, "010110"}, {"Lengthchannel", 1, "010111"}});
    ToolFlow f("ZV_VectorField");
    f.Set("Angletype", 2);
    EXPECT_EQ(f.In("Angle")->label, "Angle black");
}

}  // namespace
