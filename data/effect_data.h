// The base of the data tools: each reads at most one table and makes a new
// one, which the base keeps as the output "Output" until the next render.
#pragma once
#include <functional>
#include <memory>
#include <string>
#include "data/table.h"
#include "framework/effect.h"

// The frame of the per-channel tools: a new table of the input's channels in
// order, where each channel the pattern names goes through `rule`, which gets
// a clone to change (a null result drops it), and the others come through
// cloned. No input gives an empty table.
using KChannelRule = std::function<std::unique_ptr<KDataChannel>(std::unique_ptr<KDataChannel>)>;
std::unique_ptr<KDataTable> KEachChannel(const KDataTable* input, const std::string& pattern,
                                         const KChannelRule& rule);

class KEffectData : public KEffect {
public:
    KEffectData();
    int32_t GetFamily() override { return kFamilyData; }
    // The tool's table, made from its fields; never null.
    virtual std::unique_ptr<KDataTable> Compute() = 0;
    void FinishRender() override;

protected:
    // Declares the input "Data": the upstream table, the tool's own copy.
    void AddDataInput() { inputList.AddDataInput(&input, "Data", 1, kFlagMain); }
    // How every per-channel tool begins: "Data", its heading, and the pattern
    // "Channel Name (in/out)" into `pattern`.
    void DeclareChannelTool(const char* heading, std::string* pattern, const char* defaultPattern)
    {
        AddDataInput();
        inputList.AddLabel(heading, 0, 0);
        inputList.AddTextEdit(pattern, defaultPattern, "Channel Name (in/out)", "CNam"_id, 0, 1);
    }
    KDataTable* input = nullptr;  // filled by the transfer, freed after the render

private:
    KDataTable* output = nullptr;  // the declared output's field
    std::unique_ptr<KDataTable> made;
};
