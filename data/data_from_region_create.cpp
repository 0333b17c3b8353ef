// dFrom Region Create: the value of a region at each item's position, written
// into a Float channel, blended from the value there before (or from "Value
// Outside Region") toward "Value" as far as the item lies inside.
#include "data/data_from_region_create.h"
#include "data/effect_data.h"
#include "framework/registration.h"
#include "region/region.h"

std::unique_ptr<KDataTable> KSampleRegion(const KDataTable* input, const KRegion3D* region, KRegionSampling& how)
{
    std::unique_ptr<KDataTable> table = input ? input->Clone() : std::make_unique<KDataTable>();
    if (!input || !region) return table;
    const KDataChannel* position = input->FindCompatible(how.positionName, kDataVector3);
    if (!position) return table;
    KDataChannel* value = table->FindCompatible(how.valueName, kDataFloat);
    if (!value) {
        if (!KDataNameUsable(how.valueName)) return table;
        table->Add(KDataChannel::Create(how.valueName, kDataFloat, position->count));
        value = table->Channel(table->ChannelCount() - 1);
        // A channel of its own has nothing to keep: from now on the tool replaces all.
        how.replaceAll = true;
    }
    const int32_t n = std::min(position->count, value->count);
    const float* p = position->floats.data();
    for (int32_t i = 0; i < n; ++i, p += position->floatComponents) {
        const float r = region->Value({p[0], p[1], p[2]});
        float& element = value->floats[static_cast<size_t>(i) * value->floatComponents];
        const float base = how.replaceAll ? how.outside : element;
        element = (how.value - base) * r + base;
    }
    return table;
}

class KEffectDataFromRegion3DCreate : public KEffectData {
public:
    KEffectDataFromRegion3DCreate()
    {
        AddDataInput();
        inputList.AddRegion3DInput(&region, "Region", 2, kFlagMain);
        inputList.AddLabel("Data Region Create", 0, 0);
        inputList.AddTextEdit(&how.positionName, "position", "Channel Name Position (3f in)", "CNPo"_id, 0, 1);
        inputList.AddTextEdit(&how.valueName, "value", "Channel Name Region Value (1f out)", "CNRV"_id, 0, 1);
        inputList.AddCombo(&replaceType, 0, "Replace Type", "ReRe"_id, 0,
                           {"Replace in Region", "Replace All", "[end]"});
        inputList.AddSlider(&how.value, 1.0f, "Value", "CNMa"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&how.outside, 0.0f, "Value Outside Region", "CNMi"_id, 0, 0.0, 1.0);
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        how.replaceAll = replaceType == 1;
        std::unique_ptr<KDataTable> table = KSampleRegion(input, region, how);
        if (how.replaceAll) replaceType = 1;
        return table;
    }

private:
    KRegion3D* region = nullptr;
    KRegionSampling how;
    int32_t replaceType = 0;
};

ZV_TOOL(KEffectDataFromRegion3DCreate, ZV_DataFromRegion3DCreate);
