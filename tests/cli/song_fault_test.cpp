// The commands on a song whose lyric track has 100,000 lines, and with an
// application folder that takes no files: they end, in one piece, and a save
// that cannot be made says why and keeps the old file.

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "core/base/paths.h"
#include "support/small_disk.h"
#include "support/song_bytes.h"
#include "support/tone_wav.h"

using namespace velaro::testing;

namespace {

struct Out {
    int code;
    std::string text;  // stdout and stderr together
};

Out run(const std::string& home, const std::string& args) {
    FILE* p = popen(("VELARO_HOME=" + home + " timeout -k 5 120 " + std::string(VELARO_BIN) + " " + args + " 2>&1").c_str(), "r");
    Out o{-1, {}};
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) o.text.append(buf, n);
    const int st = pclose(p);
    o.code = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return o;
}

bool has(const std::string& s, const std::string& part) { return s.find(part) != std::string::npos; }

std::string home() { return velaro::tempFolder() + "/song-fault-home-" + std::to_string(getpid()); }

// 100,000 lines, each "\\lineN " then "sung", one tick apart at a fast
// tempo, over a few notes: about ten seconds of song.
std::string floodedKar() {
    std::string words = bytes({0x00}) + textEvent("@KMIDI KARAOKE FILE") + bytes({0x00}) + textEvent("@TFlood");
    words.reserve(3000000);
    for (int i = 0; i < 100000; ++i) {
        words += vlq(1) + textEvent((i % 2 ? "/line" : "\\line") + std::to_string(i) + " ");
        words += bytes({0x00}) + textEvent("sung");
    }
    for (int i = 0; i < 20; ++i) words += bytes({0x00, 0x90, 60, 80}) + vlq(960) + bytes({0x80, 60, 0});
    const std::string tempo = bytes({0x00}) + tempoEvent(100000) + bytes({0x00, 0xFF, 0x2F, 0x00});
    return smfHeader(1, 2, 960) + smfTrack(tempo) + smfTrack(words + bytes({0x00, 0xFF, 0x2F, 0x00}));
}

}  // namespace

TEST(LyricFlood, InfoAndPlayGetThroughAHundredThousandLines) {
    const std::string song = writeTemp("flood.kar", floodedKar());
    const Out info = run(home(), "info " + song);
    EXPECT_EQ(info.code, 0) << info.text.substr(0, 2000);
    EXPECT_TRUE(has(info.text, "line0 sung"));
    // The line count stops at the 16-bit line index, and the last lines share its last place.
    EXPECT_TRUE(has(info.text, "32767: line99999 sung")) << info.text.substr(info.text.size() - 500);
    const Out json = run(home(), "info " + song + " --json");
    EXPECT_EQ(json.code, 0);
    EXPECT_EQ(json.text.back(), '\n');
    EXPECT_EQ(json.text[json.text.size() - 2], '}');

    const std::string out = writeTemp("flood.wav", "");
    const Out play = run(home(), "play " + song + " --no-device --out " + out);
    EXPECT_EQ(play.code, 0) << play.text.substr(0, 2000);
    EXPECT_TRUE(has(play.text, "line0 sung"));
    EXPECT_TRUE(has(play.text, "End of song.")) << play.text.substr(play.text.size() - 500);
    EXPECT_GT(velaro::fileLength(out), 44 + 176400 * 5);
    std::filesystem::remove(out);
}

// The song is read whole when it opens: cut or deleted while it plays, it plays on to its end.
TEST(SongCutWhilePlaying, PlaysOnToItsEnd) {
    std::string notes = bytes({0x00}) + tempoEvent(500000);
    for (int i = 0; i < 6; ++i) notes += bytes({0x00, 0x90, 60, 90}) + vlq(480) + bytes({0x80, 60, 0});
    const std::string smf = smfHeader(0, 1, 480) + smfTrack(notes + bytes({0x00, 0xFF, 0x2F, 0x00}));
    for (const std::string& harm : {std::string("truncate -s 20"), std::string("rm -f")}) {
        const std::string song = writeTemp("going.mid", smf);
        const std::string out = writeTemp("going.wav", "");
        // The harm comes a moment after the start; the command's own timeout still bounds it.
        const Out o = run(home(), "play " + song + " --no-device --out " + out + " 2>&1 & sleep 0.5; " + harm + " " + song + "; wait $!");
        EXPECT_EQ(o.code, 0) << harm << ": " << o.text;
        EXPECT_TRUE(has(o.text, "End of song.")) << harm << ": " << o.text;
        EXPECT_GT(velaro::fileLength(out), 44 + 176400 * 2) << harm;
        std::filesystem::remove(out);
        std::filesystem::remove(song);
    }
}

TEST(ReadOnlyAppFolder, CommandsRunAndTakesSaveElsewhereOrSayWhy) {
    SmallDisk d;
    if (!d.mounted()) GTEST_SKIP() << "no tmpfs can be mounted here";
    d.put("config.vlr", "\"OK\",0,32896,16744576,18,\"tahoma\",\"50\",#FALSE#,#FALSE#,#FALSE#,#FALSE#,0\r\n");
    const std::string oldTake = d.put("take.wav", "an older take");
    ASSERT_TRUE(d.makeReadOnly());
    const std::string mic = velaro::tempFolder() + "/song-fault-mic-" + std::to_string(getpid()) + ".wav";
    writeTone(mic, {.seconds = 1.0, .amplitude = 0.2});
    const std::string song = writeTemp("short.mid", smfHeader(0, 1, 480) +
        smfTrack(bytes({0x00, 0x90, 60, 90}) + vlq(960) + bytes({0x80, 60, 0, 0x00, 0xFF, 0x2F, 0x00})));

    for (const std::string& where : {d.dir(), d.path("never-made")}) {
        EXPECT_EQ(run(where, "info " + song).code, 0) << where;
        EXPECT_EQ(run(where, "play " + song + " --no-device").code, 0) << where;
        // The percent the folder's configuration keeps is still read.
        const std::string loud = writeTemp("loud.wav", "");
        EXPECT_EQ(run(where, "normalize " + mic + " -o " + loud).code, 0) << where;
        if (where == d.dir()) EXPECT_NEAR(peakOf(loud), 0.5, 0.01);

        // The take's working copy cannot be kept in the folder; the take is saved all the same.
        for (const std::string& args : {"record " + song, std::string("record --digital --seconds 1")}) {
            const std::string take = writeTemp("take.wav", "");
            const Out o = run(where, args + " --mic " + mic + " -o " + take);
            EXPECT_EQ(o.code, 0) << where << " " << args << ": " << o.text;
            EXPECT_GT(velaro::fileLength(take), 44 + 176400 / 2) << where << " " << args;
        }
    }
    const Out o = run(d.dir(), "record --digital --seconds 1 --mic " + mic + " -o " + oldTake);
    EXPECT_EQ(o.code, 1);
    EXPECT_TRUE(has(o.text, "Read-only file system")) << o.text;
    EXPECT_EQ(fileBytes(oldTake), "an older take");
    std::filesystem::remove(mic);
}
