#include "shape/shape.h"
#include <algorithm>
#include <cmath>
#include "shape/geometry.h"

KShape::KShape(const KShape* source)
{
    if (source) CopyHeader(*source);
}

void KShape::CopyHeader(const KShape& s)
{
    tag = s.tag;
    hasFill = s.hasFill;
    hasPen = s.hasPen;
    fillColor = s.fillColor;
    penColor = s.penColor;
}

KShape* KShape::Duplicate(const KShape& shape)
{
    auto* copy = new KShape(&shape);
    copy->nodes = shape.nodes;
    copy->nodeCount = shape.nodeCount;
    copy->conicCount = shape.conicCount;
    copy->cubicCount = shape.cubicCount;
    return copy;
}

void KShape::AddNode(const KShapeNode& node)
{
    nodes.push_back(node);
    ++nodeCount;
    if (node.type == kNodeConic) ++conicCount;
    if (node.type == kNodeCubic) ++cubicCount;
}

void KShape::MoveTo(Vector2f p, bool closed) { AddNode({p.x, p.y, kNodeMove, closed, 0}); }
void KShape::LineTo(Vector2f p, bool closed) { AddNode({p.x, p.y, kNodeLine, closed, 0}); }

void KShape::ConicTo(Vector2f control, Vector2f end, bool closed)
{
    AddNode({control.x, control.y, kNodeConic, false, 0});
    AddNode({end.x, end.y, kNodeLine, closed, 0});
}

void KShape::AddCubic(Vector2f c1, Vector2f c2, Vector2f end, bool closed)
{
    AddNode({c1.x, c1.y, kNodeCubic, false, 0});
    AddNode({c2.x, c2.y, kNodeCubic, false, 0});
    AddNode({end.x, end.y, kNodeCubic, closed, 0});
}

void KShape::Close()
{
    if (!nodes.empty()) nodes.back().closed = true;
}

void KShape::Append(KShape* other, bool steal)
{
    if (!other || other->nodes.empty()) return;
    if (!steal) {
        for (const KShapeNode& n : other->nodes) AddNode(n);
        return;
    }
    nodes.insert(nodes.end(), other->nodes.begin(), other->nodes.end());
    nodeCount += other->nodeCount;
    conicCount += other->conicCount;
    cubicCount += other->cubicCount;
    other->nodes.clear();
    other->nodeCount = other->conicCount = other->cubicCount = 0;
}

float KShape::Length() const
{
    float length = 0.0f;
    for (size_t i = 1; i < nodes.size(); ++i)
        if (nodes[i].type == kNodeLine) length += (nodes[i].Point() - nodes[i - 1].Point()).Length();
    return length;
}

bool KShape::IsClosed() const
{
    if (nodes.empty()) return false;
    for (size_t i = 0; i < nodes.size(); ++i) {
        const bool last = i + 1 == nodes.size() || nodes[i + 1].type == kNodeMove;
        if (last && !nodes[i].closed) return false;
    }
    return true;
}

void KShape::ApplyMatrix(const Matrix3f& m)
{
    for (KShapeNode& n : nodes) {
        const Vector2f p = {m.m[0][0] * n.x + m.m[0][1] * n.y + m.m[0][2],
                            m.m[1][0] * n.x + m.m[1][1] * n.y + m.m[1][2]};
        n.x = p.x;
        n.y = p.y;
    }
}

void KShape::ApplyMatrix(const Matrix4f& m)
{
    for (KShapeNode& n : nodes) {
        const Vector2f p = m.Apply(n.Point());
        n.x = p.x;
        n.y = p.y;
    }
}

bool KShape::Contains(Vector2f p) const
{
    std::unique_ptr<KShape> flat(IsCurved() ? KFlatten(*this, 16) : nullptr);
    KShapeArrayList arrays(flat ? *flat : *this);
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) {
        bool inside = false;
        const int32_t n = a->Count();
        for (int32_t i = 0, j = n - 1; i < n; j = i++) {
            const Vector2f u = a->points[i], v = a->points[j];
            if ((u.y > p.y) != (v.y > p.y) && p.x < (v.x - u.x) * (p.y - u.y) / (v.y - u.y) + u.x)
                inside = !inside;
        }
        if (inside) return true;
    }
    return false;
}

KShape* KShape::SetOpenClose(int32_t mode) const
{
    KShape* copy = Duplicate(*this);
    if (mode < 1 || mode > 3) return copy;
    std::vector<KShapeNode>& n = copy->nodes;
    for (size_t i = 0; i < n.size(); ++i) {
        if (i + 1 != n.size() && n[i + 1].type != kNodeMove) continue;
        n[i].closed = mode == 1 ? true : mode == 2 ? false : !n[i].closed;
    }
    return copy;
}

bool KShape::Bounds(Vector2f& low, Vector2f& high) const
{
    if (nodes.empty()) return false;
    low = high = nodes[0].Point();
    for (const KShapeNode& n : nodes) {
        low = {std::min(low.x, n.x), std::min(low.y, n.y)};
        high = {std::max(high.x, n.x), std::max(high.y, n.y)};
    }
    return true;
}

// ---------------------------------------------------------------------------

Vector2f KShapeArray::After(int32_t i) const
{
    const int32_t n = Count();
    if (i + 1 < n) return points[i + 1];
    if (closed) return points[0];
    return n >= 2 ? points[n - 1] * 2.0f - points[n - 2] : points[n - 1];
}

