// Each image family through its process: integer and float, awkward sizes,
// channel switches, pre-divide, call order, serial against threaded.
#include <gtest/gtest.h>
#include <atomic>
#include <cmath>
#include <mutex>
#include <vector>
#include "host/image.h"
#include "support.h"

using namespace zvtest;

namespace {

struct Calls {
    std::atomic<int> start{0}, stop{0}, jobs{0}, jobsAfterStop{0};
};

// Rotates the colour channels and halves green; alpha passes.
class KEffectRotate : public KEffectColor {
public:
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

// Squares colour: shows pre-divide and post-multiply.
class KEffectSquare : public KEffectColor {
public:
    void ProcessColor(KPixelF& out, const KPixelF& in) override
    {
        out = {in.r * in.r, in.g * in.g, in.b * in.b, in.a};
    }
};

TEST(FrameworkProcessColor, MatchesPerPixelResultAtEverySizeAndDepth)
{
    for (bool isFloat : {false, true})
        for (auto [w, h] : {std::pair{1, 1}, {3, 2}, {257, 129}}) {
            KImage* src = Pattern(w, h, isFloat);
            KEffectRotate effect;
            KImage* out = RunEffect(effect, src, Settings(isFloat), true);
            for (int32_t y = 0; y < h; ++y)
                for (int32_t x = 0; x < w; ++x) {
                    KPixelF in, got;
                    src->GetPixel(x, y, in, 0);
                    out->GetPixel(x, y, got, 0);
                    KPixelF want{in.b, in.r, in.g * 0.5f, in.a};
                    if (!isFloat) {
                        // The integer path goes through the default conversions.
                        KPixel wi;
                        KToInt(want, wi);
                        KToFloat(wi, want);
                    }
                    for (int c = 0; c < 4; ++c)
                        ASSERT_EQ(got[c], want[c]) << w << "x" << h << " at " << x << "," << y;
                }
            EXPECT_EQ(effect.width, w);
            EXPECT_EQ(effect.height, h);
            delete out;
            delete src;
        }
}

TEST(FrameworkProcessColor, IntegerDefaultConversionDropsOddValuesAboveTwoHundredFiftySix)
{
    // 257 * 1.5259022e-05 * 65535 falls just below 257 and truncates.
    KImage* src = KImage::Create(3, 1, false);
    src->SetPixel(0, 0, KPixel{257, 65535, 0, 65535});
    src->SetPixel(1, 0, KPixel{256, 32768, 1, 65535});
    class Identity : public KEffectColor {
        void ProcessColor(KPixelF& o, const KPixelF& i) override { o = i; }
    } effect;
    KImage* out = RunEffect(effect, src, Settings(false), false);
    KPixel p;
    out->GetPixel(0, 0, p, 0);
    EXPECT_EQ(p.r, 256u);
    EXPECT_EQ(p.g, 65535u);
    EXPECT_EQ(p.b, 0u);
    out->GetPixel(1, 0, p, 0);
    EXPECT_EQ(p.r, 256u);
    EXPECT_EQ(p.g, 32768u);
    EXPECT_EQ(p.b, 1u);
    delete out;
    delete src;
}

TEST(FrameworkProcessColor, SwitchedOffChannelsKeepTheInput)
{
    for (bool isFloat : {false, true}) {
        KImage* src = Pattern(5, 3, isFloat);
        KRenderSettings s = Settings(isFloat);
        s.green = false;
        s.alpha = false;
        KEffectRotate effect;
        KImage* out = RunEffect(effect, src, s, true);
        for (int32_t y = 0; y < 3; ++y)
            for (int32_t x = 0; x < 5; ++x) {
                KPixelF in, got;
                src->GetPixel(x, y, in, 0);
                out->GetPixel(x, y, got, 0);
                EXPECT_EQ(got.g, in.g);
                EXPECT_EQ(got.a, in.a);
                if (isFloat) {
                    EXPECT_EQ(got.r, in.b);
                    EXPECT_EQ(got.b, in.g * 0.5f);
                }
            }
        delete out;
        delete src;
    }
}

TEST(FrameworkProcessColor, PreDivideDividesBeforeAndMultipliesAfter)
{
    KImage* f = KImage::Create(1, 1, true);
    f->SetPixel(0, 0, KPixelF{0.25f, 0.25f, 0.25f, 0.5f});
    KRenderSettings s = Settings(true);
    s.preDivide = true;
    KEffectSquare effect;
    KImage* out = RunEffect(effect, f, s, false);
    KPixelF p;
    out->GetPixel(0, 0, p, 0);
    EXPECT_EQ(p.r, 0.125f);  // (0.25 / 0.5)^2 * 0.5
    EXPECT_EQ(p.a, 0.5f);
    delete out;
    s.preDivide = false;
    out = RunEffect(effect, f, s, false);
    out->GetPixel(0, 0, p, 0);
    EXPECT_EQ(p.r, 0.0625f);
    delete out;
    delete f;

    KImage* i = KImage::Create(1, 1, false);
    i->SetPixel(0, 0, KPixel{16384, 16384, 16384, 32768});
    s = Settings(false);
    s.preDivide = true;
    out = RunEffect(effect, i, s, false);
    KPixel q;
    out->GetPixel(0, 0, q, 0);
    // 16384 -> 32768 divided; squared through floats -> 16384; times alpha -> 8192.
    EXPECT_EQ(q.r, 8192u);
    EXPECT_EQ(q.a, 32768u);
    delete out;
    delete i;
}

TEST(FrameworkProcessColor, SuperSamplingTakesSwitchedOffChannelsFromTheLastSample)
{
    // Alpha 1 only at (1, 0): the last of the 2x2 samples of pixel (0, 0) sits
    // at (0.25, 0.25), where bilinear alpha is 0.25 * 0.75.
    KImage* src = KImage::Create(2, 2, true);
    src->SetPixel(1, 0, KPixelF{0.0f, 0.0f, 0.0f, 1.0f});
    KRenderSettings s = Settings(true);
    s.superSampling = 2;
    s.alpha = false;
    KEffectRotate effect;
    KImage* out = RunEffect(effect, src, s, true);
    KPixelF p;
    out->GetPixel(0, 0, p, 0);
    EXPECT_FLOAT_EQ(p.a, 0.1875f);
    // The last sample of pixel (1, 1) is clamped to the pixel itself: alpha 0.
    out->GetPixel(1, 1, p, 0);
    EXPECT_FLOAT_EQ(p.a, 0.0f);
    delete out;
    delete src;
}

TEST(FrameworkProcessColor, SuperSamplingAveragesProcessedSamples)
{
    for (bool isFloat : {false, true}) {
        KImage* src = KImage::Create(2, 1, isFloat);
        src->SetPixel(1, 0, KPixelF{1.0f, 1.0f, 1.0f, 1.0f});
        KRenderSettings s = Settings(isFloat);
        s.superSampling = 2;
        class Identity : public KEffectColor {
            void ProcessColor(KPixelF& o, const KPixelF& i) override { o = i; }
        } effect;
        KImage* out = RunEffect(effect, src, s, false);
        KPixelF p;
        out->GetPixel(0, 0, p, 0);
        // Samples at x -0.25 (clamped to 0) and 0.25: 0 and 0.25, twice each.
        EXPECT_NEAR(p.r, 0.125f, isFloat ? 1e-6f : 2e-5f);
        delete out;
        delete src;
    }
}

TEST(FrameworkProcessColor, CallOrderStartJobsStop)
{
    Calls calls;
    KEffectRotate effect(&calls);
    KImage* src = Pattern(4, 3, false);
    KImage* out = RunEffect(effect, src, Settings(false), true);
    EXPECT_EQ(calls.start, 1);
    EXPECT_EQ(calls.jobs, 12);
    EXPECT_EQ(calls.stop, 1);
    EXPECT_EQ(calls.jobsAfterStop, 0);
    delete out;
    delete src;
}

TEST(FrameworkProcessColor, AllSwitchesOffCopiesWithoutStartOrStop)
{
    for (bool threaded : {false, true}) {
        Calls calls;
        KEffectRotate effect(&calls);
        KImage* src = Pattern(7, 5, true);
        KRenderSettings s = Settings(true);
        s.red = s.green = s.blue = s.alpha = false;
        KImage* out = RunEffect(effect, src, s, threaded);
        EXPECT_EQ(calls.start, 0);
        EXPECT_EQ(calls.stop, 0);
        EXPECT_EQ(calls.jobs, 0);
        EXPECT_EQ(Differ(*out, *src), "");
        delete out;
        delete src;
    }
}

TEST(FrameworkProcessColor, FailedStartCopiesAndStillStops)
{
    for (bool isFloat : {false, true}) {
        Calls calls;
        KEffectRotate effect(&calls, false);
        KImage* src = Pattern(6, 4, isFloat);
        KImage* out = RunEffect(effect, src, Settings(isFloat), true);
        EXPECT_EQ(calls.start, 1);
        EXPECT_EQ(calls.jobs, 0);
        EXPECT_EQ(calls.stop, 1);
        EXPECT_EQ(Differ(*out, *src), "");
        delete out;
        delete src;
    }
}

// ---------------------------------------------------------------------------

// Writes its position into the colour: red x / 8, green y / 8.
class KEffectCoords : public KEffectPixel {
public:
    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image) override
    {
        out = {x / 8.0f, y / 8.0f, 0.25f, 1.0f};
    }
};

TEST(FrameworkProcessPixel, BothDepthsAndTheKeepRule)
{
    for (bool isFloat : {false, true})
        for (auto [w, h] : {std::pair{1, 1}, {3, 2}, {257, 129}}) {
            KImage* src = Pattern(w, h, isFloat);
            KRenderSettings s = Settings(isFloat);
            s.blue = false;
            KEffectCoords effect;
            KImage* out = RunEffect(effect, src, s, true);
            for (int32_t y = 0; y < h; y += 7)
                for (int32_t x = 0; x < w; x += 5) {
                    KPixel in, got;
                    src->GetPixel(x, y, in, 0);
                    out->GetPixel(x, y, got, 0);
                    EXPECT_EQ(got.r, KFloatToInt(x / 8.0f));
                    EXPECT_EQ(got.g, KFloatToInt(y / 8.0f));
                    EXPECT_EQ(got.b, in.b);  // switched off: kept from the source
                    EXPECT_EQ(got.a, 65535u);
                }
            delete out;
            delete src;
        }
}

// Writes its position: red px, green py.
class KEffectWhere : public KEffectPosition {
public:
    void ProcessPosition(KPositionPixel& out, const KPositionPixel& in,
                         const KPosition& p) override
    {
        out = in;
        out.r = p.x;
        out.g = p.y;
    }
};

TEST(FrameworkProcessPosition, PositionsAreInUnitsOfWidth)
{
    KImage* src = KImage::Create(4, 2, true, 2.0f, 1.0f);  // picture aspect 4
    KEffectWhere effect;
    KImage* out = RunEffect(effect, src, Settings(true), true);
    KPixelF p;
    out->GetPixel(3, 1, p, 0);
    EXPECT_FLOAT_EQ(p.r, 3.0f / 4.0f);
    EXPECT_FLOAT_EQ(p.g, 1.0f / (2.0f * 4.0f));
    delete out;
    delete src;
}

TEST(FrameworkProcessPosition, SuperSampleGridIsDeliberatelyOffCentre)
{
    KImage* src = KImage::Create(4, 4, true);
    KRenderSettings s = Settings(true);
    s.superSampling = 2;
    KEffectWhere effect;
    KImage* out = RunEffect(effect, src, s, false);
    KPixelF p;
    out->GetPixel(0, 0, p, 0);
    // fx = 0.5 / 4; start (0 - 0.5 * fx) / 4; samples start and start + fx.
    EXPECT_FLOAT_EQ(p.r, 0.046875f);
    out->GetPixel(2, 0, p, 0);
    EXPECT_FLOAT_EQ(p.r, (2.0f - 0.0625f) / 4.0f + 0.0625f);
    delete out;
    delete src;
}

TEST(FrameworkProcessPosition, IntegerPathPreDivideAndExtraChannels)
{
    KImage* src = KImage::Create(3, 2, false);
    host::ImageSpec spec = src->HostImage()->Spec();
    delete src;
    spec.aux = {host::ChanZ};
    src = KImage::Wrap(host::Image::New(spec), true);
    src->SetPixel(1, 1, KPixel{10000, 20000, 30000, 32768});
    src->AuxPlane(host::ChanZ)[4] = 7.5f;
    KRenderSettings s = Settings(false);
    s.preDivide = true;
    s.green = false;
    class Keep : public KEffectPosition {
        void ProcessPositionInt(KPositionPixelInt& out, const KPositionPixelInt& in,
                                const KPosition&) override
        {
            out = in;
            out.r = 65535;
        }
    } effect;
    KImage* out = RunEffect(effect, src, s, true);
    KPixel p;
    out->GetPixel(1, 1, p, 0);
    EXPECT_EQ(p.r, 32768u);  // 65535 post-multiplied by alpha 32768
    EXPECT_EQ(p.g, 20000u);  // kept, divided then multiplied back
    EXPECT_EQ(out->AuxPlane(host::ChanZ)[4], 7.5f);
    delete out;
    delete src;
}

// ---------------------------------------------------------------------------

// Two passes: pass 0 copies rows into scratch, pass 1 writes each target row
// from the scratch rows below it, so it fails if the passes overlap.
class KEffectTwoPass : public KEffectThreads {
public:
    bool Start(KImage* in, KImage** out, void* extras) override
    {
        KEffectImage::Start(in, out, extras);
        scratch.assign(size_t(in->width) * in->height * 4, -1.0f);
        return true;
    }
    int32_t GetPassCount() override { return 2; }
    int32_t GetJobCount(int32_t pass) override { return pass == 0 ? height : height; }
    void ProcessJob(int32_t pass, int32_t y, KImage* src, KImage* dst) override
    {
        float* row = scratch.data() + size_t(y) * width * 4;
        if (pass == 0) {
            for (int32_t x = 0; x < width; ++x) {
                KPixelF p;
                src->GetPixel(x, y, p, 0);
                for (int c = 0; c < 4; ++c) row[4 * x + c] = p[c];
            }
            return;
        }
        const float* below = scratch.data() + size_t(y + 1 < height ? y + 1 : y) * width * 4;
        for (int32_t x = 0; x < width; ++x) {
            KPixelF p{below[4 * x], row[4 * x + 1], 0.0f, 1.0f};
            dst->SetPixel(x, y, p);
        }
    }
    std::vector<float> scratch;
};

TEST(FrameworkProcessThreads, PassesAreSeparatedAndSerialEqualsThreaded)
{
    for (bool isFloat : {false, true}) {
        KImage* src = Pattern(257, 129, isFloat);
        KEffectTwoPass a, b;
        KImage* serial = RunEffect(a, src, Settings(isFloat), false);
        KImage* threaded = RunEffect(b, src, Settings(isFloat), true);
        EXPECT_EQ(Differ(*serial, *threaded), "");
        KPixelF p, q;
        threaded->GetPixel(10, 20, p, 0);
        src->GetPixel(10, 21, q, 0);
        EXPECT_EQ(p.r, q.r);
        delete serial;
        delete threaded;
        delete src;
    }
}

TEST(FrameworkProcessThreads, SerialRunAsksTheJobCountOfPassZeroForEveryPass)
{
    class Counting : public KEffectThreads {
    public:
        int32_t GetPassCount() override { return 2; }
        int32_t GetJobCount(int32_t pass) override { return pass == 0 ? 1 : 5; }
        void ProcessJob(int32_t pass, int32_t, KImage*, KImage*) override { ++perPass[pass]; }
        std::atomic<int> perPass[2] = {0, 0};
    };
    KImage* src = Pattern(3, 5, false);
    Counting serial, threaded;
    delete RunEffect(serial, src, Settings(false), false);
    delete RunEffect(threaded, src, Settings(false), true);
    EXPECT_EQ(serial.perPass[1], 1);
    EXPECT_EQ(threaded.perPass[1], 5);
    delete src;
}

TEST(FrameworkProcessThreads, PostBlurOnlyOnTheThreadedPath)
{
    class Flat : public KEffectThreads {
        void ProcessJob(int32_t, int32_t, KImage* s, KImage* t) override { t->CopyFrom(*s); }
    };
    KImage* src = KImage::Create(9, 9, true);
    src->SetPixel(4, 4, KPixelF{1.0f, 1.0f, 1.0f, 1.0f});
    KRenderSettings s = Settings(true);
    s.postBlur = 2.0f;
    Flat a, b;
    KImage* serial = RunEffect(a, src, s, false);
    KImage* threaded = RunEffect(b, src, s, true);
    EXPECT_EQ(Differ(*serial, *src), "");
    KPixelF centre, side;
    threaded->GetPixel(4, 4, centre, 0);
    threaded->GetPixel(5, 4, side, 0);
    EXPECT_LT(centre.r, 1.0f);
    EXPECT_GT(side.r, 0.0f);
    delete serial;
    delete threaded;
    delete src;
}

// ---------------------------------------------------------------------------

// Shifts the picture right by a quarter of its width; nothing left of 0.
class KEffectShift : public KEffectWarp {
public:
    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        out = {in.x - shift, in.y};
        return out.x >= 0.0f;
    }
    float shift = 0.25f;
};

