#pragma once
// The lyric-event conversion of velaro-tx, apart from its files so that it
// can be fuzzed: FF 05 lyrics out of every track into a "Words" track of
// FF 01 texts with the "/" and "\" marks the song reader knows.

#include <string>

namespace velaro::tools {

// False (and `out` untouched) when `in` holds no MIDI header.
bool convertLyricEvents(const std::string& in, std::string& out);

}  // namespace velaro::tools
