// Radial: pushes the picture away from Center, or pulls it in, by the same
// distance everywhere; a positive offset opens a hole of that radius.
#include <algorithm>
#include "framework/effect.h"
#include "framework/geometry.h"
#include "framework/registration.h"

class KEffectRadial : public KEffectWarp {
public:
    KEffectRadial()
    {
        inputList.AddPage("Radial");
        inputList.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, 0, 0);
        inputList.AddScrew(&offset, 0.0f, "Radial Offset", "RaOX"_id, 0, -1.0, 1.0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        // Rows are normalised by the pixel aspect; host points span 0..1 on both axes.
        c = {center.x, center.y / pictureAspect};
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        const Vector2f d = Vector2f{in.x, in.y} - c;
        // in - d k is Center + d (1 - k), and exactly `in` for a zero offset.
        const float k = offset / std::max(d.Length(), 1e-5f);
        out = {in.x - d.x * k, in.y - d.y * k};
        return true;
    }

private:
    KPoint2 center;
    float offset = 0.0f;

    Vector2f c;
};

ZV_TOOL(KEffectRadial, ZV_Radial);
