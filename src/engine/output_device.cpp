#include "output_device.h"

#include "audio_thread_guard.h"

#include <alsa/asoundlib.h>
#include <rtaudio/RtAudio.h>

#include <algorithm>
#include <chrono>
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

int OutputDevice::onAudio(void* out, void*, unsigned int frames, double, unsigned int status, void* self) {
    auto* dev = static_cast<OutputDevice*>(self);
    // FluidSynth renders inside an OpenMP parallel region, and OpenMP sets up
    // a thread's state (allocating) the first time the thread enters one: the
    // first callback on a device thread is left unguarded for that.
    static thread_local int calls = 0;
    const bool guarded = calls > 0;
    calls = 1;
    std::optional<AudioCallbackScope> scope;
    if (guarded) scope.emplace();
    // A stream whose server died fails each write at once and asks for the
    // next block straight away: played on, the song would race ahead. Once
    // it is far ahead of the wall clock its blocks are silence and the
    // engine's watch takes over.
    const int64_t now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                            std::chrono::steady_clock::now().time_since_epoch()).count();
    if (dev->firstNs_ < 0) dev->firstNs_ = now;
    const int64_t heard = (now - dev->firstNs_) / 1000 * dev->rate_ / 1'000'000;
    // A card's clock may run a little fast against the machine's: a
    // percent more is allowed.
    const int64_t slack = dev->rate_ / 2 + 4LL * dev->bufferFrames_ + heard / 100;
    if (dev->failed_.load(std::memory_order_relaxed) || dev->asked_ - heard > slack) {
        dev->failed_.store(true, std::memory_order_relaxed);
        std::memset(out, 0, sizeof(float) * 2 * frames);
        return 0;
    }
    // PulseAudio fills its whole buffer before it starts to play: the
    // furthest the stream got ahead of the clock is what it buffers.
    dev->cover_ = std::max(dev->cover_, std::max(dev->reportedCover_, dev->asked_ - heard));
    dev->asked_ += frames;
    const BlockInfo info{(status & RTAUDIO_OUTPUT_UNDERFLOW) != 0, dev->cover_ * 1'000'000'000 / dev->rate_};
    dev->cb_(static_cast<float*>(out), static_cast<int>(frames), info);
    return 0;
}

bool OutputDevice::open(int sampleRate, int bufferFrames, Callback cb, std::string& error) {
    cb_ = std::move(cb);
    rate_ = sampleRate;
    firstNs_ = -1;
    asked_ = 0;
    failed_.store(false);
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
            bufferFrames_ = bufferFrames;
            rt->openStream(&params, nullptr, RTAUDIO_FLOAT32, static_cast<unsigned int>(sampleRate), &frames,
                           reinterpret_cast<RtAudioCallback>(&OutputDevice::onAudio), this, &options);
            bufferFrames_ = static_cast<int>(frames);
            // What the device buffers beyond the block being played: at
            // least the latency it reports and two blocks (PulseAudio
            // through RtAudio reports none; its fill at the start tells).
            reportedCover_ = std::max<int64_t>(rt->getStreamLatency(), 2LL * frames);
            cover_ = reportedCover_;
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
