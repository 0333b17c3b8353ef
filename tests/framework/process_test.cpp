// Each image family through its process: integer and float, awkward sizes,
// channel switches, pre-divide, call order, serial against threaded.
#include <atomic>
#include "support.h"

using namespace zvtest;

namespace {

const std::pair<int, int> kSizes[] = {{1, 1}, {3, 2}, {257, 129}};

struct Calls {
    std::atomic<int> start{0}, stop{0}, jobs{0}, jobsAfterStop{0};
};

// Rotates the colour channels and halves green; alpha passes.
struct KEffectRotate : KEffectColor {
    explicit KEffectRotate(Calls* c = nullptr, bool ok = true) : calls(c), startOk(ok) {}
    bool Start(KImage* in, KImage** out, void* extras) override
    {
        KEffectImage::Start(in, out, extras);
        if (calls) ++calls->start;
        return startOk;
    }
    void Stop(KImage** out) override
    {
        if (calls) ++calls->stop;
        KEffectImage::Stop(out);
    }
    void ProcessColor(KPixelF& out, const KPixelF& in) override
    {
        if (calls) {
            ++calls->jobs;
            if (calls->stop) ++calls->jobsAfterStop;
        }
        out = {in.b, in.r, in.g * 0.5f, in.a};
    }
    Calls* calls;
    bool startOk;
};

class KEffectSame : public KEffectColor {
    void ProcessColor(KPixelF& o, const KPixelF& i) override { o = i; }
};

// Squares colour: shows pre-divide and post-multiply.
struct KEffectSquare : KEffectColor {
    void ProcessColor(KPixelF& out, const KPixelF& in) override { out = {in.r * in.r, in.g * in.g, in.b * in.b, in.a}; }
};

TEST(FrameworkProcessColor, MatchesPerPixelResultAtEverySizeAndDepth)
{
    for (bool isFloat : {false, true})
        for (auto [w, h] : kSizes) {
            Img src = Pattern(w, h, isFloat);
            KEffectRotate effect;
            Img out = RunEffect(effect, src.get(), Settings(isFloat), true);
            for (int32_t y = 0; y < h; ++y)
                for (int32_t x = 0; x < w; ++x) {
                    const KPixelF in = At<KPixelF>(*src, x, y);
                    KPixelF want{in.b, in.r, in.g * 0.5f, in.a};
                    if (!isFloat) {
                        // The integer path goes through the default conversions.
                        KPixel wi;
                        KToInt(want, wi);
                        KToFloat(wi, want);
                    }
                    ASSERT_EQ(Channels(At<KPixelF>(*out, x, y)), Channels(want)) << w << "x" << h << " at " << x << "," << y;
                }
            EXPECT_EQ(std::pair(effect.width, effect.height), std::pair(w, h));
        }
}

TEST(FrameworkProcessColor, IntegerDefaultConversionDropsOddValuesAboveTwoHundredFiftySix)
{
    // 257 * 1.5259022e-05 * 65535 falls just below 257 and truncates.
    KEffectSame effect;
    const std::vector<KPixel> out = Pixels<KPixel>(
        *RunEffect(effect, Row<KPixel>({{257, 65535, 0, 65535}, {256, 32768, 1, 65535}}).get(), Settings(false), false));
    EXPECT_EQ(Channels(out[0]), Channels(KPixel{256, 65535, 0, 65535}));
    EXPECT_EQ(Channels(out[1]), Channels(KPixel{256, 32768, 1, 65535}));
}

TEST(FrameworkProcessColor, SwitchedOffChannelsKeepTheInputAndPreDivideWrapsTheEffect)
{
    KRenderSettings s;
    for (bool isFloat : {false, true}) {
        Img src = Pattern(5, 3, isFloat);
        s = {.depth = Depth(isFloat), .green = false, .alpha = false};
        KEffectRotate effect;
        Img out = RunEffect(effect, src.get(), s, true);
        for (int32_t y = 0; y < 3; ++y)
            for (int32_t x = 0; x < 5; ++x) {
                const KPixelF in = At<KPixelF>(*src, x, y), got = At<KPixelF>(*out, x, y);
                EXPECT_EQ(std::pair(got.g, got.a), std::pair(in.g, in.a));
                EXPECT_TRUE(!isFloat || (got.r == in.b && got.b == in.g * 0.5f)) << x << "," << y;
            }
    }
    s = {.depth = Depth(true), .preDivide = true};
    KEffectSquare square;
    Img f = Row<KPixelF>({{0.25f, 0.25f, 0.25f, 0.5f}});
    EXPECT_EQ(Channels(At<KPixelF>(*RunEffect(square, f.get(), s, false), 0, 0)),
              Channels(KPixelF{0.125f, 0.125f, 0.125f, 0.5f}));  // (0.25 / 0.5)^2 * 0.5
    s.preDivide = false;
    EXPECT_EQ(At<KPixelF>(*RunEffect(square, f.get(), s, false), 0, 0).r, 0.0625f);

    s = {.depth = Depth(false), .preDivide = true};
    // 16384 -> 32768 divided; squared through floats -> 16384; times alpha -> 8192.
    EXPECT_EQ(Channels(At<KPixel>(*RunEffect(square, Row<KPixel>({{16384, 16384, 16384, 32768}}).get(), s, false), 0, 0)),
              Channels(KPixel{8192, 8192, 8192, 32768}));
}

TEST(FrameworkProcessColor, SuperSamplingAveragesAndTakesSwitchedOffChannelsFromTheLastSample)
{
    // Alpha 1 only at (1, 0): the last of the 2x2 samples of pixel (0, 0) sits
    // at (0.25, 0.25), where bilinear alpha is 0.25 * 0.75.
    Img src = Made(2, 2, true, [](int32_t x, int32_t y) { return KPixelF{0, 0, 0, x == 1 && y == 0 ? 1.0f : 0.0f}; });
    KRenderSettings s = {.depth = Depth(true), .alpha = false, .superSampling = 2};
    KEffectRotate effect;
    Img out = RunEffect(effect, src.get(), s, true);
    EXPECT_FLOAT_EQ(At<KPixelF>(*out, 0, 0).a, 0.1875f);
    EXPECT_FLOAT_EQ(At<KPixelF>(*out, 1, 1).a, 0.0f);  // the last sample of (1, 1) is clamped to itself

    for (bool isFloat : {false, true}) {
        Img row = isFloat ? Row<KPixelF>({{}, {1.0f, 1.0f, 1.0f, 1.0f}}) : Row<KPixel>({{}, {65535, 65535, 65535, 65535}});
        s = {.depth = Depth(isFloat), .superSampling = 2};
        KEffectSame same;
        // Samples at x -0.25 (clamped to 0) and 0.25: 0 and 0.25, twice each.
        EXPECT_NEAR(At<KPixelF>(*RunEffect(same, row.get(), s, false), 0, 0).r, 0.125f, isFloat ? 1e-6f : 2e-5f);
    }
}

TEST(FrameworkProcessColor, CallOrderAndStartsThatDoNotRun)
{
    Calls calls;
    KEffectRotate effect(&calls);
    Img src = Pattern(4, 3, false);
    RunEffect(effect, src.get(), Settings(false), true);
    EXPECT_EQ(std::vector<int>({calls.start, calls.jobs, calls.stop, calls.jobsAfterStop}),
              std::vector<int>({1, 12, 1, 0}));

    // All switches off: a copy without Start or Stop. A failed Start: a copy, still stopped.
    for (bool threaded : {false, true})
        for (bool isFloat : {false, true}) {
            Calls off, failed;
            KEffectRotate a(&off), b(&failed, false);
            Img in = Pattern(7, 5, isFloat);
            KRenderSettings s = Settings(isFloat);
            EXPECT_EQ(Differ(*RunEffect(b, in.get(), s, threaded), *in), "");
            s.red = s.green = s.blue = s.alpha = false;
            EXPECT_EQ(Differ(*RunEffect(a, in.get(), s, threaded), *in), "");
            EXPECT_EQ(off.start + off.stop + off.jobs, 0);
            EXPECT_EQ(std::vector<int>({failed.start, failed.jobs, failed.stop}), std::vector<int>({1, 0, 1}));
        }
}

// Writes its position into the colour: red x / 8, green y / 8.
struct KEffectCoords : KEffectPixel {
    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image) override
    {
        out = {x / 8.0f, y / 8.0f, 0.25f, 1.0f};
    }
};

