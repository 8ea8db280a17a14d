#include "meter_window.h"

#include <QPainter>

namespace velaro::gui {

namespace {
// The pictures are laid out in twips, as the needle arithmetic counts them.
constexpr int kPictureWidth = 3000, kPictureHeight = 2400;
constexpr double kTwipsPerPixel = 15.0;
constexpr int kGap = 8;
}  // namespace

MeterWindow::MeterWindow(platform::MeterCapture& capture, QWidget* parent)
    : QWidget(parent, Qt::Window), capture_(capture) {
    setWindowTitle("VUMeter");
    meter_.meterWidth = kPictureWidth - 90;
    meter_.meterHeight = kPictureHeight - 120;
    const int w = static_cast<int>(kPictureWidth / kTwipsPerPixel), h = static_cast<int>(kPictureHeight / kTwipsPerPixel);
    setFixedSize(2 * w + 3 * kGap, h + 2 * kGap);
    QObject::connect(&timer_, &QTimer::timeout, this, [this] { poll(); });
}

bool MeterWindow::start() {
    capture_.SetFormat(meter_.meterFormat);
    const bool ok = capture_.Start();
    timer_.start(50);
    show();
    return ok;
}

void MeterWindow::stop() {
    timer_.stop();
    capture_.Stop();
    hide();
}

void MeterWindow::feed(const std::vector<uint8_t>& bytes, int32_t start, int32_t end) {
    if (meter_.meterBuffer(bytes, start, end)) update();
}

void MeterWindow::poll() {
    int32_t start = 0, end = 0;
    if (capture_.TakeBuffer(bytes_, start, end)) feed(bytes_, start, end);
}

void MeterWindow::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), palette().window());
    const int w = static_cast<int>(kPictureWidth / kTwipsPerPixel), h = static_cast<int>(kPictureHeight / kTwipsPerPixel);
    const record::NeedleLine lines[] = {meter_.leftNeedle(), meter_.rightNeedle()};
    for (int side = 0; side < 2; ++side) {
        const QRect box(kGap + side * (w + kGap), kGap, w, h);
        p.fillRect(box, Qt::white);
        p.setPen(Qt::gray);
        p.drawRect(box.adjusted(0, 0, -1, -1));
        p.save();
        p.setClipRect(box);
        p.translate(box.topLeft());
        p.scale(1 / kTwipsPerPixel, 1 / kTwipsPerPixel);
        p.setPen(QPen(Qt::black, 2 * kTwipsPerPixel));
        const auto& l = lines[side];
        p.drawLine(QPointF(l.x1, l.y1), QPointF(l.x2, l.y2));
        p.restore();
    }
}

}  // namespace velaro::gui
