#include "shape/reshape.h"
#include <GL/glu.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <vector>
#include "shape/geometry.h"

namespace {

// Writes p unless it repeats the last point written.
struct Writer {
    explicit Writer(KShape& shape) : out(shape) {}
    KShape& out;
    bool any = false;
    Vector2f last;
    void Put(Vector2f p)
    {
        if (any && p.x == last.x && p.y == last.y) return;
        if (any) out.LineTo(p);
        else out.MoveTo(p);
        any = true;
        last = p;
    }
};

int32_t Segments(const KShapeArray& a) { return a.closed ? a.Count() : a.Count() - 1; }

}  // namespace

void KResampleArray(KShape& out, const KShapeArray& a, const KResampleSettings& s)
{
    Writer w(out);
    if (s.keepEndPoints) w.Put(a.points[0]);
    float walk = s.offset, at = 0.0f;
    const float distance = std::max(s.distance, 1e-6f);
    const int32_t segments = Segments(a);
    for (int32_t i = 0; i < segments; ++i) {
        const Vector2f p = a.points[i], d = a.After(i) - p;
        const float length = d.Length();
        // On a closed path a point a rounding error short of the start is the start itself.
        const float stop = at + length - (a.closed && i == segments - 1 ? distance * 1e-4f : 0.0f);
        if (s.keepOriginalPoints) w.Put(p);
        while (walk >= at && walk < stop) {
            w.Put(p + d * ((walk - at) / length));
            walk += distance;
        }
        at += length;
        if (s.keepOriginalPoints) w.Put(a.After(i));
    }
    if (a.closed) out.Close();
    else if (s.keepEndPoints) w.Put(a.points.back());
}

KShape* KShiftStart(const KShape& shape, float fraction)
{
    if (fraction == 0.0f || shape.NodeCount() == 0) return KShape::Duplicate(shape);
    std::unique_ptr<KShape> flat(shape.IsCurved() ? KFlatten(shape, 16) : nullptr);
    KShapeArrayList arrays(flat ? *flat : shape);
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a))
        if (!a->closed) return KShape::Duplicate(shape);
    float f = std::fmod(fraction, 1.0f);
    if (f < 0.0f) f += 1.0f;
    auto* out = new KShape(&shape);
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) {
        if (f == 0.0f) {
            AppendArray(*out, *a);
            continue;
        }
        const float target = ArrayLength(*a) * f;
        const int32_t n = a->Count();
        float at = 0.0f;
        int32_t cut = n - 1;
        Vector2f start = a->points[0];
        for (int32_t i = 0; i < n; ++i) {
            const Vector2f p = a->points[i], d = a->After(i) - p;
            const float length = d.Length();
            if (at + length > target) {
                cut = i;
                start = p + d * ((target - at) / length);
                break;
            }
            at += length;
        }
        Writer w(*out);
        w.Put(start);
        for (int32_t k = 1; k <= n; ++k) w.Put(a->points[(cut + k) % n]);
        out->Close();
    }
    return out;
}

namespace {

// What the tessellator's callbacks fill: every vertex it hands back, in
// threes, and the points it makes where edges cross.
struct Tessellation {
    std::deque<std::array<GLdouble, 3>> made;
    std::vector<const GLdouble*> corners;
    bool failed = false;
};

void TessVertex(void* vertex, void* data)
{
    static_cast<Tessellation*>(data)->corners.push_back(static_cast<const GLdouble*>(vertex));
}
void TessCombine(GLdouble coords[3], void*[4], GLfloat[4], void** out, void* data)
{
    auto* t = static_cast<Tessellation*>(data);
    t->made.push_back({coords[0], coords[1], 0.0});
    *out = t->made.back().data();
}
void TessError(GLenum, void* data) { static_cast<Tessellation*>(data)->failed = true; }
// Registered so that the tessellator hands out separate triangles, never fans or strips.
void TessEdgeFlag(GLboolean, void*) {}
void TessBegin(GLenum, void*) {}

}  // namespace

