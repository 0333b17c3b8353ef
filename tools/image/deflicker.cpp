// Deflicker: evens out changes of brightness from frame to frame by matching
// the current frame to a reference: a fixed frame, frames at regular steps,
// the mean of the frames around, or an image of its own; over the whole
// picture or a rectangle ("Global"), or region by region ("Zoned").
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectDeflicker : public KEffectPixel {
public:
    static constexpr int32_t kTimes = 130;
    enum Reference : int32_t { kFixedTime = 0, kTimeSteps, kAverage, kExternal };
    enum Type : int32_t { kGlobal = 0, kZoned };
    enum Base : int32_t { kAll = 0, kRectangle };
    enum Operation : int32_t { kAdd = 0, kMultiply };

    KEffectDeflicker()
    {
        AllocFrames(kTimes);
        inputList.AddPage("Deflicker");
        inputList.AddMultiButton(&reference, kFixedTime, "Reference", "Refe"_id, kFlagNotify,
                                 {"Fixed Time", "Time Steps", "Average", "External", "[end]"});
        inputList.AddSlider(&referenceTime, 0.0f, "Reference Time", "ReTi"_id, kFlagHardMin | kFlagHardMax, 0.0, 10.0);
        inputList.AddSlider(&timeStep, 25.0f, "Time Step", "TiSt"_id, kFlagHardMax | kFlagHidden, 2.0, 25.0);
        inputList.AddSlider(&framesBefore, 4, "Frames before", "FrBe"_id, kFlagHidden, 0, 64);
        inputList.AddSlider(&framesAfter, 4, "Frames After", "FrAf"_id, kFlagHidden, 0, 64);
        inputList.AddMultiButton(&type, kGlobal, "Type", "Type"_id, kFlagNotify, {"Global", "Zoned", "[end]"});
        inputList.AddMultiButton(&base, kAll, "Based On", "Base"_id, kFlagNotify, {"All", "Rectangle", "[end]"});
        inputList.AddPoint(&refCenter, KPoint2{0.5f, 0.5f}, "Rectangle Reference", "RReC"_id, kFlagPreview, 0);
        inputList.AddSlider(&refWidth, 0.5f, "Rectangle Reference Width", "RReW"_id,
                            kFlagPreviewRectWidth | kFlagPreview, 0.0, 1.0);
        inputList.AddSlider(&refHeight, 0.5f, "Rectangle Reference Height", "RReH"_id,
                            kFlagPreviewRectHeight | kFlagPreview, 0.0, 1.0);
        inputList.AddCheckbox(&lock, true, "Lock Correcting to Reference Rectangle", "BasL"_id, kFlagNotify, 0);
        inputList.AddPoint(&corCenter, KPoint2{0.5f, 0.5f}, "Rectangle Correcting Center", "RCoC"_id, kFlagPreview, 0);
        inputList.AddSlider(&corWidth, 0.5f, "Rectangle Correcting Width", "RCoW"_id,
                            kFlagPreviewRectWidth | kFlagPreview, 0.0, 1.0);
        inputList.AddSlider(&corHeight, 0.5f, "Rectangle Correcting Height", "RCoH"_id,
                            kFlagPreviewRectHeight | kFlagPreview, 0.0, 1.0);
        inputList.AddMultiButton(&operation, kMultiply, "Operation", "Oper"_id, 0, {"Add", "Multiply", "[end]"});
        inputList.AddSlider(&detail, 1.0f, "Detail", "Deta"_id, kFlagHardMax, 0.01, 10.0);
        inputList.AddImageInput(&external, "Reference image", 2, kFlagMain);
    }

    int32_t GetFrameTimes(int32_t, float t, float* times) override
    {
        if (!times) return kTimes;
        for (int32_t i = 0; i < kTimes; ++i) times[i] = 1e10f;
        int32_t n = 0;
        times[n++] = t;
        if (reference == kFixedTime) {
            times[n++] = referenceTime;
        } else if (reference == kTimeSteps && timeStep > 0.0f) {
            // Kept in the field: the render that follows works from the lowered time.
            while (referenceTime > 0.0f) referenceTime -= timeStep;
            const float v = t - std::fmod(t - referenceTime, timeStep);
            times[n++] = v;
            times[n++] = v + timeStep;
        } else if (reference == kAverage) {
            for (int32_t i = 0; i < framesAfter && n < kTimes; ++i) times[n++] = t + 1.0f + static_cast<float>(i);
            for (int32_t i = 0; i < framesBefore && n < kTimes; ++i) times[n++] = t - 1.0f - static_cast<float>(i);
        }
        return kTimes;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        current = nullptr;
        blurred.reset();
        usedFrames.clear();
        if (!input || !frames[0]) return false;
        auto usable = [&](const KImage* f) {
            return f && f->width == input->width && f->height == input->height && f->IsFloat() == input->IsFloat();
        };
        switch (reference) {
        case kFixedTime:
            if (!usable(frames[1].get())) return false;
            usedFrames = {frames[1].get()};
            weights = {1.0f};
            break;
        case kTimeSteps: {
            const KImage* a = usable(frames[1].get()) ? frames[1].get() : nullptr;
            const KImage* b = usable(frames[2].get()) ? frames[2].get() : nullptr;
            if (!a && !b) return false;
            if (a && b) {
                const float f = std::fmod(settings.time - referenceTime, timeStep) / timeStep;
                usedFrames = {a, b};
                weights = {1.0f - f, f};
            } else {
                usedFrames = {a ? a : b};
                weights = {1.0f};
            }
            break;
        }
        case kAverage: {
            const int32_t n = std::min(framesAfter + framesBefore, kTimes - 1);
            if (n < 2) return false;
            for (int32_t i = 1; i <= n; ++i)
                if (usable(frames[i].get())) usedFrames.push_back(frames[i].get());
            if (usedFrames.empty()) return false;
            weights.assign(usedFrames.size(), 1.0f / static_cast<float>(usedFrames.size()));
            break;
        }
        default:
            if (!external) return false;
            break;
        }
        blurSize = 100.0f / std::max(detail, 0.0001f);
        if (type == kZoned) blurred.reset(input->Blur(blurSize, blurSize, 4, 15, 1.0f, 1.0f));
        current = input;  // only now has Stop a correction to make
        return true;
    }

    // The reference, into the target; Stop corrects the current frame against it.
    void ProcessPixel(KPixel& out, int32_t x, int32_t y, KImage*) override
    {
        if (reference == kExternal) return external->GetPixel(x, y, out, kEdgeBlack);
        float sum[4] = {0, 0, 0, 0};
        for (size_t i = 0; i < usedFrames.size(); ++i) {
            const uint16_t* p = usedFrames[i]->RowW(y) + 4 * x;
            for (int c = 0; c < 4; ++c) sum[c] += weights[i] * static_cast<float>(p[c]);
        }
        for (int c = 0; c < 4; ++c) out[c] = static_cast<uint32_t>(std::clamp(sum[c], 0.0f, 65535.0f));
    }
    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage*) override
    {
        if (reference == kExternal) return external->GetPixel(x, y, out, kEdgeBlack);
        out = KPixelF{};
        for (size_t i = 0; i < usedFrames.size(); ++i) {
            const float* p = usedFrames[i]->RowF(y) + 4 * x;
            for (int c = 0; c < 4; ++c) out[c] += weights[i] * p[c];
        }
    }

    void Stop(KImage** output) override
    {
        if (current && output && *output) Correct(**output);
        current = nullptr;
        blurred.reset();
        KEffectImage::Stop(output);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "Refe"_id) shownReference = value.intValue;
        if (id == "Type"_id) shownType = value.intValue;
        if (id == "Base"_id) shownBase = value.intValue;
        if (id == "BasL"_id) shownLock = value.intValue != 0;
        auto show = [&](uint32_t target, bool on) { list.Add(kMessageVisible, target, on ? 1.0f : 0.0f); };
        if (id == "Refe"_id) {
            show("ReTi"_id, shownReference == kFixedTime || shownReference == kTimeSteps);
            show("TiSt"_id, shownReference == kTimeSteps);
            show("FrBe"_id, shownReference == kAverage);
            show("FrAf"_id, shownReference == kAverage);
            return list;
        }
        const bool global = shownType == kGlobal;
        const bool rect = global && shownBase == kRectangle;
        show("Base"_id, global);
        for (uint32_t c : {"RReC"_id, "RReW"_id, "RReH"_id, "BasL"_id, "Oper"_id}) show(c, rect);
        for (uint32_t c : {"RCoC"_id, "RCoW"_id, "RCoH"_id}) show(c, rect && !shownLock);
        return list;
    }

