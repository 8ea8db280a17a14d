// velaro fx and the --effect option, run as a user runs them.

#include <gtest/gtest.h>

#include <sndfile.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "support/song_bytes.h"
#include "support/tone_wav.h"

using namespace velaro::testing;

namespace {

struct Outcome {
    int code = -1;
    std::string err;
};

Outcome runVelaro(const std::string& args) {
    const std::string errFile = writeTemp("fx-stderr.txt", "");
    const int status = std::system((std::string(VELARO_BIN) + " " + args + " >/dev/null 2>" + errFile).c_str());
    Outcome r;
    r.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (FILE* f = std::fopen(errFile.c_str(), "rb")) {
        char buf[4096];
        r.err.assign(buf, std::fread(buf, 1, sizeof buf, f));
        std::fclose(f);
    }
    return r;
}

struct Wave {
    int rate = 0, channels = 0, format = 0;
    std::vector<float> samples;
    int64_t frames() const { return channels ? static_cast<int64_t>(samples.size()) / channels : 0; }
    // The loudest sample of the first channel in [from, to) seconds.
    double peak(double from, double to) const {
        double p = 0;
        for (int64_t i = static_cast<int64_t>(from * rate); i < std::min(frames(), static_cast<int64_t>(to * rate)); ++i)
            p = std::max(p, static_cast<double>(std::fabs(samples[i * channels])));
        return p;
    }
};

Wave load(const std::string& path) {
    Wave w;
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f) return w;
    w.rate = info.samplerate;
    w.channels = info.channels;
    w.format = info.format;
    w.samples.resize(static_cast<size_t>(info.frames) * info.channels);
    sf_readf_float(f, w.samples.data(), info.frames);
    sf_close(f);
    return w;
}

// A 20 ms burst of tone at the start of a second of silence.
std::string burst(const std::string& name, int channels, int format) {
    const std::string path = writeTemp(name, "");
    SF_INFO info{};
    info.samplerate = 44100;
    info.channels = channels;
    info.format = format;
    SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
    std::vector<float> s(44100 * channels, 0.0f);
    for (int i = 0; i < 882; ++i)
        for (int c = 0; c < channels; ++c) s[i * channels + c] = 0.5f * static_cast<float>(std::sin(2 * M_PI * 1000 * i / 44100.0));
    sf_writef_float(f, s.data(), 44100);
    sf_close(f);
    return path;
}

}  // namespace

TEST(FxCommand, EchoRepeatsEvery250msAndTheTailIsKept) {
    const std::string dry = burst("fx-dry.wav", 1, SF_FORMAT_WAV | SF_FORMAT_PCM_24);
    const std::string wet = writeTemp("fx-wet.wav", "");
    const Outcome r = runVelaro("fx " + dry + " -o " + wet + " --effect echo:fLeftDelay=250,fRightDelay=250");
    ASSERT_EQ(r.code, 0) << r.err;
    const Wave w = load(wet);
    EXPECT_EQ(w.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_EQ(w.channels, 1);
    EXPECT_EQ(w.rate, 44100);
    // The burst at half level dry, then repeats a feedback (50 %) apart.
    double last = w.peak(0, 0.05);
    EXPECT_NEAR(last, 0.25, 0.01);
    for (int k = 1; k <= 4; ++k) {
        const double at = 0.25 * k, repeat = w.peak(at, at + 0.03);
        EXPECT_NEAR(repeat, k == 1 ? 0.25 : last * 0.5, 0.01) << "repeat " << k;
        EXPECT_LT(w.peak(at + 0.03, at + 0.24), 0.001) << "between repeats " << k;
        last = repeat;
    }
    // The input's second and the repeats down to -90 dBFS, well past the input's end.
    EXPECT_GT(w.frames(), 44100 + 2 * 44100);
    EXPECT_LT(w.frames(), 44100 + 10 * 44100);
}

TEST(FxCommand, StereoFloatInputKeepsItsChannelsAndRate) {
    const std::string dry = writeTemp("fx-float.wav", "");
    Tone t;
    t.rate = 32000;
    t.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    t.seconds = 0.5;
    writeTone(dry, t);
    const std::string wet = writeTemp("fx-float-out.wav", "");
    const Outcome r = runVelaro("fx " + dry + " -o " + wet + " --effect ParamEq:fCenter=440,fGain=-15 --effect reverb:fReverbMix=-96");
    ASSERT_EQ(r.code, 0) << r.err;
    const Wave w = load(wet);
    EXPECT_EQ(w.channels, 2);
    EXPECT_EQ(w.rate, 32000);
    // The tone sits at the band's centre: 15 dB down.
    EXPECT_NEAR(20 * std::log10(w.peak(0.2, 0.5) / 0.5), -15.0, 0.5);
}

TEST(FxCommand, BadOptionsAndInputsWriteNothing) {
    const std::string dry = burst("fx-dry2.wav", 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    const std::string wet = writeTemp("fx-never.wav", "");
    std::filesystem::remove(wet);
    struct Case {
        std::string args;
        int code;
        std::string says;
    };
    const Case cases[] = {
        {"--effect wahwah", 2, "unknown effect 'wahwah'"},
        {"--effect echo:fDepth=3", 2, "no field 'fDepth'"},
        {"--effect echo:fLeftDelay=0", 2, "fLeftDelay takes a number from 1 to 2000"},
        {"--effect gargle:lWaveShape=0.5", 2, "lWaveShape takes a whole number from 0 to 1"},
        {"--effect echo:fLeftDelay", 2, "is no FIELD=VALUE"},
        {"", 2, "no effect given"},
    };
    for (const Case& c : cases) {
        const Outcome r = runVelaro("fx " + dry + " -o " + wet + " " + c.args);
        EXPECT_EQ(r.code, c.code) << c.args;
        EXPECT_NE(r.err.find(c.says), std::string::npos) << r.err;
        EXPECT_FALSE(std::filesystem::exists(wet)) << c.args;
    }
    const std::string junk = writeTemp("fx-junk.wav", "RIFF\x10\0\0\0WAVEjunkjunkjunk");
    for (const std::string& in : {junk, writeTemp("fx-gone.wav", "") + ".missing"}) {
        const Outcome r = runVelaro("fx " + in + " -o " + wet + " --effect echo");
        EXPECT_EQ(r.code, 1) << r.err;
        EXPECT_FALSE(std::filesystem::exists(wet));
    }
}

TEST(FxCommand, RenderPutsTheChainOnTheSongAndKeepsItsTail) {
    const std::string plain = writeTemp("fx-render-plain.wav", ""), echoed = writeTemp("fx-render-echo.wav", "");
    ASSERT_EQ(runVelaro(std::string("render ") + VELARO_DEMO_SONG + " -o " + plain + " --rate 22050").code, 0);
    const Outcome r = runVelaro(std::string("render ") + VELARO_DEMO_SONG + " -o " + echoed +
                         " --rate 22050 --effect echo:fLeftDelay=1500,fRightDelay=1500,fFeedback=60");
    ASSERT_EQ(r.code, 0) << r.err;
    const Wave a = load(plain), b = load(echoed);
    // The repeats ring on after the last note, over gaps longer than a block of silence.
    EXPECT_GT(b.frames(), a.frames() + 22050);
    EXPECT_EQ(runVelaro(std::string("render ") + VELARO_DEMO_SONG + " -o " + echoed + " --effect flanger:fDelay=9").code, 2);
}
