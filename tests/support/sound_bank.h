#pragma once
// A tiny SoundFont 2 bank written by the tests: one preset (bank 0, program 0)
// playing a looped sine whose root key sounds at 440 Hz.

#include <string>

namespace velaro::testing {

// The SF2 file's bytes: a 440 Hz sine at key 69, looped forever.
std::string tinySf2();

// The same sine as a Downloadable Sounds (DLS level 1) collection.
std::string tinyDls();

// Frequency of a mono signal by counting upward zero crossings.
double zeroCrossingFrequency(const float* samples, size_t count, int stride, int sampleRate);

}  // namespace velaro::testing
