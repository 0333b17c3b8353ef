// KEffectImageShape: the image tools that build their own shapes and draw
// them with a pen over their input (Connect, Spiral). A derived tool declares
// its own controls, then calls AddShadingControls, and answers GetShapes.
#pragma once
#include <vector>
#include "framework/effect.h"
#include "shape/raster.h"

class KEffectImageShape : public KEffectThreads {
public:
    // The pages "Shape" and "Shading".
    void AddShadingControls();
    // A new vector of the tool's shapes in shape space (x 0..1, y 0..1 /
    // aspect); only its first list is drawn. Null draws nothing.
    virtual ShapeListVector* GetShapes() { return nullptr; }

    // Rasters every stroke once; the jobs only paint rows.
    bool Start(KImage* input, KImage** output, void* extras) override;
    void Stop(KImage** output) override;
    int32_t GetJobCount(int32_t pass) override { return height; }
    void ProcessJob(int32_t pass, int32_t job, KImage* source, KImage* target) override;

    KPoint2 center{0.5f, 0.5f};
    bool reposition = false;
    float offset = 0.0f;
    int32_t replicateCount = 1;
    float replicateOffset = 0.1f;
    KRange2 writeRange{0.0f, 1.0f};
    KColor penColor{1, 1, 1, 1};
    float penOpacity = 1.0f;
    float penThickness = 0.01f;
    float penBias = 0.0f;
    int32_t penJoin = 2, penEnd = 0;
    float penRoundness = 1.0f;

private:
    std::vector<KPaintStep> steps;
};

// The same steps painted into rows: a source's clear, or a copy of the input,
// then each step in order.
void KPaintSteps(const std::vector<KPaintStep>& steps, int32_t y, KImage* source, KImage* target);
