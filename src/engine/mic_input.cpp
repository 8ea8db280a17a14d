#include "mic_input.h"

#include "audio_thread_guard.h"

#include <rtaudio/RtAudio.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "frame_ring.h"

namespace velaro::engine {

MicInput::MicInput(int engineRate) : rate_(engineRate), clock_(engineRate) {}

MicInput::~MicInput() { close(); }

void MicInput::setLevel(int level) { level_.store(std::clamp(level, 0, 100), std::memory_order_relaxed); }

int MicInput::onInput(void*, void* in, unsigned int frames, double, unsigned int, void* self) {
    auto* mic = static_cast<MicInput*>(self);
    AudioCallbackScope scope;
    const auto* src = static_cast<const float*>(in);
    const float g = mic->gain();
    float pk = 0;
    unsigned int done = 0;
    const int64_t before = mic->captured_.load(std::memory_order_relaxed);
    while (src && done < frames) {
        const unsigned int n = std::min(frames - done, 4096u);
        const int ch = mic->channels_;
        uint64_t head = mic->meterHead_.load(std::memory_order_relaxed);
        for (unsigned int i = 0; i < n; ++i, ++head) {
            const float* f = src + static_cast<size_t>(ch) * (done + i);
            const float l = f[0], r = f[ch - 1];
            mic->scratch_[2 * i] = l * g;
            mic->scratch_[2 * i + 1] = r * g;
            pk = std::max({pk, std::fabs(l), std::fabs(r)});
            const auto l16 = static_cast<uint16_t>(static_cast<int16_t>(std::clamp(l, -1.0f, 1.0f) * 32767));
            const auto r16 = static_cast<uint16_t>(static_cast<int16_t>(std::clamp(r, -1.0f, 1.0f) * 32767));
            mic->meter_[head % kMeterFrames].store(l16 | (uint32_t{r16} << 16), std::memory_order_relaxed);
        }
        mic->meterHead_.store(head, std::memory_order_release);
        FrameRing* ring = mic->consumer_.load(std::memory_order_acquire);
        if (ring != mic->lastConsumer_) {
            mic->lastConsumer_ = ring;
            mic->consumerStart_.store(before + done, std::memory_order_release);
        }
        if (ring) ring->push(mic->scratch_, static_cast<int>(n));
        done += n;
    }
    mic->peak_.store(pk, std::memory_order_relaxed);
    mic->captured_.fetch_add(frames, std::memory_order_relaxed);
    // The block's last frame has just arrived.
    mic->clock_.observe(before + frames);
    return 0;
}

size_t MicInput::meterFrames(uint64_t& from, int16_t* lr, size_t max) const {
    const uint64_t head = meterHead_.load(std::memory_order_acquire);
    if (head - from > kMeterFrames) from = head - kMeterFrames;
    size_t n = 0;
    for (; from < head && n < max; ++from, ++n) {
        const uint32_t v = meter_[from % kMeterFrames].load(std::memory_order_relaxed);
        lr[2 * n] = static_cast<int16_t>(v & 0xFFFF);
        lr[2 * n + 1] = static_cast<int16_t>(v >> 16);
    }
    return n;
}

bool MicInput::acquire(std::string& error) {
    if (users_ == 0 && !open(error)) return false;
    ++users_;
    return true;
}

void MicInput::release() {
    if (users_ > 0 && --users_ == 0) close();
}

namespace {
const RtAudio::Api kApis[] = {RtAudio::LINUX_PULSE, RtAudio::LINUX_ALSA, RtAudio::UNIX_JACK};

bool compiled(RtAudio::Api api) {
    std::vector<RtAudio::Api> apis;
    RtAudio::getCompiledApi(apis);
    return std::find(apis.begin(), apis.end(), api) != apis.end();
}
}  // namespace

std::vector<std::string> MicInput::deviceNames() {
    std::vector<std::string> names;
    for (RtAudio::Api api : kApis) {
        if (!compiled(api)) continue;
        try {
            RtAudio rt(api);
            rt.showWarnings(false);
            for (unsigned int i = 0; i < rt.getDeviceCount(); ++i) {
                const RtAudio::DeviceInfo info = rt.getDeviceInfo(i);
                if (info.probed && info.inputChannels > 0 &&
                    std::find(names.begin(), names.end(), info.name) == names.end())
                    names.push_back(info.name);
            }
        } catch (const std::exception&) {
        }
    }
    return names;
}

bool MicInput::open(std::string& error) {
    error.clear();
    for (RtAudio::Api api : kApis) {
        if (!compiled(api)) continue;
        try {
            auto rt = std::make_unique<RtAudio>(api);
            rt->showWarnings(false);
            const unsigned int count = rt->getDeviceCount();
            if (count == 0) continue;
            RtAudio::StreamParameters params;
            params.deviceId = rt->getDefaultInputDevice();
            if (!deviceName_.empty()) {
                bool found = false;
                for (unsigned int i = 0; i < count && !found; ++i) {
                    RtAudio::DeviceInfo info = rt->getDeviceInfo(i);
                    if (info.inputChannels > 0 && info.name == deviceName_) {
                        params.deviceId = i;
                        found = true;
                    }
                }
                if (!found) continue;
            }
            // A mono input is taken as it is and heard on both sides.
            const unsigned int has = rt->getDeviceInfo(params.deviceId).inputChannels;
            params.nChannels = has == 1 ? 1 : 2;
            channels_ = static_cast<int>(params.nChannels);
            RtAudio::StreamOptions options;
            options.flags = RTAUDIO_MINIMIZE_LATENCY;
            options.streamName = "VELARO DECK microphone";
            unsigned int frames = 256;
            rt->openStream(nullptr, &params, RTAUDIO_FLOAT32, static_cast<unsigned int>(rate_), &frames,
                           reinterpret_cast<RtAudioCallback>(&MicInput::onInput), this, &options);
            // Counted from the stream's first frame, which its clock is measured by.
            captured_.store(0, std::memory_order_relaxed);
            clock_.reset();
            rt->startStream();
            rt_ = std::move(rt);
            api_ = RtAudio::getApiName(api);
            return true;
        } catch (const std::exception& e) {
            // The first failure says most: later systems rarely know the device at all.
            if (error.empty()) error = std::string(RtAudio::getApiDisplayName(api)) + ": " + e.what();
        }
    }
    if (error.empty())
        error = deviceName_.empty() ? "no input device" : "no input device named \"" + deviceName_ + "\"";
    return false;
}

void MicInput::close() {
    if (!rt_) return;
    try {
        if (rt_->isStreamRunning()) rt_->stopStream();
        if (rt_->isStreamOpen()) rt_->closeStream();
    } catch (const std::exception&) {
    }
    rt_.reset();
}

}  // namespace velaro::engine
