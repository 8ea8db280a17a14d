// libFuzzer target: any bytes as a drive's CD-TEXT block, read into the
// album, artist and track lines as the ripper window lists them.
// Built by tests/fuzz/CMakeLists.txt: `make fuzz` fuzzes it, every other build replays its corpus.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/cd/cd_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velaro::cd;
    const std::string block(reinterpret_cast<const char*>(data), size);
    const int tracks = size > 0 ? data[0] % 100 : 0;
    const CdText text = parseCdText(block, tracks);
    for (int t = 1; t <= tracks; ++t) (void)trackLine(t, int64_t{t} * 2352 * 75, text.titles[t], text.performers[t]);
    return 0;
}
