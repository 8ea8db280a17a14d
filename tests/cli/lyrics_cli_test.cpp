// velaro lyrics and karaoke: the editor's text and sorted entries of text
// files and tagged MP3s, the walk at given positions, and hostile input.

#include <gtest/gtest.h>

#include <lame/lame.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "support/tone_wav.h"
#include "core/base/paths.h"
#include "support/song_bytes.h"

using namespace velaro::testing;

namespace {

struct Out {
    int code;
    std::string text;
};

Out run(const std::string& args) {
    FILE* p = popen(("timeout -k 5 60 " + std::string(VELARO_BIN) + " " + args + " 2>/dev/null").c_str(), "r");
    Out o{-1, {}};
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) o.text.append(buf, n);
    const int st = pclose(p);
    o.code = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return o;
}

const char* kLrc =
    "[ti:Prova]\r\n[00:12]Ecco \xE8 qui\r\n\r\n[00:02][00:20]la la\r\n[verylongmark]no\r\n[00:05]tail";

}  // namespace

TEST(LyricsCommand, TextFileGivesTheEditorsTextAndSortedEntries) {
    const std::string lrc = writeTemp("cli.lrc", kLrc);
    const Out o = run("lyrics " + lrc + " --json");
    EXPECT_EQ(o.code, 0);
    EXPECT_EQ(o.text,
              "{\"text\": \"[ti:Prova]\\r\\n[00:12]Ecco \xC3\xA8 qui\\r\\n[00:02][00:20]la la\\r\\n[verylongmark]no\\r\\n"
              "[00:05]tail\\r\\n\", \"entries\": [\"00:02    la la\", \"00:05    tail\", \"00:12    Ecco \xC3\xA8 qui\", "
              "\"00:20    la la\", \"ti:Prova    \"]}\n");
    const Out plain = run("lyrics " + lrc);
    EXPECT_EQ(plain.code, 0);
    EXPECT_NE(plain.text.find("-- 5 entries\n00:02    la la\n"), std::string::npos);
}

TEST(LyricsCommand, TaggedMp3AndTheWalk) {
    const std::string mp3 = writeTemp("cli-lyrics.mp3", velaro::testing::mp3Tone(2.0));
    const std::string lrc = writeTemp("cli-lyrics.txt", kLrc);
    ASSERT_EQ(run("tag " + mp3 + " --title Prova --lyrics-file " + lrc).code, 0);
    // The tag keeps the file's bytes: the last piece has no line end and gives no entry.
    const Out o = run("lyrics " + mp3 + " --json");
    EXPECT_NE(o.text.find("\"entries\": [\"00:02    la la\", \"00:12    Ecco \xC3\xA8 qui\", \"00:20    la la\", "
                          "\"ti:Prova    \"]"),
              std::string::npos)
        << o.text;
    const Out at = run("lyrics " + mp3 + " --at 0,2,2.6,13,40,1");
    EXPECT_EQ(at.code, 0);
    EXPECT_EQ(at.text,
              "{\"at\": 0, \"lyricPos\": 1, \"entry\": \"00:02    la la\"}\n"
              "{\"at\": 2, \"lyricPos\": 1, \"entry\": \"00:02    la la\"}\n"
              "{\"at\": 2.6, \"lyricPos\": 2, \"entry\": \"00:12    Ecco \xC3\xA8 qui\"}\n"
              "{\"at\": 13, \"lyricPos\": 3, \"entry\": \"00:20    la la\"}\n"
              "{\"at\": 40, \"lyricPos\": 4, \"entry\": \"ti:Prova    \"}\n"
              "{\"at\": 1, \"lyricPos\": 2, \"entry\": \"00:12    Ecco \xC3\xA8 qui\"}\n");
}

TEST(LyricsCommand, BadInputNeverCrashes) {
    EXPECT_EQ(run("lyrics").code, 2);
    EXPECT_EQ(run("lyrics x.lrc --at").code, 2);
    EXPECT_EQ(run("lyrics x.lrc --at 1,,2").code, 2);
    EXPECT_EQ(run("lyrics x.lrc --at -1").code, 2);
    EXPECT_EQ(run("lyrics /nonexistent/file.lrc").code, 1);
    std::mt19937 rng(7);
    for (int k = 0; k < 20; ++k) {
        std::string junk(static_cast<size_t>(rng() % 3000), '\0');
        static const char kinds[] = "[]:0\r\n a\x80\xff";
        for (auto& c : junk) c = kinds[rng() % (sizeof kinds - 1)];
        const std::string path = writeTemp("junk" + std::to_string(k) + (k % 2 ? ".lrc" : ".mp3"), junk);
        EXPECT_EQ(run("lyrics " + path + " --json").code, 0) << path;
        EXPECT_EQ(run("lyrics " + path + " --at 0,5,1000,3").code, 0) << path;
    }
}

TEST(KaraokeCommand, PlaysToTheEndWithTheLyricPage) {
    const std::string mp3 = writeTemp("karaoke.mp3", velaro::testing::mp3Tone(2.5));
    const std::string lrc = writeTemp("karaoke.txt", "[00:00]one\r\n[00:01]two\r\n");
    ASSERT_EQ(run("tag " + mp3 + " --title K --lyrics-file " + lrc).code, 0);
    const Out o = run("karaoke " + mp3 + " --no-device");
    EXPECT_EQ(o.code, 0);
    EXPECT_NE(o.text.find("> two"), std::string::npos) << o.text;
    EXPECT_NE(o.text.find("End of song."), std::string::npos);
    EXPECT_EQ(run("karaoke /nonexistent.mp3 --no-device").code, 1);
}
