// Input names: every control of every tool has a readable name of its own, and
// the four-character codes of old flows and scripts still reach the same control.
#include <gtest/gtest.h>
#include <cctype>
#include <memory>
#include <set>
#include "bridge/tool.h"
#include "command_support.h"
#include "host/registry.h"

using namespace zvtest;

TEST(BridgeNames, EveryToolsInputsHaveUniqueReadableNamesAndUnambiguousCodes)
{
    int tools = 0;
    for (const host::Registration& r : host::Registry::Get().All()) {
        if (r.hostTool) continue;
        ++tools;
        std::unique_ptr<host::Operator> op(r.creator());
        std::set<std::string> names;
        for (auto& in : op->Inputs()) {
            SCOPED_TRACE(r.name + ": " + in->name);
            EXPECT_TRUE(names.insert(in->id).second) << "two controls named " << in->id;
            ASSERT_FALSE(in->id.empty());
            for (char c : in->id) EXPECT_TRUE(std::isalnum(static_cast<unsigned char>(c)) || c == '_');
            // Made from the label, and never a counter a user cannot predict.
            const std::string label = KHostId(in->name);
            if (!label.empty()) {
                EXPECT_EQ(in->id.rfind(label, 0), 0u) << in->id;
                const std::string rest = in->id.substr(label.size());
                EXPECT_FALSE(!rest.empty() && std::isdigit(static_cast<unsigned char>(rest[0])) &&
                             !std::isdigit(static_cast<unsigned char>(label.back())))
                    << in->id;
            }
            // A code reaches exactly its own control.
            if (!in->alias.empty()) {
                EXPECT_EQ(op->FindInput(in->alias), in.get()) << in->alias;
            }
        }
    }
    EXPECT_GE(tools, 30);
}

TEST(BridgeNames, ClashingLabelsAndCodesAreToldApart)
{
    auto inputs = [](const char* className) {
        std::unique_ptr<host::Operator> op(host::Registry::Get().FindClass(className)->creator());
        return op;
    };
    // Two checkboxes whose labels differ only in parentheses.
    auto formula = inputs("ZV_TextFormula");
    EXPECT_EQ(formula->FindInput("Leadingzeros")->name, "Leading zero's (number values)");
    EXPECT_EQ(formula->FindInput("Leadingzerospointvalues")->name, "Leading zero's (point values)");
    // Shuffle's seed has no code; the random seed is reached by name alone.
    auto shuffle = inputs("ZV_Shuffle");
    EXPECT_EQ(shuffle->FindInput("RandomSeed")->alias, "");
    // Standard controls: readable names, their old codes as aliases.
    auto transform = inputs("ZV_Transform");
    const struct { const char* code; const char* name; } standard[] = {
        {"KCCR", "Red"}, {"KCCA", "Alpha"}, {"KUnd", "Undersampleresolution"},
        {"KFil", "Filtering"}, {"KEdg", "Edges"}, {"KMaW", "WarpMask"},
        {"ZVMT", "Domultithreading"}, {"KTra", "Trails"}, {"Angl", "Axisangle"},
    };
    for (const auto& s : standard) {
        ASSERT_NE(transform->FindInput(s.name), nullptr) << s.name;
        EXPECT_EQ(transform->FindInput(s.code), transform->FindInput(s.name)) << s.code;
    }
}

TEST(BridgeNames, OldCodesWorkOnTheCommandLineAndInFlows)
{
    TempDir dir;
    // Filtering None through its code, alpha kept through its code.
    ASSERT_EQ(dir.Run("run Pattern --size 8x4 -o p.exr").code, 0);
    const CommandResult byCode = dir.Run("run Transform Image=p.exr KFil=0 KCCA=0 Angl=10 -o a.png");
    const CommandResult byName = dir.Run("run Transform Image=p.exr Filtering=0 Alpha=0 Axisangle=10 -o b.png");
    ASSERT_EQ(byCode.code, 0) << byCode.err;
    ASSERT_EQ(byName.code, 0) << byName.err;
    EXPECT_EQ(Slurp(dir.path / "a.png"), Slurp(dir.path / "b.png"));
    dir.Write("old.json", R"({"frames": [1, 1], "tools": {
        "p": {"tool": "Pattern", "inputs": {"Width": 8, "Height": 4}},
        "i": {"tool": "Invert", "inputs": {"Image": {"from": "p"}, "KCCA": 0, "ZVMT": 0}},
        "s": {"tool": "Saver", "file": "old.####.exr", "inputs": {"Image": {"from": "i"}}}}})");
    const CommandResult flow = dir.Run("render old.json");
    EXPECT_EQ(flow.code, 0) << flow.err;
    EXPECT_TRUE(std::filesystem::exists(dir.path / "old.0001.exr"));
}
