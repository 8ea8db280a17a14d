// The backing player's streams on the engine, rendered offline: the vocal cut
// takes the centre out and leaves the sides, each equaliser band gives its
// gain at its centre, the bass stream is a low-pass at its design values, a
// mono file and a module play, the two streams of a backing stay on the same
// sample for five minutes, and key and speed change one without the other.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <vector>

#include "core/base/paths.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "engine/audio_engine.h"
#include "engine/backing_streams.h"
#include "engine/engine_platform.h"
#include "support/backing_audio.h"

using namespace velaro;
using namespace velaro::testing;
using platform::StreamId;

namespace {

constexpr int kRate = 44100;

struct Dir {
    std::string path = tempFolder() + "/backing-" + std::to_string(getpid());
    Dir() { std::filesystem::create_directories(path); }
    ~Dir() { std::filesystem::remove_all(path); }
    std::string operator/(const std::string& name) const { return path + "/" + name; }
};

std::string toneFile(const Dir& d, double hz, double seconds = 0.4, double amp = 0.1) {
    const std::string p = d / ("tone-" + std::to_string(int(hz)) + ".wav");
    writeStereo(p, kRate, seconds, [&](double t) {
        const double v = amp * std::sin(kTwoPi * hz * t);
        return std::make_pair(v, v);
    });
    return p;
}

// Everything the engine plays until no stream is left playing.
std::vector<float> renderAll(engine::AudioEngine& audio, engine::BackingStreams& s, int64_t most = 60LL * kRate) {
    std::vector<float> out;
    audio.setSink([&](const float* f, int n) { out.insert(out.end(), f, f + 2 * n); });
    int64_t done = 0;
    while (s.anyActive() && done < most) {
        audio.render(engine::AudioEngine::kOfflineBlock);
        done += engine::AudioEngine::kOfflineBlock;
    }
    audio.render(audio.limiterLatency());
    audio.setSink(nullptr);
    return out;
}

void cut(uint32_t, uint32_t, void* buffer, uint32_t length, void*) {
    record::MainBacking::VocalCutCallback(0, 0, buffer, length, nullptr);
}

// One stream with eight bands at `centres`, all flat but `band` at `gainDb`.
double bandGainAt(const Dir& d, const float* centres, int band, double gainDb, double hz) {
    engine::AudioEngine audio(kRate);
    engine::BackingStreams s(audio);
    const StreamId id = s.StreamCreateFile(false, toneFile(d, hz), 0, 0, 0);
    EXPECT_NE(id, 0u);
    for (int i = 0; i < 8; ++i) s.FX_DSP_Set(id, platform::kFxPeakEq, 0);
    for (int i = 0; i < 8; ++i) {
        platform::PeakEqRecord r;
        r.band = i;
        r.rate = kRate;
        r.center = centres[i];
        r.gain = i == band ? static_cast<float>(gainDb) : 0.0f;
        EXPECT_TRUE(s.FX_DSP_SetParameters(id, platform::kFxPeakEq, r));
    }
    s.ChannelPlay(id, false);
    const std::vector<float> out = renderAll(audio, s);
    return levelDb(out, 0, kRate, hz, kRate / 10, kRate / 4) - 20 * std::log10(0.1);
}

}  // namespace

TEST(BackingStreams, TheCutTakesACentreToneOutAndLeavesASideTone) {
    Dir d;
    const std::string file = d / "mix.wav";
    writeStereo(file, kRate, 1.0, [](double t) {
        const double centre = 0.3 * std::sin(kTwoPi * 1000 * t), side = 0.2 * std::sin(kTwoPi * 3000 * t);
        return std::make_pair(centre + side, centre - side);
    });
    engine::AudioEngine audio(kRate);
    engine::BackingStreams s(audio);
    ASSERT_TRUE(s.SetConfig(platform::kConfigFloatDsp, 1));
    const StreamId main = s.StreamCreateFile(false, file, 0, 0, 0);
    ASSERT_NE(main, 0u);
    ASSERT_NE(s.ChannelSetDSP(main, &cut, nullptr, 0), 0u);
    s.ChannelPlay(main, false);
    const std::vector<float> out = renderAll(audio, s);
    ASSERT_GE(out.size(), 2u * kRate - 512);
    const double centreIn = 20 * std::log10(0.3);
    for (int ch = 0; ch < 2; ++ch) {
        EXPECT_LT(levelDb(out, ch, kRate, 1000, 1000, kRate / 2) - centreIn, -60.0);
        // The side comes out as half the difference: its own level, on both sides.
        EXPECT_NEAR(levelDb(out, ch, kRate, 3000, 1000, kRate / 2), 20 * std::log10(0.2), 0.5);
    }
}

namespace {
// Halves 16-bit samples; what it gets tells whether float DSP was on.
void halveShorts(uint32_t, uint32_t, void* buffer, uint32_t length, void* user) {
    auto* s = static_cast<int16_t*>(buffer);
    for (uint32_t i = 0; i < length / 2; ++i) s[i] = static_cast<int16_t>(s[i] / 2);
    *static_cast<uint32_t*>(user) = length;
}
}  // namespace

