#include "waves_reverb.h"

namespace velaro::dsp {

namespace {

// Line lengths in ms: mutually prime-ish, so the echoes never line up.
constexpr double kLengthMs[WavesReverb::kLines] = {29.7, 37.1, 41.1, 43.7, 53.3, 59.9, 67.7, 73.1};
// Short allpass diffusers before the network, in ms.
constexpr double kDiffuseMs[2] = {4.7, 6.1};
constexpr float kDiffuse = 0.6f;
// The network's output level against the dry sound at a mix of 0 dB.
constexpr float kWetLevel = 0.3f;
constexpr int kDesignEvery = 64;

// In-place Hadamard mix of eight values, energy kept.
void hadamard(std::array<float, WavesReverb::kLines>& v) {
    for (int len = 1; len < WavesReverb::kLines; len <<= 1)
        for (int i = 0; i < WavesReverb::kLines; i += len << 1)
            for (int j = i; j < i + len; ++j) {
                const float a = v[j], b = v[j + len];
                v[j] = a + b;
                v[j + len] = a - b;
            }
    for (float& x : v) x *= 0.35355339f;  // 1 / sqrt(8)
}

}  // namespace

WavesReverb::WavesReverb(int sampleRate) : rate_(sampleRate > 0 ? sampleRate : 44100) {
    for (int i = 0; i < kLines; ++i) {
        length_[i] = std::max(2, static_cast<int>(kLengthMs[i] * rate_ / 1000));
        lines_[i].allocate(length_[i] + 2);
        maxLength_ = std::max(maxLength_, length_[i]);
    }
    for (int ch = 0; ch < 2; ++ch) {
        diffuseLength_[ch] = std::max(1, static_cast<int>(kDiffuseMs[ch] * rate_ / 1000));
        diffuse_[ch].allocate(diffuseLength_[ch] + 4);
    }
    in_.setRate(static_cast<int>(rate_));
    mix_.setRate(static_cast<int>(rate_));
    time_.setRate(static_cast<int>(rate_), 50);
    set(WavesReverbParams{});
    reset();
}

void WavesReverb::changed() noexcept {
    in_.set(dbToGain(p_.fInGain));
    mix_.set(dbToGain(p_.fReverbMix));
    time_.set(p_.fReverbTime);
    ratio_ = p_.fHighFreqRTRatio;
}

void WavesReverb::reset() noexcept {
    for (DelayLine& l : lines_) l.clear();
    for (DelayLine& d : diffuse_) d.clear();
    state_.fill(0);
    for (Glide* g : {&in_, &mix_, &time_}) g->jump(g->target());
    design();
}

void WavesReverb::design() noexcept {
    const double seconds = std::max(1e-6, time_.value() / 1000.0);
    for (int i = 0; i < kLines; ++i) {
        // 60 dB over the reverb time: each pass through a line loses its share.
        const double low = std::pow(10.0, -3.0 * length_[i] / (seconds * rate_));
        const double high = std::pow(10.0, -3.0 * length_[i] / (seconds * ratio_ * rate_));
        loss_[i] = static_cast<float>(low);
        // A one-pole low-pass whose top-end gain, against its unity at the
        // bottom, is high / low; held back from its limit so the sound keeps a body.
        const double r = low > 0 ? high / low : 0;
        damp_[i] = static_cast<float>(std::min(0.7, (1 - r) / (1 + r)));
    }
}

void WavesReverb::process(float* lr, int frames) noexcept {
    std::array<float, kLines> v{};
    for (int i = 0; i < frames; ++i) {
        if (--countdown_ <= 0) {
            countdown_ = kDesignEvery;
            const bool moving = time_.moving();
            for (int k = 0; k < kDesignEvery; ++k) time_.next();
            if (moving) design();
        }
        const float gain = in_.next(), mix = mix_.next();
        float x[2] = {lr[2 * i] * gain, lr[2 * i + 1] * gain};
        float d[2];
        for (int ch = 0; ch < 2; ++ch) {
            // Schroeder allpass: smears each click into a short burst.
            const float delayed = diffuse_[ch].at(diffuseLength_[ch]);
            const float w = x[ch] + kDiffuse * delayed;
            diffuse_[ch].push(w);
            d[ch] = delayed - kDiffuse * w;
        }
        float wet[2] = {0, 0};
        for (int l = 0; l < kLines; ++l) {
            const float out = lines_[l].at(length_[l]);
            state_[l] = out * loss_[l] * (1 - damp_[l]) + damp_[l] * state_[l];
            v[l] = state_[l];
            wet[l & 1] += out;
        }
        hadamard(v);
        for (int l = 0; l < kLines; ++l) lines_[l].push(v[l] + d[l & 1]);
        lr[2 * i] = x[0] + mix * kWetLevel * wet[0];
        lr[2 * i + 1] = x[1] + mix * kWetLevel * wet[1];
    }
}

}  // namespace velaro::dsp
