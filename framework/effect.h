// Effects: the host-neutral half of a tool. An effect declares its parameters,
// receives its settings, and computes; its family decides which process runs it.
#pragma once
#include <cstdint>
#include <memory>
#include <vector>
#include "framework/message.h"
#include "framework/parameter.h"
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
    virtual KMessageList OnChange(uint32_t id, const KMessageValue& value);
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
    ~KEffectImage() override;  // where KImage is whole

    bool Start(KImage* input, KImage** output, void* extras) override;
    void Stop(KImage** output) override;

    void AllocFrames(int32_t n);
    KImage* GetTrailImage() const { return trailImage.get(); }
    void SetTrailImage(KImage* image);

    // The frames asked for through GetFrameTimes, one per slot; null where none came.
    std::vector<std::unique_ptr<KImage>> frames;
    std::unique_ptr<KImage> trailImage;
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

// The non-image families: their tools compute a value in place of a process.
class KEffectNumber : public KEffect {
public:
    int32_t GetFamily() override { return kFamilyNumber; }
};
class KEffectText : public KEffect {
public:
    int32_t GetFamily() override { return kFamilyText; }
};
class KEffectShape : public KEffect {
public:
    int32_t GetFamily() override { return kFamilyShape; }
};
class KEffect3D : public KEffect {
public:
    int32_t GetFamily() override { return kFamily3D; }
};
