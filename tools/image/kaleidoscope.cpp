// Kaleidoscope: folds the plane onto one piece of the source and repeats it.
// "Classic" tiles the plane with equilateral triangles of side Radius, each the
// mirror of its neighbours across their shared edge; "Fancy" folds around
// Center into wedges of the view angle, and into rings of Radius.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/geometry.h"
#include "framework/registration.h"

class KEffectKaleidoscope : public KEffectWarp {
public:
    KEffectKaleidoscope()
    {
        inputList.AddPage("Kaleidoscope");
        inputList.AddMultiButton(&type, 0, "Type", "Type"_id, 0, {"Classic", "Fancy", "[end]"});
        inputList.AddSlider(&radius, 0.25f, "Radius", "Leng"_id, 0, 0.0, 1.0);
        inputList.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, 0, 0);
        inputList.AddAngle(&angle, 0.0f, "Angle", "Angl"_id, 0, 1);
        inputList.AddAngle(&viewAngle, 45.0f, "View angle", "AngE"_id, 0, 1);
        inputList.AddSlider(&size, 1.0f, "Size", "Size"_id, 0, 0.0, 2.0);
        inputList.AddCheckbox(&pingPongAngle, false, "Ping-Pong along angle", "AnPP"_id, 0, 0);
        inputList.AddCheckbox(&pingPongRadius, false, "Ping-Pong along radius", "RaPP"_id, 0, 0);
        inputList.AddPage("Source");
        inputList.AddPoint(&sourceCenter, {0.5f, 0.5f}, "Source center", "SoCe"_id, 0, 0);
        inputList.AddAngle(&sourceAngle, 0.0f, "Source angle", "SoAn"_id, 0, 1);
        inputList.AddSlider(&sourceSize, 1.0f, "Source size", "SoSi"_id, 0, 0.0, 2.0);
        // A triangle's neighbours turn onto it by a sixth and a third of a turn.
        turn60.Rotate(-1.0471976f);
        turn120.Rotate(-2.0943952f);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        // Rows are normalised by the pixel aspect; host points span 0..1 on both axes.
        const float aspect = pictureAspect;
        view = std::max(std::fabs(viewAngle), 1e-7f);
        triangleHeight = radius * kSlope;
        lattice = Matrix3f();
        lattice.Translate(-center.x, -center.y / aspect).Rotate(angle);
        if (size > 0.0f) lattice.Scale(1.0f / size, 1.0f / size);
        source = Matrix3f();
        if (sourceSize > 0.0f) source.Scale(1.0f / sourceSize, 1.0f / sourceSize);
        source.Rotate(sourceAngle).Translate(sourceCenter.x, sourceCenter.y / aspect);
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        Vector2f p = lattice.Apply({in.x, in.y});
        if (type == 1) p = Wedge(p);
        else if (radius != 0.0f) p = Triangle(p);
        p = source.Apply(p);
        out = {p.x, p.y};
        return true;
    }

private:
    static constexpr float kSlope = 0.8660254f;

    static bool Odd(float whole) { return std::fmod(whole, 2.0f) != 0.0f; }

    // Onto the triangle (0, 0), (Radius, 0), (Radius / 2, height).
    Vector2f Triangle(Vector2f p) const
    {
        const float r = radius, h = triangleHeight;
        float y = p.y;
        const float strip = std::floor(y / h);
        y -= strip * h;
        if (Odd(strip)) y = h - y;
        // Skewed so that the triangles' rising edges stand upright: a strip of
        // rhombi, each an upright triangle and the one hanging beside it.
        const float skew = (y / kSlope) / 2.0f;
        float x = p.x - skew;
        const float cell = std::floor(x / r);
        x -= cell * r;
        const bool below = y <= (r - x) * kSlope;
        x += skew;
        // Three rhombi make a period; counted the way cells are wrapped back.
        int32_t which = static_cast<int32_t>(std::fmod(-cell, 3.0f));
        if (which < 0) which += 3;
        Vector2f q{x, y};
        switch (which) {
        case 0:
            if (!below) {
                q = turn60.Apply({x - r, y});
                q.x = r - q.x;
            }
            break;
        case 1:
            q = turn120.Apply({x - r, y});
            if (!below) q.y = -q.y;
            break;
        default:
            if (below) {
                q = turn60.Apply(q);
                q.x = r - q.x;
                q.y = -q.y;
            } else {
                q = {x - r / 2.0f, h - y};
            }
            break;
        }
        return q;
    }

    // Into one wedge of the view angle, and one ring of Radius when it is set.
    Vector2f Wedge(Vector2f p) const
    {
        float a = std::atan2(p.y, p.x);
        float d = p.Length();
        const float wedge = std::floor(a / view);
        a -= wedge * view;
        if (pingPongAngle && Odd(wedge)) a = view - a;
        if (radius != 0.0f) {
            const float ring = std::floor(d / radius);
            d -= ring * radius;
            if (pingPongRadius && Odd(ring)) d = radius - d;
        }
        return {d * std::cos(a), d * std::sin(a)};
    }

    int32_t type = 0;
    float radius = 0.25f;
    KPoint2 center, sourceCenter;
    float angle = 0.0f, viewAngle = 45.0f, size = 1.0f;
    bool pingPongAngle = false, pingPongRadius = false;
    float sourceAngle = 0.0f, sourceSize = 1.0f;

    Matrix3f turn60, turn120;
    Matrix3f lattice, source;
    float view = 1.0f, triangleHeight = 0.0f;
};

ZV_TOOL(KEffectKaleidoscope, ZV_Kaleidoscope);
