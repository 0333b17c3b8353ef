// The modifiers: even steps along a path, a closed path's new start,
// triangles that add up to the area, write-on lengths at each level, the
// transform's matrix and the shading ramp.
#include <cmath>
#include <memory>
#include "shape/reshape.h"
#include "support.h"

namespace {

using zvtest::Tool;

std::unique_ptr<KShape> Rect(float x0, float y0, float x1, float y1, bool closed = true)
{
    auto s = std::make_unique<KShape>();
    s->MoveTo({x0, y0});
    s->LineTo({x1, y0});
    s->LineTo({x1, y1});
    s->LineTo({x0, y1}, closed);
    return s;
}

// Where a point on the unit square's outline lies along it, from (0, 0) counter-clockwise.
float AlongSquare(Vector2f p)
{
    if (p.y == 0.0f) return p.x;
    if (p.x == 1.0f) return 1.0f + p.y;
    if (p.y == 1.0f) return 3.0f - p.x;
    return 4.0f - p.y;
}

double SignedArea(const KShapeArray& a)
{
    double area = 0.0;
    for (int32_t i = 0; i < a.Count(); ++i) {
        const Vector2f p = a.points[i], q = a.After(i);
        area += 0.5 * (double(p.x) * q.y - double(q.x) * p.y);
    }
    return area;
}

float TotalLength(const ShapeListVector& v)
{
    float total = 0.0f;
    for (const auto& l : v.lists)
        for (KShape* s = l->First(); s; s = NextShape(s)) total += s->Length();
    return total;
}

std::unique_ptr<ShapeListVector> Vector(std::vector<std::unique_ptr<KShape>> shapes)
{
    auto v = std::make_unique<ShapeListVector>();
    auto list = std::make_unique<KShapeList>();
    for (auto& s : shapes) list->Add(s.release());
    v->Push(std::move(list));
    return v;
}

// A modifier tool run on `input`; the output stays the tool's.
const ShapeListVector& Modified(Tool<>& t, ShapeListVector* input)
{
    t.Field<ShapeListVector*>("Shape", kValueShape) = input;
    t.Run(0.0f);
    t.Field<ShapeListVector*>("Shape", kValueShape) = nullptr;
    return **static_cast<ShapeListVector**>(t.Output());
}

}  // namespace

TEST(ShapeResample, EvenStepsAlongThePath)
{
    auto square = Rect(0, 0, 1, 1);
    for (int32_t n : {16, 10, 7}) {
        KShape out;
        KResampleArray(out, *KShapeArrayList(*square).First(), {4.0f / float(n), 0.0f, false, false});
        KShapeArrayList points(out);
        ASSERT_EQ(points.count, 1);
        const KShapeArray& a = *points.First();
        ASSERT_EQ(a.Count(), n) << n;
        EXPECT_TRUE(a.closed);
        for (int32_t i = 0; i < n; ++i) EXPECT_NEAR(AlongSquare(a.points[i]), 4.0f * float(i) / float(n), 1e-3f) << n;
    }

    // An open path of length 1: the offset moves the walk, the keep options add ends and corners.
    KShape line;
    line.MoveTo({0, 0});
    line.LineTo({0.5f, 0});
    line.LineTo({0.5f, 0.5f});
    KShapeArrayList arrays(line);
    KShape plain, kept, beyond;
    KResampleArray(plain, *arrays.First(), {0.3f, 0.1f, false, false});
    EXPECT_EQ(plain.NodeCount(), 3);
    EXPECT_NEAR(plain.Nodes()[2].y, 0.2f, 1e-6f);
    KResampleArray(kept, *arrays.First(), {0.3f, 0.1f, true, true});
    EXPECT_EQ(kept.NodeCount(), 6);  // start, 0.1, corner, 0.4, 0.7, end
    KResampleArray(beyond, *arrays.First(), {0.9f, 2.0f, true, false});
    ASSERT_EQ(beyond.NodeCount(), 2);  // only the ends
    EXPECT_EQ(beyond.Nodes()[1].y, 0.5f);
}

