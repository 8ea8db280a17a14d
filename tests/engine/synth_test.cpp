// Real FluidSynth: a bank the test writes sounds at the right pitch, the
// performance plays a segment through the engine, a muted channel is silent.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/base/paths.h"
#include "engine/audio_engine.h"
#include "engine/performance_engine.h"
#include "engine/synth.h"
#include "support/song_bytes.h"
#include "support/sound_bank.h"

using namespace velaro;
using namespace velaro::engine;
using namespace velaro::testing;

namespace {

constexpr int kRate = 44100;

float rms(const std::vector<float>& s, size_t from = 0) {
    double sum = 0;
    for (size_t i = from; i < s.size(); ++i) sum += double(s[i]) * s[i];
    return s.size() > from ? static_cast<float>(std::sqrt(sum / double(s.size() - from))) : 0.0f;
}

// A note of key 69 on channel 1 from tick 0, held for four quarters (2 s).
std::string heldNote(int key = 69) {
    return smfHeader(0, 1, 96) + smfTrack(bytes({0x00}) + tempoEvent(500000) + bytes({0x00, 0x90, key, 0x64}) +
                                          vlq(384) + bytes({0x80, key, 0x40, 0x00, 0xFF, 0x2F, 0x00}));
}

struct Rendered : ::testing::Test {
    std::string bank = writeTemp("tiny.sf2", tinySf2());
    AudioEngine engine{kRate};
    std::vector<float> out;
    void SetUp() override {
        engine.setSink([this](const float* f, int n) { out.insert(out.end(), f, f + 2 * n); });
    }
    void seconds(double s) { engine.render(static_cast<int64_t>(s * kRate)); }
    double pitch() { return zeroCrossingFrequency(out.data() + out.size() / 2, out.size() / 4, 2, kRate); }
};

}  // namespace

// Plays `key` alone on a fresh voice and measures the pitch once it settles.
double pitchOf(Synth& s, int key) {
    std::vector<float> l(kRate / 2), r(kRate / 2);
    s.allSoundsOff();
    s.render(l.data(), r.data(), kRate / 2);
    s.noteOn(0, key, 127);
    s.render(l.data(), r.data(), kRate / 2);
    return zeroCrossingFrequency(l.data() + kRate / 4, kRate / 4, 1, kRate);
}

TEST_F(Rendered, TinyBanksSoundAtTheirPitch) {
    Synth sf2(kRate);
    ASSERT_TRUE(sf2.loadBank(bank));
    EXPECT_FALSE(sf2.loadBank(writeTemp("not-a-bank.sf2", "RIFF....junk")));
    EXPECT_NEAR(pitchOf(sf2, 69), 440.0, 2.0);
    EXPECT_NEAR(pitchOf(sf2, 81), 880.0, 4.0);

    Synth dls(kRate);
    ASSERT_TRUE(dls.loadBank(writeTemp("tiny.dls", tinyDls())));
    EXPECT_NEAR(pitchOf(dls, 69), 440.0, 2.0);
    EXPECT_NEAR(pitchOf(dls, 57), 220.0, 1.0);
}

TEST_F(Rendered, PerformancePlaysTransposesAndMutes) {
    PerformanceEngine perf(engine);
    perf.setDefaultBank(bank);
    perf.InitAudio(63, {}, 8, 128);
    const auto seg = perf.LoadSegment(writeTemp("held.mid", heldNote()));
    EXPECT_EQ(perf.GetLength(seg), 4 * 768);
    perf.Download(seg);
    perf.PlaySegmentEx(seg, 16384, 0, perf.GetDefaultAudioPath());
    seconds(0.5);
    EXPECT_GT(rms(out), 0.05f);
    EXPECT_NEAR(pitch(), 440.0, 3.0);
    EXPECT_NEAR(perf.GetSeek(1), 768, 2);
    EXPECT_NEAR(perf.GetTempo(perf.GetMusicTime()), 120.0, 1e-9);

    // Transpose acts on the next note: replay from the start an octave up.
    perf.StopEx(1, 0, 0);
    perf.SendTransposePMSG(0, 1, 0, 12);
    perf.SetStartPoint(seg, 0);
    perf.PlaySegmentEx(seg, 16384, 0, 1);
    out.clear();
    seconds(0.5);
    EXPECT_NEAR(pitch(), 880.0, 5.0);

    // Channel volume 0: the channel is silent.
    perf.SendMIDIPMSG(0, 1, 0, 176, 7, 0);
    seconds(0.2);
    out.clear();
    seconds(0.3);
    EXPECT_LT(rms(out), 1e-4f);

    // Master volume is an attenuation in hundredths of a decibel; the
    // window's resting place is unity.
    perf.SetMasterVolume(PerformanceEngine::kUnityAttenuation);
    EXPECT_FLOAT_EQ(engine.masterGain(), 1.0f);
    perf.SetMasterVolume(PerformanceEngine::kUnityAttenuation - 600);
    EXPECT_NEAR(engine.masterGain(), 0.501f, 0.001f);
}

TEST_F(Rendered, TheSystemBankIsTheDefault) {
    const std::string gm = Synth::defaultBankPath();
    if (gm.empty()) GTEST_SKIP() << "no General MIDI bank installed";
    PerformanceEngine perf(engine);
    perf.InitAudio(63, {}, 8, 128);
    const auto seg = perf.LoadSegment(writeTemp("held-gm.mid", heldNote(60)));
    perf.Download(seg);
    EXPECT_EQ(perf.activeBank(), gm);
    perf.PlaySegmentEx(seg, 0, 0, 1);
    seconds(0.5);
    EXPECT_GT(rms(out), 0.01f);
}
