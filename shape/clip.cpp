#include "shape/clip.h"
#include <algorithm>
#include <cmath>
#include <memory>
#include "shape/geometry.h"

using namespace ClipperLib;

namespace {
constexpr float kTwoPi = 6.28318530717959f;

Vector2f Unit(Vector2f v)
{
    const float l = v.Length();
    return l > 0.0f ? v * (1.0f / l) : Vector2f{};
}
}  // namespace

Paths KToPaths(const KShape& shape, float scale)
{
    Paths paths;
    KShapeArrayList arrays(shape);
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) {
        Path path;
        path.reserve(a->points.size());
        for (Vector2f p : a->points)
            path.emplace_back(static_cast<cInt>(p.x * scale), static_cast<cInt>(p.y * scale));
        paths.push_back(std::move(path));
    }
    return paths;
}

KShape* KFromPaths(const Paths& paths, float scale)
{
    auto* shape = new KShape;
    const float k = 1.0f / scale;
    for (const Path& path : paths) {
        for (size_t i = 0; i < path.size(); ++i) {
            const Vector2f p{static_cast<float>(path[i].X) * k, static_cast<float>(path[i].Y) * k};
            if (i == 0) shape->MoveTo(p);
            else shape->LineTo(p);
        }
        if (!path.empty()) shape->Close();
    }
    return shape;
}

KShape* KBooleanShape(const KShape& subject, const KShape* clip, int32_t clipType, int32_t fillType)
{
    static const ClipType types[] = {ctIntersection, ctUnion, ctDifference, ctXor};
    const PolyFillType fill = fillType == 1 ? pftNonZero : pftEvenOdd;
    // Curves go in flattened, not as their control polygons.
    auto paths = [](const KShape& s) {
        if (!s.IsCurved()) return KToPaths(s);
        std::unique_ptr<KShape> flat(KFlatten(s, kBooleanCurveSteps));
        return KToPaths(*flat);
    };
    Clipper c;
    c.AddPaths(paths(subject), ptSubject, true);
    if (clip) c.AddPaths(paths(*clip), ptClip, true);
    Paths solution;
    c.Execute(types[std::clamp(clipType, 0, 3)], solution, fill, fill);
    KShape* out = KFromPaths(solution);
    out->CopyHeader(subject);
    return out;
}

namespace {

// One side of an open sub-path, moved by `offset` along its normals.
void OffsetOpenArray(KShape& out, KShapeArray& a, int32_t join, float offset, int32_t joinPrecision)
{
    const int32_t n = a.Count();
    if (n < 2) return;
    if (join == 1 || join == 2) a.ComputeNormals(0.0f, 10.0f);
    bool started = false;
    auto put = [&](Vector2f p) {
        if (!started) out.MoveTo(p);
        else out.LineTo(p);
        started = true;
    };
    for (int32_t i = 0; i < n; ++i) {
        const Vector2f p = a.points[i], prev = a.Before(i), next = a.After(i);
        const Vector2f s1 = Unit(Vector2f{p.y - prev.y, prev.x - p.x});
        const Vector2f s2 = Unit(Vector2f{next.y - p.y, p.x - next.x});
        const Vector2f nsum = Unit(s1 + s2);
        const float dot = s1.Dot(nsum);
        const Vector2f miter = dot != 0.0f ? p - nsum * (offset / dot) : p;
        if (join != 1 && join != 2) {
            put(miter);
            continue;
        }
        const Vector2f n1 = a.normals[2 * i], n2 = a.normals[2 * i + 1];
        if ((n1 + n2).Dot(p - prev) * offset <= 0.0f && i > 0) {
            put(miter);  // the inside of the turn
            continue;
        }
        if (i > 0 || a.closed) put(p - n1 * offset);
        if (join == 2) {
            float angle = std::acos(std::clamp(n1.Dot(n2), -1.0f, 1.0f));
            if (n1.x * n2.y - n1.y * n2.x < 0.0f) angle = -angle;
            const int32_t steps =
                static_cast<int32_t>(std::ceil(std::fabs(angle) * 0.3183098861837907f * joinPrecision));
            if (steps >= 2)
                for (int32_t k = 1; k < steps; ++k) {
                    const float t = angle * k / steps, c = std::cos(t), s = std::sin(t);
                    put(p - Vector2f{n1.x * c - n1.y * s, n1.x * s + n1.y * c} * offset);
                }
        }
        if (i < n - 1 || a.closed) put(p - n2 * offset);
    }
    if (a.closed) out.Close();
}

// The paths grown by `distance` (shrunk when negative), in shape units;
// joins 0 miter, 1 square, 2 round.
KShape* Offset(const Paths& paths, int32_t join, EndType end, double miterLimit, float distance)
{
    static const JoinType joins[] = {jtMiter, jtSquare, jtRound};
    ClipperOffset co(miterLimit, 0.0);
    co.AddPaths(paths, joins[std::clamp(join, 0, 2)], end);
    Paths solution;
    co.Execute(solution, static_cast<double>(distance) * 1e6);
    return KFromPaths(solution);
}

}  // namespace

