// libFuzzer target: any bytes as a CUE sheet beside a small BIN image, opened
// where a drive is expected: the track list, its lengths, CD-TEXT, and a read
// from each track's start.
// Built by tests/fuzz/CMakeLists.txt: `make fuzz` fuzzes it, every other build replays its corpus.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/base/paths.h"
#include "engine/cd_drives.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velaro;
    static const std::string dir = [] {
        const std::string d = tempFolder() + "/velaro-fuzz-cue";
        std::filesystem::create_directories(d);
        // Three seconds of a quiet ramp: the image the sheets point at.
        std::string bin(3 * 75 * 2352, '\0');
        for (size_t i = 0; i < bin.size(); ++i) bin[i] = static_cast<char>((i / 4) & 0x3f);
        writeWholeFile(d + "/disc.bin", bin);
        return d;
    }();
    const std::string cue = dir + "/disc.cue";
    writeWholeFile(cue, std::string(reinterpret_cast<const char*>(data), size));
    engine::EngineCdLibrary cd(nullptr, false);
    cd.addDrive(cue);
    if (!cd.IsReady(0)) return 0;
    const int tracks = cd.GetTracks(0);
    std::string block;
    cd.GetID(0, 4, block);  // the CD-TEXT block
    std::vector<char> buffer(4 * 2352);
    for (int t = 0; t < tracks && t < 100; ++t) {
        (void)cd.GetTrackLength(0, t);
        const platform::CdStreamId s = cd.StreamCreate(0, t, 0);
        if (!s) continue;
        cd.ChannelGetData(s, buffer.data(), static_cast<int>(buffer.size()));
        cd.StreamFree(s);
    }
    return 0;
}
