// velaro play --stats, and a song played through a sound server that dies
// mid-song and comes back: the song plays on silently and returns to the
// new server, and the figures at the end say so.

#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <cstdio>
#include <regex>
#include <string>
#include <thread>

#include "core/base/paths.h"
#include "support/pulse_daemon.h"
#include "support/song_bytes.h"

using namespace velaro::testing;

namespace {

// One note held for `beats` beats at 120 BPM.
std::string heldNote(int beats) {
    return smfHeader(0, 1, 96) + smfTrack(bytes({0x00, 0xC0, 0x00, 0x00, 0x90, 60, 0x60}) + vlq(96 * beats) +
                                          bytes({0x80, 60, 0x40, 0x00, 0xFF, 0x2F, 0x00}));
}

const std::regex kStats(
    R"(\nstats: (\d+) frames played, (\d+) underruns, device (\S+), (\d+) fallbacks to the silent clock\n$)");

// The file's text so far ("" until the shell has made it).
std::string textOf(const std::string& file) {
    try {
        return velaro::readWholeFile(file);
    } catch (const std::exception&) {
        return "";
    }
}

bool waitFor(const std::function<bool()>& cond, int seconds) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (!cond()) {
        if (std::chrono::steady_clock::now() > until) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

}  // namespace

TEST(PlayStats, TheLastLineGivesTheRunsFigures) {
    const std::string song = writeTemp("stats.mid", heldNote(4));
    FILE* p = popen(("timeout -k 5 60 " + std::string(VELARO_BIN) + " play " + song + " --stats --no-device 2>&1").c_str(),
                    "r");
    std::string out;
    char buf[4096];
    for (size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
    EXPECT_EQ(pclose(p), 0);
    EXPECT_NE(out.find("End of song."), std::string::npos) << out;
    std::smatch m;
    ASSERT_TRUE(std::regex_search(out, m, kStats)) << out;
    // Two seconds of song and its ring-out, at 44.1 kHz.
    const long frames = std::stol(m[1]);
    EXPECT_GE(frames, 2 * 44100);
    EXPECT_LT(frames, 8 * 44100);
    EXPECT_EQ(m[2], "0");
    EXPECT_EQ(m[3], "none");
    EXPECT_EQ(m[4], "0");

    // Without --stats the output has no such line.
    p = popen(("timeout -k 5 60 " + std::string(VELARO_BIN) + " play " + song + " --no-device 2>&1").c_str(), "r");
    out.clear();
    for (size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
    pclose(p);
    EXPECT_EQ(out.find("stats:"), std::string::npos) << out;
}

class PlayThroughPulse : public PulseServer {};

TEST_F(PlayThroughPulse, TheSongOutlivesItsSoundServer) {
    const std::string song = writeTemp("held.mid", heldNote(16));  // 8 seconds
    const std::string out = dir() + "/out.txt", err = dir() + "/err.txt", pidFile = dir() + "/pid";
    const std::string cmd = "timeout -k 5 60 " + std::string(VELARO_BIN) + " play " + song + " --stats > " + out +
                            " 2> " + err + " & echo $! > " + pidFile;
    ASSERT_EQ(std::system(cmd.c_str()), 0);
    const pid_t pid = std::stoi(velaro::readWholeFile(pidFile));
    auto said = [](const std::string& file, const char* text) { return textOf(file).find(text) != std::string::npos; };
    ASSERT_TRUE(waitFor([&] { return said(out, "VELARO DECK"); }, 20)) << textOf(err);
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    killDaemon();
    ASSERT_TRUE(waitFor([&] { return said(err, "the sound device was lost; playing silently"); }, 10))
        << textOf(err);
    ASSERT_EQ(restartDaemon(), "");
    ASSERT_TRUE(waitFor([&] { return said(err, "the sound device is back"); }, 10)) << textOf(err);
    ASSERT_TRUE(waitFor([&] { return kill(pid, 0) != 0; }, 40));

    const std::string text = textOf(out);
    EXPECT_NE(text.find("End of song."), std::string::npos) << text;
    std::smatch m;
    ASSERT_TRUE(std::regex_search(text, m, kStats)) << text;
    // The song played to its end across both switches: 8 s of it, and no
    // more than the ring-out and the stall before the loss was noticed.
    const long frames = std::stol(m[1]);
    EXPECT_GE(frames, 8 * 44100);
    EXPECT_LT(frames, 15 * 44100);
    EXPECT_EQ(m[3], "pulse");
    EXPECT_EQ(m[4], "1");
}
