// The main form's encoding part, "Wav to Mp3" and the normaliser window on
// the virtual clock, with an encoder and a normaliser that only report.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <mutex>
#include <thread>

#include "core/base/paths.h"
#include "core/base/vb_error.h"
#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"

using namespace velaro;

namespace {

struct FakeEncoder : platform::Mp3Encoder {
    std::vector<double> script{0, 12.5, 50, 100};
    bool waitForStop = false;
    std::string error;
    std::mutex m;
    std::vector<platform::Mp3Settings> seen;
    std::string Encode(const platform::Mp3Settings& s, const std::atomic<bool>& stop,
                       const platform::PercentDone& progress) override {
        {
            std::lock_guard<std::mutex> lock(m);
            seen.push_back(s);
        }
        for (double p : script) progress(p);
        while (waitForStop && !stop) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return error;
    }
};

struct FakeNormaliser : platform::Normaliser {
    std::vector<double> script{0, 42.6, 100};
    std::mutex m;
    std::vector<std::tuple<std::string, std::string, int32_t>> seen;
    std::string Normalize(const std::string& source, const std::string& target, int32_t percent,
                          const std::atomic<bool>&, const platform::PercentDone& progress) override {
        {
            std::lock_guard<std::mutex> lock(m);
            seen.emplace_back(source, target, percent);
        }
        for (double p : script) progress(p);
        return {};
    }
};

struct Encoding : ::testing::Test {
    std::string home = tempFolder() + "/velaro-enc-" + std::to_string(getpid()) + "-" +
                       ::testing::UnitTest::GetInstance()->current_test_info()->name();
    ui::Headless ui;
    platform::InertPlatform inert;
    FakeEncoder encoder;
    FakeNormaliser normaliser;
    platform::Platform p = [this] {
        platform::Platform q = inert.get();
        q.mp3 = &encoder;
        q.normaliser = &normaliser;
        return q;
    }();
    std::unique_ptr<song::frmMain> f;

    void SetUp() override {
        std::filesystem::remove_all(home);
        setenv("VELARO_HOME", home.c_str(), 1);
        f = std::make_unique<song::frmMain>(ui.rt, p);
        EXPECT_FALSE(f->cmdSave.enabled());  // nothing to encode before a take
        f->cmdSave.setEnabled(true);         // as a saved take leaves it
    }
    void TearDown() override { unsetenv("VELARO_HOME"); }
    record::MainEncoding& e() { return f->encoding; }
    // Lets the worker finish and its reports run on the loop.
    void settle(record::MEnc2& enc) {
        enc.wait();
        ui.loop.doEvents();
    }
    std::vector<std::string> boxes() const {
        std::vector<std::string> out;
        for (const auto& b : ui.dialogs.messageBoxes()) out.push_back(b.title + ": " + b.text);
        return out;
    }
};

}  // namespace

TEST_F(Encoding, CmdSaveEncodesTheTakeAtTheSetUpBitRateAndSaysDone) {
    ui.dialogs.answerFile("/music/take.mp3");
    f->cmdSave.userClick();
    EXPECT_TRUE(e().prog.visible());
    EXPECT_FALSE(f->cmdSave.enabled());
    EXPECT_TRUE(f->encstop.enabled());
    EXPECT_EQ(f->mousePointer, ui::kPointerHourglass);
    const auto& dialog = ui.dialogs.shown().front();
    EXPECT_EQ(dialog.title, "Save MP3 File As");
    EXPECT_EQ(dialog.text, "File MP3 (*.MP3)|*.MP3");

    settle(e().MEnc1);
    ASSERT_EQ(encoder.seen.size(), 1u);
    const platform::Mp3Settings& s = encoder.seen[0];
    EXPECT_EQ(s.encoderVbr, 0);
    EXPECT_EQ(s.encoderQuality, 1);
    EXPECT_EQ(s.encoderBitRate, 192000);
    EXPECT_EQ(s.encoderChannels, 2);
    EXPECT_EQ(s.encoderInputFile, RPP(applicationFolder()) + "newwave.wav");
    EXPECT_EQ(s.encoderOutputFile, "/music/take.mp3");

    EXPECT_EQ(boxes(), std::vector<std::string>{"MIDI to MP3: Done!"});
    EXPECT_FALSE(e().prog.visible());
    EXPECT_EQ(e().prog.value(), 0);
    EXPECT_FALSE(f->encstop.enabled());
    EXPECT_EQ(f->mousePointer, ui::kPointerDefault);
}

TEST_F(Encoding, CancelledNameSaysAnnullatoAndEncodesNothing) {
    f->Meff.setEnabled(true);
    f->MnuFile.setEnabled(false);
    ui.dialogs.answerCancel();
    f->cmdSave.userClick();
    EXPECT_EQ(boxes(), std::vector<std::string>{"MIDI to MP3: Annullato!"});
    EXPECT_FALSE(f->cmdSave.enabled());
    EXPECT_FALSE(f->Meff.enabled());
    EXPECT_TRUE(f->MnuFile.enabled());
    EXPECT_FALSE(e().prog.visible());
    EXPECT_FALSE(e().MEnc1.busy());
    EXPECT_TRUE(encoder.seen.empty());
}

