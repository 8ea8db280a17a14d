// The needle window paints what its model says: at rest the needles lie low
// to the left, a loud input raises them.

#include <gtest/gtest.h>

#include <QImage>

#include "core/platform/inert.h"
#include "gui/meter_window.h"

using namespace velaro;

namespace {
// Dark pixels in the top third of one needle picture.
int darkInTopThird(const QImage& img, int side) {
    const int w = (img.width() - 24) / 2;
    int n = 0;
    for (int y = 10; y < 8 + img.height() / 3; ++y)
        for (int x = 10 + side * (w + 8); x < 6 + side * (w + 8) + w; ++x)
            if (qGray(img.pixel(x, y)) < 100) ++n;
    return n;
}
}  // namespace

TEST(MeterWindow, ALoudInputRaisesBothNeedles) {
    platform::InertMeterCapture capture;
    gui::MeterWindow window(capture);
    const QImage rest = window.grab().toImage();
    EXPECT_EQ(darkInTopThird(rest, 0), 0);
    EXPECT_EQ(darkInTopThird(rest, 1), 0);

    std::vector<uint8_t> loud;
    for (int i = 0; i < 1024; ++i) loud.insert(loud.end(), {0x00, 0x80, 0x00, 0x80});
    for (int i = 0; i < 30; ++i) window.feed(loud, 0, static_cast<int32_t>(loud.size()) - 1);
    EXPECT_GT(window.model().leftAngle(), 70);
    const QImage up = window.grab().toImage();
    EXPECT_GT(darkInTopThird(up, 0), 10);
    EXPECT_GT(darkInTopThird(up, 1), 10);
}
