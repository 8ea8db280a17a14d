// Lyric extraction: walks the text from one FF byte to the next. Each FF
// gives one record; a text event (FF 01) not starting with "@" gives the
// word. The delta behind an event is read by where the next FF stands, so
// the time line is built only from deltas that follow an FF byte.

#include "../base/byte_text.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../shell/frm_main.h"

namespace velaro::song {

void frmMain::GetWords(std::string text) {
    int64_t pos = 1;
    int32_t wordIndex = 0;
    int16_t line = 0;
    int16_t charPos = 0;
    double runningMs = 0;
    // These keep their value when a read past the end fails, so the tail
    // record repeats the delta before it.
    int n = 0;
    int64_t b0 = 0, b1 = 0, b2 = 0, b3 = 0;

    auto rec = [&]() -> WordRec& { return wordTable.at(static_cast<size_t>(wordIndex)); };
    auto growLines = [&] {
        if (lineTable.size() < static_cast<size_t>(line) + 1) lineTable.resize(static_cast<size_t>(line) + 1);
    };

    for (;;) {
        std::string word;
        pos = FIND(pos, text, std::string_view("\xFF", 1));
        if (pos == 0) return;

        uint8_t nb = 0;
        if (tryByteAt(text, pos + 2, nb)) n = nb;
        resumeNext([&] {
            if (mid(text, pos + 1, 1) == "\x01" && mid(text, pos + 3, 1) != "@")
                word = mid(text, pos + 3, n);
        });
        uint8_t b = 0;
        if (tryByteAt(text, pos + 3 + n, b)) b0 = b;
        if (tryByteAt(text, pos + 4 + n, b)) b1 = b;
        if (tryByteAt(text, pos + 5 + n, b)) b2 = b;
        if (tryByteAt(text, pos + 6 + n, b)) b3 = b;

        int64_t delta;
        if (b1 == 0xFF) delta = b0;
        else if (b2 == 0xFF) delta = ((b0 & 127) * 128) | (b1 & 127);
        else if (b3 == 0xFF) delta = ((((b0 & 127) * 128) | (b1 & 127)) * 128) | (b2 & 127);
        else delta = ((((((b0 & 127) * 128) | (b1 & 127)) * 128) | (b2 & 127)) * 128) | (b3 & 127);

        const double deltaMs = static_cast<double>(delta) * msPerTick;
        runningMs += deltaMs;

        resumeNext([&] { wordIndex = add32(wordIndex, 1); });
        resumeNext([&] {
            if (wordTable.size() < static_cast<size_t>(wordIndex) + 1)
                wordTable.resize(static_cast<size_t>(wordIndex) + 1);
        });

        const std::string trimmed = trim(word);
        if (trimmed == "\\" || trimmed == "/") {
            // A lone mark: an empty line of its own.
            charPos = 0;
            word.clear();
            resumeNext([&] { line = add16(line, 1); });
            resumeNext(growLines);
            resumeNext([&] {
                WordRec& r = rec();
                r.text.clear();
                r.textLen = 0;
                r.linePos = 0;
                r.deltaMs = deltaMs;
                r.timeMs = runningMs;
                r.lineIndex = line;
            });
            resumeNext([&] { lineTable.at(static_cast<size_t>(line)).clear(); });
        } else if (!word.empty() && (word[0] == '/' || word[0] == '\\')) {
            // A leading mark starts a new line with the rest of the word.
            charPos = 0;
            word = ltrim(std::string_view(word).substr(1));
            resumeNext([&] { line = add16(line, 1); });
            resumeNext(growLines);
            resumeNext([&] {
                WordRec& r = rec();
                r.text = word;
                r.textLen = checked16(static_cast<int64_t>(word.size()));
                r.linePos = 0;
                r.deltaMs = deltaMs;
                r.timeMs = runningMs;
                r.lineIndex = line;
            });
            resumeNext([&] { lineTable.at(static_cast<size_t>(line)) = word; });
        } else {
            resumeNext([&] {
                WordRec& r = rec();
                r.text = word;
                r.textLen = checked16(static_cast<int64_t>(word.size()));
                r.linePos = charPos;
                r.deltaMs = deltaMs;
                r.timeMs = runningMs;
                r.lineIndex = line;
            });
            resumeNext([&] { lineTable.at(static_cast<size_t>(line)) += word; });
        }
        resumeNext([&] { charPos = add16(charPos, static_cast<int64_t>(word.size())); });
        pos = pos + 1;
    }
}

}  // namespace velaro::song
