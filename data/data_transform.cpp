// dTransform: moves, turns and scales the Vector3 channels it names by its
// "Transform"; a multiplier channel sets how much of the transform each
// element gets (0 none, 1 all of it).
#include "data/effect_data.h"
#include "framework/geometry.h"
#include "framework/registration.h"

class KEffectDataTransform : public KEffectData {
public:
    KEffectDataTransform()
    {
        AddDataInput();
        inputList.AddLabel("Data Transform", 0, 0);
        inputList.AddTextEdit(&pattern, "*", "Channel Name (3f in/out)", "CNam"_id, 0, 1);
        inputList.AddTextEdit(&multiplierName, "multiplier", "Channel Name Multiplier (in)", "CNMu"_id, 0, 1);
        inputList.AddTransform(&transform, KTransformValue{}, "Transform", "PeCT"_id, 0, 0);
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        const KDataChannel* multiplier = input ? input->FindAny(multiplierName, kDataAny) : nullptr;
        const Matrix4f whole = Matrix4f::Of(transform);
        return KEachChannel(input, pattern, [&](std::unique_ptr<KDataChannel> c) {
            if (c->type != kDataVector3) return c;
            for (int32_t i = 0; i < c->count; ++i) {
                float* e = c->floats.data() + size_t(i) * 3;
                const Matrix4f m = multiplier ? Matrix4f::Of(transform, Amount(*multiplier, i)) : whole;
                const Vector3f p = m.Apply({e[0], e[1], e[2]});
                e[0] = p.x, e[1] = p.y, e[2] = p.z;
            }
            return c;
        });
    }

private:
    // Element i's first component, its integer, or 0 (also past its end).
    static float Amount(const KDataChannel& c, int32_t i)
    {
        if (i >= c.count) return 0.0f;
        if (c.floatComponents) return c.floats[size_t(i) * c.floatComponents];
        return c.intComponents ? float(c.ints[size_t(i)]) : 0.0f;
    }

    std::string pattern = "*", multiplierName = "multiplier";
    KTransformValue transform;
};

ZV_TOOL(KEffectDataTransform, ZV_DataTransform);
