// rTransform: the region that arrives, moved, turned and scaled.
#include "framework/registration.h"
#include "region/effect_region.h"

class KEffectRegion3DTransform : public KEffectRegion3D {
public:
    KEffectRegion3DTransform()
    {
        inputList.AddRegion3DInput(&region, "Region", 1, kFlagMain);
        AddInvert();
        AddTransformGroup();
    }

    std::shared_ptr<KRegion3DNode> Compute() override
    {
        auto node = std::make_shared<KRegion3DNode>();
        node->kind = kRegionTransform;
        node->child1 = TreeOf(region);
        return node;
    }

private:
    KRegion3D* region = nullptr;
};

ZV_TOOL(KEffectRegion3DTransform, ZV_Region3DTransform);
