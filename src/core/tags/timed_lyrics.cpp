#include "timed_lyrics.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>

#include "../base/byte_text.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"

namespace velaro::tags {

namespace {

// Windows-1252 bytes 0x80-0x9F as the code points the runtime compared.
constexpr char16_t kHigh[32] = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                                0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

char32_t codePoint(char c) {
    const auto b = static_cast<unsigned char>(c);
    return (b >= 0x80 && b < 0xA0) ? kHigh[b - 0x80] : b;
}

char32_t folded(char c) {
    const auto b = static_cast<unsigned char>(c);
    if (b >= 'A' && b <= 'Z') return b + 32;
    if (b >= 0xC0 && b <= 0xDE && b != 0xD7) return b + 32;  // À..Þ but not ×
    switch (b) {
        case 0x8A: return codePoint('\x9A');  // Š
        case 0x8C: return codePoint('\x9C');  // Œ
        case 0x8E: return codePoint('\x9E');  // Ž
        case 0x9F: return 0xFF;               // Ÿ
        default: return codePoint(c);
    }
}

// A mark's figure as the runtime converted a text to an integer: blanks
// around, a decimal part rounded half to even; anything else fails.
std::optional<int> markNumber(const std::string& text) {
    const std::string t = trim(text);
    if (t.empty()) return std::nullopt;
    char* end = nullptr;
    const double v = std::strtod(t.c_str(), &end);
    if (end != t.c_str() + t.size() || !std::isfinite(v) || t.find_first_of("xXpPnNiI") != std::string::npos)
        return std::nullopt;
    const double r = roundHalfEven(v);
    if (r < -32768 || r > 32767) return std::nullopt;
    return static_cast<int>(r);
}

struct Hms {
    int h = 0, m = 0, s = 0;
};

// "H:M:S" or "M:S" (hours 0); other shapes fail.
std::optional<Hms> splitTime(const std::string& text) {
    std::vector<std::string> parts;
    size_t from = 0;
    for (;;) {
        const size_t at = text.find(':', from);
        parts.push_back(text.substr(from, at == std::string::npos ? std::string::npos : at - from));
        if (at == std::string::npos) break;
        from = at + 1;
    }
    if (parts.size() < 2) return std::nullopt;
    const size_t first = parts.size() == 2 ? 0 : 1;
    Hms t;
    if (parts.size() > 2) {
        const auto h = markNumber(parts[0]);
        if (!h) return std::nullopt;
        t.h = *h;
    }
    const auto m = markNumber(parts[first]), s = markNumber(parts[first + 1]);
    if (!m || !s) return std::nullopt;
    t.m = *m;
    t.s = *s;
    return t;
}

bool later(const Hms& a, const Hms& b) {
    if (a.h != b.h) return a.h > b.h;
    if (a.m != b.m) return a.m > b.m;
    return a.s > b.s;
}

bool blank(const std::string& s) { return trim(s).empty(); }

}  // namespace

std::string TimeText(int64_t seconds) {
    const int64_t hours = seconds / 3600, minutes = (seconds / 60) % 60, secs = seconds % 60;
    std::string t = vbFormat(double(minutes), "00") + ":" + vbFormat(double(secs), "00");
    if (hours > 0) t = vbFormat(double(hours), "00") + ":" + t;
    return t;
}

void UndoStack::reset() {
    undoCapacity = 10;
    undoCount = 0;
    stack.assign(10, 0);
}

void UndoStack::PushUndo(int32_t position) {
    ++undoCount;
    if (undoCount > undoCapacity) {
        undoCapacity += 10;
        stack.resize(static_cast<size_t>(undoCapacity), 0);
    }
    stack[static_cast<size_t>(undoCount - 1)] = position;
}

int32_t UndoStack::PopUndo() {
    if (undoCount == 0) return 0;
    const int32_t entry = stack[static_cast<size_t>(undoCount - 1)];
    --undoCount;
    if (undoCount < undoCapacity - 10) {
        undoCapacity -= 10;
        stack.resize(static_cast<size_t>(undoCapacity));
    }
    return entry;
}

bool Chargement_Paroles(const std::string& textFile, ui::TextBox& txtLyrics, std::vector<std::string>& lyricLines) {
    std::ifstream in(textFile, std::ios::binary);
    if (!in) return false;
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad()) return false;
    lyricLines.clear();
    std::string text = txtLyrics.text();
    // Lines end at CR LF, CR or LF: files from any system read line by line.
    size_t i = 0;
    while (i < bytes.size()) {
        size_t end = bytes.find_first_of("\r\n", i);
        if (end == std::string::npos) end = bytes.size();
        std::string line = bytes.substr(i, end - i);
        i = end;
        if (i < bytes.size()) i += (bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') ? 2 : 1;
        if (blank(line)) continue;
        lyricLines.push_back(line);
        text += line + "\r\n";
    }
    txtLyrics.setText(text);
    return true;
}

bool StampLine(ui::TextBox& txtLyrics, double positionSeconds, UndoStack& undo) {
    const std::string T = TimeText(static_cast<int64_t>(roundHalfEven(positionSeconds)));
    const auto now = splitTime(T);
    const std::string mark = "[" + T + "]";

    const std::string text = txtLyrics.text();
    const int line = txtLyrics.lineFromChar(txtLyrics.selStart);
    const int first = txtLyrics.lineIndex(line);
    const int lineEnd = first + txtLyrics.lineLength(first);
    int64_t cursorPos = first + 1;

    // Walk the marks on this line while they are earlier than the new one.
    std::optional<Hms> lastRead;
    for (;;) {
        const int64_t p1 = FIND(cursorPos, text, "[");
        if (p1 == 0 || p1 > lineEnd) break;
        const int64_t p2 = FIND(cursorPos, text, "]");
        const int64_t between = p2 - p1 - 1;
        if (between < 0) return false;  // no closing bracket to read up to
        if (between < 9) lastRead = splitTime(mid(text, p1 + 1, between));
        if (!lastRead) return false;
        if (!later(*now, *lastRead)) break;
        cursorPos = p2 + 1;
    }

    --cursorPos;
    txtLyrics.selStart = static_cast<int>(cursorPos);
    txtLyrics.selLength = 0;
    txtLyrics.replaceSel(mark);
    undo.PushUndo(static_cast<int32_t>(cursorPos));

    // The caret walks down to the next line that has text.
    const int count = txtLyrics.lineCount();
    if (line < count - 1) {
        int start = -1;
        for (int i = line + 1; i < count; ++i) {
            start = txtLyrics.lineIndex(i);
            if (txtLyrics.lineLength(start) > 0) break;
        }
        txtLyrics.selStart = start == -1 ? 0 : start;
        txtLyrics.selLength = 0;
    }
    return true;
}

bool UndoStamp(ui::TextBox& txtLyrics, UndoStack& undo) {
    int64_t start = undo.PopUndo();
    if (start == 0) start = 1;
    const std::string& text = txtLyrics.text();
    int64_t p2 = 0;
    const int64_t p1 = FIND(start, text, "[");
    if (p1 > 0) {
        p2 = FIND(start + 1, text, "]");
        if (p2 - p1 - 1 > 9) p2 = 0;
    }
    if (start == 1) start = 0;  // a stamp at offset 1 then takes the first character along
    const int64_t length = p2 - start;
    if (length < 0 || start > static_cast<int64_t>(text.size())) return false;
    txtLyrics.selStart = static_cast<int>(start);
    txtLyrics.selLength = static_cast<int>(length);
    txtLyrics.replaceSel("");
    return true;
}

std::vector<std::string> LyricEntries(const std::string& text) {
    std::vector<std::string> entries;
    if (blank(text) || text.find('[') == std::string::npos) return entries;
    // Only pieces followed by a CR are lines: the last piece is not looked at.
    size_t from = 0;
    for (;;) {
        const size_t cr = text.find('\r', from);
        if (cr == std::string::npos) break;
        const std::string line = trim(std::string_view(text).substr(from, cr - from));
        from = cr + 1;
        const size_t lastClose = line.rfind(']');
        const std::string words = lastClose == std::string::npos ? std::string() : line.substr(lastClose + 1);
        int64_t pos = 1;
        for (;;) {
            const int64_t p1 = FIND(pos, line, "[");
            if (p1 == 0) break;
            const int64_t p2 = FIND(pos, line, "]");
            if (p2 < p1) break;  // nothing closes this bracket
            if (p2 - 1 - p1 >= 9) {
                pos = p2 + 1;  // too wide for a mark
                continue;
            }
            entries.push_back(mid(line, p1 + 1, p2 - p1 - 1) + "    " + words);
            pos = p2 + 1;
        }
    }
    return entries;
}

namespace {

// The list box sorts as the system's case-blind word sort does: blanks and
// punctuation before digits, digits before letters, letters without regard
// to case or accent, hyphens and apostrophes only breaking ties.
constexpr std::string_view kPunctuation = " !\"#$%&()*,./:;?@[\\]^_`{|}~+<=>";

int primaryWeight(unsigned char b) {
    if (b == '-' || b == '\'') return -1;  // ignored at this level
    if (b < 0x20) return 1;
    if (const size_t p = kPunctuation.find(static_cast<char>(b)); p != std::string_view::npos && b < 0x80)
        return 2 + static_cast<int>(p);
    if (b >= '0' && b <= '9') return 100 + (b - '0');
    char base = 0;
    if ((b >= 'a' && b <= 'z') || (b >= 'A' && b <= 'Z')) base = static_cast<char>(b | 0x20);
    else if (b >= 0xC0) {
        static const char kBase[] = "aaaaaaaceeeeiiiidnooooo*ouuuuyts" "aaaaaaaceeeeiiiidnooooo/ouuuuyty";
        base = kBase[b - 0xC0];
        if (base == '*' || base == '/') return 40 + b;  // × and ÷ are signs
    } else {
        switch (b) {
            case 0x8A: case 0x9A: base = 's'; break;
            case 0x8E: case 0x9E: base = 'z'; break;
            case 0x8C: case 0x9C: base = 'o'; break;
            case 0x9F: base = 'y'; break;
            case 0x83: base = 'f'; break;
            default: return 40 + b;  // other signs after the plain punctuation
        }
    }
    return 200 + (base - 'a');
}

int primaryCompare(const std::string& a, const std::string& b) {
    size_t i = 0, j = 0;
    for (;;) {
        int wa = -1, wb = -1;
        while (i < a.size() && (wa = primaryWeight(static_cast<unsigned char>(a[i]))) < 0) ++i;
        while (j < b.size() && (wb = primaryWeight(static_cast<unsigned char>(b[j]))) < 0) ++j;
        const bool endA = i >= a.size(), endB = j >= b.size();
        if (endA || endB) return endA == endB ? 0 : (endA ? -1 : 1);
        if (wa != wb) return wa < wb ? -1 : 1;
        ++i;
        ++j;
    }
}

}  // namespace

bool lyricsRefLess(const std::string& a, const std::string& b) {
    if (const int p = primaryCompare(a, b); p != 0) return p < 0;
    // Equal at first sight: accents and hyphens decide, case never does.
    const size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        const char32_t x = folded(a[i]), y = folded(b[i]);
        if (x != y) return x < y;
    }
    return a.size() < b.size();
}