class KEffectIdentityWarp : public KEffectWarp {
public:
    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        out = in;
        return true;
    }
};

TEST(FrameworkProcessInverse, IdentityKeepsThePictureWithEachFilter)
{
    for (bool isFloat : {false, true})
        for (auto [w, h] : {std::pair{1, 1}, {3, 2}, {257, 129}})
            for (int32_t filter : {1, 2}) {
                KImage* src = Pattern(w, h, isFloat);
                KRenderSettings s = Settings(isFloat);
                s.filter = filter;
                s.edges = kEdgeDuplicate;
                KEffectIdentityWarp effect;
                KImage* out = RunEffect(effect, src, s, true);
                for (int32_t y = 0; y < h; ++y)
                    for (int32_t x = 0; x < w; ++x) {
                        KPixelF a, b;
                        src->GetPixel(x, y, a, 0);
                        out->GetPixel(x, y, b, 0);
                        for (int c = 0; c < 4; ++c)
                            ASSERT_NEAR(a[c], b[c], 2e-5f)
                                << w << "x" << h << " filter " << filter << " at " << x << "," << y;
                    }
                delete out;
                delete src;
            }
}

TEST(FrameworkProcessInverse, FailedMappingGivesTheZeroPixelAndMaskKeepsOwnPosition)
{
    KImage* src = Pattern(8, 4, false);
    KRenderSettings s = Settings(false);
    s.filter = 0;
    KEffectShift effect;
    effect.shift = 3.0f / 7.0f;  // three pixels
    KImage* out = RunEffect(effect, src, s, true);
    KPixel p, q;
    out->GetPixel(2, 1, p, 0);
    EXPECT_EQ(p.a, 0u);
    out->GetPixel(5, 1, p, 0);
    src->GetPixel(2, 1, q, 0);
    EXPECT_EQ(p.r, q.r);
    delete out;

    // Where the mask's alpha is 0 the pixel is not mapped.
    KImage* mask = KImage::Create(8, 4, false);
    for (int32_t x = 0; x < 4; ++x) mask->SetPixel(x, 1, KPixel{0, 0, 0, 65535});
    s.warpMask = mask;
    out = RunEffect(effect, src, s, true);
    out->GetPixel(2, 1, p, 0);
    EXPECT_EQ(p.a, 0u);  // masked in: mapped, and fails
    out->GetPixel(6, 1, p, 0);
    src->GetPixel(6, 1, q, 0);
    EXPECT_EQ(p.r, q.r);  // masked out: its own pixel
    delete out;
    delete mask;
    delete src;
}

