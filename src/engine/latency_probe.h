#pragma once
// The round trip of the sound card, measured the way a take lines up voice
// and backing: clicks are played, what the engine plays and what the input
// hears are kept side by side from the same moment, and each click's delay
// from the one to the other is found. The median of the clicks is the
// figure a take shifts its input by.

#include <string>
#include <vector>

namespace velaro::engine {

class AudioEngine;

struct LatencyResult {
    bool ok = false;
    double ms = 0;                 // the median delay
    std::vector<double> clicksMs;  // each click's delay, in order
    std::string error;
};

// Onsets of clicks in a mono signal: the first sample of each burst above
// `threshold` that follows gap/2 frames of quiet, bursts at least `gap` frames apart.
std::vector<long> clickOnsets(const std::vector<float>& mono, float threshold, long gap);

// Pairs each output click with the first input click after it (within
// `maxDelay` frames); gives the delays in frames.
std::vector<long> clickDelays(const std::vector<long>& out, const std::vector<long>& in, long maxDelay);

// Needs the engine's device running and its microphone available. Thread: logic (waits ~clicks x 0.4 s).
LatencyResult measureRoundTrip(AudioEngine& engine, int clicks = 8);

}  // namespace velaro::engine
