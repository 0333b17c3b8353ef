// The base of the region tools: each makes one node of its kind over the
// regions that arrive, placed in space by the common transform group, and
// the base keeps the new tree as the output "Output" until the next render.
#pragma once
#include <memory>
#include "framework/effect.h"
#include "region/region.h"

class KEffectRegion3D : public KEffect {
public:
    KEffectRegion3D();
    int32_t GetFamily() override { return kFamilyRegion3D; }
    // The tool's node with its kind and the fields of its kind; the base adds
    // the transform, its inverse, "Invert" and the softness.
    virtual std::shared_ptr<KRegion3DNode> Compute() = 0;
    void FinishRender() override;

protected:
    // "Invert", declared by each tool where its list puts it.
    void AddInvert() { inputList.AddCheckbox(&invert, false, "Invert", "Inve"_id, 0, 0); }
    // "Softness Lock" and the X, Y, Z softness of the solids.
    void AddSoftness();
    // The common transform group, last in every tool.
    void AddTransformGroup();
    // A region input's tree, shared: trees do not change once made.
    static std::shared_ptr<const KRegion3DNode> TreeOf(const KRegion3D* region)
    {
        return region ? region->root : nullptr;
    }

    KTransformValue transform;
    bool invert = false;
    bool softnessLock = false;
    Vector3f softness;

private:
    KRegion3D* output = nullptr;  // the declared output's field
    KRegion3D made;
};

// The tools that start a region from nothing.
class KEffectRegion3DCreate : public KEffectRegion3D {};

// Cube, Plane and Sphere: a solid of its kind about the origin, softened at
// its surface.
template <uint32_t Kind> class KEffectRegion3DSolid : public KEffectRegion3DCreate {
public:
    KEffectRegion3DSolid()
    {
        AddInvert();
        AddSoftness();
        AddTransformGroup();
    }
    std::shared_ptr<KRegion3DNode> Compute() override
    {
        auto node = std::make_shared<KRegion3DNode>();
        node->kind = Kind;
        return node;
    }
};
