// Color: a colour replacing, added to, taken from, multiplying or dividing
// every component, unclipped in floats and clipped in integers.
#include "support.h"

using namespace zvtest;

TEST(Color, TypesOnEveryComponentUnclippedInFloatsClippedInIntegers)
{
    Tool<KEffectColor> t("ZV_Color");
    const KPixelF want[] = {
        {0.5f, 0.0f, 2.0f, 0.25f},    // Replace
        {0.75f, 0.3f, 3.0f, 0.75f},   // Add: no clipping
        {-0.25f, 0.3f, -1.0f, 0.25f}, // Subtract
        {0.125f, 0.0f, 2.0f, 0.125f}, // Multiply
        {0.5f, 0.3f, 0.5f, 2.0f},     // Divide: a zero component divides by one
        {0.25f, 0.3f, 1.0f, 0.5f},    // an unknown type changes nothing
    };
    t.SetColor("Color", {0.5f, 0.0f, 2.0f, 0.25f});
    for (int32_t type = 0; type < 6; ++type) {
        t.SetInt("Type", type == 5 ? 9 : type);
        EXPECT_EQ(Channels(t.Run(KPixelF{0.25f, 0.3f, 1.0f, 0.5f})), Channels(want[type])) << type;
    }
    const KPixel p{40000, 100, 0, 65535};
    const KColor c{0.5f, 0.0f, 1.5f, 0.0f};  // 32767, 0, 65535, 0
    const struct { int32_t type; KPixel in; KColor color; KPixel want; } rows[] = {
        {0, p, c, {32767, 0, 65535, 0}}, {1, p, c, {65535, 100, 65535, 65535}}, {2, p, c, {7233, 100, 0, 65535}},
        {3, p, c, {19999, 0, 0, 0}},  // 40000 * 32767 / 65535, truncated
        // Divide works on the integer values; a zero component leaves the channel.
        {4, {65534, 1234, 65535, 500}, c, {2, 1234, 1, 500}},
        // The colour reaches integers through double: code 30000 comes out 29999.
        {0, p, {KIntToFloat(30000), -1.0f, 0.0f, 0.0f}, {29999, 0, 0, 0}},
    };
    for (const auto& r : rows) {
        t.SetInt("Type", r.type);
        t.SetColor("Color", r.color);
        EXPECT_EQ(Channels(t.Run(r.in)), Channels(r.want)) << "type " << r.type;
    }
}
