#pragma once
// Stands in for a sound card: the engine is rendered in time with the wall
// clock, so the song runs, and its sound goes nowhere.

#include <QElapsedTimer>
#include <QMainWindow>
#include <QMetaObject>
#include <QStatusBar>
#include <QString>
#include <QTimer>

#include "engine/audio_engine.h"

namespace velaro::gui {

// Renders on the window's own thread, by its timer: for a window run without
// a card at all, as the tests run it.
class SilentDevice {
public:
    explicit SilentDevice(engine::AudioEngine& audio) : audio_(audio) {
        clock_.start();
        QObject::connect(&timer_, &QTimer::timeout, [this] {
            const int64_t due = clock_.elapsed() * audio_.sampleRate() / 1000;
            if (due > frames_) audio_.render(due - frames_);
            frames_ = due;
        });
        timer_.start(10);
    }

private:
    engine::AudioEngine& audio_;
    QElapsedTimer clock_;
    QTimer timer_;
    int64_t frames_ = 0;
};

// The card when there is one, else silence in its place: with no card, or
// when the card goes mid-song, the engine renders in time with the wall
// clock itself and takes up a card that comes back. Each change shows in
// the window's status bar.
class DeviceOrSilence {
public:
    DeviceOrSilence(engine::AudioEngine& audio, QMainWindow& window) : audio_(audio) {
        QMainWindow* w = &window;
        // The engine says it from its watch's thread: the window hears it on its own.
        audio_.setDeviceNotice([w](bool lost, const std::string& message) {
            const QString text = QString::fromStdString(message);
            QMetaObject::invokeMethod(
                w, [w, text, lost] { w->statusBar()->showMessage(text, lost ? 0 : 5000); }, Qt::QueuedConnection);
        });
        audio_.startDeviceOrSilence();
        if (audio_.playingSilently()) window.statusBar()->showMessage("no sound device; playing silently");
    }
    ~DeviceOrSilence() { audio_.stopDevice(); }
    DeviceOrSilence(const DeviceOrSilence&) = delete;
    DeviceOrSilence& operator=(const DeviceOrSilence&) = delete;

    // True while no card plays. Thread: any.
    bool silent() const { return audio_.playingSilently(); }

private:
    engine::AudioEngine& audio_;
};

}  // namespace velaro::gui
