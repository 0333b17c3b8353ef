// ZV_TOOL lines become host registrations: names from the catalogue, the
// operator class from the effect's own answer to whether it is a source. A
// tool whose values no kind carries is refused here, not at its first render.
#include "framework/registration.h"
#include <cstdio>
#include <cstdlib>
#include <string>
#include "bridge/catalogue.h"
#include "bridge/operator.h"
#include "bridge/value_kinds.h"
#include "host/registry.h"

namespace {

template <class Operator> host::Registration For(const KCatalogueEntry& e, KEffectFactory make)
{
    host::Registration r;
    r.creator = [make] { return static_cast<host::Operator*>(new Operator(make())); };
    r.className = std::string(e.className);
    r.name = std::string(e.name);
    r.category = std::string(e.category);
    r.shortName = std::string(e.shortName);
    r.help = std::string(e.help);
    return r;
}

}  // namespace

bool KRegisterEffect(const char* className, KEffectFactory make)
{
    const KCatalogueEntry* entry = KCatalogueFind(className);
    if (!entry) {
        // A tool that no menu lists: stop the load, so that no build ships it.
        std::fprintf(stderr, "zelvarine: tool class %s is not in the catalogue\n", className);
        std::abort();
    }
    const std::unique_ptr<KEffect> probe = make();
    if (const std::string problem = KValueKindProblem(*probe); !problem.empty()) {
        std::fprintf(stderr, "zelvarine: cannot register %s: %s\n", className, problem.c_str());
        std::abort();
    }
    const bool source = probe->HasFeature(kFeatureSource);
    host::Registration r = source ? For<ZV_SourceOperator>(*entry, make)
                                  : For<ZV_ThreadedOperator>(*entry, make);
    r.baseClass = source ? "ZV_SourceOperator" : "ZV_ThreadedOperator";
    host::Registry::Get().Register(std::move(r));
    return true;
}
