// Geometry against the formulas: flattening, length, dashing, boolean and
// offset areas, and coverage of the rasteriser against exact areas.
#include <cmath>
#include <functional>
#include <memory>
#include "raster/image.h"
#include "shape/clip.h"
#include "shape/geometry.h"
#include "shape/raster.h"
#include "support.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

std::unique_ptr<KShape> Rect(float x0, float y0, float x1, float y1)
{
    auto s = std::make_unique<KShape>();
    s->MoveTo({x0, y0});
    s->LineTo({x1, y0});
    s->LineTo({x1, y1});
    s->LineTo({x0, y1}, true);
    return s;
}

// A circle of four cubics.
std::unique_ptr<KShape> Circle(float cx, float cy, float r)
{
    const float k = 0.5522847f * r;
    auto s = std::make_unique<KShape>();
    s->MoveTo({cx + r, cy});
    s->AddCubic({cx + r, cy + k}, {cx + k, cy + r}, {cx, cy + r});
    s->AddCubic({cx - k, cy + r}, {cx - r, cy + k}, {cx - r, cy});
    s->AddCubic({cx - r, cy - k}, {cx - k, cy - r}, {cx, cy - r});
    s->AddCubic({cx + k, cy - r}, {cx + r, cy - k}, {cx + r, cy}, true);
    return s;
}

// Signed area over all sub-paths: holes from polyclipping run the other way.
double Area(const KShape& shape)
{
    double area = 0.0;
    KShapeArrayList arrays(shape);
    for (KShapeArray* a = arrays.First(); a; a = NextArray(a))
        for (int32_t i = 0; i < a->Count(); ++i) {
            const Vector2f p = a->points[i], q = a->points[(i + 1) % a->Count()];
            area += 0.5 * (double(p.x) * q.y - double(q.x) * p.y);
        }
    return std::fabs(area);
}

// Coverage of pixel (x, y) by the region below y = f(x) (in pixels), by
// integrating the clipped height across the pixel.
double CoverBelow(int x, int y, const std::function<double(double)>& f)
{
    double sum = 0.0;
    const int n = 4000;
    for (int i = 0; i < n; ++i) sum += std::clamp(f(x + (i + 0.5) / n) - y, 0.0, 1.0);
    return sum / n;
}

}  // namespace

TEST(ShapeGeometry, FlatteningFollowsTheCurvesFormulas)
{
    KShape s;
    s.MoveTo({0, 0});
    s.ConicTo({1, 2}, {2, 0});
    s.AddCubic({3, 1}, {4, -1}, {5, 0}, true);
    std::unique_ptr<KShape> flat(KFlatten(s, 8));
    ASSERT_EQ(flat->NodeCount(), 17);
    EXPECT_EQ(flat->conicCount + flat->cubicCount, 0);
    EXPECT_TRUE(flat->Nodes().back().closed);
    for (int k = 1; k <= 8; ++k) {
        const double t = k / 8.0, u = 1 - t;
        const KShapeNode &q = flat->Nodes()[k], &c = flat->Nodes()[8 + k];
        EXPECT_NEAR(q.x, 2 * t * u * 1 + t * t * 2, 1e-6);
        EXPECT_NEAR(q.y, 2 * t * u * 2, 1e-6);
        EXPECT_NEAR(c.x, u * u * u * 2 + 3 * t * u * u * 3 + 3 * t * t * u * 4 + t * t * t * 5, 1e-5);
        EXPECT_NEAR(c.y, 3 * t * u * u * 1 - 3 * t * t * u * 1, 1e-6);
    }
    std::unique_ptr<KShape> straight(KFlatten(*Rect(0, 0, 1, 1), 8));
    EXPECT_EQ(straight->NodeCount(), 4);

    std::unique_ptr<KShape> circle(KFlatten(*Circle(0, 0, 1), 64));
    EXPECT_NEAR(circle->Length(), 2 * kPi, 1e-3);
    KShapeArrayList arrays(*circle);
    EXPECT_NEAR(ArrayLength(*arrays.First()), 2 * kPi, 1e-3);  // the closing segment counts here
}

TEST(ShapeGeometry, DashesSumToTheirShareOfTheLength)
{
    KShapeArray line;
    line.Add({0, 0});
    line.Add({1, 0});
    line.Add({1, 0.5f});
    KShapeDash dash;
    dash.type = 1;
    dash.on[0] = 2.0f;   // 0.1 with the thickness below
    dash.off[0] = 1.0f;  // 0.05
    std::unique_ptr<KShape> dashed(KDash(line, dash, 0.05f));
    // 1.5 long: ten periods of 0.15, each 0.1 on.
    EXPECT_NEAR(dashed->Length(), 1.0, 1e-5);
    EXPECT_EQ(KShapeArrayList(*dashed).count, 10);
}

