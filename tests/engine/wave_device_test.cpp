// The wave device on the engine: offline takes are the render plus the
// microphone file, frame for frame; ranges cut and play; saves in every take
// format through the recorder's class; a full disk keeps the old file; the
// meter's capture bytes.

#include <gtest/gtest.h>
#include <sndfile.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "core/base/paths.h"
#include "core/record/meter.h"
#include "core/record/wave_player.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "engine/audio_engine.h"
#include "engine/engine_meter_capture.h"
#include "engine/engine_platform.h"
#include "engine/engine_wave_device.h"
#include "engine/mic_input.h"
#include "engine/take_recorder.h"
#include "engine/wave_reader.h"
#include "support/small_disk.h"
#include "support/tone_wav.h"

using namespace velaro;
using velaro::engine::EngineWaveDevice;
namespace fs = std::filesystem;

namespace {

// A steady two-tone source that can be silenced, standing in for the song.
struct Tones : engine::AudioSource {
    int64_t n = 0;
    bool on = true;
    void process(float* l, float* r, int frames) noexcept override {
        for (int i = 0; i < frames; ++i, ++n) {
            if (!on) continue;
            l[i] += 0.3f * std::sin(0.05f * static_cast<float>(n % 100000));
            r[i] += 0.2f * std::sin(0.031f * static_cast<float>(n % 100000));
        }
    }
};

std::vector<float> rawTake(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
    std::vector<float> f(bytes.size() / sizeof(float));
    std::memcpy(f.data(), bytes.data(), f.size() * sizeof(float));
    return f;
}

std::vector<float> readAll(const std::string& path, int rate) {
    engine::WaveReader r(path, rate);
    std::vector<float> out;
    std::vector<float> buf(2 * 1024);
    int n;
    while ((n = r.read(buf.data(), 1024)) > 0) out.insert(out.end(), buf.begin(), buf.begin() + 2 * n);
    return out;
}

struct WaveDevice : ::testing::Test {
    std::string dir = tempFolder() + "/velaro-wavedev-" + std::to_string(getpid());
    engine::AudioEngine audio{44100};
    Tones tones;
    EngineWaveDevice dev{audio};
    uint32_t id = 0;
    std::vector<float> rendered;

    void SetUp() override {
        fs::create_directories(dir);
        audio.addSource(&tones);
        audio.setSink([this](const float* s, int n) { rendered.insert(rendered.end(), s, s + 2 * n); });
        ASSERT_EQ(dev.Open("", id), 0);
    }
    void TearDown() override { fs::remove_all(dir); }
    std::string path(const std::string& name) const { return dir + "/" + name; }
    // Records `frames` of offline render.
    void record(int64_t frames) {
        ASSERT_EQ(dev.Record(id), 0);
        audio.render(frames);
        ASSERT_EQ(dev.Stop(id), 0);
    }
};

}  // namespace

TEST_F(WaveDevice, AnOfflineTakeIsTheRenderPlusTheMicrophoneFileFrameForFrame) {
    // Same rate, stereo: the file's samples land on exactly the frames they hold.
    velaro::testing::Tone voice{44100, 2, 0, 0.5, 0.25, 700};
    velaro::testing::writeTone(path("voice.wav"), voice);
    audio.mic().setFile(path("voice.wav"));
    record(44100);
    const auto take = rawTake(dev.takePath());
    const auto mic = readAll(path("voice.wav"), 44100);
    // Offline both leave out the limiter's delay, so the take starts with the sources' first frame.
    const size_t lat = static_cast<size_t>(audio.limiterLatency());
    ASSERT_EQ(take.size(), rendered.size());
    ASSERT_EQ(take.size(), 2u * (44100 - lat));
    ASSERT_EQ(mic.size(), 2u * 22050);
    for (size_t i = 0; i < take.size(); ++i) {
        const float expect = rendered[i] + (i < mic.size() ? mic[i] : 0.0f);
        ASSERT_EQ(take[i], expect) << "sample " << i;
    }
    int32_t len = 0;
    EXPECT_EQ(dev.Status(id, platform::kItemLength, len), 0);
    EXPECT_EQ(len, (44100 - lat) * 1000 / 44100);
    const size_t first = 44100 - lat;

    // A second take goes on at the end; the microphone starts again with it, at half level.
    // The render runs on without a gap, so the limiter's delay now holds the last take's sound.
    audio.setMicLevel(50);
    rendered.clear();
    record(4410);
    const auto both = rawTake(dev.takePath());
    ASSERT_EQ(both.size(), 2u * (first + 4410 - lat));
    for (size_t i = 0; i < 2 * (4410 - lat); ++i)
        ASSERT_EQ(both[2 * first + i], rendered[2 * lat + i] + 0.5f * mic[i]) << "sample " << i;

    // With the Micro level at 0 the take is the render alone. (The mute only keeps the
    // singer's voice out of the speakers: the take hears it all the same.)
    audio.setMicMute(true);
    audio.setMicLevel(0);
    rendered.clear();
    record(1000);
    const auto muted = rawTake(dev.takePath());
    const size_t third = first + 4410 - lat;
    for (size_t i = 0; i < 2 * (1000 - lat); ++i) ASSERT_EQ(muted[2 * third + i], rendered[2 * lat + i]);
}

