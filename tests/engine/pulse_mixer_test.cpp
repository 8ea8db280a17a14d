// The machine's mixer on a private PulseAudio daemon (a null sink and a sine
// source), and what happens when no server, or a silent one, is there.

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "engine/audio_engine.h"
#include "engine/engine_platform.h"
#include "engine/mic_input.h"
#include "engine/pulse_mixer.h"
#include "support/pulse_daemon.h"

using namespace velaro;
using Mixer = platform::SystemMixer;

namespace {

class PulseMixerTest : public velaro::testing::PulseServer {
protected:
    void SetUp() override {
        start("pulseaudio");
        if (IsSkipped()) return;
        std::string error;
        mixer = engine::PulseMixer::connect(audio, error);
        ASSERT_TRUE(mixer) << error;
        mixer->Error = [this](const std::string& text) { errors.push_back(text); };
    }
    engine::AudioEngine audio{44100};
    std::unique_ptr<engine::PulseMixer> mixer;
    std::vector<std::string> errors;
};

}  // namespace

TEST_F(PulseMixerTest, SourcesAreListedWithTheMonitorsLast) {
    const std::vector<std::string> sources = mixer->RecordSources();
    ASSERT_EQ(sources.size(), 2u);
    EXPECT_EQ(sources.back().find("Monitor"), 0u) << sources.back();
    EXPECT_EQ(sources.front().find("Monitor"), std::string::npos) << sources.front();
    EXPECT_GE(mixer->RecordSource(), 0);
    EXPECT_TRUE(errors.empty());
}

TEST_F(PulseMixerTest, TheRecordSourceReadsBackWhatTheServerKept) {
    mixer->SetRecordSource(1);
    EXPECT_EQ(mixer->RecordSource(), 1);
    mixer->SetRecordSource(0);
    EXPECT_EQ(mixer->RecordSource(), 0);
    mixer->SetRecordSource(7);  // no such source: refused without a fuss
    EXPECT_EQ(mixer->RecordSource(), 0);
    EXPECT_TRUE(errors.empty());
}

TEST_F(PulseMixerTest, LevelsRoundTripThroughTheServer) {
    mixer->SetRecordVolume(37);
    EXPECT_EQ(mixer->RecordVolume(), 37);
    mixer->SetRecordSource(1);  // the level belongs to the source, not to the panel
    mixer->SetRecordVolume(90);
    mixer->SetRecordSource(0);
    EXPECT_EQ(mixer->RecordVolume(), 37);
    mixer->SetRecordVolume(250);
    EXPECT_EQ(mixer->RecordVolume(), 100);
    mixer->SetMasterVolume(42);
    EXPECT_EQ(mixer->MasterVolume(), 42);
    mixer->SetMasterVolume(0);
    EXPECT_EQ(mixer->MasterVolume(), 0);
    EXPECT_TRUE(errors.empty());
}

TEST_F(PulseMixerTest, TheMicrophoneLineIsTheEnginesAndTheAudioLineIsKept) {
    int mutes = 0;
    mixer->MuteChange = [&](bool) { ++mutes; };
    mixer->SetSelectedLine(Mixer::kMicLine);
    mixer->SetLineVolume(55);
    mixer->SetLineMute(true);
    mixer->SetLineMute(true);
    EXPECT_EQ(audio.mic().level(), 55);
    EXPECT_TRUE(audio.mic().muted());
    EXPECT_EQ(mutes, 1);  // told only when it changes
    mixer->SetSelectedLine(Mixer::kAudioLine);
    mixer->SetLineVolume(120);
    mixer->SetLineMute(false);
    EXPECT_EQ(mixer->LineVolume(), 100);
    EXPECT_EQ(mixer->audioLineVolume(), 100);
    mixer->SetSelectedLine(6);  // no such line: the audio line stays selected
    EXPECT_EQ(mixer->SelectedLine(), Mixer::kAudioLine);
    mixer->SetSelectedLine(Mixer::kMicLine);
    EXPECT_EQ(mixer->LineVolume(), 55);
    EXPECT_TRUE(mixer->LineMute());
}

TEST(PulseMixerAlone, NoServerKeepsTheInertMixer) {
    const std::string dir = std::filesystem::temp_directory_path().string() + "/velaro-nopulse-" +
                            std::to_string(getpid());
    setenv("PULSE_SERVER", ("unix:" + dir + "/none.sock").c_str(), 1);
    engine::AudioEngine audio(44100);
    std::string error;
    EXPECT_FALSE(engine::PulseMixer::connect(audio, error));
    EXPECT_FALSE(error.empty());
    engine::EnginePlatform platform;
    EXPECT_EQ(dynamic_cast<engine::PulseMixer*>(platform.get().mixer), nullptr);
    EXPECT_NE(platform.get().mixer, nullptr);
    unsetenv("PULSE_SERVER");
}

TEST(PulseMixerAlone, AServerThatNeverAnswersGivesUpInTime) {
    // A socket that takes connections and says nothing.
    const std::string path = "/tmp/velaro-mute-" + std::to_string(getpid()) + ".sock";
    ::unlink(path.c_str());
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    std::snprintf(addr.sun_path, sizeof addr.sun_path, "%s", path.c_str());
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    ASSERT_EQ(::listen(fd, 4), 0);
    setenv("PULSE_SERVER", ("unix:" + path).c_str(), 1);
    engine::AudioEngine audio(44100);
    std::string error;
    EXPECT_FALSE(engine::PulseMixer::connect(audio, error));  // and returns: the wait has an end
    EXPECT_NE(error.find("pa_context_connect"), std::string::npos) << error;
    unsetenv("PULSE_SERVER");
    ::close(fd);
    ::unlink(path.c_str());
}
