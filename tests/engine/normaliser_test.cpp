// The normaliser on generated tones in every sample format: the peak lands on
// the percent within one step of the format, the format stays, silence is
// copied, and no failure ever costs the source.

#include <gtest/gtest.h>
#include <sndfile.h>

#include <atomic>
#include <cmath>
#include <vector>

#include "core/base/paths.h"
#include "encode_test_util.h"
#include "engine/normaliser.h"
#include "support/tone_wav.h"

using namespace velaro;
using namespace velaro::testing;

namespace {

struct JobRun {
    std::string error;
    std::vector<double> reports;
};

JobRun normalise(const std::string& in, const std::string& out, int percent) {
    engine::SndfileNormaliser n;
    std::atomic<bool> stop{false};
    JobRun r;
    r.error = n.Normalize(in, out, percent, stop, [&](double p) { r.reports.push_back(p); });
    return r;
}

int formatOf(const std::string& path) {
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    if (f) sf_close(f);
    return info.format;
}

}  // namespace

TEST(Normaliser, PeakReachesThePercentWithinOneStepOfEachFormat) {
    const std::string dir = freshFolder();
    struct Format {
        int format;
        int bits;  // 0 for floating point
    };
    const Format formats[] = {{SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 8},
                              {SF_FORMAT_WAV | SF_FORMAT_PCM_16, 16},
                              {SF_FORMAT_WAV | SF_FORMAT_PCM_24, 24},
                              {SF_FORMAT_WAV | SF_FORMAT_PCM_32, 32},
                              {SF_FORMAT_WAV | SF_FORMAT_FLOAT, 0},
                              {SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 16}};
    for (const Format& f : formats) {
        for (int percent : {100, 75, 30}) {
            SCOPED_TRACE(std::to_string(f.format) + " at " + std::to_string(percent));
            const std::string in = dir + "/in.wav", out = dir + "/out.wav";
            int64_t frames = writeTone(in, {44100, 2, f.format, 0.5, 0.12});
            const JobRun r = normalise(in, out, percent);
            ASSERT_EQ(r.error, "");
            EXPECT_EQ(r.reports.back(), 100.0);
            int64_t outFrames = 0;
            const double peak = peakOf(out, &outFrames);
            EXPECT_EQ(outFrames, frames);
            EXPECT_EQ(formatOf(out), f.format);
            if (f.bits) {
                const double scale = std::ldexp(1.0, f.bits - 1);
                const double aim = std::round((scale - 1) * percent / 100.0) / scale;
                EXPECT_NEAR(peak, aim, 1.0 / scale);
            } else {
                EXPECT_NEAR(peak, percent / 100.0, 1e-6);
            }
        }
    }
}

TEST(Normaliser, InPlaceReplacesTheFileAndLeavesNothingBeside) {
    const std::string dir = freshFolder();
    const std::string path = dir + "/take.wav";
    writeTone(path, {44100, 1, 0, 1.0, 0.05});
    const JobRun r = normalise(path, path, 90);
    ASSERT_EQ(r.error, "");
    EXPECT_NEAR(peakOf(path), std::round(32767 * 0.9) / 32768, 0.5 / 32768);
    EXPECT_EQ(filesIn(dir), 1u);
}

TEST(Normaliser, SilenceAndEmptyFilesAreCopiedUnchanged) {
    const std::string dir = freshFolder();
    for (double seconds : {1.0, 0.0}) {
        writeTone(dir + "/quiet.wav", {44100, 2, 0, seconds, 0.0});
        const JobRun r = normalise(dir + "/quiet.wav", dir + "/copy.wav", 100);
        ASSERT_EQ(r.error, "");
        EXPECT_EQ(r.reports.back(), 100.0);
        EXPECT_EQ(readWholeFile(dir + "/copy.wav"), readWholeFile(dir + "/quiet.wav"));
    }
}

TEST(Normaliser, EveryFailureKeepsSourceAndTargetByteForByte) {
    const std::string dir = freshFolder();
    const std::string src = dir + "/take.wav";
    writeTone(src, {44100, 2, 0, 2.0, 0.1});
    const std::string before = readWholeFile(src);
    writeWholeFile(dir + "/text.wav", "RIFF but not really");
    const std::string textBefore = readWholeFile(dir + "/text.wav");

    struct Failure {
        const char* name;
        std::string in, out;
        int percent;
        const char* says;
    };
    const Failure failures[] = {
        {"missing source", dir + "/nope.wav", src, 100, "No such file or directory"},
        {"not audio", dir + "/text.wav", src, 100, "not an audio file"},
        {"missing folder", src, dir + "/none/out.wav", 100, "No such file or directory"},
        {"zero percent", src, src, 0, "above 0"},
    };
    for (const Failure& f : failures) {
        SCOPED_TRACE(f.name);
        const JobRun r = normalise(f.in, f.out, f.percent);
        EXPECT_NE(r.error.find(f.says), std::string::npos) << r.error;
        EXPECT_EQ(readWholeFile(src), before);
        EXPECT_EQ(readWholeFile(dir + "/text.wav"), textBefore);
        EXPECT_EQ(filesIn(dir), 2u);
    }

    // In place, with a write that fails half way.
    const int code = withFileSizeLimit(before.size() / 3, [&] {
        const JobRun r = normalise(src, src, 100);
        return r.error.find("File too large") != std::string::npos ? 7 : 1;
    });
    EXPECT_EQ(code, 7);
    EXPECT_EQ(readWholeFile(src), before);
    EXPECT_EQ(filesIn(dir), 2u);
}
