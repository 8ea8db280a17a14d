// libFuzzer target: any bytes through the MP3 analysis, both ID3v1 readers
// and one save of the tags.
// Built by tests/fuzz/CMakeLists.txt: `make fuzz` fuzzes it, every other build replays its corpus.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/base/paths.h"
#include "core/tags/id3v1.h"
#include "core/tags/mmp3.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velaro;
    static const std::string path = tempFolder() + "/velaro-fuzz-tags.mp3";
    writeWholeFile(path, std::string(reinterpret_cast<const char*>(data), size));
    tags::Mmp3 m;
    const tags::Mp3Info info = m.GetMp3Info(path);
    tags::clsMP3Info reader;
    try {
        reader.setFilename(path);
    } catch (const std::exception&) {
    }
    const auto fields = tags::makeId3Fields(info.Title, info.Artist, info.Album, info.Year, info.Comment, 12);
    m.WriteLyricsTag(path, "TAG" + std::string(fields.data(), fields.size()), info.Lyrics + "x");
    m.GetMp3Info(path);
    return 0;
}
