// Effects: the host-neutral half of a tool. An effect declares its parameters,
// receives its settings, and computes; its family decides which process runs it.
#pragma once
#include <cstdint>
#include "framework/message.h"
#include "framework/parameter.h"
#include "framework/lanes.h"
#include "framework/settings.h"
#include "raster/pixel.h"

class KImage;

enum KFeature : int32_t {
    kFeatureSource = 0,      // makes an image from nothing
    kFeatureOutputSize = 1,  // output size asked through GetOutputSize
    kFeatureVectors = 2,     // output gets the vector channels
    kFeatureOptionalInput = 4,
};

enum KFamily : int32_t {
    kFamilyColor = 0, kFamilyWarp = 2, kFamilyPixel = 4, kFamilyPosition = 5,
    kFamilyShapeImage = 6, kFamilyThreads = 7, kFamilyNumber = 8, kFamilyData = 10,
    kFamilyShape = 11, kFamilyText = 12, kFamily3D = 13, kFamilyCreate3D = 14,
    kFamilyDuplicate3D = 16, kFamilyRegion3D = 17,
};

// GetStandardDefault answers this to keep the built-in default.
constexpr float kKeepStandardDefault = -123456.0f;

class KEffect {
public:
    KEffect() = default;
    KEffect(const KEffect&) = delete;
    KEffect& operator=(const KEffect&) = delete;
    virtual ~KEffect() = default;

    virtual bool HasFeature(int32_t code);
    virtual bool GetOutputSize(int32_t scale, int32_t& width, int32_t& height, float& xAspect,
                               float& yAspect);
    virtual int32_t GetFamily() = 0;
    virtual float GetStandardDefault(int32_t standardInput);
    // `extras` is the effect itself, as the process passes it.
    virtual bool Start(KImage* input, KImage** output, void* extras);
    virtual void FinishRender();
    virtual void Stop(KImage** output);
    virtual KMessageList* OnChange(uint32_t id, const KMessageValue& value);
    // Extra frame times; returns the count, 1 when only the current frame is wanted.
    virtual int32_t GetFrameTimes(int32_t zero, float time, float* times);

    KParameter* inputs() const { return inputList.First(); }
    KOutput* outputs() const { return outputList.First(); }
    int32_t CountOutputs(int32_t valueKind) const;

    KRenderSettings settings;
    KParameterList inputList;
    KOutputList outputList;
};

class KEffectImage : public KEffect {
public:
    KEffectImage();
    ~KEffectImage() override;

    bool Start(KImage* input, KImage** output, void* extras) override;
    void Stop(KImage** output) override;

    void AllocFrames(int32_t n);
    KImage* GetTrailImage() const { return trailImage; }
    void SetTrailImage(KImage* image);

    int32_t frameCount = 0;
    KImage** frames = nullptr;
    KImage* trailImage = nullptr;
    float pixelAspect = 1.0f;
    float pictureAspect = 1.0f;
    int32_t width = 0, height = 0;
};

class KEffectColor : public KEffectImage {
public:
    int32_t GetFamily() override { return kFamilyColor; }
    virtual void ProcessColor(KPixelF& out, const KPixelF& in) = 0;
    virtual void ProcessColorInt(KPixel& out, const KPixel& in);
    // The process hands over a run of pixels at a time, in the form the image
    // stores them; the defaults call the per-pixel forms. An effect overrides
    // them to work on several pixels at once.
    virtual void ProcessColors(KPixelF* out, const KPixelF* in, int32_t n);
    virtual void ProcessColorsInt(KPixelW* out, const KPixelW* in, int32_t n);
};

