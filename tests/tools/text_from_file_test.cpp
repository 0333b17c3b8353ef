// From file: a line per frame with hold and loop, a chosen line, lines with
// start frames, the walk that joins an empty line to the next, "\n" escapes,
// files that are missing, the declarations and visibility rules, a flow, and
// the zelvarine command on an existing and a missing file.
#include <gtest/gtest.h>
#include "command_support.h"
#include <unistd.h>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>
#include "value_driver.h"

using namespace zvvalue;
namespace fs = std::filesystem;

namespace {

struct FromFile : Tool {
    FromFile() : Tool("ZV_TextFromFile") {}
    std::string At(float t)
    {
        Run(t);
        return Text();
    }
    // The text box as the source, with a format.
    void Box(const std::string& text, int32_t format)
    {
        SetInt("Source", 1);
        SetText("Text", text);
        SetInt("Format", format);
    }
};

// A folder of its own for each test, removed afterwards.
class TextFromFileFiles : public ::testing::Test {
protected:
    void SetUp() override
    {
        dir = fs::temp_directory_path() /
              ("zvfromfile." + std::to_string(getpid()) + "." +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dir);
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }
    std::string Write(const std::string& name, const std::string& text)
    {
        std::ofstream(dir / name, std::ios::binary) << text;
        return (dir / name).string();
    }
    fs::path dir;
};

TEST(TextFromFileEachLine, HoldAndLoop)
{
    FromFile f;
    f.Box("alpha\nbeta\ngamma", 0);
    EXPECT_EQ(f.At(0.0f), "alpha");
    EXPECT_EQ(f.At(1.0f), "beta");
    EXPECT_EQ(f.At(2.9f), "gamma");  // the frame is the whole part of the time
    EXPECT_EQ(f.At(3.0f), "");
    f.SetInt("Hold frames", 2);
    EXPECT_EQ(f.At(3.0f), "beta");
    EXPECT_EQ(f.At(5.0f), "gamma");
    EXPECT_EQ(f.At(6.0f), "");
    f.SetBool("Loop", true);
    EXPECT_EQ(f.At(6.0f), "alpha");
    EXPECT_EQ(f.At(8.0f), "beta");
    EXPECT_EQ(f.At(13.0f), "alpha");
}

TEST(TextFromFileEachLine, EmptyContentAndATrailingNewline)
{
    FromFile f;
    f.Box("", 0);
    EXPECT_EQ(f.At(0.0f), "");
    f.SetBool("Loop", true);  // no lines to loop over
    EXPECT_EQ(f.At(0.0f), "");
    EXPECT_EQ(f.At(4.0f), "");
    f.Box("one\ntwo\n", 0);  // three lines, the last one empty
    EXPECT_EQ(f.At(1.0f), "two");
    EXPECT_EQ(f.At(2.0f), "");
    EXPECT_EQ(f.At(3.0f), "one");
}

TEST(TextFromFileEachLine, AnEmptyLineIsNotALineOfItsOwn)
{
    FromFile f;
    f.Box("a\n\nb\nc", 0);  // four lines by count
    EXPECT_EQ(f.At(0.0f), "a");
    EXPECT_EQ(f.At(1.0f), "\nb");  // the empty line joins the next
    EXPECT_EQ(f.At(2.0f), "c");
    EXPECT_EQ(f.At(3.0f), "c");    // the walk has run out and keeps the last
    EXPECT_EQ(f.At(4.0f), "");
}

TEST(TextFromFileLine, TheChosenLineOnly)
{
    FromFile f;
    f.Box("alpha\nbeta\ngamma", 2);
    EXPECT_EQ(f.At(7.0f), "alpha");
    f.SetInt("Line", 1);
    EXPECT_EQ(f.At(0.0f), "beta");
    EXPECT_EQ(f.At(50.0f), "beta");
    f.SetInt("Line", 3);
    EXPECT_EQ(f.At(0.0f), "");
    f.SetInt("Line", -1);
    EXPECT_EQ(f.At(0.0f), "");
    f.Box("single", 2);
    f.SetInt("Line", 0);
    EXPECT_EQ(f.At(0.0f), "single");
}

TEST(TextFromFileStartFrames, EachTextHoldsUntilTheNextStart)
{
    FromFile f;
    f.Box("5 hello there\n  12\tworld\n\n20 end\\nof it\n", 1);
    EXPECT_EQ(f.At(0.0f), "");  // before the first start frame
    EXPECT_EQ(f.At(4.0f), "");
    EXPECT_EQ(f.At(5.0f), "hello there");
    EXPECT_EQ(f.At(11.9f), "hello there");
    EXPECT_EQ(f.At(12.0f), "world");  // leading blanks go, a tab separates
    EXPECT_EQ(f.At(19.0f), "world");
    EXPECT_EQ(f.At(20.0f), "end\r\nof it");
    EXPECT_EQ(f.At(500.0f), "end\r\nof it");
}

TEST(TextFromFileStartFrames, ALineWithoutTextEndsThePreviousOne)
{
    FromFile f;
    f.Box("0 first\n8\n10 last", 1);
    EXPECT_EQ(f.At(7.0f), "first");
    EXPECT_EQ(f.At(8.0f), "first");  // a bare start frame changes nothing
    EXPECT_EQ(f.At(9.0f), "first");
    EXPECT_EQ(f.At(10.0f), "last");
    f.Box("3 x", 1);
    EXPECT_EQ(f.At(-1.0f), "");  // a frame at or before -1 stops at once
    // The walk stops at the first start frame not yet reached, so a later
    // line with an earlier frame is never seen.
    f.Box("10 late\n5 early", 1);
    EXPECT_EQ(f.At(7.0f), "");
    EXPECT_EQ(f.At(12.0f), "early");
}

TEST(TextFromFileEscapes, BackslashNBecomesALineBreak)
{
    FromFile f;
    f.Box("one\\ntwo\\n\nthree\\", 0);
    EXPECT_EQ(f.At(0.0f), "one\r\ntwo\r\n");
    EXPECT_EQ(f.At(1.0f), "three\\");
    f.SetInt("Format", 2);
    EXPECT_EQ(f.At(0.0f), "one\r\ntwo\r\n");
}

TEST_F(TextFromFileFiles, ReadsTheFileAndIgnoresTheTextBox)
{
    FromFile f;
    f.SetText("Filename", Write("lines.txt", "first\nsecond\r\nthird"));
    f.SetText("Text", "from the box");
    f.SetInt("Format", 0);
    EXPECT_EQ(f.At(0.0f), "first");
    EXPECT_EQ(f.At(1.0f), "second\r");  // bytes as they stand in the file
    EXPECT_EQ(f.At(2.0f), "third");
    f.SetInt("Source", 1);
    EXPECT_EQ(f.At(0.0f), "from the box");
}

TEST_F(TextFromFileFiles, AMissingFileGivesAnEmptyText)
{
    FromFile f;
    f.SetInt("Format", 2);
    f.SetText("Filename", (dir / "nothing.txt").string());
    EXPECT_EQ(f.At(0.0f), "");
    f.SetText("Filename", "");
    EXPECT_EQ(f.At(0.0f), "");
    f.SetText("Filename", Write("there.txt", "now here"));
    EXPECT_EQ(f.At(0.0f), "now here");
    fs::remove(dir / "there.txt");
    EXPECT_EQ(f.At(0.0f), "");  // read anew on every render
}

TEST(TextFromFileDeclarations, InputsAsTheHostShowsThem)
{
    FromFile f;
    const auto& op = *f.op;
    EXPECT_EQ(op.Pages().front(), "From File");
    EXPECT_EQ(FirstInputIds(op, 7), (std::vector<std::string>{"Source", "Filename", "Text", "Format",
                                                             "Holdframes", "Loop", "Line"}));
    const host::Input* source = op.FindInput("Source");
    EXPECT_EQ(source->attrs.control, host::Control::MultiButton);
    EXPECT_EQ(source->attrs.items, (std::vector<std::string>{"File", "Textbox"}));
    EXPECT_EQ(*source->attrs.defaultNumber, 0.0);
    const host::Input* file = op.FindInput("Filename");
    EXPECT_EQ(file->attrs.control, host::Control::File);
    EXPECT_EQ(file->attrs.dataType, host::DataType::Text);
    EXPECT_EQ(*file->attrs.defaultText, "");
    EXPECT_EQ(f.Param("Filename").Item(0), "Text file (*.txt)|*.txt");
    EXPECT_EQ(op.FindInput("Text")->attrs.controlParam, 30);
    const host::Input* format = op.FindInput("Format");
    EXPECT_EQ(format->attrs.control, host::Control::Combo);
    EXPECT_EQ(*format->attrs.defaultNumber, 1.0);
    EXPECT_EQ(format->attrs.items, (std::vector<std::string>{"Each line a frame", "Startframe and text",
                                                             "Line on frame..."}));
    ExpectNumberInputs(op, {{"Holdframes", "Hold frames", 1, 1, 25},
                            {"Loop", "Loop", 0, 0, 1},
                            {"Line", "Line", 0, 0, 100}});
    EXPECT_TRUE(op.FindInput("Holdframes")->attrs.integer);
    EXPECT_EQ(ValueCodes(*f.effect), (std::vector<uint32_t>{"Sour"_id, "FiNa"_id, "Text"_id, "FiFo"_id,
                                                            "Hold"_id, "Loop"_id, "Line"_id}));
    EXPECT_EQ(op.MainOutput()->id, "Output");
}

TEST(TextFromFileDeclarations, SourceAndFormatShowTheirControls)
{
    host::Flow flow;
    auto& node = flow.Add("ff", Registered("ZV_TextFromFile"));
    auto visible = [&](const char* id) { return In(node, id)->attrs.visible; };
    // The defaults: a file, a start frame per line.
    EXPECT_TRUE(visible("Filename"));
    EXPECT_FALSE(visible("Text"));
    EXPECT_FALSE(visible("Holdframes"));
    EXPECT_FALSE(visible("Loop"));
    EXPECT_FALSE(visible("Line"));
    flow.SetValue(node, In(node, "Source"), host::MakeNumber(1));
    EXPECT_FALSE(visible("Filename"));
    EXPECT_TRUE(visible("Text"));
    flow.SetValue(node, In(node, "Format"), host::MakeNumber(0));
    EXPECT_TRUE(visible("Holdframes"));
    EXPECT_TRUE(visible("Loop"));
    EXPECT_FALSE(visible("Line"));
    flow.SetValue(node, In(node, "Format"), host::MakeNumber(2));
    EXPECT_FALSE(visible("Holdframes"));
    EXPECT_FALSE(visible("Loop"));
    EXPECT_TRUE(visible("Line"));
    flow.SetValue(node, In(node, "Format"), host::MakeNumber(1));
    EXPECT_FALSE(visible("Line"));
    flow.SetValue(node, In(node, "Source"), host::MakeNumber(0));
    EXPECT_TRUE(visible("Filename"));
    EXPECT_FALSE(visible("Text"));
}

TEST_F(TextFromFileFiles, InAFlowOverFramesAndWithTheFileGone)
{
    host::Flow flow;
    auto& node = flow.Add("ff", Registered("ZV_TextFromFile"));
    const std::string file = Write("subs.txt", "1 Hello\n3 World");
    flow.SetValue(node, In(node, "Filename"), host::MakeText(file));
    const char* want[] = {"", "Hello", "Hello", "World", "World"};
    for (int frame = 0; frame <= 4; ++frame) {
        flow.BeginFrame();
        EXPECT_EQ(TextOf(flow.Evaluate(node, node.op->MainOutput(), frame)), want[frame]) << frame;
    }
    fs::remove(file);
    flow.BeginFrame();
    EXPECT_EQ(TextOf(flow.Evaluate(node, node.op->MainOutput(), 3)), "");
}

// The built command, run in the test's folder.
class TextFromFileCommand : public TextFromFileFiles {
protected:
    using Result = zvtest::CommandResult;
    Result Run(const std::string& args) { return zvtest::RunCommand(dir, args); }
};

TEST_F(TextFromFileCommand, PrintsTheLineOfTheFrame)
{
    Write("lines.txt", "alpha\nbeta\ngamma\n");
    Result r = Run("run FrFl Filename=lines.txt Format=0 --time 1");
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "beta\n");
    EXPECT_EQ(r.err, "");
    r = Run("run 'From file' Filename=lines.txt Format=2 Line=2");
    EXPECT_EQ(r.out, "gamma\n");
}

TEST_F(TextFromFileCommand, AMissingFileIsABadInput)
{
    Result r = Run("run FrFl Filename=absent.txt");
    EXPECT_EQ(r.code, 2);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    EXPECT_NE(r.err.find("absent.txt"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("Filename"), std::string::npos) << r.err;
}

}  // namespace
