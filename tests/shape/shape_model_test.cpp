// The shape value: node counts, splitting into sub-paths, copies, and the
// SVG files shapes are read from and written to.
#include <cmath>
#include <memory>
#include "shape/geometry.h"
#include "shape/svg.h"
#include "support.h"

namespace {

std::unique_ptr<KShape> Square(float x0, float y0, float side, bool repeatFirst = false)
{
    auto s = std::make_unique<KShape>();
    s->MoveTo({x0, y0});
    s->LineTo({x0 + side, y0});
    s->LineTo({x0 + side, y0 + side});
    s->LineTo({x0, y0 + side}, !repeatFirst);
    if (repeatFirst) s->LineTo({x0, y0}, true);
    return s;
}

std::vector<std::pair<float, float>> Points(const KShapeArray& a)
{
    std::vector<std::pair<float, float>> p;
    for (Vector2f v : a.points) p.push_back({v.x, v.y});
    return p;
}

}  // namespace

TEST(ShapeModel, CountsCopiesAndTheSplitIntoSubPaths)
{
    KShape empty;
    EXPECT_FALSE(empty.IsClosed());
    EXPECT_EQ(empty.Length(), 0.0f);
    EXPECT_EQ(KShapeArrayList(empty).count, 0);

    KShape curved;
    curved.tag = 7;
    curved.hasFill = true;
    curved.MoveTo({0, 0});
    curved.ConicTo({1, 1}, {2, 0});
    curved.AddCubic({3, 1}, {4, 1}, {5, 0}, true);
    EXPECT_EQ(std::make_tuple(curved.nodeCount, curved.conicCount, curved.cubicCount), std::make_tuple(6, 1, 3));
    EXPECT_EQ(curved.Length(), std::sqrt(2.0f));  // only the Line into the conic's end counts
    std::unique_ptr<KShape> copy(KShape::Duplicate(curved));
    EXPECT_EQ(std::make_tuple(copy->nodeCount, copy->tag, copy->hasFill, copy->IsClosed()), std::make_tuple(6, 7, true, true));
    KShape header(&curved);
    EXPECT_EQ(std::make_tuple(header.nodeCount, header.tag), std::make_tuple(0, 7));

    // Two equal points split to nothing; a repeated first point is dropped.
    KShape twin;
    twin.MoveTo({1, 1});
    twin.LineTo({1, 1});
    EXPECT_EQ(KShapeArrayList(twin).count, 0);
    KShapeArrayList square(*Square(0, 0, 1, true));
    ASSERT_EQ(square.count, 1);
    EXPECT_TRUE(square.First()->closed);
    EXPECT_EQ(Points(*square.First()), (std::vector<std::pair<float, float>>{{0, 0}, {1, 0}, {1, 1}, {0, 1}}));

    // A lone Move in mid-shape drops itself and all behind it.
    std::unique_ptr<KShape> cut = Square(0, 0, 1);
    cut->MoveTo({5, 5});
    cut->MoveTo({6, 6});
    cut->LineTo({7, 7});
    EXPECT_EQ(KShapeArrayList(*cut).count, 1);

    // Stealing splices the nodes and empties the source.
    std::unique_ptr<KShape> a = Square(0, 0, 1), b = Square(2, 0, 1);
    a->Append(b.get(), true);
    EXPECT_EQ(std::make_tuple(a->nodeCount, b->nodeCount, KShapeArrayList(*a).count), std::make_tuple(8, 0, 2));
    EXPECT_TRUE(a->Contains({2.5f, 0.5f}));
    EXPECT_FALSE(a->Contains({1.5f, 0.5f}));
    std::unique_ptr<KShape> opened(a->SetOpenClose(2));
    EXPECT_FALSE(opened->IsClosed());
    std::unique_ptr<KShape> swapped(opened->SetOpenClose(3));
    EXPECT_TRUE(swapped->IsClosed());
}

TEST(ShapeModel, AListMovesItsNodesAndKeepsTheWayBack)
{
    KShapeList list;
    list.Add(Square(0, 0, 1).release());
    list.styles[0].pen.thickness = 0.5f;
    list.ApplyMatrix(Matrix4f::Translation(2, 3, 0));
    EXPECT_EQ(list.First()->Nodes()[2].Point().x, 3.0f);
    EXPECT_EQ(list.transform.m[1][3], -3.0f);
    std::unique_ptr<KShapeList> clone = list.Clone();
    EXPECT_EQ(std::make_tuple(clone->count, clone->styles[0].pen.thickness, clone->transform.m[0][3]),
              std::make_tuple(1, 0.5f, -2.0f));
    EXPECT_EQ(KShapeList::Like(list)->count, 0);
}

