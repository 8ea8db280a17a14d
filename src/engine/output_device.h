#pragma once
// The sound card through RtAudio: PulseAudio first (PipeWire serves it too),
// then ALSA, then JACK. Small buffers keep the latency low.

#include <functional>
#include <memory>
#include <string>

class RtAudio;

namespace velaro::engine {

class OutputDevice {
public:
    using Callback = std::function<void(float* interleaved, int frames)>;
    OutputDevice();
    ~OutputDevice();
    // Thread: logic. The callback runs on the device's thread.
    bool open(int sampleRate, int bufferFrames, Callback cb, std::string& error);
    void close();
    bool running() const;
    std::string apiName() const { return api_; }

private:
    static int onAudio(void* out, void* in, unsigned int frames, double time, unsigned int status, void* self);
    std::unique_ptr<RtAudio> rt_;
    Callback cb_;
    std::string api_;
};

}  // namespace velaro::engine
