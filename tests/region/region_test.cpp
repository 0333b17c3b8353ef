// The region tools against hand-worked values: the solids inside, on and
// beyond their surfaces, every merge at known pairs, invert and transforms,
// pictures and shapes as regions, and dFrom Region Create's blend.
#include "data/effect_data.h"
#include "region/effect_region.h"
#include "shape/shape.h"
#include "support.h"

using namespace zvtest;

namespace {

// A region tool driven through its effect: settings, then its tree.
struct RegionTool : Tool<KEffectRegion3D> {
    using Tool::Tool;
    KTransformValue& Transform() { return Field<KTransformValue>("Transform", kValueTransform); }
    void SetRegion(const char* label, KRegion3D* region) { Field<KRegion3D*>(label, kValueRegion3D) = region; }
    KRegion3D Made()
    {
        effect->FinishRender();
        return **static_cast<KRegion3D**>(Output());
    }
};

struct Probe {
    Vector3f p;
    float want;
};

// Exact values, or within `tolerance` where a picture is sampled between pixels.
void ExpectValues(const KRegion3D& r, std::initializer_list<Probe> probes, const std::string& what,
                  float tolerance = 0.0f)
{
    for (const Probe& pr : probes) {
        const std::string at = what + " at " + std::to_string(pr.p.x) + "," + std::to_string(pr.p.y) + "," +
                               std::to_string(pr.p.z);
        if (tolerance > 0.0f) EXPECT_NEAR(r.Value(pr.p), pr.want, tolerance) << at;
        else EXPECT_EQ(r.Value(pr.p), pr.want) << at;
    }
}

// A cube of softness 1 on every axis: each axis falls from 1 at 0.5 to 0 at 1.5.
KRegion3D SoftCube(float x)
{
    RegionTool t("ZV_Region3DCube");
    t.SetBool("Softness Lock", true);
    t.SetFloat("Softness X", 1.0f);
    t.Transform().translateX = x;
    return t.Made();
}

}  // namespace

TEST(RegionSolids, SphereCubeAndPlaneInsideOnAndBeyondTheSurface)
{
    RegionTool sphere("ZV_Region3DSphere");
    ExpectValues(sphere.Made(), {{{0, 0, 0}, 1}, {{0.999f, 0, 0}, 1}, {{1, 0, 0}, 0}, {{0, 0, -1}, 0}, {{2, 0, 0}, 0}},
                 "hard sphere");
    sphere.SetFloat("Softness X", 0.5f);  // from 0.75 to 1.25 along the radius
    ExpectValues(sphere.Made(), {{{0.75f, 0, 0}, 1}, {{0, 0.875f, 0}, 0.75f}, {{0, 0, 1}, 0.5f}, {{1.25f, 0, 0}, 0}},
                 "soft sphere");

    RegionTool cube("ZV_Region3DCube");
    // Softness 0: exactly 1 below 1.0, 0 from 1.0 on.
    ExpectValues(cube.Made(), {{{0, 0, 0}, 1}, {{-0.999f, 0.999f, 0.5f}, 1}, {{1, 0, 0}, 0}, {{0, 0, 1.5f}, 0}},
                 "hard cube");
    cube.SetFloat("Softness X", 0.5f);  // X alone
    ExpectValues(cube.Made(), {{{1, 0, 0}, 0.5f}, {{0.875f, 0.5f, 0}, 0.75f}, {{0.5f, 1, 0}, 0}}, "soft in x");
    cube.SetBool("Softness Lock", true);  // Y and Z take X's
    ExpectValues(cube.Made(), {{{1, 1, 0}, 0.25f}, {{0.875f, -0.875f, 0.875f}, 0.421875f}}, "locked");

    RegionTool plane("ZV_Region3DPlane");
    ExpectValues(plane.Made(), {{{5, 5, 0}, 1}, {{0, 0, -1e-6f}, 0}, {{0, 0, 3}, 1}}, "hard plane");
    plane.SetFloat("Softness Z", 0.5f);
    ExpectValues(plane.Made(), {{{0, 0, 0}, 0.5f}, {{0, 0, 0.125f}, 0.75f}, {{0, 0, 0.25f}, 1}, {{0, 0, -0.25f}, 0}},
                 "soft plane");

    plane.SetBool("Invert", true);
    ExpectValues(plane.Made(), {{{0, 0, 0.125f}, 0.25f}}, "inverted");
}

