// WriteLyricsTag on a 1 GB sparse file and on a 1 MB file: the write touches
// only the tail, so its time must not grow with the file.

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/base/paths.h"
#include "core/tags/id3v1.h"
#include "core/tags/mmp3.h"

using namespace velaro;

namespace {

double writeMs(const std::string& path, int rounds) {
    const auto fields = tags::makeId3Fields("Bench", "Velaro", "", "2026", "", 12);
    const std::string record = "TAG" + std::string(fields.data(), fields.size());
    std::string lyrics;
    for (int i = 0; i < 40; ++i) lyrics += "[00:" + std::to_string(10 + i) + "]A line of the song\r\n";
    tags::Mmp3 m;
    double total = 0;
    for (int r = 0; r < rounds; ++r) {
        m.GetMp3Info(path);
        const auto t0 = std::chrono::steady_clock::now();
        m.WriteLyricsTag(path, record, r % 2 ? lyrics : lyrics.substr(0, lyrics.size() / 2));
        total += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
    }
    return total / rounds;
}

}  // namespace

int main() {
    const std::string big = tempFolder() + "/velaro-bench-1g.mp3", small = tempFolder() + "/velaro-bench-1m.mp3";
    {
        std::ofstream(big, std::ios::binary).put('\xFF');
        std::filesystem::resize_file(big, 1024ull * 1024 * 1024);  // sparse: no disk used
        std::ofstream s(small, std::ios::binary);
        s << std::string(1024 * 1024, '\x55');
    }
    const double msBig = writeMs(big, 20), msSmall = writeMs(small, 20);
    std::printf("WriteLyricsTag: 1 GB sparse file %.3f ms, 1 MB file %.3f ms per save (ratio %.2f)\n", msBig, msSmall,
                msBig / msSmall);
    std::filesystem::remove(big);
    std::filesystem::remove(small);
    return 0;
}