TEST(ShapeGeometry, BooleansOfTwoSquaresHaveTheExactAreas)
{
    std::unique_ptr<KShape> a = Rect(0, 0, 0.2f, 0.2f), b = Rect(0.1f, 0.1f, 0.3f, 0.3f);
    const double overlap = 0.01, each = 0.04;
    const double want[] = {overlap, 2 * each - overlap, each - overlap, 2 * (each - overlap)};
    for (int type = 0; type < 4; ++type) {
        std::unique_ptr<KShape> r(KBooleanShape(*a, b.get(), type, 0));
        EXPECT_NEAR(Area(*r), want[type], 1e-7) << "type " << type;
        EXPECT_TRUE(r->IsClosed());
    }
    // Coordinates are floats: areas hold to their precision. An open subject comes back closed.
    auto open = std::make_unique<KShape>();
    open->MoveTo({0, 0});
    open->LineTo({0.2f, 0});
    open->LineTo({0.2f, 0.2f});
    std::unique_ptr<KShape> cut(KBooleanShape(*open, b.get(), 2, 0));
    EXPECT_TRUE(cut->IsClosed());
}

TEST(ShapeGeometry, OffsetsGrowShrinkAndCopy)
{
    const float s = 0.2f, d = 0.03f;
    std::unique_ptr<KShape> square = Rect(0, 0, s, s);
    std::unique_ptr<KShape> round(KOffsetShape(*square, {8, 2, d, 8}));
    EXPECT_NEAR(Area(*round), (s + 2 * d) * (s + 2 * d) - (4 - kPi) * d * d, 2e-6);
    std::unique_ptr<KShape> miter(KOffsetShape(*square, {8, 0, d, 8}));
    EXPECT_NEAR(Area(*miter), (s + 2 * d) * (s + 2 * d), 1e-7);
    std::unique_ptr<KShape> inside(KOffsetShape(*square, {8, 0, -d, 8}));
    EXPECT_NEAR(Area(*inside), (s - 2 * d) * (s - 2 * d), 1e-7);
    std::unique_ptr<KShape> gone(KOffsetShape(*square, {8, 0, -s, 8}));
    EXPECT_EQ(gone->NodeCount(), 0);
    // Zero copies the curves as they are.
    std::unique_ptr<KShape> same(KOffsetShape(*Circle(0, 0, 1), {8, 0, 0.0f, 8}));
    EXPECT_EQ(same->cubicCount, 12);
    // An open line moves to one side.
    auto line = std::make_unique<KShape>();
    line->MoveTo({0, 0});
    line->LineTo({1, 0});
    std::unique_ptr<KShape> moved(KOffsetShape(*line, {8, 0, 0.1f, 8}));
    ASSERT_EQ(moved->NodeCount(), 2);
    EXPECT_NEAR(moved->Nodes()[0].y, 0.1f, 1e-6);
}

// Coverage equals the exact area of each pixel, for a slanted half-plane and
// a circle, integer pixels to within 1/255.
TEST(ShapeRaster, CoverageIsTheExactAreaOfEachPixel)
{
    const int w = 40, h = 30;
    KPolygonRaster raster(w, h, 1.0f, 8);
    // Below the line y = 7.3 + 0.37 x (pixels), in shape units of 1/w.
    auto half = std::make_unique<KShape>();
    auto line = [](double x) { return 7.3 + 0.37 * x; };
    half->MoveTo({-1.0f, -1.0f});
    half->LineTo({2.0f, -1.0f});
    half->LineTo({2.0f, float(line(2.0 * w) / w)});
    half->LineTo({-1.0f, float(line(-1.0 * w) / w)}, true);
    raster.Raster(*half, 0);
    double worst = 0.0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) worst = std::max(worst, std::fabs(raster.At(x, y) / 255.0 - CoverBelow(x, y, line)));
    EXPECT_LE(worst, 1.0 / 255) << "half-plane";

    const double cx = 17.3, cy = 14.6, r = 11.2;
    raster.Raster(*Circle(float(cx / w), float(cy / w), float(r / w)), 1);
    worst = 0.0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            auto top = [&](double px) { return std::fabs(px - cx) >= r ? cy : cy + std::sqrt(r * r - (px - cx) * (px - cx)); };
            auto bottom = [&](double px) { return std::fabs(px - cx) >= r ? cy : cy - std::sqrt(r * r - (px - cx) * (px - cx)); };
            const double exact = CoverBelow(x, y, top) - CoverBelow(x, y, bottom);
            worst = std::max(worst, std::fabs(raster.At(x, y) / 255.0 - exact));
        }
    EXPECT_LE(worst, 1.0 / 255) << "circle";

    // A sample of 1 gives hard edges: pixel centres inside.
    KPolygonRaster hard(w, h, 1.0f, 1);
    hard.Raster(*Rect(2.4f / w, 3.6f / w, 9.5f / w, 6.0f / w), 0);
    EXPECT_EQ(std::make_tuple(hard.At(1, 4), hard.At(2, 4), hard.At(9, 4), hard.At(2, 3), hard.At(2, 5)),
              std::make_tuple(0, 255, 0, 0, 255));
}