TEST(FrameworkProcessPixel, BothDepthsAndTheKeepRule)
{
    for (bool isFloat : {false, true})
        for (auto [w, h] : kSizes) {
            Img src = Pattern(w, h, isFloat);
            KRenderSettings s = {.depth = Depth(isFloat), .blue = false};
            KEffectCoords effect;
            Img out = RunEffect(effect, src.get(), s, true);
            for (int32_t y = 0; y < h; y += 7)
                for (int32_t x = 0; x < w; x += 5) {
                    const KPixel in = At<KPixel>(*src, x, y), got = At<KPixel>(*out, x, y);
                    // Blue switched off: kept from the source.
                    EXPECT_EQ(Channels(got), Channels(KPixel{KFloatToInt(x / 8.0f), KFloatToInt(y / 8.0f), in.b, 65535}));
                }
        }
}

// Writes its position: red px, green py.
struct KEffectWhere : KEffectPosition {
    void ProcessPosition(KPositionPixel& out, const KPositionPixel& in, const KPosition& p) override
    {
        out = in;
        out.r = p.x;
        out.g = p.y;
    }
};

TEST(FrameworkProcessPosition, PositionsInUnitsOfWidthAndTheOffCentreSuperSampleGrid)
{
    Img wide(KImage::Create(4, 2, true, 2.0f, 1.0f));  // picture aspect 4
    KEffectWhere effect;
    const KPixelF p = At<KPixelF>(*RunEffect(effect, wide.get(), Settings(true), true), 3, 1);
    EXPECT_FLOAT_EQ(p.r, 3.0f / 4.0f);
    EXPECT_FLOAT_EQ(p.g, 1.0f / (2.0f * 4.0f));

    Img square(KImage::Create(4, 4, true));
    KRenderSettings s = {.depth = Depth(true), .superSampling = 2};
    Img out = RunEffect(effect, square.get(), s, false);
    // fx = 0.5 / 4; start (0 - 0.5 * fx) / 4; samples start and start + fx.
    EXPECT_FLOAT_EQ(At<KPixelF>(*out, 0, 0).r, 0.046875f);
    EXPECT_FLOAT_EQ(At<KPixelF>(*out, 2, 0).r, (2.0f - 0.0625f) / 4.0f + 0.0625f);
}

