#pragma once
// Capture for the level meter: peak levels of what the capture device hears,
// and the raw bytes of what it heard, for the meter's own arithmetic.

#include <cstdint>
#include <vector>

namespace velaro::platform {

class MeterCapture {
public:
    virtual ~MeterCapture() = default;
    virtual bool Start() = 0;
    virtual void Stop() = 0;
    virtual int LeftLevel() = 0;   // 0 to 100
    virtual int RightLevel() = 0;  // 0 to 100
    // The byte layout of captured buffers: a flag of the wave format table
    // (0x800: 44 kHz, 16 bit, stereo).
    virtual void SetFormat(int32_t meterFormat) {}
    // What was heard since the last call, in that layout, as bytes [start, end]
    // of `ring`. False when nothing new came.
    virtual bool TakeBuffer(std::vector<uint8_t>& ring, int32_t& start, int32_t& end) { return false; }
};

}  // namespace velaro::platform