void addSorted(ui::ListBox& list, const std::string& entry) {
    int lo = 0, hi = list.listCount();
    while (lo < hi) {
        const int midIndex = (lo + hi) / 2;
        if (lyricsRefLess(entry, list.list(midIndex))) hi = midIndex;
        else lo = midIndex + 1;
    }
    list.addItem(entry, lo);
}

int compareText(const std::string& a, const std::string& b) {
    const size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        const char32_t x = codePoint(a[i]), y = codePoint(b[i]);
        if (x != y) return x < y ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

void SyncLyrics(const std::string& nowCaption, const ui::ListBox& LyricsRef, int16_t& lyricPos,
                const std::function<void()>& next, const std::function<void()>& prev) {
    const std::string now = trim(nowCaption);
    const int count = LyricsRef.listCount();
    auto entry = [&](int k) { return trim(left(LyricsRef.list(k), 9)); };
    if (compareText(now, entry(lyricPos)) >= 0) {
        while (lyricPos != count && compareText(now, entry(lyricPos)) > 0) {
            if (next) next();
            lyricPos = add16(lyricPos, 1);
        }
    } else {
        while (lyricPos != 1 && compareText(now, entry(lyricPos - 1)) < 0) {
            lyricPos = add16(lyricPos, -1);
            if (prev) prev();
        }
    }
}

}  // namespace velaro::tags