TEST(FrameworkProcessPosition, IntegerPathPreDivideAndExtraChannels)
{
    Img src(KImage::Wrap(Blank(3, 2, false, {host::ChanZ}).release(), true));
    src->SetPixel(1, 1, KPixel{10000, 20000, 30000, 32768});
    src->AuxPlane(host::ChanZ)[4] = 7.5f;
    KRenderSettings s = {.depth = Depth(false), .green = false, .preDivide = true};
    class Keep : public KEffectPosition {
        void ProcessPositionInt(KPositionPixelInt& out, const KPositionPixelInt& in, const KPosition&) override
        {
            out = in;
            out.r = 65535;
        }
    } effect;
    Img out = RunEffect(effect, src.get(), s, true);
    const KPixel p = At<KPixel>(*out, 1, 1);
    EXPECT_EQ(p.r, 32768u);  // 65535 post-multiplied by alpha 32768
    EXPECT_EQ(p.g, 20000u);  // kept, divided then multiplied back
    EXPECT_EQ(out->AuxPlane(host::ChanZ)[4], 7.5f);
}

// Two passes: pass 0 copies rows into scratch, pass 1 writes each target row
// from the scratch rows below it, so it fails if the passes overlap.
struct KEffectTwoPass : KEffectThreads {
    bool Start(KImage* in, KImage** out, void* extras) override
    {
        KEffectImage::Start(in, out, extras);
        scratch.assign(size_t(in->width) * in->height * 4, -1.0f);
        return true;
    }
    int32_t GetPassCount() override { return 2; }
    int32_t GetJobCount(int32_t pass) override { return height; }
    void ProcessJob(int32_t pass, int32_t y, KImage* src, KImage* dst) override
    {
        float* row = scratch.data() + size_t(y) * width * 4;
        if (pass == 0) {
            for (int32_t x = 0; x < width; ++x) {
                const KPixelF p = At<KPixelF>(*src, x, y);
                for (int c = 0; c < 4; ++c) row[4 * x + c] = p[c];
            }
            return;
        }
        const float* below = scratch.data() + size_t(y + 1 < height ? y + 1 : y) * width * 4;
        for (int32_t x = 0; x < width; ++x) dst->SetPixel(x, y, KPixelF{below[4 * x], row[4 * x + 1], 0.0f, 1.0f});
    }
    std::vector<float> scratch;
};

