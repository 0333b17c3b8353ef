// sOffset: rings grown outward, inward or both from each shape, a number of
// times the distance, each from the original.
#include "framework/registration.h"
#include "shape/clip.h"
#include "shape/effect_shape.h"

class KEffectShapeOffset : public KEffectShapeTool {
public:
    KEffectShapeOffset()
    {
        inputList.AddShapeInput(&input, "Shape", 1, kFlagMain);
        inputList.AddPage("Shape Offset");
        inputList.AddCheckbox(&keep, false, "Keep original", "Keep"_id, 0, 0);
        inputList.AddSlider(&number, 1, "Number", "Numb"_id, 0, 1, 16);
        inputList.AddScrew(&offset, 0.01f, "Offset", "Offs"_id, 0, -0.1, 0.1);
        inputList.AddMultiButton(&joinType, 0, "Join Type", "Type"_id, 0, {"Miter", "Bevel", "Rounded", "[end]"});
        inputList.AddSlider(&joinPrecision, 8, "Join Precision", "Prec"_id, 0, 2, 16);
        inputList.AddMultiButton(&sides, 2, "Sides", "Side"_id, 0, {"Both", "Inside", "Outside", "[end]"});
        inputList.AddSlider(&curvePrecision, 8, "Curve Precision", "Prec"_id, 0, 2, 16);
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        return KMapShapes(input, [&](const KShape& s) {
            KShape* out = keep ? KShape::Duplicate(s) : new KShape(&s);
            KOffsetSettings o{curvePrecision, joinType, 0.0f, joinPrecision};
            for (int32_t i = 1; i <= number; ++i) {
                auto ring = [&](float distance) {
                    o.offset = distance;
                    std::unique_ptr<KShape> r(KOffsetShape(s, o));
                    out->Append(r.get(), true);
                };
                if (sides < 2) ring(-static_cast<float>(i) * offset);
                if ((sides & ~2) == 0) ring(static_cast<float>(i) * offset);
            }
            return out;
        });
    }

private:
    ShapeListVector* input = nullptr;
    bool keep = false;
    int32_t number = 1;
    float offset = 0.01f;
    int32_t joinType = 0, joinPrecision = 8, sides = 2, curvePrecision = 8;
};

ZV_TOOL(KEffectShapeOffset, ZV_ShapeOffset);
