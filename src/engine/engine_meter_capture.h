#pragma once
// The level meter's capture on the engine's microphone input: while started
// it keeps the input open and hands over what it heard, in the meter's byte
// layout (8 or 16 bit, mono or stereo, 11, 22 or 44 kHz).

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/platform/meter_capture.h"

namespace velaro::engine {

class MicInput;

class EngineMeterCapture : public platform::MeterCapture {
public:
    explicit EngineMeterCapture(MicInput& mic, int engineRate) : mic_(mic), rate_(engineRate) {}
    ~EngineMeterCapture() override { Stop(); }

    bool Start() override;
    void Stop() override;
    int LeftLevel() override;
    int RightLevel() override;
    void SetFormat(int32_t meterFormat) override { format_ = meterFormat; }
    bool TakeBuffer(std::vector<uint8_t>& ring, int32_t& start, int32_t& end) override;

    // Turns frames (16-bit left and right at the engine's rate) into the
    // bytes of a meter format; an unknown format gives 16-bit stereo at 44 kHz.
    static void encode(const int16_t* leftRight, size_t frames, int engineRate, int32_t meterFormat,
                       std::vector<uint8_t>& out);

private:
    MicInput& mic_;
    int rate_;
    int32_t format_ = 0x800;
    bool started_ = false;
    uint64_t read_ = 0;
    std::vector<int16_t> frames_;
};

}  // namespace velaro::engine
