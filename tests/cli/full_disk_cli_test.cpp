// The commands on a full disk and on songs with nothing to play: the old file
// stays as it was, the message names the lack of room, and nothing hangs.

#include <gtest/gtest.h>

#include <lame/lame.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "core/base/paths.h"
#include "support/cd_image.h"
#include "support/small_disk.h"
#include "support/song_bytes.h"
#include "support/tone_wav.h"

using namespace velaro::testing;

namespace {

struct Out {
    int code;
    std::string text;  // stdout and stderr together
};

// `timeout` turns a command that never ends into a failure instead of a hung suite.
Out run(const std::string& args) {
    const std::string home = velaro::tempFolder() + "/full-disk-home-" + std::to_string(getpid());
    FILE* p = popen(("VELARO_HOME=" + home + " timeout -k 5 60 " + std::string(VELARO_BIN) + " " + args + " 2>&1").c_str(), "r");
    Out o{-1, {}};
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) o.text.append(buf, n);
    const int st = pclose(p);
    o.code = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return o;
}

bool has(const std::string& s, const std::string& part) { return s.find(part) != std::string::npos; }

std::string mp3(double seconds) {
    lame_global_flags* gf = lame_init();
    lame_set_in_samplerate(gf, 44100);
    lame_set_num_channels(gf, 1);
    lame_set_brate(gf, 64);
    lame_init_params(gf);
    const int n = static_cast<int>(seconds * 44100);
    std::vector<short> pcm(n);
    for (int i = 0; i < n; ++i) pcm[i] = static_cast<short>(6000 * std::sin(i * 0.05));
    std::vector<unsigned char> out(static_cast<size_t>(1.25 * n + 7200));
    int bytes = lame_encode_buffer(gf, pcm.data(), pcm.data(), n, out.data(), static_cast<int>(out.size()));
    bytes += lame_encode_flush(gf, out.data() + bytes, static_cast<int>(out.size()) - bytes);
    lame_close(gf);
    return std::string(reinterpret_cast<char*>(out.data()), static_cast<size_t>(bytes));
}

std::string noteSong(int seconds) {
    std::string t = bytes({0x00}) + tempoEvent(500000);
    for (int i = 0; i < seconds * 2; ++i) t += bytes({0x00, 0x90, 60, 90}) + vlq(480) + bytes({0x80, 60, 0});
    return smfHeader(0, 1, 480) + smfTrack(t + bytes({0x00, 0xFF, 0x2F, 0x00}));
}

}  // namespace

TEST(FullDisk, TagsAndLyricsSurviveAFailedSave) {
    SmallDisk d(512);
    if (!d.mounted()) GTEST_SKIP() << "no tmpfs can be mounted here";
    const std::string file = d.put("song.mp3", mp3(2.0));
    const std::string words = writeTemp("hours-of-work.txt", "[00:01]first line\n[00:02]second line\n");
    ASSERT_EQ(run("tag " + file + " --title Old --lyrics-file " + words).code, 0);
    const std::string before = fileBytes(file);
    d.fill();

    std::string longer;
    for (int i = 0; i < 4000; ++i) longer += "[00:03]a much longer line of stamped words\n";
    const std::string more = writeTemp("longer.txt", longer);
    const Out o = run("tag " + file + " --title New --lyrics-file " + more);
    EXPECT_EQ(o.code, 1);
    EXPECT_TRUE(has(o.text, "No space left on device")) << o.text;
    EXPECT_EQ(fileBytes(file), before);

    // The small editor's save needs no new room: it goes through.
    EXPECT_EQ(run("id3 " + file + " --title Newer").code, 0);
    EXPECT_TRUE(has(run("mp3info " + file + " --json").text, "[00:02]second line"));
}

