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
    // Every category named exactly: one backslash after "Zelvarine", never a forward one.
    const std::vector<std::pair<std::string_view, int>> expected = {
        {"Zelvarine", 7},         {"Zelvarine\\Image", 23},      {"Zelvarine\\Image Color", 7},
        {"Zelvarine\\Image Create", 6}, {"Zelvarine\\Image Pixel", 29}, {"Zelvarine\\Image Position", 3},
        {"Zelvarine\\Image Vector", 5}, {"Zelvarine\\Image Warp", 16},  {"Zelvarine\\Shape", 13},
        {"Zelvarine\\Shape Create", 4}, {"Zelvarine\\Data", 15},        {"Zelvarine\\Data Create", 7},
        {"Zelvarine\\3D", 11},          {"Zelvarine\\3D Create", 7},    {"Zelvarine\\3D Region", 9},
        {"Samples", 1}};
    EXPECT_EQ(runs, expected);  // each run its own category: 16 distinct ones
}

TEST(BridgeCatalogue, NamesAreFilledAndOneShortNameIsShared)
{
    std::map<std::string_view, std::vector<std::string_view>> byShort, shared;
    for (const KCatalogueEntry& e : KCatalogue()) {
        EXPECT_FALSE(e.name.empty() || e.shortName.empty()) << e.className;
        byShort[e.shortName].push_back(e.name);
    }
    // Short names are not checked against each other; one pair really collides.
    for (const auto& [shortName, names] : byShort)
        if (names.size() > 1) shared.emplace(shortName, names);
    EXPECT_EQ(shared, (std::map<std::string_view, std::vector<std::string_view>>{
                          {"3HFlC", {"Data Create 3D", "Heightfield Create 3D"}}}));
}

TEST(BridgeCatalogue, EntriesAreExact)
{
    // Names that differ from their class, classes without the usual prefix,
    // and help texts as shown: odd spelling, trailing blanks and full stops kept.
    const struct { const char *className, *name, *shortName, *category, *help; } rows[] = {
        {"ZV_NumberBeat", "Beat", "Beat", "Zelvarine", "Pulse your animation in sync with the beat of your music"},
        {"Sample_Brightness", "Sample Brightness", "S_1", "Samples", ""},
        {"ZV_Project", "Projection", "Pjt", nullptr, nullptr},
        {"KEffectCut3D", "Cut 3D", nullptr, "Zelvarine\\3D", nullptr},
        {"ZV_MergeAndBone", nullptr, "M&B", nullptr, nullptr},
        {"ZV_ShapeSpiral", "sSpiral Create", nullptr, nullptr, nullptr},
        {"ZV_DataFromImageHistogramCreate", "dFrom Image Analyzer Create", nullptr, nullptr, nullptr},
        {"ZV_Transform", nullptr, "KXf", nullptr, nullptr},
        {"ZV_HueSaturation", "Hue/Saturation", nullptr, nullptr, nullptr},
        {"ZV_DataDuplicate3D", nullptr, nullptr, nullptr, "Create dulpicates, fully controlled by data channels."},
        {"ZV_Align3D", nullptr, nullptr, nullptr, "Align an object relative to "},
        {"ZV_Objectify3D", nullptr, nullptr, nullptr, "Manibulates objects as a whole"},
        {"ZV_SmartFieldStrobe", nullptr, nullptr, nullptr,
         "Smart Field Strobe tries to detect motion and only removes fields where there is."},
        {"KOperatorWorldSpaceCreate3D", nullptr, nullptr, nullptr, "Creates a plane with based on world space coordinates"},
        {"ZV_Generate", nullptr, nullptr, nullptr, "Generate noise patterns and such"},
        {"ZV_GrowColor", nullptr, nullptr, nullptr, "Fill transparent parts by extending the edge color"},
        {"ZV_NumberRandom", nullptr, nullptr, nullptr, "Random Number"},
        {"ZV_Flur", nullptr, nullptr, nullptr, ""},
        {"ZV_TextFormula", nullptr, nullptr, nullptr, ""},
    };
    for (const auto& r : rows) {
        const KCatalogueEntry* e = KCatalogueFind(r.className);
        ASSERT_NE(e, nullptr) << r.className;
        // Only the stated columns are checked.
        EXPECT_EQ(r.name ? e->name : "", r.name ? r.name : "") << r.className;
        EXPECT_EQ(r.shortName ? e->shortName : "", r.shortName ? r.shortName : "") << r.className;
        EXPECT_EQ(r.category ? e->category : "", r.category ? r.category : "") << r.className;
        EXPECT_EQ(r.help ? e->help : "", r.help ? r.help : "") << r.className;
    }
    EXPECT_EQ(KCatalogue().front().className, "ZV_NumberBeat");
    EXPECT_EQ(KCatalogue().back().className, "Sample_Brightness");
    EXPECT_EQ(KCatalogueFind("KOperatorDataCreate3D")->help, KCatalogueFind("KOperatorHeightfieldCreate3D")->help);
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
    std::set<std::string_view> distinct;
    for (const KCatalogueEntry& e : KCatalogue()) {
        EXPECT_EQ(KCatalogueFind(e.className), &e) << e.className;
        distinct.insert(e.category);
    }
    EXPECT_EQ(distinct.size(), 16u);  // no category split in two runs

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
