// sSpiral Create: a spiral around the origin from RadiusStart at Angle Start
// to RadiusEnd at Angle End, one straight step per Angle Step.
#include "framework/registration.h"
#include "shape/effect_shape.h"
#include "shape/modify.h"

class KEffectShapeSpiralCreate : public KEffectShapeTool {
public:
    KEffectShapeSpiralCreate()
    {
        KParameterList& in = inputList;
        in.AddPage("Shape Spiral");
        in.AddSlider(&radiusStart, 0.1f, "RadiusStart", "RSta"_id, 0, 0.0, 1.0);
        in.AddSlider(&radiusEnd, 0.3f, "RadiusEnd", "REnd"_id, 0, 0.0, 2.0);
        in.AddAngle(&angleStart, 0.0f, "Angle Start", "ASta"_id, 0, 1);
        in.AddAngle(&angleEnd, 720.0f, "Angle End", "AEnd"_id, 0, 1);
        in.AddSlider(&angleStep, 20.0f, "Angle Step", "ASte"_id, 0, 0.5, 90.0);
        in.AddMultiButton(&endType, 1, "Angle End Type", "AETy"_id, 0, {"None", "Type 1", "Type 2", "[end]"});
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        // Angles arrive negated; the spiral turns counter-clockwise from start to end.
        const KSpiralSettings s{radiusStart, radiusEnd, -angleStart, -angleEnd, angleStep * 0.017453292f, endType};
        auto list = std::make_unique<KShapeList>();
        list->Add(KSpiralShape(s));
        auto out = std::make_unique<ShapeListVector>();
        out->Push(std::move(list));
        return out;
    }

private:
    float radiusStart = 0.1f, radiusEnd = 0.3f, angleStart = 0.0f, angleEnd = 0.0f, angleStep = 20.0f;
    int32_t endType = 1;
};

ZV_TOOL(KEffectShapeSpiralCreate, ZV_ShapeSpiral);
