// dRemap: maps the first component of the float channels it names from a
// source range (set, or the channel's own minimum and maximum) to a
// destination range. Integer and Bool channels come through unchanged.
#include "data/effect_data.h"
#include "framework/registration.h"

class KEffectDataRemap : public KEffectData {
public:
    KEffectDataRemap()
    {
        DeclareChannelTool("Data Remap", &pattern, "*");
        inputList.AddMultiButton(&fromMinimum, 0, "Source Minumum", "SMin"_id, kFlagNotify,
                                 {"Value", "Minumum", "[end]"});
        inputList.AddSlider(&sourceMin, 0.0f, "Source Minimum Value", "SMiV"_id, 0, 0.0, 1.0);
        inputList.AddMultiButton(&fromMaximum, 1, "Source Maximum", "SMax"_id, kFlagNotify,
                                 {"Value", "Maximum", "[end]"});
        inputList.AddSlider(&sourceMax, 1.0f, "Source Maximum Value", "SMaV"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&destMin, 0.0f, "Destination Minimum Value", "DMiV"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&destMax, 1.0f, "Destination Maximum Value", "DMaV"_id, 0, 0.0, 1.0);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        // "Value" shows the value it stands for; the channel's own bound hides it.
        KMessageList list;
        if (id == "SMin"_id) list.Add(kMessageVisible, "SMiV"_id, value.intValue == 0 ? 1.0f : 0.0f);
        if (id == "SMax"_id) list.Add(kMessageVisible, "SMaV"_id, value.intValue == 0 ? 1.0f : 0.0f);
        return list;
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        return KEachChannel(input, pattern, [this](std::unique_ptr<KDataChannel> c) {
            if (!c->floatComponents) return c;
            // A bound taken from a channel stays in the tool for the channels after it.
            if (fromMinimum == 1) sourceMin = c->Minimum();
            if (fromMaximum == 1) sourceMax = c->Maximum();
            float span = sourceMax - sourceMin;
            if (span == 0.0f) span = 1.0f;
            const float k = (destMax - destMin) / span;
            for (int32_t e = 0; e < c->count; ++e) {
                float& x = c->floats[size_t(e) * c->floatComponents];
                x = (x - sourceMin) * k + destMin;
            }
            return c;
        });
    }

private:
    std::string pattern = "*";
    int32_t fromMinimum = 0, fromMaximum = 1;
    float sourceMin = 0.0f, sourceMax = 1.0f, destMin = 0.0f, destMax = 1.0f;
};

ZV_TOOL(KEffectDataRemap, ZV_DataRemap);
