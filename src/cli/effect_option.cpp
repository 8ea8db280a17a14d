#include "effect_option.h"

namespace velaro::cli {

bool parseEffect(const std::string& text, dsp::EffectParams& out, std::string& error) {
    const size_t colon = text.find(':');
    const std::string name = text.substr(0, colon);
    dsp::EffectClass c{};
    if (!dsp::effectClassByName(name, c)) {
        error = "unknown effect '" + name + "' (gargle, chorus, flanger, echo, distortion, compressor, parameq, reverb)";
        return false;
    }
    out = dsp::defaultParams(c);
    if (colon == std::string::npos) return true;
    const std::string fields = text.substr(colon + 1);
    size_t at = 0;
    while (at <= fields.size()) {
        size_t end = fields.find(',', at);
        if (end == std::string::npos) end = fields.size();
        const std::string item = fields.substr(at, end - at);
        const size_t eq = item.find('=');
        if (eq == std::string::npos) {
            error = std::string(dsp::effectName(c)) + ": '" + item + "' is no FIELD=VALUE";
            return false;
        }
        if (!dsp::setField(out, item.substr(0, eq), item.substr(eq + 1), error)) {
            error = std::string(dsp::effectName(c)) + ": " + error;
            return false;
        }
        at = end + 1;
    }
    return true;
}

}  // namespace velaro::cli
