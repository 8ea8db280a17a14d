// Timing under load: a song played in real time with the full effect chain
// through a private PulseAudio null sink with 256-frame buffers, while a CPU
// hog spins on every core. Prints `velaro play --stats`'s line: the aim is
// zero underruns and no fallback to the silent clock. Ten minutes by
// default; `bench_load MINUTES` for another length.

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "core/base/paths.h"
#include "support/private_pulse.h"
#include "support/song_bytes.h"

using namespace velaro::testing;

namespace {

// A C major arpeggio on a piano at 120 BPM, one bar a second-and-a-half
// after another, for `minutes`: notes keep sounding all the way.
std::string arpeggios(double minutes) {
    std::string t = bytes({0x00, 0xC0, 0x00});
    const int bars = static_cast<int>(minutes * 60 / 2) + 1;
    const int notes[] = {60, 64, 67, 72};
    for (int b = 0; b < bars; ++b)
        for (int n : notes) t += bytes({0x00, 0x90, n, 0x60}) + vlq(96) + bytes({0x80, n, 0x40});
    return smfHeader(0, 1, 96) + smfTrack(t + bytes({0x00, 0xFF, 0x2F, 0x00}));
}

}  // namespace

int main(int argc, char** argv) {
    const double minutes = argc > 1 ? std::atof(argv[1]) : 10.0;
    PrivatePulse pulse;
    const std::string why = pulse.start();
    if (!why.empty()) {
        std::printf("bench_load: skipped: %s\n", why.c_str());
        return 0;
    }
    const std::string song = writeTemp("bench-load.mid", arpeggios(minutes));
    std::string cmd = std::string(VELARO_BIN) + " play " + song + " --stats";
    for (const char* n : {"gargle", "chorus", "flanger", "echo", "distortion", "compressor", "parameq", "reverb"})
        cmd += std::string(" --effect ") + n;
    cmd += " 2>&1 | tail -1";

    std::atomic<bool> stop{false};
    std::vector<std::thread> hogs;
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    for (unsigned i = 0; i < cores; ++i)
        hogs.emplace_back([&stop] {
            volatile double x = 1;
            while (!stop.load(std::memory_order_relaxed)) x = x * 1.0000001 + 1e-9;
        });
    std::printf("bench_load: %.1f min of song, 8 effects, 256-frame buffers, %u CPU hogs\n", minutes, cores);
    std::fflush(stdout);
    const auto start = std::chrono::steady_clock::now();
    const int rc = std::system(cmd.c_str());
    const double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    stop = true;
    for (auto& h : hogs) h.join();
    std::printf("bench_load: %.1f s of wall clock (aim: 0 underruns, 0 fallbacks)\n", took);
    return rc == 0 ? 0 : 1;
}
