#include "tools/image/warp_data.h"
#include <algorithm>
#include <cmath>
#include "raster/image.h"

namespace {

constexpr float kNoLength = 1.1920929e-07f;

Vector2f UnitNormal(Vector2f v)
{
    const float l = v.Length();
    return l > 0.0f ? Vector2f{-v.y / l, v.x / l} : Vector2f{};
}

WarpSegment Segment(Vector2f a, Vector2f b, Vector2f c, Vector2f d)
{
    WarpSegment s;
    s.a = a;
    s.b = b;
    s.ab = b - a;
    s.abNormal = UnitNormal(s.ab);
    s.c = c;
    s.d = d;
    const Vector2f cd = d - c;
    s.length = cd.Length();
    s.isPoint = !(s.length > kNoLength);
    const float squared = cd.Dot(cd);
    s.cdScaled = squared > 0.0f ? cd * (1.0f / squared) : Vector2f{};
    s.cdNormal = UnitNormal(cd);
    s.weight = s.isPoint ? 1.0f : s.length;
    return s;
}

// Catmull-Rom through `p`, `sub` points a span, with phantom ends mirrored
// from the first and last three points; the last point ends the list.
std::vector<Vector2f> Refine(const std::vector<Vector2f>& p, int32_t sub)
{
    const size_t n = p.size();
    std::vector<Vector2f> x(n + 2);
    for (size_t i = 0; i < n; ++i) x[i + 1] = p[i];
    x[0] = (p[2] - p[1] * 4.0f + p[0] * 5.0f) * 0.5f;
    x[n + 1] = (p[n - 1] * 5.0f - p[n - 2] * 4.0f + p[n - 3]) * 0.5f;
    std::vector<Vector2f> out;
    out.reserve((n - 1) * sub + 1);
    const float step = 1.0f / static_cast<float>(sub);
    for (size_t s = 0; s + 1 < n; ++s) {
        const Vector2f p0 = x[s], p1 = x[s + 1], p2 = x[s + 2], p3 = x[s + 3];
        // The cubic 0.5 (2 p1 + B t + C t^2 + D t^3) stepped by forward differences.
        const Vector2f B = p2 - p0, C = p0 * 2.0f - p1 * 5.0f + p2 * 4.0f - p3, D = p1 * 3.0f - p0 - p2 * 3.0f + p3;
        const float h = step, h2 = h * h, h3 = h2 * h;
        Vector2f v = p1;
        Vector2f d1 = (B * h + C * h2 + D * h3) * 0.5f;
        Vector2f d2 = (C * (2.0f * h2) + D * (6.0f * h3)) * 0.5f;
        const Vector2f d3 = D * (3.0f * h3);
        for (int32_t k = 0; k < sub; ++k) {
            out.push_back(v);
            v = v + d1;
            d1 = d1 + d2;
            d2 = d2 + d3;
        }
    }
    out.push_back(p[n - 1]);
    return out;
}

}  // namespace

void WarpCurve::BuildSegments(int32_t subdivisions, float aspect)
{
    segments.clear();
    const int32_t n = Count();
    if (n == 0) return;
    const float inv = 1.0f / aspect;
    std::vector<Vector2f> first(n), second(n);
    for (int32_t i = 0; i < n; ++i) {
        first[i] = {points[i].x1, points[i].y1 * inv};
        second[i] = {points[i].x2, points[i].y2 * inv};
    }
    if (n == 1) {
        segments.push_back(Segment(first[0], first[0], second[0], second[0]));
        segments.back().isPoint = true;
        segments.back().weight = 1.0f;
        return;
    }
    if (spline && n >= 3) {
        const int32_t sub = std::max(subdivisions, 1);
        first = Refine(first, sub);
        second = Refine(second, sub);
    }
    float total = 0.0f;
    for (size_t i = 0; i + 1 < first.size(); ++i) {
        segments.push_back(Segment(first[i], first[i + 1], second[i], second[i + 1]));
        total += segments.back().length;
    }
    if (total > 0.0f)
        for (WarpSegment& s : segments) s.weight /= total;
}

