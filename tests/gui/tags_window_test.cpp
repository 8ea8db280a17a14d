// The tag editor's window offscreen: open an MP3, play, press Add at each
// line, save, reopen; the caret follows the stamps and the lyrics window
// comes up with the lines and lights them as the clock passes.

#include <gtest/gtest.h>

#include <lame/lame.h>

#include <QApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTextBlock>

#include <cmath>

#include "support/tone_wav.h"
#include "core/base/paths.h"
#include "core/tags/frm_tags.h"
#include "core/ui/scripted_dialogs.h"
#include "gui/lyrics_window.h"
#include "gui/qt_loop.h"
#include "gui/tags_window.h"

using namespace velaro;

namespace {

class ClockGraph : public platform::MediaGraph {
public:
    bool RenderFile(const std::string& p) override { return !(file = p).empty(); }
    void Run() override { state = 2; }
    void Pause() override { state = 1; }
    void Stop() override { state = 0; }
    void Release() override { file.clear(); }
    double CurrentPosition() override { return position; }
    void SetCurrentPosition(double s) override { position = s; }
    double Duration() override { return file.empty() ? 0 : 200; }
    int State() override { return state; }
    void SetVolume(int v) override { volume = v; }
    int Volume() override { return volume; }
    void SetBalance(int) override {}
    std::string file;
    double position = 0;
    int state = 0, volume = 0;
};

QPushButton* button(QWidget* w, const QString& text) {
    for (auto* b : w->findChildren<QPushButton*>())
        if (b->text() == text) return b;
    return nullptr;
}

}  // namespace

TEST(TagsWindow, StampWhilePlayingSaveAndReopen) {
    gui::QtLoop loop;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    tags::TagsState state;
    settings::mConfig config;
    config.appFolder = RPP(tempFolder()) + "tags-window-home";
    ClockGraph graph;
    tags::FrmTags form(rt, state, config, graph);
    gui::TagsWindow window(form, nullptr);
    form.show();
    ASSERT_TRUE(window.isVisible());
    EXPECT_EQ(window.windowTitle(), "Velaro  ID3 Tag & LyricsEditor  V.1.0");

    const std::string mp3 = RPP(tempFolder()) + "gui-tags.mp3";
    writeWholeFile(mp3, velaro::testing::mp3Tone(3.0));
    dialogs.answerFile(mp3);
    form.btnParcourSon.userClick();
    QPlainTextEdit* lyrics = window.lyricsEditor();
    lyrics->setPlainText("Prima riga\n\nSeconda riga\nTerza");
    EXPECT_EQ(form.txtLyrics.text(), "Prima riga\r\n\r\nSeconda riga\r\nTerza");
    lyrics->moveCursor(QTextCursor::Start);

    button(&window, "Play")->click();
    EXPECT_EQ(state.PlayerState, "true");
    ASSERT_TRUE(form.frmLyrics.visible());
    graph.position = 1;
    button(&window, "Add")->click();
    EXPECT_EQ(lyrics->textCursor().blockNumber(), 2);  // the blank line is passed over
    graph.position = 4;
    button(&window, "Add")->click();
    EXPECT_EQ(lyrics->textCursor().blockNumber(), 3);
    graph.position = 9;
    button(&window, "Add")->click();
    EXPECT_EQ(form.txtLyrics.text(), "[00:01]Prima riga\r\n\r\n[00:04]Seconda riga\r\n[00:09]Terza");
    EXPECT_EQ(lyrics->toPlainText(), "[00:01]Prima riga\n\n[00:04]Seconda riga\n[00:09]Terza");

    button(&window, "Stop")->click();
    form.txtTitle.setText("Canzone");
    form.fieldKeyDown('c');
    lyrics->appendPlainText("");  // the last line gets its end, so it counts
    button(&window, "Save")->click();
    ASSERT_FALSE(dialogs.messageBoxes().empty());
    EXPECT_EQ(dialogs.messageBoxes().back().text, "Done!");

    dialogs.answerFile(mp3);
    form.btnParcourSon.userClick();
    EXPECT_EQ(form.txtLyrics.text(), "[00:01]Prima riga\r\n\r\n[00:04]Seconda riga\r\n[00:09]Terza\r\n");
    EXPECT_EQ(form.txtTitle.text(), "Canzone");

    // Playing again lights the lines as the clock passes them.
    button(&window, "Play")->click();
    graph.position = 5;
    form.playTimer_Timer();
    EXPECT_EQ(form.lyricPos, 2);
    EXPECT_TRUE(form.frmLyrics.lblLyrics(2).font().bold);
    EXPECT_EQ(form.frmLyrics.lblLyrics(1).foreColor(), tags::kLyricSung);
    gui::LyricsWindow* shown = window.lyricsWindow();
    ASSERT_TRUE(shown->isVisible());
    const std::string png = RPP(tempFolder()) + "lyrics-window.png";
    EXPECT_TRUE(shown->grab().save(QString::fromStdString(png)));
    EXPECT_TRUE(window.grab().save(QString::fromStdString(RPP(tempFolder()) + "tags-window.png")));
    auto* tabs = window.findChild<QTabWidget*>();
    ASSERT_NE(tabs, nullptr);
    tabs->setCurrentIndex(1);
    EXPECT_TRUE(window.grab().save(QString::fromStdString(RPP(tempFolder()) + "tags-window-lyrics.png")));
    button(&window, "Stop")->click();
    EXPECT_FALSE(shown->isVisible());
}
