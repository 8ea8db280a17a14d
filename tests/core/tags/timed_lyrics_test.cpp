// The timed lyric text: stamping with the caret walk, undo, the parse into
// the sorted list, and the walk that moves the highlight.

#include <gtest/gtest.h>

#include "core/base/vb_error.h"
#include "core/tags/timed_lyrics.h"
#include "core/ui/headless.h"
#include "support/song_bytes.h"

using namespace velaro;
using namespace velaro::tags;

namespace {

struct Box {
    ui::Headless h;
    ui::Form form{h.rt, "frmTags"};
    ui::TextBox txt{&form, "txtLyrics"};
    UndoStack undo;
    Box(const std::string& text, int caret = 0) {
        txt.setText(text);
        txt.selStart = caret;
    }
    bool stamp(double seconds) { return StampLine(txt, seconds, undo); }
};

std::vector<std::string> sorted(const std::string& text) {
    ui::Headless h;
    ui::Form form(h.rt, "frmLyrics");
    ui::ListBox list(&form, "LyricsRef");
    for (const auto& e : LyricEntries(text)) addSorted(list, e);
    std::vector<std::string> out;
    for (int i = 0; i < list.listCount(); ++i) out.push_back(list.list(i));
    return out;
}

}  // namespace

TEST(TimeText, MinutesAndSecondsThenHours) {
    EXPECT_EQ(TimeText(0), "00:00");
    EXPECT_EQ(TimeText(59), "00:59");
    EXPECT_EQ(TimeText(3599), "59:59");
    EXPECT_EQ(TimeText(3600), "01:00:00");
    EXPECT_EQ(TimeText(3661), "01:01:01");
    EXPECT_EQ(TimeText(36000 + 59), "10:00:59");
}

TEST(EditBoxQueries, LinesEndAtCrLf) {
    Box b("ab\r\n\r\ncde");
    EXPECT_EQ(b.txt.lineCount(), 3);
    EXPECT_EQ(b.txt.lineFromChar(0), 0);
    EXPECT_EQ(b.txt.lineFromChar(2), 0);  // the CR still belongs to its line
    EXPECT_EQ(b.txt.lineFromChar(4), 1);
    EXPECT_EQ(b.txt.lineFromChar(6), 2);
    EXPECT_EQ(b.txt.lineIndex(2), 6);
    EXPECT_EQ(b.txt.lineIndex(3), -1);
    EXPECT_EQ(b.txt.lineLength(4), 0);
    EXPECT_EQ(b.txt.lineLength(7), 3);
    b.txt.selStart = 1;
    b.txt.selLength = 1;
    b.txt.replaceSel("XY");
    EXPECT_EQ(b.txt.text(), "aXY\r\n\r\ncde");
    EXPECT_EQ(b.txt.selStart, 3);
}

TEST(Stamp, MarksTheCaretLineAndWalksDown) {
    Box b("one\r\ntwo\r\nthree\r\n");
    ASSERT_TRUE(b.stamp(10.4));
    EXPECT_EQ(b.txt.text(), "[00:10]one\r\ntwo\r\nthree\r\n");
    EXPECT_EQ(b.txt.selStart, 12);
    ASSERT_TRUE(b.stamp(12.5));  // halves to even
    EXPECT_EQ(b.txt.text(), "[00:10]one\r\n[00:12]two\r\nthree\r\n");
    EXPECT_EQ(b.txt.selStart, 24);
    ASSERT_TRUE(b.stamp(13.5));
    EXPECT_EQ(b.txt.text(), "[00:10]one\r\n[00:12]two\r\n[00:14]three\r\n");
    // The last line is empty: the caret goes there and the next press stamps it.
    EXPECT_EQ(b.txt.selStart, 38);
    ASSERT_TRUE(b.stamp(20));
    EXPECT_EQ(b.txt.text(), "[00:10]one\r\n[00:12]two\r\n[00:14]three\r\n[00:20]");
    EXPECT_EQ(b.txt.selStart, 45);  // on the last line the caret stays behind the mark
}

TEST(Stamp, SameSecondTwiceGoesInFront) {
    Box b("la la\r\nnext\r\n");
    ASSERT_TRUE(b.stamp(10));
    b.txt.selStart = 0;
    ASSERT_TRUE(b.stamp(10));
    EXPECT_EQ(b.txt.text(), "[00:10][00:10]la la\r\nnext\r\n");
    EXPECT_EQ(b.undo.undoCount, 2);
    EXPECT_EQ(b.undo.stack[0], 0);
    EXPECT_EQ(b.undo.stack[1], 0);
}

