// sMerge: the lists of the first input, then those of the second; nothing is
// joined geometrically.
#include "framework/registration.h"
#include "shape/effect_shape.h"

class KEffectShapeMerge : public KEffectShapeTool {
public:
    KEffectShapeMerge()
    {
        inputList.AddPage("Shape Merge");
        inputList.AddShapeInput(&first, "Shape1", 1, kFlagMain);
        inputList.AddShapeInput(&second, "Shape2", 2, 0);
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        auto out = first ? first->Clone() : std::make_unique<ShapeListVector>();
        if (second) {
            for (const auto& l : second->lists) out->Push(l->Clone());
            if (!out->frameWidth) out->frameWidth = second->frameWidth, out->frameHeight = second->frameHeight;
        }
        return out;
    }

private:
    ShapeListVector* first = nullptr;
    ShapeListVector* second = nullptr;
};

ZV_TOOL(KEffectShapeMerge, ZV_ShapeMerge);
