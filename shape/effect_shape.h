// The base of the tools whose result is a shape: each makes a new vector from
// its fields, which the base keeps as the output "Output" until the next render.
#pragma once
#include <memory>
#include "framework/effect.h"
#include "shape/shape.h"

class KEffectShapeTool : public KEffectShape {
public:
    KEffectShapeTool() { outputList.AddShapeOutput(&output, "Output", "PShp"_id, 0); }
    // The tool's shapes, made from its fields; never null.
    virtual std::unique_ptr<ShapeListVector> Compute() = 0;
    void FinishRender() override
    {
        made = Compute();
        output = made.get();
    }

private:
    ShapeListVector* output = nullptr;  // the declared output's field
    std::unique_ptr<ShapeListVector> made;
};
