#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "dsp/peak_limiter.h"

using namespace velaro::dsp;

namespace {

using Audio = std::vector<float>;  // interleaved stereo
const float kCeiling = static_cast<float>(std::pow(10.0, -1.0 / 20.0));

// Processes in random block sizes, zero included.
Audio run(PeakLimiter& lim, Audio a, unsigned seed, int maxBlock = 700) {
    std::mt19937 rng(seed);
    const int frames = static_cast<int>(a.size() / 2);
    for (int at = 0; at < frames;) {
        const int n = std::min(frames - at, static_cast<int>(rng() % (maxBlock + 1)));
        lim.process(a.data() + 2 * at, n);
        at += n;
    }
    return a;
}

Audio sine(int frames, double hz, float amp, int rate = 44100) {
    Audio a(2 * frames);
    for (int i = 0; i < frames; ++i) a[2 * i] = a[2 * i + 1] = amp * std::sin(2 * M_PI * hz * i / rate);
    return a;
}

Audio noise(int frames, float amp, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> d(-amp, amp);
    Audio a(2 * frames);
    for (float& s : a) s = d(rng);
    return a;
}

// Output frame n must be input frame n - latency, compared as bits (signed zeros too).
void expectDelayedCopy(const Audio& in, const Audio& out, int latency, size_t fromFrame = 0) {
    for (size_t i = 2 * fromFrame; i < out.size(); ++i) {
        const float want = i < 2u * latency ? 0.0f : in[i - 2 * latency];
        ASSERT_EQ(std::memcmp(&want, &out[i], sizeof want), 0) << "sample " << i;
    }
}

}  // namespace

TEST(PeakLimiter, NoSampleEverPassesTheCeiling) {
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    std::vector<Audio> inputs = {noise(40000, 10.0f, 1), sine(20000, 50, 1.0f), Audio(20000, 1.0f),
                                 Audio(20000, -100.0f)};
    Audio square(40000), spikes = noise(40000, 0.3f, 2), broken = noise(40000, 4.0f, 3);
    for (size_t i = 0; i < square.size(); ++i) square[i] = (i / 400) % 2 ? 1.0f : -1.0f;
    for (size_t i = 0; i < spikes.size(); i += 997) spikes[i] = (i % 3 ? 100.0f : -100.0f);
    const float bad[] = {nan, inf, -inf, std::numeric_limits<float>::max(), -nan};
    for (size_t i = 0; i < broken.size(); i += 37) broken[i] = bad[i % 5];
    inputs.insert(inputs.end(), {square, spikes, broken});

    struct Setup { int rate; float ceilingDb, aheadMs, releaseMs; };
    for (const Setup s : {Setup{44100, -1, 5, 80}, Setup{48000, -0.1f, 1.5f, 20}, Setup{8000, -6, 0.01f, 0}}) {
        const float ceiling = static_cast<float>(std::pow(10.0, s.ceilingDb / 20.0));
        for (size_t k = 0; k < inputs.size(); ++k) {
            PeakLimiter lim(s.rate, s.ceilingDb, s.aheadMs, s.releaseMs);
            const Audio out = run(lim, inputs[k], unsigned(k));
            const size_t late = 2 * lim.latencyFrames();
            for (size_t i = 0; i < out.size(); ++i) {
                const float v = out[i], x = i < late ? 0.0f : inputs[k][i - late];
                ASSERT_TRUE(std::isfinite(v)) << "input " << k;
                if (std::isfinite(x)) {
                    ASSERT_GE(v * x, 0.0f) << "sign flipped, input " << k;
                }
                ASSERT_LE(std::fabs(v), ceiling) << "input " << k << " at " << s.rate;
                // Landing exactly on the ceiling would mean the clamp, not the gain, did the work.
                ASSERT_NE(std::fabs(v), ceiling) << "input " << k << " at " << s.rate;
            }
        }
    }
}

TEST(PeakLimiter, QuietAudioComesOutDelayedBitForBit) {
    EXPECT_EQ(PeakLimiter(44100).latencyFrames(), 221);
    EXPECT_EQ(PeakLimiter(48000, -1, 2).latencyFrames(), 96);
    EXPECT_EQ(PeakLimiter(48000, -1, 0).latencyFrames(), 1);

    Audio quiet = noise(30000, kCeiling, 4);
    quiet[500] = kCeiling, quiet[501] = -kCeiling, quiet[502] = -0.0f;  // at, not over, the ceiling
    PeakLimiter lim(44100);
    expectDelayedCopy(quiet, run(lim, quiet, 5), lim.latencyFrames());
    EXPECT_EQ(lim.gainReductionDb(), 0.0f);

    // Off, even loud audio is only delayed; reset leaves silence in the line.
    Audio loud = noise(30000, 8.0f, 6);
    lim.setEnabled(false);
    run(lim, noise(5000, 8.0f, 7), 8);
    lim.reset();
    expectDelayedCopy(loud, run(lim, loud, 9), lim.latencyFrames());
    EXPECT_EQ(lim.gainReductionDb(), 0.0f);
}

