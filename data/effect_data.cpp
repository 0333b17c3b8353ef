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
        // A channel the rule does not touch is passed on, not copied.
        if (KDataNameMatches(pattern, c.name)) table->Add(rule(c.Clone()));
        else table->AddShared(*input, i);
    }
    return table;
}

void KDataBounds::Declare(KParameterList& list, uint32_t vector3MinId, uint32_t vector3MaxId)
{
    list.BeginNest("Integer", 0, 0);
    list.AddSlider(&intMin, 0, "Integer Minimum", "InMi"_id, 0, 1, 100);
    list.AddSlider(&intMax, 10, "Integer Maximum", "InMa"_id, 0, 1, 100);
    list.EndNest();
    list.BeginNest("Float", 0, 0);
    list.AddSlider(&floatMin, 0.0f, "Float Minimum", "FlMi"_id, 0, 0.0, 10.0);
    list.AddSlider(&floatMax, 1.0f, "Float Maximum", "FlMa"_id, 0, 0.0, 10.0);
    list.EndNest();
    list.BeginNest("Vector 2", 0, 0);
    list.AddPoint(&vector2Min, {0.0f, 0.0f}, "Vector2 Minimum", "V2Mi"_id, 0, 0);
    list.AddPoint(&vector2Max, {1.0f, 1.0f}, "Vector2 Maximum", "V2Ma"_id, 0, 0);
    list.EndNest();
    list.BeginNest("Vector 3", 0, 0);
    list.AddXYZ(&vector3Min, {0.0f, 0.0f, 0.0f}, "Vector3 Minimum", vector3MinId, 0);
    list.AddXYZ(&vector3Max, {1.0f, 1.0f, 1.0f}, "Vector3 Maximum", vector3MaxId, 0);
    list.EndNest();
    list.BeginNest("Color", 0, 0);
    list.AddColor(&colorMin, {0.0f, 0.0f, 0.0f, 0.0f}, "Color Minimum", "CoMi"_id, 0);
    list.AddColor(&colorMax, {1.0f, 1.0f, 1.0f, 1.0f}, "Color Maximum", "CoMa"_id, 0);
    list.EndNest();
}
