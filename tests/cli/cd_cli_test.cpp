// velaro cd on generated disc images: the list as text and JSON, a ripped
// track's exact samples, WMA output, playback to the disc's end, and the exit
// codes for no disc and a track out of range.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "core/base/paths.h"
#include "core/cd/cd_text.h"
#include "support/cd_image.h"

namespace vt = velaro::testing;

namespace {

struct CliRun {
    int code = -1;
    std::string out, err;
};

// Tests run side by side in processes of their own: each has its own folder.
std::string testName() { return ::testing::UnitTest::GetInstance()->current_test_info()->name(); }

CliRun run(const std::string& args) {
    CliRun r;
    const std::string errFile = velaro::tempFolder() + "/cd-cli-" + testName() + "-stderr.txt";
    const std::string cmd = "timeout -k 5 60 " + std::string(VELARO_BIN) + " " + args + " 2>" + errFile;
    FILE* p = popen(cmd.c_str(), "r");
    if (!p) return r;
    char buf[65536];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) r.out.append(buf, n);
    const int status = pclose(p);
    r.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    r.err = velaro::readWholeFile(errFile);
    return r;
}

struct CdCli : ::testing::Test {
    std::string dir;
    vt::ImageDisc disc;
    std::string cue;
    void SetUp() override {
        dir = velaro::tempFolder() + "/cd-cli-" + testName();
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
        disc.cdText = true;
        disc.title = "Album";
        disc.performer = "Band";
        disc.tracks = {{75 * 61 + 3, false, "Caf\xE9 \\One", "Ann"}, {75 * 2 + 11, false, "Two", "Bob"}, {75, true, "", ""}};
        cue = vt::writeImage(dir, "disc", disc);
    }
};

TEST_F(CdCli, ListGivesTheWindowsLinesAndJson) {
    const CliRun text = run("cd list --device " + cue);
    EXPECT_EQ(text.code, 0);
    EXPECT_EQ(text.out, "A: Image disc.cue\n01\tCaf\xC3\xA9 \\One / Ann\t[01:01]\n02\tTwo / Bob\t[00:02]\n");

    const CliRun json = run("cd list --json --device " + cue);
    EXPECT_EQ(json.code, 0);
    EXPECT_EQ(json.out,
              "{\"drives\": [\"A: Image disc.cue\"], \"tracks\": ["
              "{\"number\": 1, \"title\": \"Caf\xC3\xA9 \\\\One\", \"performer\": \"Ann\", \"bytes\": 10767456, "
              "\"time\": \"01:01\", \"line\": \"01\\tCaf\xC3\xA9 \\\\One / Ann\\t[01:01]\"}, "
              "{\"number\": 2, \"title\": \"Two\", \"performer\": \"Bob\", \"bytes\": 378672, \"time\": \"00:02\", "
              "\"line\": \"02\\tTwo / Bob\\t[00:02]\"}]}\n");

    vt::ImageDisc plain = vt::plainDisc(1, 80);
    const CliRun p = run("cd list --device " + vt::writeImage(dir, "plain", plain));
    EXPECT_EQ(p.out, "A: Image plain.cue\n01\tTrack 1\t[00:01]\n");
}

TEST_F(CdCli, RipGivesTheTracksExactSamples) {
    const std::string out = dir + "/t.wav";
    const CliRun r = run("cd rip --device " + cue + " --track 2 -o " + out);
    EXPECT_EQ(r.code, 0) << r.err;
    const std::string wav = velaro::readWholeFile(out);
    const std::vector<uint8_t> want = vt::trackBytes(disc, 1);
    ASSERT_EQ(wav.size(), 44 + want.size());
    EXPECT_EQ(wav.substr(0, 44), velaro::cd::waveHeader(2, 44100, 16, static_cast<uint32_t>(want.size())));
    EXPECT_TRUE(std::equal(want.begin(), want.end(), reinterpret_cast<const uint8_t*>(wav.data()) + 44));

    const CliRun w = run("cd rip --device " + cue + " --track 1 --wma " + dir + "/t.wma --bitrate 64");
    EXPECT_EQ(w.code, 0) << w.err;
    const std::string wma = velaro::readWholeFile(dir + "/t.wma");
    ASSERT_GT(wma.size(), 16u);
    // The ASF header object's GUID opens the file.
    EXPECT_EQ(wma.substr(0, 4), std::string("\x30\x26\xB2\x75", 4));
}

TEST_F(CdCli, NoDiscAndTracksOutOfRange) {
    const std::string out = dir + "/x.wav";
    CliRun r = run("cd rip --device " + dir + "/absent.cue --track 1 -o " + out);
    EXPECT_EQ(r.code, 1);
    EXPECT_NE(r.err.find("Unable to Create CD Stream!"), std::string::npos);
    EXPECT_FALSE(velaro::fileExists(out));

    r = run("cd rip --device " + cue + " --track 4 -o " + out);
    EXPECT_EQ(r.code, 2);
    r = run("cd rip --device " + cue + " --track 0 -o " + out);
    EXPECT_EQ(r.code, 2);
    // The data track is there but holds no audio.
    r = run("cd rip --device " + cue + " --track 3 -o " + out);
    EXPECT_EQ(r.code, 1);
    EXPECT_FALSE(velaro::fileExists(out));

    r = run("cd list --device " + dir + "/absent.cue");
    EXPECT_EQ(r.code, 1);
    EXPECT_NE(r.err.find("Error retreiving number of tracks."), std::string::npos);
    r = run("cd play --device " + dir + "/absent.cue --no-device");
    EXPECT_EQ(r.code, 1);
    r = run("cd play --device " + cue + " --track 9 --no-device");
    EXPECT_EQ(r.code, 2);
    r = run("cd rip --device " + cue + " --track x -o " + out);
    EXPECT_EQ(r.code, 2);
    r = run("cd spin");
    EXPECT_EQ(r.code, 2);
}

TEST_F(CdCli, PlayGoesToTheEndOfTheDisc) {
    const CliRun r = run("cd play --device " + cue + " --track 2 --no-device");
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "Track 2 [00:02]\n");
}

}  // namespace