// Reading: basic shapes in groups with transforms, paint premultiplied, one
// list per top-level group; a file saved and read again has the same points.
TEST(ShapeSvg, ReadsGroupsShapesAndPaintAndRoundTrips)
{
    const KSvgRead r = KReadSvg(R"svg(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 200 100">
        <rect x="50" y="25" width="100" height="50" fill="red" fill-opacity="0.5"/>
        <g transform="translate(100 50) scale(2)"><polygon points="0,0 10,0 10,10" stroke="#00ff00" fill="none"/>
          <path d="M0 0 h10 v10 z m20 0 c5 0 10 5 10 10 s-5 10 -10 10 a5 5 0 0 1 -5 -5"/></g>
        <text>left out</text></svg>)svg");
    EXPECT_EQ(std::make_tuple(r.width, r.height), std::make_tuple(200, 100));
    EXPECT_EQ(r.unsupported, std::vector<std::string>{"<text>"});
    ASSERT_EQ(r.shapes->Count(), 2);
    const KShape& rect = *r.shapes->At(0)->First();
    // x = px / 200 - 0.5, y = (50 - py) / 200.
    KShapeArrayList rectArrays(rect);
    EXPECT_EQ(Points(*rectArrays.First()), (std::vector<std::pair<float, float>>{
                                               {-0.25f, 0.125f}, {0.25f, 0.125f}, {0.25f, -0.125f}, {-0.25f, -0.125f}}));
    EXPECT_EQ(std::make_tuple(rect.fillColor.r, rect.fillColor.g, rect.fillColor.a), std::make_tuple(0.5f, 0.0f, 0.5f));
    const KShape& triangle = *r.shapes->At(1)->First();
    EXPECT_EQ(triangle.Nodes()[1].x, 0.1f);  // (100 + 2 * 10) / 200 - 0.5
    EXPECT_EQ(std::make_tuple(triangle.fillColor.a, triangle.penColor.g), std::make_tuple(0.0f, 1.0f));
    const KShape& path = *NextShape(r.shapes->At(1)->First());
    EXPECT_EQ(KShapeArrayList(path).count, 2);
    EXPECT_EQ(path.cubicCount, 9);  // c, s and one quarter arc

    const std::string saved = KWriteSvg(*r.shapes, 200, 100);
    const KSvgRead back = KReadSvg(saved);
    ASSERT_EQ(back.shapes->Count(), 2);
    for (int32_t l = 0; l < 2; ++l)
        for (KShape *s = r.shapes->At(l)->First(), *t = back.shapes->At(l)->First(); s || t; s = NextShape(s), t = NextShape(t)) {
            ASSERT_TRUE(s && t);
            ASSERT_EQ(s->NodeCount(), t->NodeCount());
            for (int32_t i = 0; i < s->NodeCount(); ++i) {
                const KShapeNode &a = s->Nodes()[i], &b = t->Nodes()[i];
                EXPECT_NEAR(a.x, b.x, 1e-4);
                EXPECT_NEAR(a.y, b.y, 1e-4);
                EXPECT_EQ(std::make_tuple(a.type, a.closed), std::make_tuple(b.type, b.closed));
            }
            // Open shapes are written unfilled, as a render leaves them.
            EXPECT_NEAR(s->fillColor.r, t->fillColor.r, 1.0 / 255);
            EXPECT_EQ(s->IsClosed() ? s->fillColor.a : 0.0f, t->fillColor.a);
        }
}

TEST(ShapeSvg, BrokenFilesSayWhyInOneLine)
{
    const struct { const char* text; const char* why; } rows[] = {
        {"<svg><path d='M0 0 L'/>", "not valid XML at byte 22: Start-end tags mismatch"},
        {"<html/>", "the document is <html>, not <svg>"},
        {"<svg viewBox='0 0 10'/>", "viewBox \"0 0 10\" is not four numbers with a size"},
        {"<svg><path d='M0 0 L 5 x'/></svg>", "path data \"M0 0 L 5 x\" breaks at character 10"},
        {"<svg><path d='0 0'/></svg>", "path data \"0 0\" breaks at character 1"},
        {"<svg><g transform='spin(3)'/></svg>", "unknown transform \"spin\""},
        {"<svg><rect width='w'/></svg>", "<rect> width \"w\" is not a length"},
    };
    for (const auto& r : rows) {
        try {
            KReadSvg(r.text);
            ADD_FAILURE() << r.text << " was read";
        } catch (const KSvgError& e) {
            EXPECT_EQ(std::string(e.what()), r.why) << r.text;
        }
    }
}
