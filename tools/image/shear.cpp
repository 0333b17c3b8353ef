// Shear: slants the picture ahead of a line through the axis pivot, across
// the axis direction, and stretches it along the axis. Without "Shear all"
// the half behind the line only follows Center.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/geometry.h"
#include "framework/registration.h"

class KEffectShear : public KEffectWarp {
public:
    KEffectShear()
    {
        inputList.AddPage("Shear");
        inputList.AddCheckbox(&shearAll, false, "Shear all", "SAll"_id, 0, 0);
        inputList.AddMultiButton(&inputType, 0, "Input Type", "Type"_id, 0,
                                 {"By value", "By angle", "[end]"});
        inputList.AddSlider(&shearValue, 1.0f, "Shear", "SVaX"_id, 0, -2.0, 2.0);
        inputList.AddSlider(&alongValue, 0.0f, "Shear Along Axis", "SVaY"_id, 0, -2.0, 2.0);
        inputList.AddAngle(&shearAngle, 45.0f, "Shear Angle", "SAnX"_id, 0, 1);
        inputList.AddAngle(&alongAngle, 0.0f, "Shear Angle Along Axis", "SAnY"_id, 0, 1);
        inputList.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, 0, 3);
        inputList.AddPoint(&pivot, {0.5f, 0.5f}, "Axis Pivot", "Pivo"_id, 0, 0);
        inputList.AddAngle(&axisAngle, 90.0f, "Axis Angle", "Angl"_id, 0, 1);
        inputList.AddSlider(&size, 1.0f, "Size Along Axis", "Size"_id, 0, 0.0, 10.0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        float across = shearValue, along = alongValue;
        if (inputType == 1) {
            across = -std::tan(shearAngle);
            along = -std::tan(alongAngle);
        }
        // In the turned frame x runs along the axis and y across it: a point
        // slides across by `across` per unit ahead of the line, which stays put.
        Matrix3f slant;
        slant.m[0][1] = along;
        slant.m[1][0] = across;
        // Rows are normalised by the pixel aspect; host points span 0..1 on both axes.
        const float aspect = pictureAspect;
        offset = {center.x, center.y / aspect};
        const Vector2f p{pivot.x, pivot.y / aspect};
        Matrix3f m;
        m.Translate(-offset.x, -offset.y)
            .Translate(-p.x, -p.y)
            .Rotate(axisAngle)
            .Then(slant)
            .Scale(1.0f / std::max(size, 1e-7f), 1.0f)
            .Rotate(-axisAngle)
            .Translate(p.x, p.y);
        for (int r = 0; r < 2; ++r)
            for (int c = 0; c < 3; ++c) affine[r][c] = m.m[r][c];
        // The axis direction; the arriving angle is negated, rows run upward.
        normal = {std::cos(axisAngle), -std::sin(axisAngle)};
        origin = p + offset;
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        // Positions are written whole: the process reads the pair back as one value.
        if (!shearAll && (in.x - origin.x) * normal.x + (in.y - origin.y) * normal.y <= 0.0f) {
            out = KPosition{in.x - offset.x, in.y - offset.y};
            return true;
        }
        out = KPosition{affine[0][0] * in.x + affine[0][1] * in.y + affine[0][2],
                        affine[1][0] * in.x + affine[1][1] * in.y + affine[1][2]};
        return true;
    }

private:
    bool shearAll = false;
    int32_t inputType = 0;
    float shearValue = 1.0f, alongValue = 0.0f;
    float shearAngle = 45.0f, alongAngle = 0.0f;
    KPoint2 center, pivot;
    float axisAngle = 90.0f;
    float size = 1.0f;
    // Precomputed by Start.
    float affine[2][3] = {{1, 0, 0}, {0, 1, 0}};
    Vector2f normal{0.0f, 1.0f}, origin, offset;
};

ZV_TOOL(KEffectShear, ZV_Shear);
