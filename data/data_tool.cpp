// dTool: passes the table through; its limit, equalize and shift controls
// are placeholders that change nothing yet.
#include "data/effect_data.h"
#include "framework/registration.h"

class KEffectDataTool : public KEffectData {
public:
    KEffectDataTool()
    {
        DeclareChannelTool("Data Tool", &pattern, "*");
        inputList.AddCheckbox(&limitCount, false, "Limit Count", "LiCo"_id, 0, 0);
        inputList.AddSlider(&limitStart, 0, "Limit Count Start", "LiSt"_id, 0, 0, 100);
        inputList.AddSlider(&limitEnd, 0, "Limit Count End", "LiSt"_id, 0, 0, 100);
        inputList.AddCheckbox(&equalize, false, "Equalize Count", "LiCo"_id, 0, 0);
        inputList.AddCheckbox(&shift, false, "Shift Values", "LiCo"_id, 0, 0);
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        auto table = std::make_unique<KDataTable>();
        if (input) table->ShareList(*input);  // the same channels, not copies
        return table;
    }

private:
    std::string pattern = "*";
    bool limitCount = false, equalize = false, shift = false;
    int32_t limitStart = 0, limitEnd = 0;
};

ZV_TOOL(KEffectDataTool, ZV_DataTool);
