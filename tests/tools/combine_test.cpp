// Combine: each operation on one hand-worked pair of premultiplied pixels.
#include "support.h"

using namespace zvtest;

TEST(Combine, OperationsOnPremultipliedPixelsAndTheBlend)
{
    Img back = Row<KPixelF>({{0.2f, 0.4f, 0.6f, 1.0f}});
    Img front = Row<KPixelF>({{0.5f, 0.0f, 0.0f, 0.5f}});
    Tool<KEffectImage> tool("ZV_Combine");
    EXPECT_EQ(Differ(*tool.Run(back.get()), *back), "");  // no foreground: the image
    tool.Field<KImage*>("Foreground", kValueImage) = front.get();
    const std::vector<std::pair<int, KPixelF>> cases = {
        {0, {0.6f, 0.2f, 0.3f, 1.0f}},            // over
        {1, {0.2f, 0.4f, 0.6f, 1.0f}},            // under an opaque image
        {2, {0.7f, 0.4f, 0.6f, 1.5f}},            // add
        {3, {0.2f, 0.2f, 0.3f, 1.0f}},            // multiply, with what each leaves uncovered
        {4, {0.6f, 0.4f, 0.6f, 1.0f}},            // screen
        {5, {0.3f, 0.4f, 0.6f, 1.0f}},            // difference
        {6, {0.5f, 0.4f, 0.6f, 1.0f}},            // maximum
        {7, {0.2f, 0.0f, 0.0f, 0.5f}},            // minimum
    };
    for (const auto& [operation, want] : cases) {
        tool.Set("Operation", operation);
        ExpectNear(At<KPixelF>(*tool.Run(back.get()), 0, 0), want, 1e-6f, "operation " + std::to_string(operation));
    }
    tool.Set("Operation", 0);
    tool.Set("Blend", 0.5);
    ExpectNear(At<KPixelF>(*tool.Run(back.get()), 0, 0), {0.4f, 0.3f, 0.45f, 1.0f}, 1e-6f, "half over");
    tool.Field<KImage*>("Foreground", kValueImage) = nullptr;
}
