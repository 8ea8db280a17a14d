#include "audio_engine.h"

#include <algorithm>
#include <cstring>

#include "audio_tap.h"
#include "output_device.h"

namespace velaro::engine {

AudioEngine::AudioEngine(int sampleRate)
    : rate_(sampleRate), left_(kMaxBlock), right_(kMaxBlock), offline_(2 * kOfflineBlock) {}

AudioEngine::~AudioEngine() { stopDevice(); }

void AudioEngine::addSource(AudioSource* source) {
    int n = sourceCount_.load(std::memory_order_relaxed);
    if (n >= static_cast<int>(sources_.size())) return;
    sources_[n].store(source, std::memory_order_relaxed);
    sourceCount_.store(n + 1, std::memory_order_release);
}

void AudioEngine::process(float* out, int frames) noexcept {
    const int count = sourceCount_.load(std::memory_order_acquire);
    const float gain = masterGain_.load(std::memory_order_relaxed);
    int done = 0;
    while (done < frames) {
        const int n = std::min(frames - done, kMaxBlock);
        std::memset(left_.data(), 0, sizeof(float) * n);
        std::memset(right_.data(), 0, sizeof(float) * n);
        for (int i = 0; i < count; ++i)
            if (AudioSource* s = sources_[i].load(std::memory_order_relaxed)) s->process(left_.data(), right_.data(), n);
        float* o = out + 2 * done;
        for (int i = 0; i < n; ++i) {
            o[2 * i] = std::clamp(left_[i] * gain, -1.0f, 1.0f);
            o[2 * i + 1] = std::clamp(right_[i] * gain, -1.0f, 1.0f);
        }
        done += n;
    }
    if (AudioTap* tap = tap_.load(std::memory_order_acquire)) tap->push(out, frames);
    framesPlayed_.fetch_add(frames, std::memory_order_release);
}

void AudioEngine::render(int64_t frames) {
    while (frames > 0) {
        const int n = static_cast<int>(std::min<int64_t>(frames, kOfflineBlock));
        process(offline_.data(), n);
        if (sink_) sink_(offline_.data(), n);
        frames -= n;
    }
}

bool AudioEngine::startDevice(std::string& error, int bufferFrames) {
    if (device_ && device_->running()) return true;
    device_ = std::make_unique<OutputDevice>();
    if (!device_->open(rate_, bufferFrames, [this](float* out, int n) { process(out, n); }, error)) {
        device_.reset();
        return false;
    }
    return true;
}

void AudioEngine::stopDevice() {
    if (device_) device_->close();
    device_.reset();
}

bool AudioEngine::deviceRunning() const { return device_ && device_->running(); }

}  // namespace velaro::engine
