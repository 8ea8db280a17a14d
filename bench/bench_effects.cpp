// The song effects: the full eight-effect chain on 60 s of 44.1 kHz stereo in
// 256-frame blocks on one core, as a multiple of real time (the aim is 100x
// or more), each effect alone, then the demo song rendered with the chain
// against `fluidsynth -F` alone (same bank and rate).
//
// usage: bench_effects [BANK]

#include <sys/wait.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "core/base/paths.h"
#include "dsp/effect_chain.h"
#include "engine/synth.h"

using namespace velaro;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kRate = 44100, kSeconds = 60, kBlock = 256, kRounds = 3;

std::vector<float> program() {
    std::mt19937 rng(3);
    std::uniform_real_distribution<float> hiss(-0.05f, 0.05f);
    std::vector<float> a(2 * kRate * kSeconds);
    for (size_t i = 0; i < a.size() / 2; ++i) {
        const double t = double(i) / kRate;
        const double s = 0.3 * std::sin(2 * M_PI * 110 * t) + 0.2 * std::sin(2 * M_PI * 880 * t) + hiss(rng);
        a[2 * i] = static_cast<float>(s * (0.6 + 0.4 * std::sin(2 * M_PI * 0.5 * t)));
        a[2 * i + 1] = static_cast<float>(s * 0.9);
    }
    return a;
}

// Best of a few rounds: seconds of audio per second of work.
double timesRealTime(const std::vector<dsp::EffectClass>& classes, const std::vector<float>& source) {
    double best = 1e300;
    for (int r = 0; r < kRounds; ++r) {
        dsp::EffectChain chain(kRate);
        for (dsp::EffectClass c : classes) chain.add(c);
        std::vector<float> a = source;
        const auto t0 = Clock::now();
        for (size_t at = 0; at < a.size() / 2; at += kBlock)
            chain.process(a.data() + 2 * at, static_cast<int>(std::min<size_t>(kBlock, a.size() / 2 - at)));
        best = std::min(best, std::chrono::duration<double>(Clock::now() - t0).count());
    }
    return kSeconds / best;
}

double secondsOf(const std::string& cmd) {
    const auto t0 = Clock::now();
    const int rc = std::system((cmd + " >/dev/null 2>&1").c_str());
    if (!WIFEXITED(rc) || WEXITSTATUS(rc) != 0) return -1;
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<float> source = program();
    std::vector<dsp::EffectClass> all;
    for (int c = 0; c < dsp::kEffectClasses; ++c) {
        const auto cls = static_cast<dsp::EffectClass>(c);
        all.push_back(cls);
        std::printf("%-12s alone %8.0fx real time\n", dsp::effectName(cls), timesRealTime({cls}, source));
    }
    std::printf("all eight in a chain: %6.0fx real time on one core (aim: 100x)\n", timesRealTime(all, source));

    const std::string bank = argc > 1 ? argv[1] : engine::Synth::defaultBankPath();
    if (bank.empty()) {
        std::fprintf(stderr, "bench_effects: no sound bank, no song render\n");
        return 0;
    }
    std::string effects;
    for (const char* n : {"gargle", "chorus", "flanger", "echo", "distortion", "compressor", "parameq", "reverb"})
        effects += std::string(" --effect ") + n;
    const std::string ours = tempFolder() + "/bench-fx-ours.wav", theirs = tempFolder() + "/bench-fx-fluid.wav";
    const double tPlain = secondsOf(std::string(VELARO_BIN) + " render " + VELARO_DEMO_SONG + " -o " + ours + " --bank " + bank);
    const double tOurs =
        secondsOf(std::string(VELARO_BIN) + " render " + VELARO_DEMO_SONG + " -o " + ours + " --bank " + bank + effects);
    const double tTheirs =
        secondsOf("fluidsynth -ni -q -g 0.8 -r 44100 -o synth.polyphony=256 -F " + theirs + " " + bank + " " + VELARO_DEMO_SONG);
    std::printf("demo song (81 s): velaro render %.2f s, with the eight effects %.2f s", tPlain, tOurs);
    if (tTheirs > 0) std::printf(", fluidsynth -F %.2f s; ratio %.2f (above 1: faster)\n", tTheirs, tTheirs / tOurs);
    else std::printf(", fluidsynth command not available\n");
    std::remove(ours.c_str());
    std::remove(theirs.c_str());
    return 0;
}