TEST(FrameworkProcessInverse, UnderSamplingOneIsTheExactPathAndFourIsClose)
{
    for (bool isFloat : {false, true}) {
        KImage* src = Pattern(257, 129, isFloat);
        KRenderSettings s = Settings(isFloat);
        s.edges = kEdgeWrap;
        class Affine : public KEffectWarp {
            bool InverseMap(KPosition& o, const KPosition& i) override
            {
                o = {i.x * 0.9f + i.y * 0.1f + 0.01f, i.y * 0.95f - i.x * 0.05f};
                return true;
            }
        };
        Affine a, b, c;
        KImage* exact = RunEffect(a, src, s, true);
        s.underSample = 1;
        KImage* one = RunEffect(b, src, s, true);
        EXPECT_EQ(Differ(*exact, *one), "");
        s.underSample = 4;
        KImage* four = RunEffect(c, src, s, true);
        double worst = 0.0;
        for (int32_t y = 0; y < 129; ++y)
            for (int32_t x = 0; x < 257; ++x) {
                KPixelF p, q;
                exact->GetPixel(x, y, p, 0);
                four->GetPixel(x, y, q, 0);
                for (int k = 0; k < 4; ++k) worst = std::max(worst, double(std::fabs(p[k] - q[k])));
            }
        // An affine map interpolates exactly; what remains is rounding at 16.16.
        EXPECT_LT(worst, 0.02);
        delete exact;
        delete one;
        delete four;
        delete src;
    }
}

