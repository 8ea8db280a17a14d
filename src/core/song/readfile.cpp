// The song file reader. It holds the whole file as bytes and finds what it
// wants by searching for byte patterns; only the chunk lengths steer it from
// track to track. Every statement runs with errors ignored: a step that fails
// leaves its field as it was and the next step runs.

#include <cstdint>

#include "../base/byte_text.h"
#include "../base/paths.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../shell/frm_main.h"

namespace velaro::song {

namespace {

const std::string kTempo("\xFF\x51", 2);
const std::string kWordsName("\xFF\x03\x05" "Words", 8);
const std::string kTextEvent("\xFF\x01", 2);

// "&H" + digits as a plain non-negative number (division and tempo).
int64_t hexNumber(const std::string& digits) {
    if (digits.empty()) throw VbError(VbErr::TypeMismatch);
    int64_t v = 0;
    for (char c : digits) v = v * 16 + (c <= '9' ? c - '0' : c - 'A' + 10);
    return v;
}

}  // namespace

void frmMain::ZeroVariables() {
    if (keepSongModel) return;
    wordCursor = 0;
    resumeNext([&] {
        lineTable.assign(1, std::string());
        wordTable.assign(1, WordRec{});
    });
    for (int c = 0; c < 16; ++c) {
        channelTable[c] = ChannelRow{};
        resumeNext([&] { Slider2(c).setValue(0); });
        resumeNext([&] { Slider2(c).setEnabled(false); });
        resumeNext([&] { Check1(c).setValue(0); });
    }
}

void frmMain::readfile() {
    const std::string path = songPath();
    resumeNext([&] { songBytes = readWholeFile(path); });

    // Format and track count: each byte in hexadecimal without a leading
    // zero, joined and read as a 16-bit number, so 01 02 reads as 0x12.
    resumeNext([&] {
        smfFormat = static_cast<int16_t>(
            hexValue(hexByte(byteAt(songBytes, 9)) + hexByte(byteAt(songBytes, 10))));
    });
    resumeNext([&] {
        smfTracks = static_cast<int16_t>(
            hexValue(hexByte(byteAt(songBytes, 11)) + hexByte(byteAt(songBytes, 12))));
    });

    // Only the first tempo event counts, wherever it stands.
    int64_t p = 0;
    resumeNext([&] { p = FIND(1, songBytes, kTempo); });
    if (p != 0) {
        std::string t1, t2, t3, d1, d2;
        resumeNext([&] { t1 = hexByte2(byteAt(songBytes, p + 3)); });
        resumeNext([&] { t2 = hexByte2(byteAt(songBytes, p + 4)); });
        resumeNext([&] { t3 = hexByte2(byteAt(songBytes, p + 5)); });
        resumeNext([&] { d1 = hexByte2(byteAt(songBytes, 13)); });
        resumeNext([&] { d2 = hexByte2(byteAt(songBytes, 14)); });
        int64_t division = 0;
        resumeNext([&] { division = hexNumber(d1 + d2); });
        resumeNext([&] { divisionQuarter = static_cast<double>(division) / 4.0; });
        resumeNext([&] { tempoUs = static_cast<double>(hexNumber(t1 + t2 + t3)); });
        resumeNext([&] {
            songBpm = std::stof(vbFormat(vbDivide(60000000.0, tempoUs), "0.00"));
        });
        resumeNext([&] { msPerTick = vbDivide(vbDivide(tempoUs, divisionQuarter), 4000.0); });
    }

    // The lyric track: the first track named "Words" or holding at least 50
    // text events; the header is taken to be 14 bytes long.
    int64_t pos = 15;
    int32_t chunkLength = 0;
    std::string l1, l2, l3, l4, chunk;
    bool chosen = false;
    const int16_t tracks = smfTracks;
    for (int i = 1; i <= tracks && !chosen; ++i) {
        uint8_t b = 0;
        if (tryByteAt(songBytes, pos + 4, b)) l1 = hexByte2(b);
        if (tryByteAt(songBytes, pos + 5, b)) l2 = hexByte2(b);
        if (tryByteAt(songBytes, pos + 6, b)) l3 = hexByte2(b);
        if (tryByteAt(songBytes, pos + 7, b)) l4 = hexByte2(b);
        if (!l1.empty() || !l2.empty() || !l3.empty() || !l4.empty())
            chunkLength = hexValue(l1 + l2 + l3 + l4);
        if (pos + 8 >= 1 && chunkLength >= 0) chunk = mid(songBytes, pos + 8, chunkLength);
        if (FIND(1, chunk, kWordsName) > 0) {
            GetWords(chunk);
            chosen = true;
            break;
        }
        int64_t q = 1;
        bool fifty = true;
        for (int k = 0; k < 50; ++k) {
            q = FIND(q, chunk, kTextEvent);
            if (q == 0) {
                fifty = false;
                break;
            }
            q = q + 1;
        }
        if (fifty) {
            GetWords(chunk);
            chosen = true;
            break;
        }
        // A position past 32 bits is an overflow: the step is skipped and pos stays.
        const int64_t next = pos + int64_t{chunkLength} + 8;
        if (next >= INT32_MIN && next <= INT32_MAX) pos = next;
    }
    if (!chosen) GetWords(songBytes);

    fullLyricText.clear();
    for (const std::string& line : lineTable) {
        fullLyricText += line;
        fullLyricText += "\r\n";
    }

    // Channel rows, from a fresh read of the file.
    resumeNext([&] { songBytes = readWholeFile(path); });
    for (int c = 0; c < 16; ++c) scanChannel(c);

    for (int c = 0; c < 16; ++c) {
        ChannelRow& row = channelTable[c];
        row.patchChanged = 0;
        row.volumeChanged = 0;
        if (row.channelNo < 0) {
            resumeNext([&] { Slider2(c).setEnabled(false); });
            resumeNext([&] { Slider2(c).setValue(0); });
        } else {
            resumeNext([&] { Slider2(c).setValue(row.volume); });
            resumeNext([&] { Slider2(c).setEnabled(true); });
            row.rowState = 2;
            resumeNext([&] { Check1(c).setValue(1); });
            resumeNext([&] { Check1(c).setEnabled(true); });
            resumeNext([&] { Option1(c).setEnabled(true); });
            resumeNext([&] { Option1(c).setValue(false); });
        }
        resumeNext([&] { rt.loop.doEvents(); });
    }

    resumeNext([&] { CreateFileTemp(); });
}

// A channel is used when its note-on status byte appears anywhere in the file.
// Program, volume and pan are the first plausible hits after byte 21.
void frmMain::scanChannel(int c) {
    ChannelRow& row = channelTable[c];
    const std::string& s = songBytes;
    const auto len = static_cast<int64_t>(s.size());
    int64_t programCursor = 21, volumeCursor = 21, panCursor = 21;
    row.channelNo = -1;
    if (FIND(1, s, std::string(1, static_cast<char>(144 + c))) == 0) return;
    row.channelNo = static_cast<int16_t>(c + 1);

    // Program 0 is passed over, so a later program change wins over it.
    const std::string program(1, static_cast<char>(192 + c));
    for (;;) {
        programCursor = FIND(programCursor + 1, s, program);
        if (programCursor != 0 && programCursor + 1 > len) break;  // its byte lies past the end
        if (programCursor == 0 || byteAt(s, programCursor + 1) >= 1) break;
    }
    if (programCursor != 0) resumeNext([&] { row.patch = byteAt(s, programCursor + 1); });

    // Volume: the first controller 7 value from 1 to 126, else 100.
    const std::string volume{static_cast<char>(176 + c), '\x07'};
    for (;;) {
        row.volume = 100;
        volumeCursor = FIND(volumeCursor + 1, s, volume);
        if (volumeCursor == 0 || volumeCursor + 2 > len) break;
        uint8_t v = byteAt(s, volumeCursor + 2);
        if (v > 0 && v < 127) {
            row.volume = v;
            break;
        }
    }

    // Pan: the first controller 10 value; a 0 or a value above 127 gets one
    // more look, whose value is taken as it is.
    const std::string pan{static_cast<char>(176 + c), '\x0A'};
    panCursor = FIND(panCursor + 1, s, pan);
    if (panCursor > 0) {
        resumeNext([&] { row.pan = byteAt(s, panCursor + 2); });
        if (row.pan >= 128 || row.pan == 0) {
            panCursor = FIND(panCursor + 1, s, pan);
            if (panCursor > 0) resumeNext([&] { row.pan = byteAt(s, panCursor + 2); });
        }
    }
}

}  // namespace velaro::song