TEST(RegionMerge, EveryCombineAtKnownPairs)
{
    KRegion3D a = SoftCube(0.0f), b = SoftCube(1.0f);
    RegionTool merge("ZV_Region3DMerge");
    merge.SetRegion("Region 1", &a);
    merge.SetRegion("Region 2", &b);
    // Points where (a, b) are known: (0.25, 1), (0.75, 1), (0.5, 0.5), (0.25, 0.25), (0.25, 0), (0.25, 0.5).
    const Vector3f points[6] = {{1.25f, 0, 0}, {0.75f, 0, 0}, {0.5f, 1, 0}, {0.5f, 1.25f, 0}, {-1.25f, 0, 0}, {1, 1, 0}};
    const struct { int combine; float want[6]; } rows[] = {
        {0, {1, 1, 0.75f, 0.4375f, 0.25f, 0.625f}},          // Union
        {1, {0.25f, 0.75f, 0.25f, 0.0625f, 0, 0.125f}},      // Intersect
        {2, {1, 1, 1, 0.5f, 0.25f, 0.75f}},                  // Add
        {3, {0, 0, 0, 0, 0.25f, 0}},                         // Subtract
        {4, {0.75f, 0.25f, 1, 0.5f, 0.25f, 0.75f}},          // Exclusive
    };
    for (const auto& r : rows) {
        merge.SetInt("Combine", r.combine);
        const KRegion3D m = merge.Made();
        for (int i = 0; i < 6; ++i) EXPECT_EQ(m.Value(points[i]), r.want[i]) << "combine " << r.combine << " point " << i;
    }
    // One region missing: Union passes the other through, Intersect gives nothing.
    merge.SetRegion("Region 2", nullptr);
    merge.SetInt("Combine", 0);
    EXPECT_EQ(merge.Made().Value({0.75f, 0, 0}), 0.75f);
    merge.SetInt("Combine", 1);
    EXPECT_EQ(merge.Made().Value({0, 0, 0}), 0.0f);
    merge.SetRegion("Region 1", nullptr);
    EXPECT_EQ(merge.Made().Describe(), "Merge Intersect (none, none)");
}

TEST(RegionTransform, APlacedSphereIsTheSphereAtTheInversePoint)
{
    RegionTool plain("ZV_Region3DSphere"), placed("ZV_Region3DSphere");
    for (RegionTool* t : {&plain, &placed}) t->SetFloat("Softness X", 0.4f);
    KTransformValue& xf = placed.Transform();
    xf.translateX = 0.3f, xf.translateY = -0.2f, xf.translateZ = 0.1f;
    xf.rotateX = 0.35f, xf.rotateZ = 0.5f;  // radians, X turned first
    xf.scaleLock = false, xf.scaleX = 0.5f, xf.scaleY = 0.8f, xf.scaleZ = 1.2f;
    const KRegion3D sphere = plain.Made(), moved = placed.Made();
    // Undone by hand: move back, turn back about Z, then about X, unscale.
    auto inverse = [](Vector3f p) {
        float x = p.x - 0.3f, y = p.y + 0.2f, z = p.z - 0.1f;
        const float cz = std::cos(0.5f), sz = std::sin(0.5f), cx = std::cos(0.35f), sx = std::sin(0.35f);
        const float x1 = cz * x + sz * y, y1 = -sz * x + cz * y;
        const float y2 = cx * y1 + sx * z, z2 = -sx * y1 + cx * z;
        return Vector3f{x1 / 0.5f, y2 / 0.8f, z2 / 1.2f};
    };
    uint32_t seed = 7;
    auto next = [&] { return static_cast<float>((seed = seed * 1103515245u + 12345u) >> 16 & 0x7FFF) / 16384.0f - 1.0f; };
    for (int i = 0; i < 200; ++i) {
        const Vector3f p{next(), next(), next()};
        ASSERT_NEAR(moved.Value(p), sphere.Value(inverse(p)), 2e-5f) << i;
    }
    // rTransform over it composes: its own move applies on top.
    RegionTool over("ZV_Region3DTransform");
    KRegion3D in = moved;
    over.SetRegion("Region", &in);
    over.Transform().translateY = 0.25f;
    over.SetBool("Invert", true);
    const KRegion3D twice = over.Made();
    for (const Vector3f p : {Vector3f{0.3f, 0.05f, 0.1f}, Vector3f{0.5f, 0.0f, 0.2f}, Vector3f{0.0f, 0.6f, 0.0f}})
        EXPECT_NEAR(twice.Value(p), 1.0f - moved.Value({p.x, p.y - 0.25f, p.z}), 1e-6f);
    EXPECT_EQ(twice.Describe(), "Transform inverted (Sphere)");
    over.SetRegion("Region", nullptr);
    EXPECT_EQ(over.Made().Value({0, 0, 0}), 1.0f);  // nothing in: 0, inverted
}

