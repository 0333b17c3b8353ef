// sTransform: moves, turns and scales every shape by its transform control;
// each list keeps in its placement the way back.
#include "framework/geometry.h"
#include "framework/registration.h"
#include "shape/effect_shape.h"

class KEffectShapeTransform : public KEffectShapeTool {
public:
    KEffectShapeTransform()
    {
        inputList.AddShapeInput(&input, "Shape", 1, kFlagMain);
        inputList.AddPage("Shape Transform");
        inputList.AddTransform(&transform, KTransformValue{}, "Transform", "ShXf"_id, 0, 0);
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        auto out = input ? input->Clone() : std::make_unique<ShapeListVector>();
        const Matrix4f m = Matrix4f::Of(transform);
        if (!m.IsIdentity())
            for (const auto& list : out->lists) list->ApplyMatrix(m);
        return out;
    }

private:
    ShapeListVector* input = nullptr;
    KTransformValue transform;
};

ZV_TOOL(KEffectShapeTransform, ZV_ShapeTransform);
