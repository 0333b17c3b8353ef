// KImage: edge modes of the pixel read, conversions between the pixel forms,
// geometry, derived images and copies across depths.
#include <gtest/gtest.h>
#include <cmath>
#include <cstdlib>
#include <limits>
#include "host/image.h"
#include "raster/image.h"
#include "support.h"

namespace {

// A 3x2 image whose pixel at x, y holds 1000 * (3y + x + 1) plus the channel
// number, so every read names the pixel it came from.
KPixel Tagged(int32_t x, int32_t y)
{
    uint32_t base = 1000u * uint32_t(3 * y + x + 1);
    return {base, base + 1, base + 2, base + 3};
}

KImage* TaggedImage(bool isFloat)
{
    KImage* img = KImage::Create(3, 2, isFloat);
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 3; ++x) {
            if (isFloat) {
                KPixelF f;
                KToFloat(Tagged(x, y), f);
                img->SetPixel(x, y, f);
            } else {
                img->SetPixel(x, y, Tagged(x, y));
            }
        }
    return img;
}

// Reads as integers; float storage of the tags converts back within one step.
void ExpectReads(const KImage& img, int32_t x, int32_t y, int32_t edges, int32_t wantX,
                 int32_t wantY)
{
    KPixel p;
    img.GetPixel(x, y, p, edges);
    const KPixel want = wantX < 0 ? KPixel{} : Tagged(wantX, wantY);
    for (int c = 0; c < 4; ++c) {
        if (img.IsFloat())
            EXPECT_NEAR(double(p[c]), double(want[c]), 1.0)
                << "at " << x << "," << y << " edges " << edges << " channel " << c;
        else
            EXPECT_EQ(p[c], want[c])
                << "at " << x << "," << y << " edges " << edges << " channel " << c;
    }
}

class RasterImageDepth : public ::testing::TestWithParam<bool> {};

}  // namespace

TEST_P(RasterImageDepth, GetPixelEdgeZeroGivesTheZeroPixelOutside)
{
    KImage* img = TaggedImage(GetParam());
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 3; ++x) ExpectReads(*img, x, y, kEdgeBlack, x, y);
    ExpectReads(*img, -1, 0, kEdgeBlack, -1, 0);
    ExpectReads(*img, 3, 1, kEdgeBlack, -1, 0);
    ExpectReads(*img, 0, -1, kEdgeBlack, -1, 0);
    ExpectReads(*img, 2, 2, kEdgeBlack, -1, 0);
    ExpectReads(*img, -100, 100, kEdgeBlack, -1, 0);
    // An unknown mode reads like mode 0.
    ExpectReads(*img, -1, 0, 7, -1, 0);
    KPixelF f{1, 1, 1, 1};
    img->GetPixel(5, 0, f, kEdgeBlack);
    EXPECT_EQ(f.r, 0.0f);
    EXPECT_EQ(f.a, 0.0f);
    delete img;
}

TEST_P(RasterImageDepth, GetPixelEdgeOneWrapsWithPositiveRemainder)
{
    KImage* img = TaggedImage(GetParam());
    ExpectReads(*img, -1, 0, kEdgeWrap, 2, 0);  // the last column
    ExpectReads(*img, -1, 1, kEdgeWrap, 2, 1);
    ExpectReads(*img, 3, 0, kEdgeWrap, 0, 0);
    ExpectReads(*img, -4, 0, kEdgeWrap, 2, 0);
    ExpectReads(*img, -3, 1, kEdgeWrap, 0, 1);
    ExpectReads(*img, 0, -1, kEdgeWrap, 0, 1);
    ExpectReads(*img, 1, -3, kEdgeWrap, 1, 1);
    ExpectReads(*img, 1, 2, kEdgeWrap, 1, 0);
    ExpectReads(*img, 7, 5, kEdgeWrap, 1, 1);
    ExpectReads(*img, -7, -6, kEdgeWrap, 2, 0);
    delete img;
}

