// The karaoke page at chosen clock values, the stamps, and the saved texts.

#include <gtest/gtest.h>

#include <cmath>

#include "core/base/paths.h"
#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "core/ui/recording_canvas.h"
#include "fake_performance.h"
#include "support/song_bytes.h"

using namespace velaro;
using namespace velaro::testing;
using Entry = ui::RecordingCanvas::Entry;

namespace {

struct Page : ::testing::Test {
    ui::Headless ui;
    FakePlatform fake;
    FakePerformance& perf = fake.perf;
    song::frmMain f{ui.rt, fake.p};
    ui::RecordingCanvas canvas{10, 20, 600, 300};

    void SetUp() override {
        f.Picture3.attachCanvas(&canvas);
        // At 120 BPM with a division of 96 a music tick is 500000 / 768000 ms.
        f.tempoUs = 500000;
        f.songBpm = 120;
        f.playTempo = 120;
        f.msPerTick = 500000.0 / 24 / 4000;
        f.ZeroVariables();
        // Lines: 0 "", 1 "Hello world", 2 "", 3 "Second line", then nothing.
        std::string words;
        for (const char* w : {"/Hel", "lo ", "world", "/", "/Second ", "line"})
            words += textEvent(w) + vlq(48);  // 48 ticks = 250 ms apart
        f.GetWords(words + meta(0x2F, ""));
        f.wordCursor = 0;
        f.lastSyncLine = 0;
        f.Text2.setText("");
        f.colorSung = 0xFF;
        f.colorUnsung = 0xFF00;
    }
    // Puts the page clock at `ms`. The page runs timeOffsetMs (master tempo
    // x 1000 less the BPM: 880 ms here) behind the song's own time.
    void at(double ms) {
        perf.tempo = 1.0f;
        perf.seek = static_cast<int32_t>(std::ceil((ms + 880) * 768000 / 500000));
    }
    std::vector<Entry> prints() const { return canvas.printsSinceCls(); }
};

}  // namespace

TEST_F(Page, TheFirstLineSplitsAtTheWordJustReached) {
    // Word 1 ("Hel") ends at 250 ms: at that time the tick shows word 2.
    at(200);
    f.Timer1_Tick();
    EXPECT_EQ(f.wordCursor, 1);
    EXPECT_TRUE(prints().empty());  // not yet
    at(260);
    f.Timer1_Tick();
    EXPECT_EQ(f.wordCursor, 2);
    auto p = prints();
    ASSERT_GE(p.size(), 3u);
    EXPECT_EQ(p[0].text, "Hel");  // sung: the line before the word
    EXPECT_EQ(p[1].text, "lo ");  // and the word itself
    EXPECT_EQ(p[0].color, 0xFFu);
    EXPECT_EQ(p[2].text, "world");  // the rest, unsung
    EXPECT_EQ(p[2].color, 0xFF00u);
    EXPECT_EQ(p[0].y, 68);
    EXPECT_EQ(p[0].x, 300 - 11 * 10 / 2);  // centred
    // The next lines: the empty line keeps its place, then "Second line".
    ASSERT_EQ(p.size(), 5u);  // lines 2 and 3; lines 4 and 5 do not exist
    EXPECT_EQ(p[3].text, "");
    EXPECT_EQ(p[3].y, 68 + 20 + 12);
    EXPECT_EQ(p[4].text, "Second line");
    EXPECT_EQ(p[4].x, 300 - 11 * 10 / 2);
    EXPECT_EQ(p[4].y, 68 + 2 * (20 + 12));
}

TEST_F(Page, OneWordPerTickAndNothingPastTheEnd) {
    at(10000);
    for (int i = 0; i < 3; ++i) f.Timer1_Tick();
    EXPECT_EQ(f.wordCursor, 4);
    for (int i = 0; i < 20; ++i) f.Timer1_Tick();
    EXPECT_EQ(f.wordCursor, f.wordUpperBound());
    // The last record (the end of the track) is an empty word at the end of
    // its line: the whole line is sung.
    auto p = prints();
    ASSERT_FALSE(p.empty());
    EXPECT_EQ(p[0].text, "Second line");
}

TEST_F(Page, ASongWithoutWordsLeavesThePageAndTextEmpty) {
    f.ZeroVariables();
    at(5000);
    for (int i = 0; i < 5; ++i) f.Timer1_Tick();
    EXPECT_TRUE(canvas.entries().empty());
    EXPECT_EQ(f.Text2.text(), "");
}