TEST(FrameworkProcessThreads, PassesAreSeparatedJobCountsAskedAndPostBlurThreadedOnly)
{
    for (bool isFloat : {false, true}) {
        Img src = Pattern(257, 129, isFloat);
        KEffectTwoPass a, b;
        Img serial = RunEffect(a, src.get(), Settings(isFloat), false);
        Img threaded = RunEffect(b, src.get(), Settings(isFloat), true);
        EXPECT_EQ(Differ(*serial, *threaded), "");
        EXPECT_EQ(At<KPixelF>(*threaded, 10, 20).r, At<KPixelF>(*src, 10, 21).r);
    }
    // A serial run asks the job count of pass 0 for every pass.
    struct Counting : KEffectThreads {
        int32_t GetPassCount() override { return 2; }
        int32_t GetJobCount(int32_t pass) override { return pass == 0 ? 1 : 5; }
        void ProcessJob(int32_t pass, int32_t, KImage*, KImage*) override { ++perPass[pass]; }
        std::atomic<int> perPass[2] = {0, 0};
    };
    Img small = Pattern(3, 5, false);
    Counting serial, threaded;
    RunEffect(serial, small.get(), Settings(false), false);
    RunEffect(threaded, small.get(), Settings(false), true);
    EXPECT_EQ(serial.perPass[1], 1);
    EXPECT_EQ(threaded.perPass[1], 5);
    // The post blur runs on the threaded path only.
    class Flat : public KEffectThreads {
        void ProcessJob(int32_t, int32_t, KImage* s, KImage* t) override { t->CopyFrom(*s); }
    };
    Img dot(KImage::Create(9, 9, true));
    dot->SetPixel(4, 4, KPixelF{1.0f, 1.0f, 1.0f, 1.0f});
    KRenderSettings s = {.depth = Depth(true), .postBlur = 2.0f};
    Flat a, b;
    EXPECT_EQ(Differ(*RunEffect(a, dot.get(), s, false), *dot), "");
    Img blurred = RunEffect(b, dot.get(), s, true);
    EXPECT_LT(At<KPixelF>(*blurred, 4, 4).r, 1.0f);
    EXPECT_GT(At<KPixelF>(*blurred, 5, 4).r, 0.0f);
}

// Shifts the picture right by `shift` of its width; nothing left of 0. No
// shift is the identity, everywhere.
struct KEffectShift : KEffectWarp {
    explicit KEffectShift(float by = 0.25f) : shift(by) {}
    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        out = {in.x - shift, in.y};
        return shift == 0.0f || out.x >= 0.0f;
    }
    float shift;
};

TEST(FrameworkProcessInverse, IdentityKeepsThePictureWithEachFilter)
{
    for (bool isFloat : {false, true})
        for (auto [w, h] : kSizes)
            for (int32_t filter : {1, 2}) {
                Img src = Pattern(w, h, isFloat);
                KRenderSettings s = {.depth = Depth(isFloat), .filter = filter, .edges = kEdgeDuplicate};
                KEffectShift identity(0.0f);
                EXPECT_LE(MaxDiff(*RunEffect(identity, src.get(), s, true), *src, 0, 0, w, h), 2e-5f)
                    << w << "x" << h << " filter " << filter;
            }
}