TEST_F(Encoding, OnlyExactly100EndsTheRunAndTheSecondHandlerRoundsToOneDecimal) {
    encoder.script = {0, 45.26};
    ui.dialogs.answerFile("/music/take.mp3");
    f->cmdSave.userClick();
    settle(e().MEnc1);
    EXPECT_DOUBLE_EQ(e().prog.value(), 45.3);

    // With the guard up only the first handler writes.
    encoder.script = {45.26};
    ui.dialogs.answerFile("/music/take.mp3");
    f->cmdSave.setEnabled(true);  // as the next take would
    f->cmdSave.userClick();
    f->encoderProgressGuard = true;
    settle(e().MEnc1);
    EXPECT_DOUBLE_EQ(e().prog.value(), 45.26);

    // 99.9 is not the end: the bar stays in view and no box comes.
    encoder.script = {50, 99.9};
    ui.dialogs.answerFile("/music/take.mp3");
    f->cmdSave.setEnabled(true);
    f->cmdSave.userClick();
    settle(e().MEnc1);
    EXPECT_TRUE(e().prog.visible());
    EXPECT_DOUBLE_EQ(e().prog.value(), 99.9);
    EXPECT_TRUE(ui.dialogs.messageBoxes().empty());
}

TEST_F(Encoding, EncodeStopEndsTheJobWithoutDone) {
    encoder.waitForStop = true;
    encoder.script = {0, 30};
    ui.dialogs.answerFile("/music/take.mp3");
    f->cmdSave.userClick();
    f->encstop.userClick();
    EXPECT_FALSE(f->encstop.enabled());
    EXPECT_FALSE(f->cmdSave.enabled());
    EXPECT_EQ(f->mousePointer, ui::kPointerDefault);
    settle(e().MEnc1);
    EXPECT_TRUE(ui.dialogs.messageBoxes().empty());
    EXPECT_FALSE(e().MEnc1.busy());
}

TEST_F(Encoding, FailedJobReportsItsReasonButNoBox) {
    encoder.script = {0};
    encoder.error = "cannot write /music/take.mp3: No space left on device";
    std::string ended = "not yet";
    e().MEnc1.encoderEnded = [&](const std::string& why) { ended = why; };
    ui.dialogs.answerFile("/music/take.mp3");
    f->cmdSave.userClick();
    settle(e().MEnc1);
    EXPECT_EQ(ended, encoder.error);
    EXPECT_EQ(e().MEnc1.lastError, encoder.error);
    EXPECT_TRUE(ui.dialogs.messageBoxes().empty());
}

TEST_F(Encoding, Mp3SetupListsFortyRatesAndSetsTheChosenOne) {
    ui::ComboBox& list = e().Combo2;
    EXPECT_FALSE(list.visible());
    ASSERT_EQ(list.listCount(), 40);
    EXPECT_EQ(list.list(0), "320");
    EXPECT_EQ(list.list(16), "192 ");
    EXPECT_EQ(list.list(39), "8");
    f->Mmp3.userClick();
    EXPECT_TRUE(list.visible());
    list.setListIndex(16);
    EXPECT_EQ(f->mp3BitRate, 192000);
    EXPECT_EQ(boxes(), std::vector<std::string>{"VELARO: Mp3 Setup"});
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].style, ui::vbQuestion);
    EXPECT_FALSE(list.visible());
    list.setListIndex(1);
    EXPECT_EQ(f->mp3BitRate, 312000);
}