TEST(RegionModify, AdjustEdgeAndTheShapeCurve)
{
    KRegion3D ball = [] {
        RegionTool t("ZV_Region3DSphere");
        t.SetFloat("Softness X", 1.0f);  // 1 at radius 0.5, 0.5 at 1.0, 0.25 at 1.25
        return t.Made();
    }();
    RegionTool modify("ZV_Region3DModify");
    modify.SetRegion("Region", &ball);
    modify.SetFloat("Brightness", 0.25f);
    modify.SetFloat("Contrast", 2.0f);
    ExpectValues(modify.Made(), {{{1, 0, 0}, 0.75f}, {{1.25f, 0, 0}, 0.25f}, {{0, 0, 0}, 1}, {{3, 0, 0}, 0}}, "adjusted");
    modify.SetFloat("Edge only", 1.0f);  // peaks where the adjusted value is one half
    ExpectValues(modify.Made(), {{{1, 0, 0}, 0.5f}, {{1.25f, 0, 0}, 0.5f}, {{0, 0, 0}, 0}}, "edge only");

    modify.SetFloat("Edge only", 0.0f);
    modify.SetFloat("Brightness", 0.0f);
    modify.SetFloat("Contrast", 1.0f);
    std::vector<uint16_t> falling(65536);
    for (size_t i = 0; i < falling.size(); ++i) falling[i] = static_cast<uint16_t>(65535 - i);
    KCurveTable curve{65536, 65536.0f, falling.data()};
    modify.Field<KCurveTable*>("Shape", kValueCurve) = &curve;
    EXPECT_EQ(modify.Made().Value({0, 0, 0}), 1.0f);  // the curve waits for "Use Shape"
    modify.SetBool("Use Shape", true);
    // v = 1 reads entry 65534, v = 0 entry 0.
    ExpectValues(modify.Made(), {{{0, 0, 0}, 1.0f / 65535.0f}, {{3, 0, 0}, 1.0f}}, "curve");
    modify.Field<KCurveTable*>("Shape", kValueCurve) = nullptr;
    modify.SetRegion("Region", nullptr);
}

