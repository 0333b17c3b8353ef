// dMerge: the table of the first input, then the channels of each further
// input added in order.
#include <array>
#include <string>
#include "data/effect_data.h"
#include "framework/registration.h"

class KEffectDataMerge : public KEffectData {
public:
    KEffectDataMerge()
    {
        for (int32_t i = 0; i < 8; ++i) {
            const std::string label = "Data " + std::to_string(i + 1) + " (in)";
            inputList.AddDataInput(&inputs[i], label.c_str(), static_cast<uint32_t>(i + 1), kFlagMain);
        }
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        std::unique_ptr<KDataTable> table = inputs[0] ? inputs[0]->Clone() : std::make_unique<KDataTable>();
        for (size_t i = 1; i < inputs.size(); ++i)
            if (inputs[i])
                for (size_t c = 0; c < inputs[i]->ChannelCount(); ++c) table->Add(inputs[i]->Channel(c)->Clone());
        return table;
    }

private:
    std::array<KDataTable*, 8> inputs{};
};

ZV_TOOL(KEffectDataMerge, ZV_DataMerge);
