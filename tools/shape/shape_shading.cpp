// sShading: a grey ramp over the shapes of each list, full at the first shape
// and darker by Offset at the last, given to the fill and the pen as their
// modes say: kept, replacing the colour, or added to it.
#include <algorithm>
#include "framework/registration.h"
#include "shape/effect_shape.h"

class KEffectShapeShading : public KEffectShapeTool {
public:
    KEffectShapeShading()
    {
        KParameterList& in = inputList;
        in.AddSlider(&offset, 1.0f, "Offset", "Offs"_id, 0, 0.0, 1.0);
        in.AddMultiButton(&modeFill, 1, "Mode Fill", "MFil"_id, 0, {"Keep", "Replace", "Add", "[end]"});
        in.AddMultiButton(&modePen, 1, "Mode Pen", "MOut"_id, 0, {"Keep", "Replace", "Add", "[end]"});
        in.AddShapeInput(&input, "Shape", 1, kFlagMain);
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        auto out = input ? input->Clone() : std::make_unique<ShapeListVector>();
        for (const auto& list : out->lists) {
            const int32_t n = list->count;
            int32_t i = 0;
            for (KShape* s = list->First(); s; s = NextShape(s), ++i) {
                const float v = 1.0f - offset * (n > 1 ? static_cast<float>(i) / static_cast<float>(n - 1) : 0.0f);
                Shade(modeFill, v, s->hasFill, s->fillColor);
                Shade(modePen, v, s->hasPen, s->penColor);
            }
        }
        return out;
    }

private:
    // A colour the shape did not bring counts as black when the shade adds to it.
    static void Shade(int32_t mode, float v, bool& has, KColor& c)
    {
        if (mode == 0) return;
        if (mode == 1 || !has) c = {mode == 1 ? v : 0.0f, mode == 1 ? v : 0.0f, mode == 1 ? v : 0.0f, 1.0f};
        if (mode == 2) c.r += v, c.g += v, c.b += v;
        has = true;
    }

    ShapeListVector* input = nullptr;
    float offset = 1.0f;
    int32_t modeFill = 1, modePen = 1;
};

ZV_TOOL(KEffectShapeShading, ZV_ShapeShading);