KShape* KOffsetShape(const KShape& shape, const KOffsetSettings& s)
{
    if (s.offset == 0.0f) return KShape::Duplicate(shape);
    std::unique_ptr<KShape> flat(shape.IsCurved() ? KFlatten(shape, s.precision) : nullptr);
    const KShape& src = flat ? *flat : shape;
    auto* out = new KShape(&shape);
    if (src.IsClosed()) {
        std::unique_ptr<KShape> grown(Offset(KToPaths(src), s.joinType, etClosedPolygon, 0.0, s.offset));
        out->Append(grown.get(), true);
        return out;
    }
    KShapeArrayList arrays(src);
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a))
        OffsetOpenArray(*out, *a, s.joinType, s.offset, s.joinPrecision);
    return out;
}

KShape* KStrokeByClipper(const KShape& flat, const KShapePen& pen, float outer, float inner)
{
    static const JoinType joins[] = {jtMiter, jtSquare, jtRound};
    const JoinType join = joins[std::clamp(pen.joinType, 0, 2)];
    auto* out = new KShape;
    const Paths paths = KToPaths(flat);
    if (!flat.IsClosed()) {
        const EndType end = pen.endType == 0 ? etOpenButt : pen.endRoundness < 0.5f ? etOpenSquare : etOpenRound;
        std::unique_ptr<KShape> band(Offset(paths, pen.joinType, end, pen.miterLimit, outer));
        out->Append(band.get(), true);
        return out;
    }
    ClipperOffset co(pen.miterLimit, 0.0);
    co.AddPaths(paths, join, etClosedPolygon);
    Paths grown;
    co.Execute(grown, static_cast<double>(outer) * 1e6);
    std::unique_ptr<KShape> outside(KFromPaths(grown));
    out->Append(outside.get(), true);
    if (inner == 0.0f) return out;
    Paths shrunk;
    co.Execute(shrunk, static_cast<double>(inner) * -1e6);
    // The inner rings run backward so that they cut the band's hole.
    for (Path& p : shrunk) std::reverse(p.begin(), p.end());
    std::unique_ptr<KShape> inside(KFromPaths(shrunk));
    out->Append(inside.get(), true);
    return out;
}

KShape* KKillSegments(const KShape& shape, const KKillSettings& s)
{
    std::unique_ptr<KShape> flat(shape.IsCurved() ? KFlatten(shape, s.precision) : nullptr);
    auto* out = new KShape(&shape);
    auto wrap = [](float a) {
        a = std::fmod(a, kTwoPi);
        return a < 0.0f ? a + kTwoPi : a;
    };
    const float lo = wrap(s.angleOffset + s.angleMin), hi = wrap(s.angleOffset + s.angleMax);
    const bool direct = hi >= lo;
    KShapeArrayList arrays(flat ? *flat : shape);
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) {
        const int32_t segments = a->closed ? a->Count() : a->Count() - 1;
        bool running = false, firstKept = false;
        size_t runStart = 0;
        for (int32_t i = 0; i < segments; ++i) {
            const Vector2f p = a->points[i], q = a->After(i), d = p - q;
            const float length = d.Length();
            float angle = length > 0.0f ? std::acos(std::clamp(d.x / length, -1.0f, 1.0f)) : 0.0f;
            if (!(d.y > 0.0f)) angle = -angle;
            angle = wrap(angle);
            bool drop = false;
            if (s.byAngle) drop = direct ? (angle < lo || angle > hi) : (angle > hi && angle < lo);
            if (s.byLength && (length < s.lengthMin || length > s.lengthMax)) drop = true;
            if (drop) {
                running = false;
                continue;
            }
            if (i == 0) firstKept = true;
            const bool closes = a->closed && i == segments - 1 && firstKept && running &&
                                runStart + 1 < out->Nodes().size();
            if (!running) {
                runStart = out->Nodes().size();
                out->MoveTo(p);
            }
            if (closes && out->Nodes()[runStart].type == kNodeMove &&
                out->Nodes()[runStart].x == q.x && out->Nodes()[runStart].y == q.y) {
                out->Close();
            } else {
                out->LineTo(q);
            }
            running = true;
        }
    }
    return out;
}
