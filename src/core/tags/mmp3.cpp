#include "mmp3.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "../base/byte_text.h"
#include "../base/paths.h"
#include "../base/safe_file.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"

namespace velaro::tags {

namespace {

// Binary reads as the old Get did: a position before the start is an error;
// bytes past the end are simply not there (the rest keeps its blanks).
std::string readAt(std::ifstream& in, int64_t length, int64_t pos, size_t n) {
    if (pos < 1) throw VbError(VbErr::InvalidCall, "Bad record number");
    std::string out(n, ' ');
    if (pos > length) return out;
    in.clear();
    in.seekg(pos - 1);
    in.read(out.data(), static_cast<std::streamsize>(n));
    return out;
}

std::string stripZeros(std::string s) {
    s.erase(std::remove(s.begin(), s.end(), '\0'), s.end());
    return s;
}

// The value of leading digits; anything else reads as 0.
int64_t digitsValue(const std::string& s) {
    int64_t v = 0;
    for (char c : s) {
        if (c < '0' || c > '9') break;
        v = v * 10 + (c - '0');
    }
    return v;
}

std::string trimmedAll(std::string s) { return trim(s); }

}  // namespace

std::string Mmp3::lengthText(int64_t s) {
    const int64_t hours = s / 3600, minutes = (s / 60) % 60, seconds = s % 60;
    std::string t = vbFormat(double(minutes), "00") + ":" + vbFormat(double(seconds), "00");
    if (hours > 0) t = vbFormat(double(hours), "00") + ":" + t;
    return t;
}

void Mmp3::VbrInfo(int64_t fileLength, int64_t frames, std::string& bitRateText, std::string& secondsText) {
    // About 38 frames a second, and one more every third second.
    int64_t left = frames - 57, seconds = 0;
    while (left > 0) {
        ++seconds;
        left -= 38;
        if (seconds % 3 == 0) left -= 1;
    }
    secondsText = std::to_string(seconds);
    // The byte count times 8 is a 32-bit number: from 256 MiB up it overflows.
    const int32_t bits = checked32(fileLength * 8);
    bitRateText = std::to_string(static_cast<int64_t>(vbInt(vbDivide(bits, double(seconds) * 1000)))) + " Kbit (VBR)";
}

Mp3Info Mmp3::GetMp3Info(const std::string& path) {
    fields = Mp3Info{};
    PlaySeconds = 0;
    Mp3FileName = path;
    ReadTags();
    Mp3Info r = fields;
    for (std::string* s : {&r.BitRate, &r.ChannelMode, &r.Copyrighted, &r.Crc, &r.Emphasis, &r.SampleRate, &r.Layer,
                           &r.Length, &r.MpegVersion, &r.Original, &r.Size, &r.Spare, &r.Title, &r.Artist, &r.Album,
                           &r.Year, &r.Comment, &r.Lyrics})
        *s = trimmedAll(*s);
    return r;
}

void Mmp3::ReadTags() {
    try {
        std::ifstream in(Mp3FileName, std::ios::binary);
        if (!in) throw VbError(VbErr::FileNotFound);
        const int64_t L = fileLength(Mp3FileName);
        if (readAt(in, L, L - 127, 3) != "TAG") {
            HasId3Tag = false;
        } else {
            int64_t p = L - 124;
            auto text = [&](size_t n) {
                std::string s = stripZeros(trim(readAt(in, L, p, n)));
                p += static_cast<int64_t>(n);
                return s;
            };
            fields.Title = text(30);
            fields.Artist = text(30);
            fields.Album = text(30);
            fields.Year = text(4);
            fields.Comment = trim(text(30));
            fields.Genre = static_cast<uint8_t>(readAt(in, L, p, 1)[0]) + 1;
            HasId3Tag = true;
        }
        // The Lyrics3 trailer stands just before the record, or at the end.
        if (readAt(in, L, HasId3Tag ? L - 136 : L - 8, 6) == "LYRICS") {
            HasLyricsTag = ReadLyricsTag();
            LyricsSeen = true;
        } else {
            HasLyricsTag = false;
        }
        in.close();
        ReadMpegHeader();
    } catch (const std::exception&) {
        // Whatever was found so far stays; the rest stays empty.
    }
}

bool Mmp3::ReadLyricsTag() {
    try {
        std::ifstream in(Mp3FileName, std::ios::binary);
        if (!in) return false;
        const int64_t L = fileLength(Mp3FileName);
        const int64_t p = HasId3Tag ? L - 136 : L - 8;
        if (readAt(in, L, p, 9) != "LYRICS200") return false;
        const int64_t start = (p - 6) - digitsValue(readAt(in, L, p - 6, 6));
        LyricsBlockStart = checked32(start);
        if (readAt(in, L, start, 11) != "LYRICSBEGIN") return false;
        for (int64_t pos = start + 11; pos < p - 9;) {
            const std::string name = readAt(in, L, pos, 3);
            const int64_t size = digitsValue(readAt(in, L, pos + 3, 5));
            const std::string data = readAt(in, L, pos + 8, static_cast<size_t>(size));
            if (name == "LYR") fields.Lyrics = trim(data);
            pos += 8 + size;
        }
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void Mmp3::ReadMpegHeader() {
    std::string buf(4096, '\0');
    {
        std::ifstream in(Mp3FileName, std::ios::binary);
        in.read(buf.data(), 4096);
    }
    // A byte past the buffer is the empty text, whose value is an error.
    auto at = [&](int64_t j) {
        if (j < 1 || j > 4096) throw VbError(VbErr::InvalidCall);
        return static_cast<uint8_t>(buf[static_cast<size_t>(j - 1)]);
    };
    int64_t i = 1;
    for (; i <= 4092; ++i)
        if (at(i) == 255 && (InRange(at(i + 1), 250, 255) || InRange(at(i + 1), 242, 247))) break;
    if (i == 4093) return;
    const uint8_t b1 = at(i + 1), b2 = at(i + 2), b3 = at(i + 3);

    fields.Crc = (b1 & 1) ? "No" : "Yes";
    const bool mpeg2 = InRange(b1, 242, 247);
    const int multiplier = mpeg2 ? 1 : 2;
    fields.MpegVersion = mpeg2 ? " MPEG 2.0" : " MPEG 1.0";
    if (InRange(b1, 250, 251) || InRange(b1, 242, 243)) fields.Layer = " layer 3";
    else if (InRange(b1, 252, 253) || InRange(b1, 244, 245)) fields.Layer = " layer 2";
    else fields.Layer = " layer 1";

    const int rateIndex = b2 & 15;
    const float base = rateIndex <= 3 ? 22.05f : rateIndex <= 7 ? 24.0f : 16.0f;
    fields.SampleRate = " " + numberText(base * static_cast<float>(multiplier)) + " Hz";

    const int idx = b2 >> 4;
    int bitRate;
    if (mpeg2) bitRate = idx <= 7 ? idx * 8 : (idx - 8) * 16 + 64;
    else if (idx <= 5) bitRate = (idx + 3) * 8;
    else if (idx <= 9) bitRate = (idx - 5) * 16 + 64;
    else if (idx <= 13) bitRate = (idx - 9) * 32 + 128;
    else bitRate = 320;

    const int64_t L = fileLength(Mp3FileName);
    const int64_t bytesPerSecond = static_cast<int64_t>(roundHalfEven(bitRate / 8.0));
    if (bytesPerSecond == 0) throw VbError(VbErr::DivisionByZero);
    PlaySeconds = checked32((L / bytesPerSecond) / 1000);

    int64_t seconds;
    if (i + 39 <= 4096 && buf.compare(static_cast<size_t>(i + 35), 4, "Xing") == 0) {
        const int64_t frames = (int64_t{at(i + 45)} << 16) | (int64_t{at(i + 46)} << 8) | at(i + 47);
        std::string bitText, secondsText;
        VbrInfo(L, frames, bitText, secondsText);
        fields.BitRate = " " + bitText;
        seconds = std::stoll(secondsText);
    } else {
        fields.BitRate = " " + std::to_string(bitRate) + " Kbps";
        seconds = PlaySeconds;
    }
    fields.Length = " " + lengthText(seconds);

    fields.Copyrighted = (b3 & 8) ? " Yes" : " No";
    fields.Original = (b3 & 4) ? " Yes" : " No";
    static const char* const kEmphasis[] = {" None", " 50/15 microsec", " invalid", " CITT j. 17"};
    fields.Emphasis = kEmphasis[b3 & 3];
    static const char* const kModes[] = {" Stereo", " Joint Stereo", " 2 Channel", " Mono"};
    fields.ChannelMode = kModes[b3 >> 6];

    const double mb = roundHalfEven(double(L) / 1024 / 1024 * 100) / 100;
    fields.Size = " " + numberText(mb) + " MB";
}

bool Mmp3::WriteLyricsTag(const std::string& path, const std::string& id3Record, const std::string& lyrics) {
    WriteError.clear();
    try {
        std::string tail;
        if (!lyrics.empty()) {
            const auto n = static_cast<double>(lyrics.size());
            tail = "LYRICSBEGIN" + std::string("LYR") + vbFormat(n, "00000") + lyrics + vbFormat(19 + n, "000000") +
                   "LYRICS200";
        }
        tail += id3Record.substr(0, 128);
        tail.resize(tail.size() + (128 - std::min<size_t>(id3Record.size(), 128)), ' ');
        if (!std::filesystem::is_regular_file(path)) {
            WriteError = "no such file";
            return false;
        }
        const int64_t L = fileLength(path);
        int64_t pos = HasId3Tag ? L - 127 : L + 1;
        if (HasLyricsTag) pos = LyricsBlockStart;
        if (pos < 1 || pos > L + 1) {  // no place in this file: nothing is touched
            WriteError = "the tags have no place in this file";
            return false;
        }
        // The room for the whole new tail is taken before the old tags are overwritten.
        writeTailInPlace(path, pos - 1, tail);
        return true;
    } catch (const std::exception& e) {
        WriteError = e.what();
        return false;
    }
}

void Mmp3::TruncateFile(const std::string& path, int64_t size) {
    std::error_code ec;
    const auto length = std::filesystem::file_size(path, ec);
    if (ec || static_cast<int64_t>(length) <= size || size < 0) return;
    std::filesystem::resize_file(path, static_cast<uintmax_t>(size), ec);
}

}  // namespace velaro::tags
