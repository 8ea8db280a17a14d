#include "gargle.h"

namespace velaro::dsp {

Gargle::Gargle(int sampleRate) : rate_(sampleRate > 0 ? sampleRate : 44100) {}

float Gargle::shape(int waveShape, double phase) {
    if (waveShape == 1) return phase < 0.5 ? 1.0f : 0.0f;
    return static_cast<float>(phase < 0.5 ? 2 * phase : 2 - 2 * phase);
}

void Gargle::process(float* lr, int frames) noexcept {
    // The phase runs on through a change of rate, so a new rate never jumps.
    const double step = p_.lRateHz / rate_;
    for (int i = 0; i < frames; ++i) {
        const float m = shape(p_.lWaveShape, phase_);
        lr[2 * i] *= m;
        lr[2 * i + 1] *= m;
        phase_ += step;
        if (phase_ >= 1.0) phase_ -= 1.0;
    }
}

}  // namespace velaro::dsp
