// dSet Ramp: sets, adds or multiplies the channels it names by a ramp from
// the minimum of their type at the first element to the maximum at the last.
#include "data/effect_data.h"
#include "framework/registration.h"

class KEffectDataSetRamp : public KEffectData {
public:
    KEffectDataSetRamp()
    {
        DeclareChannelTool("Data Set Ramp", &pattern, "*");
        inputList.AddMultiButton(&mode, 0, "Type", "Type"_id, 0, {"Replace", "Add", "Multiply", "[end]"});
        bounds.Declare(inputList, "VeMi"_id, "VeMa"_id);
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        return KEachChannel(input, pattern, [this](std::unique_ptr<KDataChannel> c) {
            const float lo2[2] = {bounds.vector2Min.x, bounds.vector2Min.y};
            const float hi2[2] = {bounds.vector2Max.x, bounds.vector2Max.y};
            const float lo3[3] = {bounds.vector3Min.x, bounds.vector3Min.y, bounds.vector3Min.z};
            const float hi3[3] = {bounds.vector3Max.x, bounds.vector3Max.y, bounds.vector3Max.z};
            const KColor& l = bounds.colorMin;
            const KColor& h = bounds.colorMax;
            const float lo4[4] = {l.r, l.g, l.b, l.a}, hi4[4] = {h.r, h.g, h.b, h.a};
            const float* lo = nullptr;
            const float* hi = nullptr;
            switch (c->type) {
            case kDataInteger: break;
            case kDataFloat: lo = &bounds.floatMin, hi = &bounds.floatMax; break;
            case kDataVector2: lo = lo2, hi = hi2; break;
            case kDataVector3: lo = lo3, hi = hi3; break;
            case kDataColor: lo = lo4, hi = hi4; break;
            default: return c;  // Bool and the rest stay
            }
            const int32_t n = c->count, fc = c->floatComponents;
            for (int32_t i = 0; i < n; ++i) {
                const float t = n == 1 ? 1.0f : float(i) / float(n - 1), u = 1.0f - t;
                if (c->type == kDataInteger) {
                    const int32_t v = static_cast<int32_t>(float(bounds.intMin) * u + float(bounds.intMax) * t);
                    c->ints[size_t(i)] = KApplyMode(mode, c->ints[size_t(i)], v);
                    continue;
                }
                float* e = c->floats.data() + size_t(i) * fc;
                for (int32_t k = 0; k < fc; ++k) e[k] = KApplyMode(mode, e[k], u * lo[k] + t * hi[k]);
            }
            return c;
        });
    }

private:
    std::string pattern = "*";
    int32_t mode = 0;
    KDataBounds bounds;
};

ZV_TOOL(KEffectDataSetRamp, ZV_DataSetRamp);
