// The class registry: the only way the host knows the plug-in's tools.
#pragma once
#include <functional>
#include <string>
#include <vector>

namespace host {

class Operator;

struct Registration {
    std::function<Operator*()> creator;
    std::string baseClass;
    std::string className;
    std::string name;      // display name
    std::string category;
    std::string shortName;
    std::string help;
    int registryType = 3;  // an ordinary tool
    std::string dataTypeId;
    bool hostTool = false; // the host's own tools (Loader, Saver)
};

class Registry {
public:
    static Registry& Get();  // built on first use, whatever the load order
    void Register(Registration registration);
    const std::vector<Registration>& All() const { return entries_; }
    const Registration* FindClass(const std::string& className) const;
    // Tools whose display name, class name or short name is `name`: by
    // display or class name first, then every tool with that short name.
    std::vector<const Registration*> Lookup(const std::string& name) const;

private:
    std::vector<Registration> entries_;
};

}  // namespace host
