// The creation tools: primitive outlines against their tables, rows of a
// table as primitives and chart bars, the spiral's ends, and tracing against
// areas and corners.
#include <cmath>
#include <memory>
#include "bridge/value_kinds.h"
#include "data/table.h"
#include "host/imageio.h"
#include "raster/image.h"
#include "shape/create.h"
#include "shape/effect_shape.h"
#include "support.h"

namespace {

using zvtest::Tool;
using Points = std::vector<std::pair<float, float>>;

Points NodesOf(const KShape& s)
{
    Points p;
    for (const KShapeNode& n : s.Nodes()) p.push_back({n.x, n.y});
    return p;
}

void ExpectPoints(const Points& got, const Points& want, float tol)
{
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < got.size(); ++i) {
        EXPECT_NEAR(got[i].first, want[i].first, tol) << "point " << i;
        EXPECT_NEAR(got[i].second, want[i].second, tol) << "point " << i;
    }
}

// The tool's output after a render.
const ShapeListVector& Made(Tool<>& t)
{
    t.Run(0.0f);
    return **static_cast<ShapeListVector**>(t.Output());
}

double Area(const KShape& shape)
{
    double area = 0.0;
    KShapeArrayList arrays(shape);
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a))
        for (int32_t i = 0; i < a->Count(); ++i) {
            const Vector2f p = a->points[i], q = a->After(i);
            area += 0.5 * (double(p.x) * q.y - double(q.x) * p.y);
        }
    return std::fabs(area);
}

std::unique_ptr<KDataChannel> Channel(const char* name, int32_t type, std::vector<float> values)
{
    const int32_t width = type == kDataColor ? 4 : type == kDataVector3 ? 3 : type == kDataVector2 ? 2 : 1;
    auto c = KDataChannel::Create(name, type, int32_t(values.size()) / width);
    c->floats = std::move(values);
    return c;
}

}  // namespace

TEST(ShapePrimitive, OutlinesFollowTheirTables)
{
    KShape cross;
    KAddPrimitive(cross, 0, {1.0f, 0.5f}, 4, 0.0f);
    const float x = 0.5f, y = 0.25f;
    ExpectPoints(NodesOf(cross), {{y, x}, {-y, x}, {-y, y}, {-x, y}, {-x, -y}, {-y, -y}, {-y, -x}, {y, -x}, {y, -y},
                                  {x, -y}, {x, y}, {y, y}}, 0.0f);
    EXPECT_TRUE(cross.IsClosed());
    EXPECT_EQ(cross.Nodes()[0].type, kNodeMove);

    KShape rectangle;
    KAddPrimitive(rectangle, 2, {1.0f, 0.5f}, 4, 0.0f);
    ExpectPoints(NodesOf(rectangle), {{-x, -y}, {x, -y}, {x, y}, {-x, y}}, 0.0f);
    EXPECT_TRUE(rectangle.IsClosed());

    // An ellipse of half-sizes 0.5 and 0.25, a point every quarter turn from 90 degrees.
    KShape polygon;
    KAddPrimitive(polygon, 1, {1.0f, 0.5f}, 4, 1.5707964f);
    ExpectPoints(NodesOf(polygon), {{0, y}, {-x, 0}, {0, -y}, {x, 0}}, 1e-6f);
    EXPECT_TRUE(polygon.IsClosed());
    KShape two;
    KAddPrimitive(two, 3, {1.0f, 1.0f}, 2, 0.0f);
    ExpectPoints(NodesOf(two), {{x, 0}, {-x, 0}}, 1e-6f);
    EXPECT_FALSE(two.IsClosed());

    // Outer points on Size X's circle, inner ones half a step on, on Size Y's.
    KShape star;
    KAddPrimitive(star, 4, {1.0f, 0.5f}, 4, 0.0f);
    const float d = 0.25f * std::sqrt(0.5f);
    ExpectPoints(NodesOf(star), {{x, 0}, {d, d}, {0, x}, {-d, d}, {-x, 0}, {-d, -d}, {0, -x}, {d, -d}}, 1e-6f);
    EXPECT_TRUE(star.IsClosed());

    KShape rounded;
    KAddRoundRect(rounded, 0.0f, 2.0f, 0.0f, 1.0f, 5.0f, 2);  // the radius shrinks to 0.5
    ASSERT_EQ(rounded.NodeCount(), 12);
    ExpectPoints({NodesOf(rounded)[0], NodesOf(rounded)[2], NodesOf(rounded)[5], NodesOf(rounded)[11]},
                 {{0.0f, 0.5f}, {0.5f, 0.0f}, {2.0f, 0.5f}, {0.0f, 0.5f}}, 1e-6f);

    KShape slice, wedge;
    KAddPieSlice(slice, 0.0f, 1.5707964f, 0.5f, 1.0f, 2);
    ExpectPoints(NodesOf(slice), {{1, 0}, {0.70710677f, 0.70710677f}, {0, 1}, {0, 0.5f}, {0.35355338f, 0.35355338f}, {0.5f, 0}},
                 1e-6f);
    KAddPieSlice(wedge, 0.0f, 1.5707964f, 0.0f, 1.0f, 1);
    ExpectPoints(NodesOf(wedge), {{1, 0}, {0, 1}, {0, 0}}, 1e-6f);
}

