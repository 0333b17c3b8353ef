#include "shape/geometry.h"
#include <algorithm>
#include <cmath>
#include <memory>
#include "shape/clip.h"

namespace {

constexpr float kDeadBand = 1.1920929e-07f;
constexpr float kPi = 3.14159265358979f;

Vector2f Unit(Vector2f v)
{
    const float l = v.Length();
    return l > 0.0f ? v * (1.0f / l) : Vector2f{};
}
float Cross(Vector2f a, Vector2f b) { return a.x * b.y - a.y * b.x; }
// The left normal of a direction.
Vector2f Left(Vector2f d) { return {-d.y, d.x}; }

// Bezier weights for t = k / steps, k = 1..steps, t summed in float.
struct Weights {
    std::vector<float> w[4];
    Weights(int32_t steps, bool cubic)
    {
        float t = 0.0f;
        const float step = 1.0f / static_cast<float>(steps);
        for (int32_t k = 1; k <= steps; ++k) {
            t += step;
            const float u = 1.0f - t;
            if (cubic) {
                w[0].push_back(u * u * u);
                w[1].push_back(3.0f * t * u * u);
                w[2].push_back(3.0f * t * t * u);
                w[3].push_back(t * t * t);
            } else {
                w[0].push_back(u * u);
                w[1].push_back(2.0f * t * u);
                w[2].push_back(t * t);
            }
        }
    }
};

}  // namespace

KShape* KFlatten(const KShape& shape, int32_t steps)
{
    auto* out = new KShape(&shape);
    steps = std::max(steps, 1);
    const std::vector<KShapeNode>& n = shape.Nodes();
    std::unique_ptr<Weights> cubic, conic;
    if (shape.cubicCount) cubic = std::make_unique<Weights>(steps, true);
    if (shape.conicCount) conic = std::make_unique<Weights>(steps, false);
    for (size_t i = 0; i < n.size();) {
        const bool isCubic = n[i].type == kNodeCubic && i > 0 && i + 2 < n.size();
        const bool isConic = n[i].type == kNodeConic && i > 0 && i + 1 < n.size();
        if (!isCubic && !isConic) {
            // A curve node without its partners is taken as a point.
            KShapeNode copy = n[i];
            if (copy.type == kNodeCubic || copy.type == kNodeConic) copy.type = kNodeLine;
            out->AddNode(copy);
            ++i;
            continue;
        }
        const Vector2f p0 = out->Nodes().empty() ? n[i - 1].Point() : out->Nodes().back().Point();
        const size_t used = isCubic ? 3 : 2;
        const KShapeNode& end = n[i + used - 1];
        const Weights& w = isCubic ? *cubic : *conic;
        for (int32_t k = 0; k < steps; ++k) {
            Vector2f p;
            if (isCubic) {
                p = p0 * w.w[0][k] + n[i].Point() * w.w[1][k] + n[i + 1].Point() * w.w[2][k] +
                    end.Point() * w.w[3][k];
            } else {
                p = p0 * w.w[0][k] + n[i].Point() * w.w[1][k] + end.Point() * w.w[2][k];
            }
            out->AddNode({p.x, p.y, kNodeLine, k == steps - 1 && end.closed, end.attribute});
        }
        i += used;
    }
    return out;
}

// ---------------------------------------------------------------------------
// The built-in stroker

namespace {

struct Stroker {
    const KShapePen& pen;
    float outer, inner;
    int32_t n;  // join precision
    std::vector<float> cosTable, sinTable;
    std::vector<Vector2f> left, right;

    Stroker(const KShapePen& p, float ho, float hi) : pen(p), outer(ho), inner(hi)
    {
        n = std::max(pen.joinPrecision, 2);
        for (int32_t k = 0; k <= n; ++k) {
            cosTable.push_back(std::cos(kPi * k / n));
            sinTable.push_back(std::sin(kPi * k / n));
        }
    }

