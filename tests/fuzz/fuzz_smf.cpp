// libFuzzer target: any bytes through the sequencer's MIDI file parser, then
// the questions playback asks of what it made.
#include <cstddef>
#include <cstdint>
#include <string>

#include "engine/segment.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velaro::engine;
    Segment seg;
    if (parseSmf(std::string(reinterpret_cast<const char*>(data), size), seg)) {
        (void)seg.hasNotes();
        (void)seg.secondsAt(seg.length);
        (void)seg.secondsAt(seg.length / 2);
    }
    return 0;
}
