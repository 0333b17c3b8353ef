#include "data/effect_data.h"

KEffectData::KEffectData() { outputList.AddDataOutput(&output, "Output", "PDta"_id, 0); }

void KEffectData::FinishRender()
{
    made = Compute();
    output = made.get();
}
