// velaro record as a user runs it: a take over the demo song with a voice
// file is the render plus the voice, sample for sample; the digital recorder;
// the take formats; bad input leaves nothing behind.

#include <gtest/gtest.h>

#include <sndfile.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "core/base/paths.h"
#include "support/song_bytes.h"
#include "support/tone_wav.h"

using namespace velaro::testing;

namespace {

struct Out {
    int code;
    std::string text;
};

Out run(const std::string& args) {
    const std::string home = velaro::tempFolder() + "/record-home-" + std::to_string(getpid());
    FILE* p = popen(("VELARO_HOME=" + home + " timeout -k 5 120 " + std::string(VELARO_BIN) + " " + args + " 2>&1").c_str(), "r");
    Out o{-1, {}};
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) o.text.append(buf, n);
    const int st = pclose(p);
    o.code = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return o;
}

struct Pcm {
    SF_INFO info{};
    std::vector<short> s;
};

Pcm load(const std::string& path) {
    Pcm p;
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &p.info);
    if (!f) return p;
    p.s.resize(static_cast<size_t>(p.info.frames * p.info.channels));
    sf_read_short(f, p.s.data(), static_cast<sf_count_t>(p.s.size()));
    sf_close(f);
    return p;
}

}  // namespace

TEST(RecordCommand, ATakeIsTheRenderPlusTheVoiceSampleAligned) {
    const std::string voice = writeTemp("voice.wav", ""), take = writeTemp("take.wav", ""),
                      render = writeTemp("render-for-take.wav", "");
    writeTone(voice, {44100, 1, 0, 3.0, 0.2, 330});
    ASSERT_EQ(run(std::string("render ") + VELARO_DEMO_SONG + " -o " + render).code, 0);
    const Out o = run(std::string("record ") + VELARO_DEMO_SONG + " --mic " + voice + " -o " + take);
    ASSERT_EQ(o.code, 0) << o.text;
    const Pcm t = load(take), r = load(render), v = load(voice);
    ASSERT_EQ(t.info.samplerate, 44100);
    ASSERT_EQ(t.info.channels, 2);
    // The song's 81 s, then the second the device runs on after the end.
    EXPECT_NEAR(double(t.info.frames) / 44100, 82.0, 0.1);
    size_t worst = 0;
    for (size_t i = 0; i < size_t(v.info.frames); ++i)
        for (int c = 0; c < 2; ++c) {
            const int expected = std::clamp(r.s[2 * i + c] + v.s[i], -32768, 32767);
            worst = std::max<size_t>(worst, std::abs(t.s[2 * i + c] - expected));
        }
    EXPECT_LE(worst, 1u);  // rounding only
    for (size_t i = size_t(v.info.frames); i < size_t(std::min(t.info.frames, r.info.frames)); i += 7)
        ASSERT_EQ(t.s[2 * i], r.s[2 * i]) << "frame " << i;
}

TEST(RecordCommand, TheDigitalRecorderInEveryFormat) {
    const std::string voice = writeTemp("voice-digital.wav", "");
    writeTone(voice, {22050, 1, 0, 2.0, 0.5, 440});
    const std::pair<int, std::tuple<int, int, int>> rows[] = {
        {1, {11025, 1, SF_FORMAT_PCM_16}}, {2, {11025, 2, SF_FORMAT_PCM_U8}}, {7, {22050, 2, SF_FORMAT_PCM_16}},
        {8, {44100, 1, SF_FORMAT_PCM_U8}}, {11, {44100, 2, SF_FORMAT_PCM_16}}};
    for (const auto& [row, format] : rows) {
        const std::string take = writeTemp("digital-" + std::to_string(row) + ".wav", "");
        const Out o = run("record --digital --seconds 1.5 --quality " + std::to_string(row) + " --mic " + voice +
                          " -o " + take);
        ASSERT_EQ(o.code, 0) << o.text;
        const Pcm t = load(take);
        EXPECT_EQ(t.info.samplerate, std::get<0>(format)) << row;
        EXPECT_EQ(t.info.channels, std::get<1>(format)) << row;
        EXPECT_EQ(t.info.format & SF_FORMAT_SUBMASK, std::get<2>(format)) << row;
        EXPECT_NEAR(double(t.info.frames) / t.info.samplerate, 2.5, 0.1) << row;  // 1.5 s and the second after
        short peak = 0;
        for (short s : t.s) peak = std::max<short>(peak, std::abs(s));
        EXPECT_GT(peak, 12000) << row;  // the voice is in it
    }
}

TEST(RecordCommand, BadInputLeavesNothingBehind) {
    const std::string take = velaro::tempFolder() + "/never-" + std::to_string(getpid()) + ".wav";
    const std::string voice = writeTemp("voice-ok.wav", "");
    writeTone(voice, {44100, 1, 0, 0.5, 0.2, 440});
    const std::string notAudio = writeTemp("not-audio.wav", "RIFF but not a wave at all");
    EXPECT_EQ(run("record /nonexistent/song.kar -o " + take).code, 1);
    const Out noMic = run(std::string("record ") + VELARO_DEMO_SONG + " --mic /nonexistent/mic.wav -o " + take);
    EXPECT_EQ(noMic.code, 1);
    EXPECT_NE(noMic.text.find("/nonexistent/mic.wav"), std::string::npos);
    EXPECT_EQ(run(std::string("record ") + VELARO_DEMO_SONG + " --mic " + notAudio + " -o " + take).code, 1);
    EXPECT_EQ(run(std::string("record ") + VELARO_DEMO_SONG + " --mic " + voice + " -o /nonexistent/dir/t.wav").code, 1);
    EXPECT_FALSE(velaro::fileExists(take));
    EXPECT_EQ(run("record").code, 2);
    EXPECT_EQ(run(std::string("record ") + VELARO_DEMO_SONG).code, 2);  // no -o
    EXPECT_EQ(run("record --digital -o " + take).code, 2);             // no --seconds
    EXPECT_EQ(run(std::string("record ") + VELARO_DEMO_SONG + " -o x.wav --quality 12").code, 2);
    EXPECT_FALSE(velaro::fileExists(take));
}
