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
        spiral.Declare(in);
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        const KSpiralSettings s = spiral.Settings();
        auto list = std::make_unique<KShapeList>();
        list->Add(KSpiralShape(s));
        auto out = std::make_unique<ShapeListVector>();
        out->Push(std::move(list));
        return out;
    }

private:
    KSpiralControls spiral;
};

ZV_TOOL(KEffectShapeSpiralCreate, ZV_ShapeSpiral);
