// Spherize: bulges (or pinches, with a negative deformation) the picture
// inside a circle, a band or a rectangle about Center.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/registration.h"

class KEffectSpherize : public KEffectWarp {
public:
    KEffectSpherize()
    {
        inputList.AddPage("Spherize");
        inputList.AddMultiButton(&type, 2, "Type", "BeTy"_id, 0,
                                 {"Horizontal", "Vertical", "Sphere", "Rectangle", "[end]"});
        inputList.AddMultiButton(&algorithm, 0, "Algorithm", "BeAl"_id, 0,
                                 {"Spherize", "Soft in/out", "Smooth", "Sinusoid", "[end]"});
        inputList.AddSlider(&iterations, 2, "Iterations", "SpIt"_id, 0, 1, 5);
        inputList.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, 0, 0);
        inputList.AddSlider(&size, 1.0f, "Size", "SpRa"_id, 0, 0.0, 1.0);
        inputList.AddCheckbox(&lock, false, "Lock horizontal/vertical", "SpLo"_id, 0, 0);
        inputList.AddSlider(&deformH, 0.5f, "Deformation", "SpDH"_id, 0, -1.0, 1.0);
        inputList.AddSlider(&deformV, 0.5f, "Deformation vertical", "SpDV"_id, 0, -1.0, 1.0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        defH = deformH;
        defV = lock ? deformH : deformV;
        invHalf = 1.0f / std::max(size * 0.5f, 1e-7f);
        // Rows are normalised by the pixel aspect; host points span 0..1 on both axes.
        middle = {center.x, center.y / pictureAspect};
        return defH != 0.0f || defV != 0.0f;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        const float dx = in.x - middle.x, dy = in.y - middle.y;
        float u, v;
        switch (type) {
        case 0: u = v = std::fabs(dx) * invHalf; break;
        case 1: u = v = std::fabs(dy) * invHalf; break;
        case 3:
            u = std::fabs(dx) * invHalf;
            v = std::fabs(dy) * invHalf;
            break;
        default: u = v = std::sqrt(dx * dx + dy * dy) * invHalf; break;
        }
        if (!(u < 1.0f && v < 1.0f)) {
            out = in;
            return true;
        }
        u = Shape(u);
        v = type == 3 ? Shape(v) : u;
        // Written whole: the process reads the pair back as one value.
        out = KPosition{middle.x + dx * (defH * u + 1.0f - defH),
                        middle.y + dy * (defV * v + 1.0f - defV)};
        return true;
    }

private:
    // The profile, applied Iterations times; u is below 1.
    float Shape(float u) const
    {
        const float u0 = u;
        for (int32_t i = 0; i < iterations; ++i) {
            switch (algorithm) {
            case 0: u = 1.0f - std::sqrt(1.0f - u * u); break;
            case 1: u *= u0; break;
            case 2: u = std::sin(u * 1.5707964f); break;
            default: u = 2.0f * std::asin(u) / 3.14159265f; break;
            }
        }
        return u;
    }

    int32_t type = 2, algorithm = 0, iterations = 2;
    KPoint2 center;
    float size = 1.0f;
    bool lock = false;
    float deformH = 0.5f, deformV = 0.5f;
    // Precomputed by Start.
    float defH = 0.5f, defV = 0.5f, invHalf = 2.0f;
    KPosition middle;
};

ZV_TOOL(KEffectSpherize, ZV_Spherize);
