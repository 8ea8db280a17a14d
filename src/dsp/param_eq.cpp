#include "param_eq.h"

namespace velaro::dsp {

namespace {
constexpr int kDesignEvery = 32;
}

ParamEq::ParamEq(int sampleRate) : rate_(sampleRate > 0 ? sampleRate : 44100) {
    for (Glide* g : {&center_, &width_, &gain_}) g->setRate(static_cast<int>(rate_));
    set(ParamEqParams{});
    reset();
}

void ParamEq::changed() noexcept {
    // The centre glides in octaves, so a sweep sounds even from bass to treble.
    center_.set(static_cast<float>(std::log2(p_.fCenter)));
    width_.set(p_.fBandwidth);
    gain_.set(p_.fGain);
}

void ParamEq::reset() noexcept {
    for (Glide* g : {&center_, &width_, &gain_}) g->jump(g->target());
    for (Biquad& b : band_) b.clear();
    design();
}

void ParamEq::design() noexcept {
    // A centre at or above half the rate has no meaning: it stays below.
    const double hz = std::min(std::exp2(static_cast<double>(center_.value())), 0.45 * rate_);
    for (Biquad& b : band_) b.peaking(rate_, hz, width_.value() / 12.0, gain_.value());
}

void ParamEq::process(float* lr, int frames) noexcept {
    for (int i = 0; i < frames; ++i) {
        if (--countdown_ <= 0) {
            countdown_ = kDesignEvery;
            bool moving = false;
            for (Glide* g : {&center_, &width_, &gain_}) {
                moving = moving || g->moving();
                for (int k = 0; k < kDesignEvery; ++k) g->next();
            }
            if (moving) design();
        }
        lr[2 * i] = band_[0].process(lr[2 * i]);
        lr[2 * i + 1] = band_[1].process(lr[2 * i + 1]);
    }
}

}  // namespace velaro::dsp
