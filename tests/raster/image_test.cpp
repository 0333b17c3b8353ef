// KImage: edge modes of the pixel read, conversions between the pixel forms,
// geometry, derived images and copies across depths.
#include <limits>
#include "support.h"

using namespace zvtest;

namespace {

// Pixel x, y of a 3x2 image holds 1000 * (3y + x + 1) plus the channel number,
// so every read names the pixel it came from.
KPixel Tagged(int32_t x, int32_t y)
{
    uint32_t base = 1000u * uint32_t(3 * y + x + 1);
    return {base, base + 1, base + 2, base + 3};
}

class RasterImageDepth : public ::testing::TestWithParam<bool> {};

}  // namespace

TEST_P(RasterImageDepth, GetPixelEdgeModes)
{
    Img img = Made(3, 2, GetParam(), Tagged);
    // Where each read comes from; fromX -1 stands for the zero pixel.
    const struct { int32_t x, y, edges, fromX, fromY; } rows[] = {
        // Black: the zero pixel outside; an unknown mode reads like it.
        {2, 1, kEdgeBlack, 2, 1}, {-1, 0, kEdgeBlack, -1, 0}, {3, 1, kEdgeBlack, -1, 0},
        {0, -1, kEdgeBlack, -1, 0}, {2, 2, kEdgeBlack, -1, 0}, {-100, 100, kEdgeBlack, -1, 0}, {-1, 0, 7, -1, 0},
        // Wrap, with a positive remainder.
        {-1, 0, kEdgeWrap, 2, 0}, {-1, 1, kEdgeWrap, 2, 1}, {3, 0, kEdgeWrap, 0, 0}, {-4, 0, kEdgeWrap, 2, 0},
        {-3, 1, kEdgeWrap, 0, 1}, {0, -1, kEdgeWrap, 0, 1}, {1, -3, kEdgeWrap, 1, 1}, {1, 2, kEdgeWrap, 1, 0},
        {7, 5, kEdgeWrap, 1, 1}, {-7, -6, kEdgeWrap, 2, 0},
        // Duplicate: clamped to the border.
        {3, 0, kEdgeDuplicate, 2, 0}, {50, 1, kEdgeDuplicate, 2, 1}, {1, -1, kEdgeDuplicate, 1, 0},
        {1, -40, kEdgeDuplicate, 1, 0}, {-1, 1, kEdgeDuplicate, 0, 1}, {5, -3, kEdgeDuplicate, 2, 0},
        {-10, 10, kEdgeDuplicate, 0, 1},
    };
    for (const auto& r : rows) {
        KPixel p;
        KPixelF f{1, 1, 1, 1};  // the float read of the same pixel
        img->GetPixel(r.x, r.y, p, r.edges);
        img->GetPixel(r.x, r.y, f, r.edges);
        const KPixel want = r.fromX < 0 ? KPixel{} : Tagged(r.fromX, r.fromY);
        for (int c = 0; c < 4; ++c) {
            // Float storage of the tags converts back within one step.
            EXPECT_NEAR(double(p[c]), double(want[c]), GetParam() ? 1.0 : 0.0)
                << r.x << "," << r.y << " edges " << r.edges << " channel " << c;
            EXPECT_EQ(f[c], KIntToFloat(want[c])) << r.x << "," << r.y << " edges " << r.edges;
        }
    }
    KPixelF inside;
    img->GetPixel(2, 1, inside, kEdgeBlack);
    EXPECT_EQ(inside.r, 6000.0f * 1.5259022e-05f);
}

