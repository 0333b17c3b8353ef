// Juggle: swaps worked out beforehand from the hash, line breaks and tabs
// that never move, spaces kept in place on request, the same jumble for the
// same frame, and the sliders that do nothing.
#include <algorithm>
#include "support.h"

using namespace zvtest;

namespace {

struct Juggle : Tool<> {
    Juggle() : Tool("ZV_TextJuggle") {}
    std::string Of(const std::string& text, float amount, float t)
    {
        SetFloat("Juggle characters", amount);
        return Tool::Of("Text", text, t);
    }
};

TEST(TextJuggle, SwapsWorkedOutFromTheHash)
{
    const struct { const char* text; float amount, time; bool keepSpaces; const char* want; } rows[] = {
        // "abcdef" at 0.5: six rounds; at 1.0 twelve.
        {"abcdef", 0.5f, 3, false, "dbcfea"}, {"abcdef", 0.5f, 4, false, "aecbfd"},
        {"abcdef", 1.0f, 3, false, "fecdab"}, {"Zelvarine", 0.25f, 12, false, "Zlenvaire"},
        {"x", 1.0f, 5, false, "x"}, {"", 1.0f, 5, false, ""},
        {"leave me be", 0.0f, 17.5f, false, "leave me be"},
        {"leave me be", 0.04f, 3, false, "leave me be"},  // 2 * 0.04 * 11 truncates to 0 rounds
        // Breaks and tabs stay; spaces too on request.
        {"ab cd\tef\ngh", 1.0f, 2, false, "ehacg\t d\nbf"}, {"ab cd\tef\ngh", 1.0f, 2, true, "eh cg\tfd\nba"},
        {"  a b  c ", 1.0f, 5, true, "  b c  a "}, {"  a b  c ", 1.0f, 5, false, "c a    b "},
    };
    Juggle j;
    for (const auto& r : rows) {
        j.SetBool("Keep spaces in place", r.keepSpaces);
        EXPECT_EQ(j.Of(r.text, r.amount, r.time), r.want) << r.text << " at " << r.time;
    }
}

TEST(TextJuggle, BreaksStayNoCharacterIsLostAndOnlyCharactersHaveAnEffect)
{
    Juggle j;
    const std::string lines = "one\r\ntwo\tthree\nfour";
    std::string sorted = lines;
    std::sort(sorted.begin(), sorted.end());
    for (float t = 0.0f; t < 20.0f; t += 1.0f) {
        std::string out = j.Of(lines, 1.0f, t);
        ASSERT_EQ(out.size(), lines.size());
        for (size_t i = 0; i < lines.size(); ++i)
            EXPECT_TRUE(std::string("\r\n\t").find(lines[i]) == std::string::npos || out[i] == lines[i]) << t;
        std::sort(out.begin(), out.end());
        EXPECT_EQ(out, sorted) << t;
    }
    const std::string at3 = j.Of("the quick brown fox", 0.5f, 3.0f);
    EXPECT_NE(j.Of("the quick brown fox", 0.5f, 4.0f), at3);
    for (const char* label : {"Juggle characters within word", "Juggle characters within line", "Juggle words",
                              "Juggle words within line", "Juggle lines"})
        j.SetFloat(label, 1.0f);
    EXPECT_EQ(j.Of("the quick brown fox", 0.5f, 3.0f), at3);  // the same frame, the same jumble
}

}  // namespace