KShape* KTriangulateShape(const KShape& shape, int32_t type)
{
    auto* out = new KShape(&shape);
    if (type != 0) return out;
    KShapeArrayList arrays(shape);
    if (!arrays.First()) return out;
    GLUtesselator* tess = gluNewTess();
    if (!tess) return out;
    Tessellation t;
    std::vector<std::array<GLdouble, 3>> points;
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a))
        for (Vector2f p : a->points) points.push_back({p.x, p.y, 0.0});
    gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_ODD);
    gluTessNormal(tess, 0.0, 0.0, 1.0);
    gluTessCallback(tess, GLU_TESS_BEGIN_DATA, reinterpret_cast<_GLUfuncptr>(TessBegin));
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<_GLUfuncptr>(TessVertex));
    gluTessCallback(tess, GLU_TESS_COMBINE_DATA, reinterpret_cast<_GLUfuncptr>(TessCombine));
    gluTessCallback(tess, GLU_TESS_ERROR_DATA, reinterpret_cast<_GLUfuncptr>(TessError));
    gluTessCallback(tess, GLU_TESS_EDGE_FLAG_DATA, reinterpret_cast<_GLUfuncptr>(TessEdgeFlag));
    gluTessBeginPolygon(tess, &t);
    size_t next = 0;
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) {
        gluTessBeginContour(tess);
        for (int32_t i = 0; i < a->Count(); ++i, ++next) gluTessVertex(tess, points[next].data(), points[next].data());
        gluTessEndContour(tess);
    }
    gluTessEndPolygon(tess);
    gluDeleteTess(tess);
    if (t.failed) return out;
    for (size_t i = 0; i + 2 < t.corners.size(); i += 3) {
        const GLdouble* c[3] = {t.corners[i], t.corners[i + 1], t.corners[i + 2]};
        out->MoveTo({float(c[0][0]), float(c[0][1])});
        out->LineTo({float(c[1][0]), float(c[1][1])});
        out->LineTo({float(c[2][0]), float(c[2][1])}, true);
    }
    return out;
}

namespace {

// A range over the parts of a whole: the part from s0 to s1 of it sees the
// range rescaled to itself.
struct Range {
    float start, end;
    Range Within(float s0, float s1) const { return {(start - s0) / (s1 - s0), (end - s0) / (s1 - s0)}; }
};

KShape* Flat(const KShape& shape, int32_t precision)
{
    return shape.IsCurved() ? KFlatten(shape, precision) : KShape::Duplicate(shape);
}

float ShapeLength(const KShape& shape, int32_t precision)
{
    std::unique_ptr<KShape> flat(Flat(shape, precision));
    float total = 0.0f;
    KShapeArrayList arrays(*flat);
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) total += ArrayLength(*a);
    return total;
}

// The array between the fractions r.start and r.end of its length, open.
void ClipArray(KShape& out, const KShapeArray& a, Range r)
{
    if (r.start >= 1.0f || r.end <= 0.0f || r.start >= r.end) return;
    const float length = ArrayLength(a);
    const float from = std::max(r.start, 0.0f) * length, to = std::min(r.end, 1.0f) * length;
    Writer w(out);
    float at = 0.0f;
    for (int32_t i = 0; i < Segments(a) && at <= to; ++i) {
        const Vector2f p = a.points[i], d = a.After(i) - p;
        const float l = d.Length(), end = at + l;
        if (end >= from && l > 0.0f) {
            w.Put(at >= from ? p : p + d * ((from - at) / l));
            w.Put(end <= to ? a.After(i) : p + d * ((to - at) / l));
        }
        at = end;
    }
}