INSTANTIATE_TEST_SUITE_P(Depths, RasterImageDepth, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Float" : "Int16"; });

TEST(RasterPixel, ConversionsBothWaysAndTheScaleRule)
{
    const std::pair<float, uint32_t> cases[] = {
        {1.5f, 65535}, {1.0f, 65535}, {-0.2f, 0}, {0.0f, 0},
        {0.5f, 32767}, {0.25f, 16383}, {0.75f, 49151},  // 32767.5, 16383.75, 49151.25 truncated
        {std::numeric_limits<float>::quiet_NaN(), 0}, {INFINITY, 65535}, {-INFINITY, 0}};
    for (auto [f, i] : cases) EXPECT_EQ(KFloatToInt(f), i) << f;
    EXPECT_EQ(KIntToFloat(32768), 32768.0f * 1.5259022e-05f);
    EXPECT_NEAR(KIntToFloat(65535), 1.0f, 1e-6f);
    for (uint32_t v = 0; v <= 65535u; ++v)  // every value comes back within one step
        ASSERT_LE(std::abs(int32_t(v) - int32_t(KFloatToInt(KIntToFloat(v)))), 1) << v;
    // The scale rule rounds the product.
    const std::tuple<uint32_t, uint32_t, uint32_t> scaled[] = {
        {65535, 65535, 65535}, {65535, 0, 0}, {65535, 32768, 32768}, {65535, 32767, 32767},
        {1, 32767, 0},         {2, 32767, 1}, {40000, 32768, 20000}};
    for (auto [a, b, want] : scaled) EXPECT_EQ(KScaleInt(a, b), want) << a << " x " << b;
    EXPECT_EQ(KDiv65535(1000u * 65535u), 1000u);
    for (uint32_t c = 0; c <= 65535u; c += 257u) ASSERT_EQ(KScaleInt(c, 65535), c);
}

TEST(RasterPixel, SetPixelConvertsClipsIntegersAndIgnoresOutside)
{
    Img img(KImage::Create(2, 2, false));
    img->SetPixel(0, 0, KPixelF{1.5f, -0.2f, 0.5f, 1.0f});
    img->SetPixel(1, 0, KPixel{70000u, 1u, 2u, 3u});
    img->SetPixel(-1, 0, KPixel{9u, 9u, 9u, 9u});
    img->SetPixel(2, 1, KPixel{9u, 9u, 9u, 9u});
    EXPECT_EQ(std::vector<uint16_t>(img->RowW(0), img->RowW(0) + 8),
              (std::vector<uint16_t>{65535, 0, 32767, 65535, 65535, 1, 2, 3}));
    EXPECT_EQ(std::vector<uint16_t>(img->RowW(1), img->RowW(1) + 8), std::vector<uint16_t>(8, 0));

    Img f = Row<KPixelF>({{1.5f, -0.2f, 0.5f, 1.0f}});  // float pixels are not clipped
    EXPECT_EQ(Raw(*f, 0, 0), (std::array<float, 4>{1.5f, -0.2f, 0.5f, 1.0f}));
    EXPECT_EQ(Channels(At<KPixel>(*f, 0, 0)), Channels(KPixel{65535, 0, 32767, 65535}));
}

TEST(RasterImageGeometry, DepthAspectsFullSizeAndProxyScale)
{
    Img i(KImage::Create(4, 3, false)), f(KImage::Create(4, 3, true, 2.0f, 1.0f));
    EXPECT_EQ(std::make_tuple(i->IsFloat(), i->depth <= 6, i->owned, i->PixelAspect()),
              std::make_tuple(false, true, true, 1.0f));
    EXPECT_EQ(std::make_tuple(f->IsFloat(), f->depth > 6, f->PixelAspect(), f->PictureAspect()),
              std::make_tuple(true, true, 2.0f, 2.0f * 4.0f / 3.0f));
    EXPECT_EQ(Img(KImage::Create(1920, 1080, false))->PictureAspect(), 1920.0f / 1080.0f);

    Img img(KImage::Create(500, 281, false));
    EXPECT_EQ(std::pair(img->FullWidth(), img->FullHeight()), std::pair(500, 281));  // not set: the size
    EXPECT_EQ(img->ProxyScale(), 1.0f);
    const std::tuple<int, int, float> sizes[] = {{1000, 562, 2.0f}, {1500, 843, 3.0f}, {250, 140, 1.0f}};  // never below 1
    for (auto [w, h, scale] : sizes) {
        img->HostImage()->SetFullSize(w, h);
        EXPECT_EQ(std::pair(img->FullWidth(), img->FullHeight()), std::pair(w, h));
        EXPECT_EQ(img->ProxyScale(), scale) << w;
    }
}

TEST(RasterImageDerived, CreateLikeKeepsFormatAndTakesNewSizeAndClonesAreIndependent)
{
    Img src(KImage::Create(5, 4, true, 2.0f, 1.0f));
    src->SetPixel(1, 1, KPixelF{1, 1, 1, 1});
    Img same(src->CreateLike());
    EXPECT_TRUE(same->owned && same->HostImage() != src->HostImage());
    EXPECT_EQ(Differ(*same, *Img(KImage::Create(5, 4, true))), "");  // empty, in floats
    // Sizes and aspects not above 0 are taken from the source.
    const struct { int32_t w, h; float xa, ya; int32_t wantW, wantH; float wantXa, wantYa; } rows[] = {
        {0, 0, 0, 0, 5, 4, 2, 1}, {7, 0, 0, 0, 7, 4, 2, 1}, {-2, 9, 0, 0, 5, 9, 2, 1}, {0, 0, 1, 3, 5, 4, 1, 3},
        {0, 0, 0, -1, 5, 4, 2, 1}};
    for (const auto& r : rows) {
        Img like(src->CreateLike(r.w, r.h, r.xa, r.ya));
        EXPECT_EQ(std::vector<float>({float(like->width), float(like->height), like->xAspect, like->yAspect}),
                  std::vector<float>({float(r.wantW), float(r.wantH), r.wantXa, r.wantYa}))
            << r.w << "x" << r.h << " " << r.xa << ":" << r.ya;
    }
    // Clone and Copy are independent copies.
    for (bool isFloat : {false, true}) {
        Img src(Pattern(6, 5, isFloat)), copy(src->Clone()), alsoCopy(src->Copy());
        EXPECT_TRUE(copy->owned && copy->HostImage() != src->HostImage());
        EXPECT_EQ(Differ(*copy, *src), "");
        EXPECT_EQ(Differ(*alsoCopy, *src), "");
        copy->SetPixel(0, 0, KPixel{1, 2, 3, 4});
        EXPECT_NE(Differ(*copy, *src), "");
    }
}

TEST(RasterImageDerived, VectorLikeAddsBothVectorChannelsOnceAndWrappersLeaveTheirImage)
{
    Img src(KImage::Create(4, 3, false));
    EXPECT_TRUE(src->AuxCount() == 0 && src->AuxPlane(22) == nullptr);
    Img vec(src->CreateVectorLike());
    EXPECT_EQ(std::make_tuple(vec->width, vec->height, vec->IsFloat()), std::make_tuple(4, 3, false));
    ASSERT_EQ(vec->AuxCount(), 2);
    EXPECT_EQ(std::pair(vec->AuxChannel(0), vec->AuxChannel(1)), std::pair(22, 23));
    ASSERT_TRUE(vec->AuxPlane(22) && vec->AuxPlane(23) && vec->AuxPlane(22) != vec->AuxPlane(23));
    for (int i = 0; i < 12; ++i) EXPECT_EQ(vec->AuxPlane(23)[i], 0.0f);
    // Like of a vector image keeps the channels; a second vector-like does not double them.
    EXPECT_NE(Img(vec->CreateLike())->AuxPlane(23), nullptr);
    EXPECT_EQ(Img(vec->CreateVectorLike())->AuxCount(), 2);
    // ReplaceIn frees what it replaces, unless it is the same image.
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
    Img owner(KImage::Create(2, 2, false));
    KImage* view = KImage::Wrap(owner->HostImage(), true);
    view->Release();
    delete view;
    owner->SetPixel(1, 1, KPixel{5, 5, 5, 5});
    EXPECT_EQ(At<KPixel>(*owner, 1, 1).r, 5u);
}

TEST(RasterImageCopy, CopyFromWithinAndAcrossDepthsAndOneRow)
{
    Img ints(Pattern(5, 3, false)), floats(KImage::Create(5, 3, true)), back(KImage::Create(5, 3, false));
    floats->CopyFrom(*ints);
    EXPECT_EQ(Differ(*floats, *Pattern(5, 3, true)), "");  // each code times 1.5259022e-05
    // Back to integers by the float-to-integer rule: within one step; values
    // above 1 and below 0 clip.
    back->CopyFrom(*floats);
    EXPECT_LE(MaxDiff(*back, *ints, 0, 0, 5, 3), 1.6e-5f);
    floats->SetPixel(2, 1, KPixelF{1.25f, -0.5f, 0.5f, 0.25f});
    back->CopyFrom(*floats);
    EXPECT_EQ(Channels(At<KPixel>(*back, 2, 1)), Channels(KPixel{65535, 0, 32767, 16383}));
    for (KImage* source : {ints.get(), floats.get()}) {
        Img same(KImage::Create(5, 3, source->IsFloat()));
        same->CopyFrom(*source);
        EXPECT_EQ(Differ(*same, *source), "");
    }
    // CopyRowFrom touches one row, and none outside.
    for (bool targetFloat : {false, true}) {
        Img src(Pattern(4, 3, !targetFloat)), dst(KImage::Create(4, 3, targetFloat));
        dst->CopyRowFrom(*src, 1);
        dst->CopyRowFrom(*src, -1);  // outside: nothing
        dst->CopyRowFrom(*src, 3);
        EXPECT_LE(MaxDiff(*dst, *src, 0, 1, 4, 2), 1.6e-5f);  // within a step across depths
        const Img zero(KImage::Create(4, 3, targetFloat));
        EXPECT_EQ(MaxDiff(*dst, *zero, 0, 0, 4, 1) + MaxDiff(*dst, *zero, 0, 2, 4, 3), 0.0f);  // rows 0 and 2 untouched
    }
}
