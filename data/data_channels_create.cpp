// dChannels Create: adds zero-filled channels, chosen by switches and names, to
// the table that arrives (or to a new one), of a count set or taken from it.
#include <array>
#include <string>
#include "data/effect_data.h"
#include "framework/registration.h"

class KEffectDataChannelsCreate : public KEffectData {
public:
    KEffectDataChannelsCreate()
    {
        AddDataInput();
        inputList.AddSlider(&count, 16, "Count", "Coun"_id, 0, 1, 16);
        inputList.AddCheckbox(&countFromInput, false, "Count From Input", "CuIn"_id, 0, 0);
        for (size_t g = 0; g < kGroups.size(); ++g) {
            const Group& group = kGroups[g];
            inputList.BeginNest(group.label, 0, 0);
            for (int32_t n = 0; n < 16; ++n) {
                const std::string number = " " + std::to_string(n);
                const std::string enable = std::string("Channel ") + group.label + " Enable" + number;
                const std::string name = std::string("Channel Name ") + group.label + number;
                inputList.AddCheckbox(&channels[g][n].on, false, enable.c_str(), group.enableId + n, 0, 0);
                inputList.AddTextEdit(&channels[g][n].name, n == 0 ? group.firstName : "", name.c_str(),
                                      group.nameId + n, 0, 1);
            }
            inputList.EndNest();
        }
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        std::unique_ptr<KDataTable> table = input ? input->Clone() : std::make_unique<KDataTable>();
        const int32_t n = countFromInput && input && input->ChannelCount() ? input->maximumCount : count;
        // Only an empty name is skipped: "#name" makes a channel here.
        for (size_t g = 0; g < kGroups.size(); ++g)
            for (const Channel& c : channels[g])
                if (c.on && !c.name.empty()) table->Add(KDataChannel::Create(c.name, kGroups[g].type, n));
        return table;
    }

private:
    struct Group {
        const char* label;
        uint32_t enableId, nameId;
        const char* firstName;
        int32_t type;
    };
    static constexpr std::array<Group, 6> kGroups{{
        {"Integer", "IEna"_id, "INam"_id, "index", kDataInteger},
        {"Float", "FEna"_id, "FNam"_id, "number", kDataFloat},
        {"Vector2", "2Ena"_id, "2Nam"_id, "position", kDataVector2},
        {"Vector3", "3Ena"_id, "3Nam"_id, "position", kDataVector3},
        {"Color", "CEna"_id, "CNam"_id, "color", kDataColor},
        {"Boolean", "BEna"_id, "BNam"_id, "bool", kDataBool},
    }};
    struct Channel {
        bool on = false;
        std::string name;
    };

    int32_t count = 16;
    bool countFromInput = false;
    std::array<std::array<Channel, 16>, 6> channels;
};

ZV_TOOL(KEffectDataChannelsCreate, ZV_DataChannelsCreate);
