// The main form's takes on a wave device without sound: the three sessions
// from Record to the saved file, the dialogs they show, the state they leave,
// the take format list and the lamp.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "core/base/paths.h"
#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "fake_wave_form.h"

using namespace velaro;
using velaro::testing::FakeWaveDevice;

namespace {

struct Takes : velaro::testing::FakeWaveForm {
    void SetUp() override {
        FakeWaveForm::SetUp();
        f->load();
        ui.dialogs.clearLog();
    }
    std::string take() const { return RPP(home) + "newwave.wav"; }
    std::vector<std::string> boxes() const {
        std::vector<std::string> out;
        for (const auto& b : ui.dialogs.messageBoxes()) out.push_back(b.title + ": " + b.text);
        return out;
    }
    // Presses Record; the stop comes `stopMs` later through `stop`, the answers are queued.
    void recordFor(int64_t stopMs, std::function<void()> stop) {
        ui.loop.at(ui.loop.now() + stopMs, std::move(stop));
        // A playback nobody asked for would wait for ever: a late stop keeps a failing test from hanging.
        ui.loop.at(ui.loop.now() + 600000, [this] { f->recording.cmdplaystop_Click(); });
        f->cmdrec.setEnabled(true);
        f->cmdrec.userClick();
    }
};

}  // namespace

TEST_F(Takes, TheDigitalRecorderSavesACopyUnderTheChosenName) {
    f->mnew_Click();
    const std::string named = home + "/mine.wav";
    ui.dialogs.answerMsgBox(ui::vbNo);  // no playback
    ui.dialogs.answerFile(named);
    recordFor(2000, [this] { f->playStopFlag = true; });

    ASSERT_TRUE(fileExists(take()));
    EXPECT_EQ(readWholeFile(named), readWholeFile(take()));  // a plain copy
    EXPECT_EQ(boxes(), std::vector<std::string>{"VELARO DECK: PlayBack"});
    const auto& shown = ui.dialogs.shown();
    EXPECT_EQ(shown.back().title, "Save WAVE File As");
    EXPECT_EQ(shown.back().text, "File Wave (*.wav)|*.wav");
    EXPECT_EQ(shown.back().style, 2);
    EXPECT_FALSE(f->digitalRecorderMode);
    EXPECT_TRUE(f->cmdSave.enabled());
    EXPECT_FALSE(f->cmdrec.enabled());
    EXPECT_FALSE(f->cmdstop.enabled());
    EXPECT_TRUE(f->MnuOpenSong.enabled() && f->mnew.enabled());
    // Two seconds, then the one second the device runs on after the stop.
    EXPECT_GE(fileLength(take()), 44 + 176400 * 3 - 176400 / 10);
}

TEST_F(Takes, ASongTakeInTheChosenFormatEndsWithFatto) {
    f->setSongPath(home + "/song.Wav");  // "Wav" is not an audio extension: a song session
    // No song is really loaded here, so the effect chain's own boxes stay out of this take.
    f->openEffectPanels = nullptr;
    f->cmbQuality.setListIndex(5);       // 22 kHz, 16 bit, mono
    ASSERT_EQ(boxes().back(), "VELARO: Wave Setup");
    EXPECT_FALSE(f->cmbQuality.visible());
    const std::string named = home + "/take.wav";
    ui.dialogs.answerMsgBox(ui::vbNo);
    ui.dialogs.answerFile(named);
    recordFor(1500, [this] { f->cmdstop.userClick(); });

    EXPECT_EQ(boxes().back(), "MIDItoWAV: Fatto!");
    ASSERT_FALSE(wave.formats.empty());
    EXPECT_EQ(wave.formats.back().samplesPerSec, 22050);
    EXPECT_EQ(wave.formats.back().channels, 1);
    EXPECT_EQ(wave.formats.back().bitsPerSample, 16);
    const std::string bytes = readWholeFile(named);
    ASSERT_GE(bytes.size(), 44u);
    EXPECT_EQ(bytes.substr(0, 4), "RIFF");
    EXPECT_EQ(static_cast<uint8_t>(bytes[22]), 1);  // mono
    EXPECT_TRUE(fileExists(take()));
    EXPECT_TRUE(f->cmdSave.enabled());
    EXPECT_FALSE(f->Cmd_Play.enabled());
    EXPECT_FALSE(f->Cmd_Stop.enabled());
    EXPECT_FALSE(f->recordingActive);
    EXPECT_FALSE(f->cmdstop.enabled());
    EXPECT_TRUE(f->HScroll3.enabled());
}

