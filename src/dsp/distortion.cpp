#include "distortion.h"

namespace velaro::dsp {

namespace {
// Filters follow their gliding settings every this many frames.
constexpr int kDesignEvery = 32;
}  // namespace

Distortion::Distortion(int sampleRate) : rate_(sampleRate > 0 ? sampleRate : 44100) {
    for (Glide* g : {&gain_, &edge_, &center_, &band_, &cutoff_}) g->setRate(static_cast<int>(rate_));
    set(DistortionParams{});
    reset();
}

void Distortion::changed() noexcept {
    gain_.set(dbToGain(p_.fGain));
    edge_.set(p_.fEdge / 100);
    center_.set(p_.fPostEQCenterFrequency);
    band_.set(p_.fPostEQBandwidth);
    cutoff_.set(p_.fPreLowpassCutoff);
}

void Distortion::reset() noexcept {
    for (Glide* g : {&gain_, &edge_, &center_, &band_, &cutoff_}) g->jump(g->target());
    for (Biquad* b : {&pre_[0], &pre_[1], &post_[0], &post_[1]}) b->clear();
    design();
}

void Distortion::design() noexcept {
    const double top = 0.45 * rate_;
    const double center = std::min<double>(center_.value(), top);
    for (int ch = 0; ch < 2; ++ch) {
        pre_[ch].lowpass(rate_, std::min<double>(cutoff_.value(), top));
        post_[ch].bandpass(rate_, center, std::max(0.1, center / band_.value()));
    }
}

void Distortion::process(float* lr, int frames) noexcept {
    for (int i = 0; i < frames; ++i) {
        if (--countdown_ <= 0) {
            countdown_ = kDesignEvery;
            bool moving = false;
            for (Glide* g : {&center_, &band_, &cutoff_}) {
                moving = moving || g->moving();
                for (int k = 0; k < kDesignEvery; ++k) g->next();
            }
            if (moving) design();
        }
        const float gain = gain_.next();
        // Edge 0 leaves the curve straight; towards 100 it nears a hard clip.
        const float e = std::min(edge_.next(), 0.99f);
        const float k = 2 * e / (1 - e);
        for (int ch = 0; ch < 2; ++ch) {
            const float x = pre_[ch].process(lr[2 * i + ch]);
            const float bent = (1 + k) * x / (1 + k * std::fabs(x));
            lr[2 * i + ch] = gain * (x + post_[ch].process(bent - x));
        }
    }
}

}  // namespace velaro::dsp
