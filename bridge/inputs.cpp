// Input construction: each declaration becomes host inputs, then the standard
// inputs of the effect's family are added on the page "Zelvarine Controls".
#include <cctype>
#include <map>
#include <utility>
#include "bridge/tool.h"
#include "bridge/value_kinds.h"
#include "host/operator.h"

using host::Control;
using host::DataType;
using host::InputAttrs;

std::string KHostId(const std::string& label, bool whole)
{
    std::string id;
    for (char c : label) {
        if (c == '(' && !whole) break;
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '_') id += c;
    }
    return id;
}

std::string KCodeText(uint32_t code)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>((code >> shift) & 0xFF);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
    for (char c : text)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_' && c != ' ') return {};
    return text;
}

host::Input* KTool::AddInput(const std::string& label, const InputAttrs& attrs,
                             const std::string& alias)
{
    // A name a user can predict: the label's; when another control has it,
    // the whole label, parentheses and all, then the page it stands on, then
    // the control's own code say which one this is.
    const std::string base = KHostId(label).empty() ? "Input" : KHostId(label);
    std::string id;
    for (const std::string& candidate :
         {base, KHostId(label, true), base + KHostId(op->CurrentPage()), base + alias})
        if (!candidate.empty() && !op->FindInput(candidate)) {
            id = candidate;
            break;
        }
    for (int n = 2; id.empty(); ++n)
        if (!op->FindInput(base + std::to_string(n))) id = base + std::to_string(n);
    host::Input* in = op->AddInput(label, id, attrs);
    in->alias = alias;
    return in;
}

KInput* KTool::Tie(host::Input* input, KParameter* p, uint32_t id, int32_t subIndex)
{
    if (input && subIndex == 0 && input->alias.empty()) input->alias = KCodeText(id);
    auto* k = new KInput;
    k->id = id;
    k->hostInput = input;
    k->parameter = p;
    k->subIndex = subIndex;
    inputs.Append(k);
    return k;
}

void KTool::Build(host::Operator* o, KEffect* e)
{
    op = o;
    effect = e;
    if (auto* source = dynamic_cast<host::SourceOperator*>(op)) {
        widthInput = source->widthInput;
        heightInput = source->heightInput;
    }
    for (KParameter* p = effect->inputs(); p; p = p->Next()) BuildParameter(p);
    BuildStandardInputs();
    BuildOutputs();
}

void KTool::BuildOutputs()
{
    const bool source = effect->HasFeature(kFeatureSource);
    const bool imageOutputs = effect->CountOutputs(kValueImage) > 0;
    if (imageOutputs) {
        if (source) {
            if (auto* s = dynamic_cast<host::SourceOperator*>(op)) outputMain = s->output;
            ++outputCounter;
        } else {
            if (!imageInput) AddStandardInput(kStdImage, 0.0f);
            outputMain = op->AddOutput("Output", "Output", DataType::Image, outputCounter++);
        }
    }
    bool mainImage = imageOutputs;
    for (KOutput* o = effect->outputs(); o; o = o->Next()) {
        // The first image output is the one made above.
        if (o->valueKind == kValueImage && std::exchange(mainImage, false)) continue;
        const KValueKind* kind = KFindValueKind(o->valueKind);
        if (!kind) continue;
        const std::string name = kind->outputId.empty() ? KHostId(o->name) : kind->outputId;
        std::string id = name;
        for (int n = 2; op->FindOutput(id); ++n) id = name + std::to_string(n);
        o->hostOutput = op->AddOutput(name, id, kind->dataType, outputCounter++, kind->typeId);
    }
    if (effect->GetFamily() == kFamilyShape) shapeTool = true;

    // A code that two controls share, or that is another control's name, would
    // reach the wrong one: such codes are no alias.
    std::map<std::string, int> uses;
    for (auto& in : op->Inputs()) {
        ++uses[in->id];
        if (!in->alias.empty() && in->alias != in->id) ++uses[in->alias];
    }
    for (auto& in : op->Inputs())
        if (in->alias == in->id || uses[in->alias] > 1) in->alias.clear();
}

