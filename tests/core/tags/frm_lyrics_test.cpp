// The lyrics window: labels built from the sorted list, pages of ten, the
// colours of the current and the sung lines.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "core/tags/frm_lyrics.h"
#include "core/tags/timed_lyrics.h"
#include "core/ui/headless.h"

using namespace velaro;
using namespace velaro::tags;

namespace {

struct Window {
    ui::Headless h;
    TagsState state;
    settings::mConfig config;
    FrmLyrics w{h.rt, state, config};
    explicit Window(int lines) {
        config.appFolder = ::testing::TempDir() + "/lyrics-window-home";
        for (int i = 0; i < lines; ++i) addSorted(w.LyricsRef, TimeText(i * 3) + "    line " + std::to_string(i));
        w.Order_lblLyrics();
    }
    int boldCount() {
        int n = 0;
        w.lblLyrics.forEach([&](ui::Label& l) { n += l.font().bold ? 1 : 0; });
        return n;
    }
};

}  // namespace

TEST(LyricsWindow, NoEntriesBuildsNothing) {
    Window x(0);
    x.w.load();
    EXPECT_EQ(x.w.lblLyrics.count(), 1);
    EXPECT_EQ(x.w.lblLyrics(0).caption(), "Letras");
    EXPECT_TRUE(x.w.lblNoLyrics.visible());
    EXPECT_EQ(x.w.lblNoLyrics.caption(), "[ no lyrics found ]");
    EXPECT_EQ(x.w.Lblyr.caption(), "No lyrics found!");
    EXPECT_TRUE(x.state.LyricsWindowOpen);
    EXPECT_EQ(x.w.picLyrics.backColor(), 0x000000u);
    EXPECT_EQ(x.w.lblNoLyrics.foreColor(), 0xFFFFFFu);
    x.w.unload();
    EXPECT_FALSE(x.state.LyricsWindowOpen);
}

TEST(LyricsWindow, LabelsStackUnderEachOtherWithTheWords) {
    Window x(3);
    ASSERT_EQ(x.w.lblLyrics.count(), 3);
    EXPECT_EQ(x.w.lblLyrics(0).caption(), "line 0");
    EXPECT_EQ(x.w.lblLyrics(2).caption(), "line 2");
    EXPECT_EQ(x.w.lblLyrics(2).top(), 2 * kLyricLabelHeight);
    EXPECT_EQ(x.w.picLyrics.height(), 3 * kLyricLabelHeight);
    EXPECT_EQ(x.w.lblLyrics(0).foreColor(), kLyricRed);
    EXPECT_TRUE(x.w.lblLyrics(0).font().bold);
    EXPECT_EQ(x.w.lyricLast, 3);
}

TEST(LyricsWindow, ElevenLinesJumpOnceAtTheEleventh) {
    Window x(11);
    for (int i = 1; i <= 9; ++i) x.w.Move_Next_Focus_Lyrics();
    EXPECT_EQ(x.w.picLyrics.top(), 0);
    EXPECT_EQ(x.w.pageLine, 9);
    x.w.Move_Next_Focus_Lyrics();
    EXPECT_EQ(x.w.lyricIndex, 10);
    EXPECT_EQ(x.w.pageLine, 0);
    EXPECT_EQ(x.w.picLyrics.top(), -10 * kLyricLabelHeight);
    EXPECT_EQ(x.w.highlightedText(), "00:30    line 10");
    // At the last entry the moves stop.
    for (int i = 0; i < 5; ++i) x.w.Move_Next_Focus_Lyrics();
    EXPECT_EQ(x.w.lyricIndex, 11);
    EXPECT_EQ(x.w.picLyrics.top(), -10 * kLyricLabelHeight);
    EXPECT_EQ(x.boldCount(), 0);  // nothing past the last line to light
    EXPECT_EQ(x.w.lblLyrics(10).foreColor(), kLyricSung);
}

TEST(LyricsWindow, BackwardMovesOnlyTheMarks) {
    Window x(12);
    for (int i = 0; i < 11; ++i) x.w.Move_Next_Focus_Lyrics();
    ASSERT_EQ(x.w.picLyrics.top(), -10 * kLyricLabelHeight);
    x.w.Move_Previous_Focus_Lyrics();
    x.w.Move_Previous_Focus_Lyrics();
    EXPECT_EQ(x.w.lyricIndex, 9);
    EXPECT_EQ(x.w.pageLine, 9);
    EXPECT_EQ(x.w.picLyrics.top(), -10 * kLyricLabelHeight);  // the column stays
    EXPECT_TRUE(x.w.lblLyrics(9).font().bold);
    EXPECT_EQ(x.boldCount(), 1);
    // Lines once sung stay blue-white.
    EXPECT_EQ(x.w.lblLyrics(9).foreColor(), kLyricSung);
    EXPECT_EQ(x.w.lblLyrics(10).foreColor(), kLyricSung);
    for (int i = 0; i < 20; ++i) x.w.Move_Previous_Focus_Lyrics();
    EXPECT_EQ(x.w.lyricIndex, 0);
    EXPECT_EQ(x.w.pageLine, 0);
    x.w.Reset_Values();
    EXPECT_EQ(x.w.lyricLast, 12);
    EXPECT_EQ(x.w.picLyrics.top(), 0);
    EXPECT_TRUE(x.w.lblLyrics(0).font().bold);
}

TEST(LyricsWindow, SkinColoursComeFromSkinIni) {
    Window x(1);
    const std::string skins = x.config.GetPath(1);
    std::filesystem::create_directories(skins);
    {
        std::ofstream(skins + "Skin.ini") << "[Skin]\nRepBackColor = 10, 20 ,30\nRepForeColor=1,2\n";
    }
    x.w.load();
    EXPECT_EQ(x.w.picBody.backColor(), 10u + 20u * 256 + 30u * 65536);
    EXPECT_EQ(x.w.lblNoLyrics.foreColor(), 0xFFFFFFu);  // two parts give the default
    std::filesystem::remove_all(x.config.appFolder);
}
