#include <filesystem>
#include <random>
#include <unistd.h>

#include "core/base/paths.h"
#include "song_fixture.h"

using namespace velaro::testing;
using Lines = std::vector<std::string>;

namespace {
const std::string kEnd = bytes({0x00, 0xFF, 0x2F, 0x00});
std::string named(const std::string& name) { return bytes({0x00}) + meta(0x03, name); }
std::string textRun(int n, const std::string& word) {
    std::string s;
    for (int i = 0; i < n; ++i) s += bytes({0x00}) + textEvent(word);
    return s;
}
}  // namespace

TEST_F(SongFixture, HeaderDigitsAreJoinedWithoutPadding) {
    std::string s = smfHeader(1, 16, 480);
    read(s);
    EXPECT_EQ(f.smfFormat, 1);
    EXPECT_EQ(f.smfTracks, 16);
    s[8] = 0x01, s[9] = 0x02, s[10] = 0x01, s[11] = 0x00;
    read(s);
    EXPECT_EQ(f.smfFormat, 0x12);   // not 258
    EXPECT_EQ(f.smfTracks, 0x10);
    s[8] = '\xFF', s[9] = '\xFF';
    read(s);
    EXPECT_EQ(f.smfFormat, -1);
}

TEST_F(SongFixture, FirstTempoAndDivision) {
    read(song({bytes({0x00}) + tempoEvent(500000) + bytes({0x00}) + tempoEvent(250000)}));
    EXPECT_EQ(f.tempoUs, 500000);
    EXPECT_EQ(f.divisionQuarter, 120);
    EXPECT_FLOAT_EQ(f.songBpm, 120.0f);
    EXPECT_DOUBLE_EQ(f.msPerTick, 500000.0 / 120 / 4000);

    read(song({bytes({0x00}) + tempoEvent(450000)}, 96));
    EXPECT_EQ(f.divisionQuarter, 24);
    EXPECT_FLOAT_EQ(f.songBpm, 133.33f);  // rounded to two decimals

    // A file without a tempo keeps the last song's values.
    read(song({textRun(3, "la")}, 240));
    EXPECT_EQ(f.tempoUs, 450000);
    EXPECT_EQ(f.divisionQuarter, 24);
    EXPECT_FLOAT_EQ(f.songBpm, 133.33f);
}

TEST_F(SongFixture, WithoutAnyTempoEveryWordTimeIsZero) {
    read(song({textRun(3, "la") + bytes({0x60}) + textEvent("x")}));
    EXPECT_EQ(f.msPerTick, 0);
    for (const auto& w : f.wordTable) EXPECT_EQ(w.timeMs, 0);
    // A zero tempo is a division error, skipped: the model stays as it was.
    read(song({bytes({0x00}) + tempoEvent(0)}));
    EXPECT_EQ(f.tempoUs, 0);
    EXPECT_EQ(f.songBpm, 0);
    EXPECT_EQ(f.msPerTick, 0);
}

TEST_F(SongFixture, TheWordsTrackIsChosen) {
    read(song({bytes({0x00}) + tempoEvent(500000) + textRun(3, "@T"),
               textRun(2, "no"),
               named("Words") + bytes({0x00}) + textEvent("/Yes ") + bytes({0x00}) + textEvent("sir")}));
    EXPECT_EQ(texts(), (Lines{"Yes ", "sir"}));
    EXPECT_EQ(f.lineTable, (Lines{"", "Yes sir"}));
    EXPECT_EQ(f.fullLyricText, "\r\nYes sir\r\n");
}

TEST_F(SongFixture, FiftyTextEventsWinOverALaterWordsTrack) {
    const std::string words = named("Words") + bytes({0x00}) + textEvent("w");
    read(song({bytes({0x00}) + tempoEvent(500000), textRun(49, "a"), words}));
    EXPECT_EQ(texts(), (Lines{"w"}));
    read(song({bytes({0x00}) + tempoEvent(500000), textRun(50, "a"), words}));
    EXPECT_EQ(texts().size(), 50u);
    EXPECT_EQ(texts().front(), "a");
}

