// sWriteOn: the part of the paths between Range Start and Range End of their
// length, over all shapes together, each shape, or each path.
#include "framework/registration.h"
#include "shape/effect_shape.h"
#include "shape/reshape.h"

class KEffectShapeWriteOn : public KEffectShapeTool {
public:
    KEffectShapeWriteOn()
    {
        KParameterList& in = inputList;
        in.AddShapeInput(&input, "Shape", 1, kFlagMain);
        in.AddPage("Shape Write On");
        in.AddMultiButton(&settings.level, 0, "Level", "Levl"_id, 0, {"Global", "Shape", "Element", "[end]"});
        in.AddRange(&range, 0.0f, 1.0f, "Range Start", "Range End", "WriS"_id, "WriE"_id, 0, 0.0, 1.0);
        in.AddScrew(&settings.shift, 0.0f, "Shift", "Shif"_id, 0, 0.0, 1.0);
        in.AddCheckbox(&settings.wrap, false, "Shift Wrap", "ShiW"_id, 0, 0);
        in.AddSlider(&settings.precision, 8, "Curve Precision", "Prec"_id, 0, 2, 16);
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        settings.start = range.low;
        settings.end = range.high;
        return KWriteOn(input, settings);
    }

private:
    ShapeListVector* input = nullptr;
    KRange2 range;
    KWriteOnSettings settings;
};

ZV_TOOL(KEffectShapeWriteOn, ZV_ShapeWriteOn);
