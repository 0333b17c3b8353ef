// The tool catalogue as data: display name, class, short name, menu category and
// help of each tool, in the order the menus list them.
#pragma once
#include <string_view>
#include <vector>

struct KCatalogueEntry {
    std::string_view name;      // display name
    std::string_view className; // registered class name
    std::string_view shortName;
    std::string_view category;
    std::string_view help;      // empty where none is given
};

// Every tool of the collection, in catalogue order.
const std::vector<KCatalogueEntry>& KCatalogue();
// The entry with this class name, or null.
const KCatalogueEntry* KCatalogueFind(std::string_view className);
