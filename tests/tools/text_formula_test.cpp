// Formula: number formatting with its digits, zeros, signs and the padding
// switch points borrow from the numbers; literal replacement in its order; a
// Random feeding a number input in a flow.
#include <cstdio>
#include "framework/numeric.h"
#include "support.h"

using namespace zvtest;

TEST(TextFormula, DigitsZerosSignsAndPrecision)
{
    const struct { float n1; int32_t digits; bool zeros, space; int32_t precision; const char* want; } rows[] = {
        {1.5f, 3, false, false, 2, "  1.50"},   {12.5f, 3, true, false, 2, "012.50"},
        {123.0f, 3, true, false, 2, "123.00"},  {9.996f, 2, true, false, 2, "10.00"},  // digits of the rounded value
        {9.994f, 2, true, false, 2, "09.99"},   {-1.5f, 3, true, false, 2, "-001.50"},
        {-1.5f, 3, false, false, 2, "  -1.50"},  // without zeros the pads go before the sign
        {-1.5f, 1, false, true, 2, "-1.50"},    {0.0f, 1, false, true, 2, " 0.00"},
        {0.75f, 1, false, false, 0, "1"},       {0.75f, 1, false, false, 6, "0.750000"},
    };
    Tool<> f("ZV_TextFormula");
    for (const auto& r : rows) {
        f.Apply({{"n1", r.n1}, {"Minimum number value digits before dot", r.digits}, {"Leading zero's (number values)", r.zeros},
                 {"Add space if not negative (number values)", r.space}, {"Precision number values", r.precision}});
        EXPECT_EQ(f.Of("Text", "n1"), r.want) << r.n1 << " digits " << r.digits;
    }
    // Points: zeros take the sign off and put it in front, but the pad is a
    // blank while the number setting is off.
    f.Apply({{"p1", 2.5, -0.375}, {"Precision point values", 1}, {"Minimum point value digits before dot", 2}});
    f.Apply({{"Leading zero's (point values)", 1}, {"Leading zero's (number values)", 0}});
    EXPECT_EQ(f.Of("Text", "p1x|p1y"), " 2.5|- 0.4");
    f.Apply({{"Leading zero's (point values)", 0}, {"Leading zero's (number values)", 1}});
    EXPECT_EQ(f.Of("Text", "p1x|p1y"), "02.5|0-0.4");
    f.SetBool("Add space if not negative (point values)", true);
    EXPECT_EQ(f.Of("Text", "p1x"), " 02.5");
}

TEST(TextFormula, ReplacesLiterallyAndInOrder)
{
    Tool<> f("ZV_TextFormula");
    f.SetFloat("n1", 0.5f);
    // Inside words and before more digits, too.
    EXPECT_EQ(f.Of("Text", "n1 won1 n12"), "0.50 wo0.50 0.502");
    // n1's digits make "n2", which the later pass for n2 replaces.
    f.Apply({{"Precision number values", 0}, {"n1", 2.0}, {"n2", 0.75}});
    EXPECT_EQ(f.Of("Text", "nn1"), "1");
    // Texts go last, so number and point names they hold stay; a later
    // text's name is still replaced.
    f.SetText("t1", "n1 p1x t2");
    f.SetText("t2", "two");
    EXPECT_EQ(f.Of("Text", "t1|t2"), "n1 p1x two|two");
    // A value holding its own name is put in once; the search goes on behind it.
    f.SetText("t3", "(t3)");
    EXPECT_EQ(f.Of("Text", "t3 t3"), "(t3) (t3)");
    f.Apply({{"p9", 0.25, 0.125}, {"Precision point values", 3}});
    EXPECT_EQ(f.Of("Text", "(p9x, p9y) n9"), "(0.250, 0.125) 0");
}

TEST(TextFormula, ARandomNumberWrittenIntoASentence)
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
        std::snprintf(want, sizeof want, "value %.4f at 0.50", KTimeNoise(float(frame), 1234));
        flow.BeginFrame();
        EXPECT_EQ(TextOf(flow.Evaluate(formula, formula.op->MainOutput(), frame)), want) << frame;
    }
}
