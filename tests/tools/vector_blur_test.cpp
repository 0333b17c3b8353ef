// Vector Blur: still pixels stay as they are, a moving one spreads evenly
// along its vector, and a source without vectors (or "LIC") passes unchanged.
#include "support.h"

using namespace zvtest;

namespace {

// `img` with both vector planes set to (vx, vy) everywhere.
Img WithVectors(const Img& img, float vx, float vy)
{
    Img out(img->CreateVectorLike());
    out->CopyFrom(*img);
    std::fill_n(out->AuxPlane(host::ChanVectorX), img->width * img->height, vx);
    std::fill_n(out->AuxPlane(host::ChanVectorY), img->width * img->height, vy);
    return out;
}

TEST(VectorBlur, ZeroVectorsLeaveThePicture)
{
    for (bool isFloat : {false, true}) {
        Img plate = WithVectors(Pattern(9, 6, isFloat), 0.0f, 0.0f);
        Tool<KEffectImage> t("ZV_VectorBlur");
        t.Set("Image is pre-multiplied", 0);
        Img out = t.Run(plate.get(), true);
        EXPECT_EQ(Differ(*out, *plate), "") << isFloat;
        EXPECT_EQ(out->AuxPlane(host::ChanVectorX)[5], 0.0f);
        // Dividing by alpha and multiplying back may move a code or two.
        t.Set("Image is pre-multiplied", 1);
        EXPECT_LE(MaxDiff(*t.Run(plate.get()), *plate, 0, 0, 9, 6), isFloat ? 1e-6f : 2.5f / 65535.0f) << isFloat;
    }
}

// A vector of 4 pixels spreads a lone white pixel over the five columns about
// it, a fifth in each; alpha stays whole; the vectors stay.
TEST(VectorBlur, AMovingPixelSpreadsEvenlyAlongItsVector)
{
    Img plate = WithVectors(Made(21, 11, true, [](int32_t x, int32_t y) {
        return x == 10 && y == 5 ? KPixelF{1.0f, 1.0f, 1.0f, 1.0f} : KPixelF{0.0f, 0.0f, 0.0f, 1.0f};
    }), 0.0f, 4.0f);
    Tool<KEffectImage> t("ZV_VectorBlur");
    t.Set("Swap X/Y", 1);  // (0, 4) read as (4, 0): along the row
    Img out = t.Run(plate.get(), true);
    for (int32_t x = 0; x < 21; ++x) {
        const KPixelF p = At<KPixelF>(*out, x, 5);
        EXPECT_NEAR(p.r, x >= 8 && x <= 12 ? 0.2f : 0.0f, 1e-6f) << x;
        EXPECT_NEAR(p.a, 1.0f, x >= 2 && x <= 18 ? 1e-6f : 0.5f) << x;  // the ends lose what spreads past them
    }
    EXPECT_NEAR(At<KPixelF>(*out, 10, 4).r, 0.0f, 1e-6f);
    EXPECT_EQ(out->AuxPlane(host::ChanVectorY)[0], 4.0f);
    // The same along the column without the swap.
    t.Set("Swap X/Y", 0);
    out = t.Run(plate.get());
    EXPECT_NEAR(At<KPixelF>(*out, 10, 7).r, 0.2f, 1e-6f);
    EXPECT_NEAR(At<KPixelF>(*out, 12, 5).r, 0.0f, 1e-6f);
}

// Strokes of every length and slant overlap across rows: the sums come out
// the same whatever number of threads adds them.
TEST(VectorBlur, AnyNumberOfThreadsGivesTheSameSums)
{
    for (bool isFloat : {false, true}) {
        Img plate = WithVectors(Pattern(64, 48, isFloat), 0.0f, 0.0f);
        for (int32_t i = 0; i < 64 * 48; ++i) {
            plate->AuxPlane(host::ChanVectorX)[i] = float(i % 23) - 11.0f;
            plate->AuxPlane(host::ChanVectorY)[i] = float(i % 17) * 1.5f - 12.0f;
        }
        Tool<KEffectImage> t("ZV_VectorBlur");
        host::SetThreadCount(1);
        Img one = t.Run(plate.get(), true);
        host::SetThreadCount(2);
        Img two = t.Run(plate.get(), true);
        host::SetThreadCount(0);
        EXPECT_EQ(Differ(*one, *two), "") << isFloat;
        EXPECT_EQ(Differ(*one, *t.Run(plate.get(), false)), "") << isFloat;
    }
}

TEST(VectorBlur, WithoutVectorsOrWithLICThePicturePasses)
{
    Img plate = Pattern(6, 4, false);
    Tool<KEffectImage> t("ZV_VectorBlur");
    EXPECT_EQ(Differ(*t.Run(plate.get()), *plate), "");
    Img moving = WithVectors(plate, 3.0f, 1.0f);
    t.Set("Apply", 1);
    EXPECT_EQ(Differ(*t.Run(moving.get()), *moving), "");
}

}  // namespace
