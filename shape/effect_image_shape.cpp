#include "shape/effect_image_shape.h"
#include <cstring>
#include <memory>
#include "raster/image.h"
#include "shape/clip.h"
#include "shape/geometry.h"
#include "shape/modify.h"

void KEffectImageShape::AddShadingControls()
{
    KParameterList& in = inputList;
    in.AddPage("Shape");
    in.AddPoint(&center, {0.5f, 0.5f}, "Shape Center", "Cent"_id, 0, 1);
    in.AddCheckbox(&reposition, false, "Shape Reposition Around Center", "RepC"_id, 0, 0);
    in.AddScrew(&offset, 0.0f, "Shape Offset", "Offs"_id, 0, -0.1, 0.1);
    in.AddSlider(&replicateCount, 1, "Shape Replicate", "Repl"_id, 0, 1, 32);
    in.AddScrew(&replicateOffset, 0.1f, "Shape Replicate Offset", "ReOf"_id, 0, -0.1, 0.1);
    in.AddRange(&writeRange, 0.0f, 1.0f, "Shape Range Start", "Shape Range End", "WriS"_id, "WriE"_id, 0, 0.0, 1.0);
    in.AddPage("Shading");
    in.AddColor(&penColor, {1, 1, 1, 1}, "Pen Color", "PnCR"_id, 0);
    in.AddSlider(&penOpacity, 1.0f, "Pen Opacity", "PnOp"_id, 0, 0.0, 1.0);
    in.AddSlider(&penThickness, 0.01f, "Pen Thickness", "PnTh"_id, 0, 0.0, 0.1);
    in.AddSlider(&penBias, 0.0f, "Pen Thickness Bias", "PnTB"_id, 0, -1.0, 1.0);
    in.AddMultiButton(&penJoin, 2, "Pen Join Type", "PeJT"_id, 0, {"Miter", "Bevel", "Round", "[end]"});
    in.AddMultiButton(&penEnd, 0, "Pen End Type", "PeET"_id, 0, {"Simple", "Round", "[end]"});
    in.AddSlider(&penRoundness, 1.0f, "Pen End Type Roundness", "PeER"_id, 0, 0.0, 1.0);
}

bool KEffectImageShape::Start(KImage* input, KImage** output, void* extras)
{
    KEffectImage::Start(input, output, extras);
    steps.clear();
    if (!output || !*output) return false;
    const KImage& target = **output;
    height = target.height;
    std::unique_ptr<ShapeListVector> shapes(GetShapes());
    if (!shapes || !shapes->Count() || target.width < 2 || target.height < 2) return true;

    KShapePen pen;
    pen.color = penColor;
    pen.thickness = penThickness;
    pen.thicknessBias = penBias;
    pen.joinType = penJoin;
    pen.endType = penEnd;
    pen.endRoundness = penRoundness;
    KShapePaint paint;
    paint.color = penColor;
    paint.opacity = penOpacity;
    paint.DeriveColor16();
    if (!(penThickness > 0.0f) || !(penOpacity > 0.0f)) return true;

    for (KShape* s = shapes->At(0)->First(); s; s = NextShape(s)) {
        std::unique_ptr<KShape> shape(KShape::Duplicate(*s));
        Vector2f low, high;
        if (reposition && shape->Bounds(low, high)) {
            Matrix3f m;
            m.Translate(center.x - (low.x + high.x) * 0.5f, center.y - (low.y + high.y) * 0.5f);
            shape->ApplyMatrix(m);
        }
        if (writeRange.low > 1.1920929e-7f || writeRange.high < 0.9999999f)
            shape.reset(KWriteOnShape(*shape, writeRange.low, writeRange.high, 16));
        if (offset != 0.0f) shape.reset(KOffsetShape(*shape, {16, 0, offset, 8}));
        auto raster = std::make_unique<KPolygonRaster>(target, 8);
        raster->nonZero = pen.rule != 1;
        std::unique_ptr<KShape> stroke(KStroke(*shape, pen));
        // The replicas go into the same stroke, so they share one mask.
        for (int32_t i = 1; i < replicateCount; ++i)
            for (float sign : {1.0f, -1.0f}) {
                std::unique_ptr<KShape> ring(KOffsetShape(*shape, {16, 0, sign * i * replicateOffset, 8}));
                std::unique_ptr<KShape> more(KStroke(*ring, pen));
                stroke->Append(more.get(), true);
            }
        raster->Raster(*stroke, -1);
        if (!raster->Empty()) steps.push_back({std::move(raster), paint});
    }
    return true;
}

void KEffectImageShape::Stop(KImage** output)
{
    steps.clear();
    KEffectImage::Stop(output);
}

void KEffectImageShape::ProcessJob(int32_t, int32_t job, KImage* source, KImage* target)
{
    KPaintSteps(steps, job, source, target);
}

void KPaintSteps(const std::vector<KPaintStep>& steps, int32_t y, KImage* source, KImage* target)
{
    if (!target || y < 0 || y >= target->height) return;
    if (source && source != target && source->height == target->height && source->width == target->width)
        target->CopyRowFrom(*source, y);
    else if (source == target || !source)
        std::memset(target->RowW(y), 0, target->RowBytes());
    for (const KPaintStep& s : steps) KPaintRow(*target, y, *s.raster, s.paint, 1);
}
