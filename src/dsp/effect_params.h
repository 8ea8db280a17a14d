#pragma once
// The eight song effects' parameter records, field for field as the effect
// panels know them, with the ranges and defaults of their DirectX 8 classes:
// delays in ms, gains in dB, rates in Hz, mixes and depths in percent.

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace velaro::dsp {

enum class EffectClass : uint8_t { Gargle, Chorus, Flanger, Echo, Distortion, Compressor, ParamEq, WavesReverb };
inline constexpr int kEffectClasses = 8;

struct GargleParams {
    int32_t lRateHz = 20;
    int32_t lWaveShape = 0;  // 0 triangle, 1 square
};

struct ChorusParams {
    float fWetDryMix = 50;
    float fDepth = 10;
    float fFeedback = 25;
    float fFrequency = 1.1f;
    int32_t lWaveform = 1;  // 0 triangle, 1 sine
    float fDelay = 16;
    int32_t lPhase = 3;  // right against left: 0 -180, 1 -90, 2 0, 3 90, 4 180 degrees
};

struct FlangerParams {
    float fWetDryMix = 50;
    float fDepth = 100;
    float fFeedback = -50;
    float fFrequency = 0.25f;
    int32_t lWaveform = 1;
    float fDelay = 2;
    int32_t lPhase = 2;
};

struct EchoParams {
    float fWetDryMix = 50;
    float fFeedback = 50;
    float fLeftDelay = 500;
    float fRightDelay = 500;
    int32_t lPanDelay = 0;  // 1: each repeat swaps the sides
};

struct DistortionParams {
    float fGain = -18;
    float fEdge = 15;
    float fPostEQCenterFrequency = 2400;
    float fPostEQBandwidth = 2400;
    float fPreLowpassCutoff = 8000;
};

struct CompressorParams {
    float fGain = 0;
    float fAttack = 10;
    float fRelease = 200;
    float fThreshold = -20;
    float fRatio = 3;
    float fPredelay = 4;
};

struct ParamEqParams {
    float fCenter = 8000;
    float fBandwidth = 12;  // semitones
    float fGain = 0;
};

struct WavesReverbParams {
    float fInGain = 0;
    float fReverbMix = 0;
    float fReverbTime = 1000;
    float fHighFreqRTRatio = 0.001f;
};

// One record of any class; the alternative's index is its EffectClass.
using EffectParams = std::variant<GargleParams, ChorusParams, FlangerParams, EchoParams, DistortionParams,
                                  CompressorParams, ParamEqParams, WavesReverbParams>;

inline EffectClass classOf(const EffectParams& p) { return static_cast<EffectClass>(p.index()); }
EffectParams defaultParams(EffectClass c);

// Calls f(name, field, min, max) for each field in record order; field is a
// float& or an int32_t&.
template <class F> void forEachField(GargleParams& p, F&& f) {
    f("lRateHz", p.lRateHz, 1, 1000);
    f("lWaveShape", p.lWaveShape, 0, 1);
}
template <class F> void forEachField(ChorusParams& p, F&& f) {
    f("fWetDryMix", p.fWetDryMix, 0, 100);
    f("fDepth", p.fDepth, 0, 100);
    f("fFeedback", p.fFeedback, -99, 99);
    f("fFrequency", p.fFrequency, 0, 10);
    f("lWaveform", p.lWaveform, 0, 1);
    f("fDelay", p.fDelay, 0, 20);
    f("lPhase", p.lPhase, 0, 4);
}
template <class F> void forEachField(FlangerParams& p, F&& f) {
    f("fWetDryMix", p.fWetDryMix, 0, 100);
    f("fDepth", p.fDepth, 0, 100);
    f("fFeedback", p.fFeedback, -99, 99);
    f("fFrequency", p.fFrequency, 0, 10);
    f("lWaveform", p.lWaveform, 0, 1);
    f("fDelay", p.fDelay, 0, 4);
    f("lPhase", p.lPhase, 0, 4);
}
template <class F> void forEachField(EchoParams& p, F&& f) {
    f("fWetDryMix", p.fWetDryMix, 0, 100);
    f("fFeedback", p.fFeedback, 0, 100);
    f("fLeftDelay", p.fLeftDelay, 1, 2000);
    f("fRightDelay", p.fRightDelay, 1, 2000);
    f("lPanDelay", p.lPanDelay, 0, 1);
}
template <class F> void forEachField(DistortionParams& p, F&& f) {
    f("fGain", p.fGain, -60, 0);
    f("fEdge", p.fEdge, 0, 100);
    f("fPostEQCenterFrequency", p.fPostEQCenterFrequency, 100, 8000);
    f("fPostEQBandwidth", p.fPostEQBandwidth, 100, 8000);
    f("fPreLowpassCutoff", p.fPreLowpassCutoff, 100, 8000);
}
template <class F> void forEachField(CompressorParams& p, F&& f) {
    f("fGain", p.fGain, -60, 60);
    f("fAttack", p.fAttack, 0.01, 500);
    f("fRelease", p.fRelease, 50, 3000);
    f("fThreshold", p.fThreshold, -60, 0);
    f("fRatio", p.fRatio, 1, 100);
    f("fPredelay", p.fPredelay, 0, 4);
}
template <class F> void forEachField(ParamEqParams& p, F&& f) {
    f("fCenter", p.fCenter, 80, 16000);
    f("fBandwidth", p.fBandwidth, 1, 36);
    f("fGain", p.fGain, -15, 15);
}
template <class F> void forEachField(WavesReverbParams& p, F&& f) {
    f("fInGain", p.fInGain, -96, 0);
    f("fReverbMix", p.fReverbMix, -96, 0);
    f("fReverbTime", p.fReverbTime, 0.001, 3000);
    f("fHighFreqRTRatio", p.fHighFreqRTRatio, 0.001, 0.999);
}

// Every field brought into its class's range (a NaN becomes the minimum).
void clampToRange(EffectParams& p);

// The command line's names: gargle, chorus, flanger, echo, distortion,
// compressor, parameq, reverb, in any case. False when there is no such class.
bool effectClassByName(std::string_view name, EffectClass& out);
const char* effectName(EffectClass c);

// Sets one field by its record name. On failure, `error` is one line naming
// the field and its range (or the known fields).
bool setField(EffectParams& p, std::string_view field, std::string_view value, std::string& error);

}  // namespace velaro::dsp
