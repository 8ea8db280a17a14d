// The song session on the main form: open, play, pause, stop, the end of the
// song, and the channel strip, against a recording performance.

#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "fake_performance.h"
#include "support/song_bytes.h"

#include <gtest/gtest.h>

using namespace velaro;
using namespace velaro::testing;
using Log = std::vector<std::string>;

namespace {

// Channels 1 and 2 play; a Words track with two lines.
std::string twoChannelSong() {
    std::string words = bytes({0x00}) + meta(0x03, "Words");
    for (const char* w : {"/Hel", "lo ", "/World"}) words += bytes({0x60}) + textEvent(w);
    std::string notes = bytes({0x00, 0xC0, 0x10, 0x00, 0x90, 0x3C, 0x40, 0x00, 0x91, 0x40, 0x40, 0x60, 0x80, 0x3C,
                               0x40, 0x00, 0x81, 0x40, 0x40});
    std::string s = smfHeader(1, 3, 96);
    s += smfTrack(bytes({0x00}) + tempoEvent(500000) + bytes({0x00, 0xFF, 0x2F, 0x00}));
    s += smfTrack(words + bytes({0x00, 0xFF, 0x2F, 0x00}));
    s += smfTrack(notes + bytes({0x00, 0xFF, 0x2F, 0x00}));
    return s;
}

struct Session : ::testing::Test {
    ui::Headless ui;
    FakePlatform fake;
    FakePerformance& perf = fake.perf;
    song::frmMain f{ui.rt, fake.p};
    std::string song = writeTemp("session.kar", twoChannelSong());

    void SetUp() override { f.load(); }
    void open() {
        ui.dialogs.answerFile(song);
        f.MnuOpenSong.userClick();
    }
    void play() {
        f.Cmd_Play.userClick();
        perf.log.clear();
    }
};

}  // namespace

TEST_F(Session, OpenAndCancel) {
    ui.dialogs.answerCancel();
    f.MnuOpenSong.userClick();
    EXPECT_TRUE(f.songPath().empty());
    EXPECT_FALSE(f.Cmd_Play.enabled());
    EXPECT_EQ(f.dmSegment, 0);  // no segment for an empty name

    open();
    EXPECT_EQ(f.songPath(), song);
    EXPECT_TRUE(f.Cmd_Play.enabled());
    EXPECT_TRUE(f.midiMode);
    EXPECT_NE(f.dmSegment, 0);
    EXPECT_EQ(f.LabelSongLength.caption(), song);
    auto boxes = ui.dialogs.shown();
    ASSERT_FALSE(boxes.empty());
    EXPECT_EQ(boxes.back().title, "Open Song File");
    EXPECT_EQ(boxes.back().text, "Kar File (*.kar)|*.kar|Mid File(*.mid)|*.mid");
    // The model is read only at the first press of Play.
    EXPECT_EQ(f.wordUpperBound(), 0);
}

TEST_F(Session, PlayReadsTheSongAndStartsTheTimers) {
    open();
    f.Cmd_Play.userClick();
    EXPECT_EQ(f.songState, 1);
    EXPECT_TRUE(f.deviceOpen);
    EXPECT_TRUE(f.songRunning);
    EXPECT_EQ(f.lineTable, (std::vector<std::string>{"", "Hello ", "World"}));
    EXPECT_TRUE(f.Timer.enabled());
    EXPECT_TRUE(f.Timer1.enabled());
    EXPECT_EQ(f.Timer1.interval(), 500000 / (768000 / 24));  // Int(tempoUs / (768000 / divisionQuarter))
    EXPECT_FALSE(f.Cmd_Play.enabled());
    EXPECT_TRUE(f.Cmd_Stop.enabled());
    EXPECT_EQ(perf.tempo, 1.0f);
    EXPECT_EQ(perf.volume, (100 - 75) * 42 - 3000);
    EXPECT_EQ(f.lblTime.caption(), " 00:50");  // 100 quarters at 120 BPM
    EXPECT_EQ(f.wordCursor, 0);                 // from the start every word lies ahead
}

TEST_F(Session, StopThenPlayRestartsWithTheModelKept) {
    open();
    play();
    perf.seek = 768 * 10;
    f.Cmd_Stop.userClick();
    EXPECT_EQ(perf.stops, 1);
    EXPECT_TRUE(f.keepSongModel);
    f.lineTable[1] = "kept";  // a re-read would replace it
    f.Cmd_Play.userClick();
    EXPECT_EQ(perf.startPoint, 0);
    EXPECT_EQ(f.lineTable[1], "kept");
    EXPECT_FALSE(f.keepSongModel);  // cleared once the replay started
}

TEST_F(Session, PauseThenStopSkipsTheSecondStop) {
    open();
    play();
    perf.seek = 50;  // below 100: the resume point clamps to 0
    f.CmdPause.userClick();
    EXPECT_EQ(f.songState, 2);
    EXPECT_EQ(f.resumeMusicTime, -50);
    EXPECT_EQ(perf.stops, 1);
    f.Cmd_Stop.userClick();
    EXPECT_EQ(perf.stops, 1);

    // Pause, then Play resumes at the pause point.
    play();
    perf.seek = 768 * 20;
    f.CmdPause.userClick();
    f.Cmd_Play.userClick();
    EXPECT_EQ(perf.startPoint, 768 * 20 - 100);
    EXPECT_FALSE(f.pausedFlag);
}

TEST_F(Session, AResumePointAtTheEndMovesBackByTen) {
    open();
    play();
    f.resumeMusicTime = perf.length;
    f.songState = 2;
    f.Play();
    EXPECT_EQ(perf.startPoint, perf.length - 10);
    f.resumeMusicTime = -5;
    f.Play();
    EXPECT_EQ(perf.startPoint, 0);
}

