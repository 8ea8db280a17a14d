// The ripper's texts: times, the CD-TEXT block, the list lines and the wave header.

#include <gtest/gtest.h>

#include "core/cd/cd_text.h"

using namespace velaro::cd;

TEST(Seconds2HMS, RoundsHalfUpAndShowsHoursOnlyFromOneHour) {
    EXPECT_EQ(Seconds2HMS(0), "00:00");
    EXPECT_EQ(Seconds2HMS(59.4), "00:59");
    EXPECT_EQ(Seconds2HMS(59.5), "01:00");
    EXPECT_EQ(Seconds2HMS(3599.4), "59:59");
    EXPECT_EQ(Seconds2HMS(3599.5), "01:00:00");
    EXPECT_EQ(Seconds2HMS(3600), "01:00:00");
    EXPECT_EQ(Seconds2HMS(3 * 3600 + 62), "03:01:02");
    // Hours are cut to two digits from the right.
    EXPECT_EQ(Seconds2HMS(123 * 3600.0), "23:00:00");
}

TEST(CdTextBlock, DiscEntryTitlesPerformersAndOddEntries) {
    using namespace std::string_literals;
    const std::string block =
        "TITLE0=Album\0PERFORMER0=Band\0title1=One\0PERFORMER1=Ann\0SONGWRITER1=Zed\0"
        "TITLE2=a=b=c\0TITLE3\0PERFORMER9=Nobody\0TITLE2x=Kept\0\0TITLE1=After the end\0"s;
    const CdText t = parseCdText(block, 3);
    ASSERT_EQ(t.titles.size(), 4u);
    EXPECT_EQ(t.titles[0], "Album");
    EXPECT_EQ(t.performers[0], "Band");
    EXPECT_EQ(t.titles[1], "One");  // keys in any case
    EXPECT_EQ(t.performers[1], "Ann");
    EXPECT_EQ(t.titles[2], "Kept");  // numeric prefix "2x" is 2; the later entry wins
    EXPECT_EQ(t.titles[3], "");      // no "=": empty
    EXPECT_EQ(t.performers[3], "");
}

TEST(CdTextBlock, TitleWithEqualsKeepsAllAfterTheFirst) {
    using namespace std::string_literals;
    const CdText t = parseCdText("TITLE1=Me = You\0\0"s, 1);
    EXPECT_EQ(t.titles[1], "Me = You");
}

TEST(CdTextBlock, SurvivesAnyBytes) {
    for (int seed = 0; seed < 200; ++seed) {
        std::string junk;
        for (int i = 0; i < seed; ++i) junk += static_cast<char>((seed * 131 + i * 17) & 0xFF);
        junk += "TITLE99999999999999=x";
        const CdText t = parseCdText(junk, seed % 5);
        EXPECT_EQ(t.titles.size(), static_cast<size_t>(seed % 5 + 1));
    }
}

TEST(TrackLines, WithAndWithoutCdText) {
    EXPECT_EQ(trackLine(1, 176400 * 185), "01\tTrack 1\t[03:05]");
    EXPECT_EQ(trackLine(12, 176400 * 3600), "12\tTrack 12\t[01:00:00]");
    EXPECT_EQ(trackLine(3, 2352 * 75 * 2, "Song", "Singer"), "03\tSong / Singer\t[00:02]");
    // 37 sectors are under half a second, 38 over.
    EXPECT_EQ(trackTime(2352 * 37), "00:00");
    EXPECT_EQ(trackTime(2352 * 38), "00:01");
}

TEST(WaveHeader, TheProgramsOwnLayout) {
    const std::string h = waveHeader(2, 44100, 16, 0);
    const std::string want("RIFF\x24\0\0\0WAVEfmt \x10\0\0\0\x01\0\x02\0\x44\xAC\0\0\x10\xB1\x02\0\x04\0\x10\0data\0\0\0\0", 44);
    EXPECT_EQ(h, want);
    const std::string mono8 = waveHeader(1, 22050, 8, 1000);
    EXPECT_EQ(mono8.substr(4, 4), std::string("\x0C\x04\0\0", 4));  // 1036
    EXPECT_EQ(mono8.substr(22, 2), std::string("\x01\0", 2));
    EXPECT_EQ(mono8.substr(28, 4), std::string("\x22\x56\0\0", 4));  // 22050 bytes per second
    EXPECT_EQ(mono8.substr(32, 4), std::string("\x01\0\x08\0", 4));
    EXPECT_EQ(mono8.substr(40, 4), std::string("\xE8\x03\0\0", 4));
}
