#include "meter.h"

#include <cmath>
#include <cstdlib>

#include "../base/vb_number.h"

namespace velaro::record {

namespace {
enum class Layout { None, Mono8, Stereo8, Mono16, Stereo16 };

Layout layoutOf(int32_t format) {
    switch (format) {
        case 1: case 0x10: case 0x100: return Layout::Mono8;
        case 2: case 0x20: case 0x200: return Layout::Stereo8;
        case 4: case 0x40: case 0x400: return Layout::Mono16;
        case 8: case 0x80: case 0x800: return Layout::Stereo16;
        default: return Layout::None;
    }
}

// The bytes past p that a sample of this layout reads.
int reach(Layout l) {
    switch (l) {
        case Layout::Stereo8: case Layout::Mono16: return 1;
        case Layout::Stereo16: return 3;
        default: return 0;
    }
}

// A 16-bit sample seen only by its high byte, signed: -128..127.
double high(const std::vector<uint8_t>& b, int64_t p) {
    double v = roundHalfEven(b[p + 1] + b[p] / 256.0);
    if (v > 127) v -= 256;
    return v;
}

int16_t angleOf(double sum, int count, float factor) {
    const double level = roundHalfEven(std::sqrt(sum / count) * factor);
    const double angle = roundHalfEven(level / 128 * 75 + 18);
    return static_cast<int16_t>(std::min(angle, 75.0));
}

void smooth(std::array<int16_t, 4>& h, int16_t angle) {
    h[0] = static_cast<int16_t>(roundHalfEven((angle + h[3] + h[2] + h[1]) / 4.0));
    h[3] = h[2];
    h[2] = h[1];
    h[1] = h[0];
}
}  // namespace

bool LevelMeter::meterBuffer(const std::vector<uint8_t>& bytes, int32_t start, int32_t end) {
    const int64_t top = static_cast<int64_t>(bytes.size()) - 1;
    const Layout layout = layoutOf(meterFormat);
    // A buffer that would read outside the ring, or holds no step, changes nothing.
    if (start < 0 || end < start) return false;
    double sumL = 0, sumR = 0;
    int count = 0;
    for (int64_t i = start; i <= end; i += 256) {
        ++count;
        const int64_t p = i > top ? i - top + 1 : i;
        if (layout == Layout::None) continue;
        if (p < 0 || p + reach(layout) > top) return false;
        double v;
        switch (layout) {
            case Layout::Mono8:
                v = 128 - bytes[p];
                sumL += v * v;
                break;
            case Layout::Stereo8:
                v = 128 - bytes[p];
                sumL += v * v;
                v = 128 - bytes[p + 1];
                sumR += v * v;
                break;
            case Layout::Mono16:
                v = high(bytes, p);
                sumL += v * v;
                break;
            case Layout::Stereo16:
                v = high(bytes, p);
                sumL += v * v;
                v = high(bytes, p + 2);
                sumR += v * v;
                break;
            case Layout::None: break;
        }
    }
    leftLevel = angleOf(sumL, count, calibrationFactor);
    rightLevel = angleOf(sumR, count, calibrationFactor);
    smooth(leftHistory, leftLevel);
    smooth(rightHistory, rightLevel);
    return true;
}

NeedleLine LevelMeter::needle(int16_t angle) const {
    constexpr double kRadians = 0.0174532925199;
    const double w = meterWidth, h = meterHeight;
    NeedleLine line;
    line.x1 = w / 2;
    line.y1 = h - 210;
    line.x2 = std::abs(w / 2 * std::cos(angle * kRadians) - w / 2);
    line.y2 = std::abs(h - h * std::sin(angle * kRadians));
    return line;
}

}  // namespace velaro::record
