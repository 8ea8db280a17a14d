// How real songs sound through `velaro render` at the window's resting
// settings: for each General MIDI file of a folder, the clipped samples (must
// be 0), the peak, the integrated loudness (EBU R128), the ringing tail kept
// after the song's last event, and the render speed against FluidSynth's own
// command line with the same bank, rate and polyphony (above 1: we are faster).
//
// usage: bench_sound [FOLDER [BANK]]   (default: the OpenMSX collection of the
// Debian package openttd-openmsx, and the system's General MIDI bank)

#include <sndfile.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "core/base/paths.h"
#include "engine/segment.h"
#include "engine/song_loudness.h"
#include "engine/synth.h"

using namespace velaro;
using Clock = std::chrono::steady_clock;

namespace {

double secondsOf(const std::string& cmd) {
    auto t0 = Clock::now();
    int rc = std::system((cmd + " >/dev/null 2>&1").c_str());
    if (!WIFEXITED(rc) || WEXITSTATUS(rc) != 0) return -1;
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

struct Measure {
    int64_t frames = 0, clipped = 0;
    double peakDb = -INFINITY, lufs = -INFINITY;
};

Measure measure(const std::string& wav) {
    Measure m;
    SF_INFO info{};
    SNDFILE* f = sf_open(wav.c_str(), SFM_READ, &info);
    if (!f) return m;
    engine::LoudnessMeter meter(info.samplerate);
    std::vector<short> s(2 * 4096);
    std::vector<float> fl(2 * 4096);
    int peak = 0;
    for (sf_count_t n; (n = sf_readf_short(f, s.data(), 4096)) > 0;) {
        for (sf_count_t i = 0; i < 2 * n; ++i) {
            const int a = std::abs(static_cast<int>(s[i]));
            peak = std::max(peak, a);
            if (a >= 32767) ++m.clipped;
            fl[i] = s[i] / 32768.0f;
        }
        meter.add(fl.data(), static_cast<size_t>(n));
        m.frames += n;
    }
    sf_close(f);
    m.peakDb = peak ? 20 * std::log10(peak / 32768.0) : -INFINITY;
    m.lufs = meter.integrated();
    return m;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string folder = argc > 1 ? argv[1] : "/usr/share/games/openttd/baseset/openmsx";
    const std::string bank = argc > 2 ? argv[2] : engine::Synth::defaultBankPath();
    std::vector<std::string> songs;
    std::error_code ec;
    for (const auto& e : std::filesystem::directory_iterator(folder, ec)) {
        std::string ext = e.path().extension().string();
        std::transform(ext.begin(), ext.end(), ext.begin(), ::tolower);
        if (ext == ".mid" || ext == ".kar") songs.push_back(e.path().string());
    }
    std::sort(songs.begin(), songs.end());
    if (songs.empty()) {
        std::fprintf(stderr, "bench_sound: no songs in %s (apt-get install openttd-openmsx)\n", folder.c_str());
        return 1;
    }
    std::printf("%d songs from %s, bank %s, 44100 Hz\n", int(songs.size()), folder.c_str(), bank.c_str());
    std::printf("%-32s %8s %8s %8s %8s %7s %7s\n", "song", "length", "clipped", "peak dB", "LUFS", "tail s", "speed");
    const std::string tag = std::to_string(getpid());
    const std::string ours = tempFolder() + "/bench-sound-ours-" + tag + ".wav",
                      theirs = tempFolder() + "/bench-sound-fluid-" + tag + ".wav";
    int64_t allClipped = 0;
    double minLufs = INFINITY, maxLufs = -INFINITY, ratioSum = 0;
    int ratios = 0;
    for (const auto& song : songs) {
        engine::Segment seg;
        const bool parsed = engine::parseSmf(readWholeFile(song), seg);
        const double songSeconds = parsed ? seg.secondsAt(seg.length) : 0;
        const double tOurs = secondsOf(std::string(VELARO_BIN) + " render '" + song + "' -o " + ours + " --bank " + bank);
        const double tTheirs = secondsOf("fluidsynth -ni -q -r 44100 -o synth.polyphony=256 -F " + theirs + " " +
                                         bank + " '" + song + "'");
        const Measure m = measure(ours);
        const double tail = m.frames / 44100.0 - songSeconds;
        const double ratio = tOurs > 0 && tTheirs > 0 ? tTheirs / tOurs : NAN;
        allClipped += m.clipped;
        if (std::isfinite(m.lufs)) {
            minLufs = std::min(minLufs, m.lufs);
            maxLufs = std::max(maxLufs, m.lufs);
        }
        if (std::isfinite(ratio)) {
            ratioSum += ratio;
            ++ratios;
        }
        std::printf("%-32.32s %7.1fs %8lld %8.2f %8.2f %7.2f %7.2f\n",
                    std::filesystem::path(song).filename().string().c_str(), songSeconds,
                    static_cast<long long>(m.clipped), m.peakDb, m.lufs, tail, ratio);
        std::fflush(stdout);
    }
    std::printf("clipped samples in all: %lld; loudness from %.2f to %.2f LUFS (spread %.2f LU); "
                "mean speed ratio against fluidsynth %.2f\n",
                static_cast<long long>(allClipped), minLufs, maxLufs, maxLufs - minLufs,
                ratios ? ratioSum / ratios : NAN);
    std::remove(ours.c_str());
    std::remove(theirs.c_str());
    return 0;
}
