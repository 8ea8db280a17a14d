#pragma once
// Echo: a delay line per side with feedback, mixed with the dry sound; with
// lPanDelay each repeat goes over to the other side.

#include "effect.h"
#include "effect_kit.h"

namespace velaro::dsp {

class Echo : public EffectOf<EchoParams, EffectClass::Echo> {
public:
    explicit Echo(int sampleRate);
    void process(float* lr, int frames) noexcept override;
    void reset() noexcept override;
    int longestGap() const override;

private:
    void changed() noexcept override;
    // A new delay fades over from the old read point rather than sliding
    // it, which would sweep the pitch of everything in the line.
    struct Tap {
        float now = 1, next = 1, target = 1;
        float fade = 1;  // 1: settled on `now`
    };
    float read(int ch) noexcept;
    double rate_;
    float fadeStep_;
    DelayLine line_[2];
    Tap tap_[2];
    Glide mix_, feedback_;
};

}  // namespace velaro::dsp