KShape* WriteOnShape(const KShape& shape, Range r, const KWriteOnSettings& s)
{
    if (r.start >= r.end) return new KShape(&shape);
    if (r.start <= 0.0f && r.end >= 1.0f) return KShape::Duplicate(shape);
    std::unique_ptr<KShape> flat(Flat(shape, s.precision));
    KShapeArrayList arrays(*flat);
    auto* out = new KShape(&shape);
    float total = 0.0f;
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) total += ArrayLength(*a);
    const bool share = s.level < 2 && arrays.count >= 2 && total > 0.0f;
    float before = 0.0f;
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) {
        const float length = ArrayLength(*a);
        if (!share) ClipArray(*out, *a, r);
        else if (length > 0.0f) ClipArray(*out, *a, r.Within(before / total, (before + length) / total));
        before += length;
    }
    return out;
}

// One pass of the range over a list: shared by the shapes' lengths at the
// global level, else the range for each shape.
void WriteOnList(KShapeList& out, const KShapeList& list, Range r, const KWriteOnSettings& s)
{
    std::vector<float> lengths;
    float total = 0.0f;
    for (KShape* sh = list.First(); sh; sh = NextShape(sh)) total += lengths.emplace_back(ShapeLength(*sh, s.precision));
    const bool share = s.level == 0 && lengths.size() >= 2 && total > 0.0f;
    float before = 0.0f;
    size_t i = 0;
    for (KShape* sh = list.First(); sh; sh = NextShape(sh), ++i) {
        const float len = lengths[i];
        if (!share) out.Add(WriteOnShape(*sh, r, s));
        else if (len == 0.0f) out.Add(KShape::Duplicate(*sh));
        else out.Add(WriteOnShape(*sh, r.Within(before / total, (before + len) / total), s));
        before += len;
    }
}

std::unique_ptr<ShapeListVector> WriteOnPass(const ShapeListVector& v, Range r, const KWriteOnSettings& s)
{
    auto out = std::make_unique<ShapeListVector>();
    out->frameWidth = v.frameWidth;
    out->frameHeight = v.frameHeight;
    std::vector<float> lengths;
    float total = 0.0f;
    for (const auto& l : v.lists) {
        float len = 0.0f;
        for (KShape* sh = l->First(); sh; sh = NextShape(sh)) len += ShapeLength(*sh, s.precision);
        total += lengths.emplace_back(len);
    }
    const bool share = s.level == 0 && v.Count() >= 2 && total > 0.0f;
    float before = 0.0f;
    for (int32_t i = 0; i < v.Count(); ++i) {
        const KShapeList& l = *v.At(i);
        const float len = lengths[i];
        if (share && len == 0.0f) {
            out->Push(l.Clone());
        } else {
            std::unique_ptr<KShapeList> list = KShapeList::Like(l);
            WriteOnList(*list, l, share ? r.Within(before / total, (before + len) / total) : r, s);
            out->Push(std::move(list));
        }
        before += len;
    }
    return out;
}

}  // namespace

std::unique_ptr<ShapeListVector> KWriteOn(const ShapeListVector* shapes, const KWriteOnSettings& s)
{
    if (!shapes) return std::make_unique<ShapeListVector>();
    Range first{s.start + s.shift, s.end + s.shift};
    if (!s.wrap) return WriteOnPass(*shapes, first, s);
    const float span = first.end - first.start;
    first.start -= std::floor(first.start);
    first.end = first.start + span;
    if (first.end <= 1.0f) return WriteOnPass(*shapes, first, s);
    // The range runs past the end: the rest starts again from the beginning.
    const Range second{0.0f, first.end - 1.0f};
    first.end = 1.0f;
    std::unique_ptr<ShapeListVector> out = WriteOnPass(*shapes, first, s);
    std::unique_ptr<ShapeListVector> rest = WriteOnPass(*shapes, second, s);
    for (int32_t i = 0; i < out->Count(); ++i)
        for (KShape *a = out->At(i)->First(), *b = rest->At(i)->First(); a && b; a = NextShape(a), b = NextShape(b))
            a->Append(b, true);
    return out;
}