TEST_P(RasterImageDepth, GetPixelEdgeTwoClampsToTheBorder)
{
    KImage* img = TaggedImage(GetParam());
    ExpectReads(*img, 3, 0, kEdgeDuplicate, 2, 0);  // beyond the width: last column
    ExpectReads(*img, 50, 1, kEdgeDuplicate, 2, 1);
    ExpectReads(*img, 1, -1, kEdgeDuplicate, 1, 0);  // above: row 0
    ExpectReads(*img, 1, -40, kEdgeDuplicate, 1, 0);
    ExpectReads(*img, -1, 1, kEdgeDuplicate, 0, 1);
    ExpectReads(*img, 5, -3, kEdgeDuplicate, 2, 0);
    ExpectReads(*img, -10, 10, kEdgeDuplicate, 0, 1);
    delete img;
}

TEST_P(RasterImageDepth, FloatReadOfTheSameEdges)
{
    KImage* img = TaggedImage(GetParam());
    KPixelF inside, wrapped, clamped;
    img->GetPixel(2, 1, inside, kEdgeBlack);
    img->GetPixel(-1, -1, wrapped, kEdgeWrap);
    img->GetPixel(9, 9, clamped, kEdgeDuplicate);
    for (int c = 0; c < 4; ++c) {
        EXPECT_EQ(wrapped[c], inside[c]);
        EXPECT_EQ(clamped[c], inside[c]);
    }
    EXPECT_EQ(inside.r, 6000.0f * 1.5259022e-05f);
    delete img;
}