TEST(Stamp, BlankLineBetweenVersesIsStampedAndCaretMovesOn) {
    Box b("a\r\n\r\nb\r\n", 3);
    ASSERT_TRUE(b.stamp(5));
    EXPECT_EQ(b.txt.text(), "a\r\n[00:05]\r\nb\r\n");
    EXPECT_EQ(b.txt.selStart, 12);
}

TEST(Stamp, KeepsTheMarksOfALineInTimeOrder) {
    Box early("x\r\n[00:40]la\r\n", 3);
    ASSERT_TRUE(early.stamp(10));
    EXPECT_EQ(early.txt.text(), "x\r\n[00:10][00:40]la\r\n");
    Box late("x\r\n[00:40]la\r\n", 3);
    ASSERT_TRUE(late.stamp(50));
    EXPECT_EQ(late.txt.text(), "x\r\n[00:40][00:50]la\r\n");
    EXPECT_EQ(late.undo.stack[0], 10);
    // A mark on the next line is not this line's.
    Box next("la\r\n[00:05]b\r\n");
    ASSERT_TRUE(next.stamp(9));
    EXPECT_EQ(next.txt.text(), "[00:09]la\r\n[00:05]b\r\n");
}

TEST(Stamp, HourMarksCompareByTheirFigures) {
    Box b("[59:59]a\r\n", 0);
    ASSERT_TRUE(b.stamp(3600));
    EXPECT_EQ(b.txt.text(), "[59:59][01:00:00]a\r\n");
    Box c("[01:00:00]a\r\n", 0);
    ASSERT_TRUE(c.stamp(3599.4));
    EXPECT_EQ(c.txt.text(), "[59:59][01:00:00]a\r\n");
    Box d("[01:00:00]a\r\n", 0);
    ASSERT_TRUE(d.stamp(7322));
    EXPECT_EQ(d.txt.text(), "[01:00:00][02:02:02]a\r\n");
    // A fractional mark reads as whole seconds, rounded.
    Box e("[01:02.50]a\r\n", 0);
    ASSERT_TRUE(e.stamp(62));
    EXPECT_EQ(e.txt.text(), "[01:02][01:02.50]a\r\n");
}

TEST(Stamp, UnreadableMarkLeavesTheTextAlone) {
    Box wide("[verylongmark]x\r\n");
    EXPECT_FALSE(wide.stamp(3));
    EXPECT_EQ(wide.txt.text(), "[verylongmark]x\r\n");
    Box header("[ti:Hello]x\r\n");
    EXPECT_FALSE(header.stamp(3));
    EXPECT_EQ(header.txt.text(), "[ti:Hello]x\r\n");
    EXPECT_EQ(header.undo.undoCount, 0);
    Box open("[00:0x\r\n");
    EXPECT_FALSE(open.stamp(3));
}

TEST(Undo, RestoresTheTextExactly) {
    const std::string text = "one\r\ntwo\r\n";
    Box b(text, 5);
    ASSERT_TRUE(b.stamp(7));
    EXPECT_EQ(b.txt.text(), "one\r\n[00:07]two\r\n");
    ASSERT_TRUE(UndoStamp(b.txt, b.undo));
    EXPECT_EQ(b.txt.text(), text);
    EXPECT_EQ(b.txt.selStart, 5);
    Box first("one\r\n");
    ASSERT_TRUE(first.stamp(1));
    ASSERT_TRUE(UndoStamp(first.txt, first.undo));
    EXPECT_EQ(first.txt.text(), "one\r\n");
    EXPECT_EQ(first.undo.undoCount, 0);
}

TEST(Undo, StampAtOffsetOneTakesTheFirstCharacterAlong) {
    Box b("x[00:10]y\r\n");
    b.undo.PushUndo(1);
    ASSERT_TRUE(UndoStamp(b.txt, b.undo));
    EXPECT_EQ(b.txt.text(), "y\r\n");
}

TEST(Undo, StackGrowsAndShrinksByTen) {
    std::string text;
    for (int i = 0; i < 11; ++i) text += "line" + std::to_string(i) + "\r\n";
    Box b(text);
    for (int i = 1; i <= 11; ++i) ASSERT_TRUE(b.stamp(i));
    EXPECT_EQ(b.undo.undoCount, 11);
    EXPECT_EQ(b.undo.undoCapacity, 20);
    for (int i = 0; i < 10; ++i) ASSERT_TRUE(UndoStamp(b.txt, b.undo));
    EXPECT_EQ(b.undo.undoCount, 1);
    EXPECT_EQ(b.undo.undoCapacity, 10);
    EXPECT_EQ(b.txt.text(), "[00:01]" + text);
    UndoStack empty;
    EXPECT_EQ(empty.PopUndo(), 0);
}

