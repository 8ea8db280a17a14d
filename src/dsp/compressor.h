#pragma once
// Compressor: above fThreshold dB the level rises only 1/fRatio as fast;
// the reduction comes in over fAttack ms and goes over fRelease ms; the
// sound is heard fPredelay ms after the level is read, so a sudden peak is
// caught in time; fGain dB is added at the end.

#include "effect.h"
#include "effect_kit.h"

namespace velaro::dsp {

class Compressor : public EffectOf<CompressorParams, EffectClass::Compressor> {
public:
    explicit Compressor(int sampleRate);
    void process(float* lr, int frames) noexcept override;
    void reset() noexcept override;
    int longestGap() const override { return static_cast<int>(0.004 * rate_) + 1; }
    // The reduction in force, in dB (>= 0), for meters and tests.
    float reductionDb() const { return static_cast<float>(smooth_); }

private:
    void changed() noexcept override;
    double rate_;
    DelayLine line_[2];
    Glide gain_, predelay_;
    double attack_ = 0, release_ = 0;
    double peak_ = 0, smooth_ = 0;  // dB of reduction: held peak, then attack-smoothed
};

}  // namespace velaro::dsp
