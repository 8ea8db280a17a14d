#pragma once
// The song's buffer with real effects: the chain the logic sets is built
// here, on the logic thread, and handed to the song source through its
// command queue; each record written goes the same way, so a panel's slider
// changes the running sound.

#include <vector>

#include "core/platform/song_effects.h"
#include "dsp/effect_params.h"

namespace velaro::engine {

class SongPlayer;

class SongEffectsEngine : public platform::EffectBook {
public:
    SongEffectsEngine(SongPlayer& player, int sampleRate);

    // The command line's chain: these effects in this order with these
    // records. Thread: logic.
    void setChain(const std::vector<dsp::EffectParams>& chain);
    // The longest silence the chain in force can leave before a sound it
    // still owes, in frames. Thread: logic.
    int longestGap() const { return gap_; }

    static dsp::EffectParams toDsp(const platform::EffectRecord& r);
    static platform::EffectRecord fromDsp(const dsp::EffectParams& p);

protected:
    void chainChanged() override;
    void recordChanged(int slot) override;

private:
    SongPlayer& player_;
    int rate_;
    int gap_ = 0;
};

}  // namespace velaro::engine
