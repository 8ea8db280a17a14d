#include "engine_platform.h"

namespace velaro::engine {

EnginePlatform::EnginePlatform(int sampleRate)
    : audio_(sampleRate), performance_(audio_), songEffects_(performance_.player(), sampleRate) {
    platform::Platform& p = inert_.get();
    p.performance = &performance_;
    p.processes = &processes_;
    p.streams = &streams_;
    p.mp3 = &mp3_;
    p.normaliser = &normaliser_;
    p.wave = &wave_;
    p.meter = &meter_;
    p.songEffects = &songEffects_;
    p.cd = &cd_;
    p.wma = &wma_;
    if (collation_.ok()) p.collation = &collation_;
    p.media = &media_;
    std::string why;
    mixer_ = PulseMixer::connect(audio_, why);
    if (mixer_) p.mixer = mixer_.get();
}

}  // namespace velaro::engine
