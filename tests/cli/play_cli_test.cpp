// velaro play without a sound card: the page in the terminal on the virtual
// clock in real time, the sync text at the end, --sync and --out.

#include <gtest/gtest.h>

#include <sndfile.h>

#include <cstdio>
#include <string>

#include "core/base/paths.h"
#include "support/song_bytes.h"

using namespace velaro::testing;

namespace {

// Two lines of two syllables, a note under each, at 120 BPM: 2.5 s in all.
std::string shortSong() {
    std::string words = bytes({0x00}) + meta(0x03, "Words");
    const char* syl[] = {"/Sing ", "it", "/once ", "more"};
    for (int i = 0; i < 4; ++i) words += (i == 0 ? bytes({0x00}) : vlq(96)) + textEvent(syl[i]);
    std::string notes = bytes({0x00, 0xC0, 0x00});
    for (int k = 0; k < 4; ++k) notes += bytes({0x00, 0x90, 60 + k, 0x50}) + vlq(96) + bytes({0x80, 60 + k, 0x40});
    std::string s = smfHeader(1, 3, 96) + smfTrack(bytes({0x00}) + tempoEvent(500000) + vlq(96 * 5) + meta(0x2F, ""));
    s += smfTrack(words + vlq(96) + meta(0x2F, ""));
    s += smfTrack(notes + vlq(96) + meta(0x2F, ""));
    return s;
}

std::string capture(const std::string& cmd) {
    FILE* p = popen((cmd + " 2>/dev/null").c_str(), "r");
    std::string out;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
    pclose(p);
    return out;
}

}  // namespace

TEST(PlayCommand, ThePageTheSyncTextAndTheRecording) {
    const std::string song = writeTemp("short.kar", shortSong());
    const std::string wav = writeTemp("played.wav", ""), sync = writeTemp("played.lrc", "");
    const std::string out = capture(std::string(VELARO_BIN) + " play " + song + " --no-device --out " + wav +
                                    " --sync " + sync);
    // The page: sung part in the sung colour, then the rest of the line.
    EXPECT_NE(out.find("\x1b[1;38;2;128;128;255mSing \x1b[0m\x1b[1;38;2;128;128;255mit\x1b[0m"), std::string::npos)
        << out;
    EXPECT_NE(out.find("once more"), std::string::npos);
    EXPECT_NE(out.find("End of song."), std::string::npos);
    // The sync text at the end, one stamped line per lyric line reached.
    const size_t tail = out.find("End of song.");
    ASSERT_NE(tail, std::string::npos);
    EXPECT_NE(out.find("]Sing it\n", tail), std::string::npos);
    EXPECT_NE(out.find("]once more\n", tail), std::string::npos);

    const std::string saved = velaro::readWholeFile(sync);
    EXPECT_EQ(saved.substr(saved.size() - 4), "\r\n\r\n");
    EXPECT_NE(saved.find("]Sing it\r\n["), std::string::npos);

    SF_INFO info{};
    SNDFILE* f = sf_open(wav.c_str(), SFM_READ, &info);
    ASSERT_NE(f, nullptr);
    sf_close(f);
    EXPECT_NEAR(double(info.frames) / info.samplerate, 2.5, 0.3);
}
