// Whole-image operations in both depths: integer results are checked bit for
// bit against hand-computed values of the scale rule.
#include "support.h"

using namespace zvtest;

namespace {

// Every pixel exactly `want`; an integer image is read as integers.
template <class P> void ExpectEvery(const KImage& img, const P& want)
{
    for (int32_t y = 0; y < img.height; ++y)
        for (int32_t x = 0; x < img.width; ++x) ASSERT_EQ(Channels(At<P>(img, x, y)), Channels(want)) << x << "," << y;
}

}  // namespace

TEST(RasterMergeOver, OpaqueCoversZeroLeavesAloneAndHalfTransparentAdds)
{
    for (bool isFloat : {false, true}) {
        Img pattern(Pattern(5, 4, isFloat)), merged(pattern->Clone());
        merged->MergeOver(*Img(KImage::Create(5, 4, isFloat)));
        EXPECT_EQ(Differ(*merged, *pattern), "") << isFloat;
        merged->MergeOver(*Made(5, 4, isFloat, [](int32_t, int32_t) { return KPixel{65535, 65535, 65535, 65535}; }));
        ExpectEvery(*merged, KPixelF{1, 1, 1, 1});
    }
    // `other` over `target`, both of one colour.
    auto over = [](auto target, auto other) {
        Img t = Solid(2, 2, target);
        t->MergeOver(*Solid(2, 2, other));
        return t;
    };
    // k = 65535 - 32768 = 32767; each component is other + round(this * k / 65535).
    ExpectEvery(*over(KPixel{40000, 30000, 65535, 65535}, KPixel{10000, 20000, 0, 32768}),
                KPixel{30000, 35000, 32767, 65535});
    // A pixel that is not pre-multiplied overflows and is limited to 65535; floats are not clipped.
    ExpectEvery(*over(KPixel{10000, 500, 65535, 0}, KPixel{60000, 0, 100, 0}), KPixel{65535, 500, 65535, 0});
    ExpectEvery(*over(KPixelF{0.5f, 1, 1, 1}, KPixelF{0.25f, 0.5f, 0, 0.5f}), KPixelF{0.5f, 1, 0.5f, 1});
    ExpectEvery(*over(KPixelF{1, 0, 0, 0}, KPixelF{1, -0.5f, 0, 0}), KPixelF{2, -0.5f, 0, 0});
}

TEST(RasterFade, IntegerScaleRuleWithTheWeightInDoublePrecisionAndOneOrMoreLeavesAlone)
{
    for (bool isFloat : {false, true}) {
        Img img(Pattern(7, 5, isFloat)), before(img->Clone());
        for (float amount : {1.0f, 3.0f}) {
            img->Fade(amount);
            EXPECT_EQ(Differ(*img, *before), "") << amount;
        }
    }
    // a = (int)(0.5 * 65535.5) = 32767.
    const KPixel want[4] = {{0, 0, 1, 1}, {500, 20000, 32767, 32767}, {32767, 0, 0, 0}, {1, 1, 1, 1}};
    Img img = Row<KPixel>({{0, 1, 2, 3}, {1000, 40001, 65535, 65534}, {65535, 0, 0, 0}, {2, 2, 2, 2}});
    img->Fade(0.5f);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(Channels(At<KPixel>(*img, i, 0)), Channels(want[i])) << i;
    auto faded = [](auto p, float amount) {
        Img t = Solid(3, 2, p);
        t->Fade(amount);
        return t;
    };
    ExpectEvery(*faded(KPixel{65535, 12345, 5, 65535}, 0.1f), KPixel{6553, 1234, 0, 6553});  // a = 6553
    Img zero(Pattern(3, 3, false));
    zero->Fade(0.0f);
    ExpectEvery(*zero, KPixel{});
    // In double this amount times 65535.5 stays below 1 and the weight is 0;
    // rounded to single precision the product would reach 1.
    const float tiny = static_cast<float>(1.0 / 65535.5);
    ASSERT_EQ(static_cast<int>(static_cast<double>(tiny) * 65535.5), 0);
    ExpectEvery(*faded(KPixel{65535, 65535, 65535, 65535}, tiny), KPixel{});
    ExpectEvery(*faded(KPixelF{1.0f, 0.5f, 2.0f, -1.0f}, 0.5f), KPixelF{0.5f, 0.25f, 1.0f, -0.5f});  // floats multiply
}