TEST_F(WaveDevice, AMonoMicrophoneAtAnotherRateGoesToBothSidesAtTheEngineRate) {
    velaro::testing::writeTone(path("voice.wav"), velaro::testing::Tone{22050, 1, 0, 0.5, 0.25, 300});
    audio.mic().setFile(path("voice.wav"));
    tones.on = false;
    record(44100);
    const auto take = rawTake(dev.takePath());
    ASSERT_EQ(take.size(), 2u * (44100 - audio.limiterLatency()));
    double peak = 0;
    int64_t last = 0;
    for (size_t i = 0; i < take.size(); i += 2) {
        ASSERT_EQ(take[i], take[i + 1]);
        peak = std::max(peak, std::fabs(double(take[i])));
        if (std::fabs(take[i]) > 0.01) last = static_cast<int64_t>(i / 2);
    }
    EXPECT_NEAR(peak, 0.25, 0.01);
    EXPECT_NEAR(last, 22050, 50);  // half a second of voice, at the engine's rate
}

TEST_F(WaveDevice, DeleteCutsARangeAndPlaySoundsOneThroughTheEngine) {
    record(44100);
    const auto before = rawTake(dev.takePath());
    ASSERT_EQ(dev.Delete(id, 200, 500), 0);
    const int64_t lat = audio.limiterLatency();
    int32_t len = 0;
    dev.Status(id, platform::kItemLength, len);
    EXPECT_EQ(len, (44100 - lat - 13230) * 1000 / 44100);
    const auto after = rawTake(dev.takePath());
    ASSERT_EQ(after.size(), before.size() - 2u * (22050 - 8820));
    EXPECT_TRUE(std::equal(after.begin(), after.begin() + 2 * 8820, before.begin()));
    EXPECT_TRUE(std::equal(after.begin() + 2 * 8820, after.end(), before.begin() + 2 * 22050));

    // Play 100..300 ms: those frames come out of the engine, then silence.
    tones.on = false;
    ASSERT_EQ(dev.Play(id, 100, 300), 0);
    rendered.clear();
    audio.render(4410);
    int32_t pos = 0;
    dev.Status(id, platform::kItemPosition, pos);
    EXPECT_EQ(pos, 200);
    audio.render(44100);
    dev.Status(id, platform::kItemPosition, pos);
    EXPECT_EQ(pos, 300);
    EXPECT_FALSE(dev.playing());
    ASSERT_GE(rendered.size(), 2u * (4410 + 8820));
    // The limiter's delay stands before the play's first frame in the render.
    const size_t d = 2 * static_cast<size_t>(lat);
    for (size_t i = 0; i < 2u * 8820; ++i) ASSERT_FLOAT_EQ(rendered[d + i], after[2 * 4410 + i]) << i;
    for (size_t i = d + 2u * 8820; i < rendered.size(); ++i) ASSERT_EQ(rendered[i], 0.0f) << i;
    ASSERT_EQ(dev.Stop(id), 0);
    dev.Status(id, platform::kItemPosition, pos);
    EXPECT_EQ(pos, 300);
}

TEST_F(WaveDevice, ErrorsHaveTextsAndTheFormatIsCheckedAndKeptForSaving) {
    EXPECT_EQ(dev.Record(id + 1), EngineWaveDevice::kNotOpen);
    platform::WaveFormat f;
    f.bitsPerSample = 24;
    EXPECT_EQ(dev.Set(id, f), EngineWaveDevice::kBadFormat);
    f.bitsPerSample = 8;
    f.channels = 1;
    f.samplesPerSec = 11025;
    EXPECT_EQ(dev.Set(id, f), 0);
    int32_t v = 0;
    dev.Status(id, platform::kItemSamplesPerSec, v);
    EXPECT_EQ(v, 11025);
    audio.mic().setFile(path("missing.wav"));
    EXPECT_EQ(dev.Record(id), EngineWaveDevice::kNoInput);
    EXPECT_NE(dev.ErrorString(EngineWaveDevice::kNoInput).find("missing.wav"), std::string::npos);
    uint32_t other = 0;
    EXPECT_EQ(dev.Open(path("missing.wav"), other), EngineWaveDevice::kCannotOpen);
    for (int e : {263, 275, 276, 277, 278, 279, 280}) EXPECT_FALSE(dev.ErrorString(e).empty());
}

