#pragma once
// The program's random source: the old runtime's Rnd, a 24-bit linear
// congruential generator, so a seed gives the same draws on every machine.

#include <cstdint>

namespace velaro::player {

class VbRandom {
public:
    // A uniform number in [0, 1).
    double Rnd() {
        state_ = (state_ * 1140671485u + 12820163u) & 0xFFFFFFu;
        return static_cast<double>(state_) / 16777216.0;
    }
    // The generator's whole state is 24 bits: the seed is taken modulo 2^24.
    void seed(uint64_t s) { state_ = static_cast<uint32_t>(s & 0xFFFFFFu); }
    uint32_t state() const { return state_; }

private:
    uint32_t state_ = 0x50000;  // the runtime's state before any Randomize
};

// The one generator the playlist draws from.
VbRandom& programRandom();

}  // namespace velaro::player
