#include "engine_meter_capture.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "mic_input.h"

namespace velaro::engine {

bool EngineMeterCapture::Start() {
    if (started_) return true;
    std::string error;
    if (!mic_.acquire(error)) return false;
    started_ = true;
    read_ = mic_.meterHead();  // the first buffer starts with what is heard from now on
    return true;
}

void EngineMeterCapture::Stop() {
    if (!started_) return;
    mic_.release();
    started_ = false;
}

int EngineMeterCapture::LeftLevel() { return started_ ? static_cast<int>(std::lround(mic_.peak() * 100)) : 0; }

int EngineMeterCapture::RightLevel() { return LeftLevel(); }

namespace {
struct Layout {
    int rate, bits, channels;
};

Layout layoutOf(int32_t format) {
    static const struct {
        int32_t flag;
        Layout layout;
    } table[] = {
        {0x1, {11025, 8, 1}},    {0x2, {11025, 8, 2}},    {0x4, {11025, 16, 1}},   {0x8, {11025, 16, 2}},
        {0x10, {22050, 8, 1}},   {0x20, {22050, 8, 2}},   {0x40, {22050, 16, 1}},  {0x80, {22050, 16, 2}},
        {0x100, {44100, 8, 1}},  {0x200, {44100, 8, 2}},  {0x400, {44100, 16, 1}}, {0x800, {44100, 16, 2}},
    };
    for (const auto& row : table)
        if (row.flag == format) return row.layout;
    return {44100, 16, 2};
}
}  // namespace

void EngineMeterCapture::encode(const int16_t* lr, size_t frames, int engineRate, int32_t format,
                                std::vector<uint8_t>& out) {
    const auto [rate, bits, channels] = layoutOf(format);
    // Every n-th frame brings the engine's rate down to the format's.
    const size_t step = std::max<size_t>(1, static_cast<size_t>(std::lround(double(engineRate) / rate)));
    out.clear();
    for (size_t i = 0; i < frames; i += step)
        for (int c = 0; c < channels; ++c) {
            const int16_t v = lr[2 * i + c];
            if (bits == 8) {
                out.push_back(static_cast<uint8_t>(128 + (v >> 8)));
            } else {
                out.push_back(static_cast<uint8_t>(v & 0xFF));
                out.push_back(static_cast<uint8_t>((v >> 8) & 0xFF));
            }
        }
}

bool EngineMeterCapture::TakeBuffer(std::vector<uint8_t>& ring, int32_t& start, int32_t& end) {
    if (!started_) return false;
    frames_.resize(2 * MicInput::kMeterFrames);
    const size_t n = mic_.meterFrames(read_, frames_.data(), MicInput::kMeterFrames);
    if (n == 0) return false;
    encode(frames_.data(), n, rate_, format_, ring);
    if (ring.empty()) return false;
    start = 0;
    end = static_cast<int32_t>(ring.size()) - 1;
    return true;
}

}  // namespace velaro::engine
