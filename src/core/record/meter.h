#pragma once
// The two needle meters: the level of a captured buffer of raw samples, a
// needle angle from 18 to 75 degrees smoothed over four buffers, and the line
// each needle is drawn as.

#include <array>
#include <cstdint>
#include <vector>

namespace velaro::record {

struct NeedleLine {
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
};

class LevelMeter {
public:
    // A flag of the wave format table: which bytes make a sample.
    int32_t meterFormat = 0x800;
    float calibrationFactor = 2.5f;
    int16_t meterWidth = 0;   // the needle picture's width less 90
    int16_t meterHeight = 0;  // and its height less 120
    std::array<int16_t, 4> leftHistory{};   // index 0 newest
    std::array<int16_t, 4> rightHistory{};
    // The angles of the last buffer before smoothing.
    int16_t leftLevel = 0, rightLevel = 0;

    // One buffer from the capture: bytes [start, end] of a ring whose top is
    // bytes.size() - 1. False, with the needles as they were, for a buffer
    // that cannot be read.
    bool meterBuffer(const std::vector<uint8_t>& bytes, int32_t start, int32_t end);

    int16_t leftAngle() const { return leftHistory[0]; }
    int16_t rightAngle() const { return rightHistory[0]; }
    NeedleLine leftNeedle() const { return needle(leftAngle()); }
    NeedleLine rightNeedle() const { return needle(rightAngle()); }
    NeedleLine needle(int16_t angle) const;

    // The needle's resting and highest angles.
    static constexpr int16_t kRest = 18;
    static constexpr int16_t kTop = 75;
};

}  // namespace velaro::record
