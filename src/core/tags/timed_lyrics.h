#pragma once
// The timed lyric text: a plain multi-line text with time marks in square
// brackets, stamped against the playing file, parsed into a list sorted by
// text, and walked by the clock to move the lyrics window's highlight.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "../ui/control.h"

namespace velaro::tags {

// MM:SS, or HH:MM:SS when there are hours; two digits each.
std::string TimeText(int64_t seconds);

// The stamps' character positions, for Undo. Capacity grows and shrinks by
// ten as the old array did; only the figures are observable.
struct UndoStack {
    std::vector<int32_t> stack = std::vector<int32_t>(10);  // index 0 is slot 1
    int32_t undoCapacity = 10;
    int32_t undoCount = 0;
    void reset();
    void PushUndo(int32_t position);
    int32_t PopUndo();
};

// Chargement_Paroles: appends every non-blank line of the file to the box,
// each with CR LF, and keeps them in `lyricLines`. False when the file can't be read.
bool Chargement_Paroles(const std::string& textFile, ui::TextBox& txtLyrics, std::vector<std::string>& lyricLines);

// The stamp of cmdAdd at `positionSeconds` (rounded to whole seconds): the
// mark goes in front of the first mark of the caret's line that is not
// earlier, and the caret moves to the next line with text. False when a mark
// on the line could not be read, which leaves the text untouched.
bool StampLine(ui::TextBox& txtLyrics, double positionSeconds, UndoStack& undo);

// cmdUndo: removes the mark at the last stamp's position. False when the
// removal could not be made (the text stays as it was).
bool UndoStamp(ui::TextBox& txtLyrics, UndoStack& undo);

// The entries Show_Lyrics makes of a text, in text order: time text, four
// blanks, words. Empty when the text is blank or has no "[".
std::vector<std::string> LyricEntries(const std::string& text);

// The order of the sorted lyric lists: by text, ignoring case.
bool lyricsRefLess(const std::string& a, const std::string& b);
// AddItem on a sorted lyric list: behind the entries that sort equal.
void addSorted(ui::ListBox& list, const std::string& entry);

// The plain text order the walk compares with (by character, as the
// runtime's binary comparison of its wide strings).
int compareText(const std::string& a, const std::string& b);

// SyncLyrics: moves `lyricPos` towards the clock text `now` over the sorted
// list, calling `next` for every entry passed forward and `prev` for every
// step back. Throws VbError on a 16-bit overflow of lyricPos, as it would.
void SyncLyrics(const std::string& now, const ui::ListBox& LyricsRef, int16_t& lyricPos,
                const std::function<void()>& next, const std::function<void()>& prev);

}  // namespace velaro::tags
