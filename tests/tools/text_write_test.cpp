// Write: how many characters a "Write" value shows, the cursor and the
// prefix, and a Write typing into another text tool.
#include "support.h"

using namespace zvtest;

TEST(TextWrite, TruncatesWriteTimesLengthAndAHalfWithCursorAndPrefix)
{
    Tool<> w("ZV_TextWrite");
    // 10.5 truncates to 10, 9.975, 0.945; beyond the slider's ends never more than the text, never less than nothing.
    for (auto [write, want] : {std::pair{1.0f, "abcdefghij_"}, {0.95f, "abcdefghi_"}, {0.09f, "_"}, {2.0f, "abcdefghij_"},
                               {-1.0f, "_"}}) {
        w.SetFloat("Write", write);
        EXPECT_EQ(w.Of("Text", "abcdefghij"), want) << write;
    }
    w.Apply({{"Write", 0.5}, {"Cursor show", 0}});
    EXPECT_EQ(w.Of("Text", "typing"), "typ");
    w.SetBool("Prefix show", true);
    EXPECT_EQ(w.Of("Text", "typing"), "//typ");
    w.SetBool("Cursor show", true);
    w.SetText("Cursor", "|");
    w.SetText("Prefix", "> ");
    EXPECT_EQ(w.Of("Text", "typing"), "> typ|");
}

TEST(TextWrite, TypesIntoAFormulaOverFrames)
{
    host::Flow flow;
    auto& write = flow.Add("write", Registered("ZV_TextWrite"));
    auto& formula = flow.Add("formula", Registered("ZV_TextFormula"));
    flow.SetValue(write, In(write, "Text"), host::MakeText("hello"));
    flow.SetKeys(write, In(write, "Write"), {{0.0, 0.0}, {4.0, 1.0}});
    flow.SetValue(formula, In(formula, "Text"), host::MakeText("[t1] n1"));
    flow.Connect(formula, In(formula, "t1"), write, write.op->MainOutput());
    // "Write" is f / 4, so 5.5 * f / 4 characters.
    const char* want[] = {"[_] 0.00", "[h_] 0.00", "[he_] 0.00", "[hell_] 0.00", "[hello_] 0.00"};
    for (int frame = 0; frame <= 4; ++frame) {
        flow.BeginFrame();
        EXPECT_EQ(TextOf(flow.Evaluate(formula, formula.op->MainOutput(), frame)), want[frame]) << frame;
    }
}
