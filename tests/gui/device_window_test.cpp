// The window's sound card goes and comes back: the engine plays on silently
// and the window's status bar says what happened, both times.

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QStatusBar>

#include <functional>

#include "engine/audio_engine.h"
#include "gui/silent_device.h"
#include "support/pulse_daemon.h"

using namespace velaro;

namespace {

class DeviceWindow : public velaro::testing::PulseServer {
protected:
    // Lets the window's events run until the condition holds (at most `ms`).
    static bool runUntil(const std::function<bool()>& cond, int ms = 15000) {
        QElapsedTimer t;
        t.start();
        while (!cond()) {
            if (t.elapsed() > ms) return false;
            QApplication::processEvents(QEventLoop::AllEvents, 20);
        }
        return true;
    }
};

}  // namespace

TEST_F(DeviceWindow, TheStatusBarSaysTheCardWentAndCameBack) {
    engine::AudioEngine audio(44100);
    QMainWindow window;
    gui::DeviceOrSilence device(audio, window);
    ASSERT_FALSE(device.silent());
    EXPECT_TRUE(audio.deviceRunning());
    ASSERT_TRUE(runUntil([&] { return audio.framesPlayed() > 22050; }));

    killDaemon();
    ASSERT_TRUE(runUntil([&] {
        return window.statusBar()->currentMessage() == "the sound device was lost; playing silently";
    })) << window.statusBar()->currentMessage().toStdString();
    EXPECT_TRUE(device.silent());
    const int64_t frames = audio.framesPlayed();
    EXPECT_TRUE(runUntil([&] { return audio.framesPlayed() > frames + 22050; })) << "the engine plays on";

    ASSERT_EQ(restartDaemon(), "");
    ASSERT_TRUE(runUntil([&] { return window.statusBar()->currentMessage().startsWith("the sound device is back"); }))
        << window.statusBar()->currentMessage().toStdString();
    EXPECT_FALSE(device.silent());
    EXPECT_TRUE(audio.deviceRunning());
}
