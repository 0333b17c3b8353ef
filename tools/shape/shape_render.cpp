// sRender: the shapes of its input drawn into an image of its own, cleared
// first, each list's fill and pen in order.
#include <memory>
#include "framework/registration.h"
#include "raster/image.h"
#include "shape/effect_image_shape.h"

class KEffectShapeRender : public KEffectThreads {
public:
    KEffectShapeRender()
    {
        inputList.AddShapeInput(&input, "Shape", 1, kFlagMain);
        inputList.AddPage("Shape Render");
        inputList.AddCheckbox(&forceFill, false, "Force Fill Open Shapes", "FiOp"_id, 0, 0);
        inputList.AddMultiButton(&winding, 0, "Winding", "Wind"_id, 0, {"Even/Odd", "Non-Zero", "[end]"});
    }

    bool HasFeature(int32_t code) override { return code == kFeatureSource; }

    bool Start(KImage* image, KImage** output, void* extras) override
    {
        KEffectImage::Start(image, output, extras);
        steps.clear();
        if (!output || !*output) return false;
        const KImage& target = **output;
        height = target.height;
        if (!input) return true;
        // Shapes sit around the origin; the middle of the picture is (0.5, 0.5 / aspect).
        const Matrix4f fix = Matrix4f::Translation(0.5f, 0.5f / target.PictureAspect(), 0.0f);
        const KRenderListSettings settings{8, winding, forceFill};
        for (const auto& list : input->lists) {
            list->ApplyMatrix(fix);
            KRenderList(*list, target, settings, steps);
        }
        return true;
    }
    void Stop(KImage** output) override
    {
        steps.clear();
        KEffectImage::Stop(output);
    }
    int32_t GetJobCount(int32_t) override { return height; }
    void ProcessJob(int32_t, int32_t job, KImage* source, KImage* target) override
    {
        KPaintSteps(steps, job, source, target);
    }

private:
    ShapeListVector* input = nullptr;
    bool forceFill = false;
    int32_t winding = 0;
    std::vector<KPaintStep> steps;
};

ZV_TOOL(KEffectShapeRender, ZV_ShapeRender);