MW_WarpData MW_WarpData::At(int32_t position, float warp) const
{
    MW_WarpData out;
    out.subdivisions = subdivisions;
    out.curves.reserve(curves.size());
    for (const WarpCurve& c : curves) {
        WarpCurve w;
        w.spline = c.spline;
        w.points.reserve(c.points.size());
        for (const WarpPoint& p : c.points) {
            const float mx = p.x1 + (p.x2 - p.x1) * warp, my = p.y1 + (p.y2 - p.y1) * warp;
            w.points.push_back(position == 0 ? WarpPoint{p.x1, p.y1, mx, my} : WarpPoint{p.x2, p.y2, mx, my});
        }
        out.curves.push_back(std::move(w));
    }
    return out;
}

bool MW_WarpData::Blend(const MW_WarpData& other, float f, MW_WarpData& out) const
{
    if (curves.size() != other.curves.size()) return false;
    out = *this;
    for (size_t i = 0; i < curves.size(); ++i) {
        const WarpCurve &a = curves[i], &b = other.curves[i];
        if (a.points.size() != b.points.size() || a.spline != b.spline) return false;
        for (size_t j = 0; j < a.points.size(); ++j) {
            const WarpPoint &p = a.points[j], &q = b.points[j];
            auto mix = [f](float u, float v) { return u + (v - u) * f; };
            out.curves[i].points[j] = {mix(p.x1, q.x1), mix(p.y1, q.y1), mix(p.x2, q.x2), mix(p.y2, q.y2)};
        }
    }
    return true;
}

int32_t MW_WarpData::PointCount() const
{
    int32_t n = 0;
    for (const WarpCurve& c : curves) n += c.Count();
    return n;
}

bool KWarpByCurves::Start(KImage* input, KImage** output, void* extras)
{
    KEffectWarp::Start(input, output, extras);
    all.clear();
    for (WarpCurve& c : data.curves) {
        c.BuildSegments(data.subdivisions, pictureAspect);
        all.insert(all.end(), c.segments.begin(), c.segments.end());
    }
    return true;
}

bool KWarpField::Start(KImage* input, KImage** output, void* extras)
{
    KWarpByCurves::Start(input, output, extras);
    for (WarpSegment& s : all) s.lengthPower = s.isPoint ? 1.0f : std::pow(s.length, lengthInfluence);
    return true;
}

bool KWarpField::InverseMap(KPosition& out, const KPosition& in)
{
    const Vector2f p{in.x, in.y};
    float sx = 0.0f, sy = 0.0f, sum = 0.0f;
    for (const WarpSegment& s : all) {
        Vector2f source;
        float distance;
        s.Evaluate(p, source, distance);
        float w = s.lengthPower / (distance + adherence);
        w = std::pow(w, locality) * s.weight;
        // On a line with no adherence the line alone decides.
        if (std::isinf(w)) {
            out = {source.x, source.y};
            return true;
        }
        sx += (source.x - p.x) * w;
        sy += (source.y - p.y) * w;
        sum += w;
    }
    // A zero weight sum (no curves) leaves no place to read from.
    if (!(sum > 0.0f)) return false;
    out = {p.x + sx / sum, p.y + sy / sum};
    return true;
}

bool KWarpRadial::Start(KImage* input, KImage** output, void* extras)
{
    KWarpByCurves::Start(input, output, extras);
    k = -1.0f / (radius * radius);
    return true;
}

bool KWarpRadial::InverseMap(KPosition& out, const KPosition& in)
{
    const Vector2f p{in.x, in.y};
    float sx = 0.0f, sy = 0.0f;
    for (const WarpSegment& s : all) {
        Vector2f source;
        float distance;
        s.Evaluate(p, source, distance);
        const float d2 = distance * distance;
        // At no distance the pull is whole, whatever the radius (0 * -inf is no number).
        const float w = (d2 > 0.0f ? std::exp(d2 * k) : 1.0f) * s.weight;
        sx += (source.x - p.x) * w;
        sy += (source.y - p.y) * w;
    }
    out = {p.x + sx, p.y + sy};
    return true;
}
