#pragma once
// Level arithmetic shared by the meters, the players and the mixer.

#include <cstddef>

namespace velaro::dsp {

// Linear gain of an attenuation in hundredths of a decibel (-900 -> 0.354).
float gainFromHundredthsDb(int hundredthsDb);
// Peak of interleaved float samples, 0 to 1 (values beyond full scale clip to 1).
float peak(const float* samples, size_t count);
// A peak as a 0-100 meter reading on a decibel scale spanning `rangeDb`.
int meterPercent(float peak, float rangeDb = 60.0f);

}  // namespace velaro::dsp