TEST_F(Takes, AnUpperCaseWavIsAnAudioBackingAndACancelKeepsTheTake) {
    int started = 0, stopped = 0;
    f->recording.VocalRemove = [&] { ++started; };
    f->recording.StopRemover = [&] { ++stopped; };
    f->setSongPath(home + "/backing.WAV");
    ui.dialogs.answerMsgBox(ui::vbNo);
    ui.dialogs.answerCancel();
    recordFor(800, [this] { f->cmdstop.userClick(); });

    EXPECT_EQ(started, 1);  // the backing started before the device
    EXPECT_EQ(stopped, 1);  // StopRecord stopped it
    EXPECT_TRUE(fileExists(take()));
    EXPECT_TRUE(f->cmdSave.enabled());  // the take waits for Encode Mp3
    EXPECT_FALSE(f->Cmdplw.enabled());
    EXPECT_FALSE(f->cmdstw.enabled());
    EXPECT_FALSE(f->Meff.enabled());
    EXPECT_EQ(boxes(), std::vector<std::string>{"VELARO DECK: PlayBack"});
}

TEST_F(Takes, ThePlaybackOfATakeEndsOnlyWithItsStopButton) {
    f->mnew_Click();
    ui.dialogs.answerMsgBox(ui::vbYes);
    ui.dialogs.answerCancel();
    bool enabledWhilePlaying = false;
    // The take stops at 1 s; its playback runs until the button, long after the take's own end.
    ui.loop.at(1000, [this] { f->playStopFlag = true; });
    ui.loop.at(9000, [&] {
        enabledWhilePlaying = f->cmdplaystop.enabled();
        f->cmdplaystop.userClick();
    });
    f->cmdrec.setEnabled(true);
    f->cmdrec.userClick();
    EXPECT_TRUE(enabledWhilePlaying);
    EXPECT_GE(ui.loop.now(), 9000);
    EXPECT_FALSE(f->cmdplaystop.enabled());
}

TEST_F(Takes, TheFormatListAndTheLamp) {
    const auto before = std::tuple(f->recordRate, f->recordChannels, f->recordBits);
    f->mnwave.userClick();
    EXPECT_TRUE(f->cmbQuality.visible());
    ASSERT_EQ(f->cmbQuality.listCount(), 12);
    EXPECT_EQ(f->cmbQuality.list(11), "44KHz @ 16bit Stereo");
    EXPECT_EQ(f->cmbQuality.itemData(9), 1024);
    f->cmbQuality.setListIndex(1);
    f->cmbQuality.setListIndex(0);  // passed over: nothing changes, no box
    EXPECT_EQ(boxes().size(), 1u);
    EXPECT_EQ(std::tuple(f->recordRate, f->recordChannels, f->recordBits), std::tuple(11025, int16_t(1), uint8_t(16)));
    f->cmbQuality.setListIndex(10);
    EXPECT_EQ(std::tuple(f->recordRate, f->recordChannels, f->recordBits), std::tuple(44100, int16_t(2), uint8_t(8)));
    EXPECT_NE(before, std::tuple(f->recordRate, f->recordChannels, f->recordBits));

    f->Timer3.fire();
    EXPECT_EQ(f->Picture2.backColor(), 0xFFFFFFu);
    f->Timer4.fire();
    EXPECT_EQ(f->Picture2.backColor(), 0x4040u);
    f->Timer3.fire();
    f->Timer2.fire();
    EXPECT_EQ(f->Picture2.backColor(), 0x4040u);
}
