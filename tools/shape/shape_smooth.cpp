// sSmooth: every path as cubics through its points; Smooth 0 keeps the
// straight segments, Smooth Curvature how far the tangents reach.
#include "framework/registration.h"
#include "shape/effect_shape.h"
#include "shape/modify.h"

class KEffectShapeSmooth : public KEffectShapeTool {
public:
    KEffectShapeSmooth()
    {
        KParameterList& in = inputList;
        in.AddShapeInput(&input, "Shape", 1, kFlagMain);
        in.AddPage("Shape Smooth");
        in.AddScrew(&smooth, 1.0f, "Smooth", "Smoo"_id, 0, 0.0, 1.0);
        in.AddScrew(&curvature, 1.0f, "Smooth Curvature", "SmCu"_id, 0, 0.0, 1.0);
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        return KMapShapes(input, [&](const KShape& s) {
            auto* out = new KShape(&s);
            KShapeArrayList arrays(s);  // control points count as points
            for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) KSmoothArray(*out, *a, smooth, curvature);
            return out;
        });
    }

private:
    ShapeListVector* input = nullptr;
    float smooth = 1.0f, curvature = 1.0f;
};

ZV_TOOL(KEffectShapeSmooth, ZV_ShapeSmooth);
