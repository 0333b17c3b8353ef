// Whole-image operations in both depths: integer results are checked bit for
// bit against hand-computed values of the scale rule.
#include <gtest/gtest.h>
#include <cfloat>
#include <cstdlib>
#include "host/image.h"
#include "raster/image.h"
#include "support.h"

using zvtest::Differ;
using zvtest::Pattern;

namespace {

KImage* Solid(int32_t w, int32_t h, const KPixel& p)
{
    KImage* img = KImage::Create(w, h, false);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) img->SetPixel(x, y, p);
    return img;
}

KImage* SolidF(int32_t w, int32_t h, const KPixelF& p)
{
    KImage* img = KImage::Create(w, h, true);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) img->SetPixel(x, y, p);
    return img;
}

void ExpectEvery(const KImage& img, const KPixel& want)
{
    for (int32_t y = 0; y < img.height; ++y)
        for (int32_t x = 0; x < img.width; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(img.RowW(y)[4 * x + c], want[c]) << x << "," << y << " c" << c;
}

void ExpectEvery(const KImage& img, const KPixelF& want)
{
    for (int32_t y = 0; y < img.height; ++y)
        for (int32_t x = 0; x < img.width; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(img.RowF(y)[4 * x + c], want[c]) << x << "," << y << " c" << c;
}

KPixel At(const KImage& img, int32_t x, int32_t y)
{
    KPixel p;
    img.GetPixel(x, y, p, kEdgeBlack);
    return p;
}

KPixelF AtF(const KImage& img, int32_t x, int32_t y)
{
    KPixelF p;
    img.GetPixel(x, y, p, kEdgeBlack);
    return p;
}

void ExpectPixel(const KPixel& got, const KPixel& want)
{
    for (int c = 0; c < 4; ++c) EXPECT_EQ(got[c], want[c]) << "channel " << c;
}

}  // namespace

TEST(RasterMergeOver, OpaqueWhiteCoversAndZeroLeavesAlone)
{
    KImage* target = Pattern(5, 4, false);
    KImage* white = Solid(5, 4, {65535, 65535, 65535, 65535});
    target->MergeOver(*white);
    ExpectEvery(*target, KPixel{65535, 65535, 65535, 65535});

    KImage* pattern = Pattern(5, 4, false);
    KImage* zero = Solid(5, 4, {0, 0, 0, 0});
    KImage* merged = pattern->Clone();
    merged->MergeOver(*zero);
    EXPECT_EQ(Differ(*merged, *pattern), "");

    KImage* patternF = Pattern(5, 4, true);
    KImage* mergedF = patternF->Clone();
    KImage* zeroF = KImage::Create(5, 4, true);
    mergedF->MergeOver(*zeroF);
    EXPECT_EQ(Differ(*mergedF, *patternF), "");
    KImage* whiteF = SolidF(5, 4, {1, 1, 1, 1});
    mergedF->MergeOver(*whiteF);
    ExpectEvery(*mergedF, KPixelF{1, 1, 1, 1});

    for (KImage* k : {target, white, pattern, zero, merged, patternF, mergedF, zeroF, whiteF})
        delete k;
}

TEST(RasterMergeOver, HalfTransparentInteger)
{
    // k = 65535 - 32768 = 32767; each component is other + round(this * k / 65535).
    KImage* target = Solid(2, 1, {40000, 30000, 65535, 65535});
    KImage* over = Solid(2, 1, {10000, 20000, 0, 32768});
    target->MergeOver(*over);
    ExpectEvery(*target, KPixel{30000, 35000, 32767, 65535});

    // A pixel that is not pre-multiplied overflows and is limited to 65535.
    KImage* t2 = Solid(1, 1, {10000, 500, 65535, 0});
    KImage* o2 = Solid(1, 1, {60000, 0, 100, 0});
    t2->MergeOver(*o2);
    ExpectEvery(*t2, KPixel{65535, 500, 65535, 0});
    for (KImage* k : {target, over, t2, o2}) delete k;
}

TEST(RasterMergeOver, HalfTransparentFloatIsNotClipped)
{
    KImage* target = SolidF(2, 2, {0.5f, 1.0f, 1.0f, 1.0f});
    KImage* over = SolidF(2, 2, {0.25f, 0.5f, 0.0f, 0.5f});
    target->MergeOver(*over);
    ExpectEvery(*target, KPixelF{0.5f, 1.0f, 0.5f, 1.0f});

    KImage* t2 = SolidF(1, 1, {1.0f, 0.0f, 0.0f, 0.0f});
    KImage* o2 = SolidF(1, 1, {1.0f, -0.5f, 0.0f, 0.0f});
    t2->MergeOver(*o2);
    ExpectEvery(*t2, KPixelF{2.0f, -0.5f, 0.0f, 0.0f});
    for (KImage* k : {target, over, t2, o2}) delete k;
}

TEST(RasterFade, OneOrMoreLeavesTheImageBitForBit)
{
    for (bool isFloat : {false, true}) {
        KImage* img = Pattern(7, 5, isFloat);
        KImage* before = img->Clone();
        img->Fade(1.0f);
        EXPECT_EQ(Differ(*img, *before), "");
        img->Fade(3.0f);
        EXPECT_EQ(Differ(*img, *before), "");
        delete img;
        delete before;
    }
}

TEST(RasterFade, IntegerScaleRule)
{
    // a = (int)(0.5 * 65535.5) = 32767.
    KImage* img = KImage::Create(4, 2, false);
    const uint16_t in[4][4] = {{0, 1, 2, 3},       {1000, 40001, 65535, 65534},
                               {65535, 0, 0, 0},   {2, 2, 2, 2}};
    for (int i = 0; i < 4; ++i)
        img->SetPixel(i, 0, KPixel{in[i][0], in[i][1], in[i][2], in[i][3]});
    img->Fade(0.5f);
    ExpectPixel(At(*img, 0, 0), {0, 0, 1, 1});
    ExpectPixel(At(*img, 1, 0), {500, 20000, 32767, 32767});
    ExpectPixel(At(*img, 2, 0), {32767, 0, 0, 0});
    ExpectPixel(At(*img, 3, 0), {1, 1, 1, 1});

    KImage* tenth = Solid(2, 2, {65535, 12345, 5, 65535});
    tenth->Fade(0.1f);  // a = 6553
    ExpectEvery(*tenth, KPixel{6553, 1234, 0, 6553});

    KImage* zero = Pattern(3, 3, false);
    zero->Fade(0.0f);
    ExpectEvery(*zero, KPixel{0, 0, 0, 0});
    for (KImage* k : {img, tenth, zero}) delete k;
}

TEST(RasterFade, WeightIsTakenInDoublePrecision)
{
    // In double this amount times 65535.5 stays below 1 and the weight is 0;
    // rounded to single precision the product would reach 1.
    const float tiny = static_cast<float>(1.0 / 65535.5);
    ASSERT_EQ(static_cast<int>(static_cast<double>(tiny) * 65535.5), 0);
    KImage* img = Solid(2, 1, {65535, 65535, 65535, 65535});
    img->Fade(tiny);
    ExpectEvery(*img, KPixel{0, 0, 0, 0});
    delete img;
}

TEST(RasterFade, FloatMultiplies)
{
    KImage* img = SolidF(3, 2, {1.0f, 0.5f, 2.0f, -1.0f});
    img->Fade(0.5f);
    ExpectEvery(*img, KPixelF{0.5f, 0.25f, 1.0f, -0.5f});
    delete img;
}

TEST(RasterBlend, IntegerAndFloatWeights)
{
    // a = (int)(0.25 * 65535.5) = 16383, the other weight 49152.
    KImage* target = KImage::Create(2, 1, false);
    KImage* other = KImage::Create(2, 1, false);
    target->SetPixel(0, 0, KPixel{0, 65535, 20000, 3});
    other->SetPixel(0, 0, KPixel{65535, 0, 40000, 1000});
    target->Blend(*other, 0.25f);
    ExpectPixel(At(*target, 0, 0), {16383, 49152, 25000, 252});
    ExpectPixel(At(*target, 1, 0), {0, 0, 0, 0});

    KImage* t2 = Pattern(4, 3, false);
    KImage* o2 = Pattern(4, 3, false);
    o2->Fade(0.3f);
    KImage* before = t2->Clone();
    t2->Blend(*o2, 0.0f);
    EXPECT_EQ(Differ(*t2, *before), "");
    t2->Blend(*o2, -1.0f);
    EXPECT_EQ(Differ(*t2, *before), "");
    t2->Blend(*o2, 1.0f);  // weights 65535 and 0
    EXPECT_EQ(Differ(*t2, *o2), "");

    KImage* tf = SolidF(2, 2, {1.0f, 0.0f, 0.5f, 2.0f});
    KImage* of = SolidF(2, 2, {0.0f, 1.0f, 0.5f, 0.0f});
    tf->Blend(*of, 0.25f);
    ExpectEvery(*tf, KPixelF{0.75f, 0.25f, 0.5f, 1.5f});

    for (KImage* k : {target, other, t2, o2, before, tf, of}) delete k;
}

TEST(RasterFindBounds, LowerCornerNeverLeavesTheOrigin)
{
    KImage* img = KImage::Create(6, 5, false);
    img->SetPixel(2, 1, KPixel{0, 0, 0, 1});
    img->SetPixel(4, 3, KPixel{0, 0, 0, 65535});
    img->SetPixel(5, 4, KPixel{65535, 65535, 65535, 0});  // colour without alpha: ignored
    KRect r = img->FindBounds();
    EXPECT_EQ(r.x0, 0.0f);  // not 2: the start corner is 0, 0
    EXPECT_EQ(r.y0, 0.0f);
    EXPECT_EQ(r.x1, 4.0f);
    EXPECT_EQ(r.y1, 3.0f);
    delete img;

    KImage* empty = KImage::Create(4, 4, false);
    r = empty->FindBounds();
    EXPECT_EQ(r.x0, 0.0f);
    EXPECT_EQ(r.y0, 0.0f);
    EXPECT_EQ(r.x1, -100000.0f);
    EXPECT_EQ(r.y1, -100000.0f);
    delete empty;
}

TEST(RasterFindBounds, FloatAlphaIsReadAsInteger)
{
    KImage* img = KImage::Create(5, 4, true);
    img->SetPixel(4, 3, KPixelF{0, 0, 0, 1e-6f});  // below one integer step: not counted
    img->SetPixel(3, 2, KPixelF{0, 0, 0, 0.5f});
    KRect r = img->FindBounds();
    EXPECT_EQ(r.x1, 3.0f);
    EXPECT_EQ(r.y1, 2.0f);
    delete img;
}

TEST(RasterFindChannelBounds, CornersGrowByTheFractionAboveLow)
{
    KImage* img = KImage::Create(3, 3, false);
    img->SetPixel(0, 0, KPixel{49152, 0, 0, 0});
    img->SetPixel(2, 1, KPixel{49152, 0, 0, 0});
    img->SetPixel(1, 2, KPixel{0, 0, 0, 65535});
    float mn[2] = {-1, -1}, mx[2] = {-1, -1};
    // t = 49152 / 65535, about 0.75.
    ASSERT_TRUE(img->FindChannelBounds(0, 0.0f, 1.0f, mn, mx));
    EXPECT_NEAR(mn[0], 0.25f, 1e-4);
    EXPECT_NEAR(mn[1], 0.25f, 1e-4);
    EXPECT_NEAR(mx[0], 2.75f, 1e-4);
    EXPECT_NEAR(mx[1], 1.75f, 1e-4);

    // Relative to a window from 0.5 to 1: t is about 0.5.
    ASSERT_TRUE(img->FindChannelBounds(0, 0.5f, 1.0f, mn, mx));
    EXPECT_NEAR(mn[0], 0.5f, 1e-4);
    EXPECT_NEAR(mx[0], 2.5f, 1e-4);
    EXPECT_NEAR(mx[1], 1.5f, 1e-4);

    // The alpha channel finds only the pixel at 1, 2, with t close to 1.
    ASSERT_TRUE(img->FindChannelBounds(3, 0.0f, 1.0f, mn, mx));
    EXPECT_NEAR(mn[0], 1.0f, 1e-4);
    EXPECT_NEAR(mn[1], 2.0f, 1e-4);
    EXPECT_NEAR(mx[0], 2.0f, 1e-4);
    EXPECT_NEAR(mx[1], 3.0f, 1e-4);
    delete img;
}

TEST(RasterFindChannelBounds, CrossedCornersMeetAtTheirMean)
{
    KImage* img = KImage::Create(3, 3, false);
    img->SetPixel(1, 2, KPixel{16384, 0, 0, 0});  // t about 0.25: min 1.75, max 1.25
    float mn[2], mx[2];
    ASSERT_TRUE(img->FindChannelBounds(0, 0.0f, 1.0f, mn, mx));
    EXPECT_FLOAT_EQ(mn[0], 1.5f);
    EXPECT_FLOAT_EQ(mx[0], 1.5f);
    EXPECT_FLOAT_EQ(mn[1], 2.5f);
    EXPECT_FLOAT_EQ(mx[1], 2.5f);
    delete img;
}

TEST(RasterFindChannelBounds, WindowIsOpenBelowAndClosedAbove)
{
    KImage* img = KImage::Create(2, 2, false);
    img->SetPixel(1, 1, KPixel{32768, 0, 0, 0});
    const float v = 32768.0f * 1.5259022e-05f;
    float mn[2] = {7, 7}, mx[2] = {8, 8};
    EXPECT_FALSE(img->FindChannelBounds(0, v, 1.0f, mn, mx));  // equal to low: out
    EXPECT_EQ(mn[0], 7.0f);
    EXPECT_EQ(mx[1], 8.0f);
    EXPECT_TRUE(img->FindChannelBounds(0, 0.0f, v, mn, mx));  // equal to high: in
    EXPECT_FALSE(img->FindChannelBounds(0, 0.6f, 0.9f, mn, mx));
    EXPECT_FALSE(img->FindChannelBounds(1, 0.0f, 1.0f, mn, mx));  // green is all 0
    EXPECT_FALSE(img->FindChannelBounds(0, 1.0f, 0.0f, mn, mx));  // low above high
    delete img;
}

TEST(RasterFindChannelBounds, LuminanceForOtherChannels)
{
    for (bool isFloat : {false, true}) {
        KImage* img = KImage::Create(3, 3, isFloat);
        KPixel grey{40000, 40000, 40000, 0};
        if (isFloat) {
            KPixelF f;
            KToFloat(grey, f);
            img->SetPixel(1, 2, f);
        } else {
            img->SetPixel(1, 2, grey);
        }
        img->SetPixel(0, 0, KPixel{0, 0, 0, 65535});  // alpha does not count
        float mn[2], mx[2];
        ASSERT_TRUE(img->FindChannelBounds(4, 0.0f, 1.0f, mn, mx));
        const float t = 40000.0f / 65535.0f;
        EXPECT_NEAR(mn[0], 2.0f - t, 1e-4);
        EXPECT_NEAR(mn[1], 3.0f - t, 1e-4);
        EXPECT_NEAR(mx[0], 1.0f + t, 1e-4);
        EXPECT_NEAR(mx[1], 2.0f + t, 1e-4);
        ASSERT_TRUE(img->FindChannelBounds(-1, 0.0f, 1.0f, mn, mx));
        EXPECT_NEAR(mx[1], 2.0f + t, 1e-4);
        delete img;
    }
}

TEST(RasterClear, ZeroesColourAndAuxiliaryChannels)
{
    for (bool isFloat : {false, true}) {
        KImage* src = Pattern(4, 3, isFloat);
        KImage* img = src->CreateVectorLike();
        img->CopyFrom(*src);
        for (int i = 0; i < 12; ++i) img->AuxPlane(22)[i] = 1.5f;
        img->Clear();
        if (isFloat) ExpectEvery(*img, KPixelF{});
        else ExpectEvery(*img, KPixel{});
        for (int i = 0; i < 12; ++i) ASSERT_EQ(img->AuxPlane(22)[i], 0.0f);
        delete img;
        delete src;
    }
}

TEST(RasterCopyOffset, ShiftsAndZeroesTheUncovered)
{
    for (bool isFloat : {false, true}) {
        KImage* src = Pattern(4, 3, isFloat);
        KImage* dst = Pattern(4, 3, isFloat);  // old content must not survive
        for (int32_t y = 0; y < 3; ++y)
            for (int32_t x = 0; x < 4; ++x) dst->SetPixel(x, y, KPixel{9, 9, 9, 9});
        dst->CopyOffset(*src, 1, -1);
        for (int32_t y = 0; y < 3; ++y)
            for (int32_t x = 0; x < 4; ++x) {
                KPixelF got = AtF(*dst, x, y);
                KPixelF want = AtF(*src, x - 1, y + 1);  // zero outside
                for (int c = 0; c < 4; ++c)
                    EXPECT_EQ(got[c], want[c]) << x << "," << y << " c" << c;
            }
        delete src;
        delete dst;
    }
}

TEST(RasterCopyOffset, OntoItselfAndAcrossDepths)
{
    KImage* img = Pattern(5, 4, false);
    KImage* orig = img->Clone();
    img->CopyOffset(*img, -2, 1);
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 5; ++x) ExpectPixel(At(*img, x, y), At(*orig, x + 2, y - 1));

    KImage* floats = KImage::Create(5, 4, true);
    floats->CopyOffset(*orig, 0, 0);
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 5; ++x) {
            KPixelF want;
            KToFloat(At(*orig, x, y), want);
            KPixelF got = AtF(*floats, x, y);
            for (int c = 0; c < 4; ++c) ASSERT_EQ(got[c], want[c]);
        }
    for (KImage* k : {img, orig, floats}) delete k;
}

