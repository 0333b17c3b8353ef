// Lists the catalogue tools that are not registered yet, with a count.
#include <cstdio>
#include "bridge/catalogue.h"
#include "host/registry.h"

int main()
{
    int missing = 0;
    for (const KCatalogueEntry& e : KCatalogue()) {
        if (host::Registry::Get().FindClass(std::string(e.className))) continue;
        std::printf("%-34.*s %-30.*s %.*s\n", int(e.name.size()), e.name.data(), int(e.className.size()),
                    e.className.data(), int(e.category.size()), e.category.data());
        ++missing;
    }
    std::printf("%d of %zu catalogue tools not registered yet\n", missing, KCatalogue().size());
    return 0;
}
