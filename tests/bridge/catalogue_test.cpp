// The tool catalogue: its shape by category, the uniqueness the registry relies on,
// exact names and help texts, and lookup by class.
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>
#include "bridge/catalogue.h"

TEST(BridgeCatalogue, CategoriesRunInOrderWithTheirCounts)
{
    const auto& all = KCatalogue();
    ASSERT_EQ(all.size(), 163u);

    // Each category is one contiguous run; a tool filed out of place splits a run.
    std::vector<std::pair<std::string_view, int>> runs;
    for (const KCatalogueEntry& e : all) {
        if (runs.empty() || runs.back().first != e.category)
            runs.emplace_back(e.category, 0);
        ++runs.back().second;
    }
    const std::vector<std::pair<std::string_view, int>> expected = {
        {"Zelvarine", 7},
        {"Zelvarine\\Image", 23},
        {"Zelvarine\\Image Color", 7},
        {"Zelvarine\\Image Create", 6},
        {"Zelvarine\\Image Pixel", 29},
        {"Zelvarine\\Image Position", 3},
        {"Zelvarine\\Image Vector", 5},
        {"Zelvarine\\Image Warp", 16},
        {"Zelvarine\\Shape", 13},
        {"Zelvarine\\Shape Create", 4},
        {"Zelvarine\\Data", 15},
        {"Zelvarine\\Data Create", 7},
        {"Zelvarine\\3D", 11},
        {"Zelvarine\\3D Create", 7},
        {"Zelvarine\\3D Region", 9},
        {"Samples", 1},
    };
    EXPECT_EQ(runs, expected);

    std::set<std::string_view> distinct;
    for (const KCatalogueEntry& e : all)
        distinct.insert(e.category);
    EXPECT_EQ(distinct.size(), 16u);

    for (const KCatalogueEntry& e : all) {
        if (e.category == "Samples")
            continue;
        EXPECT_TRUE(e.category == "Zelvarine" || e.category.starts_with("Zelvarine\\")) << e.category;
        // One backslash, never a doubled or forward one.
        EXPECT_EQ(e.category.find("\\\\"), std::string_view::npos) << e.category;
        EXPECT_EQ(e.category.find('/'), std::string_view::npos) << e.category;
    }
}

TEST(BridgeCatalogue, NamesAreFilledAndClassesUnique)
{
    std::set<std::string_view> classes;
    std::map<std::string_view, std::vector<std::string_view>> byShort;
    for (const KCatalogueEntry& e : KCatalogue()) {
        EXPECT_FALSE(e.name.empty());
        EXPECT_FALSE(e.shortName.empty()) << e.name;
        EXPECT_TRUE(classes.insert(e.className).second) << e.className;
        byShort[e.shortName].push_back(e.name);
    }
    // Short names are not checked against each other; one pair really collides.
    std::map<std::string_view, std::vector<std::string_view>> shared;
    for (const auto& [shortName, names] : byShort)
        if (names.size() > 1)
            shared.emplace(shortName, names);
    const std::map<std::string_view, std::vector<std::string_view>> expected = {
        {"3HFlC", {"Data Create 3D", "Heightfield Create 3D"}},
    };
    EXPECT_EQ(shared, expected);
}

