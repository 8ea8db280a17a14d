// The master-bus peak limiter on 44.1 kHz stereo in 512-frame blocks: cost per
// second of audio, for quiet audio it leaves alone and for loud audio it limits.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "dsp/peak_limiter.h"

using namespace velaro::dsp;

namespace {

constexpr int kRate = 44100, kSeconds = 10, kBlock = 512, kRounds = 5;

std::vector<float> program(float amp) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> hiss(-0.2f, 0.2f);
    std::vector<float> a(2 * kRate * kSeconds);
    for (size_t i = 0; i < a.size() / 2; ++i) {
        const double t = double(i) / kRate;
        // A bass, a melody and hiss, swelling every second so the gain keeps moving.
        const double s = (0.5 * std::sin(2 * M_PI * 55 * t) + 0.3 * std::sin(2 * M_PI * 660 * t) + hiss(rng)) *
                         (0.6 + 0.4 * std::sin(2 * M_PI * t));
        a[2 * i] = static_cast<float>(amp * s);
        a[2 * i + 1] = static_cast<float>(amp * s * 0.8);
    }
    return a;
}

// Best of a few rounds, in microseconds per second of audio.
double usPerSecond(const std::vector<float>& source) {
    double best = 1e300;
    for (int r = 0; r < kRounds; ++r) {
        std::vector<float> a = source;
        PeakLimiter lim(kRate);
        const auto t0 = std::chrono::steady_clock::now();
        for (size_t at = 0; at < a.size() / 2; at += kBlock)
            lim.process(a.data() + 2 * at, static_cast<int>(std::min<size_t>(kBlock, a.size() / 2 - at)));
        const double us = std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - t0).count();
        best = std::min(best, us / kSeconds);
    }
    return best;
}

}  // namespace

int main() {
    const struct { const char* name; float amp; } cases[] = {{"quiet (-12 dBFS, untouched)", 0.25f},
                                                            {"loud (+12 dBFS, limited)", 4.0f}};
    for (const auto& c : cases) {
        const double us = usPerSecond(program(c.amp));
        std::printf("PeakLimiter %-28s %8.1f us per second of audio, %8.0fx real time\n", c.name, us, 1e6 / us);
    }
    return 0;
}
