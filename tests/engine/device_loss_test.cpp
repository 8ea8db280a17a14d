// The sound device taken away mid-song and given back: a private PulseAudio
// daemon is killed under the playing engine, then a new one is started at
// the same socket.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "core/base/paths.h"
#include "engine/audio_engine.h"
#include "engine/performance_engine.h"
#include "support/pulse_daemon.h"
#include "support/song_bytes.h"
#include "support/sound_bank.h"

using namespace velaro;
using namespace velaro::testing;

namespace {

class DeviceLoss : public PulseServer {
protected:
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
    // Waits (at most `seconds`) for the condition.
    static bool waitFor(const std::function<bool()>& cond, double seconds = 20) {
        const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(int(seconds * 1000));
        while (!cond()) {
            if (std::chrono::steady_clock::now() > until) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return true;
    }
};

}  // namespace

TEST_F(DeviceLoss, TheSongPlaysOnSilentlyAndReturnsToTheNewDevice) {
    engine::AudioEngine audio(44100);
    engine::PerformanceEngine perf(audio);
    perf.setDefaultBank(writeTemp("loss-tiny.sf2", tinySf2()));
    perf.InitAudio(63, {}, 8, 128);
    // One note held for a minute at 120 beats a minute.
    const auto seg = perf.LoadSegment(writeTemp(
        "loss-note.mid", smfHeader(0, 1, 96) + smfTrack(bytes({0x00, 0x90, 69, 0x64}) + vlq(96 * 120) +
                                                        bytes({0x80, 69, 0x40, 0x00, 0xFF, 0x2F, 0x00}))));
    perf.Download(seg);

    std::mutex m;
    std::vector<std::pair<bool, std::string>> notices;
    audio.setDeviceNotice([&](bool lost, const std::string& text) {
        std::lock_guard<std::mutex> lock(m);
        notices.emplace_back(lost, text);
    });
    auto noticeCount = [&] {
        std::lock_guard<std::mutex> lock(m);
        return notices.size();
    };
    // The watch thread may still append while the test reads.
    auto notice = [&](size_t i) {
        std::lock_guard<std::mutex> lock(m);
        return notices.at(i);
    };
    const auto start = std::chrono::steady_clock::now();
    std::string error;
    ASSERT_TRUE(audio.startDevice(error)) << error;
    EXPECT_EQ(audio.deviceApi(), "pulse");
    perf.PlaySegmentEx(seg, 0, 0, 1);
    ASSERT_TRUE(waitFor([&] { return audio.framesPlayed() > 22050; }));
    EXPECT_GT(monitorPeak(1.0), 1000);

    killDaemon();
    ASSERT_TRUE(waitFor([&] { return audio.playingSilently(); })) << "the loss was never noticed";
    ASSERT_EQ(noticeCount(), 1u);
    EXPECT_TRUE(notice(0).first);
    EXPECT_EQ(notice(0).second, "the sound device was lost; playing silently");
    EXPECT_EQ(audio.deviceFallbacks(), 1);
    // The song goes on without the device.
    const int64_t frames = audio.framesPlayed();
    const int64_t seek = perf.GetSeek(1);
    EXPECT_TRUE(waitFor([&] { return audio.framesPlayed() > frames + 44100; }));
    EXPECT_GT(perf.GetSeek(1), seek);
    EXPECT_TRUE(audio.playingSilently());

    ASSERT_EQ(restartDaemon(), "");
    ASSERT_TRUE(waitFor([&] { return !audio.playingSilently() && audio.deviceRunning(); }))
        << "the new device was never taken up";
    ASSERT_EQ(noticeCount(), 2u);
    EXPECT_FALSE(notice(1).first);
    EXPECT_NE(notice(1).second.find("the sound device is back"), std::string::npos) << notice(1).second;
    EXPECT_EQ(audio.deviceApi(), "pulse");
    const int64_t back = audio.framesPlayed();
    EXPECT_TRUE(waitFor([&] { return audio.framesPlayed() > back + 22050; }));
    EXPECT_GT(monitorPeak(1.5), 1000) << "the new sink hears the song";

    // Neither switch let the song run ahead of the time that passed: a
    // failing stream's writes must not be counted as played.
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(audio.framesPlayed(), static_cast<int64_t>((elapsed + 1.5) * 44100));
    audio.stopDevice();
    EXPECT_FALSE(audio.deviceRunning());
    EXPECT_FALSE(audio.playingSilently());
}

TEST_F(DeviceLoss, AnEngineWithoutADeviceStartsSilentAndTakesOneUpWhenItComes) {
    killDaemon();
    engine::AudioEngine audio(44100);
    std::mutex m;
    std::vector<std::string> notices;
    audio.setDeviceNotice([&](bool, const std::string& text) {
        std::lock_guard<std::mutex> lock(m);
        notices.push_back(text);
    });
    audio.startDeviceOrSilence();
    EXPECT_TRUE(audio.playingSilently());
    EXPECT_FALSE(audio.deviceRunning());
    ASSERT_TRUE(waitFor([&] { return audio.framesPlayed() > 22050; })) << "the silent clock runs";
    EXPECT_EQ(audio.deviceFallbacks(), 0);  // it had no device to lose

    ASSERT_EQ(restartDaemon(), "");
    ASSERT_TRUE(waitFor([&] {
        std::lock_guard<std::mutex> lock(m);
        return !notices.empty();
    }));
    EXPECT_TRUE(audio.deviceRunning());
    EXPECT_FALSE(audio.playingSilently());
    std::lock_guard<std::mutex> lock(m);
    ASSERT_EQ(notices.size(), 1u);
    EXPECT_NE(notices[0].find("the sound device is back"), std::string::npos);
}

TEST_F(DeviceLoss, AServerThatStallsPastTheBufferIsOneUnderrunAndNoLoss) {
    engine::AudioEngine audio(44100);
    std::string error;
    ASSERT_TRUE(audio.startDevice(error)) << error;
    // Past the stream's start-up, into steady playing.
    ASSERT_TRUE(waitFor([&] { return audio.framesPlayed() > 2 * 44100; }));
    const int64_t before = audio.underruns();
    // Longer than the stream's buffer, shorter than a lost device's stall.
    freezeDaemon(350);
    const int64_t frames = audio.framesPlayed();
    ASSERT_TRUE(waitFor([&] { return audio.framesPlayed() > frames + 44100; }));
    EXPECT_EQ(audio.underruns(), before + 1);
    EXPECT_FALSE(audio.playingSilently());
    EXPECT_EQ(audio.deviceFallbacks(), 0);
}
