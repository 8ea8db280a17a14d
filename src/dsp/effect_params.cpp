#include "effect_params.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <sstream>

namespace velaro::dsp {

namespace {

constexpr const char* kNames[kEffectClasses] = {"gargle",     "chorus",     "flanger", "echo",
                                                "distortion", "compressor", "parameq", "reverb"};

std::string lower(std::string_view s) {
    std::string out(s);
    for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::string number(double v) {
    std::ostringstream o;
    o << v;
    return o.str();
}

}  // namespace

EffectParams defaultParams(EffectClass c) {
    switch (c) {
        case EffectClass::Gargle: return GargleParams{};
        case EffectClass::Chorus: return ChorusParams{};
        case EffectClass::Flanger: return FlangerParams{};
        case EffectClass::Echo: return EchoParams{};
        case EffectClass::Distortion: return DistortionParams{};
        case EffectClass::Compressor: return CompressorParams{};
        case EffectClass::ParamEq: return ParamEqParams{};
        case EffectClass::WavesReverb: return WavesReverbParams{};
    }
    return CompressorParams{};
}

void clampToRange(EffectParams& p) {
    std::visit(
        [](auto& rec) {
            forEachField(rec, [](const char*, auto& field, double lo, double hi) {
                const double v = static_cast<double>(field);
                const double c = std::isnan(v) ? lo : std::clamp(v, lo, hi);
                field = static_cast<std::remove_reference_t<decltype(field)>>(c);
            });
        },
        p);
}

bool effectClassByName(std::string_view name, EffectClass& out) {
    const std::string n = lower(name);
    for (int i = 0; i < kEffectClasses; ++i)
        if (n == kNames[i]) {
            out = static_cast<EffectClass>(i);
            return true;
        }
    return false;
}

const char* effectName(EffectClass c) { return kNames[static_cast<int>(c)]; }

bool setField(EffectParams& p, std::string_view field, std::string_view value, std::string& error) {
    bool found = false, ok = false;
    std::string known;
    std::visit(
        [&](auto& rec) {
            forEachField(rec, [&](const char* name, auto& slot, double lo, double hi) {
                known += known.empty() ? name : std::string(", ") + name;
                if (found || field != name) return;
                found = true;
                constexpr bool whole = std::is_integral_v<std::remove_reference_t<decltype(slot)>>;
                const std::string range = std::string(name) + " takes " + (whole ? "a whole number" : "a number") +
                                          " from " + number(lo) + " to " + number(hi);
                const std::string text(value);
                char* end = nullptr;
                const double v = text.empty() ? NAN : std::strtod(text.c_str(), &end);
                if (text.empty() || end != text.c_str() + text.size() || !std::isfinite(v) || v < lo || v > hi ||
                    (whole && v != std::floor(v))) {
                    error = range + ", not '" + text + "'";
                    return;
                }
                slot = static_cast<std::remove_reference_t<decltype(slot)>>(v);
                ok = true;
            });
        },
        p);
    if (!found) error = "no field '" + std::string(field) + "' (" + known + ")";
    return ok;
}

}  // namespace velaro::dsp
