// From file: a line per frame with hold and loop, a chosen line, lines with
// start frames, the walk that joins an empty line to the next, "\n" escapes,
// files read anew or missing, and the controls Source and Format show.
#include "support.h"

using namespace zvtest;

TEST(TextFromFile, EachLineChosenLineStartFramesAndEscapes)
{
    const char *abc = "alpha\nbeta\ngamma", *starts = "5 hello there\n  12\tworld\n\n20 end\\nof it\n";
    const char *bare = "0 first\n8\n10 last", *walk = "a\n\nb\nc", *escapes = "one\\ntwo\\n\nthree\\";
    const struct { const char* text; int32_t format, hold; bool loop; int32_t line; float time; const char* want; } rows[] = {
        // Each line a frame: the frame is the whole part of the time; held and looped.
        {abc, 0, 1, false, 0, 2.9f, "gamma"}, {abc, 0, 1, false, 0, 3.0f, ""}, {abc, 0, 2, false, 0, 3.0f, "beta"},
        {abc, 0, 2, false, 0, 6.0f, ""}, {abc, 0, 2, true, 0, 6.0f, "alpha"}, {abc, 0, 2, true, 0, 8.0f, "beta"},
        {"", 0, 1, true, 0, 4.0f, ""},  // no lines to loop over
        {"one\ntwo\n", 0, 1, true, 0, 2.0f, ""},  // a trailing newline makes a last, empty line
        // An empty line joins the next; the walk, run out, keeps the last.
        {walk, 0, 1, false, 0, 1.0f, "\nb"}, {walk, 0, 1, false, 0, 3.0f, "c"}, {walk, 0, 1, false, 0, 4.0f, ""},
        // The chosen line only.
        {abc, 2, 1, false, 1, 50.0f, "beta"}, {abc, 2, 1, false, 3, 0.0f, ""}, {abc, 2, 1, false, -1, 0.0f, ""},
        // Start frames: each text holds until the next start; leading blanks go, a tab separates.
        {starts, 1, 1, false, 0, 4.0f, ""}, {starts, 1, 1, false, 0, 11.9f, "hello there"},
        {starts, 1, 1, false, 0, 12.0f, "world"}, {starts, 1, 1, false, 0, 500.0f, "end\r\nof it"},
        {bare, 1, 1, false, 0, 9.0f, "first"}, {bare, 1, 1, false, 0, 10.0f, "last"},  // a bare start changes nothing
        {"3 x", 1, 1, false, 0, -1.0f, ""},  // a frame at or before -1 stops at once
        // The walk stops at the first start not yet reached.
        {"10 late\n5 early", 1, 1, false, 0, 7.0f, ""}, {"10 late\n5 early", 1, 1, false, 0, 12.0f, "early"},
        // "\n" escapes become line breaks.
        {escapes, 0, 1, false, 0, 0.0f, "one\r\ntwo\r\n"}, {escapes, 0, 1, false, 0, 1.0f, "three\\"},
        {escapes, 2, 1, false, 0, 0.0f, "one\r\ntwo\r\n"},
    };
    Tool<> f("ZV_TextFromFile");
    f.SetInt("Source", 1);
    for (const auto& r : rows) {
        f.Apply({{"Format", r.format}, {"Hold frames", r.hold}, {"Loop", r.loop}, {"Line", r.line}});
        EXPECT_EQ(f.Of("Text", r.text, r.time), r.want) << r.text << " format " << r.format << " at " << r.time;
    }
    // Shown: a file by default, a start frame per line; then by Source and Format.
    ExpectShown("ZV_TextFromFile", {"Filename", "Text", "Holdframes", "Loop", "Line"},
                {{nullptr, 0, "10000"}, {"Source", 1, "01000"}, {"Format", 0, "01110"},
                 {"Format", 2, "01001"}, {"Format", 1, "01000"}, {"Source", 0, "10000"}});
}

TEST(TextFromFile, ReadsTheFileAnewEachRenderAndIgnoresTheTextBox)
{
    const TempDir dir;
    Tool<> f("ZV_TextFromFile");
    f.SetText("Text", "from the box");
    f.SetInt("Format", 0);
    EXPECT_EQ(f.Of("Filename", dir.Write("lines.txt", "first\nsecond\r\nthird"), 1.0f), "second\r");  // bytes as they stand
    f.SetInt("Format", 2);
    EXPECT_EQ(f.Of("Filename", (dir.path / "nothing.txt").string()), "");  // a missing file, or none: empty
    EXPECT_EQ(f.Of("Filename", ""), "");
    EXPECT_EQ(f.Of("Filename", dir.Write("there.txt", "now here")), "now here");
    std::filesystem::remove(dir.path / "there.txt");
    f.Run(0.0f);
    EXPECT_EQ(f.Text(), "");
}
