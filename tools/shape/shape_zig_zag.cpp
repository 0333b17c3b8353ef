// sZigZag: points pushed to alternate sides of each segment, Steps per
// segment. "By distance" keeps the paths as they are.
#include "framework/registration.h"
#include "shape/effect_shape.h"
#include "shape/modify.h"

class KEffectShapeZigZag : public KEffectShapeTool {
public:
    KEffectShapeZigZag()
    {
        KParameterList& in = inputList;
        in.AddShapeInput(&input, "Shape", 1, kFlagMain);
        in.AddPage("Shape ZigZag");
        in.AddMultiButton(&type, 0, "Type", "ZZTy"_id, 0, {"By segment", "By distance", "[end]"});
        in.AddSlider(&steps, 3, "Steps", "ZZSt"_id, 0, 1, 10);
        in.AddSlider(&distance, 0.01f, "Distance", "ZZDi"_id, 0, 0.001, 0.1);
        in.AddScrew(&offset, 0.01f, "Offset", "ZZOf"_id, 0, -0.1, 0.1);
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        return KMapShapes(input, [&](const KShape& s) {
            auto* out = new KShape(&s);
            KShapeArrayList arrays(s);  // curves as they stand
            for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) KZigZagArray(*out, *a, type + 1, offset, steps);
            return out;
        });
    }

private:
    ShapeListVector* input = nullptr;
    int32_t type = 0, steps = 3;
    float distance = 0.01f, offset = 0.01f;
};

ZV_TOOL(KEffectShapeZigZag, ZV_ShapeZigZag);
