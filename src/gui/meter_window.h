#pragma once
// The two needle meters as a window: the meter's model fed with what the
// capture heard, a few times a second, and its needle lines painted.

#include <QTimer>
#include <QWidget>
#include <vector>

#include "core/platform/meter_capture.h"
#include "core/record/meter.h"

namespace velaro::gui {

class MeterWindow : public QWidget {
public:
    MeterWindow(platform::MeterCapture& capture, QWidget* parent = nullptr);
    // Opens the capture and shows the needles; false when no input could be opened.
    bool start();
    void stop();
    record::LevelMeter& model() { return meter_; }
    // One buffer through the model, as the timer does it.
    void feed(const std::vector<uint8_t>& bytes, int32_t start, int32_t end);

protected:
    void paintEvent(QPaintEvent*) override;

private:
    void poll();
    platform::MeterCapture& capture_;
    record::LevelMeter meter_;
    QTimer timer_;
    std::vector<uint8_t> bytes_;
};

}  // namespace velaro::gui