TEST_F(WaveDevice, AFullDiskLeavesTheOldTakeAndSaysWhy) {
    velaro::testing::SmallDisk disk(256);
    if (!disk.mounted()) GTEST_SKIP() << "no tmpfs for this test";
    const std::string target = disk.put("NEWWAVE.WAV", "the old take");
    record(44100 * 2);  // 350 KB at 16-bit stereo: more than the disk holds
    ASSERT_EQ(dev.Save(id, target), EngineWaveDevice::kCannotSave);
    EXPECT_NE(dev.ErrorString(EngineWaveDevice::kCannotSave).find("No space left on device"), std::string::npos)
        << dev.ErrorString(EngineWaveDevice::kCannotSave);
    EXPECT_EQ(velaro::testing::fileBytes(target), "the old take");
    EXPECT_EQ(fs::directory_iterator(disk.dir())->path().filename(), "NEWWAVE.WAV");
}

namespace {
struct Row {
    int rate, channels, bits;
};
}  // namespace

// The recorder's class on the engine: a take recorded on the virtual clock,
// saved in every format of the take-quality list and read back.
TEST(WaveDeviceTakes, EveryTakeQualitySavesAsARiffWaveOfThatFormat) {
    const std::string dir = tempFolder() + "/velaro-quality-" + std::to_string(getpid());
    fs::create_directories(dir);
    setenv("VELARO_HOME", dir.c_str(), 1);
    const Row rows[] = {{11025, 1, 16}, {11025, 2, 8},  {11025, 2, 16}, {22050, 1, 8},
                        {22050, 1, 16}, {22050, 2, 8},  {22050, 2, 16}, {44100, 1, 8},
                        {44100, 1, 16}, {44100, 2, 8},  {44100, 2, 16}};
    for (const Row& row : rows) {
        ui::Headless ui;
        engine::EnginePlatform platform(44100);
        Tones tones;
        platform.audio().addSource(&tones);
        ui.loop.attachAudio([&](int64_t n) { platform.audio().render(n); }, 44100);
        song::frmMain f(ui.rt, platform.get());
        f.setSongPath(dir + "/backing.wav");
        record::WavePlayer w(f);
        w.setChannels(static_cast<uint8_t>(row.channels));
        w.setSamplerate(row.rate);
        w.setBitsPerSample(static_cast<uint8_t>(row.bits));
        EXPECT_EQ(w.AvgBytesPerSecond(), row.rate * row.channels * row.bits / 8);
        ui.loop.at(ui.loop.now() + 500, [&] { f.playStopFlag = true; });
        w.Record();
        w.StopRecording();
        // Half a second, then the second that always follows, less the limiter's delay.
        const int64_t frames = 66150 - platform.audio().limiterLatency();
        EXPECT_EQ(w.length(), frames * 1000 / 44100);
        const std::string file = dir + "/take.wav";
        w.SaveAs(file);

        SF_INFO info{};
        SNDFILE* sf = sf_open(file.c_str(), SFM_READ, &info);
        ASSERT_TRUE(sf) << row.rate << " " << row.channels << " " << row.bits;
        EXPECT_EQ(info.format & SF_FORMAT_TYPEMASK, SF_FORMAT_WAV);
        EXPECT_EQ(info.format & SF_FORMAT_SUBMASK, row.bits == 8 ? SF_FORMAT_PCM_U8 : SF_FORMAT_PCM_16);
        EXPECT_EQ(info.samplerate, row.rate);
        EXPECT_EQ(info.channels, row.channels);
        EXPECT_NEAR(static_cast<double>(info.frames), static_cast<double>(frames) * row.rate / 44100, 2);
        std::vector<float> s(static_cast<size_t>(info.frames * info.channels));
        sf_readf_float(sf, s.data(), info.frames);
        sf_close(sf);
        float peak = 0;
        for (float v : s) peak = std::max(peak, std::fabs(v));
        // Mono is the mean of the two sides; 8 bits hold the tone to about 1%.
        EXPECT_NEAR(peak, row.channels == 1 ? 0.25f : 0.3f, 0.05f) << row.rate << " " << row.channels;
        if (row.bits == 8) {
            // Unsigned samples: the header is 44 bytes and a quiet sample sits near 128.
            std::ifstream in(file, std::ios::binary);
            std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
            ASSERT_GT(bytes.size(), 44u);
            EXPECT_NEAR(static_cast<uint8_t>(bytes[44]), 128, 2);
        }
    }
    unsetenv("VELARO_HOME");
    fs::remove_all(dir);
}

