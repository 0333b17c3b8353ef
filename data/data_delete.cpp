// dDelete: drops the channels its pattern names; "#channel", the default,
// names none.
#include "data/effect_data.h"
#include "framework/registration.h"

class KEffectDataDelete : public KEffectData {
public:
    KEffectDataDelete() { DeclareChannelTool("Data Delete", &pattern, "#channel"); }

    std::unique_ptr<KDataTable> Compute() override
    {
        return KEachChannel(input, pattern, [](std::unique_ptr<KDataChannel>) { return nullptr; });
    }

private:
    std::string pattern = "#channel";
};

ZV_TOOL(KEffectDataDelete, ZV_DataDelete);
