// Vector Time: retimes a clip between two whole frames by moving each along its
// vectors to the moment between them and mixing the two.
#include <cmath>
#include "framework/effect.h"
#include "framework/registration.h"
#include "tools/image/time_adjust.h"
#include "raster/image.h"

class KEffectVectorTime : public KEffectThreads {
public:

    KEffectVectorTime()
    {
        AllocFrames(2);
        inputList.AddPage("Vector Time");
        timeAdjust.Declare(inputList);
    }

    int32_t GetFrameTimes(int32_t, float time, float* times) override
    {
        if (times) {
            times[0] = timeAdjust.At(time);
            times[1] = times[0] + 1.0f;
        }
        return 2;
    }
    int32_t GetPassCount() override { return 2; }
    int32_t GetJobCount(int32_t) override { return height; }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        a = frames[0].get();
        b = frames[1].get();
        if (timeAdjust.mode == kTimeAsIs || !a || !b || !input) return false;
        if (b->width != a->width || b->height != a->height || b->IsFloat() != a->IsFloat() ||
            (*output)->width != a->width || (*output)->height != a->height)
            return false;
        const float T = timeAdjust.At(settings.time);
        vectorFactor = timeAdjust.mode == kTimeSpeed ? 1.0f / std::max(timeAdjust.speed, 1.1920929e-07f) : 1.0f;
        vectors = a->AuxPlane(kVectorX) && a->AuxPlane(kVectorY) && b->AuxPlane(kVectorX) && b->AuxPlane(kVectorY);
        positionFactor = 1.0 / static_cast<double>(input->ProxyScale());
        f = T - std::floor(T);
        wA = static_cast<uint32_t>((1.0f - f) * 65535.0f);
        wB = 65535 - wA;
        return true;
    }

    // Both passes write the same rows alike.
    void ProcessJob(int32_t, int32_t y, KImage*, KImage* target) override
    {
        float* tx = target->AuxPlane(kVectorX);
        float* ty = target->AuxPlane(kVectorY);
        for (int32_t x = 0; x < width; ++x) {
            const size_t at = size_t(y) * width + x;
            float X = static_cast<float>(x), Y = static_cast<float>(y), px = 0.0f, py = 0.0f, vx = 0.0f, vy = 0.0f;
            if (vectors) {
                vx = (1.0f - f) * a->AuxPlane(kVectorX)[at] + f * b->AuxPlane(kVectorX)[at];
                vy = (1.0f - f) * a->AuxPlane(kVectorY)[at] + f * b->AuxPlane(kVectorY)[at];
                px = static_cast<float>(vx * positionFactor);
                py = static_cast<float>(vy * positionFactor);
                X = x - px * f;
                Y = y - py * f;
            }
            if (target->IsFloat()) {
                KPixelF pa, pb;
                Read(*a, x, y, X, Y, pa);
                Read(*b, x, y, X + px, Y + py, pb);
                const float ka = static_cast<float>(wA) / 65535.0f, kb = static_cast<float>(wB) / 65535.0f;
                target->SetPixel(x, y, KPixelF{pa.r * ka + pb.r * kb, pa.g * ka + pb.g * kb, pa.b * ka + pb.b * kb,
                                               pa.a * ka + pb.a * kb});
            } else {
                KPixel pa, pb, o;
                Read(*a, x, y, X, Y, pa);
                Read(*b, x, y, X + px, Y + py, pb);
                for (int c = 0; c < 4; ++c) o[c] = KScaleInt(wA, pa[c]) + KScaleInt(wB, pb[c]);
                target->SetPixel(x, y, o);
            }
            if (tx && ty) {
                tx[at] = vx * vectorFactor;
                ty[at] = vy * vectorFactor;
            }
        }
    }

private:
    static constexpr int32_t kVectorX = 22, kVectorY = 23;

    // Moved along the vectors: a bilinear read; otherwise the pixel itself.
    template <class P> void Read(const KImage& frame, int32_t x, int32_t y, float X, float Y, P& out) const
    {
        if (vectors) frame.SamplePixel(X, Y, out, kEdgeDuplicate);
        else frame.GetPixel(x, y, out, kEdgeDuplicate);
    }

    KTimeAdjust timeAdjust;
    const KImage* a = nullptr;
    const KImage* b = nullptr;
    bool vectors = false;
    float vectorFactor = 1.0f, f = 0.0f;
    double positionFactor = 1.0;
    uint32_t wA = 65535, wB = 0;
};

ZV_TOOL(KEffectVectorTime, ZV_VectorTime);