TEST(ShapeRaster, WindingRulesAttributesAndStrokes)
{
    const int w = 64, h = 64;
    // A pentagram: its centre is wound twice.
    auto star = std::make_unique<KShape>();
    for (int k = 0; k < 5; ++k) {
        const double a = kPi / 2 + k * 4 * kPi / 5;
        const Vector2f p{float(0.5 + 0.4 * std::cos(a)), float(0.5 + 0.4 * std::sin(a))};
        if (k == 0) star->MoveTo(p);
        else star->LineTo(p, k == 4);
    }
    KPolygonRaster raster(w, h, 1.0f, 8);
    raster.Raster(*star, 0);
    EXPECT_EQ(std::make_tuple(raster.At(32, 32), raster.At(32, 52)), std::make_tuple(0, 255));
    raster.Raster(*star, 1);
    EXPECT_EQ(std::make_tuple(raster.At(32, 32), raster.At(32, 52)), std::make_tuple(255, 255));

    // A closed circle's stroke is a band; attribute 1 punches through any fill.
    KShapePen pen;
    pen.thickness = 0.1f;
    std::unique_ptr<KShape> band(KStroke(*Circle(0.5f, 0.5f, 0.3f), pen));
    for (int rule : {0, 1}) {
        raster.Raster(*band, rule);
        EXPECT_EQ(std::make_tuple(raster.At(32, 32), raster.At(32, 51), raster.At(32, 62)), std::make_tuple(0, 255, 0))
            << "rule " << rule;
    }
    std::unique_ptr<KShape> both(KShape::Duplicate(*Rect(0, 0, 1, 1)));
    std::unique_ptr<KShape> hole = Rect(0.25f, 0.25f, 0.75f, 0.75f);
    for (KShapeNode& n : hole->Nodes()) n.attribute = 1;
    both->Append(hole.get(), false);
    raster.Raster(*both, 1);
    EXPECT_EQ(std::make_tuple(raster.At(32, 32), raster.At(5, 5)), std::make_tuple(0, 255));
}

// The paint puts the premultiplied colour over the image by the coverage, the
// integer path in 16-bit fixed point.
TEST(ShapeRaster, PaintPutsTheColourOverByCoverage)
{
    for (bool isFloat : {false, true}) {
        zvtest::Img image(KImage::Create(8, 4, isFloat));
        image->Clear();
        KPolygonRaster raster(*image, 8);
        raster.Raster(*Rect(0.0f, 0.0f, 0.5f, 0.25f), 0);  // the left half of rows 0 and 1
        KShapePaint paint;
        paint.color = {0.5f, 0.0f, 0.0f, 0.5f};
        paint.DeriveColor16();
        KPaint(*image, raster, paint, 1);
        KPaint(*image, raster, paint, 1);
        if (isFloat) {
            EXPECT_EQ(zvtest::Raw(*image, 0, 0), (std::array<float, 4>{0.75f, 0, 0, 0.75f}));
            EXPECT_NEAR(zvtest::Raw(*image, 0, 1)[3], 0.75f, 1e-6);
            EXPECT_EQ(zvtest::Raw(*image, 5, 0), (std::array<float, 4>{0, 0, 0, 0}));
        } else {
            // 32767 over itself: 32767 + 32767 x 32768 / 65535, rounded.
            EXPECT_EQ(zvtest::Raw(*image, 0, 0), (std::array<float, 4>{49151, 0, 0, 49151}));
        }
        EXPECT_EQ(raster.At(0, 2), 0);
    }
}