TEST_F(SongFixture, NoLyricTrackOrABrokenWalkReadsTheWholeFile) {
    read(song({bytes({0x00}) + tempoEvent(500000) + textRun(1, "one"), textRun(2, "two")}));
    EXPECT_EQ(texts(), (Lines{"one", "two", "two"}));

    // A chunk length that points past the end: the walk runs dry and the whole file is read.
    std::string s = song({textRun(1, "one"), named("Words") + textRun(1, "two")});
    s[14 + 4] = 0x7F;
    read(s);
    EXPECT_EQ(texts(), (Lines{"one", "two"}));
}

TEST_F(SongFixture, ChannelRowsFromTheFirstPlausibleBytes) {
    std::string body = bytes({0x00, 0x90, 0x3C, 0x40,        // channel 1 plays
                              0x00, 0xC0, 0x00, 0x00, 0xC0, 0x05,  // programs 0 then 5
                              0x00, 0xB0, 0x07, 0x00, 0x00, 0xB0, 0x07, 0x5A,  // volume 0 then 90
                              0x00, 0xB0, 0x0A, 0x00, 0x00, 0xB0, 0x0A, 0x46,  // pan 0 then 70
                              0x00, 0x91, 0x3C, 0x40,        // channel 2 plays
                              0x00, 0xC1, 0x00,              // program 0 only
                              0x00, 0xB1, 0x07, 0x7F,        // volume 127 only
                              0x00, 0xB1, 0x0A, 0x00, 0x00, 0xB1, 0x0A, 0x00,  // pan 0 twice
                              0x00, 0x93, 0x3C, 0x40,        // channel 4: no controllers
                              0x00, 0xB3, 0x0A, 0x90});      // pan 144, nothing after it
    int clicks = 0;
    f.Check1(0).Click = [&] { ++clicks; };
    read(song({bytes({0x00}) + tempoEvent(500000) + body}));
    const auto& c = f.channelTable;
    EXPECT_EQ(c[0].channelNo, 1);
    EXPECT_EQ(c[0].patch, 5);
    EXPECT_EQ(c[0].volume, 90);
    EXPECT_EQ(c[0].pan, 70);
    EXPECT_EQ(c[0].rowState, 2);
    EXPECT_EQ(c[1].patch, 0);
    EXPECT_EQ(c[1].volume, 100);
    EXPECT_EQ(c[1].pan, 0);
    EXPECT_EQ(c[3].volume, 100);
    EXPECT_EQ(c[3].pan, 144);  // taken as it is when no second one is found
    EXPECT_EQ(c[2].channelNo, -1);
    EXPECT_EQ(c[9].channelNo, -1);  // no 0x99 byte anywhere
    EXPECT_EQ(c[9].pan, 64);
    EXPECT_EQ(c[9].rowState, 0);

    EXPECT_EQ(f.Slider2(0).value(), 90);
    EXPECT_TRUE(f.Slider2(0).enabled());
    EXPECT_EQ(f.Check1(0).value(), 1);
    EXPECT_EQ(clicks, 1);
    EXPECT_TRUE(f.Option1(0).enabled());
    EXPECT_FALSE(f.Slider2(9).enabled());
    EXPECT_EQ(f.Slider2(9).value(), 0);
}

TEST_F(SongFixture, AnyStatusByteMarksAChannelUsed) {
    // 0x9F inside a text and 0xC2 in the header area: channel 16 used, no program read before byte 22.
    read(song({bytes({0x00}) + textEvent(std::string("x\x9F", 2))}));
    EXPECT_EQ(f.channelTable[15].channelNo, 16);
    EXPECT_EQ(f.channelTable[15].volume, 100);
}