TEST(FrameworkProcessInverse, SerialUnderSampledRunCoversOnlyGridHeightRows)
{
    KImage* src = Pattern(16, 16, false);
    KRenderSettings s = Settings(false);
    s.underSample = 4;  // grid 6 x 6
    KEffectIdentityWarp a, b;
    KImage* serial = RunEffect(a, src, s, false);
    KImage* threaded = RunEffect(b, src, s, true);
    KPixel p, q;
    serial->GetPixel(3, 5, p, 0);
    src->GetPixel(3, 5, q, 0);
    EXPECT_NEAR(double(p.r), double(q.r), 1.0);
    serial->GetPixel(3, 6, p, 0);
    EXPECT_EQ(p.a, 0u);  // never written
    threaded->GetPixel(3, 15, p, 0);
    src->GetPixel(3, 15, q, 0);
    EXPECT_NEAR(double(p.r), double(q.r), 1.0);
    delete serial;
    delete threaded;
    delete src;
}

TEST(FrameworkProcess, SerialAndThreadedRunsAreIdentical)
{
    for (bool isFloat : {false, true}) {
        KImage* src = Pattern(257, 129, isFloat);
        KRenderSettings s = Settings(isFloat);
        s.preDivide = true;
        s.superSampling = 3;
        KEffectRotate c1, c2;
        KEffectCoords p1, p2;
        KEffectWhere q1, q2;
        KEffectShift w1, w2;
        std::vector<std::pair<KEffectImage*, KEffectImage*>> pairs{
            {&c1, &c2}, {&p1, &p2}, {&q1, &q2}, {&w1, &w2}};
        for (auto [a, b] : pairs) {
            KImage* serial = RunEffect(*a, src, s, false);
            KImage* threaded = RunEffect(*b, src, s, true);
            EXPECT_EQ(Differ(*serial, *threaded), "") << "family " << a->GetFamily();
            delete serial;
            delete threaded;
        }
        s.filter = 2;
        KEffectShift w3, w4;
        KImage* serial = RunEffect(w3, src, s, false);
        KImage* threaded = RunEffect(w4, src, s, true);
        EXPECT_EQ(Differ(*serial, *threaded), "") << "area filter";
        delete serial;
        delete threaded;
        delete src;
    }
}

TEST(FrameworkProcess, FamiliesWithoutAProcessGiveNull)
{
    class Number : public KEffectNumber {} number;
    KImage* img = KImage::Create(2, 2, false);
    KImage* target = img->CreateLike();
    EXPECT_EQ(KCreateProcess(&number, img, &target, KRenderSettings{}), nullptr);
    delete target;
    delete img;
}

}  // namespace
