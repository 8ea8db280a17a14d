// The round trip measured with clicks: the onset and pairing arithmetic on
// made-up signals, then for real through a private PulseAudio daemon whose
// null sink's monitor is the input, as a loop cable would be.

#include <gtest/gtest.h>

#include <cstdlib>

#include "engine/audio_engine.h"
#include "engine/latency_probe.h"
#include "support/pulse_daemon.h"

using namespace velaro;

TEST(Latency, ClicksArePairedWithTheirEchoes) {
    std::vector<float> s(10000, 0.0f);
    for (long at : {100L, 2100L, 4100L}) {
        for (int i = 0; i < 20; ++i) s[at + i] = 0.8f;
    }
    s[5000] = 0.1f;  // below the threshold: no click
    for (long i = 6000; i < 10000; ++i) s[i] = (i % 50 < 25) ? 0.8f : -0.8f;  // a steady tone: no clicks
    const auto onsets = engine::clickOnsets(s, 0.3f, 1000);
    EXPECT_EQ(onsets, (std::vector<long>{100, 2100, 4100, 6000}));  // only the tone's start
    // Each output click finds the first input click after it, if it comes soon enough.
    EXPECT_EQ(engine::clickDelays({100, 2100, 4100, 6100}, {400, 2390, 4420, 9000}, 500),
              (std::vector<long>{300, 290, 320}));
    EXPECT_TRUE(engine::clickDelays({100}, {}, 500).empty());
}

class PulseLoop : public velaro::testing::PulseServer {};

TEST_F(PulseLoop, TheRoundTripOfALoopIsMeasured) {
    // The sink's monitor as the input: what is played comes back.
    ASSERT_EQ(std::system("pactl set-default-source null.monitor >/dev/null 2>&1"), 0);
    engine::AudioEngine audio(44100);
    std::string error;
    ASSERT_TRUE(audio.startDevice(error)) << error;
    const engine::LatencyResult r = engine::measureRoundTrip(audio);
    audio.stopDevice();
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_GT(r.ms, 0.0);
    EXPECT_LT(r.ms, 1000.0);
    EXPECT_GE(r.clicksMs.size(), 4u);
    // Clicks of one run agree with each other to within a buffer or two.
    for (double c : r.clicksMs) EXPECT_NEAR(c, r.ms, 15.0);
}

TEST_F(PulseLoop, SilenceOnTheInputIsNoMeasurement) {
    // The sine source is the input: no click ever comes back.
    ASSERT_EQ(std::system("pactl set-default-source sine_input >/dev/null 2>&1"), 0);
    ASSERT_EQ(std::system("pactl suspend-source sine_input 0 >/dev/null 2>&1"), 0);
    engine::AudioEngine audio(44100);
    std::string error;
    ASSERT_TRUE(audio.startDevice(error)) << error;
    const engine::LatencyResult r = engine::measureRoundTrip(audio, 6);
    audio.stopDevice();
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("did not come back"), std::string::npos) << r.error;
}
