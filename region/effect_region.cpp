#include "region/effect_region.h"

KEffectRegion3D::KEffectRegion3D() { outputList.AddRegion3DOutput(&output, "Output", 1, 0); }

void KEffectRegion3D::AddSoftness()
{
    inputList.AddCheckbox(&softnessLock, false, "Softness Lock", "SofL"_id, 0, 0);
    inputList.AddSlider(&softness.x, 0.0f, "Softness X", "SofX"_id, 0, 0.0, 1.0);
    inputList.AddSlider(&softness.y, 0.0f, "Softness Y", "SofY"_id, 0, 0.0, 1.0);
    inputList.AddSlider(&softness.z, 0.0f, "Softness Z", "SofZ"_id, 0, 0.0, 1.0);
}

void KEffectRegion3D::AddTransformGroup()
{
    inputList.AddTransform(&transform, KTransformValue{}, "Transform",
                           "Xfrm"_id, 0, 5);
}

void KEffectRegion3D::FinishRender()
{
    std::shared_ptr<KRegion3DNode> node = Compute();
    node->transform = Matrix4f::Of(transform);
    node->inverseTransform = node->transform.Inverted();
    node->invert = invert;
    node->softness = softnessLock ? Vector3f{softness.x, softness.x, softness.x} : softness;
    made = KRegion3D(std::move(node));
    output = &made;
}
