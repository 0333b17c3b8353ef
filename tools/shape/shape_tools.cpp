// sTools: moves where each closed path starts, then closes, opens or swaps
// the paths.
#include <memory>
#include "framework/registration.h"
#include "shape/effect_shape.h"
#include "shape/reshape.h"

class KEffectShapeTools : public KEffectShapeTool {
public:
    KEffectShapeTools()
    {
        KParameterList& in = inputList;
        in.AddShapeInput(&input, "Shape", 1, kFlagMain);
        in.AddPage("Shape Offset");
        in.AddScrew(&startOffset, 0.0f, "Start Offset", "Offs"_id, 0, 0.0, 1.0);
        in.AddMultiButton(&openClose, 0, "Open Close", "OpCl"_id, 0, {"Keep", "Close All", "Open All", "Swap", "[end]"});
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        return KMapShapes(input, [&](const KShape& s) {
            std::unique_ptr<KShape> shifted(KShiftStart(s, startOffset));
            return shifted->SetOpenClose(openClose);
        });
    }

private:
    ShapeListVector* input = nullptr;
    float startOffset = 0.0f;
    int32_t openClose = 0;
};

ZV_TOOL(KEffectShapeTools, ZV_ShapeTools);