Vector2f KShapeArray::Before(int32_t i) const
{
    const int32_t n = Count();
    if (i > 0) return points[i - 1];
    if (closed) return points[n - 1];
    return n >= 2 ? points[0] * 2.0f - points[1] : points[0];
}

namespace {
Vector2f Unit(Vector2f v)
{
    const float l = v.Length();
    return l > 0.0f ? v * (1.0f / l) : Vector2f{};
}
// The normal of a direction, turned a quarter to the right of it.
Vector2f Normal(Vector2f d) { return Unit({d.y, -d.x}); }
}  // namespace

void KShapeArray::ComputeNormals(float blend, float angleLimit)
{
    const int32_t n = Count();
    normals.assign(size_t(2) * n, {});
    if (n < 2) {
        for (int32_t i = 0; i < n; ++i) normals[2 * i] = normals[2 * i + 1] = points[i];
        normalsValid = true;
        return;
    }
    const float limit = angleLimit * 0.017453292f;
    for (int32_t i = 0; i < n; ++i) {
        const Vector2f p = points[i];
        Vector2f n1 = Normal(p - Before(i)), n2 = Normal(After(i) - p);
        const Vector2f sum = Unit(n1 + n2);
        const float corner = std::acos(std::clamp(n1.Dot(n2), -1.0f, 1.0f));
        if (blend == 0.0f) {
            if (corner != 0.0f && std::fabs(corner) <= limit) n1 = n2 = sum;
        } else {
            n1 = Unit(n1 * (1.0f - blend) + sum * blend);
            n2 = Unit(n2 * (1.0f - blend) + sum * blend);
        }
        normals[2 * i] = n1;
        normals[2 * i + 1] = n2;
    }
    normalsValid = true;
}

KShapeArrayList::KShapeArrayList(const KShape& shape)
{
    const std::vector<KShapeNode>& nodes = shape.Nodes();
    size_t i = 0;
    while (i < nodes.size()) {
        auto* a = new KShapeArray;
        a->Add(nodes[i].Point());
        bool closed = nodes[i].closed;
        ++i;
        while (!closed && i < nodes.size() && nodes[i].type != kNodeMove) {
            const Vector2f p = nodes[i].Point();
            const bool repeatsLast = p.x == a->points.back().x && p.y == a->points.back().y;
            const bool repeatsFirst = nodes[i].closed && p.x == a->points[0].x && p.y == a->points[0].y;
            if (!repeatsLast && !repeatsFirst) a->Add(p);
            closed = nodes[i].closed;
            ++i;
        }
        a->closed = closed;
        if (a->Count() < 2) {
            // The format drops this sub-path and everything behind it.
            delete a;
            break;
        }
        Append(a);
    }
}

void AppendArray(KShape& shape, const KShapeArray& array)
{
    for (int32_t i = 0; i < array.Count(); ++i) {
        if (i == 0) shape.MoveTo(array.points[i]);
        else shape.LineTo(array.points[i]);
    }
    if (array.closed) shape.Close();
}

float ArrayLength(const KShapeArray& a)
{
    const int32_t segments = a.closed ? a.Count() : a.Count() - 1;
    float length = 0.0f;
    for (int32_t i = 0; i < segments; ++i) length += (a.After(i) - a.points[i]).Length();
    return length;
}

// ---------------------------------------------------------------------------

void KShapePaint::DeriveColor16()
{
    const float c[4] = {color.r, color.g, color.b, color.a};
    for (int i = 0; i < 4; ++i) {
        const float v = std::clamp(c[i], 0.0f, 1.0f) * 65535.0f;
        color16[i] = static_cast<uint16_t>(v);
    }
}

std::unique_ptr<KShapeList> KShapeList::Like(const KShapeList& source)
{
    auto list = std::make_unique<KShapeList>();
    std::copy(std::begin(source.styles), std::end(source.styles), std::begin(list->styles));
    list->transform = source.transform;
    return list;
}

std::unique_ptr<KShapeList> KShapeList::Clone() const
{
    std::unique_ptr<KShapeList> list = Like(*this);
    for (KShape* s = First(); s; s = NextShape(s)) list->Add(KShape::Duplicate(*s));
    return list;
}

void KShapeList::ApplyMatrix(const Matrix4f& m)
{
    transform = Matrix4f::Product(transform, m.Inverted());
    for (KShape* s = First(); s; s = NextShape(s)) s->ApplyMatrix(m);
}

std::unique_ptr<ShapeListVector> ShapeListVector::Clone() const
{
    auto copy = std::make_unique<ShapeListVector>();
    copy->frameWidth = frameWidth;
    copy->frameHeight = frameHeight;
    for (const auto& l : lists) copy->Push(l->Clone());
    return copy;
}

int32_t ShapeListVector::ShapeCount() const
{
    int32_t n = 0;
    for (const auto& l : lists) n += l->count;
    return n;
}

int32_t ShapeListVector::NodeCount() const
{
    int32_t n = 0;
    for (const auto& l : lists)
        for (KShape* s = l->First(); s; s = NextShape(s)) n += s->NodeCount();
    return n;
}

std::unique_ptr<ShapeListVector> KMapShapes(const ShapeListVector* source, const KShapeOperation& op)
{
    auto out = std::make_unique<ShapeListVector>();
    if (!source) return out;
    out->frameWidth = source->frameWidth;
    out->frameHeight = source->frameHeight;
    for (const auto& l : source->lists) {
        std::unique_ptr<KShapeList> list = KShapeList::Like(*l);
        for (KShape* s = l->First(); s; s = NextShape(s)) list->Add(op(*s));
        out->Push(std::move(list));
    }
    return out;
}
