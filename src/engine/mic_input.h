#pragma once
// The microphone: a capture stream through RtAudio (PulseAudio first), a
// device picked by name, a level and a mute, and the round-trip latency that
// takes line up by. Without a sound card a wave file stands in for it.

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "stream_clock.h"

class RtAudio;

namespace velaro::engine {

class FrameRing;

class MicInput {
public:
    explicit MicInput(int engineRate);
    ~MicInput();

    // 0 to 100 (100 passes the input as it is) and mute. Thread: any.
    void setLevel(int level);
    void setMute(bool on) { mute_.store(on, std::memory_order_relaxed); }
    int level() const { return level_.load(std::memory_order_relaxed); }
    bool muted() const { return mute_.load(std::memory_order_relaxed); }
    // The level the take hears the input at. The mute is the singer's own
    // voice in the speakers (the start mutes it against feedback): a take
    // keeps the voice whether or not the singer hears it.
    float gain() const { return static_cast<float>(level()) / 100.0f; }

    // The names of the capture devices that setDeviceName takes. Thread: logic.
    static std::vector<std::string> deviceNames();
    // The capture device by name ("" the default input). Takes effect at the next open. Thread: logic.
    void setDeviceName(std::string name) { deviceName_ = std::move(name); }
    const std::string& deviceName() const { return deviceName_; }
    // How much later the input arrives than the output it was sung to. Thread: logic.
    void setLatencyMs(int ms) { latencyMs_ = ms < 0 ? 0 : ms; }
    int latencyMs() const { return latencyMs_; }
    int latencyFrames() const { return static_cast<int>(static_cast<int64_t>(latencyMs_) * rate_ / 1000); }

    // A wave file as the microphone of offline runs ("" for none). Thread: logic.
    void setFile(std::string path) { file_ = std::move(path); }
    const std::string& file() const { return file_; }

    // Live capture, opened for as long as someone uses it. Thread: logic.
    bool acquire(std::string& error);
    void release();
    bool capturing() const { return rt_ != nullptr; }
    std::string apiName() const { return api_; }

    // Where captured frames go, with the level applied (nullptr: nowhere). Thread: logic.
    void setConsumer(FrameRing* ring) { consumer_.store(ring, std::memory_order_release); }
    // Peak of the last captured block, 0 to 1. Thread: any.
    float peak() const { return peak_.load(std::memory_order_relaxed); }
    // Frames captured since the stream opened. Thread: any.
    int64_t framesCaptured() const { return captured_.load(std::memory_order_relaxed); }
    // The last frames heard, before the level, as 16-bit left and right, for
    // the meter: copies those after `from` (at most `max`) and moves `from`
    // on. Frames older than the meter's ring are lost. Thread: one reader.
    size_t meterFrames(uint64_t& from, int16_t* leftRight, size_t max) const;
    // The input's frames on the steady clock. Thread: any.
    StreamClock& clock() { return clock_; }
    const StreamClock& clock() const { return clock_; }
    // The captured frame the current consumer's first frame was. Thread: any, once it has frames.
    int64_t consumerStartFrame() const { return consumerStart_.load(std::memory_order_acquire); }
    uint64_t meterHead() const { return meterHead_.load(std::memory_order_acquire); }
    static constexpr size_t kMeterFrames = 8192;

private:
    static int onInput(void* out, void* in, unsigned int frames, double, unsigned int, void* self);
    bool open(std::string& error);
    void close();

    int rate_;
    std::atomic<int> level_{100};
    std::atomic<bool> mute_{false};
    std::atomic<float> peak_{0.0f};
    std::atomic<int64_t> captured_{0};
    std::atomic<FrameRing*> consumer_{nullptr};
    FrameRing* lastConsumer_ = nullptr;  // capture thread
    std::atomic<int64_t> consumerStart_{0};
    StreamClock clock_;
    std::string deviceName_, file_, api_;
    int latencyMs_ = 0;
    int channels_ = 2;  // of the open stream; set before it starts
    int users_ = 0;
    std::unique_ptr<RtAudio> rt_;
    // Each frame packed in one word, so the reader never sees half a frame.
    std::array<std::atomic<uint32_t>, kMeterFrames> meter_{};
    std::atomic<uint64_t> meterHead_{0};
    float scratch_[2 * 4096];
};

}  // namespace velaro::engine