INSTANTIATE_TEST_SUITE_P(Depths, RasterImageDepth, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Float" : "Int16"; });

TEST(RasterPixel, FloatToIntegerScalesClipsAndTruncates)
{
    EXPECT_EQ(KFloatToInt(1.5f), 65535u);
    EXPECT_EQ(KFloatToInt(1.0f), 65535u);
    EXPECT_EQ(KFloatToInt(-0.2f), 0u);
    EXPECT_EQ(KFloatToInt(0.0f), 0u);
    EXPECT_EQ(KFloatToInt(0.5f), 32767u);     // 32767.5 truncated
    EXPECT_EQ(KFloatToInt(0.25f), 16383u);    // 16383.75
    EXPECT_EQ(KFloatToInt(0.75f), 49151u);    // 49151.25
    EXPECT_EQ(KFloatToInt(std::numeric_limits<float>::quiet_NaN()), 0u);
    EXPECT_EQ(KFloatToInt(std::numeric_limits<float>::infinity()), 65535u);
    EXPECT_EQ(KFloatToInt(-std::numeric_limits<float>::infinity()), 0u);
}

TEST(RasterPixel, IntegerToFloatByTheStatedFactor)
{
    EXPECT_EQ(KIntToFloat(0), 0.0f);
    EXPECT_EQ(KIntToFloat(32768), 32768.0f * 1.5259022e-05f);
    EXPECT_NEAR(KIntToFloat(65535), 1.0f, 1e-6f);
    KPixel p{0, 16384, 32768, 65535};
    KPixelF f;
    KToFloat(p, f);
    EXPECT_EQ(f.g, 16384.0f * 1.5259022e-05f);
    KPixel back;
    KToInt(f, back);
    EXPECT_EQ(back.r, 0u);
    EXPECT_EQ(back.a, 65535u);
    // Every value comes back within one step.
    for (uint32_t v = 0; v <= 65535u; ++v) {
        int32_t r = int32_t(KFloatToInt(KIntToFloat(v)));
        ASSERT_LE(std::abs(int32_t(v) - r), 1) << v;
    }
}

TEST(RasterPixel, ScaleRuleRoundsTheProduct)
{
    EXPECT_EQ(KScaleInt(65535, 65535), 65535u);
    EXPECT_EQ(KScaleInt(65535, 0), 0u);
    EXPECT_EQ(KScaleInt(65535, 32768), 32768u);
    EXPECT_EQ(KScaleInt(65535, 32767), 32767u);
    EXPECT_EQ(KScaleInt(1, 32767), 0u);
    EXPECT_EQ(KScaleInt(2, 32767), 1u);
    EXPECT_EQ(KScaleInt(40000, 32768), 20000u);
    EXPECT_EQ(KDiv65535(1000u * 65535u), 1000u);
    for (uint32_t c = 0; c <= 65535u; c += 257u) ASSERT_EQ(KScaleInt(c, 65535), c);
}

TEST(RasterPixel, SetPixelConvertsAndIgnoresOutside)
{
    KImage* img = KImage::Create(2, 2, false);
    img->SetPixel(0, 0, KPixelF{1.5f, -0.2f, 0.5f, 1.0f});
    img->SetPixel(1, 0, KPixel{70000u, 1u, 2u, 3u});
    img->SetPixel(-1, 0, KPixel{9u, 9u, 9u, 9u});
    img->SetPixel(2, 1, KPixel{9u, 9u, 9u, 9u});
    const uint16_t* row = img->RowW(0);
    EXPECT_EQ(row[0], 65535);
    EXPECT_EQ(row[1], 0);
    EXPECT_EQ(row[2], 32767);
    EXPECT_EQ(row[3], 65535);
    EXPECT_EQ(row[4], 65535);  // clipped
    EXPECT_EQ(row[5], 1);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(img->RowW(1)[i], 0);
    delete img;

    KImage* f = KImage::Create(1, 1, true);
    f->SetPixel(0, 0, KPixelF{1.5f, -0.2f, 0.5f, 1.0f});
    EXPECT_EQ(f->RowF(0)[0], 1.5f);  // float pixels are not clipped
    EXPECT_EQ(f->RowF(0)[1], -0.2f);
    KPixel p;
    f->GetPixel(0, 0, p, kEdgeBlack);
    EXPECT_EQ(p.r, 65535u);
    EXPECT_EQ(p.g, 0u);
    EXPECT_EQ(p.b, 32767u);
    delete f;
}

TEST(RasterImageGeometry, DepthAndAspects)
{
    KImage* i = KImage::Create(4, 3, false);
    KImage* f = KImage::Create(4, 3, true, 2.0f, 1.0f);
    EXPECT_FALSE(i->IsFloat());
    EXPECT_TRUE(f->IsFloat());
    EXPECT_GT(f->depth, 6);
    EXPECT_LE(i->depth, 6);
    EXPECT_EQ(i->PixelAspect(), 1.0f);
    EXPECT_EQ(f->PixelAspect(), 2.0f);
    EXPECT_EQ(f->PictureAspect(), 2.0f * 4.0f / 3.0f);
    EXPECT_TRUE(i->owned);
    delete i;
    delete f;

    KImage* hd = KImage::Create(1920, 1080, false);
    EXPECT_EQ(hd->PictureAspect(), 1920.0f / 1080.0f);
    delete hd;
}

TEST(RasterImageGeometry, FullSizeAndProxyScale)
{
    KImage* img = KImage::Create(500, 281, false);
    EXPECT_EQ(img->FullWidth(), 500);  // not set: the current size
    EXPECT_EQ(img->FullHeight(), 281);
    EXPECT_EQ(img->ProxyScale(), 1.0f);

    img->HostImage()->SetFullSize(1000, 562);
    EXPECT_EQ(img->FullWidth(), 1000);
    EXPECT_EQ(img->FullHeight(), 562);
    EXPECT_EQ(img->ProxyScale(), 2.0f);

    img->HostImage()->SetFullSize(1500, 843);
    EXPECT_EQ(img->ProxyScale(), 3.0f);

    // Never below 1.
    img->HostImage()->SetFullSize(250, 140);
    EXPECT_EQ(img->ProxyScale(), 1.0f);
    delete img;
}

TEST(RasterImageDerived, CreateLikeKeepsFormatAndTakesNewSize)
{
    KImage* src = KImage::Create(5, 4, true, 2.0f, 1.0f);
    src->SetPixel(1, 1, KPixelF{1, 1, 1, 1});

    KImage* same = src->CreateLike();
    EXPECT_EQ(same->width, 5);
    EXPECT_EQ(same->height, 4);
    EXPECT_TRUE(same->IsFloat());
    EXPECT_EQ(same->xAspect, 2.0f);
    EXPECT_EQ(same->yAspect, 1.0f);
    EXPECT_TRUE(same->owned);
    EXPECT_NE(same->HostImage(), src->HostImage());
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 20; ++x) ASSERT_EQ(same->RowF(y)[x], 0.0f);

    KImage* sized = src->CreateLike(7, 0);
    EXPECT_EQ(sized->width, 7);
    EXPECT_EQ(sized->height, 4);
    KImage* negative = src->CreateLike(-2, 9);
    EXPECT_EQ(negative->width, 5);
    EXPECT_EQ(negative->height, 9);

    KImage* aspect = src->CreateLike(0, 0, 1.0f, 3.0f);
    EXPECT_EQ(aspect->xAspect, 1.0f);
    EXPECT_EQ(aspect->yAspect, 3.0f);
    KImage* noAspect = src->CreateLike(0, 0, 0.0f, -1.0f);
    EXPECT_EQ(noAspect->xAspect, 2.0f);
    EXPECT_EQ(noAspect->yAspect, 1.0f);

    for (KImage* k : {same, sized, negative, aspect, noAspect, src}) delete k;
}

