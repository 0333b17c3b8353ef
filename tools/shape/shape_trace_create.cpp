// sTrace Create: the outlines of an image's channel above a threshold, traced
// into curves and flattened, centred on the origin as a render would place them.
#include "framework/registration.h"
#include "raster/image.h"
#include "shape/create.h"
#include "shape/effect_shape.h"
#include "shape/geometry.h"

class KEffectShapeTraceCreate : public KEffectShapeTool {
public:
    KEffectShapeTraceCreate()
    {
        KParameterList& in = inputList;
        in.AddPage("Shape Trace");
        in.AddImageInput(&image, "Image", 1, kFlagMain);
        in.AddChannelSelect(&channel, 4, "Map Channel", "MapC"_id, 0);
        in.AddSlider(&threshold, 0.5f, "Threshold", "Thre"_id, 0, 0.0, 1.0);
        in.AddSlider(&precision, 8, "Curve Precision", "Prec"_id, 0, 2, 16);
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        auto out = std::make_unique<ShapeListVector>();
        if (!image) return out;
        std::unique_ptr<KShape> traced(KTraceShape(*image, channel, threshold));
        auto list = std::make_unique<KShapeList>();
        if (traced) {
            KShape* shape = precision > 0 ? KFlatten(*traced, precision) : traced.release();
            // Pixel column 0 lands at x = -0.5, the middle row at y = 0.
            const float aspect = image->PictureAspect(), pixel = image->PixelAspect();
            Matrix4f place;
            place.Scale(1.0f, 1.0f / pixel, 1.0f).Translate(-0.5f, -0.5f / aspect, 0.0f);
            list->Add(shape);
            list->ApplyMatrix(place);
        }
        out->frameWidth = image->FullWidth();
        out->frameHeight = image->FullHeight();
        out->Push(std::move(list));
        return out;
    }

private:
    KImage* image = nullptr;
    int32_t channel = 4, precision = 8;
    float threshold = 0.5f;
};

ZV_TOOL(KEffectShapeTraceCreate, ZV_ShapeTraceCreate);