TEST(RasterFillKeepAlpha, ColourTimesOwnAlpha)
{
    KImage* img = KImage::Create(3, 1, false);
    img->SetPixel(0, 0, KPixel{1, 2, 3, 32768});
    img->SetPixel(1, 0, KPixel{1, 2, 3, 65535});
    img->SetPixel(2, 0, KPixel{1, 2, 3, 0});
    img->FillKeepAlpha(KPixelF{1.0f, 0.5f, 0.0f, 0.3f});  // 65535, 32767, 0
    ExpectPixel(At(*img, 0, 0), {32768, 16384, 0, 32768});
    ExpectPixel(At(*img, 1, 0), {65535, 32767, 0, 65535});
    ExpectPixel(At(*img, 2, 0), {0, 0, 0, 0});

    KImage* f = KImage::Create(2, 1, true);
    f->SetPixel(0, 0, KPixelF{9, 9, 9, 0.5f});
    f->SetPixel(1, 0, KPixelF{9, 9, 9, 2.0f});
    f->FillKeepAlpha(KPixelF{1.0f, 0.5f, 2.0f, 0.0f});
    KPixelF a = AtF(*f, 0, 0), b = AtF(*f, 1, 0);
    EXPECT_EQ(a.r, 0.5f);
    EXPECT_EQ(a.g, 0.25f);
    EXPECT_EQ(a.b, 1.0f);
    EXPECT_EQ(a.a, 0.5f);
    EXPECT_EQ(b.b, 4.0f);
    EXPECT_EQ(b.a, 2.0f);
    delete img;
    delete f;
}

