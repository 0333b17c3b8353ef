// Flur and Microwaves: the ring filters as identities at no length, the energy a
// single bright pixel sends along a ray, and the controls that switch parts off.
#include <tuple>
#include "support.h"

using namespace zvtest;

namespace {

// A w x h black picture with one pixel `p` at (cx, cy).
template <class P> Img Dot(int32_t w, int32_t h, int32_t cx, int32_t cy, const P& p)
{
    return Made(w, h, kIsFloat<P>, [&](int32_t x, int32_t y) { return x == cx && y == cy ? p : P{}; });
}

uint32_t Cut(float v) { return !(v > 0.0f) ? 0u : v >= 65535.0f ? 65535u : static_cast<uint32_t>(v); }

}  // namespace

TEST(Flur, NoLengthAtTheReferenceWidthIsTheIdentity)
{
    Tool<KEffectThreads> t("ZV_Flur");
    t.Apply({{"Length", 0}});
    Img plate = Pattern(720, 6, false);
    for (int shape : {0, 1, 2}) {
        t.Apply({{"Shape", shape}});
        EXPECT_EQ(Differ(*t.Run(plate.get(), true), *plate), "") << "shape " << shape;
    }
}

TEST(Flur, ABrightPixelSpreadsAlongItsRowAsTheRecursiveFilterPredicts)
{
    // On the centre's own row each crossing is a whole pixel: the row is the
    // filter out = in (1 - k) + previous k run outward, then back inward.
    Tool<KEffectThreads> t("ZV_Flur");
    t.Apply({{"Length", 0.6}});
    const KPixel bright{60000, 40000, 20000, 65535};
    Img out = t.Run(Dot(41, 41, 20, 20, bright).get(), true);
    const double a = 1.0 - static_cast<double>(0.6f), a2 = a * a, a5 = a2 * a2 * a;
    const float k = static_cast<float>(1.0 - (720.0 / 41.0) * static_cast<float>(a5 * a5));
    for (int c = 0; c < 4; ++c) {
        std::vector<uint32_t> ray(21);
        ray[0] = bright[c];
        for (int n = 1; n <= 20; ++n) ray[n] = Cut(static_cast<float>(ray[n - 1]) * k);
        ray[20] = Cut(static_cast<float>(ray[20]) * (1.0f - k) + static_cast<float>(ray[20]) * k);  // edge reads itself
        for (int n = 19; n >= 1; --n) ray[n] = Cut(static_cast<float>(ray[n]) * (1.0f - k) + static_cast<float>(ray[n + 1]) * k);
        for (int n = 0; n <= 20; ++n) {
            ASSERT_EQ(At<KPixel>(*out, 20 + n, 20)[c], ray[n]) << "right " << n << " channel " << c;
            ASSERT_EQ(At<KPixel>(*out, 20 - n, 20)[c], ray[n]) << "left " << n << " channel " << c;
            ASSERT_EQ(At<KPixel>(*out, 20, 20 + n)[c], ray[n]) << "up " << n << " channel " << c;
        }
    }
}

TEST(Flur, FalloffShapes)
{
    Tool<KEffectThreads> t("ZV_Flur");
    Img plate = Pattern(33, 21, false);
    // Round takes its power from the length alone.
    t.Apply({{"Shape", 1}, {"Exponent", 0.5}});
    Img round = t.Run(plate.get());
    t.Apply({{"Exponent", 50}});
    EXPECT_EQ(Differ(*t.Run(plate.get()), *round), "");
    // Axial at exponent 0: only pixels the ray crosses exactly inherit, those
    // on the centre's row and column; every other pixel keeps its own value.
    t.Apply({{"Shape", 2}, {"Exponent", 0}});
    Img axial = t.Run(plate.get());
    for (int32_t y = 0; y < 21; ++y)
        for (int32_t x = 0; x < 33; ++x)
            if (x != 16 && y != 10) {
                ASSERT_EQ(Raw(*axial, x, y), Raw(*plate, x, y)) << x << "," << y;
            }
    EXPECT_NE(Raw(*axial, 20, 10), Raw(*plate, 20, 10));
}

TEST(Flur, SixteenStepsAtOnceGiveThePlainWalksBits)
{
    // Random codes over every level. Below the reference width the weight is
    // negative and blends reach both clamps; above it they stay inside. Spans are
    // long enough for sixteen pixels at once, with short ends left to the plain walk.
    uint32_t seed = 99;
    auto random = [&](int32_t, int32_t) {
        KPixel p;
        for (int c = 0; c < 4; ++c) p[c] = (seed = seed * 1103515245u + 12345u) >> 16;
        return p;
    };
    // Float values beyond 0..1 test the way in and out of the codes too.
    auto randomFloat = [&](int32_t x, int32_t y) {
        const KPixel p = random(x, y);
        return KPixelF{p[0] / 50000.0f - 0.1f, p[1] / 50000.0f - 0.1f, p[2] / 50000.0f - 0.1f, p[3] / 50000.0f - 0.1f};
    };
    Tool<KEffectThreads> t("ZV_Flur");
    for (auto [w, h, isFloat] : {std::tuple{157, 93, false}, {737, 41, false}, {155, 61, true}}) {
        Img plate = isFloat ? Made(w, h, true, randomFloat) : Made(w, h, false, random);
        for (auto [cx, cy] : {std::pair{0.5, 0.5}, {0.13, 0.81}, {-0.4, 0.3}, {1.6, 1.25}, {0.5, -3.0}})
            for (double length : {0.1, 0.6, 1.0})
                for (int shape : {0, 1, 2}) {
                    t.Apply({{"Center", cx, cy}, {"Length", length}, {"Shape", shape}});
                    KLimitLaneWidth(4);
                    Img plain = t.Run(plate.get(), true);
                    KLimitLaneWidth(kLaneWidthMost);
                    EXPECT_EQ(Differ(*t.Run(plate.get(), true), *plain), "")
                        << w << (isFloat ? " float" : "") << " centre " << cx << "," << cy << " length " << length << " shape " << shape;
                }
    }
}

