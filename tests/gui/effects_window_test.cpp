// Effects > Echo, Play, and the echo panel's sliders on the running sound,
// offscreen with the real engine.

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QSlider>

#include "core/ui/scripted_dialogs.h"
#include "engine/engine_platform.h"
#include "gui/main_window.h"
#include "gui/qt_loop.h"
#include "gui/silent_device.h"

using namespace velaro;

namespace {

void spin(int ms) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

}  // namespace

TEST(EffectsWindow, EchoFromTheMenuThenItsPanelChangesTheRunningEffect) {
    gui::QtLoop loop;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    engine::EnginePlatform ep(44100);
    song::frmMain form(rt, ep.get());
    gui::MainWindow window(form);
    gui::SilentDevice device(ep.audio());
    form.load();
    window.show();
    dialogs.answerFile(VELARO_DEMO_SONG);
    form.MnuOpenSong.userClick();

    // Effects > Echo: a second line in the chain's list.
    QAction* echo = nullptr;
    for (QAction* top : window.menuBar()->actions())
        if (top->menu())
            for (QAction* a : top->menu()->actions())
                if (a->text() == "Echo") echo = a;
    ASSERT_NE(echo, nullptr);
    echo->trigger();
    auto* list = qobject_cast<QListWidget*>(window.widgetFor("lstuse"));
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->count(), 2);
    EXPECT_EQ(list->item(1)->text(), "Echo");

    // Apply puts the chain on before Play does it again.
    qobject_cast<QPushButton*>(window.widgetFor("cmdApply"))->click();
    ASSERT_EQ(ep.songEffects().size(), 2);
    qobject_cast<QPushButton*>(window.widgetFor("Cmd_Play"))->click();
    spin(300);
    auto& chain = ep.songEffects();
    ASSERT_EQ(chain.chain(), (std::vector<platform::EffectClass>{platform::EffectClass::Compressor,
                                                                 platform::EffectClass::Echo}));
    // The compressor's panel came up with Play; the echo's with its button.
    auto* compressor = window.findChild<QWidget*>("frmCompressor");
    ASSERT_NE(compressor, nullptr);
    EXPECT_TRUE(compressor->isVisible());
    qobject_cast<QPushButton*>(window.widgetFor("cmdecho"))->click();
    auto* panel = window.findChild<QWidget*>("frmEcho");
    ASSERT_NE(panel, nullptr);
    EXPECT_TRUE(panel->isVisible());
    auto* left = panel->findChild<QSlider*>("sldLeft");
    ASSERT_NE(left, nullptr);
    EXPECT_EQ(left->value(), 500);
    left->setValue(250);
    platform::EffectRecord r;
    ASSERT_TRUE(chain.GetAllParameters(chain.GetObjectInPath("GUID_DSFX_STANDARD_ECHO", 0, "IID_DirectSoundFXEcho"), r));
    EXPECT_EQ(std::get<platform::DSFXEcho>(r).fLeftDelay, 250);
    EXPECT_EQ(std::get<platform::DSFXEcho>(r).lPanDelay, 1);
    spin(200);
    qobject_cast<QPushButton*>(window.widgetFor("Cmd_Stop"))->click();
    spin(50);
}
