#pragma once
// WavesReverb: a feedback delay network of eight lines whose loss gives a
// decay of 60 dB in fReverbTime ms at low frequencies, and in
// fReverbTime * fHighFreqRTRatio at the top; the input at fInGain dB, the
// reverberation added at fReverbMix dB.

#include <array>

#include "effect.h"
#include "effect_kit.h"

namespace velaro::dsp {

class WavesReverb : public EffectOf<WavesReverbParams, EffectClass::WavesReverb> {
public:
    static constexpr int kLines = 8;
    explicit WavesReverb(int sampleRate);
    void process(float* lr, int frames) noexcept override;
    void reset() noexcept override;
    int longestGap() const override { return maxLength_ + 1; }

private:
    void changed() noexcept override;
    void design() noexcept;
    double rate_;
    std::array<DelayLine, kLines> lines_;
    std::array<int, kLines> length_{};
    std::array<float, kLines> loss_{}, damp_{}, state_{};
    int maxLength_ = 0;
    DelayLine diffuse_[2];
    int diffuseLength_[2] = {1, 1};
    Glide in_, mix_, time_;
    float ratio_ = 0.001f;
    int countdown_ = 0;
};

}  // namespace velaro::dsp
