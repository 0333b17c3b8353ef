// Write: types a text on as "Write" goes from 0 to 1, with a cursor behind
// the written part and an optional prefix before it.
#include <algorithm>
#include <string>
#include "framework/effect.h"
#include "framework/registration.h"

class KEffectTextWrite : public KEffectText {
public:
    KEffectTextWrite()
    {
        inputList.AddPage("Text Write");
        inputList.AddTextEdit(&text, "", "Text", "Text"_id, 0, 5);
        inputList.AddSlider(&write, 1.0f, "Write", "TxWr"_id, 0, 0.0, 1.0);
        inputList.AddTextEdit(&cursor, "_", "Cursor", "CuTx"_id, 0, 2);
        inputList.AddCheckbox(&cursorShow, true, "Cursor show", "CuSh"_id, 0, 1);
        inputList.AddTextEdit(&prefix, "//", "Prefix", "PrTx"_id, 0, 2);
        inputList.AddCheckbox(&prefixShow, false, "Prefix show", "PrSh"_id, 0, 1);
        outputList.AddTextOutput(&output, "Output", 1, 0);
    }

    void FinishRender() override
    {
        const double length = static_cast<double>(text.size());
        // The half character lets "Write" 1.0 reach the end and no further.
        const double wanted = static_cast<double>(write) * (length + 0.5);
        const size_t count = wanted > 0.0 ? static_cast<size_t>(std::min(wanted, length)) : 0;
        std::string s = text.substr(0, count);
        if (cursorShow) s += cursor;
        if (prefixShow) s.insert(0, prefix);
        output = s;
    }

private:
    std::string text;
    float write = 1.0f;
    std::string cursor;
    bool cursorShow = true;
    std::string prefix;
    bool prefixShow = false;
    std::string output;
};

ZV_TOOL(KEffectTextWrite, ZV_TextWrite);
