#pragma once
// A song effect: a streaming processor of interleaved stereo float at any
// rate, with its parameter record. process() and setParams() run on the audio
// thread: they never allocate, lock, wait or throw.

#include "effect_params.h"

namespace velaro::dsp {

class Effect {
public:
    virtual ~Effect() = default;
    virtual EffectClass kind() const = 0;
    // A record of another class is ignored; fields out of range are clamped.
    virtual void setParams(const EffectParams& p) noexcept = 0;
    virtual EffectParams params() const = 0;
    // In place, any frame count >= 0.
    virtual void process(float* lr, int frames) noexcept = 0;
    virtual void reset() noexcept = 0;
    // The longest silence, in frames, the effect can leave between its input
    // and a sound it still owes (an echo's delay): how long a tail must stay
    // quiet before it is over.
    virtual int longestGap() const { return 0; }
};

template <class P, EffectClass C>
class EffectOf : public Effect {
public:
    EffectClass kind() const override { return C; }
    void setParams(const EffectParams& p) noexcept override {
        if (const P* rec = std::get_if<P>(&p)) set(*rec);
    }
    EffectParams params() const override { return p_; }
    const P& record() const { return p_; }
    void set(const P& rec) noexcept {
        EffectParams v = rec;
        clampToRange(v);
        p_ = *std::get_if<P>(&v);
        changed();
    }

protected:
    // p_ holds a new record: the effect starts gliding to it.
    virtual void changed() noexcept = 0;
    P p_{};
};

}  // namespace velaro::dsp
