#include "peak_limiter.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velaro::dsp {

namespace {

// Relative headroom under the ceiling for the gain path (about 0.0001 dB), far more
// than the rounding of the average and of the float product can eat.
constexpr double kMargin = 1e-5;
// Once the release is this close to the held gain it lands on it, so a recovered
// limiter is at exactly 1 and multiplies nothing.
constexpr double kSnap = 1e-5;

float finiteOr0(float x) { return std::isfinite(x) ? x : 0.0f; }

}  // namespace

PeakLimiter::PeakLimiter(int sampleRate, float ceilingDb, float lookaheadMs, float releaseMs) {
    const double rate = std::max(sampleRate, 1);
    const double db = std::isfinite(ceilingDb) ? ceilingDb : -1.0;
    ceiling_ = static_cast<float>(std::pow(10.0, db / 20.0));
    target_ = static_cast<double>(ceiling_) * (1.0 - kMargin);
    // At least one frame, so a gain can always settle before its peak goes out; at most a second.
    const double ahead = std::isfinite(lookaheadMs) ? std::lround(lookaheadMs * rate / 1000.0) : 0;
    latency_ = static_cast<int>(std::clamp(ahead, 1.0, rate));
    window_ = latency_ + 1;
    const double releaseFrames = std::isfinite(releaseMs) ? releaseMs * rate / 1000.0 : 0;
    releaseCoeff_ = releaseFrames > 0 ? std::exp(-1.0 / releaseFrames) : 0.0;

    delay_.resize(2 * static_cast<size_t>(latency_));
    minGain_.resize(window_ + 1);
    minFrame_.resize(window_ + 1);
    box_.resize(window_);
    reset();
}

int PeakLimiter::latencyFrames() const { return latency_; }

void PeakLimiter::reset() noexcept {
    std::fill(delay_.begin(), delay_.end(), 0.0f);
    delayPos_ = 0;
    // Silence needs no reduction, so an empty deque stands for the history.
    minHead_ = minCount_ = 0;
    frame_ = 0;
    envelope_ = 1.0;
    std::fill(box_.begin(), box_.end(), 1.0);
    boxPos_ = 0;
    boxSum_ = window_;
    boxBelowUnity_ = 0;
    lastGain_.store(1.0f, std::memory_order_relaxed);
}

void PeakLimiter::setEnabled(bool on) noexcept { enabled_.store(on, std::memory_order_relaxed); }

float PeakLimiter::gainReductionDb() const {
    const float g = lastGain_.load(std::memory_order_relaxed);
    return g >= 1.0f ? 0.0f : -20.0f * std::log10(std::max(g, std::numeric_limits<float>::denorm_min()));
}

// Takes one new frame and returns the gain for the frame leaving the delay line now.
// Any gain a frame needs enters the sliding minimum as it arrives and stays held for
// window_ frames; every envelope value averaged below was at most that gain, so the
// average is too, on the frame that arrived window_ - 1 = latency_ frames ago.
double PeakLimiter::gainFor(float left, float right) noexcept {
    const double p = std::max(std::fabs(left), std::fabs(right));
    const double need = p > ceiling_ ? target_ / p : 1.0;

    const int cap = window_ + 1;
    const auto wrap = [cap](int i) { return i >= cap ? i - cap : i; };
    if (minCount_ > 0 && minFrame_[minHead_] + window_ <= frame_) {
        minHead_ = wrap(minHead_ + 1);
        --minCount_;
    }
    while (minCount_ > 0 && minGain_[wrap(minHead_ + minCount_ - 1)] >= need) --minCount_;
    const int back = wrap(minHead_ + minCount_);
    minGain_[back] = need;
    minFrame_[back] = frame_++;
    ++minCount_;
    const double held = minGain_[minHead_];

    if (held < envelope_) {
        envelope_ = held;
    } else {
        envelope_ = held - (held - envelope_) * releaseCoeff_;
        if (held - envelope_ < kSnap) envelope_ = held;
    }

    const double old = box_[boxPos_];
    box_[boxPos_] = envelope_;
    boxSum_ += envelope_ - old;
    boxBelowUnity_ += (envelope_ < 1.0) - (old < 1.0);
    if (++boxPos_ == window_) {
        // Re-add from scratch once per lap so a running sum cannot drift over hours.
        boxPos_ = 0;
        boxSum_ = 0;
        for (double v : box_) boxSum_ += v;
    }
    if (boxBelowUnity_ == 0) {
        boxSum_ = window_;
        return 1.0;
    }
    // Rounding of the sum can dip below zero when every gain in the box is tiny.
    return std::clamp(boxSum_ / window_, 0.0, 1.0);
}

void PeakLimiter::process(float* interleaved, int frames) noexcept {
    if (!interleaved || frames <= 0) return;
    const bool enabled = enabled_.load(std::memory_order_relaxed);
    double gain = 1.0;
    for (int i = 0; i < frames; ++i) {
        float* s = interleaved + 2 * static_cast<size_t>(i);
        const float inL = finiteOr0(s[0]), inR = finiteOr0(s[1]);
        // The gain is followed even when off, so switching on mid-song limits at once.
        gain = gainFor(inL, inR);

        float* slot = &delay_[2 * static_cast<size_t>(delayPos_)];
        float outL = slot[0], outR = slot[1];
        slot[0] = inL;
        slot[1] = inR;
        if (++delayPos_ == latency_) delayPos_ = 0;

        // At unity nothing is touched, which keeps quiet audio bit-identical.
        if (enabled && gain < 1.0) {
            // Next to a huge peak the gain is tiny and the average's rounding is not; the
            // frame's own need then decides.
            const double p = std::max(std::fabs(outL), std::fabs(outR));
            if (p * gain > target_) gain = target_ / p;
            // The clamp is a last guard; the gain already keeps the product under the ceiling.
            outL = std::clamp(static_cast<float>(outL * gain), -ceiling_, ceiling_);
            outR = std::clamp(static_cast<float>(outR * gain), -ceiling_, ceiling_);
        }
        s[0] = outL;
        s[1] = outR;
    }
    lastGain_.store(enabled ? static_cast<float>(gain) : 1.0f, std::memory_order_relaxed);
}

}  // namespace velaro::dsp
