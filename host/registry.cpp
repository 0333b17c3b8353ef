#include "host/registry.h"

namespace host {

Registry& Registry::Get()
{
    static Registry registry;
    return registry;
}

void Registry::Register(Registration registration) { entries_.push_back(std::move(registration)); }

const Registration* Registry::FindClass(const std::string& className) const
{
    for (auto& r : entries_)
        if (r.className == className) return &r;
    return nullptr;
}

std::vector<const Registration*> Registry::Lookup(const std::string& name) const
{
    for (auto& r : entries_)
        if (r.name == name || r.className == name) return {&r};
    std::vector<const Registration*> found;
    for (auto& r : entries_)
        if (r.shortName == name) found.push_back(&r);
    return found;
}

}  // namespace host
