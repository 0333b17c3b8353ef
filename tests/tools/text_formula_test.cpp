// Formula: number formatting with its digits, zeros, signs and the padding
// switch it borrows from the number settings; literal replacement in its
// order; the declarations; a Random feeding a number input in a flow.
#include <gtest/gtest.h>
#include <cstdio>
#include <string>
#include <vector>
#include "value_driver.h"

using namespace zvvalue;

namespace {

struct Formula : Tool {
    Formula() : Tool("ZV_TextFormula") {}
    std::string Of(const std::string& text)
    {
        SetText("Text", text);
        Run(0.0f);
        return Text();
    }
};

TEST(TextFormulaFormat, DigitsBeforeTheDotAndLeadingZeros)
{
    Formula f;
    f.SetFloat("n1", 1.5f);
    EXPECT_EQ(f.Of("n1"), "1.50");
    f.SetInt("Minimum number value digits before dot", 3);
    EXPECT_EQ(f.Of("n1"), "  1.50");
    f.SetBool("Leading zero's (number values)", true);
    EXPECT_EQ(f.Of("n1"), "001.50");
    f.SetFloat("n1", 12.5f);
    EXPECT_EQ(f.Of("n1"), "012.50");
    f.SetFloat("n1", 123.0f);
    EXPECT_EQ(f.Of("n1"), "123.00");
    // The digit count follows the rounded value: 9.996 prints as 10.00.
    f.SetInt("Minimum number value digits before dot", 2);
    f.SetFloat("n1", 9.996f);
    EXPECT_EQ(f.Of("n1"), "10.00");
    f.SetFloat("n1", 9.994f);
    EXPECT_EQ(f.Of("n1"), "09.99");
}

TEST(TextFormulaFormat, SignsAndTheSpaceForPositiveValues)
{
    Formula f;
    f.SetFloat("n1", -1.5f);
    f.SetBool("Leading zero's (number values)", true);
    EXPECT_EQ(f.Of("n1"), "-1.50");
    f.SetInt("Minimum number value digits before dot", 3);
    EXPECT_EQ(f.Of("n1"), "-001.50");
    // Without zeros the sign is printed first and the pads go before it.
    f.SetBool("Leading zero's (number values)", false);
    EXPECT_EQ(f.Of("n1"), "  -1.50");
    f.SetInt("Minimum number value digits before dot", 1);
    f.SetBool("Add space if not negative (number values)", true);
    EXPECT_EQ(f.Of("n1"), "-1.50");
    f.SetFloat("n1", 0.25f);
    EXPECT_EQ(f.Of("n1"), " 0.25");
    f.SetFloat("n1", 0.0f);
    EXPECT_EQ(f.Of("n1"), " 0.00");
}

TEST(TextFormulaFormat, PrecisionZeroAndSix)
{
    Formula f;
    f.SetFloat("n1", 0.75f);
    f.SetInt("Precision number values", 0);
    EXPECT_EQ(f.Of("n1"), "1");
    f.SetInt("Precision number values", 6);
    EXPECT_EQ(f.Of("n1"), "0.750000");
}

TEST(TextFormulaFormat, PointsPadWithTheNumberSetting)
{
    Formula f;
    f.SetPoint("p1", 2.5f, -0.375f);
    f.SetInt("Precision point values", 1);
    f.SetInt("Minimum point value digits before dot", 2);
    f.SetBool("Leading zero's (point values)", true);
    // Zeros for points take the sign off and put it in front, but the pad is
    // a blank because the number setting is off.
    EXPECT_EQ(f.Of("p1x|p1y"), " 2.5|- 0.4");
    f.SetBool("Leading zero's (point values)", false);
    f.SetBool("Leading zero's (number values)", true);
    EXPECT_EQ(f.Of("p1x|p1y"), "02.5|0-0.4");
    f.SetBool("Add space if not negative (point values)", true);
    EXPECT_EQ(f.Of("p1x"), " 02.5");
    f.SetBool("Add space if not negative (number values)", false);
    EXPECT_EQ(f.Of("p1x"), " 02.5");
}

TEST(TextFormulaReplace, LiteralAndInOrder)
{
    Formula f;
    f.SetFloat("n1", 0.5f);
    // Inside words and before more digits, too.
    EXPECT_EQ(f.Of("n1 won1 n12"), "0.50 wo0.50 0.502");
    EXPECT_EQ(f.Of("no names here"), "no names here");
    EXPECT_EQ(f.Of(""), "");
    // n1's digits make "n2", which the later pass for n2 replaces.
    f.SetInt("Precision number values", 0);
    f.SetFloat("n1", 2.0f);
    f.SetFloat("n2", 0.75f);
    EXPECT_EQ(f.Of("nn1"), "1");
    // Texts go last, so number and point names they hold stay; a later
    // text's name is still replaced.
    f.SetText("t1", "n1 p1x t2");
    f.SetText("t2", "two");
    EXPECT_EQ(f.Of("t1|t2"), "n1 p1x two|two");
    // A value holding its own name is put in once; the search goes on behind it.
    f.SetText("t3", "(t3)");
    EXPECT_EQ(f.Of("t3 t3"), "(t3) (t3)");
    f.SetPoint("p9", 0.25f, 0.125f);
    f.SetInt("Precision point values", 3);
    EXPECT_EQ(f.Of("(p9x, p9y) n9"), "(0.250, 0.125) 0");
}

TEST(TextFormulaDeclarations, InputsAsTheHostShowsThem)
{
    Formula f;
    std::vector<std::string> want = {"NumberIn"};
    for (int n = 1; n <= 9; ++n) want.push_back("n" + std::to_string(n));
    want.push_back("PointIn");
    for (int n = 1; n <= 9; ++n) want.push_back("p" + std::to_string(n));
    want.push_back("TextIn");
    for (int n = 1; n <= 9; ++n) want.push_back("t" + std::to_string(n));
    for (const char* id : {"TextOut", "Text", "Precisionnumbervalues",
                           "Minimumnumbervaluedigitsbeforedot", "Leadingzeros",
                           "Addspaceifnotnegative", "Precisionpointvalues",
                           "Minimumpointvaluedigitsbeforedot", "Leadingzeros2",
                           "Addspaceifnotnegative2"})
        want.push_back(id);
    EXPECT_EQ(FirstInputIds(*f.op, want.size()), want);

    const host::Input* n3 = f.op->FindInput("n3");
    EXPECT_EQ(*n3->attrs.defaultNumber, 0.0);
    EXPECT_EQ(*n3->attrs.softMax, 1.0);
    EXPECT_EQ(f.Param("n3").id, "NuIp"_id);
    EXPECT_EQ(f.Param("p9").id, "PoIv"_id);
    EXPECT_EQ(f.Param("t1").id, "TeIn"_id);
    const host::Input* p2 = f.op->FindInput("p2");
    EXPECT_EQ(p2->attrs.dataType, host::DataType::Point);
    EXPECT_EQ(*p2->attrs.defaultPoint, std::make_pair(0.0, 0.0));
    const host::Input* t4 = f.op->FindInput("t4");
    EXPECT_EQ(t4->attrs.control, host::Control::TextEdit);
    EXPECT_EQ(t4->attrs.controlParam, 2);
    EXPECT_EQ(f.op->FindInput("Text")->attrs.controlParam, 10);
    EXPECT_EQ(*f.op->FindInput("Text")->attrs.defaultText, "");
    EXPECT_EQ(f.op->FindInput("Leadingzeros2")->name, "Leading zero's (point values)");
    ExpectNumberInputs(*f.op, {{"Precisionnumbervalues", "Precision number values", 2, 0, 6},
                               {"Minimumnumbervaluedigitsbeforedot",
                                "Minimum number value digits before dot", 1, 1, 6},
                               {"Precisionpointvalues", "Precision point values", 2, 0, 6},
                               {"Minimumpointvaluedigitsbeforedot",
                                "Minimum point value digits before dot", 1, 1, 6}});
    for (const char* id : {"Leadingzeros", "Addspaceifnotnegative", "Leadingzeros2", "Addspaceifnotnegative2"}) {
        EXPECT_EQ(f.op->FindInput(id)->attrs.control, host::Control::Checkbox) << id;
        EXPECT_EQ(*f.op->FindInput(id)->attrs.defaultNumber, 0.0) << id;
    }
    const std::vector<uint32_t> codes = ValueCodes(*f.effect);
    ASSERT_EQ(codes.size(), 36u);
    EXPECT_EQ(std::vector<uint32_t>(codes.begin() + 27, codes.end()),
              (std::vector<uint32_t>{"Text"_id, "TePN"_id, "TeDN"_id, "TeZN"_id, "TeNM"_id,
                                     "TePP"_id, "TeDP"_id, "TeZP"_id, "TePM"_id}));
    ASSERT_EQ(f.op->Outputs().size(), 1u);
    EXPECT_EQ(f.op->MainOutput()->id, "Output");
    EXPECT_EQ(f.op->MainOutput()->dataType, host::DataType::Text);
}

TEST(TextFormulaFlow, ARandomNumberWrittenIntoASentence)
{
    host::Flow flow;
    auto& rnd = flow.Add("rnd", Registered("ZV_NumberRandom"));
    auto& formula = flow.Add("formula", Registered("ZV_TextFormula"));
    flow.SetValue(rnd, In(rnd, "Newvalueforeveryfieldframe"), host::MakeNumber(1));
    flow.SetValue(formula, In(formula, "Text"), host::MakeText("value n1 at p1x"));
    flow.SetValue(formula, In(formula, "Precisionnumbervalues"), host::MakeNumber(4));
    flow.SetValue(formula, In(formula, "p1"), host::MakePoint(0.5, 0.25));
    flow.Connect(formula, In(formula, "n1"), rnd, rnd.op->MainOutput());
    for (int frame : {1, 2, 7}) {
        char want[64];
        std::snprintf(want, sizeof want, "value %.4f at 0.50", Noise(float(frame), 1234));
        flow.BeginFrame();
        EXPECT_EQ(TextOf(flow.Evaluate(formula, formula.op->MainOutput(), frame)), want) << frame;
    }
}

}  // namespace
