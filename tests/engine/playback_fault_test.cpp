// The players when the file under them misbehaves: a 2 GB wave (sparse, made
// here) plays, and seeks where the player can, without being read into memory; a file cut short
// while it plays ends where its data ends; a deleted one plays on to its end.
// The tag editor's player and the backing player, offline and with their
// decoding workers, and a disc image's track.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "core/base/paths.h"
#include "engine/audio_engine.h"
#include "engine/backing_streams.h"
#include "engine/cd_drives.h"
#include "engine/media_graph_engine.h"
#include "engine/mp3_encoder.h"
#include "engine/normaliser.h"
#include "support/backing_audio.h"
#include "support/cd_image.h"

using namespace velaro;
using namespace velaro::testing;

namespace {

constexpr int kRate = 44100;

struct Dir {
    std::string path = tempFolder() + "/playback-fault-" + std::to_string(getpid());
    Dir() { std::filesystem::create_directories(path); }
    ~Dir() { std::filesystem::remove_all(path); }
    std::string operator/(const std::string& name) const { return path + "/" + name; }
};

// Memory that counts as flat: a file's whole sound would be gigabytes. The
// thread sanitizer's shadow memory multiplies what a ring costs.
#if defined(__SANITIZE_THREAD__)
constexpr long kFlatKb = 8 * 64 * 1024;
#else
constexpr long kFlatKb = 64 * 1024;
#endif

long residentKb() {
    std::ifstream in("/proc/self/status");
    std::string line;
    while (std::getline(in, line))
        if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
    return 0;
}

void put32(std::string& s, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) s[at + i] = char((v >> (8 * i)) & 0xFF);
}

// A 16-bit stereo wave of `dataBytes` whose first and last seconds hold a
// tone and whose middle is a hole in the file (silence, no disk).
void writeSparseWave(const std::string& path, uint32_t dataBytes) {
    std::string h = "RIFF----WAVEfmt ----" + std::string(16, '\0') + "data----";
    put32(h, 4, 36 + dataBytes);
    put32(h, 16, 16);
    h[20] = 1, h[22] = 2;
    put32(h, 24, kRate);
    put32(h, 28, kRate * 4);
    h[32] = 4, h[34] = 16;
    put32(h, 40, dataBytes);
    std::string tone(size_t(kRate) * 4, '\0');
    for (int i = 0; i < kRate; ++i) {
        const auto v = int16_t(8000 * std::sin(kTwoPi * 440.0 * i / kRate));
        for (int c = 0; c < 2; ++c) tone[size_t(i) * 4 + c * 2] = char(v & 0xFF), tone[size_t(i) * 4 + c * 2 + 1] = char((v >> 8) & 0xFF);
    }
    const int fd = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::pwrite(fd, h.data(), h.size(), 0), ssize_t(h.size()));
    ASSERT_EQ(::pwrite(fd, tone.data(), tone.size(), 44), ssize_t(tone.size()));
    ASSERT_EQ(::pwrite(fd, tone.data(), tone.size(), off_t(44) + dataBytes - off_t(tone.size())), ssize_t(tone.size()));
    ::close(fd);
}

constexpr uint32_t kTwoGb = 2000000000u;  // whole frames: a multiple of 4

void writeTone(const std::string& path, double seconds) {
    writeStereo(path, kRate, seconds, [](double t) {
        const double v = 0.3 * std::sin(kTwoPi * 330 * t);
        return std::make_pair(v, v);
    });
}

double peakOf(engine::AudioEngine& audio, int64_t frames) {
    double peak = 0;
    audio.setSink([&](const float* f, int n) {
        for (int i = 0; i < n * 2; ++i) peak = std::max(peak, double(std::fabs(f[i])));
    });
    audio.render(frames);
    audio.setSink(nullptr);
    return peak;
}

// Plays the tag editor's player until it reaches its end (or gives up).
bool playToEnd(engine::AudioEngine& audio, engine::EngineMediaGraph& g) {
    for (int i = 0; i < 20000; ++i) {
        if (g.CurrentPosition() >= g.Duration()) return true;
        const double was = g.CurrentPosition();
        audio.render(4800);
        if (g.CurrentPosition() == was) usleep(1000);  // the worker is behind
    }
    return false;
}

}  // namespace

