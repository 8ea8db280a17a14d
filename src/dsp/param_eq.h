#pragma once
// ParamEQ: one peaking band, fGain dB at fCenter Hz, fBandwidth semitones wide.

#include "effect.h"
#include "effect_kit.h"

namespace velaro::dsp {

class ParamEq : public EffectOf<ParamEqParams, EffectClass::ParamEq> {
public:
    explicit ParamEq(int sampleRate);
    void process(float* lr, int frames) noexcept override;
    void reset() noexcept override;

private:
    void changed() noexcept override;
    void design() noexcept;
    double rate_;
    Biquad band_[2];
    Glide center_, width_, gain_;
    int countdown_ = 0;
};

}  // namespace velaro::dsp