TEST(RegionImage, APictureOnTheUnitSquareFullAndSampled)
{
    // Red runs 0.1, 0.2, 0.3, 0.4 along the bottom row; the top row adds 0.5.
    Img picture = Made(4, 2, true, [](int32_t x, int32_t y) {
        const float r = 0.1f * float(x + 1) + 0.5f * float(y);
        return KPixelF{r, 0.5f, 1.0f, 0.25f};
    });
    RegionTool image("ZV_Region3DImage");
    image.Field<KImage*>("Image", kValueImage) = picture.get();
    image.SetInt("Channel", 0);
    // Pixel centres at x = -0.375, -0.125, 0.125, 0.375 and y = -0.25, 0.25, at any depth; the
    // values pass through brightness and contrast (0 and 1), hence a tolerance.
    ExpectValues(image.Made(), {{{-0.375f, -0.25f, 7}, 0.1f}, {{0.125f, 0.25f, -2}, 0.8f}, {{0.9f, 0, 0}, 0}},
                 "full red", 1e-6f);
    image.SetInt("Outside", 1);  // Duplicate
    ExpectValues(image.Made(), {{{0.9f, -0.25f, 0}, 0.4f}}, "duplicate", 1e-6f);
    image.SetInt("Channel", 4);
    EXPECT_NEAR(image.Made().Value({-0.375f, -0.25f, 0}), 0.299f * 0.1f + 0.587f * 0.5f + 0.114f, 1e-6f);

    // A 2 x 2 grid reads source columns 0 and 2, rows 0 and 1.
    image.SetInt("Channel", 0);
    image.SetInt("Resolution", 1);
    image.SetInt("Sampling Horizontal", 2);
    image.SetInt("Sampling Vertical", 2);
    image.SetInt("Outside", 0);
    ExpectValues(image.Made(), {{{-0.5f, -0.5f, 0}, 0.1f}, {{0.49f, 0.49f, 0}, 0.1f}, {{0.5f, -0.5f, 0}, 0.3f},
                                {{-0.5f, 0.5f, 0}, 0.6f}, {{0.5f, 0.5f, 0}, 0.8f}, {{0.6f, 0, 0}, 0}}, "sampled", 1e-6f);
    image.SetInt("Outside", 1);
    ExpectValues(image.Made(), {{{1.5f, -0.5f, 0}, 0.3f}}, "duplicated", 1e-6f);
    image.SetInt("Outside", 2);  // Wrap: u = 2 reads u = 0, and -0.75 reads 0.25
    ExpectValues(image.Made(), {{{1.5f, -0.5f, 0}, 0.1f}, {{-1.25f, -0.5f, 0}, 0.1f}}, "wrapped", 1e-6f);
    image.Field<KImage*>("Image", kValueImage) = nullptr;
    ExpectValues(image.Made(), {{{0, 0, 0}, 0}}, "no picture");
}

TEST(RegionNoise, SmoothInRangeAndMovedByTheSeed)
{
    RegionTool noise("ZV_Region3DNoise");
    noise.SetFloat("Size", 0.2f);
    const KRegion3D a = noise.Made();
    noise.SetInt("Seed", 99);
    const KRegion3D b = noise.Made();
    float low = 1.0f, high = 0.0f, jump = 0.0f;
    int differ = 0;
    for (int i = 0; i < 2000; ++i) {
        const Vector3f p{float(i % 40) * 0.05f - 1.0f, float(i / 40) * 0.04f - 1.0f, 0.3f};
        const float v = a.Value(p);
        low = std::min(low, v), high = std::max(high, v);
        jump = std::max(jump, std::fabs(a.Value({p.x + 1e-4f, p.y, p.z}) - v));
        differ += v != b.Value(p);
    }
    EXPECT_GE(low, 0.0f);
    EXPECT_LE(high, 1.0f);
    EXPECT_GT(high - low, 0.4f);  // it does vary
    EXPECT_LT(jump, 0.01f);       // and without steps
    EXPECT_GT(differ, 1900);
}