TEST(BridgeCatalogue, EntriesAreExact)
{
    const auto& all = KCatalogue();
    const KCatalogueEntry& first = all.front();
    EXPECT_EQ(first.name, "Beat");
    EXPECT_EQ(first.className, "ZV_NumberBeat");
    EXPECT_EQ(first.shortName, "Beat");
    EXPECT_EQ(first.help, "Pulse your animation in sync with the beat of your music");

    const KCatalogueEntry& last = all.back();
    EXPECT_EQ(last.name, "Sample Brightness");
    EXPECT_EQ(last.className, "Sample_Brightness");
    EXPECT_EQ(last.shortName, "S_1");
    EXPECT_EQ(last.category, "Samples");
    EXPECT_EQ(last.help, "");

    // Names that differ from their class, and classes without the usual prefix.
    const KCatalogueEntry* projection = KCatalogueFind("ZV_Project");
    ASSERT_NE(projection, nullptr);
    EXPECT_EQ(projection->name, "Projection");
    EXPECT_EQ(projection->shortName, "Pjt");
    const KCatalogueEntry* cut = KCatalogueFind("KEffectCut3D");
    ASSERT_NE(cut, nullptr);
    EXPECT_EQ(cut->name, "Cut 3D");
    EXPECT_EQ(cut->category, "Zelvarine\\3D");
    EXPECT_EQ(KCatalogueFind("ZV_MergeAndBone")->shortName, "M&B");
    EXPECT_EQ(KCatalogueFind("ZV_ShapeSpiral")->name, "sSpiral Create");
    EXPECT_EQ(KCatalogueFind("ZV_DataFromImageHistogramCreate")->name, "dFrom Image Analyzer Create");
    EXPECT_EQ(KCatalogueFind("ZV_Transform")->shortName, "KXf");
    EXPECT_EQ(KCatalogueFind("ZV_HueSaturation")->name, "Hue/Saturation");

    // Help texts as shown, odd spelling, trailing blanks and full stops kept.
    EXPECT_EQ(KCatalogueFind("ZV_DataDuplicate3D")->help,
              "Create dulpicates, fully controlled by data channels.");
    EXPECT_EQ(KCatalogueFind("ZV_Align3D")->help, "Align an object relative to ");
    EXPECT_EQ(KCatalogueFind("ZV_Objectify3D")->help, "Manibulates objects as a whole");
    EXPECT_EQ(KCatalogueFind("ZV_SmartFieldStrobe")->help,
              "Smart Field Strobe tries to detect motion and only removes fields where there is.");
    EXPECT_EQ(KCatalogueFind("KOperatorWorldSpaceCreate3D")->help,
              "Creates a plane with based on world space coordinates");
    EXPECT_EQ(KCatalogueFind("ZV_Generate")->help, "Generate noise patterns and such");
    EXPECT_EQ(KCatalogueFind("ZV_GrowColor")->help, "Fill transparent parts by extending the edge color");
    EXPECT_EQ(KCatalogueFind("ZV_NumberRandom")->help, "Random Number");
    EXPECT_EQ(KCatalogueFind("KOperatorDataCreate3D")->help, KCatalogueFind("KOperatorHeightfieldCreate3D")->help);
    EXPECT_EQ(KCatalogueFind("ZV_Flur")->help, "");
    EXPECT_EQ(KCatalogueFind("ZV_TextFormula")->help, "");
}

TEST(BridgeCatalogue, HelpFollowsCategoryRules)
{
    int withHelp = 0;
    for (const KCatalogueEntry& e : KCatalogue()) {
        if (!e.help.empty())
            ++withHelp;
        if (e.category == "Zelvarine\\Image Vector") {
            EXPECT_EQ(e.help, e.name);
        } else if (e.category == "Zelvarine\\3D" || e.category == "Zelvarine\\3D Create") {
            EXPECT_FALSE(e.help.empty()) << e.name;
        } else if (e.category == "Zelvarine\\3D Region" || e.category == "Zelvarine\\Data") {
            // A tool's page heading is not its help.
            EXPECT_TRUE(e.help.empty()) << e.name;
        }
    }
    EXPECT_EQ(withHelp, 33);
}

TEST(BridgeCatalogue, FindByClassOnly)
{
    const auto& all = KCatalogue();
    for (const KCatalogueEntry& e : all)
        EXPECT_EQ(KCatalogueFind(e.className), &e) << e.className;

    // Display and short names are not class names, and the match is exact.
    EXPECT_EQ(KCatalogueFind("Flur"), nullptr);
    EXPECT_EQ(KCatalogueFind("Flr"), nullptr);
    EXPECT_EQ(KCatalogueFind("zv_flur"), nullptr);
    EXPECT_EQ(KCatalogueFind("ZV_Flur "), nullptr);
    EXPECT_EQ(KCatalogueFind(""), nullptr);
    // Support and parameter classes are registered but are not tools.
    EXPECT_EQ(KCatalogueFind("TorvenMarsh.ZV_ShapeParameter"), nullptr);
    std::string owned = "ZV_Flur";
    EXPECT_EQ(KCatalogueFind(owned)->name, "Flur");
}
