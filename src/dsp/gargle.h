#pragma once
// Gargle: the sound's amplitude swung by a triangle or a square at lRateHz.

#include "effect.h"

namespace velaro::dsp {

class Gargle : public EffectOf<GargleParams, EffectClass::Gargle> {
public:
    explicit Gargle(int sampleRate);
    void process(float* lr, int frames) noexcept override;
    void reset() noexcept override { phase_ = 0; }
    // The modulation at a phase of its period, 0 to 1: 0 to 1 and back for
    // the triangle, 1 then 0 for the square.
    static float shape(int waveShape, double phase);

private:
    void changed() noexcept override {}
    double rate_;
    double phase_ = 0;
};

}  // namespace velaro::dsp
