// Spiral: a pen drawn along a spiral around "Shape Center" over the input,
// zig-zagged and smoothed at will.
#include <memory>
#include "framework/registration.h"
#include "shape/effect_image_shape.h"
#include "shape/modify.h"

class KEffectSpiral : public KEffectImageShape {
public:
    KEffectSpiral()
    {
        KParameterList& in = inputList;
        in.AddPage("Spiral");
        spiral.Declare(in);
        in.AddCheckbox(&closeShape, false, "Close Shape", "ShCl"_id, 0, 0);
        in.AddSlider(&subdivisions, 16, "Curve subdivisions", "Subd"_id, 0, 1, 32);
        in.AddMultiButton(&zigZagType, 0, "ZigZag Type", "ZZTy"_id, 0, {"None", "By segment", "By distance", "[end]"});
        in.AddSlider(&zigZagSteps, 3, "ZigZag Steps", "ZZSt"_id, 0, 1, 10);
        in.AddSlider(&zigZagDistance, 0.01f, "ZigZag Distance", "ZZDi"_id, 0, 0.001, 0.1);
        in.AddScrew(&zigZagOffset, 0.01f, "ZigZag Offset", "ZZOf"_id, 0, -0.1, 0.1);
        in.AddScrew(&smooth, 1.0f, "Smooth", "Smoo"_id, 0, 0.0, 1.0);
        in.AddScrew(&smoothCurvature, 1.0f, "Smooth Curvature", "SmCu"_id, 0, 0.0, 1.0);
        AddShadingControls();
    }

    ShapeListVector* GetShapes() override
    {
        const KSpiralSettings s = spiral.Settings();
        std::unique_ptr<KShape> shape(KSpiralShape(s));
        Matrix3f place;
        place.Translate(center.x, center.y);
        shape->ApplyMatrix(place);
        if (closeShape) shape->Close();
        if (zigZagType != 0) {
            auto* zig = new KShape(shape.get());
            KShapeArrayList arrays(*shape);
            for (KShapeArray* a = arrays.First(); a; a = NextArray(a))
                KZigZagArray(*zig, *a, zigZagType == 1 ? 1 : 2, zigZagOffset, zigZagSteps);
            shape.reset(zig);
        }
        if (smooth != 0.0f) {
            auto* smoothed = new KShape(shape.get());
            KShapeArrayList arrays(*shape);
            for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) KSmoothArray(*smoothed, *a, smooth, smoothCurvature);
            shape.reset(smoothed);
        }
        auto* v = new ShapeListVector;
        auto list = std::make_unique<KShapeList>();
        list->Add(shape.release());
        v->Push(std::move(list));
        return v;
    }

private:
    KSpiralControls spiral;
    int32_t subdivisions = 16, zigZagType = 0, zigZagSteps = 3;
    bool closeShape = false;
    float zigZagDistance = 0.01f, zigZagOffset = 0.01f, smooth = 1.0f, smoothCurvature = 1.0f;
};

ZV_TOOL(KEffectSpiral, ZV_Spiral);
