// A take recorded live through a private PulseAudio daemon: the engine plays
// into a null sink and the microphone is the daemon's sine source, which the
// level meter hears too.

#include <gtest/gtest.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "core/record/meter.h"
#include "engine/audio_engine.h"
#include "engine/engine_meter_capture.h"
#include "engine/engine_wave_device.h"
#include "engine/mic_input.h"

extern char** environ;

using namespace velaro;
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

class PulseRecord : public ::testing::Test {
protected:
    void SetUp() override {
        if (!onPath("pulseaudio") || !onPath("pactl")) GTEST_SKIP() << "pulseaudio or pactl not installed";
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
    pid_t pid_ = 0;
    std::string dir_;
};

}  // namespace

TEST_F(PulseRecord, ALiveTakeHoldsWhatTheInputHears) {
    // The sine is the input the recorder should hear, whatever the daemon picked.
    std::system("pactl set-default-source sine_input >/dev/null 2>&1");
    engine::AudioEngine audio(44100);
    engine::EngineWaveDevice dev(audio);
    std::string error;
    ASSERT_TRUE(audio.startDevice(error)) << error;
    std::this_thread::sleep_for(std::chrono::milliseconds(500));  // the stream's start-up
    audio.setInputLatencyMs(20);
    engine::EngineMeterCapture meter(audio.mic(), 44100);
    ASSERT_TRUE(meter.Start());
    uint32_t id = 0;
    ASSERT_EQ(dev.Open("", id), 0);
    const int rec = dev.Record(id);
    ASSERT_EQ(rec, 0) << dev.ErrorString(rec);
    EXPECT_TRUE(audio.mic().capturing());
    // The daemon's sine source hands its sound over in bursts of about two seconds.
    std::this_thread::sleep_for(std::chrono::milliseconds(3000));
    // The meter hears the same input while the take runs.
    std::vector<uint8_t> bytes8;
    int32_t start = 0, end = 0;
    ASSERT_TRUE(meter.TakeBuffer(bytes8, start, end));
    record::LevelMeter needles;
    ASSERT_TRUE(needles.meterBuffer(bytes8, start, end));
    EXPECT_GT(needles.leftLevel, 30);
    EXPECT_GT(meter.LeftLevel(), 10);
    ASSERT_EQ(dev.Stop(id), 0);
    EXPECT_TRUE(audio.mic().capturing());  // the meter still holds it
    meter.Stop();
    EXPECT_FALSE(audio.mic().capturing());

    std::ifstream in(dev.takePath(), std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
    std::vector<float> take(bytes.size() / sizeof(float));
    std::memcpy(take.data(), bytes.data(), take.size() * sizeof(float));
    EXPECT_GT(take.size(), 2u * 44100) << "a few seconds were recorded";
    float peak = 0;
    for (float v : take) peak = std::max(peak, std::fabs(v));
    EXPECT_GT(peak, 0.05f) << "the sine source reached the take";
    int32_t len = 0;
    dev.Status(id, platform::kItemLength, len);
    EXPECT_GT(len, 1000);

    // Muted, the input no longer reaches the take (nothing plays, so it is silent).
    audio.setMicMute(true);
    const size_t before = take.size();
    ASSERT_EQ(dev.Record(id), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    ASSERT_EQ(dev.Stop(id), 0);
    std::ifstream again(dev.takePath(), std::ios::binary);
    std::vector<char> all((std::istreambuf_iterator<char>(again)), {});
    ASSERT_GT(all.size() / sizeof(float), before);
    float mutedPeak = 0;
    for (size_t i = before; i < all.size() / sizeof(float); ++i) {
        float v;
        std::memcpy(&v, all.data() + i * sizeof(float), sizeof v);
        mutedPeak = std::max(mutedPeak, std::fabs(v));
    }
    EXPECT_LT(mutedPeak, 0.001f);
    audio.stopDevice();
}
