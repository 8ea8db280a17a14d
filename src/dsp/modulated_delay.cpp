#include "modulated_delay.h"

namespace velaro::dsp {

template <class P, EffectClass C>
ModulatedDelay<P, C>::ModulatedDelay(int sampleRate, double maxDelayMs, double sweepMs)
    : rate_(sampleRate > 0 ? sampleRate : 44100), maxDelayMs_(maxDelayMs), sweepMs_(sweepMs) {
    for (DelayLine& l : line_) l.allocate(static_cast<int>((maxDelayMs + sweepMs) * rate_ / 1000) + 4);
    for (Glide* g : {&mix_, &depth_, &feedback_, &delay_}) g->setRate(static_cast<int>(rate_));
}

template <class P, EffectClass C>
float ModulatedDelay<P, C>::wave(int waveform, double phase) {
    if (waveform == 1) return lfoSine(phase);
    return static_cast<float>(phase < 0.5 ? 4 * phase - 1 : 3 - 4 * phase);
}

template <class P, EffectClass C>
void ModulatedDelay<P, C>::changed() noexcept {
    const P& p = this->p_;
    mix_.set(p.fWetDryMix / 100);
    depth_.set(p.fDepth / 100);
    feedback_.set(p.fFeedback / 100);
    delay_.set(p.fDelay);
}

template <class P, EffectClass C>
void ModulatedDelay<P, C>::reset() noexcept {
    for (DelayLine& l : line_) l.clear();
    for (Glide* g : {&mix_, &depth_, &feedback_, &delay_}) g->jump(g->target());
    phase_ = 0;
}

template <class P, EffectClass C>
void ModulatedDelay<P, C>::process(float* lr, int frames) noexcept {
    const P& p = this->p_;
    const double step = p.fFrequency / rate_;
    const double offset = (p.lPhase - 2) * 0.25;  // quarter turns, -180 to 180 degrees
    const float perMs = static_cast<float>(rate_ / 1000);
    for (int i = 0; i < frames; ++i) {
        const float mix = mix_.next(), depth = depth_.next(), fb = feedback_.next(), base = delay_.next();
        double other = phase_ + offset;
        other -= std::floor(other);
        const float lfo[2] = {wave(p.lWaveform, phase_), wave(p.lWaveform, other)};
        for (int ch = 0; ch < 2; ++ch) {
            const float ms = base + depth * static_cast<float>(sweepMs_) * 0.5f * (1 + lfo[ch]);
            const float wet = line_[ch].read(ms * perMs);
            const float x = lr[2 * i + ch];
            line_[ch].push(x + fb * wet);
            lr[2 * i + ch] = x * (1 - mix) + wet * mix;
        }
        phase_ += step;
        if (phase_ >= 1.0) phase_ -= 1.0;
    }
}

template class ModulatedDelay<ChorusParams, EffectClass::Chorus>;
template class ModulatedDelay<FlangerParams, EffectClass::Flanger>;

}  // namespace velaro::dsp
