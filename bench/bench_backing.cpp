// The backing player: both streams of a minute of 44.1 kHz stereo, the vocal
// cut on one and eight peaking bands on each, rendered offline, as a multiple
// of real time for the CPU it takes (all threads, so on one core); then the
// time from VocalRemove to the first audio.

#include <sndfile.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "core/base/paths.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "engine/engine_platform.h"

using namespace velaro;

namespace {

constexpr int kRate = 44100, kSeconds = 60;

std::string writeSong() {
    const std::string path = RPP(tempFolder()) + "bench-backing-" + std::to_string(getpid()) + ".wav";
    SF_INFO info{};
    info.samplerate = kRate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
    std::vector<float> block(2 * kRate);
    for (int s = 0; s < kSeconds; ++s) {
        for (int i = 0; i < kRate; ++i) {
            const double t = s + double(i) / kRate;
            const double voice = 0.2 * std::sin(2 * M_PI * 330 * t * (1 + 0.01 * std::sin(5 * t)));
            const double bass = 0.2 * std::sin(2 * M_PI * 55 * t), side = 0.1 * std::sin(2 * M_PI * 2500 * t);
            block[2 * i] = static_cast<float>(voice + bass + side);
            block[2 * i + 1] = static_cast<float>(voice + bass - side);
        }
        sf_writef_float(f, block.data(), kRate);
    }
    sf_close(f);
    return path;
}

double cpuSeconds() { return double(std::clock()) / CLOCKS_PER_SEC; }

}  // namespace

int main() {
    const std::string song = writeSong();
    {
        ui::Headless ui;
        engine::EnginePlatform ep(kRate);
        song::frmMain f(ui.rt, ep.get());
        f.setSongPath(song);
        f.backing.Chkrem.setValue(1);
        const auto wall0 = std::chrono::steady_clock::now();
        f.recording.Cmdplw_Click();
        // The first block that sounds: the decoders have had to start and fill.
        int64_t frames = 0;
        while (ep.audio().lastPeak() == 0.0f && frames < kRate) {
            ep.audio().render(engine::AudioEngine::kOfflineBlock);
            frames += engine::AudioEngine::kOfflineBlock;
        }
        const double firstMs = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - wall0).count();
        const double cpu0 = cpuSeconds();
        const auto wall1 = std::chrono::steady_clock::now();
        while (ep.streams().ChannelIsActive(f.backing.mainStream)) ep.audio().render(4096);
        const double cpu = cpuSeconds() - cpu0;
        const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - wall1).count();
        f.recording.cmdstw_Click();
        std::printf("backing, both streams, cut + 16 bands: %6.0fx real time on one core (%.2f s CPU for %d s), "
                    "%6.0fx by the wall clock\n",
                    kSeconds / cpu, cpu, kSeconds, kSeconds / wall);
        std::printf("backing, VocalRemove to first audio:   %6.1f ms\n", firstMs);
    }
    std::remove(song.c_str());
    return 0;
}
