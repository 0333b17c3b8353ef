// Relative Transform: turns and sizes the picture about a pivot found in the
// picture itself: within the bounding box of the pixels whose "Center Channel"
// lies in the range, or at their weighted centre. Center moves the result.
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>
#include "framework/effect.h"
#include "framework/geometry.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectRelativeTransform : public KEffectWarp {
public:
    KEffectRelativeTransform()
    {
        inputList.AddPage("Relative Transform");
        inputList.AddMultiButton(&centerType, 0, "Center Type", "CenT"_id, 0,
                                 {"Bounding Box", "Weighted Pixels", "[end]"});
        inputList.AddChannelSelect(&channel, 4, "Center Channel", "EaCh"_id, 0);
        inputList.AddRange(&range, 0.0f, 1.0f, "Range Low", "Range High", "GrwS"_id, "GrwE"_id, 0,
                           0.0, 1.0);
        inputList.AddSlider(&pivotX, 0.0f, "Pivot X", "PivX"_id, 0, -1.0, 1.0);
        inputList.AddSlider(&pivotY, 0.0f, "Pivot Y", "PivY"_id, 0, -1.0, 1.0);
        // An offset from the middle of the picture.
        inputList.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, 0, 3);
        inputList.AddAngle(&angle, 0.0f, "Axis angle", "Angl"_id, 0, 1);
        inputList.AddMultiButton(&sizeType, 0, "Size Type", "SizT"_id, 0,
                                 {"Size X and Size Y", "Size and Aspect", "[end]"});
        inputList.AddSlider(&sizeX, 1.0f, "Size X", "SizX"_id, 0, 0.0, 5.0);
        inputList.AddSlider(&sizeY, 1.0f, "Size Y", "SizY"_id, 0, 0.0, 5.0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        if (!input) return false;
        float lo[2], hi[2];
        const bool found = centerType == 1 ? WeightedCentre(*input, lo, hi)
                                           : input->FindChannelBounds(channel, range.low,
                                                                      range.high, lo, hi);
        if (!found) return false;  // nothing to pivot on: the picture stays
        // Rows are normalised by the pixel aspect; Center arrives relative to the middle.
        const float aspect = pictureAspect;
        const float cx = ((1.0f - pivotX) / 2.0f * lo[0] + (pivotX + 1.0f) / 2.0f * hi[0]) /
                         static_cast<float>(width);
        const float cy = ((1.0f - pivotY) / 2.0f * lo[1] + (pivotY + 1.0f) / 2.0f * hi[1]) /
                         static_cast<float>(height) / aspect;
        const float sx = std::max(sizeX, 1e-7f);
        const float sy = std::max(sizeType == 1 ? sizeY * sizeX : sizeY, 1e-7f);
        matrix = Matrix3f();
        matrix.Translate(-center.x, -center.y / aspect)
            .Translate(-cx, -cy)
            .Rotate(angle)  // the arriving angle is already negated
            .Scale(1.0f / sx, 1.0f / sy)
            .Translate(cx, cy);
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        const Vector2f p = matrix.Apply({in.x, in.y});
        out = {p.x, p.y};
        return true;
    }

private:
    // The pixels that count as for the bounding box, each weighted by how far
    // into the range it lies; the centre is both corners, in the box's units.
    // Rows sum on the pool and add up in row order, as one thread would.
    bool WeightedCentre(const KImage& image, float lo[2], float hi[2]) const
    {
        const float low = range.low, high = range.high, span = std::fabs(high - low);
        std::vector<std::pair<double, double>> rows(image.height);  // weight, weighted x
        image.EachRow([&](int32_t y, const uint16_t* w, const float* f) {
            double rowSum = 0.0, rowX = 0.0;
            for (int32_t x = 0; x < image.width; ++x) {
                const float v = static_cast<float>(KImage::ChannelValue(w, f, x, channel)) * 1.5259022e-05f;
                if (!(v > low && v <= high)) continue;
                const double t = (v - low) / span;
                rowSum += t;
                rowX += t * (x + 0.5);
            }
            rows[y] = {rowSum, rowX};
        });
        double sx = 0.0, sy = 0.0, sum = 0.0;
        for (int32_t y = 0; y < image.height; ++y) {
            sum += rows[y].first;
            sx += rows[y].second;
            sy += rows[y].first * (y + 0.5);
        }
        if (!(sum > 0.0)) return false;
        lo[0] = hi[0] = static_cast<float>(sx / sum);
        lo[1] = hi[1] = static_cast<float>(sy / sum);
        return true;
    }

    int32_t centerType = 0, channel = 4;
    KRange2 range;
    float pivotX = 0.0f, pivotY = 0.0f;
    KPoint2 center;
    float angle = 0.0f;
    int32_t sizeType = 0;
    float sizeX = 1.0f, sizeY = 1.0f;

    Matrix3f matrix;
};

ZV_TOOL(KEffectRelativeTransform, ZV_RelativeTransform);
