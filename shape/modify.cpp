#include "shape/modify.h"
#include <algorithm>
#include <cmath>
#include <memory>
#include "shape/geometry.h"

KShape* KSpiralShape(const KSpiralSettings& s)
{
    auto* shape = new KShape;
    float step = std::max(std::fabs(s.angleStep), 0.001f);
    if (s.angleEnd < s.angleStart) step = -step;
    const Vector2f first{std::cos(s.angleStart) * s.radiusStart, std::sin(s.angleStart) * s.radiusStart};
    shape->MoveTo(first);
    const float count = (s.angleEnd - s.angleStart) / step;
    const float radiusStep = count > 0.0f ? (s.radiusEnd - s.radiusStart) / count : 0.0f;
    float radius = s.radiusStart;
    Matrix3f turn;
    turn.Rotate(step);
    Vector2f direction{std::cos(s.angleStart), std::sin(s.angleStart)};
    for (int32_t i = 0; static_cast<float>(i) <= count - 1.0f; ++i) {
        radius += radiusStep;
        direction = turn.Apply(direction);
        shape->LineTo(direction * radius);
    }
    if (s.endType > 0) {
        const float fraction = std::fmod(count, 1.0f);
        Matrix3f last;
        last.Rotate(step * fraction);
        const float r = s.endType == 1 ? s.radiusEnd : radius + fraction * radiusStep;
        const Vector2f p = last.Apply(direction) * r;
        if (p.x != shape->Nodes().back().x || p.y != shape->Nodes().back().y) shape->LineTo(p);
    }
    return shape;
}

namespace {
Vector2f Unit(Vector2f v)
{
    const float l = v.Length();
    return l > 0.0f ? v * (1.0f / l) : Vector2f{};
}
}  // namespace

void KZigZagArray(KShape& out, const KShapeArray& a, int32_t type, float offset, int32_t steps)
{
    if (type != 1 || a.Count() < 2) {
        AppendArray(out, a);
        return;
    }
    steps = std::max(steps, 1);
    float sign = 1.0f;
    bool first = true;
    Vector2f previousNormal;
    const int32_t segments = a.closed ? a.Count() : a.Count() - 1;
    for (int32_t s = 0; s < segments; ++s) {
        const Vector2f p = a.points[s], d = a.After(s) - p;
        if (d.Length() == 0.0f) continue;
        const Vector2f n = Unit({-d.y, d.x});
        const int32_t count = steps + (!a.closed && s == segments - 1 ? 1 : 0);
        for (int32_t k = 0; k < count; ++k) {
            const float t = static_cast<float>(k) / static_cast<float>(steps);
            Vector2f o = n * (offset * sign);
            if (k == 0 && !(first && !a.closed) && s > 0) o = Unit(o + previousNormal * (offset * sign)) * std::fabs(offset);
            const Vector2f q = p + d * t + o;
            if (first) out.MoveTo(q);
            else out.LineTo(q);
            first = false;
            sign = -sign;
        }
        previousNormal = n;
    }
    if (a.closed) out.Close();
}

void KSmoothArray(KShape& out, const KShapeArray& a, float smooth, float curvature)
{
    const int32_t n = a.Count();
    if (n < 3) {
        AppendArray(out, a);
        return;
    }
    const float k = smooth * curvature * 0.25f, m = (1.0f - smooth) * 0.33333334f;
    const int32_t segments = a.closed ? n : n - 1;
    out.MoveTo(a.points[0]);
    for (int32_t s = 0; s < segments; ++s) {
        const Vector2f p1 = a.points[s], p2 = a.After(s);
        const Vector2f p0 = s == 0 && !a.closed ? p1 * 2.0f - p2 : a.Before(s);
        const Vector2f p3 = s == segments - 1 && !a.closed ? p2 * 2.0f - p1 : a.After((s + 1) % n);
        const Vector2f c1 = p1 + (p2 - p0) * k + (p2 - p1) * m;
        const Vector2f c2 = p2 - (p3 - p1) * k - (p2 - p1) * m;
        out.AddCubic(c1, c2, p2);
    }
    if (a.closed) out.Close();
}

namespace {

// The part of an array between two lengths along it.
void Clip(KShape& out, const KShapeArray& a, float from, float to)
{
    const int32_t segments = a.closed ? a.Count() : a.Count() - 1;
    float at = 0.0f;
    bool started = false;
    for (int32_t s = 0; s < segments && at <= to; ++s) {
        const Vector2f p = a.points[s], q = a.After(s);
        const float length = (q - p).Length();
        const float end = at + length;
        if (end >= from && length > 0.0f) {
            if (!started) {
                out.MoveTo(p + (q - p) * (std::max(from - at, 0.0f) / length));
                started = true;
            }
            out.LineTo(end <= to ? q : p + (q - p) * ((to - at) / length));
        }
        at = end;
    }
}

}  // namespace

KShape* KWriteOnShape(const KShape& shape, float start, float end, int32_t precision)
{
    if (start >= end) return new KShape(&shape);
    if (start <= 0.0f && end >= 1.0f) return KShape::Duplicate(shape);
    std::unique_ptr<KShape> flat(shape.IsCurved() ? KFlatten(shape, precision) : nullptr);
    KShapeArrayList arrays(flat ? *flat : shape);
    auto* out = new KShape(&shape);
    float total = 0.0f;
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) total += ArrayLength(*a);
    if (total <= 0.0f) return out;
    float before = 0.0f;
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) {
        const float length = ArrayLength(*a);
        const float from = std::clamp(start * total - before, 0.0f, length);
        const float to = std::clamp(end * total - before, 0.0f, length);
        if (to > from) Clip(*out, *a, from, to);
        before += length;
    }
    return out;
}

void KSpiralControls::Declare(KParameterList& in)
{
    in.AddSlider(&radiusStart, 0.1f, "RadiusStart", "RSta"_id, 0, 0.0, 1.0);
    in.AddSlider(&radiusEnd, 0.3f, "RadiusEnd", "REnd"_id, 0, 0.0, 2.0);
    in.AddAngle(&angleStart, 0.0f, "Angle Start", "ASta"_id, 0, 1);
    in.AddAngle(&angleEnd, 720.0f, "Angle End", "AEnd"_id, 0, 1);
    in.AddSlider(&angleStep, 20.0f, "Angle Step", "ASte"_id, 0, 0.5, 90.0);
    in.AddMultiButton(&endType, 1, "Angle End Type", "AETy"_id, 0, {"None", "Type 1", "Type 2", "[end]"});
}
