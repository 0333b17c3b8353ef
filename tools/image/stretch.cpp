// Stretch: lays the source segment onto the destination segment, stretching
// the picture along it; beyond either end the picture only moves and turns
// with that end.
#include <cmath>
#include "framework/effect.h"
#include "framework/geometry.h"
#include "framework/registration.h"

class KEffectStretch : public KEffectWarp {
public:
    KEffectStretch()
    {
        inputList.AddPage("Stretch");
        inputList.AddMultiButton(&type, 0, "Type", "Type"_id, 0,
                                 {"Source and Destination", "Source and Offset", "[end]"});
        inputList.AddPoint(&sourceStart, {0.5f, 0.5f}, "Source Start", "SoSt"_id, 0, 0);
        inputList.AddPoint(&sourceEnd, {0.5f, 0.5f}, "Source End", "SoEn"_id, 0, 0);
        inputList.AddPoint(&destStart, {0.5f, 0.5f}, "Destination Start", "DeSt"_id, 0, 0);
        inputList.AddPoint(&destEnd, {0.5f, 0.5f}, "Destination End", "DeEn"_id, 0, 0);
        inputList.AddScrew(&offsetStart, 0.0f, "Offset Start", "OffS"_id, 0, -0.1, 0.1);
        inputList.AddScrew(&offsetEnd, 0.0f, "Offset End", "OffE"_id, 0, -0.1, 0.1);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        // Rows are normalised by the pixel aspect; host points span 0..1 on both axes.
        const float aspect = pictureAspect;
        const Vector2f s0{sourceStart.x, sourceStart.y / aspect};
        const Vector2f s1{sourceEnd.x, sourceEnd.y / aspect};
        const Vector2f s = s1 - s0;
        const float sourceLength = s.Length();
        // A source without length has no direction to stretch along.
        if (!(sourceLength >= 1e-7f)) return false;
        Vector2f d0{destStart.x, destStart.y / aspect}, d1{destEnd.x, destEnd.y / aspect};
        if (type == 1) {
            const Vector2f unit = s * (1.0f / sourceLength);
            d0 = s0 - unit * offsetStart;
            d1 = s1 + unit * offsetEnd;
        }
        const Vector2f d = d1 - d0;
        const float destLength = d.Length();
        if (!(destLength >= 1e-7f)) return false;
        const float a = std::atan2(s.y, s.x), b = std::atan2(d.y, d.x);
        // Each piece maps source to destination: onto the x axis at its anchor,
        // along x by the length ratio for the middle, onto the destination.
        auto piece = [&](Vector2f from, Vector2f to, bool stretch) {
            Matrix3f m;
            m.Translate(-from.x, -from.y).Rotate(-a);
            if (stretch) m.Scale(1.0f / sourceLength, 1.0f).Scale(destLength, 1.0f);
            m.Rotate(b).Translate(to.x, to.y);
            return m.Inverted();
        };
        Store(before, piece(s0, d0, false));
        Store(inside, piece(s0, d0, true));
        Store(after, piece(s1, d1, false));
        destOrigin = d0;
        destAxis = d * (1.0f / (destLength * destLength));
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        const float t = (in.x - destOrigin.x) * destAxis.x + (in.y - destOrigin.y) * destAxis.y;
        const float (*m)[3] = t < 0.0f ? before : (t > 1.0f ? after : inside);
        // Written whole: the process reads the pair back as one value.
        out = KPosition{m[0][0] * in.x + m[0][1] * in.y + m[0][2],
                        m[1][0] * in.x + m[1][1] * in.y + m[1][2]};
        return true;
    }

private:
    static void Store(float to[2][3], const Matrix3f& m)
    {
        for (int r = 0; r < 2; ++r)
            for (int c = 0; c < 3; ++c) to[r][c] = m.m[r][c];
    }

    int32_t type = 0;
    KPoint2 sourceStart, sourceEnd, destStart, destEnd;
    float offsetStart = 0.0f, offsetEnd = 0.0f;
    // Precomputed by Start: the three pieces, destination to source.
    float before[2][3] = {{1, 0, 0}, {0, 1, 0}};
    float inside[2][3] = {{1, 0, 0}, {0, 1, 0}};
    float after[2][3] = {{1, 0, 0}, {0, 1, 0}};
    Vector2f destOrigin, destAxis;
};

ZV_TOOL(KEffectStretch, ZV_Stretch);
