#include "data/effect_data.h"

KEffectData::KEffectData() { outputList.AddDataOutput(&output, "Output", "PDta"_id, 0); }

void KEffectData::FinishRender()
{
    made = Compute();
    output = made.get();
}

std::unique_ptr<KDataTable> KEachChannel(const KDataTable* input, const std::string& pattern,
                                         const KChannelRule& rule)
{
    auto table = std::make_unique<KDataTable>();
    if (!input) return table;
    for (size_t i = 0; i < input->ChannelCount(); ++i) {
        const KDataChannel& c = *input->Channel(i);
        table->Add(KDataNameMatches(pattern, c.name) ? rule(c.Clone()) : c.Clone());
    }
    return table;
}
