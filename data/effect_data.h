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
// shared with the input. No input gives an empty table.
using KChannelRule = std::function<std::unique_ptr<KDataChannel>(std::unique_ptr<KDataChannel>)>;
std::unique_ptr<KDataTable> KEachChannel(const KDataTable* input, const std::string& pattern,
                                         const KChannelRule& rule);

// The apply mode of the tools that set values, list "Type": 0 "Replace" writes
// v, 1 "Add" adds it, any other "Multiply" multiplies by it; integers stay
// in integer arithmetic.
template <class T> T KApplyMode(int32_t mode, T x, T v) { return mode == 0 ? v : mode == 1 ? x + v : x * v; }

// The minimum and maximum of each type that the ramp and random tools span,
// declared in the groups "Integer", "Float", "Vector 2", "Vector 3", "Color".
struct KDataBounds {
    void Declare(KParameterList& list, uint32_t vector3MinId, uint32_t vector3MaxId);
    int32_t intMin = 0, intMax = 10;
    float floatMin = 0.0f, floatMax = 1.0f;
    KPoint2 vector2Min{0.0f, 0.0f}, vector2Max{1.0f, 1.0f};
    KXYZ vector3Min{0.0f, 0.0f, 0.0f}, vector3Max{1.0f, 1.0f, 1.0f};
    KColor colorMin{0.0f, 0.0f, 0.0f, 0.0f}, colorMax{1.0f, 1.0f, 1.0f, 1.0f};
};

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
