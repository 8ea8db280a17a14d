#pragma once
// The song model's records: one row per MIDI channel and one record per FF
// byte of the lyric text.

#include <cstdint>
#include <string>

namespace velaro::song {

struct ChannelRow {
    int16_t patchChanged = 0;
    int16_t volumeChanged = 0;
    int16_t patch = 0;
    int16_t channelNo = -1;
    int16_t volume = 0;
    int16_t pan = 64;
    int16_t rowState = 0;
};

struct WordRec {
    double timeMs = 0;
    double deltaMs = 0;
    std::string text;  // Windows-1252 bytes
    int16_t textLen = 0;
    int32_t linePos = 0;
    int16_t lineIndex = 0;
};

}  // namespace velaro::song