private:
    struct Box {
        int32_t x0, y0, x1, y1;
    };
    Box BoxOf(KPoint2 c, float w, float h) const
    {
        if (base == kAll) return {0, 0, width, height};
        const float W = static_cast<float>(width), H = static_cast<float>(height);
        Box b{static_cast<int32_t>((c.x - w * 0.5f) * W), static_cast<int32_t>((c.y - h * 0.5f) * H),
              static_cast<int32_t>(std::ceil((c.x + w * 0.5f) * W)), static_cast<int32_t>(std::ceil((c.y + h * 0.5f) * H))};
        b.x0 = std::clamp(b.x0, 0, width);
        b.x1 = std::clamp(b.x1, b.x0, width);
        b.y0 = std::clamp(b.y0, 0, height);
        b.y1 = std::clamp(b.y1, b.y0, height);
        return b;
    }
    // A pixel in the image's own terms: 16-bit codes or floats.
    static void Read(const KImage& img, int32_t x, int32_t y, float out[4])
    {
        if (img.IsFloat()) {
            const float* p = img.RowF(y) + 4 * x;
            std::copy_n(p, 4, out);
        } else {
            const uint16_t* p = img.RowW(y) + 4 * x;
            for (int c = 0; c < 4; ++c) out[c] = static_cast<float>(p[c]);
        }
    }
    static void Mean(const KImage& img, const Box& b, double out[4])
    {
        double sum[4] = {0, 0, 0, 0};
        for (int32_t y = b.y0; y < b.y1; ++y)
            for (int32_t x = b.x0; x < b.x1; ++x) {
                float p[4];
                Read(img, x, y, p);
                for (int c = 0; c < 4; ++c) sum[c] += p[c];
            }
        const double n = std::max<double>(double(b.x1 - b.x0) * double(b.y1 - b.y0), 1.0);
        for (int c = 0; c < 4; ++c) out[c] = sum[c] / n;
    }

    void Correct(KImage& target)
    {
        if (type == kZoned) {
            std::unique_ptr<KImage> ref(target.Blur(blurSize, blurSize, 4, 15, 1.0f, 1.0f));
            KImage::RunJobs(height, [&](int32_t y) {
                for (int32_t x = 0; x < width; ++x) {
                    float c[4], bc[4], br[4];
                    Read(*current, x, y, c);
                    Read(*blurred, x, y, bc);
                    Read(*ref, x, y, br);
                    for (int k = 0; k < 4; ++k) c[k] = c[k] - bc[k] + br[k];
                    Put(target, x, y, c);
                }
            });
            return;
        }
        double now[4], want[4];
        const Box refBox = BoxOf(refCenter, refWidth, refHeight);
        Mean(*current, lock ? refBox : BoxOf(corCenter, corWidth, corHeight), now);
        Mean(target, refBox, want);
        float shift[4], scale[4];
        for (int c = 0; c < 4; ++c) {
            shift[c] = static_cast<float>(want[c] - now[c]);
            scale[c] = static_cast<float>(want[c] / (now[c] == 0.0 ? 1.0 : now[c]));
        }
        KImage::RunJobs(height, [&](int32_t y) {
            for (int32_t x = 0; x < width; ++x) {
                float p[4];
                Read(*current, x, y, p);
                for (int c = 0; c < 4; ++c) p[c] = operation == kAdd ? p[c] + shift[c] : p[c] * scale[c];
                Put(target, x, y, p);
            }
        });
    }
    // Integer pixels are clamped; float ones are not.
    static void Put(KImage& target, int32_t x, int32_t y, const float p[4])
    {
        if (target.IsFloat()) {
            std::copy_n(p, 4, target.RowF(y) + 4 * x);
            return;
        }
        uint16_t* o = target.RowW(y) + 4 * x;
        for (int c = 0; c < 4; ++c) o[c] = static_cast<uint16_t>(std::clamp(p[c], 0.0f, 65535.0f));
    }

    int32_t reference = kFixedTime;
    float referenceTime = 0.0f, timeStep = 25.0f;
    int32_t framesBefore = 4, framesAfter = 4;
    int32_t type = kGlobal, base = kAll;
    KPoint2 refCenter{0.5f, 0.5f};
    float refWidth = 0.5f, refHeight = 0.5f;
    bool lock = true;
    KPoint2 corCenter{0.5f, 0.5f};
    float corWidth = 0.5f, corHeight = 0.5f;
    int32_t operation = kMultiply;
    float detail = 1.0f;
    KImage* external = nullptr;

    int32_t shownReference = 0, shownType = 0, shownBase = 0;
    bool shownLock = true;
    const KImage* current = nullptr;
    std::unique_ptr<KImage> blurred;
    std::vector<const KImage*> usedFrames;
    std::vector<float> weights;
    float blurSize = 100.0f;
};

ZV_TOOL(KEffectDeflicker, ZV_Deflicker);
