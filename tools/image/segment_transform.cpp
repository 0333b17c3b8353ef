// Segment Transform: cuts the picture into cells, on a grid or in rings and
// wedges about Center, and turns and sizes the content of each cell about
// the cell's own middle.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/geometry.h"
#include "framework/registration.h"

class KEffectSegmentTransform : public KEffectWarp {
public:
    KEffectSegmentTransform()
    {
        inputList.AddPage("Segment Transform");
        inputList.AddMultiButton(&type, 0, "Type", "Type"_id, 0, {"Grid", "Radial", "[end]"});
        inputList.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, 0, 0);
        inputList.AddCheckbox(&lockSize, false, "Lock Segment Size X/Y", "SSiL"_id, 0, 0);
        inputList.AddSlider(&segmentX, 0.1f, "Segment Size X", "SSiX"_id, 0, 0.0001, 0.5);
        inputList.AddSlider(&segmentY, 0.1f, "Segment Size Y", "SSiY"_id, 0, 0.0001, 0.5);
        inputList.AddAngle(&angle, 0.0f, "Angle", "Angl"_id, 0, 1);
        inputList.AddCheckbox(&lockScale, false, "Lock Scale X/Y", "ScaL"_id, 0, 0);
        inputList.AddSlider(&scaleX, 1.0f, "Scale X", "ScaX"_id, 0, 0.0001, 5.0);
        inputList.AddSlider(&scaleY, 1.0f, "Scale Y", "ScaY"_id, 0, 0.0001, 5.0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        sizeX = std::max(segmentX, 1e-7f);
        sizeY = std::max(lockSize ? segmentX : segmentY, 1e-7f);
        invSizeX = 1.0f / sizeX;
        invSizeY = 1.0f / sizeY;
        const float sx = std::max(scaleX, 1e-7f);
        const float sy = std::max(lockScale ? scaleX : scaleY, 1e-7f);
        // Cell content grows by the scale and turns against Transform's sense:
        // a positive angle turns it clockwise as viewed.
        Matrix3f cell;
        cell.Rotate(-angle).Scale(1.0f / sx, 1.0f / sy);
        for (int r = 0; r < 2; ++r)
            for (int c = 0; c < 2; ++c) cellMatrix[r][c] = cell.m[r][c];
        radial = type == 1;
        // Rows are normalised by the pixel aspect; host points span 0..1 on both axes.
        middle = {center.x, center.y / pictureAspect};
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        // Cells are laid out from Center: on (x, y), or on (angle, radius).
        float a = in.x - middle.x, b = in.y - middle.y;
        if (radial) {
            const float radius = std::sqrt(a * a + b * b);
            a = std::atan2(b, a);
            b = radius;
        }
        const float cellX = std::floor(a * invSizeX + 0.5f) * sizeX;
        const float cellY = std::floor(b * invSizeY + 0.5f) * sizeY;
        const float lx = a - cellX, ly = b - cellY;
        a = cellX + cellMatrix[0][0] * lx + cellMatrix[0][1] * ly;
        b = cellY + cellMatrix[1][0] * lx + cellMatrix[1][1] * ly;
        // Written whole: the process reads the pair back as one value.
        if (radial) out = KPosition{middle.x + b * std::cos(a), middle.y + b * std::sin(a)};
        else out = KPosition{middle.x + a, middle.y + b};
        return true;
    }

private:
    int32_t type = 0;
    KPoint2 center;
    bool lockSize = false, lockScale = false;
    float segmentX = 0.1f, segmentY = 0.1f;
    float angle = 0.0f;
    float scaleX = 1.0f, scaleY = 1.0f;
    // Precomputed by Start.
    bool radial = false;
    KPosition middle;
    float sizeX = 0.1f, sizeY = 0.1f, invSizeX = 10.0f, invSizeY = 10.0f;
    float cellMatrix[2][2] = {{1, 0}, {0, 1}};
};

ZV_TOOL(KEffectSegmentTransform, ZV_SegmentTransform);