TEST_F(Session, TheTransportTickEndsTheSong) {
    open();
    play();
    perf.seek = perf.length / 2;
    ui.loop.advance(20);
    EXPECT_EQ(f.percentPlayed, 50);
    EXPECT_EQ(f.HScroll3.value(), 50);
    EXPECT_EQ(f.Label5.caption(), "00:25");
    EXPECT_DOUBLE_EQ(f.Command9.left(), 50.0 * (6000 - 300 - 50) / 100);

    perf.seek = perf.length;
    ui.loop.advance(10);
    EXPECT_TRUE(f.recordStopFlag);
    EXPECT_EQ(f.songState, 0);
    EXPECT_FALSE(f.deviceOpen);
    EXPECT_FALSE(f.Cmd_Play.enabled());
    EXPECT_FALSE(f.Timer1.enabled());
    EXPECT_TRUE(f.SaveT.enabled());
    EXPECT_EQ(f.HScroll3.value(), 0);
}

TEST_F(Session, AStopKeepsTheEndBranchFromRunning) {
    open();
    play();
    f.Cmd_Stop.userClick();
    perf.seek = perf.length;
    f.songState = 1;  // a tick already under way
    ui.loop.advance(10);
    EXPECT_EQ(f.percentPlayed, 100);
    EXPECT_FALSE(f.recordStopFlag);
}

TEST_F(Session, TempoTransposeAndVolumeSliders) {
    open();
    f.vscroll1.setValue(3);  // stopped: nothing is sent
    EXPECT_TRUE(perf.take("transpose").empty());
    play();
    f.vscroll1.setValue(-2);
    Log sent = perf.take("transpose");
    EXPECT_EQ(sent.size(), 15u);
    for (const auto& s : sent) EXPECT_NE(s.rfind("transpose 9 ", 0), 0u) << "the drum channel is never transposed";
    EXPECT_EQ(f.lblInfo(0).caption(), "-2");

    struct {
        int v;
        float tempo;
        const char* shown;
    } const cases[] = {{0, 0.0f, "-6"}, {64, 1.0f, "0"}, {127, 2.0f, "6"}, {100, 46 / 30.0f, "3"}};
    for (const auto& c : cases) {
        f.vslidertempo.setValue(c.v);
        EXPECT_FLOAT_EQ(perf.tempo, c.tempo) << c.v;
        EXPECT_EQ(f.lblInfo(2).caption(), c.shown) << c.v;
    }
    f.Slider1.setValue(50);
    EXPECT_EQ(perf.volume, -900);
    f.Slider1.setValue(100);
    EXPECT_EQ(perf.volume, -3000);
}

TEST_F(Session, ChannelChangesAreSentAndReSentAtEachStart) {
    open();
    play();
    // The start hides the mute boxes and option buttons, so their events come from code here.
    // The mute box: the slider goes to 0 and its own change event sends it.
    f.Check1(0).setValue(0);
    EXPECT_EQ(perf.take("midi"), (Log{"midi 0 176 7 0"}));
    EXPECT_FALSE(f.Slider2(0).enabled());
    f.Check1(0).setValue(1);
    EXPECT_EQ(perf.take("midi"), (Log{"midi 0 176 7 100"}));
    EXPECT_EQ(f.Label3(0).caption(), "Drawbar Orga 1");  // program 16, cut to twelve

    // Instrument: pick the channel, then a row of the list.
    f.Option1(1).setValue(true);
    EXPECT_TRUE(f.List3.visible());
    EXPECT_EQ(f.List3.text(), "Acoustic Grand");
    f.List3.setListIndex(26);
    EXPECT_EQ(perf.take("patch"), (Log{"patch 1 0", "patch 1 26"}));
    EXPECT_FALSE(f.List3.visible());
    EXPECT_EQ(f.Label3(1).caption(), "Electric Jaz 2");  // twelve characters, then the channel

    // Restart: the changed instrument goes out again, the untouched one does not.
    f.Cmd_Stop.userClick();
    perf.log.clear();
    f.Cmd_Play.userClick();
    EXPECT_EQ(perf.take("patch"), (Log{"patch 1 26"}));

    // An unused channel never sends.
    f.channelTable[5].volumeChanged = -1;
    f.SetChannels();
    for (const auto& m : perf.take("midi")) EXPECT_NE(m.rfind("midi 5 ", 0), 0u);
}

TEST_F(Session, TheDrumChannelRefusesInstruments) {
    open();
    play();
    f.instrumentCursorChannel = 9;
    f.List3.setListIndex(3);
    EXPECT_TRUE(perf.take("patch").empty());
    EXPECT_EQ(song::frmMain::GetPatch(128), "Percussion");
    EXPECT_EQ(song::frmMain::GetPatch(129), "");
    EXPECT_EQ(song::frmMain::GetPatch(-1), "");
    f.channelTable[9].channelNo = 10;
    f.deviceOpen = false;
    f.Slider2(9).setValue(40);
    EXPECT_EQ(f.Label3(9).caption(), "drums 10");
}

TEST_F(Session, ProgramChangeSwitchTellsTheUser) {
    f.Check2.userClick();
    f.Check2.userClick();
    auto boxes = ui.dialogs.messageBoxes();
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[0].text, "Program Change Enabled");
    EXPECT_EQ(boxes[0].title, "VELARO DECK");
    EXPECT_EQ(boxes[1].text, "Program Change Disable");
    EXPECT_FALSE(f.programChangeOn);
}
