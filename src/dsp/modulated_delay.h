#pragma once
// Chorus and flanger: each channel through a delay line whose length an LFO
// sweeps (sine or triangle at fFrequency), part of the delayed sound fed
// back, mixed with the dry sound. The right channel's LFO runs lPhase ahead.

#include "effect.h"
#include "effect_kit.h"

namespace velaro::dsp {

template <class P, EffectClass C>
class ModulatedDelay : public EffectOf<P, C> {
public:
    // sweepMs: the widest swing of the delay, at fDepth 100.
    ModulatedDelay(int sampleRate, double maxDelayMs, double sweepMs);
    void process(float* lr, int frames) noexcept override;
    void reset() noexcept override;
    int longestGap() const override { return static_cast<int>((maxDelayMs_ + sweepMs_) * rate_ / 1000) + 1; }
    // -1 to 1 at a phase of the period.
    static float wave(int waveform, double phase);

private:
    void changed() noexcept override;
    double rate_, maxDelayMs_, sweepMs_;
    double phase_ = 0;
    DelayLine line_[2];
    Glide mix_, depth_, feedback_, delay_;
};

class Chorus : public ModulatedDelay<ChorusParams, EffectClass::Chorus> {
public:
    explicit Chorus(int sampleRate) : ModulatedDelay(sampleRate, 20, 10) {
        set(ChorusParams{});
        reset();
    }
};

class Flanger : public ModulatedDelay<FlangerParams, EffectClass::Flanger> {
public:
    explicit Flanger(int sampleRate) : ModulatedDelay(sampleRate, 4, 4) {
        set(FlangerParams{});
        reset();
    }
};

}  // namespace velaro::dsp