TEST(ShowLyrics, OneEntryPerMarkAndTheLastPieceIgnored) {
    EXPECT_TRUE(LyricEntries("[00:10]la la").empty());  // no line end at all
    EXPECT_TRUE(LyricEntries("no marks\r\n").empty());
    EXPECT_TRUE(LyricEntries("   \r\n").empty());
    EXPECT_TRUE(LyricEntries("[verylongmark]words\r\n").empty());
    EXPECT_EQ(LyricEntries("[00:10][00:40]la la\r\n"),
              (std::vector<std::string>{"00:10    la la", "00:40    la la"}));
    EXPECT_EQ(LyricEntries("a\r\n  [00:05]b  \r\n[00:07]c"), (std::vector<std::string>{"00:05    b"}));
    // An LRC header is a mark with its own time text; a wide bracket before a mark is passed over.
    EXPECT_EQ(LyricEntries("[ti:Hello]\r\n[a very long one][00:01]x\r\n"),
              (std::vector<std::string>{"ti:Hello    ", "00:01    x"}));
    EXPECT_EQ(LyricEntries("[01:02.50]frac\r\n"), (std::vector<std::string>{"01:02.50    frac"}));
}

TEST(ShowLyrics, SortedByTextIgnoringCase) {
    EXPECT_EQ(sorted("[00:10]b\r\n[00:09]a\r\n"), (std::vector<std::string>{"00:09    a", "00:10    b"}));
    EXPECT_EQ(sorted("[1:05]x\r\n[01:00]y\r\n[00:59]z\r\n"),
              (std::vector<std::string>{"00:59    z", "01:00    y", "1:05    x"}));
    EXPECT_EQ(sorted("[Ar:x]\r\n[al:y]\r\n"), (std::vector<std::string>{"al:y    ", "Ar:x    "}));
    // Signs before digits before letters, accents and hyphens only as a tie-break.
    EXPECT_EQ(sorted("[10:00]a\r\n[1:05]b\r\n[ti:x]\r\n[#1]c\r\n"),
              (std::vector<std::string>{"#1    c", "1:05    b", "10:00    a", "ti:x    "}));
    EXPECT_EQ(sorted("[00:01]\xE9t\xE9\r\n[00:01]ez\r\n[00:01]et\xE9\r\n[00:01]e-a\r\n"),
              (std::vector<std::string>{"00:01    e-a", "00:01    et\xE9", "00:01    \xE9t\xE9", "00:01    ez"}));
}

TEST(Walk, PassesAnEntryWhenTheClockIsLaterAndWalksBack) {
    ui::Headless h;
    ui::Form form(h.rt, "frmTags");
    ui::ListBox list(&form, "LyricsRef");
    for (const auto& e : LyricEntries("[00:01]a\r\n[00:05]b\r\n[00:12.34]c\r\n[00:20]d\r\n")) addSorted(list, e);
    int16_t pos = 0;
    int nexts = 0, prevs = 0;
    auto walk = [&](const std::string& now) {
        SyncLyrics(now, list, pos, [&] { ++nexts; }, [&] { ++prevs; });
        return pos;
    };
    EXPECT_EQ(walk("00:00"), 0);
    EXPECT_EQ(walk("00:01"), 0);  // equal is not passed
    EXPECT_EQ(walk("00:02"), 1);
    EXPECT_EQ(walk("00:12"), 2);  // the fractional mark lights a second late
    EXPECT_EQ(walk("00:13"), 3);
    EXPECT_EQ(walk("00:06"), 2);
    EXPECT_EQ(walk("00:03"), 1);
    EXPECT_EQ(prevs, 2);
    EXPECT_EQ(walk("00:00"), 1);  // never back below the second entry
    EXPECT_EQ(walk(" 00:40 "), 4);
    EXPECT_EQ(walk("00:41"), 4);  // the end holds
    EXPECT_EQ(nexts, 6);
    // Past the last entry the list gives an empty text, which every clock
    // is at or after: the walk no longer goes back.
    EXPECT_EQ(walk("00:03"), 4);
    pos = 9;                      // a stale position past the list runs to the 16-bit end
    EXPECT_THROW(walk("00:00"), VbError);
}
