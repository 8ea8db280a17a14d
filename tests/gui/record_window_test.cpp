// A take from the desktop window, offscreen: open the demo, press Record with
// a voice file as the microphone, StopRecord after a while, no playback, and
// the take saved under a name.

#include <gtest/gtest.h>

#include <QPushButton>
#include <QTimer>

#include <sndfile.h>

#include "core/base/paths.h"
#include "core/ui/scripted_dialogs.h"
#include "engine/engine_platform.h"
#include "engine/mic_input.h"
#include "gui/main_window.h"
#include "gui/qt_loop.h"
#include "gui/silent_device.h"
#include "support/tone_wav.h"

using namespace velaro;

TEST(RecordWindow, RecordOverTheDemoGivesATakeThatIsSaved) {
    gui::QtLoop loop;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    engine::EnginePlatform ep(44100);
    song::frmMain form(rt, ep.get());
    gui::MainWindow window(form);
    gui::SilentDevice device(ep.audio());  // no sound card here: the take is made as the engine renders

    const std::string voice = RPP(tempFolder()) + "gui-voice.wav";
    velaro::testing::writeTone(voice, {44100, 1, 0, 10.0, 0.3, 440});
    ep.audio().mic().setFile(voice);
    const std::string named = RPP(tempFolder()) + "gui-take.wav";
    std::remove(named.c_str());

    form.load();
    window.show();
    dialogs.answerFile(VELARO_DEMO_SONG);
    form.MnuOpenSong.userClick();
    dialogs.clearLog();
    dialogs.answerMsgBox(ui::vbNo);  // PlayBack: no
    dialogs.answerFile(named);

    auto* record = qobject_cast<QPushButton*>(window.widgetFor("cmdrec"));
    auto* stop = qobject_cast<QPushButton*>(window.widgetFor("cmdstop"));
    ASSERT_NE(record, nullptr);
    ASSERT_NE(stop, nullptr);
    ASSERT_TRUE(record->isEnabled());
    bool stopWasEnabled = false;
    QTimer::singleShot(2500, [&] {
        stopWasEnabled = stop->isEnabled();
        stop->click();
    });
    // The whole take runs inside the press, the window alive around it.
    record->click();

    EXPECT_TRUE(stopWasEnabled);
    ASSERT_FALSE(dialogs.messageBoxes().empty());
    EXPECT_EQ(dialogs.messageBoxes().back().title + ": " + dialogs.messageBoxes().back().text, "MIDItoWAV: Fatto!");
    SF_INFO info{};
    SNDFILE* f = sf_open(named.c_str(), SFM_READ, &info);
    ASSERT_NE(f, nullptr);
    // About 2.5 s of song and voice, then the second after the stop.
    EXPECT_GT(double(info.frames) / info.samplerate, 2.5);
    EXPECT_LT(double(info.frames) / info.samplerate, 5.0);
    std::vector<short> s(static_cast<size_t>(info.frames * info.channels));
    sf_read_short(f, s.data(), static_cast<sf_count_t>(s.size()));
    sf_close(f);
    short peak = 0;
    for (short v : s) peak = std::max<short>(peak, std::abs(v));
    EXPECT_GT(peak, 8000);  // the voice is in it
    EXPECT_TRUE(fileExists(RPP(applicationFolder()) + "newwave.wav"));
    EXPECT_TRUE(form.cmdSave.enabled());
}