TEST(ShapeStartAndClosure, ShiftsTheStartThenOpensOrCloses)
{
    auto square = Rect(0, 0, 1, 1);
    std::unique_ptr<KShape> shifted(KShiftStart(*square, 1.375f));
    ASSERT_EQ(shifted->NodeCount(), 5);
    EXPECT_EQ(std::make_pair(shifted->Nodes()[0].x, shifted->Nodes()[0].y), std::make_pair(1.0f, 0.5f));
    EXPECT_EQ(std::make_pair(shifted->Nodes()[4].x, shifted->Nodes()[4].y), std::make_pair(1.0f, 0.0f));
    EXPECT_TRUE(shifted->IsClosed());
    // An open path keeps its start.
    auto open = Rect(0, 0, 1, 1, false);
    EXPECT_EQ(std::unique_ptr<KShape>(KShiftStart(*open, 0.5f))->Nodes()[0].x, 0.0f);

    Tool<> t("ZV_ShapeTools");
    auto v = Vector({});
    v->At(0)->Add(Rect(0, 0, 1, 1).release());
    t.SetFloat("Start Offset", 0.25f);
    t.Set("Open Close", 2);
    const KShape& s = *Modified(t, v.get()).At(0)->First();
    EXPECT_FALSE(s.IsClosed());
    EXPECT_EQ(std::make_pair(s.Nodes()[0].x, s.Nodes()[0].y), std::make_pair(1.0f, 0.0f));
}

TEST(ShapeTriangulate, TrianglesCoverTheAreaUnderTheOddRule)
{
    // A square of side 4 with a square hole of side 1, the hole drawn the same way round.
    auto shape = Rect(0, 0, 4, 4);
    auto hole = Rect(1, 1, 2, 2);
    shape->Append(hole.get(), true);
    std::unique_ptr<KShape> triangles(KTriangulateShape(*shape, 0));
    KShapeArrayList arrays(*triangles);
    double area = 0.0;
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a)) {
        ASSERT_EQ(a->Count(), 3);
        EXPECT_TRUE(a->closed);
        EXPECT_GT(SignedArea(*a), 0.0) << "counter-clockwise";
        area += SignedArea(*a);
    }
    EXPECT_FALSE(triangles->Contains({1.5f, 1.5f}));
    EXPECT_NEAR(area, 15.0, 1e-5);

    // A five-pointed star drawn in one stroke: its middle is crossed twice and stays out.
    KShape star;
    for (int k = 0; k < 5; ++k) {
        const float a = 1.5707964f + float(k) * 2.0f * 2.0f * 3.14159265f / 5.0f;
        if (k == 0) star.MoveTo({std::cos(a), std::sin(a)});
        else star.LineTo({std::cos(a), std::sin(a)}, k == 4);
    }
    std::unique_ptr<KShape> points(KTriangulateShape(star, 0));
    EXPECT_GT(points->NodeCount(), 0);
    EXPECT_FALSE(points->Contains({0.0f, 0.0f}));
    EXPECT_TRUE(points->Contains({0.0f, 0.8f}));
    EXPECT_EQ(std::unique_ptr<KShape>(KTriangulateShape(star, 1))->NodeCount(), 0);
}

