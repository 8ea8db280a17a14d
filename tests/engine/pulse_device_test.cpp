// The sound card path for real: a private PulseAudio daemon with a null sink,
// the engine playing into it through RtAudio, and the sink's monitor heard.

#include <gtest/gtest.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fcntl.h>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <thread>

#include "core/base/paths.h"
#include "engine/audio_engine.h"
#include "engine/performance_engine.h"
#include "support/song_bytes.h"
#include "support/sound_bank.h"

extern char** environ;

using namespace velaro;
using namespace velaro::testing;
namespace fs = std::filesystem;

namespace {

bool onPath(const char* tool) {
    const char* path = std::getenv("PATH");
    std::string p = path ? path : "/usr/bin:/bin";
    size_t start = 0;
    while (start <= p.size()) {
        size_t end = p.find(':', start);
        std::string dir = p.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (!dir.empty() && access((dir + "/" + tool).c_str(), X_OK) == 0) return true;
        if (end == std::string::npos) break;
        start = end + 1;
    }
    return false;
}

class PulseDaemon : public ::testing::Test {
protected:
    void SetUp() override {
        if (!onPath("pulseaudio") || !onPath("parec")) GTEST_SKIP() << "pulseaudio or parec not installed";
        // Short on purpose: a socket path must stay under 108 bytes.
        dir_ = "/tmp/velaro-pulse-" + std::to_string(getpid());
        fs::create_directories(dir_);
        const std::string socket = dir_ + "/pulse.sock";
        const std::string native = "module-native-protocol-unix auth-anonymous=1 socket=" + socket;
        std::vector<std::string> args = {"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1",
                                         "--use-pid-file=no", "-L", native, "-L", "module-null-sink",
                                         "-L", "module-sine-source"};
        std::vector<char*> argv;
        for (auto& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, (dir_ + "/daemon.log").c_str(), O_WRONLY | O_CREAT, 0644);
        posix_spawn_file_actions_adddup2(&actions, 1, 2);
        ASSERT_EQ(posix_spawnp(&pid_, "pulseaudio", &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        for (int i = 0; i < 100 && !fs::exists(socket); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ASSERT_TRUE(fs::exists(socket)) << "the daemon did not start; see " << dir_ << "/daemon.log";
        setenv("PULSE_SERVER", ("unix:" + socket).c_str(), 1);
    }
    void TearDown() override {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            int status;
            waitpid(pid_, &status, 0);
        }
        unsetenv("PULSE_SERVER");
        std::error_code ec;
        if (!dir_.empty()) fs::remove_all(dir_, ec);
    }
    // Peak of what the null sink played during the next `seconds`.
    int monitorPeak(double seconds) {
        const std::string raw = dir_ + "/monitor.raw";
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

    pid_t pid_ = 0;
    std::string dir_;
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