TEST_F(Page, EachNewLineIsStampedSetBack) {
    at(10000);
    for (int i = 0; i < 6; ++i) f.Timer1_Tick();
    // Lines 1, 2 and 3 were reached at 10.88 s of song: 00:09.
    EXPECT_EQ(f.Text2.text(), "[00:09]Hello world\r\n[00:09]\r\n[00:09]Second line\r\n");
}

TEST_F(Page, TheUnevenSetBackRules) {
    struct {
        double seconds;
        const char* stamp;
    } const cases[] = {{0.5, "[00:00]"}, {1, "[00:01]"}, {2.9, "[00:02]"}, {5, "[00:04]"},   {60, "[00:57]"},
                       {61, "[00:58]"},  {62, "[00:59]"}, {121.4, "[01:58]"}, {123, "[02:02]"}, {600, "[09:57]"}};
    for (const auto& c : cases) {
        f.Text2.setText("");
        perf.seek = static_cast<int32_t>(c.seconds * 2 * 768);  // 120 BPM: two quarters a second
        f.writeStamp(1);
        EXPECT_EQ(f.Text2.text(), std::string(c.stamp) + "Hello world\r\n") << c.seconds;
    }
}

TEST_F(Page, SavedTextsEndWithOneMoreLineEnd) {
    const std::string out = tempFolder() + "/sync-" + std::to_string(getpid()) + ".lrc";
    ui.dialogs.answerFile(out, 2);
    f.SaveSyncro.setEnabled(true);
    f.SaveSyncro.userClick();
    EXPECT_EQ(readWholeFile(out), "\r\n");  // an empty Text2
    EXPECT_EQ(ui.dialogs.shown().back().title, "Save Text & Syncro");
    EXPECT_EQ(ui.dialogs.shown().back().text, "File Syncro (*.txt)|*.txt|Lrc File (*.lrc)|*.lrc");

    f.Text2.setText("[00:04]Hello world\r\n");
    ui.dialogs.answerFile(out);
    f.SaveSyncro_Click();
    EXPECT_EQ(readWholeFile(out), "[00:04]Hello world\r\n\r\n");

    f.fullLyricText = "\r\nHello world\r\n";
    ui.dialogs.answerFile(out);
    f.SaveT_Click();
    EXPECT_EQ(readWholeFile(out), "\r\nHello world\r\n\r\n");
    EXPECT_EQ(ui.dialogs.shown().back().title, "Save Text");

    writeWholeFile(out, "kept");
    ui.dialogs.answerCancel();
    f.SaveT_Click();
    EXPECT_EQ(readWholeFile(out), "kept");
}

TEST_F(Page, FontAndColourButtons) {
    ui::Font chosen;
    chosen.name = "DejaVu Sans";
    chosen.size = 27.6;
    chosen.bold = true;
    ui.dialogs.push(chosen);
    f.Command4_Click();
    EXPECT_EQ(f.Picture3.font().name, "DejaVu Sans");
    EXPECT_EQ(f.Picture3.font().size, 27);  // as an integer
    EXPECT_EQ(f.fontName, "DejaVu Sans");
    EXPECT_EQ(f.fontSize, 27);
    f.Command4_Click();  // cancelled: nothing changes
    EXPECT_EQ(f.Picture3.font().name, "DejaVu Sans");

    ui.dialogs.push(uint32_t{0x123456});
    f.Command6_Click();
    EXPECT_EQ(f.colorUnsung, 0x123456);
    EXPECT_EQ(canvas.foreColor, 0xFFu);  // still the sung colour until the next word
    ui.dialogs.push(uint32_t{0xABCDEF});
    f.Command5_Click();
    EXPECT_EQ(f.colorSung, 0xABCDEF);
}

TEST_F(Page, TheRecorderClock) {
    f.TimTps_Timer();
    EXPECT_EQ(f.lblS.caption(), "");  // only outside song mode
    f.digitalRecorderMode = true;
    f.lblS.setCaption("59");
    f.lblM.setCaption("08");
    f.TimTps_Timer();
    EXPECT_EQ(f.lblS.caption(), "00");
    EXPECT_EQ(f.lblM.caption(), "09");
    f.lblS.setCaption("59");
    f.TimTps_Timer();
    EXPECT_EQ(f.lblS.caption(), "10");  // from ten minutes on, the minutes land here
    EXPECT_EQ(f.lblM.caption(), "09");
}
