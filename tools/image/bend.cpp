// Bend: lays the picture along an arc, or along a straight band when the three
// points line up. Each output position becomes band coordinates, u along the
// band and v across it, and the source matrix places that band on the segment
// Source Start - Source End.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/geometry.h"
#include "framework/registration.h"

class KEffectBend : public KEffectWarp {
public:
    KEffectBend()
    {
        inputList.AddPage("Bend");
        inputList.AddMultiButton(&type, 0, "Type", "BeTy"_id, 0,
                                 {"Three points", "Center and radius", "[end]"});
        inputList.AddPoint(&start, {0.5f, 0.5f}, "Start", "BeSt"_id, 0, 0);
        inputList.AddAngle(&startAngle, 180.0f, "Start Angle", "BeAS"_id, 0, 1);
        inputList.AddAngle(&endAngle, 0.0f, "End Angle", "BeAE"_id, 0, 1);
        inputList.AddPoint(&midpoint, {0.5f, 0.5f}, "Midpoint", "BeMi"_id, 0, 0);
        inputList.AddPoint(&end, {0.5f, 0.5f}, "End", "BeEn"_id, 0, 0);
        inputList.AddSlider(&radius, 0.5f, "Radius", "BeRa"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&scaleH, 1.0f, "Scale Horizontal", "BeSH"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&scaleV, 1.0f, "Scale Vertical", "BeSV"_id, 0, 0.0, 1.0);
        inputList.AddPoint(&sourceStart, {0.5f, 0.5f}, "Source Start", "SoSt"_id, 0, 0);
        inputList.AddPoint(&sourceEnd, {0.5f, 0.5f}, "Source End", "SoEn"_id, 0, 0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        // Rows are normalised by the pixel aspect; host points span 0..1 on both axes.
        aspect = pictureAspect;
        Vector2f s = At(start);
        const Vector2f m = At(midpoint), e = At(end);
        const float sh = std::max(scaleH, 1e-7f), sv = std::max(scaleV, 1e-7f);
        flip = false;
        float a0 = 0.0f, a1 = 0.0f;
        if (type == 1) {
            centre = s;
            arcRadius = radius;
            a0 = -startAngle;
            a1 = -endAngle;
            flip = a1 > a0;
            straight = false;
        } else {
            straight = Collinear(s, m, e);
            if (straight) {
                Vector2f to = e;
                if (to.x == s.x && to.y == s.y) to.x += 1e-6f;
                const Vector2f dir = to - s;
                const float len2 = dir.Dot(dir);
                const Vector2f normal = Vector2f{-dir.y, dir.x} * (1.0f / std::sqrt(len2));
                origin = ((s + to - dir * scaleH) - normal * (scaleV / aspect)) * 0.5f;
                along = dir * (1.0f / (len2 * sh));
                across = normal * (1.0f / sv);
            } else {
                // The circle through the three points, taken relative to Start.
                const Vector2f b = m - s, c = e - s;
                const float d = 2.0f * (b.x * c.y - b.y * c.x);
                const float bb = b.Dot(b), cc = c.Dot(c);
                const Vector2f u{(c.y * bb - b.y * cc) / d, (b.x * cc - c.x * bb) / d};
                centre = s + u;
                arcRadius = u.Length();
                a0 = std::atan2(s.y - centre.y, s.x - centre.x);
                a1 = std::atan2(e.y - centre.y, e.x - centre.x);
                // d > 0: Start, Midpoint, End turn with rising angles.
                if (d > 0.0f)
                    while (a1 <= a0) a1 += kTwoPi;
                else
                    while (a1 >= a0) a1 -= kTwoPi;
            }
        }
        if (!straight) {
            const float thickness = scaleV / aspect / 2.0f;
            inner = arcRadius - thickness;
            midAngle = (a0 + a1) / 2.0f;
            float spread = (a1 - a0) * scaleH;
            if (std::fabs(spread) < 1e-7f) spread = spread < 0.0f ? -1e-7f : 1e-7f;
            inverseSpread = 1.0f / spread;
            inverseThickness = aspect / sv;
        }
        // The band's unit segment, centred across at 0.5 / aspect, onto the source segment.
        const Vector2f ss = At(sourceStart), se = At(sourceEnd);
        const Vector2f sd = se - ss;
        const float len = std::max(sd.Length(), 1e-7f);
        Matrix3f toBand;
        toBand.Translate(-ss.x, -ss.y)
            .Rotate(-std::atan2(sd.y, sd.x))
            .Scale(1.0f / len, 1.0f / len)
            .Translate(0.0f, 0.5f / aspect);
        source = toBand.Inverted();
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        Vector2f band;
        if (straight) {
            const Vector2f q = Vector2f{in.x, in.y} - origin;
            band = {q.Dot(along), q.Dot(across)};
        } else {
            const float dx = in.x - centre.x, dy = in.y - centre.y;
            float diff = std::atan2(dy, dx) - midAngle;
            diff -= kTwoPi * std::floor((diff + kPi) / kTwoPi);
            band.x = diff * inverseSpread + 0.5f;
            band.y = (std::sqrt(dx * dx + dy * dy) - inner) * inverseThickness;
            if (flip) band.y = 1.0f / aspect - band.y;
        }
        const Vector2f p = source.Apply(band);
        out = {p.x, p.y};
        return true;
    }

private:
    static constexpr float kPi = 3.14159265f, kTwoPi = 6.28318531f;

    Vector2f At(const KPoint2& p) const { return {p.x, p.y / aspect}; }

    // Equal pairs, or slopes that differ by less than 1e-05.
    static bool Collinear(Vector2f a, Vector2f b, Vector2f c)
    {
        auto same = [](Vector2f p, Vector2f q) { return p.x == q.x && p.y == q.y; };
        if (same(a, b) || same(b, c) || same(a, c)) return true;
        const float dx1 = b.x - a.x, dx2 = c.x - b.x;
        if (dx1 == 0.0f || dx2 == 0.0f) return dx1 == dx2;
        return std::fabs((b.y - a.y) / dx1 - (c.y - b.y) / dx2) < 1e-5f;
    }

    int32_t type = 0;
    KPoint2 start, midpoint, end, sourceStart, sourceEnd;
    float startAngle = 180.0f, endAngle = 0.0f;
    float radius = 0.5f, scaleH = 1.0f, scaleV = 1.0f;

    float aspect = 1.0f;
    bool straight = false, flip = false;
    Vector2f origin, along, across;  // the straight band
    Vector2f centre;                 // the arc
    float arcRadius = 0.0f, inner = 0.0f, midAngle = 0.0f;
    float inverseSpread = 1.0f, inverseThickness = 1.0f;
    Matrix3f source;
};

ZV_TOOL(KEffectBend, ZV_Bend);
