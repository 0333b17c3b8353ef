// dDelete: drops the channels its pattern names; "#channel", the default,
// names none.
#include "data/effect_data.h"
#include "framework/registration.h"

class KEffectDataDelete : public KEffectData {
public:
    KEffectDataDelete()
    {
        AddDataInput();
        inputList.AddLabel("Data Delete", 0, 0);
        inputList.AddTextEdit(&pattern, "#channel", "Channel Name (in/out)", "CNam"_id, 0, 1);
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        return KEachChannel(input, pattern, [](std::unique_ptr<KDataChannel>) { return nullptr; });
    }

private:
    std::string pattern = "#channel";
};

ZV_TOOL(KEffectDataDelete, ZV_DataDelete);
