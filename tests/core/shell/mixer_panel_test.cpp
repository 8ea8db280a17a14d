// The mixer panel on a mixer that keeps what it is given, refuses sources it
// lacks and can be made to fail, and the two volume program buttons.

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "core/base/paths.h"
#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"

using namespace velaro;

namespace {

struct FakeMixer : platform::SystemMixer {
    std::vector<std::string> sources = {"Built-in Mic", "USB Headset", "Monitor of Speakers"};
    int master = 30;
    int source = 0;
    std::map<int, int> sourceVolume = {{0, 65}, {1, 45}, {2, 100}};
    int selected = kMicLine;
    std::map<int, int> lineVolume = {{kMicLine, 40}, {kAudioLine, 100}};
    std::map<int, bool> lineMute = {{kMicLine, false}, {kAudioLine, false}};
    std::string failSources;  // when set, choosing a source raises this error
    std::vector<int> sourcesAsked;

    int MasterVolume() override { return master; }
    void SetMasterVolume(int v) override { master = v; }
    std::vector<std::string> RecordSources() override { return sources; }
    int RecordSource() override { return source; }
    void SetRecordSource(int i) override {
        sourcesAsked.push_back(i);
        if (!failSources.empty()) return raiseError(failSources);
        if (i >= 0 && i < static_cast<int>(sources.size())) source = i;
    }
    int RecordVolume() override { return sourceVolume[source]; }
    void SetRecordVolume(int v) override { sourceVolume[source] = v; }
    int SelectedLine() override { return selected; }
    void SetSelectedLine(int line) override { selected = line; }
    int LineVolume() override { return lineVolume[selected]; }
    void SetLineVolume(int v) override { lineVolume[selected] = v; }
    bool LineMute() override { return lineMute[selected]; }
    void SetLineMute(bool on) override {
        const bool was = lineMute[selected];
        lineMute[selected] = on;
        if (was != on && selected == kMicLine) raiseMuteChange(on);
    }
};

struct Streams : platform::InertAudioStreams {
    std::vector<int> selected;
    std::vector<std::string> RecordInputs() override { return {"Built-in Mic", "USB Headset"}; }
    bool RecordInputEnabled(int i) override { return i == 0; }
    void SelectRecordInput(int i) override { selected.push_back(i); }
};

struct Launcher : platform::ProcessLauncher {
    std::vector<std::vector<std::string>> started;
    int Start(const std::string& program, const std::vector<std::string>& args) override {
        // The shell that puts the program in the background: keep what it runs.
        EXPECT_EQ(program, "/bin/sh");
        EXPECT_GE(args.size(), 3u);
        if (args.size() < 3) return -1;
        started.emplace_back(args.begin() + 2, args.end());
        return 42;
    }
    int Wait(int handle) override {
        waited.push_back(handle);
        return 0;
    }
    std::vector<int> waited;
};

struct MixerPanelTest : ::testing::Test {
    std::string home = tempFolder() + "/velaro-mixer-" + std::to_string(getpid()) + "-" +
                       ::testing::UnitTest::GetInstance()->current_test_info()->name();
    ui::Headless ui;
    platform::InertPlatform inert;
    FakeMixer mixer;
    Streams streams;
    Launcher launcher;
    platform::Platform p = [this] {
        platform::Platform q = inert.get();
        q.mixer = &mixer;
        q.streams = &streams;
        q.processes = &launcher;
        return q;
    }();
    std::unique_ptr<song::frmMain> f;
    // The start moves into the application folder, which an earlier test may
    // have removed: then the temporary folder stands in.
    std::string cwd = [] {
        std::error_code ec;
        const auto here = std::filesystem::current_path(ec);
        return ec ? std::filesystem::temp_directory_path().string() : here.string();
    }();

