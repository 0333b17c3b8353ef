// Invert: the three types on hand-computed pixels in both depths.
#include "support.h"

using namespace zvtest;

TEST(Invert, TypesClipAndTruncateInIntegersAndDoNotClipInFloats)
{
    // Color: 65535 - c. Luminance: m = sum / 3 truncated, c + 65535 - 2m.
    // Hue: s = 2 * sum / 3 truncated, s - c. Clipped; alpha always 65535 - a.
    const std::vector<KPixel> in = {{1000, 40000, 65535, 12345}, {10, 20, 32, 0}};
    const KPixel want[3][2] = {
        {{64535, 25535, 0, 53190}, {65525, 65515, 65503, 65535}},
        {{0, 34513, 60048, 53190}, {65505, 65515, 65527, 65535}},  // 62 / 3 = 20, not 21
        {{65535, 31023, 5488, 53190}, {31, 21, 9, 65535}},         // 124 / 3 = 41
    };
    const KPixelF wantF[3] = {{0.75f, 0.5f, -0.5f, 0.75f}, {-0.25f, 0.0f, 1.0f, 0.75f}, {1.25f, 1.0f, 0.0f, 0.75f}};
    Tool<KEffectColor> t("ZV_Invert");
    for (int32_t type = 0; type < 3; ++type) {
        t.SetInt("Type", type);
        const std::vector<KPixel> out = t.Run(in);
        for (int i = 0; i < 2; ++i) EXPECT_EQ(Channels(out[i]), Channels(want[type][i])) << type;
        ExpectNear(t.Run(KPixelF{0.25f, 0.5f, 1.5f, 0.25f}), wantF[type], type ? 1e-6f : 0.0f, std::to_string(type));
    }
}
