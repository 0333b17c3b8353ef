// Beat: the envelope over one beat at hand-computed times, its start and end,
// rounding the end to a full beat, the BPM rate and what it shows, and the
// combine rules.
#include "support.h"

using namespace zvtest;

TEST(NumberBeat, SettingsAndTheValuesTheyGive)
{
    using Settings = std::vector<std::pair<const char*, double>>;
    const char* combine = "Combine value, connect to another Beat or so)";
    const struct { Settings set; std::vector<std::pair<float, float>> at; } cases[] = {  // at: time, value
        // Beat length 10; attack, decay, sustain and release 2 each; 1, 0.5 and 0:
        // the attack's end included, decay, sustain from 4, release, rest, the
        // next beat, and nothing past the end time.
        {{}, {{1, 0.5f}, {2, 1}, {3, 0.75f}, {4, 0.5f}, {6, 0.5f}, {7, 0.25f}, {8, 0}, {11, 0.5f}, {12.5f, 0.875f}, {1003, 0}}},
        // No attack starts at the maximum; no decay goes straight to the
        // sustain, yet an attack still ends on the maximum; no release drops to 0.
        {{{"Attack time", 0}}, {{0, 1}, {1, 0.75f}, {10, 1}}},
        {{{"Attack time", 0}, {"Decay time", 0}}, {{0, 0.5f}}},
        {{{"Decay time", 0}}, {{2, 1}, {2.5f, 0.5f}}},
        {{{"Attack time", 0}, {"Decay time", 0}, {"Release time", 0}}, {{1, 0.5f}, {2, 0}}},
        // Own levels and times: an attack starts at the minimum; at rest 0, not the minimum.
        {{{"Frequency", 12}, {"Attack time", 1}, {"Decay time", 1}, {"Sustain time", 4}, {"Release time", 2},
          {"Maximum value", 0.75}, {"Sustain value", 0.25}, {"Minimum value", 0.125}},
         {{0, 0.125f}, {0.5f, 0.4375f}, {1.5f, 0.5f}, {6, 0.25f}, {7, 0.1875f}, {9, 0}}},
        // Before the start and after the end: 0 plus the combine value; the
        // start starts a beat and the end time itself still counts.
        {{{"Start time", 5}, {"End time", 20}, {combine, 0.25}},
         {{4, 0.25f}, {5, 0.25f}, {7, 1.25f}, {20, 0.75f}, {20.5f, 0.25f}}},
        {{{"Start time", 5}, {"End time", 20}, {combine, 0.25}, {"How to combine value below", 1}}, {{4, 0}}},
        // Rounding the end completes the last beat: 25 moves to 30, 20 stays,
        // and from a start of 3, 1.7 beats become 2 with the end at 23.
        {{{"End time", 25}, {"Round end time to full beat cycle", 1}}, {{27, 0.25f}, {30, 0}, {31, 0}}},
        {{{"End time", 20}, {"Round end time to full beat cycle", 1}}, {{21, 0}}},
        {{{"End time", 20}, {"Round end time to full beat cycle", 1}, {"Start time", 3}}, {{20.5f, 0.125f}, {23.5f, 0}}},
        // Beats per minute replace the frequency: 15 frames a beat, then 10.
        {{{"Rate type", 1}, {"Frequency", 3}, {"Beats per Minute", 100}, {"Frames per Second", 25}}, {{14, 0}, {16, 0.5f}, {18, 0.75f}}},
        {{{"Rate type", 1}, {"Beats per Minute", 150}, {"Frames per Second", 25}}, {{11, 0.5f}}},
        // Add, multiply, maximum, minimum with the envelope's 0.5 at 1.
        {{{combine, 0.8}, {"How to combine value below", 0}}, {{1, 0.5f + 0.8f}}},
        {{{combine, 0.8}, {"How to combine value below", 1}}, {{1, 0.5f * 0.8f}}},
        {{{combine, 0.8}, {"How to combine value below", 2}}, {{1, 0.8f}}},
        {{{combine, 0.8}, {"How to combine value below", 3}}, {{1, 0.5f}}},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        Tool<> b("ZV_NumberBeat");
        for (const auto& [label, v] : cases[i].set) b.Set(label, v);
        for (const auto& [t, v] : cases[i].at) EXPECT_EQ(b.At(t), v) << "case " << i << " at " << t;
    }
}

TEST(NumberBeat, InterpolationChangesNothingAndTheRateTypeShowsItsControls)
{
    Tool<> b("ZV_NumberBeat");
    for (float t : {1.0f, 3.0f, 6.5f}) {
        b.SetInt("Interpolation", 1);
        const float a = b.At(t);
        b.SetInt("Interpolation", 0);
        EXPECT_EQ(b.At(t), a) << t;
    }
    ExpectShown("ZV_NumberBeat", {"Frequency", "BeatsperMinute", "FramesperSecond"},
                {{nullptr, 0, "100"}, {"Ratetype", 1, "011"}, {"Ratetype", 0, "100"}});
}
