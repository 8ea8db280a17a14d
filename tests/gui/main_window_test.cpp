// The desktop window, offscreen: open the demo, play a few seconds, stop.

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>

#include "core/base/paths.h"
#include "engine/engine_platform.h"
#include "gui/main_window.h"
#include "gui/page_widget.h"
#include "gui/qt_loop.h"
#include "gui/silent_device.h"
#include "core/ui/scripted_dialogs.h"

using namespace velaro;

namespace {

void runFor(int ms) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

}  // namespace

TEST(MainWindow, PlaysTheDemoWithTheWordsRunning) {
    gui::QtLoop loop;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    engine::EnginePlatform ep(44100);
    song::frmMain form(rt, ep.get());
    gui::MainWindow window(form);
    gui::SilentDevice device(ep.audio());  // no sound card here

    form.load();
    ASSERT_FALSE(form.ended);
    window.show();
    dialogs.answerFile(VELARO_DEMO_SONG);
    form.MnuOpenSong.userClick();
    auto* play = qobject_cast<QPushButton*>(window.widgetFor("Cmd_Play"));
    ASSERT_NE(play, nullptr);
    EXPECT_TRUE(play->isEnabled());
    play->click();
    EXPECT_FALSE(play->isEnabled());
    runFor(6500);

    // The page shows the first line with its sung part in the sung colour.
    const auto& shown = window.page()->shown();
    ASSERT_GE(shown.size(), 3u);
    EXPECT_EQ(shown[0].second, static_cast<uint32_t>(form.colorSung));
    EXPECT_NE((shown[0].first + shown[1].first + shown[2].first).find("Amazing grace!"), std::string::npos);
    auto* sync = qobject_cast<QPlainTextEdit*>(window.widgetFor("Text2"));
    ASSERT_NE(sync, nullptr);
    EXPECT_TRUE(sync->toPlainText().startsWith("[00:0")) << sync->toPlainText().toStdString();
    EXPECT_TRUE(sync->toPlainText().contains("]Amazing grace! How sweet the sound"));

    const QImage shot = window.grab().toImage();
    EXPECT_GT(shot.width(), 600);

    qobject_cast<QPushButton*>(window.widgetFor("Cmd_Stop"))->click();
    runFor(100);
    EXPECT_TRUE(window.page()->shown().empty());  // the page is cleared on stop
    EXPECT_TRUE(play->isEnabled());
    EXPECT_EQ(form.songState, 0);
}

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