TEST(FrameworkProcessInverse, FailedMappingGivesTheZeroPixelAndMaskKeepsOwnPosition)
{
    Img src = Pattern(8, 4, false);
    KRenderSettings s = {.depth = Depth(false), .filter = 0};
    KEffectShift effect(3.0f / 7.0f);  // three pixels
    Img out = RunEffect(effect, src.get(), s, true);
    EXPECT_EQ(At<KPixel>(*out, 2, 1).a, 0u);
    EXPECT_EQ(At<KPixel>(*out, 5, 1).r, At<KPixel>(*src, 2, 1).r);

    // Where the mask's alpha is 0 the pixel is not mapped.
    Img mask = Made(8, 4, false, [](int32_t x, int32_t y) { return KPixel{0, 0, 0, x < 4 && y == 1 ? 65535u : 0u}; });
    s.warpMask = mask.get();
    out = RunEffect(effect, src.get(), s, true);
    EXPECT_EQ(At<KPixel>(*out, 2, 1).a, 0u);                       // masked in: mapped, and fails
    EXPECT_EQ(At<KPixel>(*out, 6, 1).r, At<KPixel>(*src, 6, 1).r);  // masked out: its own pixel
}

TEST(FrameworkProcessInverse, UnderSamplingOneIsExactFourIsCloseAndSeriallyCoversGridRows)
{
    class Affine : public KEffectWarp {
        bool InverseMap(KPosition& o, const KPosition& i) override
        {
            o = {i.x * 0.9f + i.y * 0.1f + 0.01f, i.y * 0.95f - i.x * 0.05f};
            return true;
        }
    };
    for (bool isFloat : {false, true}) {
        Img src = Pattern(257, 129, isFloat);
        KRenderSettings s = {.depth = Depth(isFloat), .edges = kEdgeWrap};
        Affine a, b, c;
        Img exact = RunEffect(a, src.get(), s, true);
        s.underSample = 1;
        EXPECT_EQ(Differ(*exact, *RunEffect(b, src.get(), s, true)), "");
        s.underSample = 4;
        // An affine map interpolates exactly; what remains is rounding at 16.16.
        EXPECT_LT(MaxDiff(*exact, *RunEffect(c, src.get(), s, true), 0, 0, 257, 129), 0.02f);
    }
    // A serial under-sampled run covers only as many rows as the grid has.
    Img src = Pattern(16, 16, false);
    KRenderSettings s = {.depth = Depth(false), .underSample = 4};  // grid 6 x 6
    KEffectShift a(0.0f), b(0.0f);
    Img serial = RunEffect(a, src.get(), s, false), threaded = RunEffect(b, src.get(), s, true);
    EXPECT_NEAR(double(At<KPixel>(*serial, 3, 5).r), double(At<KPixel>(*src, 3, 5).r), 1.0);
    EXPECT_EQ(At<KPixel>(*serial, 3, 6).a, 0u);  // never written
    EXPECT_NEAR(double(At<KPixel>(*threaded, 3, 15).r), double(At<KPixel>(*src, 3, 15).r), 1.0);
}

TEST(FrameworkProcess, SerialAndThreadedRunsAreIdentical)
{
    for (bool isFloat : {false, true}) {
        Img src = Pattern(257, 129, isFloat);
        KRenderSettings s = {.depth = Depth(isFloat), .preDivide = true, .superSampling = 3};
        KEffectRotate c1, c2;
        KEffectCoords p1, p2;
        KEffectWhere q1, q2;
        KEffectShift w1, w2, w3, w4;
        const std::pair<KEffectImage*, KEffectImage*> pairs[] = {{&c1, &c2}, {&p1, &p2}, {&q1, &q2}, {&w1, &w2}, {&w3, &w4}};
        for (auto [a, b] : pairs) {
            if (a == &w3) s.filter = 2;  // the area filter too
            EXPECT_EQ(Differ(*RunEffect(*a, src.get(), s, false), *RunEffect(*b, src.get(), s, true)), "")
                << "family " << a->GetFamily() << " filter " << s.filter;
        }
    }
}

TEST(FrameworkProcess, FamiliesWithoutAProcessGiveNull)
{
    class Number : public KEffectNumber {} number;
    Img img(KImage::Create(2, 2, false));
    KImage* target = img->CreateLike();
    EXPECT_EQ(KCreateProcess(&number, img.get(), &target, KRenderSettings{}), nullptr);
    delete target;
}

}  // namespace
