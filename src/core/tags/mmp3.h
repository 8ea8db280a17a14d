#pragma once
// What an audio file holds: one MPEG frame header as display texts, the
// ID3v1 fields and the Lyrics3 lyrics. The module keeps the state of the
// last file analysed, which the Lyrics3 writer relies on.

#include <cstdint>
#include <optional>
#include <string>

namespace velaro::tags {

struct Mp3Info {
    std::string BitRate, ChannelMode, Copyrighted, Crc, Emphasis, SampleRate, Layer, Length, MpegVersion,
        Original, Size, Spare, Title, Artist, Album, Year, Comment;
    std::optional<int> Genre;  // genre byte + 1 when a tag was read
    std::string Lyrics;        // Windows-1252 bytes
};

class Mmp3 {
public:
    // Clears the fields (not the flags, not LyricsBlockStart), reads the file, returns the trimmed record.
    Mp3Info GetMp3Info(const std::string& path);
    void ReadTags();
    void ReadMpegHeader();
    bool ReadLyricsTag();
    // Writes the Lyrics3 block (when there are lyrics) and the 128-byte record
    // at the end of the file and cuts it behind them. Relies on a GetMp3Info of
    // this file just before. Says whether it was done; on failure the file is
    // untouched and WriteError says why (a full disk included).
    bool WriteLyricsTag(const std::string& path, const std::string& id3Record, const std::string& lyrics);
    // Sets the file's end at `size` when it is longer; otherwise nothing.
    static void TruncateFile(const std::string& path, int64_t size);
    // The Xing frame count as whole seconds and an average bit rate.
    static void VbrInfo(int64_t fileLength, int64_t frames, std::string& bitRateText, std::string& secondsText);
    static bool InRange(uint8_t value, uint8_t low, uint8_t high) { return low <= value && value <= high; }
    // MM:SS, or HH:MM:SS from one hour on.
    static std::string lengthText(int64_t seconds);

    // ---- module state ----
    std::string Mp3FileName;
    Mp3Info fields;  // untrimmed
    bool HasId3Tag = false;
    bool HasLyricsTag = false;
    bool LyricsSeen = false;
    int32_t LyricsBlockStart = 0;
    int32_t PlaySeconds = 0;
    // Why the last WriteLyricsTag failed, for the user; empty after a success.
    std::string WriteError;
};

}  // namespace velaro::tags
