// sKill: drops the segments whose direction lies outside an angle window or
// whose length lies outside a range.
#include "framework/registration.h"
#include "shape/clip.h"
#include "shape/effect_shape.h"

class KEffectShapeKill : public KEffectShapeTool {
public:
    KEffectShapeKill()
    {
        inputList.AddShapeInput(&input, "Shape", 1, kFlagMain);
        inputList.AddPage("Shape Kill");
        inputList.AddCheckbox(&byAngle, false, "By Angle", "Angl"_id, 0, 0);
        inputList.AddAngle(&angleMin, 0.0f, "Angle Minimum", "AMin"_id, 0, 1);
        inputList.AddAngle(&angleMax, 90.0f, "Angle Maximum", "AMin"_id, 0, 1);
        inputList.AddAngle(&angleOffset, 0.0f, "Angle Offset", "AMin"_id, 0, 1);
        inputList.AddCheckbox(&byLength, false, "By Length", "Leng"_id, 0, 0);
        inputList.AddSlider(&lengthMin, 0.0f, "Length Minimum", "LMin"_id, 0, 0.0, 0.5);
        inputList.AddSlider(&lengthMax, 0.1f, "Length Maximum", "LMin"_id, 0, 0.0, 0.5);
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        // The angles arrive negated; negating them again gives the user's turn.
        angleMin = -angleMin;
        angleMax = -angleMax;
        angleOffset = -angleOffset;
        const KKillSettings s{16, byAngle, angleMin, angleMax, angleOffset, byLength, lengthMin, lengthMax};
        return KMapShapes(input, [&](const KShape& shape) { return KKillSegments(shape, s); });
    }

private:
    ShapeListVector* input = nullptr;
    bool byAngle = false, byLength = false;
    float angleMin = 0.0f, angleMax = 0.0f, angleOffset = 0.0f;
    float lengthMin = 0.0f, lengthMax = 0.1f;
};

ZV_TOOL(KEffectShapeKill, ZV_ShapeKill);
