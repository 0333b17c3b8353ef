// From file: a line per frame with hold and loop, a chosen line, lines with
// start frames, the walk that joins an empty line to the next, "\n" escapes,
// files read anew or missing, the controls Source and Format show, and the
// zelvarine command on an existing and a missing file.
#include <algorithm>
#include <filesystem>
#include "command_support.h"
#include "support.h"

using namespace zvtest;
namespace fs = std::filesystem;

namespace {

TEST(TextFromFile, EachLineChosenLineStartFramesAndEscapes)
{
    const char* abc = "alpha\nbeta\ngamma";
    const char* starts = "5 hello there\n  12\tworld\n\n20 end\\nof it\n";
    const struct {
        const char* text;
        int32_t format, hold;
        bool loop;
        int32_t line;
        float time;
        const char* want;
    } rows[] = {
        // Each line a frame: the frame is the whole part of the time; held and looped.
        {abc, 0, 1, false, 0, 0.0f, "alpha"}, {abc, 0, 1, false, 0, 1.0f, "beta"},
        {abc, 0, 1, false, 0, 2.9f, "gamma"}, {abc, 0, 1, false, 0, 3.0f, ""},
        {abc, 0, 2, false, 0, 3.0f, "beta"},  {abc, 0, 2, false, 0, 5.0f, "gamma"},
        {abc, 0, 2, false, 0, 6.0f, ""},      {abc, 0, 2, true, 0, 6.0f, "alpha"},
        {abc, 0, 2, true, 0, 8.0f, "beta"},   {abc, 0, 2, true, 0, 13.0f, "alpha"},
        {"", 0, 1, false, 0, 0.0f, ""},       {"", 0, 1, true, 0, 4.0f, ""},  // no lines to loop over
        // A trailing newline makes a last, empty line.
        {"one\ntwo\n", 0, 1, true, 0, 1.0f, "two"}, {"one\ntwo\n", 0, 1, true, 0, 2.0f, ""},
        {"one\ntwo\n", 0, 1, true, 0, 3.0f, "one"},
        // An empty line joins the next; the walk, run out, keeps the last.
        {"a\n\nb\nc", 0, 1, false, 0, 0.0f, "a"}, {"a\n\nb\nc", 0, 1, false, 0, 1.0f, "\nb"},
        {"a\n\nb\nc", 0, 1, false, 0, 2.0f, "c"}, {"a\n\nb\nc", 0, 1, false, 0, 3.0f, "c"},
        {"a\n\nb\nc", 0, 1, false, 0, 4.0f, ""},
        // The chosen line only.
        {abc, 2, 1, false, 0, 7.0f, "alpha"}, {abc, 2, 1, false, 1, 0.0f, "beta"},
        {abc, 2, 1, false, 1, 50.0f, "beta"}, {abc, 2, 1, false, 3, 0.0f, ""},
        {abc, 2, 1, false, -1, 0.0f, ""},     {"single", 2, 1, false, 0, 0.0f, "single"},
        // Start frames: each text holds until the next start; leading blanks
        // go, a tab separates.
        {starts, 1, 1, false, 0, 4.0f, ""},            {starts, 1, 1, false, 0, 5.0f, "hello there"},
        {starts, 1, 1, false, 0, 11.9f, "hello there"}, {starts, 1, 1, false, 0, 12.0f, "world"},
        {starts, 1, 1, false, 0, 19.0f, "world"},       {starts, 1, 1, false, 0, 20.0f, "end\r\nof it"},
        {starts, 1, 1, false, 0, 500.0f, "end\r\nof it"},
        // A bare start frame changes nothing.
        {"0 first\n8\n10 last", 1, 1, false, 0, 8.0f, "first"},
        {"0 first\n8\n10 last", 1, 1, false, 0, 9.0f, "first"},
        {"0 first\n8\n10 last", 1, 1, false, 0, 10.0f, "last"},
        {"3 x", 1, 1, false, 0, -1.0f, ""},  // a frame at or before -1 stops at once
        // The walk stops at the first start not yet reached: a later line with
        // an earlier frame is never seen.
        {"10 late\n5 early", 1, 1, false, 0, 7.0f, ""}, {"10 late\n5 early", 1, 1, false, 0, 12.0f, "early"},
        // "\n" escapes become line breaks.
        {"one\\ntwo\\n\nthree\\", 0, 1, false, 0, 0.0f, "one\r\ntwo\r\n"},
        {"one\\ntwo\\n\nthree\\", 0, 1, false, 0, 1.0f, "three\\"},
        {"one\\ntwo\\n\nthree\\", 2, 1, false, 0, 0.0f, "one\r\ntwo\r\n"},
    };
    Tool<> f("ZV_TextFromFile");
    f.SetInt("Source", 1);
    for (const auto& r : rows) {
        f.SetInt("Format", r.format);
        f.SetInt("Hold frames", r.hold);
        f.SetBool("Loop", r.loop);
        f.SetInt("Line", r.line);
        EXPECT_EQ(f.Of("Text", r.text, r.time), r.want) << r.text << " format " << r.format << " at " << r.time;
    }
}

TEST(TextFromFile, ReadsTheFileAnewEachRenderAndIgnoresTheTextBox)
{
    const TempDir dir;
    Tool<> f("ZV_TextFromFile");
    f.SetText("Text", "from the box");
    f.SetInt("Format", 0);
    EXPECT_EQ(f.Of("Filename", dir.Write("lines.txt", "first\nsecond\r\nthird")), "first");
    f.Run(1.0f);
    EXPECT_EQ(f.Text(), "second\r");  // bytes as they stand in the file
    f.SetInt("Source", 1);
    f.Run(0.0f);
    EXPECT_EQ(f.Text(), "from the box");
    // A missing file, or none, gives an empty text.
    f.SetInt("Source", 0);
    f.SetInt("Format", 2);
    EXPECT_EQ(f.Of("Filename", (dir.path / "nothing.txt").string()), "");
    EXPECT_EQ(f.Of("Filename", ""), "");
    EXPECT_EQ(f.Of("Filename", dir.Write("there.txt", "now here")), "now here");
    fs::remove(dir.path / "there.txt");
    f.Run(0.0f);
    EXPECT_EQ(f.Text(), "");
}

TEST(TextFromFile, SourceAndFormatShowTheirControls)
{
    // Shown: a file by default, a start frame per line; then by Source and Format.
    ExpectShown("ZV_TextFromFile", {"Filename", "Text", "Holdframes", "Loop", "Line"},
                {{nullptr, 0, "10000"}, {"Source", 1, "01000"}, {"Format", 0, "01110"},
                 {"Format", 2, "01001"}, {"Format", 1, "01000"}, {"Source", 0, "10000"}});
}

TEST(TextFromFile, CommandPrintsTheLineOrNamesTheMissingFile)
{
    const TempDir dir;
    dir.Write("lines.txt", "alpha\nbeta\ngamma\n");
    CommandResult r = dir.Run("run FrFl Filename=lines.txt Format=0 --time 1");
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "beta\n");
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(dir.Run("run 'From file' Filename=lines.txt Format=2 Line=2").out, "gamma\n");
    r = dir.Run("run FrFl Filename=absent.txt");
    EXPECT_EQ(r.code, 2);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    EXPECT_NE(r.err.find("absent.txt"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("Filename"), std::string::npos) << r.err;
}

}  // namespace
