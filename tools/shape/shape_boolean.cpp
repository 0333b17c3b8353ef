// sBoolean: every shape of the first input combined with the first shape of
// the second, through polyclipping.
#include "framework/registration.h"
#include "shape/clip.h"
#include "shape/effect_shape.h"

class KEffectShapeBoolean : public KEffectShapeTool {
public:
    KEffectShapeBoolean()
    {
        inputList.AddPage("Shape Boolean");
        inputList.AddShapeInput(&first, "Shape1", 1, kFlagMain);
        inputList.AddShapeInput(&second, "Shape2", 2, 0);
        inputList.AddMultiButton(&type, 0, "Type", "Type"_id, 0, {"Intersect", "Union", "Difference", "Xor", "[end]"});
        inputList.AddMultiButton(&fill, 0, "Fill Type", "FilT"_id, 0, {"Even Odd", "Non Zero", "[end]"});
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        const KShape* clip = second && second->Count() ? second->At(0)->First() : nullptr;
        // Without a second shape every list comes out empty.
        if (!clip) return KMapShapes(first, [](const KShape&) { return nullptr; });
        return KMapShapes(first, [&](const KShape& s) { return KBooleanShape(s, clip, type, fill); });
    }

private:
    ShapeListVector* first = nullptr;
    ShapeListVector* second = nullptr;
    int32_t type = 0, fill = 0;
};

ZV_TOOL(KEffectShapeBoolean, ZV_ShapeBoolean);
