// Render speed against FluidSynth's own command line, with the same bank,
// rate and polyphony: the demo song and a dense generated 16-channel song.
// Prints seconds of music per second of work for both and their ratio
// (above 1.0: we render faster), then the open-to-first-audio time.
//
// usage: bench_render [BANK]

#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/base/paths.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "engine/engine_platform.h"
#include "engine/synth.h"
#include "support/song_bytes.h"

using namespace velaro;
using Clock = std::chrono::steady_clock;

namespace {

double secondsOf(const std::string& cmd) {
    auto t0 = Clock::now();
    int rc = std::system((cmd + " >/dev/null 2>&1").c_str());
    if (!WIFEXITED(rc) || WEXITSTATUS(rc) != 0) return -1;
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

// 16 channels of steady eighth-note chords, about a minute at 120 BPM.
std::string denseSong() {
    using namespace velaro::testing;
    std::string s = smfHeader(1, 17, 480);
    s += smfTrack(bytes({0x00}) + tempoEvent(500000) + bytes({0x00, 0xFF, 0x2F, 0x00}));
    for (int ch = 0; ch < 16; ++ch) {
        std::string t = bytes({0x00, 0xC0 + ch, (ch * 8) % 128});
        for (int k = 0; k < 240; ++k) {
            const int root = 40 + (k * 7 + ch * 3) % 36;
            t += bytes({0x00, 0x90 + ch, root, 80, 0x00, 0x90 + ch, root + 4, 70, 0x00, 0x90 + ch, root + 7, 70});
            t += vlq(240) + bytes({0x80 + ch, root, 64, 0x00, 0x80 + ch, root + 4, 64, 0x00, 0x80 + ch, root + 7, 64});
        }
        s += smfTrack(t + bytes({0x00, 0xFF, 0x2F, 0x00}));
    }
    return s;
}

void compare(const char* name, const std::string& song, double musicSeconds, const std::string& bank) {
    const std::string ours = tempFolder() + "/bench-ours.wav", theirs = tempFolder() + "/bench-fluid.wav";
    const double tOurs = secondsOf(std::string(VELARO_BIN) + " render " + song + " -o " + ours + " --bank " + bank);
    const double tTheirs = secondsOf("fluidsynth -ni -q -g 0.8 -r 44100 -o synth.polyphony=256 -F " + theirs + " " +
                                     bank + " " + song);
    std::printf("%-22s %6.1f s of music: velaro %6.2f s (%5.1fx real time)", name, musicSeconds, tOurs,
                musicSeconds / tOurs);
    if (tTheirs > 0)
        std::printf(", fluidsynth %6.2f s (%5.1fx); ratio %.2f\n", tTheirs, musicSeconds / tTheirs, tTheirs / tOurs);
    else
        std::printf(", fluidsynth command not available\n");
    std::remove(ours.c_str());
    std::remove(theirs.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    const std::string bank = argc > 1 ? argv[1] : engine::Synth::defaultBankPath();
    if (bank.empty()) {
        std::fprintf(stderr, "bench_render: no sound bank\n");
        return 1;
    }
    std::printf("bank %s, 44100 Hz, polyphony 256\n", bank.c_str());
    compare("demo song", VELARO_DEMO_SONG, 81.0, bank);
    const std::string dense = testing::writeTemp("bench-dense.mid", denseSong());
    compare("dense 16-channel song", dense, 60.0, bank);

    // Open to first audio: the window's open, the press of Play, and the
    // first block that is not silence.
    ui::Headless ui;
    engine::EnginePlatform ep(44100);
    song::frmMain f(ui.rt, ep.get());
    f.load();
    f.soundBankPath = bank;
    f.Initialize();
    bool heard = false;
    int64_t framesToSound = 0;
    ep.audio().setSink([&](const float* s, int n) {
        for (int i = 0; i < 2 * n && !heard; ++i)
            if (s[i] != 0.0f) heard = true, framesToSound += i / 2;
        if (!heard) framesToSound += n;
    });
    ui.loop.attachAudio([&](int64_t n) { ep.audio().render(n); }, 44100);
    auto t0 = Clock::now();
    f.setSongPath(VELARO_DEMO_SONG);
    f.OpenFile();
    f.Cmd_Play_Click();
    ui.loop.advanceUntil([&] { return heard; }, 20000);
    const double wall = std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
    std::printf("open to first audio: %.0f ms of work, first sound %.0f ms into the song's output\n", wall,
                framesToSound * 1000.0 / 44100);
    return 0;
}
