// How songs sound on the master bus with the system's General MIDI bank: a
// dense fortissimo song never reaches full scale at any volume, the limiter
// leaves a quiet song bit for bit as it was, the last chord rings out, and
// songs of very different density come out at about the same loudness.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/audio_engine.h"
#include "engine/performance_engine.h"
#include "engine/song_loudness.h"
#include "engine/synth.h"
#include "support/song_bytes.h"

using namespace velaro;
using namespace velaro::engine;
using namespace velaro::testing;

namespace {

constexpr int kRate = 44100;

// One piano line, a note a beat.
std::string sparseSong(int beats, int velocity = 80, int volume = 100) {
    std::string t = bytes({0x00}) + tempoEvent(500000) + bytes({0x00, 0xC0, 0, 0x00, 0xB0, 7, volume});
    for (int b = 0; b < beats; ++b) t += bytes({0x00, 0x90, 60 + (b * 5) % 12, velocity}) + vlq(90) + bytes({0x80, 60 + (b * 5) % 12, 0});
    return smfHeader(0, 1, 96) + smfTrack(t + bytes({0x06, 0xFF, 0x2F, 0x00}));
}

// A chord struck on the last beat and let go at the song's very end.
std::string lastChordSong() {
    std::string t = bytes({0x00}) + tempoEvent(500000) + bytes({0x00, 0xC0, 0});
    t += bytes({0x00, 0x90, 48, 100, 0x00, 0x90, 55, 100, 0x00, 0x90, 64, 100});
    t += vlq(192) + bytes({0x80, 48, 0, 0x00, 0x80, 55, 0, 0x00, 0x80, 64, 0});
    return smfHeader(0, 1, 96) + smfTrack(t + bytes({0x00, 0xFF, 0x2F, 0x00}));
}

struct Bus {
    AudioEngine engine{kRate};
    PerformanceEngine perf{engine};
    platform::SegmentId seg = 0;
    std::vector<float> out;

    explicit Bus(const std::string& song) {
        engine.setSink([this](const float* f, int n) { out.insert(out.end(), f, f + 2 * n); });
        seg = perf.LoadSegment(song);
        perf.InitAudio(0, {}, 0, 0);
        perf.Download(seg);
    }
    // Plays the song from its start to its end, then lets it ring out.
    void playThrough() {
        perf.SetStartPoint(seg, 0);
        perf.PlaySegmentEx(seg, 0, 0, 1);
        while (perf.player().playing()) engine.render(AudioEngine::kOfflineBlock);
    }
    double songEndSeconds() const { return perf.segment(seg)->secondsAt(perf.segment(seg)->length); }
};

float peakOf(const std::vector<float>& s, size_t from = 0, size_t to = SIZE_MAX) {
    float p = 0;
    for (size_t i = from; i < std::min(to, s.size()); ++i) p = std::max(p, std::fabs(s[i]));
    return p;
}

double lufsOf(const std::vector<float>& s) {
    LoudnessMeter m(kRate);
    m.add(s.data(), s.size() / 2);
    return m.integrated();
}

bool haveBank() { return !Synth::defaultBankPath().empty(); }

}  // namespace

TEST(MasterBus, ADenseSongNeverReachesFullScaleAtAnyVolume) {
    if (!haveBank()) GTEST_SKIP() << "no General MIDI bank";
    Bus bus(writeTemp("dense.mid", denseSong(2)));
    const float ceiling = std::pow(10.0f, -1.0f / 20.0f);
    // Every place of the window's volume slider, with every channel slider at the top.
    for (int v = 50; v <= 100; ++v) {
        bus.out.clear();
        bus.perf.SetMasterVolume((100 - v) * 42 - 3000);
        bus.playThrough();
        for (int ch = 0; ch < 16; ++ch) bus.perf.SendMIDIPMSG(0, 1, ch, 176, 7, 127);
        bus.engine.render(kRate / 4);
        ASSERT_GT(peakOf(bus.out), 0.1f) << v;
        EXPECT_LE(peakOf(bus.out), ceiling) << "volume slider at " << v;
        EXPECT_LT(std::lround(peakOf(bus.out) * 32767), 32767) << v;
    }
}

TEST(MasterBus, TheLimiterLeavesAQuietSongBitForBit) {
    if (!haveBank()) GTEST_SKIP() << "no General MIDI bank";
    const std::string song = writeTemp("quiet.mid", sparseSong(8, 60, 80));
    Bus with(song), without(song);
    without.engine.setLimiterEnabled(false);
    for (Bus* b : {&with, &without}) {
        b->perf.SetMasterVolume(-3000);  // the slider's quietest place
        b->playThrough();
        b->engine.renderTail();
    }
    ASSERT_GT(peakOf(with.out), 0.001f);
    ASSERT_LT(peakOf(with.out), 0.8f);
    ASSERT_EQ(with.out.size(), without.out.size());
    EXPECT_TRUE(with.out == without.out);
}

TEST(MasterBus, TheLastChordRingsOutAfterTheEnd) {
    if (!haveBank()) GTEST_SKIP() << "no General MIDI bank";
    Bus bus(writeTemp("last-chord.mid", lastChordSong()));
    bus.playThrough();
    const size_t end = bus.out.size();
    const double tail = static_cast<double>(bus.engine.renderTail()) / kRate;
    EXPECT_NEAR(static_cast<double>(end) / 2 / kRate, bus.songEndSeconds(), 0.02);
    // The chord is still clearly heard just after the end, and gone by the tail's end.
    EXPECT_GT(peakOf(bus.out, end, end + 2 * kRate / 10), 0.05f);
    EXPECT_GT(tail, 0.2);
    EXPECT_LE(tail, 5.01);
    EXPECT_TRUE(tail > 4.99 || bus.engine.lastPeak() < 0.001f);
}

TEST(MasterBus, DenseAndSparseSongsPlayAtAboutTheSameLoudness) {
    if (!haveBank()) GTEST_SKIP() << "no General MIDI bank";
    Bus dense(writeTemp("dense-loud.mid", denseSong(16))), sparse(writeTemp("sparse.mid", sparseSong(16)));
    for (Bus* b : {&dense, &sparse}) {
        b->perf.SetMasterVolume(PerformanceEngine::kUnityAttenuation);  // the slider at rest
        b->playThrough();
    }
    const double d = lufsOf(dense.out), s = lufsOf(sparse.out);
    EXPECT_NEAR(d, kReferenceLufs, 2.0);
    EXPECT_NEAR(s, kReferenceLufs, 2.0);
    EXPECT_LT(std::fabs(d - s), 3.0) << "dense " << d << " LUFS, sparse " << s << " LUFS";
    // Left alone, the two are far apart: the levels are what brings them together.
    EXPECT_LT(dense.perf.player().level(), sparse.perf.player().level() / 4);
}