TEST(RasterBlend, IntegerAndFloatWeights)
{
    // a = (int)(0.25 * 65535.5) = 16383, the other weight 49152.
    Img target = Row<KPixel>({{0, 65535, 20000, 3}, {}});
    target->Blend(*Row<KPixel>({{65535, 0, 40000, 1000}, {}}), 0.25f);
    EXPECT_EQ(Channels(At<KPixel>(*target, 0, 0)), Channels(KPixel{16383, 49152, 25000, 252}));
    EXPECT_EQ(Channels(At<KPixel>(*target, 1, 0)), Channels(KPixel{}));

    Img t2(Pattern(4, 3, false)), o2(Pattern(4, 3, false));
    o2->Fade(0.3f);
    Img before(t2->Clone());
    for (float w : {0.0f, -1.0f}) {
        t2->Blend(*o2, w);
        EXPECT_EQ(Differ(*t2, *before), "") << w;
    }
    t2->Blend(*o2, 1.0f);  // weights 65535 and 0
    EXPECT_EQ(Differ(*t2, *o2), "");

    Img tf = Solid(2, 2, KPixelF{1.0f, 0.0f, 0.5f, 2.0f});
    tf->Blend(*Solid(2, 2, KPixelF{0.0f, 1.0f, 0.5f, 0.0f}), 0.25f);
    ExpectEvery(*tf, KPixelF{0.75f, 0.25f, 0.5f, 1.5f});
}

TEST(RasterFindBounds, LowerCornerNeverLeavesTheOriginAndFloatAlphaIsReadAsInteger)
{
    Img img(KImage::Create(6, 5, false));
    img->SetPixel(2, 1, KPixel{0, 0, 0, 1});
    img->SetPixel(4, 3, KPixel{0, 0, 0, 65535});
    img->SetPixel(5, 4, KPixel{65535, 65535, 65535, 0});  // colour without alpha: ignored
    KRect r = img->FindBounds();
    EXPECT_EQ(std::vector<float>({r.x0, r.y0, r.x1, r.y1}), std::vector<float>({0, 0, 4, 3}));  // not 2: from 0, 0
    r = Img(KImage::Create(4, 4, false))->FindBounds();
    EXPECT_EQ(std::vector<float>({r.x0, r.y0, r.x1, r.y1}), std::vector<float>({0, 0, -100000, -100000}));
    Img f(KImage::Create(5, 4, true));
    f->SetPixel(4, 3, KPixelF{0, 0, 0, 1e-6f});  // below one integer step: not counted
    f->SetPixel(3, 2, KPixelF{0, 0, 0, 0.5f});
    r = f->FindBounds();
    EXPECT_EQ(std::pair(r.x1, r.y1), std::pair(3.0f, 2.0f));
}