TEST_F(Encoding, WavToMp3TakesItsListsAndChannelsFollowTheQualityRow) {
    f->wavp3.userClick();
    record::Form1& w = e().form1;
    ASSERT_TRUE(w.visible());
    EXPECT_EQ(w.caption, "Wav to Mp3");
    EXPECT_TRUE(w.Combo2.visible());
    EXPECT_FALSE(w.Combo3.visible());

    w.Combo1.setListIndex(0);
    w.Combo4.setListIndex(1);  // "Mono", but the quality row is 0
    EXPECT_EQ(w.test.encoderChannels, 2);
    w.Combo1.setListIndex(1);
    w.Combo4.setListIndex(0);  // "Stereo", but the quality row is 1
    EXPECT_EQ(w.test.encoderChannels, 1);
    w.Combo1.setListIndex(2);
    EXPECT_EQ(w.test.encoderQuality, 2);
    w.Combo2.setListIndex(16);
    EXPECT_EQ(w.test.encoderBitRate, 192000);
    w.Combo3.setListIndex(3);
    EXPECT_EQ(w.test.encoderVbrQuality, 70);
    w.Option1.userClick();
    EXPECT_TRUE(w.Combo3.visible());
    EXPECT_FALSE(w.Combo2.visible());
    w.Check1.userClick();
    w.Check2.userClick();

    ui.dialogs.answerFile("/w/in.wav");
    w.Command1.userClick();
    ui.dialogs.answerCancel();
    w.Command2.userClick();
    EXPECT_EQ(ui.dialogs.shown()[0].text, "Wave File|*.wav");
    EXPECT_EQ(w.Text1.text(), "/w/in.wav");
    EXPECT_EQ(w.Text2.text(), "");
    w.Text2.setText("/w/out.mp3");
    w.Command3.userClick();
    settle(w.test);
    ASSERT_EQ(encoder.seen.size(), 1u);
    const platform::Mp3Settings& s = encoder.seen[0];
    EXPECT_NE(s.encoderVbr, 0);
    EXPECT_TRUE(s.encoderCrc);
    EXPECT_TRUE(s.encoderIntensity);
    EXPECT_EQ(s.encoderInputFile, "/w/in.wav");
    EXPECT_EQ(s.encoderOutputFile, "/w/out.mp3");
    EXPECT_EQ(s.encoderVbrQuality, 70);
    EXPECT_EQ(boxes(), std::vector<std::string>{"MIDIMP3: Fatto!"});
    EXPECT_EQ(w.prog.value(), 0);
}

TEST_F(Encoding, NormaliseWindowRaisesAndKeepsThePercent) {
    f->normalizePercent = "85";
    f->MnuNorm.userClick();
    record::Form11& w = e().form11;
    ASSERT_TRUE(w.visible());
    EXPECT_EQ(w.caption, " Normalize Wave File");
    EXPECT_EQ(w.Text3.text(), "85");
    EXPECT_EQ(w.Label2.caption(), "00 %");

    w.Text1.setText("/w/a.wav");
    w.Text2.setText("/w/b.wav");
    w.Text3.setText("70.5");
    normaliser.script = {0, 42.6};
    w.Command3.userClick();
    EXPECT_EQ(f->normalizePercent, "70.5");
    EXPECT_EQ(w.mousePointer, ui::kPointerHourglass);
    w.norm.wait();
    ui.loop.doEvents();
    ASSERT_EQ(normaliser.seen.size(), 1u);
    EXPECT_EQ(normaliser.seen[0], std::make_tuple(std::string("/w/a.wav"), std::string("/w/b.wav"), 70));
    EXPECT_EQ(w.Label2.caption(), "43 %");
    EXPECT_TRUE(w.visible());

    normaliser.script = {100};
    w.Command3.userClick();
    w.norm.wait();
    ui.loop.doEvents();
    EXPECT_EQ(boxes(), std::vector<std::string>{"Finished: Finished Normalizing The Wave Audio File"});
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].style, ui::vbInformation);
    EXPECT_EQ(w.Label2.caption(), "00 %");
    EXPECT_EQ(w.prog.value(), 0);
    EXPECT_FALSE(w.visible());
    EXPECT_EQ(w.mousePointer, ui::kPointerDefault);
}

TEST_F(Encoding, APercentThatIsNoNumberStopsStart) {
    f->normalizePercent = "60";
    f->MnuNorm.userClick();
    record::Form11& w = e().form11;
    for (const char* text : {"abc", "", "12x"}) {
        w.Text3.setText(text);
        try {
            w.Command3.userClick();
            ADD_FAILURE() << "no error for '" << text << "'";
        } catch (const VbError& err) {
            EXPECT_EQ(err.code(), VbErr::TypeMismatch);
        }
    }
    EXPECT_EQ(f->normalizePercent, "60");
    EXPECT_TRUE(normaliser.seen.empty());
}

TEST_F(Encoding, SavedTakeOpensTheNormaliserOnlyWhenAsked) {
    f->normalizePercent = "90";
    e().takeSaved("/music/mine.wav");
    EXPECT_FALSE(e().form11.loaded());

    f->normalizeAfterSave = true;
    e().takeSaved("/music/mine.wav");
    record::Form11& w = e().form11;
    EXPECT_TRUE(w.visible());
    EXPECT_EQ(w.Text1.text(), RPP(applicationFolder()) + "newwave.wav");
    EXPECT_EQ(w.Text2.text(), "/music/mine.wav");
    EXPECT_EQ(w.Text3.text(), "90");
}

TEST_F(Encoding, AJobStillRunningEndsWithItsForm) {
    encoder.waitForStop = true;
    ui.dialogs.answerFile("/music/take.mp3");
    f->cmdSave.userClick();
    f.reset();           // stops and waits for the worker
    ui.loop.doEvents();  // its reports find no form and do nothing
    EXPECT_EQ(encoder.seen.size(), 1u);
}
