// Write: how many characters a "Write" value shows, the cursor and the
// prefix, the declarations, and a Write typing into another text tool.
#include <gtest/gtest.h>
#include <string>
#include <vector>
#include "value_driver.h"

using namespace zvvalue;

namespace {

struct Write : Tool {
    Write() : Tool("ZV_TextWrite") {}
    std::string Of(const std::string& text, float write)
    {
        SetText("Text", text);
        SetFloat("Write", write);
        Run(0.0f);
        return Text();
    }
};

TEST(TextWriteCount, TruncatesWriteTimesLengthAndAHalf)
{
    Write w;
    const std::string ten = "abcdefghij";
    EXPECT_EQ(w.Of(ten, 1.0f), "abcdefghij_");  // 10.5 truncates to 10
    EXPECT_EQ(w.Of(ten, 0.96f), "abcdefghij_");  // 10.08
    EXPECT_EQ(w.Of(ten, 0.95f), "abcdefghi_");   // 9.975
    EXPECT_EQ(w.Of(ten, 0.5f), "abcde_");        // 5.25
    EXPECT_EQ(w.Of(ten, 0.09f), "_");            // 0.945
    EXPECT_EQ(w.Of(ten, 0.0f), "_");
    EXPECT_EQ(w.Of("", 1.0f), "_");
    // Beyond the slider's ends: never more than the text, never less than nothing.
    EXPECT_EQ(w.Of(ten, 2.0f), "abcdefghij_");
    EXPECT_EQ(w.Of(ten, -1.0f), "_");
}

TEST(TextWriteCursor, CursorAndPrefix)
{
    Write w;
    w.SetBool("Cursor show", false);
    EXPECT_EQ(w.Of("typing", 0.5f), "typ");
    w.SetBool("Prefix show", true);
    EXPECT_EQ(w.Of("typing", 0.5f), "//typ");
    w.SetBool("Cursor show", true);
    w.SetText("Cursor", "|");
    w.SetText("Prefix", "> ");
    EXPECT_EQ(w.Of("typing", 0.5f), "> typ|");
    EXPECT_EQ(w.Of("typing", 0.0f), "> |");
}

TEST(TextWriteDeclarations, InputsAsTheHostShowsThem)
{
    Write w;
    const auto& op = *w.op;
    EXPECT_EQ(op.Pages().front(), "Text Write");
    const std::vector<std::string> want = {"Text", "Write", "Cursor", "Cursorshow", "Prefix", "Prefixshow"};
    EXPECT_EQ(FirstInputIds(op, want.size()), want);
    EXPECT_EQ(op.FindInput("Text")->attrs.controlParam, 5);
    EXPECT_EQ(*op.FindInput("Text")->attrs.defaultText, "");
    ExpectNumberInputs(op, {{"Write", "Write", 1, 0, 1}});
    EXPECT_EQ(op.FindInput("Cursor")->attrs.controlParam, 2);
    EXPECT_EQ(*op.FindInput("Cursor")->attrs.defaultText, "_");
    EXPECT_EQ(*op.FindInput("Cursorshow")->attrs.defaultNumber, 1.0);
    EXPECT_EQ(op.FindInput("Prefix")->attrs.controlParam, 2);
    EXPECT_EQ(*op.FindInput("Prefix")->attrs.defaultText, "//");
    EXPECT_EQ(*op.FindInput("Prefixshow")->attrs.defaultNumber, 0.0);
    EXPECT_EQ(ValueCodes(*w.effect), (std::vector<uint32_t>{"Text"_id, "TxWr"_id, "CuTx"_id, "CuSh"_id,
                                                            "PrTx"_id, "PrSh"_id}));
    EXPECT_EQ(op.MainOutput()->id, "Output");
    EXPECT_EQ(op.MainOutput()->dataType, host::DataType::Text);
}

TEST(TextWriteFlow, TypesIntoAFormulaOverFrames)
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
        EXPECT_EQ(TextOf(flow.Evaluate(formula, formula.op->MainOutput(), frame)), want[frame])
            << frame;
    }
}

}  // namespace
