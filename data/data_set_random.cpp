// dSet Random: sets, adds or multiplies the channels it names by random
// values between the minimum and maximum of their type. Each channel starts
// the generator afresh from "Seed", so channels of one type get the same numbers.
#include "data/effect_data.h"
#include "framework/numeric.h"
#include "framework/registration.h"

class KEffectDataSetRandom : public KEffectData {
public:
    KEffectDataSetRandom()
    {
        DeclareChannelTool("Data Set Random", &pattern, "*");
        inputList.AddSlider(&bias, 0.0f, "Bias", "Bias"_id, 0, -1.0, 1.0);
        inputList.AddSeed(&seed, "Seed", 0, 0);
        inputList.AddMultiButton(&mode, 0, "Type", "Type"_id, 0, {"Replace", "Add", "Multiply", "[end]"});
        bounds.Declare(inputList, "V3Mi"_id, "V3Ma"_id);
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        return KEachChannel(input, pattern, [this](std::unique_ptr<KDataChannel> c) {
            KRandomSeed(seed);
            const KDataBounds& b = bounds;
            auto set = [this](float& x, float lo, float hi) { x = KApplyMode(mode, x, KRandomRange(lo, hi)); };
            float* f = c->floats.data();
            // Components are drawn last to first: alpha before red, z before x.
            for (int32_t i = 0; i < c->count; ++i) {
                int32_t* n = c->intComponents ? &c->ints[size_t(i)] : nullptr;
                float* e = f + size_t(i) * c->floatComponents;
                switch (c->type) {
                case kDataBool: *n = KApplyMode(mode, *n, static_cast<int32_t>(KRandom(1.0f)) > 0.5f ? 1 : 0); break;
                case kDataInteger: *n = KApplyMode(mode, *n, KRandomIntRange(b.intMin, b.intMax)); break;
                case kDataFloat: set(e[0], b.floatMin, b.floatMax); break;
                case kDataVector2:
                    set(e[1], b.vector2Min.y, b.vector2Max.y);
                    set(e[0], b.vector2Min.x, b.vector2Max.x);
                    break;
                case kDataVector3:
                    set(e[2], b.vector3Min.z, b.vector3Max.z);
                    set(e[1], b.vector3Min.y, b.vector3Max.y);
                    set(e[0], b.vector3Min.x, b.vector3Max.x);
                    break;
                case kDataColor:
                    set(e[3], b.colorMin.a, b.colorMax.a);
                    set(e[2], b.colorMin.b, b.colorMax.b);
                    set(e[1], b.colorMin.g, b.colorMax.g);
                    set(e[0], b.colorMin.r, b.colorMax.r);
                    break;
                default: return c;
                }
            }
            return c;
        });
    }

private:
    std::string pattern = "*";
    float bias = 0.0f;  // has no effect on the numbers
    int32_t seed = 0, mode = 0;
    KDataBounds bounds;
};

ZV_TOOL(KEffectDataSetRandom, ZV_DataSetRandom);
