// The LAME encoder on generated tones, decoded back through libmpg123: the
// length the info frame promises, the bit rate and mode as set, CRC, stop,
// progress, and files that must survive every failure.

#include <gtest/gtest.h>
#include <sndfile.h>

#include <atomic>
#include <cmath>
#include <vector>

#include "core/base/paths.h"
#include "core/tags/mmp3.h"
#include "encode_test_util.h"
#include "engine/mp3_encoder.h"
#include "support/tone_wav.h"

using namespace velaro;
using namespace velaro::testing;

namespace {

struct JobRun {
    std::string error;
    std::vector<double> reports;
};

JobRun encode(const platform::Mp3Settings& s, std::function<bool(double)> stopAt = {}) {
    engine::LameMp3Encoder enc;
    std::atomic<bool> stop{false};
    JobRun r;
    r.error = enc.Encode(s, stop, [&](double p) {
        r.reports.push_back(p);
        if (stopAt && stopAt(p)) stop = true;
    });
    return r;
}

platform::Mp3Settings settingsFor(const std::string& in, const std::string& out) {
    platform::Mp3Settings s;
    s.encoderInputFile = in;
    s.encoderOutputFile = out;
    return s;
}

struct Case {
    const char* name;
    Tone tone;
    int16_t quality, channels;
    int32_t bitRate;
    bool intensity, crc;
    int16_t vbr, vbrQuality;
    long outRate;  // what LAME makes of the rate at this bit rate
    const char* bitRateText;  // "" for VBR
    const char* mode;
};

}  // namespace

