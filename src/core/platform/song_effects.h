#pragma once
// The song's effect buffer: the eight effect kinds on the song's sound.

#include <string>
#include <vector>

namespace velaro::platform {

enum class EffectKind { Chorus, Compressor, Distortion, Echo, Flanger, Gargle, ParamEq, Reverb };

struct EffectParams {
    std::vector<float> values;  // in the order the effect's panel lists them
};

class SongEffects {
public:
    virtual ~SongEffects() = default;
    // Puts the chain on the song, replacing the one before.
    virtual bool SetChain(const std::vector<EffectKind>& chain) = 0;
    virtual EffectParams GetParams(int slot) = 0;
    virtual void SetParams(int slot, const EffectParams& p) = 0;
};

}  // namespace velaro::platform