    // One side of the corner at v between the segment normals n1 and n2; `sign`
    // +1 for the left chain at width `h`, -1 for the right.
    void Side(std::vector<Vector2f>& chain, Vector2f v, Vector2f n1, Vector2f n2, float sign, float h,
              bool outerSide, float angle)
    {
        const Vector2f p1 = v + n1 * (sign * h), p2 = v + n2 * (sign * h);
        if (h <= 0.0f) {
            chain.push_back(v);
            return;
        }
        const float dot = n1.Dot(n2);
        const float limit = pen.miterLimit * (outer + inner);
        if (!outerSide || pen.joinType == 0) {
            if (1.0f + dot > 1e-6f) {
                const Vector2f miter = v + (n1 + n2) * (sign * h / (1.0f + dot));
                if ((miter - v).Length() < limit) {
                    chain.push_back(miter);
                    return;
                }
            }
            chain.push_back(p1);
            chain.push_back(p2);
            return;
        }
        chain.push_back(p1);
        if (pen.joinType == 2) {
            const int32_t steps = static_cast<int32_t>(std::floor(std::fabs(angle) / kPi * n + 0.5f));
            if (steps > 1) {
                // Around v from n1 toward n2, on the outer side.
                const Vector2f from = n1 * sign;
                const float turn = (Cross(n1, n2) >= 0.0f ? 1.0f : -1.0f) * std::fabs(angle) / steps;
                const float c = std::cos(turn), s = std::sin(turn);
                Vector2f r = from;
                for (int32_t k = 1; k < steps; ++k) {
                    r = {r.x * c - r.y * s, r.x * s + r.y * c};
                    chain.push_back(v + r * h);
                }
            }
        }
        chain.push_back(p2);
    }

    void Corner(Vector2f v, Vector2f d1, Vector2f d2)
    {
        const float angle = std::acos(std::clamp(d1.Dot(d2), -1.0f, 1.0f));
        const Vector2f n1 = Left(d1), n2 = Left(d2);
        if (std::fabs(angle) <= kDeadBand) {
            left.push_back(v + n2 * outer);
            right.push_back(v - n2 * inner);
            return;
        }
        const bool turnsLeft = Cross(d1, d2) > 0.0f;
        Side(left, v, n1, n2, 1.0f, outer, !turnsLeft, angle);
        Side(right, v, n1, n2, -1.0f, inner, turnsLeft, angle);
    }

    // The cap around `end` from chain point a to chain point b, heading `d`.
    void Cap(std::vector<Vector2f>& out, Vector2f a, Vector2f b, Vector2f d)
    {
        if (pen.endType != 1) return;
        const Vector2f c = (a + b) * 0.5f;
        const float r = (a - c).Length();
        if (pen.endRoundness < 0.5f) {
            out.push_back(a + d * r);
            out.push_back(b + d * r);
            return;
        }
        const Vector2f u = Unit(a - c);
        for (int32_t k = 1; k < n; ++k)
            out.push_back(c + u * (r * cosTable[k]) + d * (r * sinTable[k] * pen.endRoundness));
    }
};

void AddRing(KShape& out, const std::vector<Vector2f>& ring, bool reverse)
{
    if (ring.size() < 2) return;
    for (size_t k = 0; k < ring.size(); ++k) {
        const Vector2f p = ring[reverse ? ring.size() - 1 - k : k];
        if (k == 0) out.MoveTo(p);
        else out.LineTo(p);
    }
    out.Close();
}

}  // namespace

void KStrokeArray(KShape& out, const KShapeArray& a, const KShapePen& pen, float outer, float inner)
{
    const int32_t count = a.Count();
    if (count < 2) return;
    Stroker s(pen, outer, inner);
    const int32_t segments = a.closed ? count : count - 1;
    auto dir = [&](int32_t i) { return Unit(a.After(i) - a.points[i]); };
    for (int32_t i = 0; i < segments; ++i) {
        const Vector2f d = dir(i);
        if (i == 0 && !a.closed) {
            s.left.push_back(a.points[0] + Left(d) * outer);
            s.right.push_back(a.points[0] - Left(d) * inner);
        } else {
            s.Corner(a.points[i], dir(i == 0 ? count - 1 : i - 1), d);
        }
    }
    if (a.closed) {
        // Two rings of opposite walk, so either fill rule paints the band alone.
        AddRing(out, s.left, false);
        AddRing(out, s.right, true);
        return;
    }
    const Vector2f last = a.points[count - 1], dLast = dir(count - 2);
    s.left.push_back(last + Left(dLast) * outer);
    s.right.push_back(last - Left(dLast) * inner);
    std::vector<Vector2f> ring = s.left;
    s.Cap(ring, s.left.back(), s.right.back(), dLast);
    ring.insert(ring.end(), s.right.rbegin(), s.right.rend());
    s.Cap(ring, s.right.front(), s.left.front(), dir(0) * -1.0f);
    AddRing(out, ring, false);
}

