// The registry against the catalogue, and Sample Brightness through the road.
#include <gtest/gtest.h>
#include "bridge/catalogue.h"
#include "host/flow.h"
#include "host/image.h"
#include "host/registry.h"
#include "support.h"

using namespace zvtest;

TEST(BridgeRegistry, EveryRegisteredToolMatchesTheCatalogue)
{
    int tools = 0;
    for (const host::Registration& r : host::Registry::Get().All()) {
        if (r.hostTool) continue;
        ++tools;
        const KCatalogueEntry* e = KCatalogueFind(r.className);
        ASSERT_NE(e, nullptr) << r.className << " is not in the catalogue";
        EXPECT_EQ(r.name, e->name) << r.className;
        EXPECT_EQ(r.shortName, e->shortName) << r.className;
        EXPECT_EQ(r.category, e->category) << r.className;
        EXPECT_EQ(r.help, e->help) << r.className;
        EXPECT_EQ(r.registryType, 3) << r.className;
        ASSERT_TRUE(r.creator) << r.className;
    }
    EXPECT_GE(tools, 1);
}

TEST(BridgeRegistry, LookupByDisplayClassAndShortName)
{
    auto& reg = host::Registry::Get();
    ASSERT_EQ(reg.Lookup("Sample Brightness").size(), 1u);
    EXPECT_EQ(reg.Lookup("Sample_Brightness").front()->name, "Sample Brightness");
    EXPECT_EQ(reg.Lookup("S_1").front()->className, "Sample_Brightness");
    EXPECT_TRUE(reg.Lookup("No Such Tool").empty());
}

namespace {

host::Image* RenderBrightness(KImage* plate, double brightness)
{
    host::Flow flow;
    auto& node = flow.Add("b", *host::Registry::Get().FindClass("Sample_Brightness"));
    flow.SetValue(node, node.op->FindInput("Image"), host::MakeImage(plate->HostImage()));
    flow.SetValue(node, node.op->FindInput("Brightness"), host::MakeNumber(brightness));
    flow.BeginFrame();
    host::Value v = flow.Evaluate(node, node.op->MainOutput(), 0.0);
    auto* img = static_cast<const host::ImageValue*>(v.get())->image;
    img->Use();  // outlives the flow
    return img;
}

}  // namespace

TEST(BridgeSampleBrightness, ScalesColourAndKeepsAlphaInBothDepths)
{
    auto& reg = host::Registry::Get();
    auto* op = reg.FindClass("Sample_Brightness")->creator();
    const host::Input* b = op->FindInput("Brightness");
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(*b->attrs.defaultNumber, 1.0);
    EXPECT_EQ(*b->attrs.softMin, 0.0);
    EXPECT_EQ(*b->attrs.softMax, 2.0);
    delete op;

    KImage* i = KImage::Create(2, 1, false);
    i->SetPixel(0, 0, KPixel{1000, 40000, 65535, 12345});
    host::Image* out = RenderBrightness(i, 1.5);
    EXPECT_EQ(out->RowW(0)[0], 1500);
    EXPECT_EQ(out->RowW(0)[1], 60000);
    EXPECT_EQ(out->RowW(0)[2], 65535);  // clipped
    EXPECT_EQ(out->RowW(0)[3], 12345);
    out->Recycle();

    KImage* f = KImage::Create(1, 1, true);
    f->SetPixel(0, 0, KPixelF{0.5f, -0.25f, 3.0f, 0.5f});
    out = RenderBrightness(f, 2.0);
    EXPECT_EQ(out->RowF(0)[0], 1.0f);
    EXPECT_EQ(out->RowF(0)[1], -0.5f);  // float values are not clipped
    EXPECT_EQ(out->RowF(0)[2], 6.0f);
    EXPECT_EQ(out->RowF(0)[3], 0.5f);
    out->Recycle();
    delete i;
    delete f;
}
