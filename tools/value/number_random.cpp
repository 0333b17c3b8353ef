// Random: a number between a minimum and a maximum that changes with time.
// Each value is a hash of the time and the seed, so scrubbing back and forth
// gives the same numbers; between new values it steps, blends or eases.
#include <cmath>
#include "framework/effect.h"
#include "framework/numeric.h"
#include "framework/registration.h"

class KEffectNumberRandom : public KEffectNumber {
public:
    KEffectNumberRandom()
    {
        inputList.AddSlider(&minimum, 0.0f, "Minimum value", "RaMi"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&maximum, 1.0f, "Maximum value", "RaMa"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&seed, 1234, "Seed", "RaSe"_id, 0, 0, 10000);
        inputList.AddCheckbox(&everyFrame, false, "New value for every field/frame", "RaEv"_id,
                              kFlagNotify, 1);
        inputList.AddSlider(&period, 5.0f, "New value every ... frames", "RaFr"_id, 0, 0.00001,
                            25.0);
        inputList.AddCombo(&interpolation, 1, "Interpolation", "RaIn"_id, 0,
                           {"Step", "Linear", "Ease-in, Ease-out", "[end]"});
        outputList.AddNumberOutput(&number, "Number", 1, 0);
    }

    void FinishRender() override
    {
        const float t = settings.time;
        float r;
        if (everyFrame) {
            r = KTimeNoise(t, seed);
        } else {
            const float phase = std::fmod(t, period);
            const float base = t - phase;
            if (interpolation == 0) {
                r = KTimeNoise(base, seed);
            } else {
                float w = phase / period;
                if (interpolation == 2)
                    w = static_cast<float>(0.5 - std::cos(w * 3.141592653589793) * 0.5);
                r = KTimeNoise(base + period, seed) * w + KTimeNoise(base, seed) * (1.0f - w);
            }
        }
        number = (maximum - minimum) * r + minimum;
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "RaEv"_id) {
            const float show = value.intValue > 0 ? 0.0f : 1.0f;
            list.Add(kMessageVisible, "RaFr"_id, show);
            list.Add(kMessageVisible, "RaIn"_id, show);
        }
        return list;
    }

private:
    float minimum = 0.0f, maximum = 1.0f;
    int32_t seed = 1234;
    bool everyFrame = false;
    float period = 5.0f;
    int32_t interpolation = 1;
    float number = 0.0f;
};

ZV_TOOL(KEffectNumberRandom, ZV_NumberRandom);
