// libFuzzer target: any bytes through the lyric-event converter; a file it
// writes is a MIDI file that converts again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tx_convert.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string out;
    if (velaro::tools::convertLyricEvents(std::string(reinterpret_cast<const char*>(data), size), out)) {
        std::string again;
        if (!velaro::tools::convertLyricEvents(out, again)) std::abort();
    }
    return 0;
}