TEST(PeakLimiter, OutputDoesNotDependOnBlockSize) {
    Audio in = sine(60000, 220, 3.0f);
    const Audio hiss = noise(60000, 1.5f, 10);
    for (size_t i = 0; i < in.size(); ++i) in[i] = (i / 20000) % 2 ? hiss[i] : in[i] + 0.1f * hiss[i];
    PeakLimiter whole(44100), pieces(44100), single(44100);
    Audio a = in;
    whole.process(a.data(), 60000);
    EXPECT_EQ(a, run(pieces, in, 11));
    EXPECT_EQ(a, run(single, in, 12, 1));
}

TEST(PeakLimiter, SpikeGetsOneSmoothGainOnBothChannelsInTime) {
    const int spikeAt = 1000;
    Audio in(2 * 3000);
    for (int i = 0; i < 3000; ++i) in[2 * i] = 0.5f, in[2 * i + 1] = -0.25f;
    in[2 * spikeAt] = 10.0f;
    PeakLimiter lim(44100);
    const int late = lim.latencyFrames();
    const Audio out = run(lim, in, 13);
    std::vector<double> gain(3000 - late);
    for (int n = late; n < 3000; ++n) {
        gain[n - late] = out[2 * n + 1] / in[2 * (n - late) + 1];
        if (n - late != spikeAt) {
            EXPECT_NEAR(out[2 * n] / in[2 * (n - late)], gain[n - late], 1e-6);
        }
    }
    // The lowest gain falls on the spike itself, reached by a ramp without steps.
    const double lowest = *std::min_element(gain.begin(), gain.end());
    EXPECT_NEAR(gain[spikeAt], lowest, 1e-6);
    EXPECT_GT(gain[spikeAt - 1], lowest + 0.001);
    EXPECT_NEAR(out[2 * (spikeAt + late)], kCeiling, 1e-4);
    for (size_t i = 1; i < gain.size(); ++i)
        ASSERT_LE(std::fabs(gain[i] - gain[i - 1]), 1.01 * (1.0 - lowest) / (late + 1)) << i;
}

TEST(PeakLimiter, ReleaseReturnsToExactlyUnity) {
    Audio in = sine(44100 / 2, 440, 2.0f), quiet = sine(2 * 44100, 440, 0.5f);
    in.insert(in.end(), quiet.begin(), quiet.end());
    const Audio orig = in;
    PeakLimiter lim(44100, -1, 5, 80);
    const int late = lim.latencyFrames();
    const int end = 44100 / 2 + late;  // the last loud frame leaves here
    lim.process(in.data(), end);
    EXPECT_NEAR(lim.gainReductionDb(), 7.0, 0.1);
    lim.process(in.data() + 2 * end, 441);
    EXPECT_GT(lim.gainReductionDb(), 5.0);  // released over tens of milliseconds, not at once
    lim.process(in.data() + 2 * (end + 441), 44100 / 5 - 441);
    EXPECT_LT(lim.gainReductionDb(), 1.5);
    lim.process(in.data() + 2 * (end + 44100 / 5), static_cast<int>(in.size() / 2) - end - 44100 / 5);
    EXPECT_EQ(lim.gainReductionDb(), 0.0f);
    expectDelayedCopy(orig, in, late, in.size() / 2 - 44100);  // the last second untouched
}

TEST(PeakLimiter, LoudSineComesOutSteadyAtTheCeiling) {
    for (double hz : {1000.0, 220.0, 60.0}) {
        const Audio in = sine(3 * 44100, hz, 2.0f);  // +6 dBFS
        PeakLimiter lim(44100);
        const int late = lim.latencyFrames();
        const Audio out = run(lim, in, 14);
        double lo = 1e9, hi = -1e9, peak = 0;
        for (size_t n = 44100; n < out.size() / 2; ++n) {
            peak = std::max(peak, double(std::fabs(out[2 * n])));
            const float x = in[2 * (n - late)];
            if (std::fabs(x) < 0.5f) continue;
            const double db = 20 * std::log10(out[2 * n] / x);
            lo = std::min(lo, db), hi = std::max(hi, db);
        }
        EXPECT_LT(hi - lo, 0.5) << hz << " Hz";
        EXPECT_NEAR(20 * std::log10(peak), -1.0, 0.05) << hz << " Hz";
    }
}
