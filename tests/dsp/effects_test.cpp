#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <new>
#include <vector>

#include "dsp/compressor.h"
#include "dsp/effect_chain.h"
#include "dsp/echo.h"
#include "dsp/gargle.h"
#include "dsp/modulated_delay.h"
#include "dsp/param_eq.h"
#include "dsp/waves_reverb.h"

// Counts allocations on the thread that arms the guard: process() must make none.
namespace {
thread_local bool guardArmed = false;
std::atomic<int> guardedAllocations{0};
}  // namespace

void* operator new(std::size_t n) {
    if (guardArmed) guardedAllocations.fetch_add(1);
    if (void* p = std::malloc(n ? n : 1)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

using namespace velaro::dsp;

namespace {

constexpr int kRate = 44100;
using Audio = std::vector<float>;  // interleaved stereo

Audio silence(int frames) { return Audio(2 * frames, 0.0f); }

Audio sine(int frames, double hz, float amp, int rate = kRate) {
    Audio a(2 * frames);
    for (int i = 0; i < frames; ++i) a[2 * i] = a[2 * i + 1] = amp * static_cast<float>(std::sin(2 * kPi * hz * i / rate));
    return a;
}

// In uneven blocks, as the engine hands them over.
void run(Effect& e, Audio& a) {
    const int frames = static_cast<int>(a.size() / 2);
    for (int at = 0, n = 1; at < frames; at += n, n = n % 700 + 97) e.process(a.data() + 2 * at, std::min(n, frames - at));
}

// Amplitude of one frequency in a channel over [from, to) frames.
double amplitudeAt(const Audio& a, int ch, double hz, int from, int to, int rate = kRate) {
    double re = 0, im = 0;
    for (int i = from; i < to; ++i) {
        re += a[2 * i + ch] * std::cos(2 * kPi * hz * i / rate);
        im += a[2 * i + ch] * std::sin(2 * kPi * hz * i / rate);
    }
    return 2 * std::hypot(re, im) / (to - from);
}

double peakOf(const Audio& a, int ch, int from, int to) {
    double p = 0;
    for (int i = from; i < to; ++i) p = std::max(p, static_cast<double>(std::fabs(a[2 * i + ch])));
    return p;
}

double db(double x) { return 20 * std::log10(x); }

}  // namespace

TEST(EffectRecords, ANewEffectHoldsItsClassDefaults) {
    for (int c = 0; c < kEffectClasses; ++c) {
        auto e = makeEffect(static_cast<EffectClass>(c), kRate);
        ASSERT_EQ(static_cast<int>(e->kind()), c);
        EXPECT_EQ(e->params().index(), static_cast<size_t>(c));
    }
    const auto echo = std::get<EchoParams>(makeEffect(EffectClass::Echo, kRate)->params());
    EXPECT_EQ(echo.fLeftDelay, 500);
    EXPECT_EQ(echo.fFeedback, 50);
    EXPECT_EQ(echo.lPanDelay, 0);
    const auto comp = std::get<CompressorParams>(makeEffect(EffectClass::Compressor, kRate)->params());
    EXPECT_EQ(comp.fThreshold, -20);
    EXPECT_EQ(comp.fRatio, 3);
    EXPECT_EQ(comp.fPredelay, 4);
    const auto rev = std::get<WavesReverbParams>(makeEffect(EffectClass::WavesReverb, kRate)->params());
    EXPECT_EQ(rev.fReverbTime, 1000);
    EXPECT_FLOAT_EQ(rev.fHighFreqRTRatio, 0.001f);
    EXPECT_EQ(std::get<GargleParams>(makeEffect(EffectClass::Gargle, kRate)->params()).lRateHz, 20);
    EXPECT_EQ(std::get<ParamEqParams>(makeEffect(EffectClass::ParamEq, kRate)->params()).fCenter, 8000);
}

TEST(EffectRecords, FieldsByNameWithTheirRanges) {
    EffectClass c{};
    ASSERT_TRUE(effectClassByName("ReVeRb", c));
    EXPECT_EQ(c, EffectClass::WavesReverb);
    EXPECT_FALSE(effectClassByName("wahwah", c));

    EffectParams p = EchoParams{};
    std::string error;
    EXPECT_TRUE(setField(p, "fLeftDelay", "250", error));
    EXPECT_TRUE(setField(p, "lPanDelay", "1", error));
    EXPECT_EQ(std::get<EchoParams>(p).fLeftDelay, 250);
    EXPECT_EQ(std::get<EchoParams>(p).lPanDelay, 1);
    EXPECT_FALSE(setField(p, "fLeftDelay", "2001", error));
    EXPECT_EQ(error, "fLeftDelay takes a number from 1 to 2000, not '2001'");
    EXPECT_FALSE(setField(p, "lPanDelay", "0.5", error));
    EXPECT_FALSE(setField(p, "fLeftDelay", "12ms", error));
    EXPECT_FALSE(setField(p, "fDepth", "1", error));
    EXPECT_NE(error.find("no field 'fDepth'"), std::string::npos);
    EXPECT_EQ(std::get<EchoParams>(p).fLeftDelay, 250);  // failures change nothing

    // Out-of-range records reaching an effect are clamped, NaN included.
    Echo echo(kRate);
    echo.set(EchoParams{NAN, 400, 5000, -3, 7});
    EXPECT_EQ(echo.record().fWetDryMix, 0);
    EXPECT_EQ(echo.record().fFeedback, 100);
    EXPECT_EQ(echo.record().fLeftDelay, 2000);
    EXPECT_EQ(echo.record().fRightDelay, 1);
    EXPECT_EQ(echo.record().lPanDelay, 1);
}

TEST(EchoEffect, RepeatsAtTheDelaysWithFeedbackDecayAndWetDryBalance) {
    Echo e(kRate);
    e.set(EchoParams{40, 50, 250, 100, 0});
    e.reset();
    Audio a = silence(kRate);
    a[0] = a[1] = 1.0f;
    run(e, a);
    const int left = kRate / 4, right = kRate / 10;
    EXPECT_NEAR(a[0], 0.6f, 1e-6);  // dry at 100 - 40 percent
    for (int k = 1; k <= 3; ++k) {
        // The k-th repeat: wet share times the feedback to the power k - 1.
        EXPECT_NEAR(a[2 * (k * left)], 0.4 * std::pow(0.5, k - 1), 1e-4) << "left repeat " << k;
        EXPECT_NEAR(a[2 * (k * right) + 1], 0.4 * std::pow(0.5, k - 1), 1e-4) << "right repeat " << k;
    }
    EXPECT_NEAR(peakOf(a, 0, 1, left - 1), 0.0, 1e-6);  // nothing between
}

TEST(EchoEffect, PanDelaySwapsSidesOnEachRepeat) {
    Echo e(kRate);
    e.set(EchoParams{100, 50, 100, 100, 1});
    e.reset();
    Audio a = silence(kRate / 2);
    a[0] = 1.0f;  // left only
    run(e, a);
    const int d = kRate / 10;
    EXPECT_NEAR(a[2 * d], 1.0f, 1e-4);         // first repeat on its own side
    EXPECT_NEAR(a[2 * (2 * d) + 1], 0.5f, 1e-4);  // second on the other
    EXPECT_NEAR(a[2 * (2 * d)], 0.0f, 1e-4);
    EXPECT_NEAR(a[2 * (3 * d)], 0.25f, 1e-4);  // and back
}

TEST(ParamEqEffect, GainAtTheCentreAndFlatFarAway) {
    for (float gain : {-15.0f, 9.0f}) {
        ParamEq eq(kRate);
        eq.set(ParamEqParams{1000, 12, gain});
        eq.reset();
        Audio centre = sine(kRate / 2, 1000, 0.1f), far = sine(kRate / 2, 8000, 0.1f), low = sine(kRate / 2, 60, 0.1f);
        run(eq, centre);
        eq.reset();
        run(eq, far);
        eq.reset();
        run(eq, low);
        EXPECT_NEAR(db(amplitudeAt(centre, 0, 1000, kRate / 4, kRate / 2) / 0.1), gain, 0.2);
        EXPECT_NEAR(db(amplitudeAt(far, 1, 8000, kRate / 4, kRate / 2) / 0.1), 0.0, 0.5);
        EXPECT_NEAR(db(amplitudeAt(low, 0, 60, kRate / 4, kRate / 2) / 0.1), 0.0, 0.5);
    }
}

TEST(CompressorEffect, ReducesAboveTheThresholdAtTheRatio) {
    Compressor c(kRate);
    c.set(CompressorParams{0, 5, 200, -20, 4, 0});
    c.reset();
    Audio loud = sine(kRate, 1000, 0.5f);  // -6 dBFS peaks: 14 dB over
    run(c, loud);
    // Above the threshold the level rises a quarter as fast: -20 + 14 / 4.
    EXPECT_NEAR(db(amplitudeAt(loud, 0, 1000, kRate / 2, kRate)), -16.5, 0.5);

    Compressor quiet(kRate);
    quiet.set(CompressorParams{6, 5, 200, -20, 4, 0});
    quiet.reset();
    Audio below = sine(kRate / 2, 1000, 0.05f);  // -26 dBFS: untouched but for the output gain
    run(quiet, below);
    EXPECT_NEAR(db(amplitudeAt(below, 0, 1000, kRate / 4, kRate / 2) / 0.05), 6.0, 0.1);
}

TEST(CompressorEffect, AttackAndReleaseTakeTheirTime) {
    Compressor c(kRate);
    c.set(CompressorParams{0, 50, 500, -40, 100, 0});
    c.reset();
    const int attack = kRate / 20, release = kRate / 2;
    Audio a = sine(4 * kRate, 1000, 1.0f);  // 40 dB over: about 39.6 dB of reduction in full
    for (int i = 2 * kRate; i < 4 * kRate; ++i) a[2 * i] = a[2 * i + 1] *= 0.001f;  // -60 dBFS: below
    std::vector<float> reduction;
    for (int at = 0; at < 4 * kRate; at += 32) {
        c.process(a.data() + 2 * at, std::min(32, 4 * kRate - at));
        reduction.push_back(c.reductionDb());
    }
    auto at = [&](int frame) { return reduction[frame / 32]; };
    const float full = at(2 * kRate - 64);
    EXPECT_NEAR(full, 39.6f, 1.0f);
    // One attack time in, about 63 % of the way; five in, nearly all of it.
    EXPECT_NEAR(at(attack) / full, 0.63, 0.12);
    EXPECT_GT(at(5 * attack) / full, 0.97);
    // One release time after the sound drops, about 37 % is left.
    EXPECT_NEAR(at(2 * kRate + release) / full, 0.37, 0.12);
    EXPECT_LT(at(2 * kRate + 5 * release - 64) / full, 0.03);
}

TEST(GargleEffect, ModulatesAtItsRateInItsShape) {
    for (int shape : {0, 1}) {
        Gargle g(kRate);
        g.set(GargleParams{50, shape});
        Audio a(2 * kRate, 1.0f);  // a steady level shows the modulation itself
        run(g, a);
        const int period = kRate / 50;
        for (int i = 0; i < 4 * period; i += 37) {
            const double phase = std::fmod(static_cast<double>(i) / period, 1.0);
            ASSERT_NEAR(a[2 * i], Gargle::shape(shape, phase), 1e-3) << "frame " << i;
            ASSERT_EQ(a[2 * i], a[2 * i + 1]);
        }
        // Every period repeats, and the shape is the asked one.
        EXPECT_NEAR(a[2 * (period / 4)], shape ? 1.0 : 0.5, 3e-3);
        EXPECT_NEAR(a[2 * (3 * period / 4)], shape ? 0.0 : 0.5, 3e-3);
        EXPECT_NEAR(a[2 * (10 * period + period / 4)], a[2 * (period / 4)], 1e-3);
    }
}

namespace {

// The reverb's decay, from the impulse response's backward-integrated energy:
// the time it takes from -5 to -25 dB, times three.
double measuredReverbTime(float reverbTimeMs) {
    WavesReverb r(kRate);
    r.set(WavesReverbParams{0, 0, reverbTimeMs, 0.999f});
    r.reset();
    const int frames = static_cast<int>(kRate * (reverbTimeMs / 1000.0 + 0.5));
    Audio a = silence(frames);
    a[0] = a[1] = 1.0f;
    run(r, a);
    a[0] = a[1] = 0.0f;  // the reverberation alone
    std::vector<double> energy(frames + 1, 0.0);
    for (int i = frames - 1; i >= 0; --i) energy[i] = energy[i + 1] + a[2 * i] * a[2 * i] + a[2 * i + 1] * a[2 * i + 1];
    int t5 = -1, t25 = -1;
    for (int i = 0; i < frames; ++i) {
        const double level = 10 * std::log10(energy[i] / energy[0]);
        if (t5 < 0 && level <= -5) t5 = i;
        if (t25 < 0 && level <= -25) t25 = i;
    }
    return 3.0 * (t25 - t5) * 1000.0 / kRate;
}

}  // namespace

TEST(WavesReverbEffect, DecaysInItsReverbTime) {
    for (float t : {500.0f, 1500.0f, 3000.0f}) EXPECT_NEAR(measuredReverbTime(t), t, 0.2 * t) << t;
}

TEST(WavesReverbEffect, MixAndInputGainAreLevelsInDb) {
    WavesReverb r(kRate);
    r.set(WavesReverbParams{-6, -96, 1000, 0.5f});
    r.reset();
    Audio a = sine(kRate / 2, 440, 0.5f);
    run(r, a);
    // Reverberation all but off: the dry sound at the input gain.
    EXPECT_NEAR(db(amplitudeAt(a, 0, 440, kRate / 4, kRate / 2) / 0.5), -6.0, 0.1);
}

namespace {

// Where a delayed click comes out: the centroid of the output around it.
double clickDelay(const Audio& a, int at, int span) {
    double sum = 0, weighted = 0;
    for (int i = at; i < at + span; ++i) {
        sum += std::fabs(a[2 * i]);
        weighted += std::fabs(a[2 * i]) * (i - at);
    }
    return sum > 0 ? weighted / sum : -1;
}

template <class E, class P>
void expectSweepAtFrequency(P p, double sweepMs) {
    E e(kRate);
    p.fWetDryMix = 100;
    p.fFeedback = 0;
    p.fDepth = 100;
    p.fFrequency = 1;
    e.set(p);
    e.reset();
    const int every = kRate / 20, clicks = 60;  // 20 clicks a second for three seconds
    Audio a = silence(every * clicks);
    for (int k = 0; k < clicks; ++k) a[2 * k * every] = 1.0f;
    run(e, a);
    std::vector<double> delayMs;
    for (int k = 0; k < clicks; ++k) delayMs.push_back(clickDelay(a, k * every, every) * 1000.0 / kRate);
    const auto [lo, hi] = std::minmax_element(delayMs.begin(), delayMs.end());
    EXPECT_NEAR(*lo, std::max(p.fDelay, 1000.0f / kRate), 0.1);
    EXPECT_NEAR(*hi, p.fDelay + sweepMs, 0.1);
    // At 1 Hz the sweep repeats every 20 clicks; half a period on it is at the other end.
    for (int k = 0; k + 20 < clicks; k += 3) EXPECT_NEAR(delayMs[k], delayMs[k + 20], 0.05) << k;
    EXPECT_NEAR(std::fabs(delayMs[5] - delayMs[15]), sweepMs, 0.1);
}

}  // namespace

TEST(ChorusAndFlanger, DelaySweepsAtTheirFrequency) {
    ChorusParams c;
    c.fDelay = 10;
    expectSweepAtFrequency<Chorus>(c, 10);
    FlangerParams f;
    f.fDelay = 1;
    expectSweepAtFrequency<Flanger>(f, 4);
}

TEST(ChorusAndFlanger, PhaseSetsTheRightChannelAgainstTheLeft) {
    auto difference = [](int phase) {
        Flanger f(kRate);
        f.set(FlangerParams{100, 100, 0, 5, 1, 0, phase});
        f.reset();
        Audio a = sine(kRate / 2, 500, 0.5f);
        run(f, a);
        double d = 0;
        for (size_t i = 0; i < a.size(); i += 2) d = std::max(d, static_cast<double>(std::fabs(a[i] - a[i + 1])));
        return d;
    };
    EXPECT_LT(difference(2), 1e-6);  // zero degrees: the two sides alike
    EXPECT_GT(difference(4), 0.05);
}

TEST(DistortionEffect, AddsHarmonics) {
    auto thirdAgainstFirst = [](float edge) {
        auto d = makeEffect(EffectClass::Distortion, kRate);
        d->setParams(DistortionParams{0, edge, 1320, 1000, 8000});
        d->reset();
        Audio a = sine(kRate / 2, 440, 0.8f);
        d->process(a.data(), kRate / 2);
        return amplitudeAt(a, 0, 1320, kRate / 4, kRate / 2) / amplitudeAt(a, 0, 440, kRate / 4, kRate / 2);
    };
    EXPECT_LT(thirdAgainstFirst(0), 1e-3);  // a straight curve: a clean sound
    EXPECT_GT(thirdAgainstFirst(60), 0.1);
    EXPECT_GT(thirdAgainstFirst(100), thirdAgainstFirst(30));
}

TEST(EffectChain, ProcessAllocatesNothingAndSurvivesBrokenSamples) {
    EffectChain chain(kRate);
    for (int c = 0; c < kEffectClasses; ++c) chain.add(static_cast<EffectClass>(c));
    Audio a = sine(4096, 300, 0.5f);
    a[10] = NAN;
    a[11] = INFINITY;
    guardArmed = true;
    guardedAllocations = 0;
    for (int round = 0; round < 4; ++round) {
        for (int i = 0; i < chain.size(); ++i) chain.at(i).setParams(defaultParams(chain.at(i).kind()));
        chain.process(a.data(), 4096);
        chain.reset();
    }
    guardArmed = false;
    EXPECT_EQ(guardedAllocations.load(), 0);
    for (float s : a) ASSERT_TRUE(std::isfinite(s));
}

TEST(EffectChain, ASettingChangedWhilePlayingGlidesWithoutAClick) {
    // Each class with a drastic change half-way through a low tone: no step
    // between two samples may be much larger than the tone's own.
    struct Case {
        EffectParams before, after;
    };
    const Case cases[] = {
        {GargleParams{5, 0}, GargleParams{40, 0}},
        {ChorusParams{50, 10, 25, 1.1f, 1, 5, 3}, ChorusParams{100, 100, 90, 8, 1, 20, 3}},
        {FlangerParams{50, 10, 0, 0.25f, 1, 1, 2}, FlangerParams{100, 100, 90, 8, 1, 4, 2}},
        {EchoParams{0, 0, 100, 100, 0}, EchoParams{100, 80, 1500, 30, 1}},
        {DistortionParams{-60, 0, 2400, 2400, 8000}, DistortionParams{0, 90, 500, 100, 200}},
        {CompressorParams{-20, 10, 200, 0, 1, 0}, CompressorParams{20, 10, 200, -60, 100, 4}},
        {ParamEqParams{80, 1, -15}, ParamEqParams{200, 36, 15}},
        {WavesReverbParams{-96, -96, 100, 0.5f}, WavesReverbParams{0, 0, 3000, 0.5f}},
    };
    for (const Case& c : cases) {
        auto e = makeEffect(classOf(c.before), kRate);
        e->setParams(c.before);
        e->reset();
        Audio a = sine(kRate, 110, 0.1f);
        const int half = kRate / 2;
        e->process(a.data(), half);
        double before = 0;
        for (int i = half / 2; i < half; ++i) before = std::max(before, static_cast<double>(std::fabs(a[2 * i] - a[2 * i - 2])));
        e->setParams(c.after);
        e->process(a.data() + 2 * half, half);
        double worst = 0, louder = peakOf(a, 0, half, kRate) / std::max(1e-9, peakOf(a, 0, half / 2, half));
        for (int i = half; i < half + kRate / 10; ++i) worst = std::max(worst, static_cast<double>(std::fabs(a[2 * i] - a[2 * i - 2])));
        // A step is a click when it is far beyond the tone's own slope at the new level.
        const double slope = 2 * kPi * 110 / kRate * 0.1 * std::max(1.0, louder * peakOf(a, 0, half / 2, half) / 0.1);
        EXPECT_LT(worst, std::max(4 * before, 4 * slope)) << effectName(classOf(c.before));
    }
}
