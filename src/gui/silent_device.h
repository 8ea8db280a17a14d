#pragma once
// Stands in for a sound card: the engine is rendered in time with the wall
// clock, so the song runs, and its sound goes nowhere.

#include <QElapsedTimer>
#include <QTimer>

#include "engine/audio_engine.h"

namespace velaro::gui {

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

}  // namespace velaro::gui
