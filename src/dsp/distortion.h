#pragma once
// Distortion: the sound low-passed at fPreLowpassCutoff, bent by a curve
// whose hardness is fEdge; the harmonics it adds pass a band around
// fPostEQCenterFrequency, fPostEQBandwidth wide; the whole at fGain dB.

#include "effect.h"
#include "effect_kit.h"

namespace velaro::dsp {

class Distortion : public EffectOf<DistortionParams, EffectClass::Distortion> {
public:
    explicit Distortion(int sampleRate);
    void process(float* lr, int frames) noexcept override;
    void reset() noexcept override;

private:
    void changed() noexcept override;
    void design() noexcept;
    double rate_;
    Biquad pre_[2], post_[2];
    Glide gain_, edge_, center_, band_, cutoff_;
    int countdown_ = 0;
};

}  // namespace velaro::dsp