TEST(BackingStreams, WithoutFloatDspTheCallbackGetsSixteenBitSamples) {
    Dir d;
    engine::AudioEngine audio(kRate);
    engine::BackingStreams s(audio);
    ASSERT_TRUE(s.SetConfig(platform::kConfigFloatDsp, 0));
    EXPECT_FALSE(s.SetConfig(77, 1));
    const StreamId id = s.StreamCreateFile(false, toneFile(d, 1000, 0.4, 0.4), 0, 0, 0);
    uint32_t length = 0;
    ASSERT_NE(s.ChannelSetDSP(id, &halveShorts, &length, 0), 0u);
    s.ChannelPlay(id, false);
    const std::vector<float> out = renderAll(audio, s);
    EXPECT_EQ(length, 4u * engine::AudioEngine::kOfflineBlock);  // two channels of two bytes
    EXPECT_NEAR(levelDb(out, 0, kRate, 1000, 2000, kRate / 4), 20 * std::log10(0.2), 0.1);
}

TEST(BackingStreams, EachBandGivesItsGainAtItsCentreAndLetsGoFarAway) {
    Dir d;
    for (const float* centres : {record::kMainCentres, record::kLowCentres})
        for (int band = 0; band < 8; ++band) {
            const double c = centres[band];
            // The controls' ends: 0 is +10 dB, 19 is -9 dB.
            const double gain = band % 2 ? 10.0 : -9.0;
            EXPECT_NEAR(bandGainAt(d, centres, band, gain, c), gain, 0.5) << c << " Hz";
            // Six octaves off (the bands are wide, and wider still near the top).
            const double far = c >= 1000 ? c / 64 : c * 64;
            EXPECT_NEAR(bandGainAt(d, centres, band, gain, far), 0.0, 0.5) << c << " Hz band at " << far;
        }
}

TEST(BackingStreams, AMonoFilePlaysOnBothSidesAndAModuleOnlyAsAModule) {
    Dir d;
    const std::string mono = d / "mono.wav";
    writeStereo(mono, 22050, 0.5, [](double t) { return std::make_pair(0.25 * std::sin(kTwoPi * 500 * t), 0.0); }, 1);
    const std::string mod = d / "tiny.mod";
    ASSERT_TRUE(writeTinyModule(mod));

    engine::AudioEngine audio(kRate);
    engine::BackingStreams s(audio);
    const StreamId m = s.StreamCreateFile(false, mono, 0, 0, 0);
    platform::ChannelInfo info;
    ASSERT_TRUE(s.ChannelGetInfo(m, info));
    EXPECT_EQ(info.chans, 1);
    EXPECT_EQ(info.freq, kRate);
    s.ChannelPlay(m, false);
    std::vector<float> out = renderAll(audio, s);
    // Half a second at 22050 Hz is half a second here.
    EXPECT_NEAR(double(out.size()) / 2, kRate / 2, 300);
    EXPECT_NEAR(levelDb(out, 0, kRate, 500, 2000, kRate / 4), 20 * std::log10(0.25), 0.5);
    EXPECT_NEAR(levelDb(out, 1, kRate, 500, 2000, kRate / 4), 20 * std::log10(0.25), 0.5);
    EXPECT_TRUE(s.StreamFree(m));
    EXPECT_FALSE(s.MusicFree(m));

    EXPECT_EQ(s.StreamCreateFile(false, mod, 0, 0, 0), 0u);
    EXPECT_EQ(s.ErrorGetCode(), 41);
    const StreamId tune = s.MusicLoad(false, mod, 0, 0, platform::kMusicRamp, 0);
    ASSERT_NE(tune, 0u);
    EXPECT_FALSE(s.StreamFree(tune));
    s.ChannelPlay(tune, false);
    out = renderAll(audio, s);
    float peak = 0;
    for (float v : out) peak = std::max(peak, std::fabs(v));
    EXPECT_GT(peak, 0.05f);
    EXPECT_TRUE(s.MusicFree(tune));

    EXPECT_EQ(s.StreamCreateFile(false, d / "none.mp3", 0, 0, 0), 0u);
    EXPECT_EQ(s.ErrorGetCode(), 2);
    EXPECT_FALSE(s.ChannelPlay(999, false));
    EXPECT_EQ(s.ErrorGetCode(), engine::BackingStreams::kErrHandle);
}

