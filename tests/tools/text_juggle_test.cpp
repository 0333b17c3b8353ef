// Juggle: swaps worked out beforehand from the hash, line breaks and tabs
// that never move, spaces kept in place on request, the same jumble for the
// same frame, the sliders that do nothing, and the declarations.
#include <gtest/gtest.h>
#include <algorithm>
#include <string>
#include <vector>
#include "value_driver.h"

using namespace zvvalue;

namespace {

struct Juggle : Tool {
    Juggle() : Tool("ZV_TextJuggle") {}
    std::string Of(const std::string& text, float amount, float t)
    {
        SetText("Text", text);
        SetFloat("Juggle characters", amount);
        Run(t);
        return Text();
    }
};

TEST(TextJuggleSwaps, WorkedOutFromTheHash)
{
    Juggle j;
    // "abcdef" at 0.5: six rounds; at 1.0 twelve.
    EXPECT_EQ(j.Of("abcdef", 0.5f, 3.0f), "dbcfea");
    EXPECT_EQ(j.Of("abcdef", 0.5f, 4.0f), "aecbfd");
    EXPECT_EQ(j.Of("abcdef", 1.0f, 3.0f), "fecdab");
    EXPECT_EQ(j.Of("Zelvarine", 0.25f, 12.0f), "Zlenvaire");
    EXPECT_EQ(j.Of("x", 1.0f, 5.0f), "x");
    EXPECT_EQ(j.Of("", 1.0f, 5.0f), "");
}

TEST(TextJuggleSwaps, ZeroLeavesTheTextAlone)
{
    Juggle j;
    for (float t : {0.0f, 1.0f, 17.5f}) EXPECT_EQ(j.Of("leave me be", 0.0f, t), "leave me be");
    // Below one round: 2 * 0.04 * 11 truncates to 0.
    EXPECT_EQ(j.Of("leave me be", 0.04f, 3.0f), "leave me be");
}

TEST(TextJuggleSwaps, BreaksAndTabsStayAndSpacesOnRequest)
{
    Juggle j;
    const std::string text = "ab cd\tef\ngh";
    EXPECT_EQ(j.Of(text, 1.0f, 2.0f), "ehacg\t d\nbf");
    j.SetBool("Keep spaces in place", true);
    EXPECT_EQ(j.Of(text, 1.0f, 2.0f), "eh cg\tfd\nba");
    EXPECT_EQ(j.Of("  a b  c ", 1.0f, 5.0f), "  b c  a ");
    j.SetBool("Keep spaces in place", false);
    EXPECT_EQ(j.Of("  a b  c ", 1.0f, 5.0f), "c a    b ");
    // Whatever the frame, the breaks stay where they were and no character is lost.
    const std::string lines = "one\r\ntwo\tthree\nfour";
    for (float t = 0.0f; t < 20.0f; t += 1.0f) {
        const std::string out = j.Of(lines, 1.0f, t);
        ASSERT_EQ(out.size(), lines.size());
        for (size_t i = 0; i < lines.size(); ++i) {
            if (lines[i] == '\r' || lines[i] == '\n' || lines[i] == '\t') {
                EXPECT_EQ(out[i], lines[i]) << t << " " << i;
            }
        }
        std::string a = out, b = lines;
        std::sort(a.begin(), a.end());
        std::sort(b.begin(), b.end());
        EXPECT_EQ(a, b);
    }
}

TEST(TextJuggleSwaps, TheSameFrameGivesTheSameJumble)
{
    Juggle j;
    const std::string at3 = j.Of("the quick brown fox", 0.5f, 3.0f);
    EXPECT_NE(j.Of("the quick brown fox", 0.5f, 4.0f), at3);
    EXPECT_EQ(j.Of("the quick brown fox", 0.5f, 3.0f), at3);
}

TEST(TextJuggleSwaps, OnlyCharactersAndSpacesHaveAnEffect)
{
    Juggle j;
    const std::string plain = j.Of("the quick brown fox", 0.5f, 3.0f);
    for (const char* label : {"Juggle characters within word", "Juggle characters within line",
                              "Juggle words", "Juggle words within line", "Juggle lines"})
        j.SetFloat(label, 1.0f);
    EXPECT_EQ(j.Of("the quick brown fox", 0.5f, 3.0f), plain);
}

TEST(TextJuggleDeclarations, InputsAsTheHostShowsThem)
{
    Juggle j;
    const auto& op = *j.op;
    EXPECT_EQ(op.Pages().front(), "Text Juggle");
    const std::vector<std::string> want = {"Text", "Jugglecharacters", "Jugglecharacterswithinword",
                                           "Jugglecharacterswithinline", "Jugglewords",
                                           "Jugglewordswithinline", "Jugglelines",
                                           "Keepspacesinplace"};
    EXPECT_EQ(FirstInputIds(op, want.size()), want);
    EXPECT_EQ(op.FindInput("Text")->attrs.controlParam, 10);
    for (size_t i = 1; i < 7; ++i) {
        EXPECT_EQ(op.FindInput(want[i])->attrs.control, host::Control::Slider) << want[i];
        ExpectNumberInputs(op, {{want[i].c_str(), op.FindInput(want[i])->name.c_str(), 0, 0, 1}});
    }
    EXPECT_EQ(op.FindInput("Keepspacesinplace")->attrs.control, host::Control::Checkbox);
    EXPECT_EQ(*op.FindInput("Keepspacesinplace")->attrs.defaultNumber, 0.0);
    EXPECT_EQ(ValueCodes(*j.effect), (std::vector<uint32_t>{"Text"_id, "JuCh"_id, "JuCW"_id, "JuCL"_id,
                                                            "JuWo"_id, "JuWL"_id, "JuLi"_id, "JuKS"_id}));
    EXPECT_EQ(op.MainOutput()->id, "Output");
    EXPECT_EQ(op.MainOutput()->dataType, host::DataType::Text);
}

}  // namespace
