// Processes: the short-lived objects that carry one image effect through one
// render. All row walking lives here; tools write per-pixel or per-job code.
#pragma once
#include <memory>
#include <vector>
#include <cstdint>
#include <functional>
#include "framework/effect.h"
#include "framework/settings.h"
#include "raster/pixel.h"

class KImage;

class KProcess {
public:
    virtual ~KProcess() = default;
    virtual void BeginPass(int32_t pass) {}
    virtual void Run() = 0;
};

class KProcessImage : public KProcess {
public:
    // Calls the effect's Start unless all four channel switches are off.
    KProcessImage(KImage* source, KImage** target, KEffectImage* effect,
                  const KRenderSettings& settings);
    ~KProcessImage() override;  // calls Stop when Start was called

    // Serial form: every pass, JobCount(0) jobs each, in rising order. It asks
    // JobCount with 0 rather than the pass and never reaches Begin/EndPass.
    void Run() override;
    virtual int32_t PassCount() { return 1; }
    virtual int32_t JobCount(int32_t pass) { return 1; }
    virtual void DoJob(int32_t job, int32_t pass) = 0;
    // After the last pass, applies the effect's post blur.
    virtual void EndPass(int32_t pass);

    bool started = false;
    KEffectImage* effect = nullptr;
    bool skip = false;
    KImage* source = nullptr;
    KImage** target = nullptr;
    int32_t width = 0, height = 0;
    float pictureAspect = 1.0f, pixelAspect = 1.0f;
    KRenderSettings settings;

protected:
    void CopyRow(int32_t y);
    bool AllChannels() const
    {
        return settings.red && settings.green && settings.blue && settings.alpha;
    }
};

class KProcessImageColor : public KProcessImage {
public:
    using KProcessImage::KProcessImage;
    int32_t JobCount(int32_t pass) override;
    void DoJob(int32_t job, int32_t pass) override;

private:
    template <class Pixel> void Row(int32_t y);
    template <class Pixel> void SuperSampledRow(int32_t y);
};

class KProcessImagePixel : public KProcessImage {
public:
    using KProcessImage::KProcessImage;
    int32_t JobCount(int32_t pass) override { return height; }
    void DoJob(int32_t job, int32_t pass) override;
};

class KProcessImagePosition : public KProcessImage {
public:
    using KProcessImage::KProcessImage;
    int32_t JobCount(int32_t pass) override;
    void DoJob(int32_t job, int32_t pass) override;

private:
    template <class Pixel> void Row(int32_t y);
};

class KProcessImageShape : public KProcessImage {
public:
    using KProcessImage::KProcessImage;
    void DoJob(int32_t job, int32_t pass) override;
};

class KProcessImageThreads : public KProcessImage {
public:
    using KProcessImage::KProcessImage;
    int32_t PassCount() override;
    int32_t JobCount(int32_t pass) override;
    void DoJob(int32_t job, int32_t pass) override;
};

class KProcessImageWarp : public KProcessImage {
public:
    using KProcessImage::KProcessImage;
};

// Warps through the effect's inverse map, exactly or over an under-sampled grid.
class KProcessImageInverse : public KProcessImageWarp {
public:
    KProcessImageInverse(KImage* source, KImage** target, KEffectImage* effect,
                         const KRenderSettings& settings);
    int32_t PassCount() override;
    int32_t JobCount(int32_t pass) override;
    void DoJob(int32_t job, int32_t pass) override;

    int32_t gridWidth = 0, gridHeight = 0;
    std::vector<KPosition> grid;  // mapped source positions in pixels, when under-sampled

private:
    KEffectWarp* Warp() const { return static_cast<KEffectWarp*>(effect); }
    bool Map(float x, float y, KPosition& out) const;
    bool GridAt(float x, float y, KPosition& out) const;
    void GridRow(int32_t j);
    template <class Pixel> void PointRow(int32_t y, bool interpolated);
    template <class Pixel> void AreaRow(int32_t y, bool interpolated);
    float uScale = 1.0f, vScale = 1.0f;  // pixels per normalised unit
};

// The process that fits an effect's family, or null for a family without one.
std::unique_ptr<KProcessImage> KCreateProcess(KEffect* effect, KImage* source, KImage** target,
                                              const KRenderSettings& settings);

// Runs the jobs of one pass and returns when all are done.
using KJobRunner = std::function<void(int32_t jobs, const std::function<void(int32_t)>& job)>;

// The threaded pass loop: each pass ends before the next begins.
void KRunPasses(KProcessImage& process, const KJobRunner& runner);
