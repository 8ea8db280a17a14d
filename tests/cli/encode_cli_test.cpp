// velaro encode and velaro normalize as a user runs them: the settings reach
// the file, progress reaches stderr, and failures end with one line and no
// file left behind.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <filesystem>
#include <sstream>

#include "core/base/paths.h"
#include "support/tone_wav.h"

using namespace velaro;
using namespace velaro::testing;

namespace {

struct Out {
    int code;
    std::string text;  // stdout and stderr together
};

Out run(const std::string& args, const std::string& env = {}) {
    FILE* p = popen((env + " " + std::string(VELARO_BIN) + " " + args + " 2>&1").c_str(), "r");
    Out o{-1, {}};
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) o.text.append(buf, n);
    const int st = pclose(p);
    o.code = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return o;
}

bool has(const std::string& s, const std::string& part) { return s.find(part) != std::string::npos; }

std::string folder() {
    const std::string dir = tempFolder() + "/enc-cli-" + std::to_string(getpid()) + "-" +
                            ::testing::UnitTest::GetInstance()->current_test_info()->name();
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

size_t filesIn(const std::string& dir) {
    size_t n = 0;
    for ([[maybe_unused]] const auto& e : std::filesystem::directory_iterator(dir)) ++n;
    return n;
}

}  // namespace

TEST(EncodeCommand, SettingsReachTheFileAndProgressEndsAt100) {
    const std::string dir = folder();
    const int64_t frames = writeTone(dir + "/take.wav", {44100, 2, 0, 3.0});

    Out o = run("encode " + dir + "/take.wav -o " + dir + "/plain.mp3");
    ASSERT_EQ(o.code, 0) << o.text;
    // Into a pipe: one percent a line, the last one 100.
    EXPECT_EQ(o.text.substr(0, 3), "0%\n");
    EXPECT_EQ(o.text.substr(o.text.size() - 5), "100%\n");
    Out info = run("mp3info " + dir + "/plain.mp3 --json");
    EXPECT_TRUE(has(info.text, "\"BitRate\":\"128 Kbps\"")) << info.text;
    EXPECT_TRUE(has(info.text, "\"ChannelMode\":\"Stereo\""));
    EXPECT_TRUE(has(info.text, "\"Crc\":\"No\""));
    const Decoded d = decodeMp3(dir + "/plain.mp3");
    EXPECT_LE(std::llabs(d.frames - frames), 1152 + lameTagOf(dir + "/plain.mp3").delay);

    o = run("encode " + dir + "/take.wav -o " + dir + "/joint.mp3 --bitrate 192 --quality high --intensity --crc");
    ASSERT_EQ(o.code, 0) << o.text;
    info = run("mp3info " + dir + "/joint.mp3 --json");
    EXPECT_TRUE(has(info.text, "\"BitRate\":\"192 Kbps\"")) << info.text;
    EXPECT_TRUE(has(info.text, "\"ChannelMode\":\"Joint Stereo\""));
    EXPECT_TRUE(has(info.text, "\"Crc\":\"Yes\""));

    o = run("encode " + dir + "/take.wav -o " + dir + "/vbr.mp3 --vbr 2 --channels mono --quality fast");
    ASSERT_EQ(o.code, 0) << o.text;
    info = run("mp3info " + dir + "/vbr.mp3 --json");
    EXPECT_TRUE(has(info.text, "\"ChannelMode\":\"Mono\"")) << info.text;
    EXPECT_FALSE(lameTagOf(dir + "/vbr.mp3").info);  // a variable rate carries "Xing"
    EXPECT_EQ(decodeMp3(dir + "/vbr.mp3").channels, 1);
}

TEST(EncodeCommand, BadOptionsExit2AndFailuresExit1WithOneLineAndNoFile) {
    const std::string dir = folder();
    writeTone(dir + "/take.wav", {44100, 2, 0, 1.0});
    const std::string in = dir + "/take.wav", out = " -o " + dir + "/out.mp3";
    for (const std::string& bad : {in + out + " --bitrate fast", in + out + " --quality best", in + out + " --vbr 11",
                                   in + out + " --channels 3", in + out + " --loud", in, std::string("-o x.mp3"),
                                   in + out + " --bitrate"}) {
        SCOPED_TRACE(bad);
        EXPECT_EQ(run("encode " + bad).code, 2);
    }
    EXPECT_EQ(filesIn(dir), 1u);

    writeWholeFile(dir + "/words.wav", "no audio in here");
    writeWholeFile(dir + "/keep.mp3", "an older encode");
    struct Failure {
        std::string args, says;
    };
    const Failure failures[] = {
        {dir + "/missing.wav -o " + dir + "/keep.mp3", "No such file or directory"},
        {dir + "/words.wav -o " + dir + "/keep.mp3", "not an audio file"},
        {in + " -o " + dir + "/no/such/folder.mp3", "No such file or directory"},
        {in + " -o " + dir + "/keep.mp3 --bitrate 999", "refused"},
    };
    for (const Failure& f : failures) {
        SCOPED_TRACE(f.args);
        const Out o = run("encode " + f.args);
        EXPECT_EQ(o.code, 1);
        ASSERT_FALSE(o.text.empty());
        EXPECT_EQ(std::count(o.text.begin(), o.text.end(), '\n'), 1) << o.text;
        EXPECT_TRUE(has(o.text, f.says)) << o.text;
        EXPECT_EQ(readWholeFile(dir + "/keep.mp3"), "an older encode");
        EXPECT_EQ(filesIn(dir), 3u);
    }
}