TEST_F(SongFixture, KeepSongModelKeepsEverything) {
    read(song({bytes({0x00, 0x90, 0x3C, 0x40}) + textRun(2, "/ab")}));
    f.keepSongModel = true;
    f.ZeroVariables();
    EXPECT_EQ(f.lineUpperBound(), 2);
    EXPECT_EQ(f.channelTable[0].channelNo, 1);
    EXPECT_EQ(f.Slider2(0).value(), 100);
    f.keepSongModel = false;
    f.ZeroVariables();
    EXPECT_EQ(f.lineUpperBound(), 0);
    EXPECT_EQ(f.wordUpperBound(), 0);
    EXPECT_EQ(f.channelTable[0].channelNo, -1);
    EXPECT_EQ(f.Slider2(0).value(), 0);
    EXPECT_FALSE(f.Slider2(0).enabled());
    EXPECT_EQ(f.Check1(0).value(), 0);
}

TEST_F(SongFixture, ThePatchFileIsTheSameEveryTime) {
    // A temp folder of its own, so no other test's patch file is read.
    const std::string dir = velaro::tempFolder() + "/patch-" + std::to_string(getpid());
    std::filesystem::create_directories(dir);
    const std::string song1 = writeTemp("patch.kar", song({textRun(1, "x")}));
    setenv("TMPDIR", dir.c_str(), 1);
    f.setSongPath(song1);
    f.ZeroVariables();
    f.readfile();
    std::string a = velaro::readWholeFile(f.tempPatchPath);
    ASSERT_EQ(a.size(), 411u);
    EXPECT_EQ(a.substr(0, 23), bytes({0x4D, 0x54, 0x68, 0x64, 0, 0, 0, 6, 0, 0, 0, 1, 0, 0x60, 0x4D, 0x54, 0x72,
                                      0x6B, 0, 0, 1, 0x80, 0}));
    for (int p = 0; p < 128; ++p) EXPECT_EQ(a.substr(23 + 3 * p, 3), bytes({0xC0, p, 0x01}));
    EXPECT_EQ(a.substr(407), bytes({0x00, 0xFF, 0x2F, 0x00}));
    EXPECT_EQ(f.tempPatchPath, velaro::RPP(velaro::tempFolder()) + "filetemp.tmp");
    f.setSongPath("/nonexistent/garbage.kar");
    f.readfile();
    EXPECT_EQ(velaro::readWholeFile(f.tempPatchPath), a);
    setenv("TMPDIR", std::filesystem::path(dir).parent_path().c_str(), 1);
}

TEST_F(SongFixture, AnyBytesAreSurvived) {
    // Every cut of a real song, then random files with song-like bytes sprinkled in.
    std::string s = song({bytes({0x00}) + tempoEvent(500000) + textRun(60, "/la ") +
                              bytes({0x00, 0x90, 0x3C, 0x40, 0x00, 0xB0, 0x07}),
                          named("Words") + textRun(5, "w")});
    for (size_t n = 0; n <= s.size(); n += 3) {
        f.keepSongModel = false;
        read(s.substr(0, n));
    }
    std::mt19937 rng(1234);
    const char alphabet[] = {'\xFF', '\x01', '\x51', '\x03', '\x05', '/', '\\', '@', '\x90', '\xB0', '\x07', 'a'};
    for (int k = 0; k < 200; ++k) {
        std::string junk(rng() % 3000, '\0');
        for (char& c : junk) c = (rng() % 2) ? alphabet[rng() % sizeof alphabet] : static_cast<char>(rng());
        if (k % 2) junk = smfHeader(1, static_cast<int>(rng() % 40), 480) + junk;
        read(junk);
        ASSERT_GE(f.lineUpperBound(), 0);
        ASSERT_EQ(f.fullLyricText.size() >= 2u * f.lineTable.size(), true);
    }
    f.setSongPath("/nonexistent/song.kar");
    f.ZeroVariables();
    f.readfile();
    EXPECT_EQ(f.wordUpperBound(), f.wordTable.size() - 1);
}
