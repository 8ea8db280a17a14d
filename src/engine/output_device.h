#pragma once
// The sound card through RtAudio: PulseAudio first (PipeWire serves it too),
// then ALSA, then JACK. Small buffers keep the latency low.

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

class RtAudio;

namespace velaro::engine {

class OutputDevice {
public:
    // What the device says with each block: whether its backend reports it
    // ran dry before it, and how long the audio it buffers ahead lasts.
    struct BlockInfo {
        bool underflow = false;
        int64_t coverNs = 0;
    };
    using Callback = std::function<void(float* interleaved, int frames, const BlockInfo& info)>;
    OutputDevice();
    ~OutputDevice();
    // Thread: logic. The callback runs on the device's thread.
    bool open(int sampleRate, int bufferFrames, Callback cb, std::string& error);
    void close();
    bool running() const;
    // The stream asks for blocks much faster than it can play them: its
    // server has gone and every write fails at once. Thread: any.
    bool failed() const { return failed_.load(std::memory_order_relaxed); }
    std::string apiName() const { return api_; }
    // The block size the device settled on. Thread: logic, after open.
    int bufferFrames() const { return bufferFrames_; }

private:
    static int onAudio(void* out, void* in, unsigned int frames, double time, unsigned int status, void* self);
    std::unique_ptr<RtAudio> rt_;
    Callback cb_;
    std::string api_;
    int rate_ = 44100;
    int bufferFrames_ = 0;
    int64_t reportedCover_ = 0;  // frames: the latency the device reports
    int64_t cover_ = 0;          // device thread: frames, the most it was ever asked for ahead of the clock
    // Device thread: the steady-clock time of the first block, and the frames asked for since.
    int64_t firstNs_ = -1;
    int64_t asked_ = 0;
    std::atomic<bool> failed_{false};
};

}  // namespace velaro::engine