TEST(ShapePrimitive, TheToolTurnsCounterClockwiseAndPlacesRowsOfATable)
{
    Tool<> t("ZV_ShapePrimitiveCreate");
    t.Set("Type", 1);
    t.Set("Steps", 4);
    t.Set("Size X", 1.0);
    t.Set("Size Y", 1.0);
    t.Set("Angle Start", 90.0);  // as the host hands it over
    {
        const ShapeListVector& v = Made(t);
        ASSERT_EQ(v.Count(), 1);
        ExpectPoints(NodesOf(*v.At(0)->First()), {{0, 0.5f}, {-0.5f, 0}, {0, -0.5f}, {0.5f, 0}}, 1e-6f);
    }

    KDataTable table;
    table.Add(Channel("position", kDataVector3, {0.1f, 0.2f, 0.0f, -0.3f, 0.0f, 0.0f}));
    table.Add(Channel("scale", kDataVector2, {0.2f, 0.4f, 0.1f, 0.1f}));
    auto type = KDataChannel::Create("type", kDataInteger, 2);
    type->ints = {2, 9};  // a rectangle, then past the list: a star
    table.Add(std::move(type));
    table.Add(Channel("coloroutline", kDataColor, {1, 0, 0, 1}));
    t.Field<KDataTable*>("Data", kValueData) = &table;
    t.SetBool("Data Enable", true);
    const ShapeListVector& v = Made(t);
    t.Field<KDataTable*>("Data", kValueData) = nullptr;
    ASSERT_EQ(v.Count(), 2);
    const KShape& rectangle = *v.At(0)->First();
    ExpectPoints(NodesOf(rectangle), {{0.0f, 0.0f}, {0.2f, 0.0f}, {0.2f, 0.4f}, {0.0f, 0.4f}}, 1e-6f);
    // The outline colour of a row becomes its fill.
    EXPECT_TRUE(rectangle.hasFill);
    EXPECT_FALSE(rectangle.hasPen);
    EXPECT_EQ(rectangle.fillColor.g, 0.0f);
    const KShape& star = *v.At(1)->First();
    EXPECT_EQ(star.NodeCount(), 8);  // four steps, raised to no less than three
    ExpectPoints({NodesOf(star)[0]}, {{-0.3f, 0.05f}}, 1e-6f);  // from the control's 90 degrees
    EXPECT_FALSE(star.hasFill);
}

TEST(ShapeChart, BarsStandOnTheirBaseAndPieWedgesSplitTheTurn)
{
    KDataTable table;
    table.Add(Channel("value1", kDataFloat, {1.0f, 0.0f}));
    table.Add(Channel("value2", kDataFloat, {0.5f}));
    table.Add(Channel("color", kDataColor, {1, 0, 0, 1, 0, 0, 1, 1}));
    Tool<> t("ZV_ShapeChartCreate");
    EXPECT_EQ(Made(t).Count(), 0);  // no data: nothing
    t.Field<KDataTable*>("Data", kValueData) = &table;
    t.SetBool("Data Enable", true);
    t.SetFloat("Scale", 1.0f);
    t.SetFloat("Spacing", 0.0f);
    t.SetFloat("Sub Spacing", 0.0f);
    {
        const ShapeListVector& v = Made(t);
        ASSERT_EQ(v.Count(), 1);
        ASSERT_EQ(v.At(0)->count, 3);
        // Two rows of two groups: bars a quarter wide from -0.5, standing on 0.
        Points corners;
        for (KShape* s = v.At(0)->First(); s; s = NextShape(s)) corners.push_back({s->Nodes()[0].x, s->Nodes()[2].y});
        ExpectPoints(corners, {{-0.5f, 1.0f}, {0.0f, 0.0f}, {-0.25f, 0.5f}}, 1e-6f);
        EXPECT_EQ(v.At(0)->First()->fillColor.r, 1.0f);
        EXPECT_EQ(NextShape(NextShape(v.At(0)->First()))->fillColor.b, 1.0f);  // by group
    }
    t.Set("Type", 1);
    t.SetFloat("Radius Outer", 1.0f);
    const ShapeListVector& v = Made(t);
    t.Field<KDataTable*>("Data", kValueData) = nullptr;
    // The zero value makes no wedge; each ring is its group's whole turn.
    ASSERT_EQ(v.At(0)->count, 2);
    const KShape& inner = *v.At(0)->First();
    EXPECT_NEAR(inner.Nodes().back().x, 0.0f, 1e-6f);  // a ring from the middle closes at the origin
    // Eight steps to the turn: octagons of area 2 sqrt(2) r^2.
    EXPECT_NEAR(Area(inner), 2.0 * M_SQRT2 * 0.25, 1e-5);
    EXPECT_NEAR(Area(*NextShape(v.At(0)->First())), 2.0 * M_SQRT2 * 0.75, 1e-5);
}

