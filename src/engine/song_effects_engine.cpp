#include "song_effects_engine.h"

#include <memory>

#include "dsp/effect_chain.h"
#include "song_player.h"

namespace velaro::engine {

namespace {
template <class... F>
struct Overloaded : F... {
    using F::operator()...;
};
template <class... F>
Overloaded(F...) -> Overloaded<F...>;
}  // namespace

// The two sides keep the same fields in the same order.
dsp::EffectParams SongEffectsEngine::toDsp(const platform::EffectRecord& r) {
    using namespace platform;
    return std::visit(
        Overloaded{
            [](const DSFXGargle& p) -> dsp::EffectParams { return dsp::GargleParams{p.lRateHz, p.lWaveShape}; },
            [](const DSFXChorus& p) -> dsp::EffectParams {
                return dsp::ChorusParams{p.fWetDryMix, p.fDepth, p.fFeedback, p.fFrequency, p.lWaveform, p.fDelay, p.lPhase};
            },
            [](const DSFXFlanger& p) -> dsp::EffectParams {
                return dsp::FlangerParams{p.fWetDryMix, p.fDepth, p.fFeedback, p.fFrequency, p.lWaveform, p.fDelay, p.lPhase};
            },
            [](const DSFXEcho& p) -> dsp::EffectParams {
                return dsp::EchoParams{p.fWetDryMix, p.fFeedback, p.fLeftDelay, p.fRightDelay, p.lPanDelay};
            },
            [](const DSFXDistortion& p) -> dsp::EffectParams {
                return dsp::DistortionParams{p.fGain, p.fEdge, p.fPostEQCenterFrequency, p.fPostEQBandwidth,
                                             p.fPreLowpassCutoff};
            },
            [](const DSFXCompressor& p) -> dsp::EffectParams {
                return dsp::CompressorParams{p.fGain, p.fAttack, p.fRelease, p.fThreshold, p.fRatio, p.fPredelay};
            },
            [](const DSFXParamEq& p) -> dsp::EffectParams { return dsp::ParamEqParams{p.fCenter, p.fBandwidth, p.fGain}; },
            [](const DSFXWavesReverb& p) -> dsp::EffectParams {
                return dsp::WavesReverbParams{p.fInGain, p.fReverbMix, p.fReverbTime, p.fHighFreqRTRatio};
            },
        },
        r);
}

platform::EffectRecord SongEffectsEngine::fromDsp(const dsp::EffectParams& p) {
    using namespace platform;
    return std::visit(
        Overloaded{
            [](const dsp::GargleParams& q) -> EffectRecord { return DSFXGargle{q.lRateHz, q.lWaveShape}; },
            [](const dsp::ChorusParams& q) -> EffectRecord {
                return DSFXChorus{q.fWetDryMix, q.fDepth, q.fFeedback, q.fFrequency, q.lWaveform, q.fDelay, q.lPhase};
            },
            [](const dsp::FlangerParams& q) -> EffectRecord {
                return DSFXFlanger{q.fWetDryMix, q.fDepth, q.fFeedback, q.fFrequency, q.lWaveform, q.fDelay, q.lPhase};
            },
            [](const dsp::EchoParams& q) -> EffectRecord {
                return DSFXEcho{q.fWetDryMix, q.fFeedback, q.fLeftDelay, q.fRightDelay, q.lPanDelay};
            },
            [](const dsp::DistortionParams& q) -> EffectRecord {
                return DSFXDistortion{q.fGain, q.fEdge, q.fPostEQCenterFrequency, q.fPostEQBandwidth, q.fPreLowpassCutoff};
            },
            [](const dsp::CompressorParams& q) -> EffectRecord {
                return DSFXCompressor{q.fGain, q.fAttack, q.fRelease, q.fThreshold, q.fRatio, q.fPredelay};
            },
            [](const dsp::ParamEqParams& q) -> EffectRecord { return DSFXParamEq{q.fCenter, q.fBandwidth, q.fGain}; },
            [](const dsp::WavesReverbParams& q) -> EffectRecord {
                return DSFXWavesReverb{q.fInGain, q.fReverbMix, q.fReverbTime, q.fHighFreqRTRatio};
            },
        },
        p);
}

SongEffectsEngine::SongEffectsEngine(SongPlayer& player, int sampleRate) : player_(player), rate_(sampleRate) {}

void SongEffectsEngine::chainChanged() {
    auto chain = std::make_unique<dsp::EffectChain>(rate_);
    for (int i = 0; i < size(); ++i) {
        const dsp::EffectParams p = toDsp(record(i));
        dsp::Effect& e = chain->add(dsp::classOf(p));
        e.setParams(p);
        e.reset();
    }
    gap_ = chain->longestGap();
    player_.setEffectChain(std::move(chain));
}

void SongEffectsEngine::recordChanged(int slot) { player_.setEffectParams(slot, toDsp(record(slot))); }

void SongEffectsEngine::setChain(const std::vector<dsp::EffectParams>& chain) {
    std::vector<platform::DSEFFECTDESC> desc;
    for (const dsp::EffectParams& p : chain) desc.push_back({platform::kEffectClassNames[p.index()], 0});
    std::vector<int32_t> results;
    Activate(false);
    SetFX(static_cast<int>(desc.size()), desc, results);
    Activate(true);
    // Each effect of a class is found by its place among its class.
    int seen[dsp::kEffectClasses] = {};
    for (const dsp::EffectParams& p : chain) {
        const auto c = static_cast<platform::EffectClass>(p.index());
        const platform::EffectObject fx =
            GetObjectInPath(platform::classNameOf(c), seen[p.index()]++, platform::interfaceNameOf(c));
        SetAllParameters(fx, fromDsp(p));
    }
}

}  // namespace velaro::engine
