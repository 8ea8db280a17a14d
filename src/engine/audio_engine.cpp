#include "audio_engine.h"

#include <algorithm>
#include <chrono>
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

AudioSource* AudioEngine::adoptSource(std::unique_ptr<AudioSource> source) {
    AudioSource* s = source.get();
    owned_.push_back(std::move(source));
    addSource(s);
    return s;
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

namespace {
int64_t steadyMs() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}
int64_t steadyNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}
// How often a lost device is looked for again.
constexpr int64_t kRetryMs = 1500;
}  // namespace

void AudioEngine::deviceBlock(float* out, int frames, bool underflow, int64_t coverNs) noexcept {
    const int64_t before = framesPlayed_.load(std::memory_order_relaxed);
    process(out, frames);
    // A block asked for later than the buffered audio could cover: the
    // device ran dry, whether or not its backend says so.
    const int64_t edge = steadyNs() - before * 1'000'000'000 / rate_;
    // The clock's first two windows still hold the stream's start-up (a
    // full buffer, then a pause until the server plays): lateness counts after them.
    const int64_t late = outClock_.observations() > 128 ? edge - outClock_.anchorNs() : 0;
    underrunCounter_.block(underflow, late, coverNs);
    underruns_.store(underrunCounter_.count(), std::memory_order_relaxed);
}

bool AudioEngine::openDevice(std::string& error) {
    auto dev = std::make_unique<OutputDevice>();
    outClock_.reset();
    if (!dev->open(rate_, bufferFrames_, [this](float* out, int n, const OutputDevice::BlockInfo& info) {
                       deviceBlock(out, n, info.underflow, info.coverNs);
                   },
                   error))
        return false;
    api_ = dev->apiName();
    device_ = std::move(dev);
    return true;
}

bool AudioEngine::startDevice(std::string& error, int bufferFrames) {
    if (deviceRunning()) return true;
    stopDevice();
    bufferFrames_ = bufferFrames;
    {
        std::lock_guard<std::mutex> lock(deviceMutex_);
        if (!openDevice(error)) return false;
    }
    watch(false);
    return true;
}

void AudioEngine::startDeviceOrSilence(int bufferFrames) {
    std::string error;
    if (!startDevice(error, bufferFrames)) watch(true);
}

void AudioEngine::watch(bool silent) {
    watchStop_ = false;
    silent_.store(silent, std::memory_order_release);
    silentBlock_.assign(2 * kMaxBlock, 0.0f);
    // One thread watches the device and, while there is none, renders in
    // its place: the two never render at once, since it closes the old
    // device before it renders and renders no more before it opens a new one.
    watch_ = std::thread([this] {
        DeviceHealth health;
        SilentPace pace{rate_, steadyMs(), framesPlayed()};
        health.restart(pace.startMs, pace.startFrames);
        int64_t nextTry = steadyMs() + kRetryMs;
        std::unique_lock<std::mutex> lock(watchMutex_);
        while (!watchStop_) {
            watchWake_.wait_for(lock, std::chrono::milliseconds(silent_.load() ? 10 : 50));
            if (watchStop_) break;
            const int64_t now = steadyMs();
            if (!silent_.load(std::memory_order_relaxed)) {
                bool lost;
                {
                    std::lock_guard<std::mutex> dl(deviceMutex_);
                    lost = health.lost(now, framesPlayed(), device_ && device_->running(),
                                       device_ && device_->failed());
                    if (lost && device_) {
                        device_->close();
                        device_.reset();
                    }
                }
                if (!lost) continue;
                pace = SilentPace{rate_, steadyMs(), framesPlayed()};
                silent_.store(true, std::memory_order_release);
                fallbacks_.fetch_add(1, std::memory_order_relaxed);
                nextTry = pace.startMs + kRetryMs;
                if (notice_) notice_(true, "the sound device was lost; playing silently");
                continue;
            }
            int64_t owed = pace.due(steadyMs()) - framesPlayed();
            while (owed > 0) {
                const int n = static_cast<int>(std::min<int64_t>(owed, kMaxBlock));
                process(silentBlock_.data(), n);
                owed -= n;
            }
            if (steadyMs() < nextTry) continue;
            std::string error, api;
            bool opened;
            {
                std::lock_guard<std::mutex> dl(deviceMutex_);
                opened = openDevice(error);
                api = api_;
            }
            if (!opened) {
                nextTry = steadyMs() + kRetryMs;
                continue;
            }
            silent_.store(false, std::memory_order_release);
            health.restart(steadyMs(), framesPlayed());
            if (notice_) notice_(false, "the sound device is back (" + api + "); playing through it");
        }
    });
}

void AudioEngine::stopWatch() {
    if (!watch_.joinable()) return;
    {
        std::lock_guard<std::mutex> lock(watchMutex_);
        watchStop_ = true;
    }
    watchWake_.notify_all();
    watch_.join();
    silent_.store(false, std::memory_order_release);
}

void AudioEngine::stopDevice() {
    stopWatch();
    std::lock_guard<std::mutex> lock(deviceMutex_);
    if (device_) device_->close();
    device_.reset();
}

bool AudioEngine::deviceRunning() const {
    std::lock_guard<std::mutex> lock(deviceMutex_);
    return device_ && device_->running();
}

std::string AudioEngine::deviceApi() const {
    std::lock_guard<std::mutex> lock(deviceMutex_);
    return api_;
}

}  // namespace velaro::engine