TEST(RasterImageDerived, CloneIsAnIndependentCopy)
{
    for (bool isFloat : {false, true}) {
        KImage* src = zvtest::Pattern(6, 5, isFloat);
        KImage* copy = src->Clone();
        EXPECT_TRUE(copy->owned);
        EXPECT_NE(copy->HostImage(), src->HostImage());
        EXPECT_EQ(zvtest::Differ(*copy, *src), "");
        copy->SetPixel(0, 0, KPixel{1, 2, 3, 4});
        EXPECT_NE(zvtest::Differ(*copy, *src), "");
        KImage* alsoCopy = src->Copy();
        EXPECT_EQ(zvtest::Differ(*alsoCopy, *src), "");
        delete alsoCopy;
        delete copy;
        delete src;
    }
}

TEST(RasterImageDerived, VectorLikeAddsBothVectorChannels)
{
    KImage* src = KImage::Create(4, 3, false);
    EXPECT_EQ(src->AuxCount(), 0);
    EXPECT_EQ(src->AuxPlane(22), nullptr);

    KImage* vec = src->CreateVectorLike();
    EXPECT_EQ(vec->width, 4);
    EXPECT_EQ(vec->height, 3);
    EXPECT_FALSE(vec->IsFloat());
    ASSERT_EQ(vec->AuxCount(), 2);
    EXPECT_EQ(vec->AuxChannel(0), 22);
    EXPECT_EQ(vec->AuxChannel(1), 23);
    ASSERT_NE(vec->AuxPlane(22), nullptr);
    ASSERT_NE(vec->AuxPlane(23), nullptr);
    EXPECT_NE(vec->AuxPlane(22), vec->AuxPlane(23));
    for (int i = 0; i < 12; ++i) EXPECT_EQ(vec->AuxPlane(23)[i], 0.0f);

    // Like of a vector image keeps the channels; a second vector-like does not double them.
    KImage* like = vec->CreateLike();
    EXPECT_NE(like->AuxPlane(23), nullptr);
    KImage* again = vec->CreateVectorLike();
    EXPECT_EQ(again->AuxCount(), 2);

    for (KImage* k : {src, vec, like, again}) delete k;
}

