// Reading a big song: readfile (with GetWords and the channel scan) on a
// generated 10 MB karaoke file. Prints the time per read and the throughput.
//
// usage: bench_readfile [MEGABYTES]

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "support/song_bytes.h"

using namespace velaro;

namespace {

// A format 1 song: a tempo track, a Words track of syllables with line marks,
// and note tracks on 15 channels filling up the rest.
std::string bigSong(size_t targetBytes) {
    using namespace velaro::testing;
    std::string words = bytes({0x00}) + meta(0x03, "Words");
    const char* syllables[] = {"/Ka", "ra", "o", "ke ", "to", "night ", "\\We ", "sing ", "a", "long "};
    size_t wordBytes = targetBytes / 10;
    for (size_t i = 0; words.size() < wordBytes; ++i) words += bytes({0x60}) + textEvent(syllables[i % 10]);
    words += bytes({0x00, 0xFF, 0x2F, 0x00});

    std::vector<std::string> tracks = {bytes({0x00}) + tempoEvent(500000) + bytes({0x00, 0xFF, 0x2F, 0x00}), words};
    size_t perTrack = (targetBytes - wordBytes) / 15;
    for (int ch = 0; ch < 16; ++ch) {
        if (ch == 9) continue;
        std::string t = bytes({0x00, 0xC0 + ch, ch * 7 + 1, 0x00, 0xB0 + ch, 0x07, 100, 0x00, 0xB0 + ch, 0x0A, 64});
        for (int k = 0; t.size() < perTrack; ++k) {
            int key = 48 + (k * 5 + ch) % 36;
            t += bytes({0x00, 0x90 + ch, key, 90, 0x3C, 0x80 + ch, key, 0x40});
        }
        tracks.push_back(t + bytes({0x00, 0xFF, 0x2F, 0x00}));
    }
    std::string s = smfHeader(1, static_cast<int>(tracks.size()), 480);
    for (const auto& t : tracks) s += smfTrack(t);
    return s;
}

}  // namespace

int main(int argc, char** argv) {
    double mb = argc > 1 ? std::atof(argv[1]) : 10.0;
    std::string content = bigSong(static_cast<size_t>(mb * 1024 * 1024));
    std::string path = velaro::testing::writeTemp("velaro-bench-song.kar", content);

    ui::Headless ui;
    platform::InertPlatform inert;
    song::frmMain f(ui.rt, inert.get());
    f.setSongPath(path);

    std::vector<double> ms;
    for (int run = 0; run < 5; ++run) {
        auto t0 = std::chrono::steady_clock::now();
        f.ZeroVariables();
        f.readfile();
        auto t1 = std::chrono::steady_clock::now();
        ms.push_back(std::chrono::duration<double, std::milli>(t1 - t0).count());
    }
    std::sort(ms.begin(), ms.end());
    const double median = ms[ms.size() / 2];
    const double sizeMb = static_cast<double>(content.size()) / (1024.0 * 1024.0);
    std::printf("readfile+GetWords: %.1f MB song, %d word records, %d lines\n", sizeMb, f.wordUpperBound(),
                f.lineUpperBound() + 1);
    std::printf("  median %.1f ms (best %.1f, worst %.1f) over %zu reads, %.0f MB/s\n", median, ms.front(),
                ms.back(), ms.size(), sizeMb / (median / 1000.0));
    std::remove(path.c_str());
    return 0;
}
