// The backing player in the desktop window, offscreen: File > Wave/MP3,
// PlayWav, the vocal remover's box brings the equaliser up, and its sliders
// change the stream's bands while it plays.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QGroupBox>
#include <QSlider>

#include "core/base/paths.h"
#include "core/ui/scripted_dialogs.h"
#include "engine/engine_platform.h"
#include "gui/main_window.h"
#include "gui/qt_loop.h"
#include "gui/silent_device.h"
#include "support/backing_audio.h"

using namespace velaro;

TEST(BackingWindow, PlayWithTheRemoverAndMoveABand) {
    gui::QtLoop loop;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    engine::EnginePlatform ep(44100);
    song::frmMain form(rt, ep.get());
    gui::MainWindow window(form);
    gui::SilentDevice device(ep.audio());

    const std::string song = RPP(tempFolder()) + "gui-backing.wav";
    velaro::testing::writeStereo(song, 44100, 3.0, [](double t) {
        const double v = 0.2 * std::sin(velaro::testing::kTwoPi * 440 * t);
        return std::make_pair(v, v);
    });
    form.load();
    window.resize(1400, 900);
    window.show();
    auto* panelBox = qobject_cast<QGroupBox*>(window.widgetFor("Frame4"));
    ASSERT_NE(panelBox, nullptr);
    dialogs.answerFile(song);
    form.menuwave.userClick();
    auto* remover = qobject_cast<QAbstractButton*>(window.widgetFor("Chkrem"));
    ASSERT_NE(remover, nullptr);
    EXPECT_TRUE(remover->isVisibleTo(&window));
    EXPECT_FALSE(panelBox->isVisibleTo(&window));

    qobject_cast<QAbstractButton*>(window.widgetFor("Cmdplw"))->click();
    ASSERT_NE(form.backing.mainStream, 0u);
    EXPECT_EQ(ep.streams().ChannelIsActive(form.backing.mainStream), 1);
    remover->click();
    EXPECT_EQ(form.backing.Chkrem.value(), 1);
    EXPECT_TRUE(panelBox->isVisibleTo(&window));
    EXPECT_EQ(form.backing.Slider3.value(), 8);

    auto* band = qobject_cast<QSlider*>(window.widgetFor("vseq", 3));
    ASSERT_NE(band, nullptr);
    band->setValue(0);
    platform::PeakEqRecord r;
    r.band = 3;
    ASSERT_TRUE(ep.streams().FX_DSP_GetParameters(form.backing.mainStream, platform::kFxPeakEq, r));
    EXPECT_EQ(r.gain, 10.0f);
    EXPECT_EQ(r.center, 1500.0f);

    if (const char* shot = std::getenv("VELARO_SHOT")) window.grab().save(shot);
    qobject_cast<QAbstractButton*>(window.widgetFor("cmdstw"))->click();
    EXPECT_EQ(ep.streams().ChannelIsActive(form.backing.mainStream), 0);
    std::remove(song.c_str());
}
