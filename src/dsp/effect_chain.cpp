#include "effect_chain.h"

#include <algorithm>
#include <cmath>

#include "compressor.h"
#include "distortion.h"
#include "echo.h"
#include "gargle.h"
#include "modulated_delay.h"
#include "param_eq.h"
#include "waves_reverb.h"

namespace velaro::dsp {

std::unique_ptr<Effect> makeEffect(EffectClass c, int sampleRate) {
    switch (c) {
        case EffectClass::Gargle: return std::make_unique<Gargle>(sampleRate);
        case EffectClass::Chorus: return std::make_unique<Chorus>(sampleRate);
        case EffectClass::Flanger: return std::make_unique<Flanger>(sampleRate);
        case EffectClass::Echo: return std::make_unique<Echo>(sampleRate);
        case EffectClass::Distortion: return std::make_unique<Distortion>(sampleRate);
        case EffectClass::Compressor: return std::make_unique<Compressor>(sampleRate);
        case EffectClass::ParamEq: return std::make_unique<ParamEq>(sampleRate);
        case EffectClass::WavesReverb: return std::make_unique<WavesReverb>(sampleRate);
    }
    return nullptr;
}

Effect& EffectChain::add(EffectClass c) {
    effects_.push_back(makeEffect(c, rate_));
    return *effects_.back();
}

void EffectChain::process(float* lr, int frames) noexcept {
    if (effects_.empty()) return;
    fresh_ = false;
    for (int i = 0; i < 2 * frames; ++i)
        if (!std::isfinite(lr[i])) lr[i] = 0.0f;
    for (auto& e : effects_) e->process(lr, frames);
}

void EffectChain::reset() noexcept {
    for (auto& e : effects_) e->reset();
}

int EffectChain::longestGap() const {
    int gap = 0;
    for (const auto& e : effects_) gap += e->longestGap();
    return gap;
}

}  // namespace velaro::dsp
