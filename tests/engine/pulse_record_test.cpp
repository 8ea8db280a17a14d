// A take recorded live through a private PulseAudio daemon: the engine plays
// into a null sink and the microphone is the daemon's sine source, which the
// level meter hears too.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <fstream>
#include <thread>
#include <vector>

#include "core/record/meter.h"
#include "engine/audio_engine.h"
#include "engine/engine_meter_capture.h"
#include "engine/engine_wave_device.h"
#include "engine/mic_input.h"
#include "support/pulse_daemon.h"

using namespace velaro;

namespace {

class PulseRecord : public velaro::testing::PulseServer {};

}  // namespace

TEST_F(PulseRecord, ALiveTakeHoldsWhatTheInputHears) {
    engine::AudioEngine audio(44100);
    engine::EngineWaveDevice dev(audio);
    std::string error;
    ASSERT_TRUE(audio.startDevice(error)) << error;
    std::this_thread::sleep_for(std::chrono::milliseconds(500));  // the stream's start-up
    audio.setInputLatencyMs(20);
    // Inputs are chosen by the names the list gives; an unknown name records nothing.
    const auto names = engine::MicInput::deviceNames();
    const auto sine = std::find_if(names.begin(), names.end(), [](auto& n) { return n.find("Sine") != n.npos; });
    ASSERT_NE(sine, names.end()) << "the daemon's sine source is listed";
    uint32_t id = 0;
    ASSERT_EQ(dev.Open("", id), 0);
    audio.setInputDevice("no such microphone");
    ASSERT_EQ(dev.Record(id), engine::EngineWaveDevice::kNoInput);
    EXPECT_NE(dev.ErrorString(engine::EngineWaveDevice::kNoInput).find("no such microphone"), std::string::npos);
    audio.setInputDevice(*sine);
    engine::EngineMeterCapture meter(audio.mic(), 44100);
    ASSERT_TRUE(meter.Start());
    const int rec = dev.Record(id);
    ASSERT_EQ(rec, 0) << dev.ErrorString(rec);
    EXPECT_TRUE(audio.mic().capturing());
    // The daemon's sine source hands its sound over in bursts of about two seconds.
    std::this_thread::sleep_for(std::chrono::milliseconds(3000));
    // The meter hears the same input while the take runs.
    std::vector<uint8_t> heard;
    int32_t start = 0, end = 0;
    ASSERT_TRUE(meter.TakeBuffer(heard, start, end));
    record::LevelMeter needles;
    ASSERT_TRUE(needles.meterBuffer(heard, start, end));
    EXPECT_GT(needles.leftLevel, 30);
    EXPECT_GT(meter.LeftLevel(), 10);
    ASSERT_EQ(dev.Stop(id), 0);
    EXPECT_TRUE(audio.mic().capturing());  // the meter still holds it
    meter.Stop();
    EXPECT_FALSE(audio.mic().capturing());

    std::ifstream in(dev.takePath(), std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
    std::vector<float> take(bytes.size() / sizeof(float));
    std::memcpy(take.data(), bytes.data(), take.size() * sizeof(float));
    EXPECT_GT(take.size(), 2u * 44100) << "a few seconds were recorded";
    float peak = 0;
    for (float v : take) peak = std::max(peak, std::fabs(v));
    EXPECT_GT(peak, 0.05f) << "the sine source reached the take";
    int32_t len = 0;
    dev.Status(id, platform::kItemLength, len);
    EXPECT_GT(len, 1000);

    // With the Micro level at 0 the input no longer reaches the take (nothing plays, so it is
    // silent). The mute alone would not do: it only keeps the voice out of the speakers.
    audio.setMicLevel(0);
    const size_t before = take.size();
    ASSERT_EQ(dev.Record(id), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    ASSERT_EQ(dev.Stop(id), 0);
    std::ifstream again(dev.takePath(), std::ios::binary);
    std::vector<char> all((std::istreambuf_iterator<char>(again)), {});
    ASSERT_GT(all.size() / sizeof(float), before);
    float mutedPeak = 0;
    for (size_t i = before; i < all.size() / sizeof(float); ++i) {
        float v;
        std::memcpy(&v, all.data() + i * sizeof(float), sizeof v);
        mutedPeak = std::max(mutedPeak, std::fabs(v));
    }
    EXPECT_LT(mutedPeak, 0.001f);
    audio.stopDevice();
}