    void SetUp() override {
        std::filesystem::remove_all(home);
        setenv("VELARO_HOME", home.c_str(), 1);
        f = std::make_unique<song::frmMain>(ui.rt, p);
        f->load();
        ASSERT_FALSE(f->ended);
        ui.dialogs.clearLog();
    }
    void TearDown() override {
        f.reset();
        unsetenv("VELARO_HOME");
        std::filesystem::current_path(cwd);
        std::filesystem::remove_all(home);
    }
    std::vector<std::string> boxes() const {
        std::vector<std::string> out;
        for (const auto& b : ui.dialogs.messageBoxes()) out.push_back(b.title + ": " + b.text);
        return out;
    }
};

// A folder of empty programs that stands in for PATH.
struct FakePath {
    std::string dir;
    std::string saved = std::getenv("PATH") ? std::getenv("PATH") : "";
    FakePath(const std::string& where, std::initializer_list<const char*> programs) : dir(where) {
        std::filesystem::create_directories(dir);
        for (const char* name : programs) {
            writeWholeFile(dir + "/" + name, "#!/bin/sh\n");
            chmod((dir + "/" + name).c_str(), 0755);
        }
        setenv("PATH", dir.c_str(), 1);
    }
    ~FakePath() {
        setenv("PATH", saved.c_str(), 1);
        std::filesystem::remove_all(dir);
    }
};

}  // namespace

TEST_F(MixerPanelTest, TheStartShowsTheMixerUpsideDown) {
    EXPECT_EQ(f->mixer.mixerFrame.caption(), " Micro     Midi      Audio     Rec     Master");
    EXPECT_EQ(f->Sldmastervolume.value(), 70);  // master 30 with 0 at the top
    EXPECT_EQ(f->SLDPLAYVOLUME.value(), 60);    // the microphone line's 40
    EXPECT_EQ(f->CHKPLAYMUTE.value(), 1);
    EXPECT_TRUE(mixer.lineMute[platform::SystemMixer::kMicLine]);
    EXPECT_EQ(f->sldInputLevel.value(), 80);
    EXPECT_EQ(mixer.sourceVolume[0], 20);  // the stored input level reaches the record source
    EXPECT_EQ(mixer.lineVolume[platform::SystemMixer::kAudioLine], 50);
    EXPECT_FALSE(f->cmbInput.visible());
    EXPECT_TRUE(boxes().empty());
}

TEST_F(MixerPanelTest, EverySliderPassesItsLevelFromTheTop) {
    f->Sldmastervolume.setValue(0);
    EXPECT_EQ(mixer.master, 100);  // the top of the travel is full level
    f->Sldmastervolume.setValue(100);
    EXPECT_EQ(mixer.master, 0);
    f->sldInputLevel.setValue(35);
    EXPECT_EQ(mixer.sourceVolume[0], 65);
    f->SLDPLAYVOLUME.setValue(10);
    EXPECT_EQ(mixer.lineVolume[platform::SystemMixer::kMicLine], 90);
    f->Slider4.setValue(25);
    EXPECT_EQ(mixer.lineVolume[platform::SystemMixer::kAudioLine], 75);
    EXPECT_EQ(mixer.selected, platform::SystemMixer::kAudioLine);
    // Each line is selected before it is set, whatever was selected last.
    f->SLDPLAYVOLUME.setValue(0);
    EXPECT_EQ(mixer.lineVolume[platform::SystemMixer::kMicLine], 100);
    EXPECT_EQ(mixer.lineVolume[platform::SystemMixer::kAudioLine], 75);
}

TEST_F(MixerPanelTest, TheAudioLevelDoesNothingInSongMode) {
    f->midiMode = true;
    f->Slider4.setValue(0);
    EXPECT_EQ(mixer.lineVolume[platform::SystemMixer::kAudioLine], 50);
    EXPECT_EQ(mixer.selected, platform::SystemMixer::kMicLine);
}

TEST_F(MixerPanelTest, TheMuteBoxAndTheMixersMuteFollowEachOther) {
    f->Slider4.setValue(30);  // the audio line is selected
    f->CHKPLAYMUTE.userClick();
    EXPECT_FALSE(mixer.lineMute[platform::SystemMixer::kMicLine]);
    EXPECT_FALSE(mixer.lineMute[platform::SystemMixer::kAudioLine]);
    mixer.SetSelectedLine(platform::SystemMixer::kMicLine);
    mixer.SetLineMute(true);  // muted elsewhere: the box follows
    EXPECT_EQ(f->CHKPLAYMUTE.value(), 1);
}

