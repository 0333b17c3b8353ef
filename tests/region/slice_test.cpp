// Looking at a region: each pixel of a slice is the region at the pixel's
// centre on the chosen plane, whether made in the library, by `zelvarine run`
// or by a flow's Saver; .csv output is the table of the same points.
#include <sys/wait.h>
#include <sstream>
#include "host/imageio.h"
#include "region/effect_region.h"
#include "support.h"

using namespace zvtest;

namespace {

KRegion3D Made(Tool<KEffectRegion3D>& t)
{
    t.effect->FinishRender();
    return **static_cast<KRegion3D**>(t.Output());
}

// The sphere of the command lines below: soft, shrunk and raised.
KRegion3D Ball()
{
    Tool<KEffectRegion3D> t("ZV_Region3DSphere");
    t.SetFloat("Softness X", 0.5f);
    auto& xf = t.Field<KTransformValue>("Transform", kValueTransform);
    xf.scaleX = 0.4f;
    xf.translateY = 0.1f;
    return Made(t);
}

// Pixel (x, y) of a w x h slice: across -0.5..0.5, up as far as the shape gives.
Vector3f Centre(int axis, float offset, int w, int h, int x, int y)
{
    const float across = (float(x) + 0.5f) / float(w) - 0.5f;
    const float up = ((float(y) + 0.5f) / float(h) - 0.5f) * float(h) / float(w);
    return axis == 0 ? Vector3f{offset, across, up} : axis == 1 ? Vector3f{across, offset, up} : Vector3f{across, up, offset};
}

int Command(const TempDir& dir, const std::string& args)
{
    const int status = std::system(("cd '" + dir.path.string() + "' && '" ZV_COMMAND "' " + args + " > /dev/null").c_str());
    return WEXITSTATUS(status);
}

}  // namespace

TEST(RegionSlice, EachPixelIsTheRegionAtItsCentreOnEveryPlane)
{
    Tool<KEffectRegion3D> noise("ZV_Region3DNoise"), merge("ZV_Region3DMerge");
    noise.SetFloat("Size", 0.2f);
    KRegion3D a = Ball(), b = Made(noise);
    merge.Field<KRegion3D*>("Region 1", kValueRegion3D) = &a;
    merge.Field<KRegion3D*>("Region 2", kValueRegion3D) = &b;
    merge.SetInt("Combine", 1);
    const KRegion3D region = Made(merge);
    merge.Field<KRegion3D*>("Region 1", kValueRegion3D) = merge.Field<KRegion3D*>("Region 2", kValueRegion3D) = nullptr;
    for (int axis : {0, 1, 2}) {
        const float offset = 0.1f * float(axis) - 0.05f;
        host::SetThreadCount(1);
        Img one(KRegionSlice(region, axis, offset, 37, 23));
        host::SetThreadCount(2);
        Img two(KRegionSlice(region, axis, offset, 37, 23));
        host::SetThreadCount(0);
        EXPECT_EQ(Differ(*one, *two), "") << "axis " << axis;
        float seen = 0.0f;
        for (int y = 0; y < 23; ++y)
            for (int x = 0; x < 37; ++x) {
                const float want = region.Value(Centre(axis, offset, 37, 23, x, y));
                seen = std::max(seen, want);
                const float* p = one->RowF(y) + 4 * x;
                ASSERT_NEAR(p[0], want, 1e-5f) << axis << " " << x << "," << y;
                ASSERT_EQ(std::make_tuple(p[1], p[2], p[3]), std::make_tuple(p[0], p[0], 1.0f));
            }
        EXPECT_GT(seen, 0.3f) << "the plane misses the region on axis " << axis;
    }
}

TEST(RegionSlice, CommandLineAndSaverWriteTheSliceAndItsTable)
{
    const TempDir dir;
    const std::string ball = "rSphere SoftnessX=0.5 TransformScaleX=0.4 TransformPositionY=0.1 ";
    ASSERT_EQ(Command(dir, "run " + ball + "--size 16x9 --slice y=0.05 -o s.exr"), 0);
    HostImg slice(host::ReadImage((dir.path / "s.exr").string()));
    ASSERT_EQ(std::make_pair(slice->Width(), slice->Height()), std::make_pair(16, 9));
    const KRegion3D region = Ball();
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 16; ++x)
            EXPECT_NEAR(slice->RowF(y)[4 * x], region.Value(Centre(1, 0.05f, 16, 9, x, y)), 1e-5f) << x << "," << y;

    // The table of a 2 x 2 grid on z = 0, of a ball over the right half: positions, then the value.
    ASSERT_EQ(Command(dir, "run rSphere TransformScaleX=0.3 TransformPositionX=0.25 --size 2x2 -o s.csv"), 0);
    std::stringstream csv;
    csv << std::ifstream(dir.path / "s.csv").rdbuf();
    EXPECT_EQ(csv.str(), "item,position.x,position.y,position.z,value\n0,-0.25,-0.25,0.0,0.0\n1,0.25,-0.25,0.0,1.0\n"
                         "2,-0.25,0.25,0.0,0.0\n3,0.25,0.25,0.0,1.0\n");

    // A flow's Saver writes the same slice at the default plane and size.
    dir.Write("flow.json", R"({ "tools": {
        "ball": { "tool": "rSphere", "inputs": { "SoftnessX": 0.5, "TransformScaleX": 0.4, "TransformPositionY": 0.1 } },
        "out": { "tool": "Saver", "file": "flow.exr", "inputs": { "Image": { "from": "ball" } } } } })");
    ASSERT_EQ(Command(dir, "render flow.json"), 0);
    ASSERT_EQ(Command(dir, "run " + ball + "-o run.exr"), 0);
    HostImg fromFlow(host::ReadImage((dir.path / "flow.exr").string())), fromRun(host::ReadImage((dir.path / "run.exr").string()));
    ASSERT_EQ(std::make_pair(fromFlow->Width(), fromFlow->Height()), std::make_pair(1920, 1080));
    Img a(KImage::Wrap(fromFlow.get(), false)), b(KImage::Wrap(fromRun.get(), false));
    EXPECT_EQ(Differ(*a, *b), "");
}
