// The sound card path for real: a private PulseAudio daemon with a null sink,
// the engine playing into it through RtAudio, and the sink's monitor heard.

#include <gtest/gtest.h>

#include <unistd.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <thread>

#include "core/base/paths.h"
#include "engine/audio_engine.h"
#include "engine/performance_engine.h"
#include "support/pulse_daemon.h"
#include "support/song_bytes.h"
#include "support/sound_bank.h"

using namespace velaro;
using namespace velaro::testing;
namespace fs = std::filesystem;

namespace {

class PulseDaemon : public velaro::testing::PulseServer {
protected:
    // Peak of what the null sink played during the next `seconds`.
    int monitorPeak(double seconds) {
        const std::string raw = dir() + "/monitor.raw";
        const std::string cmd = "timeout " + std::to_string(seconds) +
                                " parec -d null.monitor --format=s16le --channels=2 --rate=44100 > " + raw +
                                " 2>/dev/null";
        std::system(cmd.c_str());
        std::string bytes = readWholeFile(raw);
        int peak = 0;
        for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
            int16_t v = static_cast<int16_t>(uint8_t(bytes[i]) | (uint8_t(bytes[i + 1]) << 8));
            peak = std::max(peak, std::abs(int(v)));
        }
        return peak;
    }
};

}  // namespace

TEST_F(PulseDaemon, ASongPlayedThroughTheDeviceReachesTheSink) {
    engine::AudioEngine audio(44100);
    engine::PerformanceEngine perf(audio);
    perf.setDefaultBank(writeTemp("pulse-tiny.sf2", tinySf2()));
    perf.InitAudio(63, {}, 8, 128);
    const auto seg = perf.LoadSegment(writeTemp(
        "pulse-note.mid", smfHeader(0, 1, 96) + smfTrack(bytes({0x00, 0x90, 69, 0x64}) + vlq(96 * 16) +
                                                         bytes({0x80, 69, 0x40, 0x00, 0xFF, 0x2F, 0x00}))));
    perf.Download(seg);

    EXPECT_LT(monitorPeak(0.5), 50) << "the sink is silent before we play";
    std::string error;
    ASSERT_TRUE(audio.startDevice(error)) << error;
    perf.PlaySegmentEx(seg, 0, 0, 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));  // the stream's start-up
    EXPECT_GT(monitorPeak(1.0), 1000);
    EXPECT_GT(audio.framesPlayed(), 0);
    EXPECT_GT(perf.GetSeek(1), 0);  // the device's clock moved the song
    audio.stopDevice();
    EXPECT_FALSE(audio.deviceRunning());
}
