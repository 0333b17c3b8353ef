// sTriangulate: the area of each shape under the odd winding rule as
// triangles, one closed three-point path each.
#include "framework/registration.h"
#include "shape/effect_shape.h"
#include "shape/reshape.h"

class KEffectShapeTriangulate : public KEffectShapeTool {
public:
    KEffectShapeTriangulate()
    {
        KParameterList& in = inputList;
        in.AddShapeInput(&input, "Shape", 1, kFlagMain);
        in.AddPage("Shape Triangulate");
        in.AddMultiButton(&type, 0, "Type", "Type"_id, 0, {"Type 1", "Type 2", "[end]"});
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        return KMapShapes(input, [&](const KShape& s) { return KTriangulateShape(s, type); });
    }

private:
    ShapeListVector* input = nullptr;
    int32_t type = 0;
};

ZV_TOOL(KEffectShapeTriangulate, ZV_ShapeTriangulate);
