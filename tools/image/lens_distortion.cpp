// Lens Distortion: radial distortion about Center by the polynomial
// f = (Kappa 2 r^2 + Kappa 1) r^2 + 1 / Scale; "Restore" divides by it instead.
#include <algorithm>
#include "framework/effect.h"
#include "framework/geometry.h"
#include "framework/registration.h"

class KEffectLensDistortion : public KEffectWarp {
public:
    KEffectLensDistortion()
    {
        inputList.AddPage("Lens Distortion");
        inputList.AddMultiButton(&type, 0, "Type", "Type"_id, 0, {"Distort", "Restore", "[end]"});
        inputList.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, 0, 0);
        inputList.AddCheckbox(&pinCorners, false, "Pin corners (only if center is centered)",
                              "PinC"_id, 0, 0);
        inputList.AddSlider(&scale, 1.0f, "Scale", "Scal"_id, 0, 0.0, 2.0);
        inputList.AddSlider(&kappa1, 0.5f, "Kappa 1", "Kap1"_id, 0, -1.0, 1.0);
        inputList.AddSlider(&kappa2, 0.5f, "Kappa 2", "Kap2"_id, 0, -1.0, 1.0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        // Rows are normalised by the pixel aspect; host points span 0..1 on both axes.
        const float aspect = pictureAspect;
        c = {center.x, center.y / aspect};
        float s = scale;
        if (pinCorners) {
            // The corners lie at this squared distance from the middle; f is 1 there.
            const float r2 = 0.25f / (aspect * aspect) + 0.25f;
            s = 1.0f / (1.0f - (kappa2 * r2 + kappa1) * r2);
        }
        inverseScale = 1.0f / std::max(s, 1e-7f);
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        const Vector2f d = Vector2f{in.x, in.y} - c;
        const float r2 = d.Dot(d);
        float f = (kappa2 * r2 + kappa1) * r2 + inverseScale;
        if (type == 1) f = 1.0f / f;
        // in + d (f - 1) is Center + d f, and exactly `in` where f is 1.
        f -= 1.0f;
        out = {in.x + d.x * f, in.y + d.y * f};
        return true;
    }

private:
    int32_t type = 0;
    KPoint2 center;
    bool pinCorners = false;
    float scale = 1.0f, kappa1 = 0.5f, kappa2 = 0.5f;

    Vector2f c;
    float inverseScale = 1.0f;
};

ZV_TOOL(KEffectLensDistortion, ZV_LensDistortion);
