// The tool catalogue: its shape by category, the uniqueness the registry relies
// on, exact names and help texts, and lookup by class.
#include <utility>
#include "bridge/catalogue.h"
#include "support.h"

TEST(BridgeCatalogue, CategoriesRunInOrderWithTheirCountsAndOneShortNameIsShared)
{
    // Each category is one contiguous run; a tool filed out of place splits a run.
    std::vector<std::pair<std::string_view, int>> runs;
    std::map<std::string_view, std::vector<std::string_view>> byShort;
    int withHelp = 0;
    for (const KCatalogueEntry& e : KCatalogue()) {
        if (runs.empty() || runs.back().first != e.category) runs.emplace_back(e.category, 0);
        ++runs.back().second;
        EXPECT_FALSE(e.name.empty() || e.shortName.empty()) << e.className;
        EXPECT_EQ(KCatalogueFind(e.className), &e) << e.className;
        byShort[e.shortName].push_back(e.name);
        withHelp += !e.help.empty();
        const bool needs = e.category == "Zelvarine\\3D" || e.category == "Zelvarine\\3D Create";
        const bool none = e.category == "Zelvarine\\3D Region" || e.category == "Zelvarine\\Data";
        EXPECT_TRUE(e.category != "Zelvarine\\Image Vector" || e.help == e.name) << e.name;
        EXPECT_TRUE(!needs || !e.help.empty()) << e.name;
        EXPECT_TRUE(!none || e.help.empty()) << e.name;  // a tool's page heading is not its help
    }
    // Every category named exactly: one backslash after "Zelvarine", never a forward one.
    const std::vector<std::pair<std::string_view, int>> expected = {
        {"Zelvarine", 7},         {"Zelvarine\\Image", 23},      {"Zelvarine\\Image Color", 7},
        {"Zelvarine\\Image Create", 6}, {"Zelvarine\\Image Pixel", 30}, {"Zelvarine\\Image Position", 3},
        {"Zelvarine\\Image Vector", 5}, {"Zelvarine\\Image Warp", 16},  {"Zelvarine\\Shape", 13},
        {"Zelvarine\\Shape Create", 4}, {"Zelvarine\\Data", 15},        {"Zelvarine\\Data Create", 7},
        {"Zelvarine\\3D", 11},          {"Zelvarine\\3D Create", 7},    {"Zelvarine\\3D Region", 9},
        {"Samples", 1}};
    EXPECT_EQ(runs, expected);
    EXPECT_EQ(withHelp, 33);
    // Short names are not checked against each other; one pair really collides.
    std::map<std::string_view, std::vector<std::string_view>> shared;
    for (const auto& [shortName, names] : byShort)
        if (names.size() > 1) shared.emplace(shortName, names);
    EXPECT_EQ(shared, (std::map<std::string_view, std::vector<std::string_view>>{
                          {"3HFlC", {"Data Create 3D", "Heightfield Create 3D"}}}));
}

TEST(BridgeCatalogue, EntriesAreExactAndFoundByClassOnly)
{
    // Names that differ from their class, classes without the usual prefix,
    // and help texts as shown: odd spelling, trailing blanks and full stops kept.
    const struct { const char *className, *name, *shortName, *category, *help; } rows[] = {
        {"ZV_NumberBeat", "Beat", "Beat", "Zelvarine", "Pulse your animation in sync with the beat of your music"},
        {"Sample_Brightness", "Sample Brightness", "S_1", "Samples", ""},
        {"ZV_Project", "Projection", "Pjt", nullptr, nullptr},
        {"KEffectCut3D", "Cut 3D", nullptr, "Zelvarine\\3D", nullptr},
        {"ZV_MergeAndBone", nullptr, "M&B", nullptr, nullptr},
        {"ZV_DataFromImageHistogramCreate", "dFrom Image Analyzer Create", nullptr, nullptr, nullptr},
        {"ZV_HueSaturation", "Hue/Saturation", nullptr, nullptr, nullptr},
        {"ZV_DataDuplicate3D", nullptr, nullptr, nullptr, "Create dulpicates, fully controlled by data channels."},
        {"ZV_Align3D", nullptr, nullptr, nullptr, "Align an object relative to "},
        {"KOperatorWorldSpaceCreate3D", nullptr, nullptr, nullptr, "Creates a plane with based on world space coordinates"},
        {"ZV_Flur", nullptr, nullptr, nullptr, ""},
    };
    for (const auto& r : rows) {
        const KCatalogueEntry* e = KCatalogueFind(r.className);
        ASSERT_NE(e, nullptr) << r.className;
        // Only the stated columns are checked.
        for (auto [want, got] : {std::pair{r.name, e->name}, {r.shortName, e->shortName}, {r.category, e->category}, {r.help, e->help}})
            EXPECT_EQ(want ? got : "", want ? want : "") << r.className;
    }
    EXPECT_EQ(KCatalogue().front().className, "ZV_NumberBeat");
    EXPECT_EQ(KCatalogue().back().className, "Sample_Brightness");
    // Display and short names are not class names, and the match is exact.
    for (const char* name : {"Flur", "Flr", "zv_flur", "ZV_Flur ", "", "TorvenMarsh.ZV_ShapeParameter"})
        EXPECT_EQ(KCatalogueFind(name), nullptr) << name;
    EXPECT_EQ(KCatalogueFind(std::string("ZV_Flur"))->name, "Flur");
}
