// The effect chain on the song source: each effect at its extremes on a dense
// fortissimo song never reaches full scale through the master bus; a record
// written while the song plays changes the sound at once, without a click;
// an empty chain leaves the song as it was.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/audio_engine.h"
#include "engine/performance_engine.h"
#include "engine/song_effects_engine.h"
#include "engine/synth.h"
#include "support/song_bytes.h"

using namespace velaro;
using namespace velaro::engine;
using namespace velaro::testing;

namespace {

constexpr int kRate = 44100;

struct Bus {
    AudioEngine engine{kRate};
    PerformanceEngine perf{engine};
    SongEffectsEngine effects{perf.player(), kRate};
    platform::SegmentId seg = 0;
    std::vector<float> out;

    explicit Bus(const std::string& song) {
        engine.setSink([this](const float* f, int n) { out.insert(out.end(), f, f + 2 * n); });
        seg = perf.LoadSegment(song);
        perf.InitAudio(0, {}, 0, 0);
        perf.Download(seg);
    }
    void start() {
        perf.SetStartPoint(seg, 0);
        perf.PlaySegmentEx(seg, 0, 0, 1);
        // One level for every bus: two measurements of one song may differ in
        // the last digits, and these tests compare buses sample for sample.
        perf.player().setLevel(0.5f, true);
    }
};

float peakOf(const std::vector<float>& s, size_t from = 0, size_t to = SIZE_MAX) {
    float p = 0;
    for (size_t i = from; i < std::min(to, s.size()); ++i) p = std::max(p, std::fabs(s[i]));
    return p;
}

float biggestStep(const std::vector<float>& s, size_t from, size_t to) {
    float p = 0;
    for (size_t i = std::max<size_t>(from, 2); i < std::min(to, s.size()); ++i) p = std::max(p, std::fabs(s[i] - s[i - 2]));
    return p;
}

bool haveBank() { return !Synth::defaultBankPath().empty(); }

}  // namespace

TEST(SongEffects, NoEffectAtItsExtremesTakesADenseSongToFullScale) {
    if (!haveBank()) GTEST_SKIP() << "no General MIDI bank";
    const std::string song = writeTemp("dense-fx.mid", denseSong(3));
    const float ceiling = std::pow(10.0f, -1.0f / 20.0f);
    const dsp::EffectParams extremes[] = {
        dsp::GargleParams{1000, 1},
        dsp::ChorusParams{100, 100, 99, 10, 0, 20, 4},
        dsp::FlangerParams{100, 100, -99, 10, 1, 4, 0},
        dsp::EchoParams{100, 100, 1, 1, 1},
        dsp::DistortionParams{0, 100, 8000, 8000, 8000},
        dsp::CompressorParams{60, 0.01f, 50, 0, 1, 0},
        dsp::ParamEqParams{1000, 36, 15},
        dsp::WavesReverbParams{0, 0, 3000, 0.999f},
    };
    for (const dsp::EffectParams& p : extremes) {
        Bus bus(song);
        bus.perf.SetMasterVolume(0);  // the loudest the master goes
        bus.effects.setChain({p});
        bus.start();
        bus.engine.render(2 * kRate);
        ASSERT_GT(peakOf(bus.out), 0.1f) << dsp::effectName(dsp::classOf(p));
        EXPECT_LE(peakOf(bus.out), ceiling) << dsp::effectName(dsp::classOf(p));
        EXPECT_LT(std::lround(peakOf(bus.out) * 32767), 32767) << dsp::effectName(dsp::classOf(p));
    }
}

TEST(SongEffects, ARecordWrittenWhilePlayingChangesTheSoundWithoutAClick) {
    if (!haveBank()) GTEST_SKIP() << "no General MIDI bank";
    const std::string song = writeTemp("moved.mid", denseSong(4));
    Bus still(song), moved(song);
    for (Bus* b : {&still, &moved}) {
        b->perf.SetMasterVolume(PerformanceEngine::kUnityAttenuation);
        b->effects.setChain({dsp::EchoParams{30, 20, 300, 300, 0}});
        b->start();
        b->engine.render(kRate);
    }
    ASSERT_EQ(still.out, moved.out);
    // The panel's save: the running effect's record, through the buffer.
    platform::EffectRecord r;
    const auto fx = moved.effects.GetObjectInPath("GUID_DSFX_STANDARD_ECHO", 0, "IID_DirectSoundFXEcho");
    ASSERT_TRUE(moved.effects.GetAllParameters(fx, r));
    std::get<platform::DSFXEcho>(r).fWetDryMix = 90;
    std::get<platform::DSFXEcho>(r).fLeftDelay = 1200;
    ASSERT_TRUE(moved.effects.SetAllParameters(fx, r));
    for (Bus* b : {&still, &moved}) b->engine.render(kRate);
    const size_t at = 2 * kRate;
    EXPECT_GT(peakOf([&] {
                  std::vector<float> d(still.out.size());
                  for (size_t i = 0; i < d.size(); ++i) d[i] = still.out[i] - moved.out[i];
                  return d;
              }(),
              at, at + kRate / 5),
              0.01f);
    // The first 50 ms after the move step no further than the song does anyway.
    EXPECT_LE(biggestStep(moved.out, at, at + kRate / 10), 1.2f * biggestStep(still.out, 0, still.out.size()));
}

TEST(SongEffects, AnEmptyChainLeavesTheSongBitForBitAndOldChainsGoQuietly) {
    if (!haveBank()) GTEST_SKIP() << "no General MIDI bank";
    const std::string song = writeTemp("plain-fx.mid", denseSong(2));
    Bus plain(song), empty(song);
    for (int round = 0; round < 5; ++round) empty.effects.setChain({dsp::EchoParams{}, dsp::WavesReverbParams{}});
    empty.effects.setChain({});
    for (Bus* b : {&plain, &empty}) {
        b->start();
        b->engine.render(kRate);
    }
    EXPECT_TRUE(plain.out == empty.out);
}
