// Juggle: swaps characters of a text at random, more of them as "Juggle
// characters" rises. The swaps are a hash of the time, so a frame always
// shows the same jumble; line breaks and tabs never move.
#include <algorithm>
#include <string>
#include "framework/effect.h"
#include "framework/numeric.h"
#include "framework/registration.h"

class KEffectTextJuggle : public KEffectText {
public:
    KEffectTextJuggle()
    {
        inputList.AddPage("Text Juggle");
        inputList.AddTextEdit(&text, "", "Text", "Text"_id, 0, 10);
        inputList.AddSlider(&characters, 0.0f, "Juggle characters", "JuCh"_id, 0, 0.0, 1.0);
        // The finer juggles are declared and have never been carried out.
        inputList.AddSlider(&withinWord, 0.0f, "Juggle characters within word", "JuCW"_id, 0, 0.0,
                            1.0);
        inputList.AddSlider(&withinLine, 0.0f, "Juggle characters within line", "JuCL"_id, 0, 0.0,
                            1.0);
        inputList.AddSlider(&words, 0.0f, "Juggle words", "JuWo"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&wordsWithinLine, 0.0f, "Juggle words within line", "JuWL"_id, 0, 0.0,
                            1.0);
        inputList.AddSlider(&lines, 0.0f, "Juggle lines", "JuLi"_id, 0, 0.0, 1.0);
        inputList.AddCheckbox(&keepSpaces, false, "Keep spaces in place", "JuKS"_id, 0, 1);
        outputList.AddTextOutput(&output, "Output", 1, 0);
    }

    void FinishRender() override
    {
        const float t = settings.time;
        const int32_t length = static_cast<int32_t>(text.size());
        const int32_t rounds = static_cast<int32_t>(2.0f * characters * static_cast<float>(length));
        std::string s = text;
        int32_t c = 0;
        for (int32_t round = 0; round < rounds; ++round, c += 7) {
            const int32_t i = Pick(length, t, c);
            const int32_t j = Pick(length, t, c + 101);
            if (Fixed(s[i]) || Fixed(s[j])) continue;
            std::swap(s[i], s[j]);
        }
        output = s;
    }

private:
    static int32_t Pick(int32_t length, float t, int32_t seed)
    {
        const int32_t k = static_cast<int32_t>(static_cast<float>(length) * KTimeNoise(t, seed));
        return std::min(k, length - 1);
    }

    bool Fixed(char ch) const
    {
        return ch == '\t' || ch == '\n' || ch == '\r' || (keepSpaces && ch == ' ');
    }

    std::string text;
    float characters = 0.0f;
    float withinWord = 0.0f, withinLine = 0.0f, words = 0.0f, wordsWithinLine = 0.0f, lines = 0.0f;
    bool keepSpaces = false;
    std::string output;
};

ZV_TOOL(KEffectTextJuggle, ZV_TextJuggle);
