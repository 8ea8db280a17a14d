// The take to MP3 from the main window, and "Wav to Mp3" as a window of its
// own, offscreen, with the real encoder.

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QProgressBar>
#include <QPushButton>

#include "core/base/paths.h"
#include "core/ui/scripted_dialogs.h"
#include "engine/engine_platform.h"
#include "gui/main_window.h"
#include "gui/qt_loop.h"
#include "support/tone_wav.h"

using namespace velaro;

namespace {

bool waitFor(const std::function<bool()>& done, int ms) {
    QElapsedTimer t;
    t.start();
    while (!done() && t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return done();
}

}  // namespace

TEST(EncodingWindows, TheTakeBecomesAnMp3FromTheMainWindow) {
    gui::QtLoop loop;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    engine::EnginePlatform ep(44100);
    song::frmMain form(rt, ep.get());
    gui::MainWindow window(form);
    window.show();

    const std::string take = RPP(applicationFolder()) + "newwave.wav";
    const std::string mp3 = RPP(tempFolder()) + "gui-take.mp3";
    velaro::testing::writeTone(take, {44100, 2, 0, 4.0});
    std::remove(mp3.c_str());
    form.cmdSave.setEnabled(true);
    dialogs.answerFile(mp3);
    auto* save = qobject_cast<QPushButton*>(window.widgetFor("cmdSave"));
    auto* bar = qobject_cast<QProgressBar*>(window.widgetFor("prog"));
    ASSERT_NE(save, nullptr);
    ASSERT_NE(bar, nullptr);
    EXPECT_FALSE(bar->isVisible());
    save->click();
    EXPECT_TRUE(bar->isVisible());
    ASSERT_TRUE(waitFor([&] { return !dialogs.messageBoxes().empty(); }, 20000));
    EXPECT_EQ(dialogs.messageBoxes()[0].text, "Done!");
    EXPECT_FALSE(bar->isVisible());
    EXPECT_TRUE(velaro::testing::decodeMp3(mp3).ok);

    // "Wav to Mp3" comes up with its lists when its menu is chosen.
    form.wavp3.userClick();
    ASSERT_TRUE(form.encoding.form1.visible());
    QWidget* w1 = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->windowTitle() == "Wav to Mp3") w1 = w;
    ASSERT_NE(w1, nullptr);
    EXPECT_TRUE(w1->isVisible());
    const auto combos = w1->findChildren<QComboBox*>();
    ASSERT_EQ(combos.size(), 4);
    EXPECT_EQ(combos[1]->count(), 40);
    w1->close();
    EXPECT_FALSE(form.encoding.form1.loaded());
}
