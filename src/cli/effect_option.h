#pragma once
// --effect NAME[:FIELD=VALUE,...]: one effect of the chain with its record;
// fields not named keep the class's defaults.

#include <string>

#include "dsp/effect_params.h"

namespace velaro::cli {

// False with one line in `error` naming the effect or the field and its range.
bool parseEffect(const std::string& text, dsp::EffectParams& out, std::string& error);

}  // namespace velaro::cli