TEST(RasterFindChannelBounds, CornersGrowByTheFractionAboveLow)
{
    Img img(KImage::Create(3, 3, false));
    img->SetPixel(0, 0, KPixel{49152, 0, 0, 0});
    img->SetPixel(2, 1, KPixel{49152, 0, 0, 0});
    img->SetPixel(1, 2, KPixel{0, 0, 0, 65535});
    // t = 49152 / 65535, about 0.75; relative to a window from 0.5 to 1 about
    // 0.5; the alpha channel finds only the pixel at 1, 2 with t close to 1.
    const struct {
        int32_t channel;
        float low, mn0, mn1, mx0, mx1;
    } rows[] = {{0, 0.0f, 0.25f, 0.25f, 2.75f, 1.75f}, {0, 0.5f, 0.5f, 0.5f, 2.5f, 1.5f}, {3, 0.0f, 1, 2, 2, 3}};
    for (const auto& r : rows) {
        float mn[2] = {-1, -1}, mx[2] = {-1, -1};
        ASSERT_TRUE(img->FindChannelBounds(r.channel, r.low, 1.0f, mn, mx));
        const float got[4] = {mn[0], mn[1], mx[0], mx[1]}, want[4] = {r.mn0, r.mn1, r.mx0, r.mx1};
        for (int i = 0; i < 4; ++i) EXPECT_NEAR(got[i], want[i], 1e-4) << r.channel << " from " << r.low << " " << i;
    }
    // Crossed corners meet at their mean: t about 0.25 gives min 1.75, max 1.25.
    Img one(KImage::Create(3, 3, false));
    one->SetPixel(1, 2, KPixel{16384, 0, 0, 0});
    float mn[2], mx[2];
    ASSERT_TRUE(one->FindChannelBounds(0, 0.0f, 1.0f, mn, mx));
    for (float v : {mn[0], mx[0]}) EXPECT_FLOAT_EQ(v, 1.5f);
    for (float v : {mn[1], mx[1]}) EXPECT_FLOAT_EQ(v, 2.5f);
}

TEST(RasterFindChannelBounds, WindowIsOpenBelowAndClosedAboveAndOtherChannelsAreLuminance)
{
    Img img(KImage::Create(2, 2, false));
    img->SetPixel(1, 1, KPixel{32768, 0, 0, 0});
    const float v = 32768.0f * 1.5259022e-05f;
    float mn[2] = {7, 7}, mx[2] = {8, 8};
    EXPECT_FALSE(img->FindChannelBounds(0, v, 1.0f, mn, mx));  // equal to low: out
    EXPECT_EQ(std::pair(mn[0], mx[1]), std::pair(7.0f, 8.0f));  // and nothing written
    EXPECT_TRUE(img->FindChannelBounds(0, 0.0f, v, mn, mx));   // equal to high: in
    EXPECT_FALSE(img->FindChannelBounds(0, 0.6f, 0.9f, mn, mx));
    EXPECT_FALSE(img->FindChannelBounds(1, 0.0f, 1.0f, mn, mx));  // green is all 0
    EXPECT_FALSE(img->FindChannelBounds(0, 1.0f, 0.0f, mn, mx));  // low above high
    for (bool isFloat : {false, true}) {
        Img grey(KImage::Create(3, 3, isFloat));
        grey->SetPixel(1, 2, KPixel{40000, 40000, 40000, 0});
        grey->SetPixel(0, 0, KPixel{0, 0, 0, 65535});  // alpha does not count
        const float t = 40000.0f / 65535.0f;
        for (int32_t channel : {4, -1}) {
            ASSERT_TRUE(grey->FindChannelBounds(channel, 0.0f, 1.0f, mn, mx));
            for (auto [got, want] : {std::pair{mn[0], 2.0f - t}, {mn[1], 3.0f - t}, {mx[0], 1.0f + t}, {mx[1], 2.0f + t}})
                EXPECT_NEAR(got, want, 1e-4) << channel << " float " << isFloat;
        }
    }
}

TEST(RasterClearAndCopyOffset, ZeroesColourAndAuxiliaryChannelsAndShiftsAcrossDepths)
{
    for (bool isFloat : {false, true}) {
        Img src(Pattern(4, 3, isFloat)), img(src->CreateVectorLike());
        img->CopyFrom(*src);
        for (int i = 0; i < 12; ++i) img->AuxPlane(22)[i] = 1.5f;
        img->Clear();
        EXPECT_EQ(Differ(*img, *Img(KImage::Create(4, 3, isFloat))), "");
        for (int i = 0; i < 12; ++i) ASSERT_EQ(img->AuxPlane(22)[i], 0.0f);
    }
    // CopyOffset shifts, zeroes the uncovered, onto itself and across depths.
    for (bool isFloat : {false, true}) {
        Img src(Pattern(4, 3, isFloat)), dst(Pattern(4, 3, isFloat));  // the old content must not survive
        dst->CopyOffset(*src, 1, -1);
        EXPECT_EQ(MaxDiff(*dst, *src, 0, 0, 4, 3, 1, -1), 0.0f) << isFloat;  // zero where nothing lands
    }
    Img img(Pattern(5, 4, false)), orig(img->Clone()), floats(KImage::Create(5, 4, true));
    img->CopyOffset(*img, -2, 1);
    floats->CopyOffset(*orig, 0, 0);
    EXPECT_EQ(MaxDiff(*img, *orig, 0, 0, 5, 4, -2, 1), 0.0f);
    EXPECT_EQ(Differ(*floats, *Pattern(5, 4, true)), "");
}