KShape* KDash(const KShapeArray& a, const KShapeDash& dash, float thickness)
{
    auto* out = new KShape;
    if (dash.type == 0) {
        AppendArray(*out, a);
        return out;
    }
    const int32_t entries = dash.type == 3 ? std::clamp(dash.count, 1, 16) : 1;
    float on[16], off[16];
    for (int32_t i = 0; i < entries; ++i) {
        on[i] = std::max(dash.on[i], 0.01f) * dash.scale * thickness;
        off[i] = std::max(dash.off[i], 0.01f) * dash.scale * thickness;
    }
    if (dash.type == 2) on[0] = dash.scale * thickness * 0.01f;
    bool drawing = true;
    int32_t i = 0;
    float left = on[0];
    const int32_t segments = a.closed ? a.Count() : a.Count() - 1;
    for (int32_t s = 0; s < segments; ++s) {
        const Vector2f p = a.points[s], q = a.After(s);
        if (s == 0) out->MoveTo(p);
        const float length = (q - p).Length();
        if (length <= 0.0f) {
            if (drawing) out->LineTo(q);
            continue;
        }
        float at = 0.0f;
        while (left < length - at) {
            at += left;
            const Vector2f m = p + (q - p) * (at / length);
            if (drawing) {
                out->LineTo(m);
                left = off[i];
            } else {
                out->MoveTo(m);
                i = (i + 1) % entries;
                left = on[i];
            }
            drawing = !drawing;
        }
        if (drawing) out->LineTo(q);
        left -= length - at;
    }
    return out;
}

KShape* KStroke(const KShape& shape, const KShapePen& penIn)
{
    auto* out = new KShape(&shape);
    if (shape.NodeCount() < 2 || !(penIn.thickness > 0.0f)) return out;
    KShapePen pen = penIn;
    pen.joinPrecision = std::max(pen.joinPrecision, 2);
    std::unique_ptr<KShape> flat(KFlatten(shape, pen.dash.precision));
    if (pen.dash.type > 0) {
        auto* dashed = new KShape(&shape);
        KShapeArrayList arrays(*flat);
        for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) {
            std::unique_ptr<KShape> d(KDash(*a, pen.dash, pen.thickness));
            dashed->Append(d.get(), true);
        }
        flat.reset(dashed);
    }
    const float outer = (pen.thicknessBias + 1.0f) * 0.5f * pen.thickness;
    const float inner = (1.0f - pen.thicknessBias) * 0.5f * pen.thickness;
    if (pen.style != 0) {
        KShapeArrayList arrays(*flat);
        for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) KStrokeArray(*out, *a, pen, outer, inner);
    } else {
        std::unique_ptr<KShape> band(KStrokeByClipper(*flat, pen, outer, inner));
        out->Append(band.get(), true);
    }
    if (pen.attribute != 0)
        for (KShapeNode& n : out->Nodes()) n.attribute = pen.attribute;
    return out;
}

// ---------------------------------------------------------------------------

std::vector<KScanEdge> KToScanEdges(const KShape& shape, double sx, double sy, double ox, double oy,
                                    int32_t steps)
{
    std::unique_ptr<KShape> flat(shape.IsCurved() ? KFlatten(shape, steps) : nullptr);
    const std::vector<KShapeNode>& n = (flat ? *flat : shape).Nodes();
    std::vector<KScanEdge> edges;
    edges.reserve(n.size());
    auto add = [&](const KShapeNode& a, const KShapeNode& b) {
        const double ax = sx * a.x + ox, ay = sy * a.y + oy, bx = sx * b.x + ox, by = sy * b.y + oy;
        if (ay == by) return;  // a horizontal edge bounds no span
        const uint8_t attribute = static_cast<uint8_t>(std::clamp(a.attribute, 0, 2));
        if (ay < by) edges.push_back({ax, ay, bx, by, 1, attribute});
        else edges.push_back({bx, by, ax, ay, -1, attribute});
    };
    size_t first = 0;
    for (size_t i = 0; i < n.size(); ++i) {
        const bool last = i + 1 == n.size() || n[i + 1].type == kNodeMove || n[i].closed;
        if (i > first) add(n[i - 1], n[i]);
        if (last) {
            if (i > first) add(n[i], n[first]);
            first = i + 1;
        }
    }
    return edges;
}
