// rModify: the region that arrives with its values adjusted by brightness and
// contrast, "Edge only" turning the fringe where it is one half into the
// peak, and the result through the "Shape" curve when "Use Shape" is on.
#include <algorithm>
#include "framework/registration.h"
#include "region/effect_region.h"

class KEffectRegion3DModify : public KEffectRegion3D {
public:
    KEffectRegion3DModify()
    {
        inputList.AddRegion3DInput(&region, "Region", 1, kFlagMain);
        AddInvert();
        inputList.AddSlider(&brightness, 0.0f, "Brightness", "SofX"_id, 0, -1.0, 1.0);
        inputList.AddSlider(&contrast, 1.0f, "Contrast", "SofY"_id, 0, 0.0, 5.0);
        inputList.AddSlider(&edge, 0.0f, "Edge only", "Edge"_id, 0, 0.0, 1.0);
        inputList.AddCheckbox(&useShape, false, "Use Shape", "UCur"_id, 0, 0);
        inputList.AddCurve(&curve, "Shape", "Shap"_id, 0, KColor{1.0f, 1.0f, 1.0f, 1.0f});
        AddTransformGroup();
    }

    std::shared_ptr<KRegion3DNode> Compute() override
    {
        auto node = std::make_shared<KRegion3DNode>();
        node->kind = kRegionModify;
        node->child1 = TreeOf(region);
        node->brightness = brightness;
        node->contrast = contrast;
        node->edge = edge;
        if (useShape && curve && curve->entries && curve->count > 0) {
            auto lookup = std::make_shared<KRegionLookup>();
            lookup->count = curve->count;
            lookup->maximum = static_cast<float>(curve->count - 1);  // entries 0..65535 stand for 0..1
            lookup->entries.assign(curve->entries, curve->entries + curve->count);
            node->lookup = std::move(lookup);
        }
        return node;
    }

private:
    KRegion3D* region = nullptr;
    float brightness = 0.0f, contrast = 1.0f, edge = 0.0f;
    bool useShape = false;
    KCurveTable* curve = nullptr;
};

ZV_TOOL(KEffectRegion3DModify, ZV_Region3DModify);