TEST(DataFromRegion, BlendsTowardValueByHowFarInside)
{
    RegionTool cube("ZV_Region3DCube");
    KRegion3D region = cube.Made();
    KDataTable in;
    in.Add(KDataChannel::Create("position", kDataVector3, 3));
    in.Channel(0)->floats = {0, 0, 0, 2, 0, 0, 0.5f, 0.5f, -0.5f};
    in.Add(KDataChannel::Create("value", kDataFloat, 3));
    in.Channel(1)->floats = {0.25f, 0.5f, 0.75f};
    Tool<KEffectData> tool("ZV_DataFromRegion3DCreate");
    tool.Field<KDataTable*>("Data", kValueData) = &in;
    tool.Field<KRegion3D*>("Region", kValueRegion3D) = &region;
    auto values = [&] { return tool.effect->Compute()->Channel(1)->floats; };
    tool.SetFloat("Value", 0.875f);
    EXPECT_EQ(values(), (std::vector<float>{0.875f, 0.5f, 0.875f}));  // outside keeps its value
    tool.SetInt("Replace Type", 1);
    tool.SetFloat("Value Outside Region", 0.125f);
    EXPECT_EQ(values(), (std::vector<float>{0.875f, 0.125f, 0.875f}));

    // No value channel: one is made behind the others, and the tool replaces all from then on.
    tool.SetInt("Replace Type", 0);
    tool.SetText("Channel Name Region Value (1f out)", "weight");
    auto out = tool.effect->Compute();
    EXPECT_EQ(out->Dump(), in.Dump() + "weight [3]     float32 [1]      Float\n");
    EXPECT_EQ(out->Channel(2)->floats, (std::vector<float>{0.875f, 0.125f, 0.875f}));
    EXPECT_EQ(tool.Field<int32_t>("Replace Type", kValueInteger), 1);

    // No position channel, or no region: the table passes unchanged.
    tool.SetText("Channel Name Position (3f in)", "place");
    EXPECT_EQ(tool.effect->Compute()->Dump(), in.Dump());
    tool.SetText("Channel Name Position (3f in)", "position");
    tool.Field<KRegion3D*>("Region", kValueRegion3D) = nullptr;
    EXPECT_EQ(tool.effect->Compute()->Channel(1)->floats, in.Channel(1)->floats);
    tool.Field<KDataTable*>("Data", kValueData) = nullptr;
}

TEST(RegionShape, InsideTheShapeWhereThePointCameIn)
{
    // A curved blob with a square hole: two sub-paths, tested even/odd each.
    auto* blob = new KShape;
    blob->MoveTo({-0.3f, 0.0f});
    blob->ConicTo({-0.3f, 0.3f}, {0.0f, 0.3f});
    blob->ConicTo({0.3f, 0.3f}, {0.3f, 0.0f});
    blob->ConicTo({0.3f, -0.3f}, {0.0f, -0.3f});
    blob->ConicTo({-0.3f, -0.3f}, {-0.3f, 0.0f}, true);
    blob->MoveTo({-0.05f, -0.05f});
    blob->LineTo({0.05f, -0.05f});
    blob->LineTo({0.05f, 0.05f});
    blob->LineTo({-0.05f, 0.05f}, true);
    ShapeListVector shapes;
    shapes.Push(std::make_unique<KShapeList>());
    shapes.At(0)->Add(blob);
    RegionTool tool("ZV_Region3DShape");
    tool.Field<ShapeListVector*>("Shape", kValueShape) = &shapes;
    tool.Transform().translateX = 5.0f;  // moves nothing: the point is tested as it came in
    const KRegion3D region = tool.Made();
    ExpectValues(region, {{{0.2f, 0.0f, 3.0f}, 1}, {{0.0f, 0.0f, 0.0f}, 1}, {{0.0f, 0.1f, -2.0f}, 1},
                          {{0.0f, 0.2f, 0.0f}, 1}, {{0.29f, 0.29f, 0}, 0}, {{0.5f, 0, 0}, 0}}, "blob");
    // Everywhere the shape's own test agrees.
    for (int i = 0; i < 400; ++i) {
        const Vector2f p{float(i % 20) * 0.035f - 0.33f, float(i / 20) * 0.035f - 0.33f};
        ASSERT_EQ(region.Value({p.x, p.y, 0.5f}), blob->Contains(p) ? 1.0f : 0.0f) << p.x << "," << p.y;
    }
    tool.SetBool("Invert", true);
    ExpectValues(tool.Made(), {{{0.2f, 0, 0}, 0}, {{0.5f, 0, 0}, 1}}, "inverted");
    tool.Field<ShapeListVector*>("Shape", kValueShape) = nullptr;
    ExpectValues(tool.Made(), {{{0.2f, 0, 0}, 1}}, "no shape, inverted");
}