TEST(EncodeCommand, CtrlCKeepsAShorterValidMp3) {
    const std::string dir = folder();
    const int64_t frames = writeTone(dir + "/long.wav", {44100, 2, 0, 120.0});
    int err[2];
    ASSERT_EQ(pipe(err), 0);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(err[1], 2);
        close(err[0]);
        execl(VELARO_BIN, VELARO_BIN, "encode", (dir + "/long.wav").c_str(), "-o", (dir + "/long.mp3").c_str(),
              "--quality", "high", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(err[1]);
    FILE* lines = fdopen(err[0], "r");
    char line[256];
    while (fgets(line, sizeof line, lines) && std::string(line) != "10%\n") {
    }
    kill(pid, SIGINT);
    std::string rest;
    while (fgets(line, sizeof line, lines)) rest += line;
    fclose(lines);
    int st = 0;
    waitpid(pid, &st, 0);
    ASSERT_TRUE(WIFEXITED(st));
    EXPECT_EQ(WEXITSTATUS(st), 0);
    EXPECT_TRUE(has(rest, "stopped")) << rest;
    EXPECT_FALSE(has(rest, "100%"));
    const Decoded d = decodeMp3(dir + "/long.mp3");
    ASSERT_TRUE(d.ok);
    EXPECT_GT(d.frames, frames / 20);
    EXPECT_LT(d.frames, frames / 2);
    EXPECT_EQ(filesIn(dir), 2u);
}

TEST(NormalizeCommand, RaisesToThePercentGivenOrKept) {
    const std::string dir = folder();
    writeTone(dir + "/quiet.wav", {44100, 2, 0, 1.0, 0.05});
    Out o = run("normalize " + dir + "/quiet.wav -o " + dir + "/loud.wav --percent 80");
    ASSERT_EQ(o.code, 0) << o.text;
    EXPECT_EQ(o.text.substr(o.text.size() - 5), "100%\n");
    EXPECT_NEAR(peakOf(dir + "/loud.wav"), std::round(32767 * 0.8) / 32768, 1.0 / 32768);

    // The percent the window kept in the configuration, in place.
    const std::string home = dir + "/home";
    std::filesystem::create_directories(home);
    writeWholeFile(home + "/config.vlr",
                   "\"OK\",2,32896,16744576,18,\"tahoma\",\"50\",#FALSE#,#FALSE#,#FALSE#,#FALSE#,0\r\n");
    o = run("normalize " + dir + "/quiet.wav -o " + dir + "/quiet.wav", "VELARO_HOME=" + home);
    ASSERT_EQ(o.code, 0) << o.text;
    EXPECT_NEAR(peakOf(dir + "/quiet.wav"), std::round(32767 * 0.5) / 32768, 1.0 / 32768);

    // No configuration: full scale.
    o = run("normalize " + dir + "/quiet.wav -o " + dir + "/full.wav", "VELARO_HOME=" + dir + "/empty-home");
    ASSERT_EQ(o.code, 0) << o.text;
    EXPECT_NEAR(peakOf(dir + "/full.wav"), 32767.0 / 32768, 1.0 / 32768);
}

TEST(NormalizeCommand, BadOptionsExit2AndFailuresKeepTheSource) {
    const std::string dir = folder();
    writeTone(dir + "/take.wav", {44100, 2, 0, 1.0, 0.1});
    const std::string before = readWholeFile(dir + "/take.wav");
    for (const std::string bad : {" --percent 0", " --percent 101", " --percent x", " --gain 3", ""}) {
        SCOPED_TRACE(bad);
        const std::string out = bad.empty() ? "" : " -o " + dir + "/out.wav";
        EXPECT_EQ(run("normalize " + dir + "/take.wav" + out + bad).code, 2);
    }
    const Out o = run("normalize " + dir + "/take.wav -o " + dir + "/none/out.wav");
    EXPECT_EQ(o.code, 1);
    EXPECT_EQ(std::count(o.text.begin(), o.text.end(), '\n'), 1) << o.text;
    EXPECT_EQ(readWholeFile(dir + "/take.wav"), before);
    EXPECT_EQ(filesIn(dir), 1u);
}
