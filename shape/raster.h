// Shapes to pixels: KPolygonRaster turns a shape into an 8-bit coverage mask,
// and the paint step puts a colour through the mask onto an image, a row at
// a time so that rows can run on the host's workers.
#pragma once
#include <cstdint>
#include <vector>
#include "shape/shape.h"

class KImage;

class KPolygonRaster {
public:
    // A mask of the image's size; shape x runs 0..1 across its width and y
    // 0..1 / picture aspect up its height. A sample of 1 gives hard edges.
    KPolygonRaster(const KImage& image, int32_t sample);
    KPolygonRaster(int32_t width, int32_t height, float pixelAspect, int32_t sample);

    // Coverage of the shape: the fraction of each pixel it covers, exact for
    // straight edges, in strips of 1 / sample rows split at every vertex.
    // winding: 0 even/odd, 1 non-zero, negative keeps the raster's own.
    // Attribute 1 nodes punch out, attribute 2 nodes paint under either rule.
    void Raster(const KShape& shape, int32_t winding = -1, const bool* cancel = nullptr);

    uint8_t At(int32_t x, int32_t y) const
    {
        return y < rowLow || y >= rowHigh ? 0 : mask[size_t(y - rowLow) * width + x];
    }
    // The rows the last raster touched, [rowLow, rowHigh); empty when none.
    bool Empty() const { return rowHigh <= rowLow; }
    const uint8_t* Row(int32_t y) const { return &mask[size_t(y - rowLow) * width]; }

    int32_t width = 0, height = 0;
    int32_t sampleX = 1, sampleY = 1, sampleArea = 1;
    bool nonZero = false;
    float pixelAspect = 1.0f;
    int32_t rowLow = 0, rowHigh = 0;

private:
    std::vector<uint8_t> mask;  // rows rowLow..rowHigh-1 only
};

// The colour (premultiplied) through the mask onto one row of the image:
// merge 0 replaces, 1 puts it over what is there.
void KPaintRow(KImage& image, int32_t y, const KPolygonRaster& raster, const KShapePaint& paint, int32_t merge);
// Every row, in this thread.
void KPaint(KImage& image, const KPolygonRaster& raster, const KShapePaint& paint, int32_t merge);

// A mask with the paint that goes through it, for a render that paints rows later.
struct KPaintStep {
    std::unique_ptr<KPolygonRaster> raster;
    KShapePaint paint;
};

struct KRenderListSettings {
    int32_t sample = 8;
    int32_t winding = 0;  // 0 even/odd, 1 non-zero
    bool forceFill = false;
};
// The fill and pen of every shape of the list as paint steps, in order. A
// paint that would leave the image as it is makes no step.
void KRenderList(const KShapeList& list, const KImage& image, const KRenderListSettings& settings,
                 std::vector<KPaintStep>& steps);
