// Directional Scale: sizes the picture along an axis through Center. Unless
// "Scale all" is on, only the half-plane the axis points into is scaled; the
// other half stays, and the two meet on the line through Center.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/geometry.h"
#include "framework/registration.h"

class KEffectDirectionalScale : public KEffectWarp {
public:
    KEffectDirectionalScale()
    {
        inputList.AddPage("Directional Scale");
        inputList.AddCheckbox(&scaleAll, false, "Scale all", "SAll"_id, 0, 0);
        inputList.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, 0, 0);
        inputList.AddAngle(&angle, 0.0f, "Axis angle", "Angl"_id, 0, 1);
        inputList.AddSlider(&size, 5.0f, "Size along axis", "Size"_id, 0, 0.0, 10.0);
        inputList.AddSlider(&sizeOther, 1.0f, "Size in other direction", "SizY"_id, 0, 0.0, 10.0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        // Rows run to 1 / picture aspect; host points span 0..1 on both axes.
        c = {center.x, center.y / pictureAspect};
        const float along = std::max(size, 1e-7f), other = std::max(sizeOther, 1e-7f);
        // The axis points along (cos a, -sin a): turning by a lays it on x.
        map.matrix = Matrix3f();
        map.matrix.Translate(-c.x, -c.y)
            .Rotate(angle)
            .Scale(1.0f / along, 1.0f / other)
            .Rotate(-angle)
            .Translate(c.x, c.y);
        map.origin = c;
        map.everywhere = scaleAll;
        map.normal = {std::cos(angle), -std::sin(angle)};
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        const Vector2f q = map.Apply({in.x, in.y});
        out = {q.x, q.y};
        return true;
    }

private:
    bool scaleAll = false;
    KPoint2 center;
    float angle = 0.0f, size = 5.0f, sizeOther = 1.0f;

    Vector2f c;
    HalfPlaneMap map;
};

ZV_TOOL(KEffectDirectionalScale, ZV_DirectionalScale);
