// rShape: the inside of a shape, reaching through all depths: 1 inside any of
// its sub-paths, 0 outside. The shape is tested where the point came in, so
// the tool's own transform moves nothing here.
#include <vector>
#include "framework/registration.h"
#include "region/effect_region.h"
#include "shape/geometry.h"

class KEffectRegion3DShape : public KEffectRegion3DCreate {
public:
    KEffectRegion3DShape()
    {
        inputList.AddShapeInput(&shapes, "Shape", 2, kFlagMain);
        inputList.AddLabel("Region Shape", 0, 0);
        AddInvert();
        inputList.AddCombo(&mapping, 0, "Mapping", "Mapp"_id, 0, {"Planar", "Spherical", "Cylindrical", "[end]"});
        AddTransformGroup();
    }

    std::shared_ptr<KRegion3DNode> Compute() override
    {
        auto node = std::make_shared<KRegion3DNode>();
        node->kind = kRegionShape;
        node->mapping = mapping;
        if (!shapes || !shapes->ShapeCount()) return node;
        // Flattened once here, so that asking the region allocates nothing.
        auto paths = std::make_shared<std::vector<std::vector<Vector2f>>>();
        for (const auto& list : shapes->lists)
            for (const KShape* s = list->First(); s; s = NextShape(s)) {
                std::unique_ptr<KShape> flat(s->IsCurved() ? KFlatten(*s, 16) : nullptr);
                KShapeArrayList arrays(flat ? *flat : *s);
                for (const KShapeArray* a = arrays.First(); a; a = NextArray(a))
                    if (a->Count() > 0) paths->push_back(a->points);
            }
        node->shape = std::move(paths);
        return node;
    }

private:
    ShapeListVector* shapes = nullptr;
    int32_t mapping = 0;
};

ZV_TOOL(KEffectRegion3DShape, ZV_Region3DShape);
