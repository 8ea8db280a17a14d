// velaro render and velaro-tx, run as a user runs them.

#include <gtest/gtest.h>

#include <sndfile.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "core/base/paths.h"
#include "support/song_bytes.h"

using namespace velaro::testing;

namespace {

int runQuiet(const std::string& cmd) {
    int status = std::system((cmd + " >/dev/null 2>&1").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string bin(const char* name) { return std::string(VELARO_BIN_DIR) + "/" + name; }

struct Wave {
    int rate = 0, channels = 0;
    std::vector<float> samples;
    double seconds() const { return rate ? double(samples.size()) / channels / rate : 0; }
    double rms(double from, double to) const {
        size_t a = size_t(from * rate) * channels, b = std::min(samples.size(), size_t(to * rate) * channels);
        double s = 0;
        for (size_t i = a; i < b; ++i) s += double(samples[i]) * samples[i];
        return b > a ? std::sqrt(s / double(b - a)) : 0;
    }
};

Wave load(const std::string& path) {
    Wave w;
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f) return w;
    w.rate = info.samplerate;
    w.channels = info.channels;
    w.samples.resize(size_t(info.frames) * info.channels);
    sf_readf_float(f, w.samples.data(), info.frames);
    EXPECT_EQ(info.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    sf_close(f);
    return w;
}

}  // namespace

TEST(RenderCommand, SongLengthAtTempo64AndHalfAt127) {
    const std::string out1 = writeTemp("render64.wav", ""), out2 = writeTemp("render127.wav", "");
    ASSERT_EQ(runQuiet(bin("velaro") + " render " + VELARO_DEMO_SONG + " -o " + out1), 0);
    ASSERT_EQ(runQuiet(bin("velaro") + " render " + VELARO_DEMO_SONG + " -o " + out2 + " --tempo 127 --rate 22050"), 0);
    Wave normal = load(out1), fast = load(out2);
    EXPECT_EQ(normal.rate, 44100);
    EXPECT_EQ(normal.channels, 2);
    EXPECT_EQ(fast.rate, 22050);
    // The demo is 36 bars of 3/4 at 80 BPM: 81 s, and the last chord rings on for a while.
    EXPECT_GT(normal.seconds(), 81.0);
    EXPECT_LT(normal.seconds(), 81.0 + 5.1);
    EXPECT_GT(fast.seconds(), 81.0 / 2 - 0.3);
    EXPECT_LT(fast.seconds(), 81.0 / 2 + 5.1);
    EXPECT_GT(normal.rms(1, 80), 0.02);
    EXPECT_GT(fast.rms(1, 40), 0.02);
}

TEST(RenderCommand, VolumeAndTransposeChangeTheSound) {
    const std::string loud = writeTemp("loud.wav", ""), soft = writeTemp("soft.wav", "");
    const std::string cut = " -o ", song = std::string(" ") + VELARO_DEMO_SONG;
    ASSERT_EQ(runQuiet(bin("velaro") + " render" + song + cut + loud + " --volume 50 --transpose 2"), 0);
    ASSERT_EQ(runQuiet(bin("velaro") + " render" + song + cut + soft + " --volume 100"), 0);
    // 50 is the loudest place of the slider: 21 dB above 100.
    EXPECT_GT(load(loud).rms(5, 60), 5 * load(soft).rms(5, 60));
}

TEST(RenderCommand, BadInputIsRefusedWithoutAWave) {
    EXPECT_EQ(runQuiet(bin("velaro") + " render"), 2);
    EXPECT_EQ(runQuiet(bin("velaro") + " render x.kar"), 2);  // no -o
    EXPECT_EQ(runQuiet(bin("velaro") + " render x.kar -o y.wav --tempo 200"), 2);
    EXPECT_EQ(runQuiet(bin("velaro") + " render x.kar -o y.wav --transpose 11"), 2);
    EXPECT_EQ(runQuiet(bin("velaro") + " render /nonexistent.kar -o y.wav"), 1);
    const std::string junk = writeTemp("junk-render.kar", "this is not a song");
    const std::string out = velaro::tempFolder() + "/never.wav";
    EXPECT_EQ(runQuiet(bin("velaro") + " render " + junk + " -o " + out), 1);
    EXPECT_FALSE(velaro::fileExists(out));
}

TEST(Converter, LyricEventsBecomeAWordsTrack) {
    // Format 0 with lyric events; line ends as CR at the end of a syllable.
    std::string track = bytes({0x00}) + tempoEvent(500000) + bytes({0x00, 0xC0, 0x05});
    const char* lyrics[] = {"Twin", "kle \r", "lit", "tle ", "star\r"};
    for (const char* l : lyrics) track += bytes({0x00, 0x90, 0x3C, 0x40}) + bytes({0x00}) + meta(0x05, l) + vlq(96) +
                                          bytes({0x80, 0x3C, 0x40});
    track += bytes({0x00, 0xFF, 0x2F, 0x00});
    const std::string in = writeTemp("lyrics0.mid", smfHeader(0, 1, 96) + smfTrack(track));
    const std::string out = writeTemp("converted.kar", "");
    ASSERT_EQ(runQuiet(bin("velaro-tx") + " " + in + " " + out), 0);

    FILE* p = popen((bin("velaro") + " info " + out + " --json").c_str(), "r");
    std::string json;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) json.append(buf, n);
    pclose(p);
    EXPECT_NE(json.find("\"smfFormat\":1,\"smfTracks\":2"), std::string::npos);
    EXPECT_NE(json.find("\"lines\":[\"\",\"Twinkle \",\"little star\"]"), std::string::npos) << json;
    EXPECT_NE(json.find("\"channelNo\":1"), std::string::npos);  // the music is kept

    EXPECT_EQ(runQuiet(bin("velaro-tx") + " /nonexistent.mid " + out), 1);
    EXPECT_EQ(runQuiet(bin("velaro-tx")), 2);
}
