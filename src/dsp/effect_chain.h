#pragma once
// The song's effect chain: effects in order on interleaved stereo float.
// Built on the logic thread (it allocates); processed on the audio thread.

#include <memory>
#include <vector>

#include "effect.h"

namespace velaro::dsp {

// A new effect of the class with its default record. Thread: logic.
std::unique_ptr<Effect> makeEffect(EffectClass c, int sampleRate);

class EffectChain {
public:
    explicit EffectChain(int sampleRate) : rate_(sampleRate) {}
    // Thread: logic.
    Effect& add(EffectClass c);
    int size() const { return static_cast<int>(effects_.size()); }
    Effect& at(int i) { return *effects_[i]; }
    const Effect& at(int i) const { return *effects_[i]; }
    int sampleRate() const { return rate_; }

    // In place; a sample that is not a number comes in as silence, so no
    // feedback loop can be poisoned for ever. Thread: audio.
    void process(float* lr, int frames) noexcept;
    void reset() noexcept;
    // The longest silence any effect can leave before a sound it still owes.
    int longestGap() const;
    // True until the first frame is processed: a record set now needs no glide.
    bool fresh() const { return fresh_; }

private:
    int rate_;
    bool fresh_ = true;
    std::vector<std::unique_ptr<Effect>> effects_;
};

}  // namespace velaro::dsp
