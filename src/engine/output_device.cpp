#include "output_device.h"

#include "audio_thread_guard.h"

#include <alsa/asoundlib.h>
#include <rtaudio/RtAudio.h>

#include <algorithm>
#include <cstring>
#include <optional>

namespace velaro::engine {

namespace {
// ALSA's library prints its own complaints when no card is there; the
// program says what matters itself.
void quietAlsa(const char*, int, const char*, int, const char*, ...) {}
}  // namespace

OutputDevice::OutputDevice() { snd_lib_error_set_handler(&quietAlsa); }

OutputDevice::~OutputDevice() { close(); }

int OutputDevice::onAudio(void* out, void*, unsigned int frames, double, unsigned int, void* self) {
    auto* dev = static_cast<OutputDevice*>(self);
    // FluidSynth renders inside an OpenMP parallel region, and OpenMP sets up
    // a thread's state (allocating) the first time the thread enters one: the
    // first callback on a device thread is left unguarded for that.
    static thread_local int calls = 0;
    const bool guarded = calls > 0;
    calls = 1;
    std::optional<AudioCallbackScope> scope;
    if (guarded) scope.emplace();
    dev->cb_(static_cast<float*>(out), static_cast<int>(frames));
    return 0;
}

bool OutputDevice::open(int sampleRate, int bufferFrames, Callback cb, std::string& error) {
    cb_ = std::move(cb);
    const RtAudio::Api apis[] = {RtAudio::LINUX_PULSE, RtAudio::LINUX_ALSA, RtAudio::UNIX_JACK};
    std::vector<RtAudio::Api> compiled;
    RtAudio::getCompiledApi(compiled);
    error.clear();
    for (RtAudio::Api api : apis) {
        if (std::find(compiled.begin(), compiled.end(), api) == compiled.end()) continue;
        try {
            auto rt = std::make_unique<RtAudio>(api);
            rt->showWarnings(false);
            if (rt->getDeviceCount() == 0) continue;
            RtAudio::StreamParameters params;
            params.deviceId = rt->getDefaultOutputDevice();
            params.nChannels = 2;
            RtAudio::StreamOptions options;
            options.flags = RTAUDIO_MINIMIZE_LATENCY;
            options.streamName = "VELARO DECK";
            unsigned int frames = static_cast<unsigned int>(bufferFrames);
            rt->openStream(&params, nullptr, RTAUDIO_FLOAT32, static_cast<unsigned int>(sampleRate), &frames,
                           reinterpret_cast<RtAudioCallback>(&OutputDevice::onAudio), this, &options);
            rt->startStream();
            rt_ = std::move(rt);
            api_ = RtAudio::getApiName(api);
            return true;
        } catch (const std::exception& e) {
            error = std::string(RtAudio::getApiDisplayName(api)) + ": " + e.what();
        }
    }
    if (error.empty()) error = "no sound device";
    return false;
}

void OutputDevice::close() {
    if (!rt_) return;
    try {
        if (rt_->isStreamRunning()) rt_->stopStream();
        if (rt_->isStreamOpen()) rt_->closeStream();
    } catch (const std::exception&) {
    }
    rt_.reset();
}

bool OutputDevice::running() const { return rt_ && rt_->isStreamRunning(); }

}  // namespace velaro::engine
