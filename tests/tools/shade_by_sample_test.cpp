// Shade By Sample: normals address a shading map as a sphere or a spherical
// map, turned by the rotation; without map or normals the image is copied.
#include "support.h"

using namespace zvtest;

namespace {

// One row of half-grey pixels of alpha 40000 (0.75), one normal each; the
// normal channels come shuffled after a depth channel.
Img Normals(const std::vector<KXYZ>& normals, bool isFloat)
{
    const std::vector<int> aux = {host::ChanZ, host::ChanNormalZ, host::ChanNormalX, host::ChanNormalY};
    Img img(KImage::Wrap(Blank(static_cast<int>(normals.size()), 1, isFloat, aux).release(), true));
    for (int32_t x = 0; x < img->width; ++x) {
        if (isFloat) img->SetPixel(x, 0, KPixelF{0.5f, 0.5f, 0.5f, 0.75f});
        else img->SetPixel(x, 0, KPixel{32768, 32768, 32768, 40000});
        img->AuxPlane(host::ChanZ)[x] = 10.0f + x;
        img->AuxPlane(host::ChanNormalX)[x] = normals[x].x;
        img->AuxPlane(host::ChanNormalY)[x] = normals[x].y;
        img->AuxPlane(host::ChanNormalZ)[x] = normals[x].z;
    }
    return img;
}

// A map whose red tells the pixel: n = 1 + x + w y, as n x 1000 or n / 16.
Img Map(int32_t w, int32_t h, bool isFloat)
{
    Img img(KImage::Create(w, h, isFloat));
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            const int32_t n = 1 + x + w * y;
            if (isFloat) img->SetPixel(x, y, KPixelF{n / 16.0f, 1.0f, 0.0f, 1.0f});
            else img->SetPixel(x, y, KPixel{1000u * n, 65535, 0, 65535});
        }
    return img;
}

struct Shade : Tool<KEffectPosition> {
    Shade() : Tool("ZV_ShadeBySample") {}
    ~Shade() { SetMap(nullptr); }  // the map belongs to the test, not to the tool
    void SetMap(KImage* map) { Field<KImage*>(2) = map; }
    // The red of each pixel of `img` shaded.
    template <class P> std::vector<decltype(P::r)> Reds(const Img& img)
    {
        std::vector<decltype(P::r)> reds;
        for (const P& p : Pixels<P>(*Run(img.get()))) reds.push_back(p.r);
        return reds;
    }
};

TEST(ShadeBySample, SphereNormalsAddressTheMapAtBothDepths)
{
    Shade t;
    Img mapI = Map(3, 3, false), mapF = Map(3, 3, true);
    Img ints = Normals({{0, 0, 1}, {1, 0, 0}, {0, 1, 0}, {0, 0, 2}}, false), floats = Normals({{0, 0, 1}, {0, 1, 0}}, true);
    t.SetMap(mapI.get());
    // Facing: the centre; right: the right column; up: the top row; normalised first.
    auto half = [](uint32_t v) { return KScaleInt(32768, v); };
    EXPECT_EQ(t.Reds<KPixel>(ints), (std::vector<uint32_t>{half(5000), half(6000), half(2000), half(5000)}));
    Img out = t.Run(ints.get());
    EXPECT_EQ(zvtest::At<KPixel>(*out, 0, 0).a, 40000u);  // alpha stays
    EXPECT_EQ(out->AuxPlane(host::ChanZ)[1], 11.0f);
    t.SetMap(mapF.get());
    EXPECT_EQ(t.Reds<KPixelF>(floats)[1], 0.5f * 2.0f / 16.0f);

    t.SetMap(mapI.get());
    Img facing = Normals({{0, 0, 1}}, false);
    auto& r = t.Field<KTransformValue>("Rota"_id);
    r.rotateY = r.rotateX = 1.5707964f;  // X then Y: the left column
    EXPECT_EQ(t.Reds<KPixel>(facing)[0], half(4000));
    r.rotationOrder = 5;  // Z, Y, X: the top row
    EXPECT_EQ(t.Reds<KPixel>(facing)[0], half(2000));
}

TEST(ShadeBySample, SphericalLongitudeWrapsLatitudeRunsDownAndNothingToShadeCopies)
{
    Shade t;
    t.SetInt("Map Type", 1);
    const float h = std::sqrt(0.5f);
    Img map = Map(4, 3, true);
    t.SetMap(map.get());
    const std::vector<float> reds = t.Reds<KPixelF>(Normals({{0, 0, 1}, {0, 1, 0}, {-h, 0, -h}, {0, 0, -1}}, true));
    EXPECT_EQ(reds[0], 0.5f * 6.5f / 16.0f);                // columns 1 and 2, middle row
    EXPECT_NEAR(reds[1], 0.5f * 2.5f / 16.0f, 1e-6f);       // the pole: top row
    EXPECT_NEAR(reds[2], 0.5f * 5.0f / 16.0f, 1e-6f);       // column 0
    EXPECT_NEAR(reds[3], 0.5f * 6.5f / 16.0f, 1e-6f);       // columns 3 and 0
    // Without a map, or without normals, the image is copied.
    Shade c;
    Img img = Normals({{0, 0, 1}, {0, 1, 0}}, false), plain = Pattern(5, 3, false);
    EXPECT_EQ(Differ(*c.Run(img.get()), *img), "");
    c.SetMap(map.get());
    EXPECT_EQ(Differ(*c.Run(plain.get()), *plain), "");
}

}  // namespace