TEST(HugeWave, TheEditorsPlayerStreamsItAndSeeksToItsEnd) {
    Dir d;
    const std::string wav = d / "two-gigabytes.wav";
    writeSparseWave(wav, kTwoGb);
    for (bool ahead : {false, true}) {
        const long before = residentKb();
        engine::AudioEngine audio(48000);  // another rate, so the resampler runs too
        engine::EngineMediaGraph g(audio, ahead);
        ASSERT_TRUE(g.RenderFile(wav)) << g.error();
        EXPECT_NEAR(g.Duration(), kTwoGb / 4.0 / kRate, 0.01);
        g.Run();
        for (int i = 0; i < 50 && g.CurrentPosition() < 0.5; ++i) peakOf(audio, 4800), usleep(ahead ? 2000 : 0);
        EXPECT_GT(g.CurrentPosition(), 0.4);
        // Away and straight back, before the decoder can have followed: play goes on from there.
        g.SetCurrentPosition(5000);
        g.SetCurrentPosition(0.2);
        for (int i = 0; i < 200 && g.CurrentPosition() < 0.6; ++i) peakOf(audio, 4800), usleep(ahead ? 2000 : 0);
        EXPECT_GE(g.CurrentPosition(), 0.6) << "ahead " << ahead;
        g.SetCurrentPosition(g.Duration() - 0.9);
        double peak = 0;
        for (int i = 0; i < 50 && peak == 0; ++i) peak = peakOf(audio, 4800), usleep(ahead ? 2000 : 0);
        EXPECT_GT(peak, 0.1) << "the tone at the end after a seek";
        EXPECT_TRUE(playToEnd(audio, g));
        EXPECT_LT(residentKb() - before, kFlatKb) << "ahead " << ahead;
        g.Release();
    }
}

TEST(HugeWave, TheBackingPlayerStreamsIt) {
    Dir d;
    const std::string wav = d / "two-gigabytes.wav";
    writeSparseWave(wav, kTwoGb);
    const long before = residentKb();
    engine::AudioEngine audio(kRate);
    engine::BackingStreams s(audio);
    const auto a = s.StreamCreateFile(false, wav, 0, 0, 0);
    ASSERT_TRUE(a);
    EXPECT_NEAR(s.ChannelLengthSeconds(a), kTwoGb / 4.0 / kRate, 0.01);
    s.ChannelPlay(a, false);
    EXPECT_GT(peakOf(audio, kRate), 0.05);
    EXPECT_EQ(peakOf(audio, 10 * kRate), 0.0);  // into the hole
    EXPECT_EQ(s.ChannelIsActive(a), 1);
    EXPECT_NEAR(s.ChannelSeconds(a), 11.0, 0.1);
    EXPECT_LT(residentKb() - before, kFlatKb);
    s.StreamFree(a);
}

// A song is read whole at once and plays on; a long file streams, so a cut
// ends it where its data ends.
// The encoder and the normaliser read their input block by block: stopped a
// little way in, they have used no more memory than a short file needs, and
// the stopped normaliser leaves the old target as it was.
TEST(HugeWave, TheEncoderAndTheNormaliserReadItAsAStream) {
    Dir d;
    const std::string wav = d / "two-gigabytes.wav";
    writeSparseWave(wav, kTwoGb);
    const long before = residentKb();

    engine::LameMp3Encoder encoder;
    platform::Mp3Settings s;
    s.encoderQuality = 0;
    s.encoderInputFile = wav;
    s.encoderOutputFile = d / "part.mp3";
    std::atomic<bool> stop{false};
    double reached = 0;
    const auto stopEarly = [&](double p) {
        reached = std::max(reached, p);
        if (p >= 0.2) stop.store(true);
    };
    EXPECT_EQ(encoder.Encode(s, stop, stopEarly), "");
    EXPECT_LT(reached, 100.0);
    EXPECT_GT(std::filesystem::file_size(s.encoderOutputFile), 100000u);  // a shorter, complete file
    EXPECT_LT(residentKb() - before, kFlatKb);

    engine::SndfileNormaliser normaliser;
    const std::string target = d / "loud.wav";
    writeTone(target, 0.1);
    const auto old = std::filesystem::file_size(target);
    stop.store(false);
    reached = 0;
    normaliser.Normalize(wav, target, 90, stop, stopEarly);
    EXPECT_LT(reached, 100.0);
    EXPECT_EQ(std::filesystem::file_size(target), old);
    EXPECT_LT(residentKb() - before, kFlatKb);
}

TEST(FileCutWhilePlaying, TheEditorsPlayerEndsWhereTheDataEnds) {
    Dir d;
    const std::string wav = d / "cut.wav";
    writeSparseWave(wav, kTwoGb);
    engine::AudioEngine audio(kRate);
    engine::EngineMediaGraph g(audio);
    ASSERT_TRUE(g.RenderFile(wav));
    g.Run();
    for (int i = 0; i < 200 && g.CurrentPosition() < 0.5; ++i) audio.render(4410), usleep(2000);
    ASSERT_EQ(::truncate(wav.c_str(), 44 + 300LL * kRate * 4), 0);  // five minutes left
    EXPECT_TRUE(playToEnd(audio, g));
    EXPECT_LE(g.Duration(), 300.0 + 1e-9);
    // Seeking past what is left ends there too, and does not wait for frames that never come.
    g.SetCurrentPosition(1000.0);
    EXPECT_TRUE(playToEnd(audio, g));
    g.Release();
    // Opened again, the cut file is what it is now.
    ASSERT_TRUE(g.RenderFile(wav));
    EXPECT_NEAR(g.Duration(), 300.0, 0.01);
    g.Release();

    // An MP3 longer than the ring, cut to a minute: mpg123 ends at the cut.
    const std::string tone = d / "long.wav";
    writeTone(tone, 240.0);
    const std::string mp3 = d / "long.mp3";
    engine::LameMp3Encoder encoder;
    platform::Mp3Settings s;
    s.encoderQuality = 0;
    s.encoderInputFile = tone;
    s.encoderOutputFile = mp3;
    std::atomic<bool> stop{false};
    ASSERT_EQ(encoder.Encode(s, stop, nullptr), "");
    ASSERT_TRUE(g.RenderFile(mp3));
    EXPECT_NEAR(g.Duration(), 240.0, 0.1);
    g.Run();
    for (int i = 0; i < 200 && g.CurrentPosition() < 0.5; ++i) audio.render(4410), usleep(2000);
    ASSERT_EQ(::truncate(mp3.c_str(), off_t(std::filesystem::file_size(mp3) / 4)), 0);
    EXPECT_TRUE(playToEnd(audio, g));
    EXPECT_LT(g.Duration(), 239.0);
}

