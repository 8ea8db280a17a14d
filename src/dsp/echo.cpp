#include "echo.h"

namespace velaro::dsp {

Echo::Echo(int sampleRate) : rate_(sampleRate > 0 ? sampleRate : 44100) {
    for (DelayLine& l : line_) l.allocate(static_cast<int>(2.0 * rate_) + 4);
    mix_.setRate(static_cast<int>(rate_));
    feedback_.setRate(static_cast<int>(rate_));
    fadeStep_ = static_cast<float>(1.0 / (0.03 * rate_));
    set(EchoParams{});
    reset();
}

void Echo::changed() noexcept {
    mix_.set(p_.fWetDryMix / 100);
    feedback_.set(p_.fFeedback / 100);
    tap_[0].target = static_cast<float>(p_.fLeftDelay * rate_ / 1000);
    tap_[1].target = static_cast<float>(p_.fRightDelay * rate_ / 1000);
}

float Echo::read(int ch) noexcept {
    Tap& t = tap_[ch];
    if (t.fade >= 1 && t.target != t.now) {
        t.next = t.target;
        t.fade = 0;
    }
    if (t.fade >= 1) return line_[ch].read(t.now);
    const float v = line_[ch].read(t.now) * (1 - t.fade) + line_[ch].read(t.next) * t.fade;
    t.fade += fadeStep_;
    if (t.fade >= 1) {
        t.fade = 1;
        t.now = t.next;
    }
    return v;
}

void Echo::reset() noexcept {
    for (DelayLine& l : line_) l.clear();
    for (Glide* g : {&mix_, &feedback_}) g->jump(g->target());
    for (Tap& t : tap_) t = Tap{t.target, t.target, t.target, 1};
}

int Echo::longestGap() const {
    return static_cast<int>(std::max(p_.fLeftDelay, p_.fRightDelay) * rate_ / 1000) + 1;
}

void Echo::process(float* lr, int frames) noexcept {
    const bool swap = p_.lPanDelay != 0;
    for (int i = 0; i < frames; ++i) {
        const float mix = mix_.next(), fb = feedback_.next();
        const float tapL = read(0), tapR = read(1);
        const float xL = lr[2 * i], xR = lr[2 * i + 1];
        line_[0].push(xL + fb * (swap ? tapR : tapL));
        line_[1].push(xR + fb * (swap ? tapL : tapR));
        lr[2 * i] = xL * (1 - mix) + tapL * mix;
        lr[2 * i + 1] = xR * (1 - mix) + tapR * mix;
    }
}

}  // namespace velaro::dsp