TEST(FullDisk, RenderRefusesWhatCannotFitAndKeepsTheOldWave) {
    SmallDisk d(256);
    if (!d.mounted()) GTEST_SKIP() << "no tmpfs can be mounted here";
    const std::string song = writeTemp("ten-seconds.mid", noteSong(10));
    const std::string old = d.put("take.wav", "an older take");
    const Out o = run("render " + song + " -o " + old);
    EXPECT_EQ(o.code, 1);
    EXPECT_TRUE(has(o.text, "not enough room")) << o.text;
    EXPECT_EQ(fileBytes(old), "an older take");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(d.dir()), {}), 1);
}

// Every command that writes a file the user named, on a disk with no room
// left: the old file stays byte for byte, the message gives the reason, and
// no half-written file is left beside it.
TEST(FullDisk, TakesMp3sNormalisedFilesRipsAndPlaylistsKeepTheOldFile) {
    SmallDisk d(512);
    if (!d.mounted()) GTEST_SKIP() << "no tmpfs can be mounted here";
    const std::string tone = velaro::tempFolder() + "/full-disk-tone-" + std::to_string(getpid()) + ".wav";
    writeTone(tone, {.seconds = 2.0});
    const std::string song = writeTemp("two-seconds.mid", noteSong(2));
    const std::string cue = writeImage(velaro::tempFolder(), "full-disk-disc-" + std::to_string(getpid()), plainDisc(1, 150));
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"take.wav", "record " + song + " --mic " + tone + " -o "},
        {"digital.wav", "record --digital --seconds 1 --mic " + tone + " -o "},
        {"song.mp3", "encode " + tone + " -o "},
        {"loud.wav", "normalize " + tone + " -o "},
        {"track.wav", "cd rip --device " + cue + " --track 1 -o "},
        {"track.wma", "cd rip --device " + cue + " --track 1 --wma "},
        {"list.mpl", "playlist --add " + tone + " -o "},
    };
    for (const auto& [name, command] : cases) d.put(name, "the old " + name);
    d.fill();
    for (const auto& [name, command] : cases) {
        const Out o = run(command + d.path(name));
        EXPECT_EQ(o.code, 1) << name << ": " << o.text;
        EXPECT_TRUE(has(o.text, "No space left on device") || has(o.text, "Error Code")) << name << ": " << o.text;
        EXPECT_EQ(fileBytes(d.path(name)), "the old " + name);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(d.dir()), {}), long(cases.size()) + 1);  // and the filler
    std::filesystem::remove(tone);
}

TEST(EmptySongs, RenderAndPlayEndAtOnce) {
    const std::string empty = writeTemp("empty.mid", smfHeader(0, 1, 96) + smfTrack(bytes({0x00, 0xFF, 0x2F, 0x00})));
    // Meta events only, over two seconds of music time.
    const std::string metaOnly = writeTemp("meta-only.mid",
        smfHeader(1, 1, 96) + smfTrack(bytes({0x00}) + tempoEvent(500000) + bytes({0x00}) + textEvent("@Ttitle") +
                                       vlq(384) + bytes({0xFF, 0x2F, 0x00})));
    const std::string zeroDivision = writeTemp("zero-division.mid", smfHeader(0, 1, 0) + smfTrack(bytes({0x00, 0xFF, 0x2F, 0x00})));
    for (const std::string& song : {empty, metaOnly, zeroDivision}) {
        const std::string out = writeTemp("silent.wav", "");
        Out r = run("render " + song + " -o " + out);
        EXPECT_EQ(r.code, 0) << song << r.text;
        EXPECT_TRUE(has(r.text, "the song has no notes")) << r.text;
        EXPECT_EQ(velaro::fileLength(out), 44);  // a wave header, no frames
        Out p = run("play " + song + " --no-device --out " + out);
        EXPECT_EQ(p.code, 0) << song << p.text;
        EXPECT_TRUE(has(p.text, "The song has no notes.")) << p.text;
        // A take over it ends too: the second the device runs on, and no more.
        Out t = run("record " + song + " --no-device -o " + out);
        EXPECT_EQ(t.code, 0) << song << t.text;
        EXPECT_TRUE(has(t.text, "the song has no notes")) << t.text;
        EXPECT_LT(velaro::fileLength(out), 44 + 176400 * 2);
    }
}