TEST_F(MixerPanelTest, ASourceTheCardLacksLeavesTheListOnWhatItKept) {
    f->cboRecSrcType.setListIndex(1);
    EXPECT_EQ(mixer.source, 1);
    EXPECT_EQ(f->sldInputLevel.value(), 55);  // that source's own level, 45
    EXPECT_FALSE(f->cboRecSrcType.visible());
    f->cboRecSrcType.setVisible(true);
    f->cboRecSrcType.setListIndex(7);  // "7 - Aux": only three sources here
    EXPECT_EQ(mixer.source, 1);
    EXPECT_EQ(f->cboRecSrcType.listIndex(), 1);
    EXPECT_FALSE(f->cboRecSrcType.visible());
    EXPECT_TRUE(boxes().empty());
}

TEST_F(MixerPanelTest, AMixerErrorFallsBackToTheLastSourceAndIsToldTwice) {
    mixer.failSources = "The mixer has no line in";
    f->cboRecSrcType.setListIndex(0);
    // Read back equals the row (nothing changed), so the list goes on and tells the stored text.
    EXPECT_EQ(mixer.sourcesAsked.front(), 0);
    EXPECT_NE(std::find(mixer.sourcesAsked.begin(), mixer.sourcesAsked.end(), 9), mixer.sourcesAsked.end());
    const auto shown = boxes();
    ASSERT_GE(shown.size(), 2u);
    EXPECT_EQ(shown.front(), "No Line Record: The mixer has no line in");
    EXPECT_EQ(ui.dialogs.messageBoxes().front().style & 0x30, ui::vbExclamation);
    EXPECT_EQ(shown.back(), "Input Recording : The mixer has no line in");
    EXPECT_TRUE(f->mixer.mixerErrorText.empty());
    EXPECT_FALSE(f->cboRecSrcType.visible());
}

TEST_F(MixerPanelTest, ChoosingAnInputMakesItTheRecordSource) {
    f->inputRec.userClick();
    EXPECT_TRUE(f->cmbInput.visible());
    f->cmbInput.setListIndex(1);
    EXPECT_EQ(f->chosenInput, 1);
    EXPECT_EQ(streams.selected.back(), 1);
    EXPECT_EQ(mixer.source, 1);
    EXPECT_FALSE(f->cmbInput.visible());
    // A saved input the machine no longer has changes nothing.
    f->chosenInput = 5;
    f->chooseInput();
    EXPECT_EQ(streams.selected.back(), 1);
    EXPECT_EQ(mixer.source, 1);
}

TEST_F(MixerPanelTest, TheVolumeProgramIsPavucontrolThenAlsamixerThenABox) {
    {
        FakePath path(home + "/bin1", {"pavucontrol", "x-terminal-emulator", "alsamixer"});
        f->mixer.Cominput.userClick();
        f->mixer.Comout.userClick();
        ASSERT_EQ(launcher.started.size(), 2u);
        EXPECT_EQ(launcher.started[0], (std::vector<std::string>{path.dir + "/pavucontrol", "-t", "4"}));
        EXPECT_EQ(launcher.started[1], (std::vector<std::string>{path.dir + "/pavucontrol", "-t", "3"}));
        EXPECT_EQ(launcher.waited, (std::vector<int>{42, 42}));  // the shells, which end at once
    }
    {
        FakePath path(home + "/bin2", {"x-terminal-emulator", "alsamixer"});
        f->mixer.Comout.userClick();
        ASSERT_EQ(launcher.started.size(), 3u);
        EXPECT_EQ(launcher.started[2], (std::vector<std::string>{path.dir + "/x-terminal-emulator", "-e", "alsamixer"}));
    }
    {
        FakePath path(home + "/bin3", {"x-terminal-emulator"});  // a terminal with nothing to run in it
        f->mixer.Cominput.userClick();
        EXPECT_EQ(launcher.started.size(), 3u);
        EXPECT_EQ(boxes(), (std::vector<std::string>{"VELARO DECK: Neither pavucontrol nor alsamixer is installed."}));
    }
}