TEST(RasterFillAndMask, FillKeepsAlphaAndMasksTakeTheMaskAlphaOrItsInverse)
{
    Img img = Row<KPixel>({{1, 2, 3, 32768}, {1, 2, 3, 65535}, {1, 2, 3, 0}});
    img->FillKeepAlpha(KPixelF{1.0f, 0.5f, 0.0f, 0.3f});  // 65535, 32767, 0
    const KPixel want[3] = {{32768, 16384, 0, 32768}, {65535, 32767, 0, 65535}, {0, 0, 0, 0}};
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Channels(At<KPixel>(*img, i, 0)), Channels(want[i])) << i;

    Img f = Row<KPixelF>({{9, 9, 9, 0.5f}, {9, 9, 9, 2.0f}});
    f->FillKeepAlpha(KPixelF{1.0f, 0.5f, 2.0f, 0.0f});
    EXPECT_EQ(Channels(At<KPixelF>(*f, 0, 0)), Channels(KPixelF{0.5f, 0.25f, 1.0f, 0.5f}));
    EXPECT_EQ(Channels(At<KPixelF>(*f, 1, 0)), Channels(KPixelF{2.0f, 1.0f, 4.0f, 2.0f}));
    img = Solid(3, 2, KPixel{40000, 20000, 65535, 65535});
    Img inverse(img->Clone());
    Img mask = Row<KPixel>({{0, 0, 0, 32768}, {65535, 65535, 65535, 65535}});  // smaller: outside it the mask is 0
    img->MaskByAlpha(*mask);
    inverse->MaskByInverseAlpha(*mask);
    const KPixel full{40000, 20000, 65535, 65535};
    const struct {
        int32_t x, y;
        KPixel masked, inverted;
    } rows[] = {{0, 0, {20000, 10000, 32768, 32768}, {20000, 10000, 32767, 32767}},
                {1, 0, full, {}},
                {2, 0, {}, full},
                {0, 1, {}, full}};
    for (const auto& r : rows) {
        EXPECT_EQ(Channels(At<KPixel>(*img, r.x, r.y)), Channels(r.masked)) << r.x << "," << r.y;
        EXPECT_EQ(Channels(At<KPixel>(*inverse, r.x, r.y)), Channels(r.inverted)) << r.x << "," << r.y;
    }
    f = Solid(2, 1, KPixelF{1.0f, 0.5f, 2.0f, 1.0f});
    f->MaskByAlpha(*Solid(2, 1, KPixelF{0, 0, 0, 0.25f}));
    ExpectEvery(*f, KPixelF{0.25f, 0.125f, 0.5f, 0.25f});
}

TEST(RasterTransform, NeutralArgumentsGiveAClone)
{
    for (bool isFloat : {false, true}) {
        Img img(Pattern(6, 4, isFloat)), same(img->Transform(0.5f, 0.5f, 1.0f, 1.0f, 0.0f));
        ASSERT_NE(same, nullptr);
        EXPECT_NE(same->HostImage(), img->HostImage());
        EXPECT_EQ(Differ(*same, *img), "");
        // Within one float epsilon of neutral counts as neutral.
        EXPECT_EQ(Differ(*Img(img->Transform(0.5f + 1.1920929e-07f, 0.5f, 1.0f - 5.9604645e-08f, 1.0f, 0.0f)), *img), "");
    }
}
