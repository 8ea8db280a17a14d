#pragma once
// The ripper's texts and the wave header it writes by hand.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velaro::cd {

inline constexpr int kBytesPerSecond = 176400;  // CD audio: 44100 Hz, 16 bits, stereo

// MM:SS, or HH:MM:SS from one hour on; seconds are rounded half up first.
std::string Seconds2HMS(double seconds);

// What the CD-TEXT block says of the disc (entry 0) and its tracks.
struct CdText {
    std::vector<std::string> titles;      // index 0 is the disc
    std::vector<std::string> performers;  // index 0 is the artist
};
// Reads the "KEYn=text" strings up to the empty one; other keys are passed over.
// Rooms for entries 0 to `tracks`; numbers outside them are dropped.
CdText parseCdText(std::string_view block, int tracks);

// One line of `lstTracks` (tab stops 15 and -235): track from 1, length in bytes.
std::string trackLine(int track, int64_t bytes);
std::string trackLine(int track, int64_t bytes, const std::string& title, const std::string& performer);
std::string trackTime(int64_t bytes);

// The 44 header bytes, with both sizes filled in for `dataBytes` of samples.
std::string waveHeader(int channels, int rate, int bits, uint32_t dataBytes);

}  // namespace velaro::cd