TEST(ShapeSpiral, RunsFromStartToEndRadius)
{
    Tool<> t("ZV_ShapeSpiral");
    t.Set("Angle Start", 0.0);
    t.Set("Angle End", 90.0);
    t.SetFloat("Angle Step", 30.0f);
    t.SetFloat("RadiusStart", 0.1f);
    t.SetFloat("RadiusEnd", 0.4f);
    {
        const KShape& s = *Made(t).At(0)->First();
        ExpectPoints(NodesOf(s), {{0.1f, 0.0f}, {0.2f * 0.8660254f, 0.1f}, {0.15f, 0.3f * 0.8660254f}, {0.0f, 0.4f}}, 1e-5f);
    }
    // Equal ends: the first point and the end point.
    t.Set("Angle End", 0.0);
    EXPECT_EQ(Made(t).At(0)->First()->NodeCount(), 2);
}

TEST(ShapeTrace, ADiscKeepsItsAreaAndASquareItsFourCorners)
{
    const int32_t w = 200, h = 160;
    for (bool isFloat : {false, true}) {
        // A disc of radius 60 pixels in alpha, a square of 80 in red.
        zvtest::Img image = zvtest::Made(w, h, isFloat, [&](int32_t x, int32_t y) {
            const float dx = x + 0.5f - 100.0f, dy = y + 0.5f - 80.0f;
            const bool disc = dx * dx + dy * dy < 3600.0f, square = std::fabs(dx) < 40.0f && std::fabs(dy) < 40.0f;
            return KPixelF{square ? 1.0f : 0.0f, 0.0f, 0.0f, disc ? 1.0f : 0.0f};
        });
        Tool<> t("ZV_ShapeTraceCreate");
        t.Field<KImage*>("Image", kValueImage) = image.get();
        t.Set("Map Channel", 3);
        const KShape& disc = *Made(t).At(0)->First();
        EXPECT_NEAR(Area(disc) / (M_PI * 0.3 * 0.3), 1.0, 0.01);
        EXPECT_NEAR(disc.Nodes()[0].y * disc.Nodes()[0].y + disc.Nodes()[0].x * disc.Nodes()[0].x, 0.09, 0.002)
            << "centred on the origin";

        t.Set("Map Channel", 0);
        const KShape& square = *Made(t).At(0)->First();
        KShapeArrayList arrays(square);
        ASSERT_EQ(arrays.count, 1);
        Points corners;
        const KShapeArray& a = *arrays.First();
        for (int32_t i = 0; i < a.Count(); ++i) {
            const Vector2f in = a.points[i] - a.Before(i), out = a.After(i) - a.points[i];
            if (std::fabs(in.x * out.y - in.y * out.x) > 1e-6f * in.Length() * out.Length())
                corners.push_back({a.points[i].x, a.points[i].y});
        }
        std::sort(corners.begin(), corners.end());
        ExpectPoints(corners, {{-0.2f, -0.2f}, {-0.2f, 0.2f}, {0.2f, -0.2f}, {0.2f, 0.2f}}, 1e-6f);

        // Nothing above the threshold: one empty shape.
        t.SetFloat("Threshold", 1.0f);
        const ShapeListVector& none = Made(t);
        t.Field<KImage*>("Image", kValueImage) = nullptr;
        ASSERT_EQ(none.Count(), 1);
        ASSERT_EQ(none.At(0)->count, 1);
        EXPECT_EQ(none.At(0)->First()->NodeCount(), 0);
    }
}

TEST(ShapePrimitive, AnImageFileGetsTheShapesRendered)
{
    Tool<> t("ZV_ShapePrimitiveCreate");
    t.Set("Type", 2);
    t.Set("Size X", 0.5);
    t.Set("Size Y", 0.25);
    const ShapeListVector* made = &Made(t);
    const host::Value v = KFindValueKind(kValueShape)->write(&made);
    const std::string path = testing::TempDir() + "zv_rectangle.png";
    host::FindParameterClass(v->TypeId())->write(*v, path, ".png", {{"size", "64x36"}});
    zvtest::Img back(KImage::Wrap(host::ReadImage(path), true));
    std::remove(path.c_str());
    ASSERT_EQ(std::make_pair(back->width, back->height), std::make_pair(64, 36));
    // A rectangle half the width across and a quarter of it up, in the middle, on clear.
    int32_t covered = 0;
    for (int32_t y = 0; y < 36; ++y)
        for (int32_t x = 0; x < 64; ++x) covered += zvtest::At<KPixel>(*back, x, y).a == 65535;
    EXPECT_EQ(covered, 32 * 16);
    EXPECT_EQ(zvtest::At<KPixel>(*back, 32, 18).r, 65535u);
    EXPECT_EQ(zvtest::At<KPixel>(*back, 2, 2).a, 0u);
}