TEST(LameEncoder, RoundTripsKeepLengthRateAndMode) {
    const std::string dir = freshFolder();
    const Case cases[] = {
        {"cbr128", {44100, 2, 0, 2.0}, 1, 2, 128000, false, false, 0, 0, 44100, "128 Kbps", "Stereo"},
        {"joint192high", {44100, 2, 0, 1.5}, 2, 2, 192000, true, false, 0, 0, 44100, "192 Kbps", "Joint Stereo"},
        {"monoToStereoCrc", {48000, 1, 0, 1.0}, 0, 2, 64000, false, true, 0, 0, 24000, "64 Kbps", "Stereo"},
        {"stereoToMono", {44100, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_24, 1.0}, 1, 1, 96000, false, false, 0, 0, 44100,
         "96 Kbps", "Mono"},
        {"mpeg2rate", {22050, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 1.0}, 1, 2, 64000, false, false, 0, 0, 22050,
         "64 Kbps", "Stereo"},
        {"vbrBest", {44100, 2, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 2.0}, 1, 2, 128000, true, false, 1, 100, 44100, "",
         "Joint Stereo"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string in = dir + "/" + c.name + ".wav", out = dir + "/" + c.name + ".mp3";
        const int64_t frames = writeTone(in, c.tone);
        platform::Mp3Settings s = settingsFor(in, out);
        s.encoderQuality = c.quality;
        s.encoderChannels = c.channels;
        s.encoderBitRate = c.bitRate;
        s.encoderIntensity = c.intensity;
        s.encoderCrc = c.crc;
        s.encoderVbr = c.vbr;
        s.encoderVbrQuality = c.vbrQuality;
        const JobRun r = encode(s);
        ASSERT_EQ(r.error, "");

        const Decoded d = decodeMp3(out);
        ASSERT_TRUE(d.ok);
        EXPECT_EQ(d.rate, c.outRate);
        EXPECT_EQ(d.channels, c.channels);
        const LameTag tag = lameTagOf(out);
        EXPECT_EQ(tag.info, c.vbr == 0);
        ASSERT_GT(tag.delay, 0);
        // LAME may pick a lower rate for a low bit rate, as its own command does.
        const double expected = static_cast<double>(frames) * d.rate / c.tone.rate;
        EXPECT_LE(std::fabs(static_cast<double>(d.frames) - expected), 1152 + tag.delay);
        EXPECT_GT(d.peak, 0.3);  // the tone is there, not silence

        tags::Mmp3 info;
        const tags::Mp3Info m = info.GetMp3Info(out);
        if (*c.bitRateText) {
            EXPECT_EQ(m.BitRate, c.bitRateText);
        }
        EXPECT_EQ(m.ChannelMode, c.mode);
        EXPECT_EQ(m.Crc, c.crc ? "Yes" : "No");
    }
}

TEST(LameEncoder, ResamplesRatesMp3HasNot) {
    const std::string dir = freshFolder();
    for (int rate : {96000, 8000, 37800}) {
        SCOPED_TRACE(rate);
        const std::string in = dir + "/r.wav", out = dir + "/r.mp3";
        const int64_t frames = writeTone(in, {rate, 2, 0, 1.0});
        ASSERT_EQ(encode(settingsFor(in, out)).error, "");
        const Decoded d = decodeMp3(out);
        ASSERT_TRUE(d.ok);
        const double expected = static_cast<double>(frames) * d.rate / rate;
        EXPECT_LE(std::fabs(d.frames - expected), 1152 + lameTagOf(out).delay + 2);
    }
}

TEST(LameEncoder, ProgressRisesAndEndsWithExactly100) {
    const std::string dir = freshFolder();
    writeTone(dir + "/in.wav", {44100, 2, 0, 5.0});
    const JobRun r = encode(settingsFor(dir + "/in.wav", dir + "/out.mp3"));
    ASSERT_EQ(r.error, "");
    ASSERT_GE(r.reports.size(), 3u);
    EXPECT_EQ(r.reports.front(), 0.0);
    EXPECT_EQ(r.reports.back(), 100.0);
    for (size_t i = 1; i < r.reports.size(); ++i) EXPECT_LT(r.reports[i - 1], r.reports[i]);
    for (size_t i = 0; i + 1 < r.reports.size(); ++i) EXPECT_LT(r.reports[i], 100.0);
}

TEST(LameEncoder, StopLeavesAShorterValidMp3WithoutTheLastReport) {
    const std::string dir = freshFolder();
    const int64_t frames = writeTone(dir + "/in.wav", {44100, 2, 0, 20.0});
    const JobRun r = encode(settingsFor(dir + "/in.wav", dir + "/out.mp3"), [](double p) { return p >= 25; });
    ASSERT_EQ(r.error, "");
    EXPECT_LT(r.reports.back(), 100.0);
    const Decoded d = decodeMp3(dir + "/out.mp3");
    ASSERT_TRUE(d.ok);
    EXPECT_GT(d.frames, frames / 5);
    EXPECT_LT(d.frames, frames / 2);
    EXPECT_GT(lameTagOf(dir + "/out.mp3").delay, 0);
    EXPECT_EQ(filesIn(dir), 2u);
}

TEST(LameEncoder, EmptyWaveGivesATinyValidMp3) {
    const std::string dir = freshFolder();
    writeTone(dir + "/in.wav", {44100, 2, 0, 0.0});
    const JobRun r = encode(settingsFor(dir + "/in.wav", dir + "/out.mp3"));
    ASSERT_EQ(r.error, "");
    EXPECT_EQ(r.reports.back(), 100.0);
    const Decoded d = decodeMp3(dir + "/out.mp3");
    EXPECT_LE(d.frames, 1152);
}

TEST(LameEncoder, EveryFailureKeepsTheOldFileAndLeavesNothingBehind) {
    const std::string dir = freshFolder();
    writeTone(dir + "/in.wav", {44100, 2, 0, 3.0});
    writeWholeFile(dir + "/notes.wav", "these are not samples, only words in a file");
    const std::string old = "an older file that must stay as it is";
    writeWholeFile(dir + "/out.mp3", old);

    struct Failure {
        const char* name;
        std::string in, out;
        int32_t bitRate;
        const char* says;
    };
    const Failure failures[] = {
        {"missing input", dir + "/nope.wav", dir + "/out.mp3", 128000, "No such file or directory"},
        {"not audio", dir + "/notes.wav", dir + "/out.mp3", 128000, "not an audio file"},
        {"refused bit rate", dir + "/in.wav", dir + "/out.mp3", 500000, "refused"},
        {"no bit rate", dir + "/in.wav", dir + "/out.mp3", 0, "refused"},
        {"missing folder", dir + "/in.wav", dir + "/none/out.mp3", 128000, "No such file or directory"},
        {"folder as output", dir + "/in.wav", dir, 128000, "Is a directory"},
    };
    for (const Failure& f : failures) {
        SCOPED_TRACE(f.name);
        platform::Mp3Settings s = settingsFor(f.in, f.out);
        s.encoderBitRate = f.bitRate;
        const JobRun r = encode(s);
        EXPECT_NE(r.error.find(f.says), std::string::npos) << r.error;
        EXPECT_EQ(r.error.find('\n'), std::string::npos);
        EXPECT_TRUE(r.reports.empty() || r.reports.back() < 100.0);
        EXPECT_EQ(readWholeFile(dir + "/out.mp3"), old);
        EXPECT_EQ(filesIn(dir), 3u);
    }

    // A write that fails half way (here: the file may not grow past 20 kB).
    const int code = withFileSizeLimit(20000, [&] {
        const JobRun r = encode(settingsFor(dir + "/in.wav", dir + "/out.mp3"));
        return r.error.find("File too large") != std::string::npos ? 7 : 1;
    });
    EXPECT_EQ(code, 7);
    EXPECT_EQ(readWholeFile(dir + "/out.mp3"), old);
    EXPECT_EQ(filesIn(dir), 3u);
}
