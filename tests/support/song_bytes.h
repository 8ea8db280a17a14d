#pragma once
// Byte builders for song files in tests and benchmarks.

#include <cstdint>
#include <initializer_list>
#include <string>

namespace velaro::testing {

std::string bytes(std::initializer_list<int> b);
std::string vlq(uint32_t v);
// "MThd", length 6, format, tracks, division: 14 bytes.
std::string smfHeader(int format, int tracks, int division);
// "MTrk", the body's length, the body.
std::string smfTrack(const std::string& body);
// A meta event without its delta: FF type len data (len as one byte).
std::string meta(int type, const std::string& data);
std::string textEvent(const std::string& text);
std::string tempoEvent(uint32_t usPerQuarter);

// All 16 channels at full controller volume and expression, fortissimo
// four-note chords on every beat for `beats` beats at 120 BPM: the loudest
// kind of General MIDI song.
std::string denseSong(int beats);

// Writes bytes to a fresh file under the test temp folder (the name prefixed
// with the process id) and returns its path.
std::string writeTemp(const std::string& name, const std::string& content);

}  // namespace velaro::testing
