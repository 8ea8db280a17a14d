#include "level.h"

#include <cmath>

namespace velaro::dsp {

float gainFromHundredthsDb(int hundredthsDb) {
    return std::pow(10.0f, static_cast<float>(hundredthsDb) / 2000.0f);
}

float peak(const float* samples, size_t count) {
    float p = 0;
    for (size_t i = 0; i < count; ++i) {
        float a = std::fabs(samples[i]);
        if (a > p) p = a;
    }
    return p > 1.0f ? 1.0f : p;
}

int meterPercent(float pk, float rangeDb) {
    if (pk <= 0.0f || rangeDb <= 0.0f) return 0;
    float db = 20.0f * std::log10(pk);
    if (db <= -rangeDb) return 0;
    if (db >= 0.0f) return 100;
    return static_cast<int>(std::lround((db + rangeDb) * 100.0f / rangeDb));
}

}  // namespace velaro::dsp