TEST(Microwaves, NoBrightnessOrNoLengthKeepsEachPixelItsOwn)
{
    Tool<KEffectThreads> t("ZV_Microwaves");
    for (bool isFloat : {false, true}) {
        Img plate = Pattern(37, 23, isFloat);
        t.Apply({{"Brightness", 0}, {"Length", 0.7}, {"Blend original", 1}});
        EXPECT_EQ(Differ(*t.Run(plate.get(), true), *plate), "") << isFloat;
        // No length: no light crosses a ring, so a pixel is the source over its own light.
        t.Apply({{"Brightness", 0.1}, {"Length", 0}});
        Img out = t.Run(plate.get(), true);
        for (int32_t y = 0; y < 23; y += 5)
            for (int32_t x = 0; x < 37; x += 3) {
                const KPixelF s = At<KPixelF>(*plate, x, y), o = At<KPixelF>(*out, x, y);
                for (int c = 0; c < 4; ++c)
                    ASSERT_NEAR(o[c], std::min(s[c] * (1.0f - 0.1f * s.a) + 0.1f * s[c], isFloat ? 9.0f : 1.0f), 5e-5f)
                        << x << "," << y << " channel " << c;
            }
    }
    // Half the original, under no light, in integers cut.
    t.Apply({{"Brightness", 0}, {"Blend original", 0.5}});
    EXPECT_EQ(Channels(t.Run(KPixel{101, 65535, 0, 3})), Channels(KPixel{50, 32767, 0, 1}));
}

TEST(Microwaves, ABrightPixelRadiatesGeometrically)
{
    // The light of the centre pixel carries k of itself a ring; nothing else emits.
    Tool<KEffectThreads> t("ZV_Microwaves");
    t.Apply({{"Length", 0.6}, {"Brightness", 0.1}});
    const float a = 1.0f - 0.6f, a2 = a * a, a5 = a2 * a2 * a;
    const float k = static_cast<float>(std::pow(1.0 - double(a5 * a5), 720.0 / 40.0));
    const KPixelF bright{1.0f, 0.5f, 0.25f, 1.0f};
    Img f = t.Run(Dot(40, 40, 20, 20, bright).get(), true);
    const KPixel codes{65535, 32767, 16383, 65535};
    Img i = t.Run(Dot(40, 40, 20, 20, codes).get(), true);
    for (int c = 0; c < 4; ++c) {
        float light = bright[c] * 0.1f;
        uint32_t lightInt = Cut(static_cast<float>(codes[c]) * 0.1f);
        for (int n = 1; n < 20; ++n) {
            light *= k;
            lightInt = Cut(static_cast<float>(lightInt) * k);
            ASSERT_EQ(At<KPixelF>(*f, 20 + n, 20)[c], light) << n << " channel " << c;
            ASSERT_EQ(At<KPixelF>(*f, 20, 20 - n)[c], light) << n << " channel " << c;
            ASSERT_EQ(At<KPixel>(*i, 20 - n, 20)[c], lightInt) << n << " channel " << c;
        }
    }
}

TEST(Microwaves, EdgesAndMaskChooseWhatEmits)
{
    Tool<KEffectThreads> t("ZV_Microwaves");
    // A flat picture has no edges: at Full edges 1 nothing shines.
    Img flat = Solid(30, 20, KPixelF{0.3f, 0.6f, 0.9f, 1.0f});
    t.Apply({{"Full                                                    edges", 1}});
    EXPECT_EQ(Differ(*t.Run(flat.get()), *flat), "");
    // A mask of no alpha darkens every emitter, and the source itself is left alone.
    t.Apply({{"Full                                                    edges", 0}});
    Img plate = Pattern(30, 20, false), before(plate->Clone());
    Img clear = Solid(30, 20, KPixel{65535, 65535, 65535, 0});
    t.Field<KImage*>("Microwaves Mask", kValueImage) = clear.get();
    Img out = t.Run(plate.get());
    t.Field<KImage*>("Microwaves Mask", kValueImage) = nullptr;
    EXPECT_EQ(Differ(*out, *plate), "");
    EXPECT_EQ(Differ(*plate, *before), "");
}