TEST(ShapeWriteOn, LengthsAtEachLevel)
{
    // One list of two open paths, lengths 1 and 3.
    auto make = [] {
        auto a = std::make_unique<KShape>(), b = std::make_unique<KShape>();
        a->MoveTo({0, 0});
        a->LineTo({1, 0});
        b->MoveTo({0, 1});
        b->LineTo({3, 1});
        std::vector<std::unique_ptr<KShape>> shapes;
        shapes.push_back(std::move(a));
        shapes.push_back(std::move(b));
        return Vector(std::move(shapes));
    };
    auto v = make();
    auto length = [&](int32_t level, float start, float end, float shift = 0.0f, bool wrap = false) {
        KWriteOnSettings s;
        s.level = level, s.start = start, s.end = end, s.shift = shift, s.wrap = wrap;
        return TotalLength(*KWriteOn(v.get(), s));
    };
    EXPECT_EQ(length(0, 0.0f, 0.0f), 0.0f);
    EXPECT_NEAR(length(0, 0.0f, 0.5f), 2.0f, 1e-6f);
    EXPECT_EQ(length(0, 0.0f, 1.0f), 4.0f);
    EXPECT_EQ(length(0, 0.3f, 0.3f), 0.0f);
    EXPECT_NEAR(length(1, 0.0f, 0.5f), 2.0f, 1e-6f);
    {
        // Globally the first path is whole and the second begun; by shape each is half drawn.
        KWriteOnSettings s;
        s.end = 0.5f;
        std::unique_ptr<ShapeListVector> global = KWriteOn(v.get(), s);
        EXPECT_EQ(global->At(0)->First()->Length(), 1.0f);
        s.level = 1;
        std::unique_ptr<ShapeListVector> each = KWriteOn(v.get(), s);
        EXPECT_EQ(each->At(0)->First()->Length(), 0.5f);
    }
    // Shifted past the end with wrap: the rest starts again at the beginning.
    EXPECT_NEAR(length(0, 0.0f, 0.5f, 0.75f, true), 2.0f, 1e-6f);
    EXPECT_NEAR(length(0, 0.0f, 0.5f, 0.75f, false), 1.0f, 1e-6f);

    // Through the tool, with its range.
    Tool<> t("ZV_ShapeWriteOn");
    t.Field<KRange2>("Range Start", kValueRange) = {0.25f, 0.75f};
    EXPECT_NEAR(TotalLength(Modified(t, v.get())), 2.0f, 1e-6f);
}

TEST(ShapeTransform, TheMatrixOnHandComputedPoints)
{
    Tool<> t("ZV_ShapeTransform");
    KTransformValue& xf = t.Field<KTransformValue>("Transform", kValueTransform);
    xf.scaleX = 2.0f;  // locked: all axes
    xf.rotateZ = 1.5707964f;
    xf.translateX = 0.1f;
    xf.translateY = 0.2f;
    auto v = Vector({});
    auto s = std::make_unique<KShape>();
    s->MoveTo({1.0f, 0.0f});
    s->LineTo({0.5f, 0.25f});
    s->LineTo({0.0f, 0.0f});
    v->At(0)->Add(s.release());
    const ShapeListVector& out = Modified(t, v.get());
    const std::vector<KShapeNode>& n = out.At(0)->First()->Nodes();
    // Scaled by 2, turned a quarter counter-clockwise, moved by (0.1, 0.2).
    const float want[3][2] = {{0.1f, 2.2f}, {-0.4f, 1.2f}, {0.1f, 0.2f}};
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(n[i].x, want[i][0], 1e-6f);
        EXPECT_NEAR(n[i].y, want[i][1], 1e-6f);
    }
    // The list keeps the way back.
    const Vector2f back = out.At(0)->transform.Apply(Vector2f{0.1f, 2.2f});
    EXPECT_NEAR(back.x, 1.0f, 1e-6f);
    EXPECT_NEAR(back.y, 0.0f, 1e-6f);
}

TEST(ShapeShading, AGreyRampOverTheShapesOfAList)
{
    std::vector<std::unique_ptr<KShape>> shapes;
    for (int i = 0; i < 3; ++i) shapes.push_back(Rect(float(i), 0, float(i) + 1, 1));
    shapes[2]->hasPen = true;
    shapes[2]->penColor = {0.25f, 0.0f, 0.0f, 1.0f};
    auto v = Vector(std::move(shapes));
    Tool<> t("ZV_ShapeShading");
    t.SetFloat("Offset", 0.5f);
    t.Set("Mode Pen", 2);
    const ShapeListVector& out = Modified(t, v.get());
    std::vector<std::array<float, 3>> got;
    for (KShape* s = out.At(0)->First(); s; s = NextShape(s)) got.push_back({s->fillColor.g, s->penColor.r, s->penColor.g});
    EXPECT_EQ(got, (std::vector<std::array<float, 3>>{{1.0f, 1.0f, 1.0f}, {0.75f, 0.75f, 0.75f}, {0.5f, 0.75f, 0.5f}}));
}
