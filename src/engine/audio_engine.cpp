#include "audio_engine.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "audio_tap.h"
#include "mic_input.h"
#include "output_device.h"

namespace velaro::engine {

AudioEngine::AudioEngine(int sampleRate)
    : rate_(sampleRate), limiter_(sampleRate), left_(kMaxBlock), right_(kMaxBlock), offline_(2 * kOfflineBlock),
      outClock_(sampleRate), mic_(std::make_unique<MicInput>(sampleRate)) {}

AudioEngine::~AudioEngine() { stopDevice(); }

void AudioEngine::addSource(AudioSource* source) {
    int n = sourceCount_.load(std::memory_order_relaxed);
    if (n >= static_cast<int>(sources_.size())) return;
    sources_[n].store(source, std::memory_order_relaxed);
    sourceCount_.store(n + 1, std::memory_order_release);
}

void AudioEngine::process(float* out, int frames) noexcept {
    const int64_t played = framesPlayed_.load(std::memory_order_relaxed);
    outClock_.observe(played);
    const int count = sourceCount_.load(std::memory_order_acquire);
    const float gain = masterGain_.load(std::memory_order_relaxed);
    if (framesPlayed_.load(std::memory_order_relaxed) == 0) gainNow_ = gain;
    // A move of the volume glides over 20 ms instead of stepping.
    const float glide = gain == gainNow_ ? 0.0f : (gain - gainNow_) / (0.02f * static_cast<float>(rate_));
    int done = 0;
    while (done < frames) {
        const int n = std::min(frames - done, kMaxBlock);
        std::memset(left_.data(), 0, sizeof(float) * n);
        std::memset(right_.data(), 0, sizeof(float) * n);
        for (int i = 0; i < count; ++i)
            if (AudioSource* s = sources_[i].load(std::memory_order_relaxed)) s->process(left_.data(), right_.data(), n);
        float* o = out + 2 * done;
        for (int i = 0; i < n; ++i) {
            if (glide != 0.0f && gainNow_ != gain) {
                gainNow_ += glide;
                if ((glide > 0) == (gainNow_ >= gain)) gainNow_ = gain;
            }
            o[2 * i] = left_[i] * gainNow_;
            o[2 * i + 1] = right_[i] * gainNow_;
        }
        done += n;
    }
    // Last on the bus: nothing that leaves the engine can clip or wrap.
    limiter_.process(out, frames);
    float pk = 0;
    for (int i = 0; i < 2 * frames; ++i) pk = std::max(pk, std::fabs(out[i]));
    lastPeak_.store(pk, std::memory_order_relaxed);
    if (AudioTap* tap = tap_.load(std::memory_order_acquire)) tap->push(out, frames);
    BlockListener* r = recorder_.load(std::memory_order_acquire);
    if (r != lastRecorder_) {
        lastRecorder_ = r;
        recorderStart_.store(played, std::memory_order_release);
    }
    if (r) r->block(out, frames);
    framesPlayed_.fetch_add(frames, std::memory_order_release);
}

void AudioEngine::setSink(Sink sink) {
    sink_ = std::move(sink);
    skipFrames_ = limiter_.latencyFrames();
}

void AudioEngine::render(int64_t frames) {
    rendering_.store(true, std::memory_order_relaxed);
    while (frames > 0) {
        const int n = static_cast<int>(std::min<int64_t>(frames, kOfflineBlock));
        process(offline_.data(), n);
        const int skip = static_cast<int>(std::min<int64_t>(skipFrames_, n));
        skipFrames_ -= skip;
        if (sink_ && n > skip) sink_(offline_.data() + 2 * skip, n - skip);
        frames -= n;
    }
    rendering_.store(false, std::memory_order_relaxed);
}

int64_t AudioEngine::renderTail(double maxSeconds, float floorDb, int64_t quietFrames) {
    const float floor = std::pow(10.0f, floorDb / 20.0f);
    const int64_t most = static_cast<int64_t>(maxSeconds * rate_);
    int64_t done = 0, quiet = 0;
    // The limiter's delay still holds the song's last frames: they always come out.
    const int64_t held = limiter_.latencyFrames();
    while (done < most) {
        render(kOfflineBlock);
        done += kOfflineBlock;
        quiet = lastPeak() < floor ? quiet + kOfflineBlock : 0;
        if (done >= held && quiet > 0 && quiet >= quietFrames) break;
    }
    return done;
}

void AudioEngine::setMicLevel(int level) { mic_->setLevel(level); }
void AudioEngine::setMicMute(bool on) { mic_->setMute(on); }
void AudioEngine::setInputDevice(const std::string& name) { mic_->setDeviceName(name); }
void AudioEngine::setInputLatencyMs(int ms) { mic_->setLatencyMs(ms); }

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
