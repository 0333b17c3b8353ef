// Beat: an attack, decay, sustain, release envelope repeated once per beat
// between a start and an end time, combined with a value from elsewhere (often
// another Beat) so that patterns of accents can be stacked.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/registration.h"

class KEffectNumberBeat : public KEffectNumber {
public:
    KEffectNumberBeat()
    {
        inputList.AddMultiButton(&rateType, 0, "Rate type", "Type"_id, kFlagNotify,
                                 {"Frames/beat", "Beats/Minute (BPM)", "[end]"});
        inputList.AddSlider(&frequency, 10.0f, "Frequency", "TiFr"_id, 0, 0.0, 100.0);
        // Rate type 0 is the default, so the BPM pair starts hidden.
        inputList.AddSlider(&beatsPerMinute, 120.0f, "Beats per Minute", "TBPM"_id, kFlagHidden,
                            0.0001, 240.0);
        inputList.AddSlider(&framesPerSecond, 25.0f, "Frames per Second", "TFPS"_id, kFlagHidden,
                            0.0001, 30.0);
        inputList.AddSlider(&startTime, 0.0f, "Start time", "TiSt"_id, 0, 0.0, 100.0);
        inputList.AddSlider(&endTime, 1000.0f, "End time", "TiEn"_id, 0, 0.0, 1000.0);
        inputList.AddCheckbox(&roundEnd, false, "Round end time to full beat cycle", "TiER"_id, 0, 1);
        inputList.AddSlider(&attack, 2.0f, "Attack time", "TiAt"_id, 0, 0.0, 10.0);
        inputList.AddSlider(&decay, 2.0f, "Decay time", "TiDe"_id, 0, 0.0, 10.0);
        inputList.AddSlider(&sustainTime, 2.0f, "Sustain time", "TiSu"_id, 0, 0.0, 10.0);
        inputList.AddSlider(&release, 2.0f, "Release time", "TiRe"_id, 0, 0.0, 10.0);
        // Declared for the user, never read: the ramps are always linear.
        inputList.AddMultiButton(&interpolation, 1, "Interpolation", "RaIn"_id, 0,
                                 {"Linear", "Ease-in, Ease-out", "[end]"});
        inputList.AddSlider(&maximum, 1.0f, "Maximum value", "VaMa"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&sustain, 0.5f, "Sustain value", "VaSu"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&minimum, 0.0f, "Minimum value", "VaMi"_id, 0, 0.0, 1.0);
        inputList.AddMultiButton(&combineType, 0, "How to combine value below", "VaCT"_id, 0,
                                 {"Add", "Multiply", "Maximum", "Minimum", "[end]"});
        inputList.AddSlider(&combine, 0.0f, "Combine value, connect to another Beat or so)",
                            "VaCo"_id, 0, 0.0, 1.0);
        outputList.AddNumberOutput(&number, "Number", 1, 0);
    }

    void FinishRender() override
    {
        const float t = settings.time;
        if (rateType == 1) frequency = framesPerSecond * 60.0f / beatsPerMinute;
        const float beat = frequency;
        const float start = startTime;
        float end = endTime;
        if (roundEnd) {
            float q = (end - start) / beat;
            if (q != std::trunc(q)) q = std::trunc(q) + 1.0f;
            end = beat * q + start;
        }

        float v = 0.0f;
        if (t - start >= 0.0f && !(t > end)) {
            const float p = std::fmod(t - start, beat);
            const float a = attack, d = decay, u = sustainTime, r = release;
            if (p <= a && a > 0.0f)
                v = (maximum - minimum) * p / a + minimum;
            else if (p < a + d && d > 0.0f)
                v = (sustain - maximum) * (p - a) / d + maximum;
            else if (p < a + d + u)
                v = sustain;
            else if (p < a + d + u + r && r > 0.0f)
                v = (p - a - d - u) * (minimum - sustain) / r + sustain;
            // Past the release the value is 0, not the minimum.
        }

        switch (combineType) {
        case 0: v = v + combine; break;
        case 1: v = v * combine; break;
        case 2: v = std::max(v, combine); break;
        case 3: v = std::min(v, combine); break;
        default: break;
        }
        number = v;
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "Type"_id) {
            const bool bpm = value.intValue == 1;
            list.Add(kMessageVisible, "TiFr"_id, value.intValue == 0 ? 1.0f : 0.0f);
            list.Add(kMessageVisible, "TBPM"_id, bpm ? 1.0f : 0.0f);
            list.Add(kMessageVisible, "TFPS"_id, bpm ? 1.0f : 0.0f);
        }
        return list;
    }

private:
    int32_t rateType = 0;
    float frequency = 10.0f;
    float beatsPerMinute = 120.0f;
    float framesPerSecond = 25.0f;
    float startTime = 0.0f;
    float endTime = 1000.0f;
    bool roundEnd = false;
    float attack = 2.0f, decay = 2.0f, sustainTime = 2.0f, release = 2.0f;
    int32_t interpolation = 1;
    float maximum = 1.0f, sustain = 0.5f, minimum = 0.0f;
    int32_t combineType = 0;
    float combine = 0.0f;
    float number = 0.0f;
};

ZV_TOOL(KEffectNumberBeat, ZV_NumberBeat);
