#include "compressor.h"

namespace velaro::dsp {

namespace {
constexpr double kDbPerLog2 = 6.020599913279624;  // 20 log10(2)
}

Compressor::Compressor(int sampleRate) : rate_(sampleRate > 0 ? sampleRate : 44100) {
    for (DelayLine& l : line_) l.allocate(static_cast<int>(0.004 * rate_) + 4);
    gain_.setRate(static_cast<int>(rate_));
    predelay_.setRate(static_cast<int>(rate_), 50);
    set(CompressorParams{});
    reset();
}

void Compressor::changed() noexcept {
    gain_.set(dbToGain(p_.fGain));
    predelay_.set(static_cast<float>(p_.fPredelay * rate_ / 1000));
    attack_ = std::exp(-1000.0 / (p_.fAttack * rate_));
    release_ = std::exp(-1000.0 / (p_.fRelease * rate_));
}

void Compressor::reset() noexcept {
    for (DelayLine& l : line_) l.clear();
    gain_.jump(gain_.target());
    predelay_.jump(predelay_.target());
    peak_ = smooth_ = 0;
}

void Compressor::process(float* lr, int frames) noexcept {
    const double threshold = p_.fThreshold, slope = 1.0 - 1.0 / p_.fRatio;
    const float thresholdLin = dbToGain(threshold);
    for (int i = 0; i < frames; ++i) {
        const float xL = lr[2 * i], xR = lr[2 * i + 1];
        // Below the threshold there is nothing to work out: no logarithm.
        const float level = std::max(std::fabs(xL), std::fabs(xR));
        const double want = level > thresholdLin ? (kDbPerLog2 * std::log2(level) - threshold) * slope : 0.0;
        // The wanted reduction's peaks are held and let go at the release
        // rate; the attack then smooths the way in.
        peak_ = std::max(want, release_ * peak_ + (1 - release_) * want);
        smooth_ = attack_ * smooth_ + (1 - attack_) * peak_;
        const float g = gain_.next() * (smooth_ > 1e-6 ? std::exp2(static_cast<float>(-smooth_ / kDbPerLog2)) : 1.0f);
        // At least one frame late, even with no predelay: one line serves all settings.
        const float d = predelay_.next();
        const float outL = line_[0].read(d), outR = line_[1].read(d);
        line_[0].push(xL);
        line_[1].push(xR);
        lr[2 * i] = outL * g;
        lr[2 * i + 1] = outR * g;
    }
}

}  // namespace velaro::dsp
