// rMerge: two regions combined point by point; a region not given counts as
// empty, so "Union" passes the other through and "Intersect" gives nothing.
#include "framework/registration.h"
#include "region/effect_region.h"

class KEffectRegion3DMerge : public KEffectRegion3D {
public:
    KEffectRegion3DMerge()
    {
        inputList.AddRegion3DInput(&first, "Region 1", 1, kFlagMain);
        inputList.AddRegion3DInput(&second, "Region 2", 2, kFlagMain);
        inputList.AddLabel("Region Merge", 0, 0);
        inputList.AddCombo(&combine, kCombineUnion, "Combine", "Comb"_id, 0,
                           {"Union", "Intersect", "Add", "Subtract", "Exclusive", "[end]"});
        AddInvert();
        AddTransformGroup();
    }

    std::shared_ptr<KRegion3DNode> Compute() override
    {
        auto node = std::make_shared<KRegion3DNode>();
        node->kind = kRegionMerge;
        node->child1 = TreeOf(first);
        node->child2 = TreeOf(second);
        node->combine = combine;
        return node;
    }

private:
    KRegion3D* first = nullptr;
    KRegion3D* second = nullptr;
    int32_t combine = kCombineUnion;
};

ZV_TOOL(KEffectRegion3DMerge, ZV_Region3DMerge);
