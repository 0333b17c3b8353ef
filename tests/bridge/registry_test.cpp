// The registry against the catalogue, and Sample Brightness through the road.
#include <gtest/gtest.h>
#include "bridge/catalogue.h"
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

TEST(BridgeSampleBrightness, ScalesColourAndKeepsAlphaInBothDepths)
{
    // Integers rounded and clipped; floats not clipped.
    ToolFlow i("Sample_Brightness", Row<KPixel>({{1000, 40000, 65535, 12345}}));
    i.Set("Brightness", 1.5);
    EXPECT_EQ(Channels(i.RenderRow<KPixel>()[0]), Channels(KPixel{1500, 60000, 65535, 12345}));
    ToolFlow f("Sample_Brightness", Row<KPixelF>({{0.5f, -0.25f, 3.0f, 0.5f}}));
    f.Set("Brightness", 2.0);
    EXPECT_EQ(Channels(f.RenderRow<KPixelF>()[0]), Channels(KPixelF{1.0f, -0.5f, 6.0f, 0.5f}));
}