TEST(FileCutWhilePlaying, TheEditorsPlayerPlaysADeletedFileToItsEnd) {
    Dir d;
    const std::string wav = d / "deleted.wav";
    writeTone(wav, 12.0);
    engine::AudioEngine audio(kRate);
    engine::EngineMediaGraph g(audio);
    ASSERT_TRUE(g.RenderFile(wav));
    g.Run();
    for (int i = 0; i < 200 && g.CurrentPosition() < 0.5; ++i) audio.render(4410), usleep(2000);
    ASSERT_EQ(::unlink(wav.c_str()), 0);
    EXPECT_TRUE(playToEnd(audio, g));
    EXPECT_NEAR(g.Duration(), 12.0, 0.01);
}

TEST(FileCutWhilePlaying, TheBackingPlayerEndsOrPlaysOn) {
    Dir d;
    const std::string tone = d / "tone.wav";
    writeTone(tone, 20.0);
    const std::string mp3 = d / "tone.mp3";
    {
        engine::LameMp3Encoder encoder;
        platform::Mp3Settings s;
        s.encoderQuality = 0;
        s.encoderInputFile = tone;
        s.encoderOutputFile = mp3;
        std::atomic<bool> stop{false};
        ASSERT_EQ(encoder.Encode(s, stop, nullptr), "");
    }
    for (int k = 0; k < 4; ++k) {
        const bool deleted = k % 2, isMp3 = k >= 2;
        const std::string wav = d / ((deleted ? "deleted" : "cut") + std::string(isMp3 ? ".mp3" : ".wav"));
        std::filesystem::copy_file(isMp3 ? mp3 : tone, wav);
        const int64_t keep = isMp3 ? int64_t(std::filesystem::file_size(mp3) / 20) : 44 + kRate * 4;  // about a second
        engine::AudioEngine audio(kRate);
        engine::BackingStreams s(audio);
        const auto a = s.StreamCreateFile(false, wav, 0, 0, 0);
        ASSERT_TRUE(a);
        s.ChannelPlay(a, false);
        audio.render(kRate / 2);
        if (deleted)
            ASSERT_EQ(::unlink(wav.c_str()), 0);
        else
            ASSERT_EQ(::truncate(wav.c_str(), keep), 0);
        int64_t rendered = 0;
        while (s.ChannelIsActive(a) && rendered < 40LL * kRate) audio.render(4096), rendered += 4096;
        EXPECT_EQ(s.ChannelIsActive(a), 0) << wav;
        if (deleted)
            EXPECT_NEAR(s.ChannelSeconds(a), 20.0, 0.1) << wav;
        else
            EXPECT_LT(rendered, 19LL * kRate);
        s.StreamFree(a);
    }
}

// A disc image cut while its track is read goes on to the track's end at
// most (what is gone reads as the library gives it) and never hangs; a
// deleted one reads to the track's end.
TEST(FileCutWhilePlaying, ADiscImageEndsOrReadsOn) {
    Dir d;
    for (bool deleted : {false, true}) {
        const std::string cue = writeImage(d.path, deleted ? "deleted" : "cut", plainDisc(1, 75 * 20));
        const std::string bin = cue.substr(0, cue.size() - 4) + ".bin";
        engine::EngineCdLibrary cd(nullptr, false);
        cd.addDrive(cue);
        const auto s = cd.StreamCreate(0, 0, platform::kCdStreamDecode);
        ASSERT_NE(s, 0u);
        std::vector<uint8_t> buf(2352 * 25);
        int64_t total = 0;
        for (int i = 0; i < 3; ++i) total += std::max(0, cd.ChannelGetData(s, buf.data(), int(buf.size())));
        if (deleted)
            ASSERT_EQ(::unlink(bin.c_str()), 0);
        else
            ASSERT_EQ(::truncate(bin.c_str(), 2352 * 75 * 2), 0);
        for (int i = 0; i < 1000 && cd.ChannelIsActive(s); ++i) {
            const int got = cd.ChannelGetData(s, buf.data(), int(buf.size()));
            if (got <= 0) break;
            total += got;
        }
        if (deleted)
            EXPECT_EQ(total, 2352LL * 75 * 20);
        else
            EXPECT_LE(total, 2352LL * 75 * 20);
        cd.StreamFree(s);
    }
}