TEST(RasterImageDerived, WrapAndReplaceIn)
{
    EXPECT_EQ(KImage::Wrap(nullptr, true), nullptr);

    KImage* a = KImage::Create(2, 2, false);
    KImage* b = KImage::Create(2, 2, false);
    KImage* slot = a;
    KImage::ReplaceIn(&slot, b);  // frees a
    EXPECT_EQ(slot, b);
    KImage::ReplaceIn(&slot, b);  // the same image stays
    EXPECT_EQ(slot, b);
    KImage::ReplaceIn(&slot, nullptr);
    EXPECT_EQ(slot, nullptr);

    // A released wrapper leaves the host image to its other owner.
    KImage* owner = KImage::Create(2, 2, false);
    KImage* view = KImage::Wrap(owner->HostImage(), true);
    view->Release();
    delete view;
    owner->SetPixel(1, 1, KPixel{5, 5, 5, 5});
    KPixel p;
    owner->GetPixel(1, 1, p, kEdgeBlack);
    EXPECT_EQ(p.r, 5u);
    delete owner;
}

TEST(RasterImageCopy, CopyFromWithinAndAcrossDepths)
{
    KImage* ints = zvtest::Pattern(5, 3, false);
    KImage* floats = KImage::Create(5, 3, true);
    floats->CopyFrom(*ints);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 5; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(floats->RowF(y)[4 * x + c],
                          float(ints->RowW(y)[4 * x + c]) * 1.5259022e-05f);

    // Back to integers by the float-to-integer rule: values above 1 and below 0 clip.
    floats->SetPixel(2, 1, KPixelF{1.25f, -0.5f, 0.5f, 0.25f});
    KImage* back = KImage::Create(5, 3, false);
    back->CopyFrom(*floats);
    KPixel p;
    back->GetPixel(2, 1, p, kEdgeBlack);
    EXPECT_EQ(p.r, 65535u);
    EXPECT_EQ(p.g, 0u);
    EXPECT_EQ(p.b, 32767u);
    EXPECT_EQ(p.a, 16383u);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 5; ++x) {
            if (x == 2 && y == 1) continue;
            for (int c = 0; c < 4; ++c) {
                int32_t d = int32_t(back->RowW(y)[4 * x + c]) - int32_t(ints->RowW(y)[4 * x + c]);
                ASSERT_LE(std::abs(d), 1);
            }
        }

    KImage* sameDepth = KImage::Create(5, 3, false);
    sameDepth->CopyFrom(*ints);
    EXPECT_EQ(zvtest::Differ(*sameDepth, *ints), "");
    KImage* floatCopy = KImage::Create(5, 3, true);
    floatCopy->CopyFrom(*floats);
    EXPECT_EQ(zvtest::Differ(*floatCopy, *floats), "");

    for (KImage* k : {ints, floats, back, sameDepth, floatCopy}) delete k;
}

TEST(RasterImageCopy, CopyRowFromTouchesOneRow)
{
    for (bool targetFloat : {false, true}) {
        KImage* src = zvtest::Pattern(4, 3, !targetFloat);
        KImage* dst = KImage::Create(4, 3, targetFloat);
        dst->CopyRowFrom(*src, 1);
        dst->CopyRowFrom(*src, -1);  // outside: nothing
        dst->CopyRowFrom(*src, 3);
        for (int32_t y = 0; y < 3; ++y)
            for (int32_t x = 0; x < 4; ++x) {
                KPixel got, want;
                dst->GetPixel(x, y, got, kEdgeBlack);
                src->GetPixel(x, y, want, kEdgeBlack);
                for (int c = 0; c < 4; ++c) {
                    if (y == 1) EXPECT_LE(std::abs(int32_t(got[c]) - int32_t(want[c])), 1);
                    else EXPECT_EQ(got[c], 0u);
                }
            }
        delete src;
        delete dst;
    }
}