TEST(BackingStreams, TheTwoStreamsOfABackingStayOnTheSameSampleForFiveMinutes) {
    Dir d;
    const std::string file = d / "long.wav";
    // At 8 kHz so the file stays small; both streams go through the same rate conversion.
    writeStereo(file, 8000, 300.0, [](double t) {
        const double v = 0.2 * std::sin(kTwoPi * 311 * t + 3 * std::sin(kTwoPi * 0.7 * t)) + 0.1 * std::sin(kTwoPi * 1733 * t);
        return std::make_pair(v, -0.5 * v);
    });
    engine::AudioEngine audio(kRate);
    engine::BackingStreams s(audio);
    const StreamId a = s.StreamCreateFile(false, file, 0, 0, 0);
    const StreamId b = s.StreamCreateFile(false, file, 0, 0, 0);
    ASSERT_TRUE(a && b);
    // b plays upside down: where the two line up, nothing is heard.
    ASSERT_TRUE(s.FX_DSP_Set(b, platform::kFxVolume, 1));
    ASSERT_TRUE(s.FX_DSP_SetParameters(b, platform::kFxVolume, platform::VolumeRecord{-1.0f, -1.0f}));
    s.ChannelPlay(a, false);
    std::vector<float> first;
    audio.setSink([&](const float* f, int n) { first.insert(first.end(), f, f + 2 * n); });
    audio.render(10 * 256 + 77);  // b comes in late, and must join on a's sample
    s.ChannelPlay(b, false);
    float worst = 0;
    int64_t frames = 0;
    audio.setSink([&](const float* f, int n) {
        for (int i = 0; i < 2 * n; ++i) worst = std::max(worst, std::fabs(f[i]));
        frames += n;
    });
    while (s.anyActive()) audio.render(4096);
    float firstPeak = 0;
    for (float v : first) firstPeak = std::max(firstPeak, std::fabs(v));
    EXPECT_GT(firstPeak, 0.1f);  // a alone was heard
    EXPECT_LT(worst, 1e-6f);
    EXPECT_NEAR(double(frames + first.size() / 2) / kRate, 300.0, 0.1);
    EXPECT_EQ(s.ChannelIsActive(a), 0);
    EXPECT_EQ(s.ChannelIsActive(b), 0);
}

TEST(BackingStreams, KeyChangesThePitchNotTheLengthAndSpeedTheLengthNotThePitch) {
    Dir d;
    const std::string file = toneFile(d, 440, 4.0, 0.3);
    auto run = [&](int key, int speed) {
        engine::AudioEngine audio(kRate);
        engine::BackingStreams s(audio);
        const StreamId id = s.StreamCreateFile(false, file, 0, 0, 0);
        EXPECT_TRUE(s.ChannelSetShift(id, key, speed));
        s.ChannelPlay(id, false);
        std::vector<float> out = renderAll(audio, s);
        const double seconds = s.ChannelSeconds(id);
        return std::make_pair(out, seconds);
    };
    const auto [up, upSeconds] = run(2, 100);
    EXPECT_NEAR(peakHz(up, kRate, 480, 510), 493.88, 1.0);
    EXPECT_NEAR(upSeconds, 4.0, 0.04);
    const auto [slow, slowSeconds] = run(0, 80);
    EXPECT_NEAR(slowSeconds / 4.0, 1.25, 0.0125);
    EXPECT_NEAR(peakHz(slow, kRate, 425, 455), 440.0, 1.0);

    engine::AudioEngine audio(kRate);
    engine::BackingStreams s(audio);
    const StreamId id = s.StreamCreateFile(false, file, 0, 0, 0);
    EXPECT_FALSE(s.ChannelSetShift(id, 13, 100));
    EXPECT_FALSE(s.ChannelSetShift(id, 0, 49));
}

TEST(BackingStreams, TheWindowsBassStreamIsALowPassAndSlider3ItsLevel) {
    Dir d;
    const std::string file = d / "centre.wav";
    const double tones[] = {40, 200, 1500, 5000};
    writeStereo(file, kRate, 2.0, [&](double t) {
        double v = 0;
        for (double hz : tones) v += 0.05 * std::sin(kTwoPi * hz * t);
        return std::make_pair(v, v);
    });
    ui::Headless ui;
    engine::EnginePlatform ep(kRate);
    song::frmMain f(ui.rt, ep.get());
    f.setSongPath(file);
    f.backing.Chkrem.setValue(1);
    f.recording.Cmdplw_Click();
    ASSERT_EQ(f.backing.Slider3.value(), 8);
    // Everything in the file sits in the centre: the main stream cuts it all,
    // and what is heard is the bass stream alone.
    std::vector<float> out;
    ep.audio().setSink([&](const float* fr, int n) { out.insert(out.end(), fr, fr + 2 * n); });
    ep.audio().render(kRate);
    f.backing.Slider3.setValue(0);
    ep.audio().render(kRate / 2);
    const double in = 20 * std::log10(0.05);
    double at[4];
    for (int i = 0; i < 4; ++i) at[i] = levelDb(out, 0, kRate, tones[i], kRate / 4, kRate / 2) - in;
    EXPECT_GT(at[0], at[1]);
    EXPECT_GT(at[1], at[2]);
    EXPECT_GT(at[2], at[3]);
    EXPECT_GT(at[0] - at[3], 30.0);
    // Slider3 from 8 to 0: the level from two tenths to one, 14 dB.
    const double loud = levelDb(out, 0, kRate, 40, kRate + kRate / 8, kRate / 4) - in;
    EXPECT_NEAR(loud - at[0], 20 * std::log10(5.0), 0.5);
    f.recording.cmdstw_Click();
}
