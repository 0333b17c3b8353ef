// dInfo: shows the dump of the table that passes through it, one line per
// channel, in "Information".
#include "data/effect_data.h"
#include "framework/registration.h"

class KEffectDataInfo : public KEffectData {
public:
    KEffectDataInfo()
    {
        AddDataInput();
        inputList.AddLabel("Data Info", 0, 0);
        inputList.AddMultiButton(&update, 0, "Update", "Upda"_id, 0, {"Update", "[end]"});
        inputList.AddTextEdit(&information, "---", "Information", "Info"_id, kFlagTextVariantA, 50);
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        information = input ? input->Dump() : "- no data -";
        return input ? input->Clone() : std::make_unique<KDataTable>();
    }

private:
    int32_t update = 0;
    std::string information = "---";
};

ZV_TOOL(KEffectDataInfo, ZV_DataInfo);
