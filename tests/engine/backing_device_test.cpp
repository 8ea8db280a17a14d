// The backing's two streams through a real device (a private PulseAudio null
// sink): decoded ahead while the card pulls, and still on the same sample
// when the second joins late: upside down, it silences the first exactly.

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <thread>

#include "core/base/paths.h"
#include "engine/audio_engine.h"
#include "engine/backing_streams.h"
#include "support/backing_audio.h"
#include "support/pulse_daemon.h"

using namespace velaro;
using namespace velaro::testing;

namespace {

class BackingDevice : public PulseServer {
protected:
    int monitorPeak(double seconds) {
        const std::string raw = dir() + "/monitor.raw";
        std::system(("timeout " + std::to_string(seconds) +
                     " parec -d null.monitor --format=s16le --channels=2 --rate=44100 > " + raw + " 2>/dev/null")
                        .c_str());
        const std::string bytes = readWholeFile(raw);
        int peak = 0;
        for (size_t i = 0; i + 1 < bytes.size(); i += 2)
            peak = std::max(peak, std::abs(int(int16_t(uint8_t(bytes[i]) | (uint8_t(bytes[i + 1]) << 8)))));
        return peak;
    }
};

}  // namespace

TEST_F(BackingDevice, TheSecondStreamJoinsOnTheFirstsSampleWhileTheCardPlays) {
    const std::string file = dir() + "/backing.wav";
    writeStereo(file, 48000, 8.0, [](double t) {
        const double v = 0.3 * std::sin(kTwoPi * 220 * t) + 0.1 * std::sin(kTwoPi * 1234 * t);
        return std::make_pair(v, v);
    });
    engine::AudioEngine audio(44100);
    engine::BackingStreams s(audio);
    const auto a = s.StreamCreateFile(false, file, 0, 0, 0);
    const auto b = s.StreamCreateFile(false, file, 0, 0, 0);
    ASSERT_TRUE(a && b);
    ASSERT_TRUE(s.FX_DSP_Set(b, platform::kFxVolume, 1));
    ASSERT_TRUE(s.FX_DSP_SetParameters(b, platform::kFxVolume, platform::VolumeRecord{-1.0f, -1.0f}));
    std::string error;
    ASSERT_TRUE(audio.startDevice(error)) << error;
    s.ChannelPlay(a, false);
    // The sink takes a moment to wake up; then the card's clock moves the stream.
    for (int i = 0; i < 100 && s.ChannelSeconds(a) < 0.3; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ASSERT_GE(s.ChannelSeconds(a), 0.3);
    EXPECT_GT(monitorPeak(0.8), 3000);
    s.ChannelPlay(b, false);
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    EXPECT_LT(monitorPeak(1.0), 20);
    EXPECT_EQ(s.ChannelIsActive(a), 1);
    EXPECT_TRUE(s.StreamFree(b));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_GT(monitorPeak(0.5), 3000);
    audio.stopDevice();
}
