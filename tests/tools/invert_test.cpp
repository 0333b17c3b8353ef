#include "colour_support.h"

using namespace zvcolour;

namespace {

TEST(InvertDeclarations, OneTypeControl)
{
    Tool t("ZV_Invert");
    const host::Input& type = t.In("Type");
    EXPECT_EQ(type.page, "Invert");
    EXPECT_EQ(*type.attrs.defaultNumber, 0.0);
    EXPECT_EQ(type.attrs.items, (std::vector<std::string>{"Color", "Luminance", "Hue"}));
    EXPECT_EQ(t.effect->inputList.Find("InTy"_id)->controlKind, kControlMultiButton);
}

TEST(InvertInteger, TypesClipAndTruncateTheThirds)
{
    Tool t("ZV_Invert");
    const std::vector<KPixel> in = {{1000, 40000, 65535, 12345}, {10, 20, 32, 0}};
    t.Field<int32_t>("InTy"_id) = 0;
    EXPECT_EQ(t.Run(in)[0].r, 64535u);
    EXPECT_EQ(t.Run(in)[0].b, 0u);
    // Luminance: m = sum / 3 truncated; c + 65535 - 2m, clipped.
    t.Field<int32_t>("InTy"_id) = 1;
    std::vector<KPixel> out = t.Run(in, true);
    EXPECT_EQ(out[0].r, 0u);
    EXPECT_EQ(out[0].g, 34513u);
    EXPECT_EQ(out[0].b, 60048u);
    EXPECT_EQ(out[0].a, 53190u);
    EXPECT_EQ(out[1].r, 65505u);  // 62 / 3 = 20, not 21
    EXPECT_EQ(out[1].b, 65527u);
    EXPECT_EQ(out[1].a, 65535u);
    // Hue: s = 2 * sum / 3 truncated; s - c, clipped.
    t.Field<int32_t>("InTy"_id) = 2;
    out = t.Run(in);
    EXPECT_EQ(out[0].r, 65535u);
    EXPECT_EQ(out[0].g, 31023u);
    EXPECT_EQ(out[0].b, 5488u);
    EXPECT_EQ(out[1].r, 31u);  // 124 / 3 = 41
    EXPECT_EQ(out[1].g, 21u);
    EXPECT_EQ(out[1].b, 9u);
}

TEST(InvertFloat, TypesDoNotClip)
{
    Tool t("ZV_Invert");
    const KPixelF in{0.25f, 0.5f, 1.5f, 0.25f};
    KPixelF out = t.Run(in);
    EXPECT_EQ(out.r, 0.75f);
    EXPECT_EQ(out.b, -0.5f);
    EXPECT_EQ(out.a, 0.75f);
    t.Field<int32_t>("InTy"_id) = 1;
    out = t.Run(in);
    EXPECT_NEAR(out.r, -0.25f, 1e-6f);
    EXPECT_NEAR(out.g, 0.0f, 1e-6f);
    EXPECT_NEAR(out.b, 1.0f, 1e-6f);
    t.Field<int32_t>("InTy"_id) = 2;
    out = t.Run(in);
    EXPECT_NEAR(out.r, 1.25f, 1e-6f);
    EXPECT_NEAR(out.b, 0.0f, 1e-6f);
    EXPECT_EQ(out.a, 0.75f);
}

TEST(InvertFlow, TypeFromTheHostAndChannelSwitches)
{
    Flow f("ZV_Invert", Row<KPixel>({{1000, 40000, 65535, 12345}}));
    f.Set("Type", 2);
    f.Set("KCCA", 0);
    const KPixel out = f.Render<KPixel>()[0];
    EXPECT_EQ(out.g, 31023u);
    EXPECT_EQ(out.a, 12345u);  // alpha switched off
}

}  // namespace