// A colour effect written once as `template <bool Integer, class V> void
// Adjust(V r, V g, V b, V a, V out[4]) const` over float and the lanes
// (framework/lanes.h): one pixel, or as many at a time as the processor's
// lanes take, with the same bits. Integer says the channels came from integer pixels, for an effect
// whose integer operation rounds its own way.
template <class E> class KEffectColorLanes : public KEffectColor {
public:
    void ProcessColor(KPixelF& out, const KPixelF& in) override
    {
        KEachPixel<float>(&out, &in, 1, Pixel<false>());
    }
    void ProcessColorInt(KPixel& out, const KPixel& in) override
    {
        KEachPixel<float>(&out, &in, 1, Pixel<true>());
    }
    void ProcessColors(KPixelF* out, const KPixelF* in, int32_t n) override { Run(out, in, n); }
    void ProcessColorsInt(KPixelW* out, const KPixelW* in, int32_t n) override { Run(out, in, n); }

private:
    template <bool Integer> auto Pixel() const
    {
        return [e = static_cast<const E*>(this)](auto r, auto g, auto b, auto a, auto* o)
                   ZV_LANE_INLINE_LAMBDA { e->template Adjust<Integer>(r, g, b, a, o); };
    }
    template <class P> static constexpr bool kInteger = !std::is_same_v<P, KPixelF>;
    template <class P> void Run(P* out, const P* in, int32_t n) const
    {
#if defined(ZV_LANES)
        switch (KLaneWidth()) {
        case 32: return Run32(out, in, n);
        case 8: return Run8(out, in, n);
        default: return KEachPixel<KLanes4>(out, in, n, Pixel<kInteger<P>>());
        }
#else
        KEachPixel<float>(out, in, n, Pixel<kInteger<P>>());
#endif
    }
#if defined(ZV_LANES)
    template <class P> ZV_AVX2 void Run8(P* out, const P* in, int32_t n) const
    {
        KEachPixel<KLanes8>(out, in, n, Pixel<kInteger<P>>());
    }
    template <class P> ZV_AVX512 ZV_LANE_KERNEL void Run32(P* out, const P* in, int32_t n) const
    {
        KEachPixel<KLanes32>(out, in, n, Pixel<kInteger<P>>());
    }
#endif
};

class KEffectPixel : public KEffectImage {
public:
    int32_t GetFamily() override { return kFamilyPixel; }
    // Each defaults to the other through the pixel conversions: override one at least.
    virtual void ProcessPixel(KPixel& out, int32_t x, int32_t y, KImage* image);
    virtual void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image);
};

class KEffectPosition : public KEffectImage {
public:
    int32_t GetFamily() override { return kFamilyPosition; }
    virtual void ProcessPosition(KPositionPixel& out, const KPositionPixel& in,
                                 const KPosition& position);
    virtual void ProcessPositionInt(KPositionPixelInt& out, const KPositionPixelInt& in,
                                    const KPosition& position);
};

class KEffectThreads : public KEffectImage {
public:
    int32_t GetFamily() override { return kFamilyThreads; }
    virtual int32_t GetPassCount() { return 1; }
    virtual int32_t GetJobCount(int32_t pass) { return 1; }
    virtual void ProcessJob(int32_t pass, int32_t job, KImage* source, KImage* target) = 0;
};

class KEffectWarp : public KEffectImage {
public:
    int32_t GetFamily() override { return kFamilyWarp; }
    // Maps an output position to the source position, both normalised as
    // u = x / (width - 1), v = y / ((height - 1) * pictureAspect). False: no source.
    virtual bool InverseMap(KPosition& out, const KPosition& in) = 0;
};

// Shapes drawn over an image. The shape render state arrives with the shape
// value; until then the job draws nothing and GetShapes gives none.
class KShapeList;
class KEffectImageShape : public KEffectThreads {
public:
    void ProcessJob(int32_t pass, int32_t job, KImage* source, KImage* target) override;
    virtual KShapeList* GetShapes() { return nullptr; }

    float rotateAngle = 0.0f;
    int32_t replicateCount = 1;
    float replicateOffset = 0.0f;
    float offset = 0.0f;
    KRange2 wireRange;
};

// The non-image families: their tools compute a value in place of a process.
class KEffectNumber : public KEffect {
public:
    int32_t GetFamily() override { return kFamilyNumber; }
};
class KEffectText : public KEffect {
public:
    int32_t GetFamily() override { return kFamilyText; }
};
class KEffectData : public KEffect {
public:
    int32_t GetFamily() override { return kFamilyData; }
};
class KEffectShape : public KEffect {
public:
    int32_t GetFamily() override { return kFamilyShape; }
};
class KEffect3D : public KEffect {
public:
    int32_t GetFamily() override { return kFamily3D; }
};
class KEffectRegion3D : public KEffect {
public:
    int32_t GetFamily() override { return kFamilyRegion3D; }
};
