// sResample: points at even steps along each path, for paths that are to
// bend or wobble evenly whatever points they were drawn with.
#include "framework/registration.h"
#include "shape/effect_shape.h"
#include "shape/geometry.h"
#include "shape/reshape.h"

class KEffectShapeResample : public KEffectShapeTool {
public:
    KEffectShapeResample()
    {
        KParameterList& in = inputList;
        in.AddShapeInput(&input, "Shape", 1, kFlagMain);
        in.AddPage("Shape Resample");
        in.AddSlider(&settings.distance, 0.11f, "Distance", "Dist"_id, 0, 0.0001, 1.0);
        in.AddSlider(&settings.offset, 0.0f, "Offset", "Offs"_id, 0, 0.0, 1.0);
        in.AddCheckbox(&settings.keepEndPoints, false, "Keep End Points", "KeEn"_id, 0, 0);
        in.AddCheckbox(&settings.keepOriginalPoints, false, "Keep Original Points", "KePo"_id, 0, 0);
        // Declared for the pages a flow may set; the walk keeps no corners by angle.
        in.AddAngle(&keepAngle, 20.0f, "Minimum Angle At Points To Keep", "KeAn"_id, 0, 1);
        in.AddSlider(&precision, 8, "Curve Precision", "Prec"_id, 0, 2, 16);
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        return KMapShapes(input, [&](const KShape& s) {
            std::unique_ptr<KShape> flat(KFlatten(s, precision));
            auto* out = new KShape(&s);
            KShapeArrayList arrays(*flat);
            for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) KResampleArray(*out, *a, settings);
            return out;
        });
    }

private:
    ShapeListVector* input = nullptr;
    KResampleSettings settings;
    float keepAngle = 0.0f;
    int32_t precision = 8;
};

ZV_TOOL(KEffectShapeResample, ZV_ShapeResample);