TEST(RasterMaskByAlpha, EveryChannelTimesTheMaskAlpha)
{
    KImage* img = Solid(3, 2, {40000, 20000, 65535, 65535});
    KImage* inverse = img->Clone();
    KImage* mask = KImage::Create(2, 1, false);  // smaller: outside it the mask is 0
    mask->SetPixel(0, 0, KPixel{0, 0, 0, 32768});
    mask->SetPixel(1, 0, KPixel{65535, 65535, 65535, 65535});
    img->MaskByAlpha(*mask);
    ExpectPixel(At(*img, 0, 0), {20000, 10000, 32768, 32768});
    ExpectPixel(At(*img, 1, 0), {40000, 20000, 65535, 65535});
    ExpectPixel(At(*img, 2, 0), {0, 0, 0, 0});
    ExpectPixel(At(*img, 0, 1), {0, 0, 0, 0});

    inverse->MaskByInverseAlpha(*mask);
    ExpectPixel(At(*inverse, 0, 0), {20000, 10000, 32767, 32767});
    ExpectPixel(At(*inverse, 1, 0), {0, 0, 0, 0});
    ExpectPixel(At(*inverse, 2, 0), {40000, 20000, 65535, 65535});
    ExpectPixel(At(*inverse, 2, 1), {40000, 20000, 65535, 65535});

    KImage* f = SolidF(2, 1, {1.0f, 0.5f, 2.0f, 1.0f});
    KImage* fmask = SolidF(2, 1, {0, 0, 0, 0.25f});
    f->MaskByAlpha(*fmask);
    ExpectEvery(*f, KPixelF{0.25f, 0.125f, 0.5f, 0.25f});
    for (KImage* k : {img, inverse, mask, f, fmask}) delete k;
}

TEST(RasterTransform, NeutralArgumentsGiveAClone)
{
    for (bool isFloat : {false, true}) {
        KImage* img = Pattern(6, 4, isFloat);
        KImage* same = img->Transform(0.5f, 0.5f, 1.0f, 1.0f, 0.0f);
        ASSERT_NE(same, nullptr);
        EXPECT_NE(same, img);
        EXPECT_NE(same->HostImage(), img->HostImage());
        EXPECT_EQ(Differ(*same, *img), "");
        // Within one float epsilon of neutral counts as neutral.
        KImage* near = img->Transform(0.5f + 1.1920929e-07f, 0.5f, 1.0f - 5.9604645e-08f, 1.0f,
                                      0.0f);
        EXPECT_EQ(Differ(*near, *img), "");
        delete same;
        delete near;
        delete img;
    }
}