// The meter's capture hands over bytes in the layout the meter reads.
TEST(MeterCaptureBytes, EveryFormatOfTheTableComesOutInItsLayoutAndRate) {
    std::vector<int16_t> lr;
    for (int i = 0; i < 8; ++i) {
        lr.push_back(static_cast<int16_t>(i * 1000));
        lr.push_back(static_cast<int16_t>(-i * 1000));
    }
    std::vector<uint8_t> out;
    engine::EngineMeterCapture::encode(lr.data(), 8, 44100, 0x800, out);
    ASSERT_EQ(out.size(), 32u);
    EXPECT_EQ(out[4] | (out[5] << 8), 1000);
    EXPECT_EQ(static_cast<int16_t>(out[6] | (out[7] << 8)), -1000);
    engine::EngineMeterCapture::encode(lr.data(), 8, 44100, 0x1, out);  // 11 kHz: every fourth frame
    EXPECT_EQ(out, (std::vector<uint8_t>{128, static_cast<uint8_t>(128 + (4000 >> 8))}));
    engine::EngineMeterCapture::encode(lr.data(), 8, 44100, 0x20, out);  // 22 kHz, 8-bit stereo
    ASSERT_EQ(out.size(), 8u);
    EXPECT_EQ(out[3], static_cast<uint8_t>(128 + (-2000 >> 8)));
    engine::EngineMeterCapture::encode(lr.data(), 8, 44100, 0x400, out);  // 44 kHz, 16-bit mono
    EXPECT_EQ(out.size(), 16u);

    // Through the meter: a full-scale square stops the needle, silence rests it.
    std::vector<int16_t> loud(2 * 4096), quiet(2 * 4096, 0);
    for (size_t i = 0; i < loud.size(); ++i) loud[i] = (i / 2) % 2 ? 32767 : -32767;
    for (int32_t format : {0x1, 0x20, 0x40, 0x800}) {
        record::LevelMeter m;
        m.meterFormat = format;
        engine::EngineMeterCapture::encode(loud.data(), 4096, 44100, format, out);
        ASSERT_TRUE(m.meterBuffer(out, 0, static_cast<int32_t>(out.size()) - 1));
        EXPECT_EQ(m.leftLevel, 75) << format;
        engine::EngineMeterCapture::encode(quiet.data(), 4096, 44100, format, out);
        ASSERT_TRUE(m.meterBuffer(out, 0, static_cast<int32_t>(out.size()) - 1));
        EXPECT_EQ(m.leftLevel, 18) << format;
    }
}

// Live, output and input come from two streams; the input heard a round trip
// late is moved earlier by the latency figure, so take[k] = out[k] + in[k + latency].
TEST(LiveTake, TheInputIsShiftedEarlierByTheLatencyAndPairedFrameForFrame) {
    const std::string path = tempFolder() + "/velaro-live-" + std::to_string(getpid()) + ".f32";
    std::remove(path.c_str());
    constexpr int kLatency = 300, kFrames = 20000;
    std::vector<float> out(2 * kFrames), in(2 * (kFrames + kLatency));
    for (size_t i = 0; i < out.size(); ++i) out[i] = static_cast<float>(i % 1000) / 4000.0f;
    for (size_t i = 0; i < in.size(); ++i) in[i] = -static_cast<float>(i % 777) / 8000.0f;
    {
        engine::TakeRecorder::Options opt;
        opt.live = true;
        opt.micSkipFrames = kLatency;
        engine::TakeRecorder rec(path, std::move(opt));
        // The two streams arrive in blocks of their own sizes, the input in bursts.
        size_t o = 0, m = 0;
        while (o < static_cast<size_t>(kFrames)) {
            const int n = static_cast<int>(std::min<size_t>(256, kFrames - o));
            rec.block(out.data() + 2 * o, n);
            o += static_cast<size_t>(n);
            if (o % 2048 < 256 && m < in.size() / 2) {
                const int k = static_cast<int>(std::min<size_t>(1500, in.size() / 2 - m));
                rec.micRing().push(in.data() + 2 * m, k);
                m += static_cast<size_t>(k);
            }
        }
        if (m < in.size() / 2) rec.micRing().push(in.data() + 2 * m, static_cast<int>(in.size() / 2 - m));
        std::string error;
        ASSERT_TRUE(rec.finish(error)) << error;
        EXPECT_EQ(rec.framesWritten(), kFrames);
        EXPECT_EQ(rec.framesDropped(), 0);
    }
    const auto take = rawTake(path);
    ASSERT_EQ(take.size(), out.size());
    for (size_t i = 0; i < take.size(); ++i) ASSERT_EQ(take[i], out[i] + in[2 * kLatency + i]) << "sample " << i;
    std::remove(path.c_str());
}
