// MPEG frame analysis, ReadTags and Lyrics3 on byte-built files.

#include <gtest/gtest.h>

#include <unistd.h>

#include "core/base/byte_text.h"
#include "core/base/paths.h"
#include "core/tags/id3v1.h"
#include "core/tags/mmp3.h"
#include "support/song_bytes.h"

using namespace velaro;
using namespace velaro::tags;
using velaro::testing::writeTemp;

namespace {

// A frame header at 1-based position `at` in a body of `size` bytes.
std::string withHeader(size_t size, size_t at, uint8_t b1, uint8_t b2, uint8_t b3) {
    std::string s(size, '\0');
    s[at - 1] = '\xFF';
    s[at] = static_cast<char>(b1);
    s[at + 1] = static_cast<char>(b2);
    s[at + 2] = static_cast<char>(b3);
    return s;
}

std::string tag(const std::string& title, const std::string& artist, uint8_t genre, char pad = ' ') {
    std::string t = "TAG";
    for (const auto& [text, w] : {std::pair{title, 30}, {artist, 30}, {std::string("Album"), 30},
                                  {std::string("1999"), 4}, {std::string("Comment"), 30}}) {
        std::string f = text;
        f.resize(static_cast<size_t>(w), pad);
        t += f;
    }
    return t + static_cast<char>(genre);
}

std::string lyricsBlock(const std::string& fields) {
    char size[7];
    std::snprintf(size, sizeof size, "%06zu", 11 + fields.size());
    return "LYRICSBEGIN" + fields + size + "LYRICS200";
}

std::string lyrField(const std::string& name, const std::string& data) {
    char len[6];
    std::snprintf(len, sizeof len, "%05zu", data.size());
    return name + len + data;
}

Mp3Info info(const std::string& bytes, Mmp3& m) { return m.GetMp3Info(writeTemp("t.mp3", bytes)); }

}  // namespace

TEST(FrameSearch, FirstSyncWithin4092) {
    Mmp3 m;
    EXPECT_EQ(info(withHeader(8000, 4092, 0xFB, 0x90, 0x44), m).Layer, "layer 3");
    EXPECT_EQ(info(withHeader(8000, 4093, 0xFB, 0x90, 0x44), m).Layer, "");
    EXPECT_EQ(info(withHeader(8000, 10, 0xF1, 0x90, 0x44), m).MpegVersion, "");  // 241 is in neither range
    Mp3Info r = info(withHeader(8000, 10, 0xFF, 0x90, 0x44), m);
    EXPECT_EQ(r.MpegVersion, "MPEG 1.0");
    EXPECT_EQ(r.Layer, "layer 1");
    EXPECT_EQ(r.Crc, "No");
    EXPECT_EQ(info(withHeader(8000, 10, 0xFA, 0x90, 0x44), m).Crc, "Yes");
}

TEST(FrameSearch, VersionLayerRateAndBitRateArithmetic) {
    Mmp3 m;
    Mp3Info a = info(withHeader(160000, 1, 0xFB, 0x90, 0x44), m);
    EXPECT_EQ(a.BitRate, "128 Kbps");
    EXPECT_EQ(a.SampleRate, "44.1 Hz");
    EXPECT_EQ(a.Length, "00:10");  // 160000 bytes at 16000 a second
    EXPECT_EQ(a.ChannelMode, "Joint Stereo");
    EXPECT_EQ(a.Original, "Yes");
    EXPECT_EQ(a.Copyrighted, "No");
    EXPECT_EQ(a.Emphasis, "None");
    EXPECT_EQ(a.Size, "0.15 MB");
    Mp3Info b = info(withHeader(160000, 1, 0xF3, 0x90, 0xCB), m);
    EXPECT_EQ(b.MpegVersion, "MPEG 2.0");
    EXPECT_EQ(b.Layer, "layer 3");
    EXPECT_EQ(b.BitRate, "80 Kbps");
    EXPECT_EQ(b.SampleRate, "22.05 Hz");
    EXPECT_EQ(b.ChannelMode, "Mono");
    EXPECT_EQ(b.Copyrighted, "Yes");
    EXPECT_EQ(b.Emphasis, "CITT j. 17");

    struct {
        uint8_t b1, b2;
        const char *rate, *layer, *khz;
    } const cases[] = {
        {0xFB, 0x00, "24 Kbps", "layer 3", "44.1 Hz"}, {0xFB, 0xF4, "320 Kbps", "layer 3", "48 Hz"},
        {0xFD, 0x58, "64 Kbps", "layer 2", "32 Hz"},   {0xFB, 0xA0, "160 Kbps", "layer 3", "44.1 Hz"},
        {0xF5, 0x8C, "64 Kbps", "layer 2", "16 Hz"},   {0xF3, 0x14, "8 Kbps", "layer 3", "24 Hz"},
        {0xFE, 0x6F, "80 Kbps", "layer 1", "32 Hz"},
    };
    for (const auto& c : cases) {
        Mp3Info r = info(withHeader(160000, 1, c.b1, c.b2, 0x00), m);
        EXPECT_EQ(r.BitRate, c.rate) << int(c.b1) << " " << int(c.b2);
        EXPECT_EQ(r.Layer, c.layer);
        EXPECT_EQ(r.SampleRate, c.khz);
    }
    // MPEG 2.0 index 0 is 0 Kbps: the length divides by zero and stops the reading there.
    Mp3Info z = info(withHeader(160000, 1, 0xF3, 0x00, 0x00), m);
    EXPECT_EQ(z.Layer, "layer 3");
    EXPECT_EQ(z.BitRate, "");
    EXPECT_EQ(z.Length, "");
    EXPECT_EQ(z.Size, "");
}

TEST(FrameSearch, XingFramesStepThroughTheSeconds) {
    std::string bitRate, seconds;
    Mmp3::VbrInfo(1000000, 58, bitRate, seconds);
    EXPECT_EQ(seconds, "1");
    EXPECT_EQ(bitRate, "8000 Kbit (VBR)");
    Mmp3::VbrInfo(1000000, 57 + 38 * 3, bitRate, seconds);
    EXPECT_EQ(seconds, "3");
    Mmp3::VbrInfo(1000000, 57 + 38 * 3 + 1, bitRate, seconds);
    EXPECT_EQ(seconds, "3");  // the third second takes one frame more
    Mmp3::VbrInfo(1000000, 57 + 38 * 3 + 2, bitRate, seconds);
    EXPECT_EQ(seconds, "4");
    EXPECT_THROW(Mmp3::VbrInfo(300 * 1024 * 1024, 1000, bitRate, seconds), std::exception);  // 32-bit overflow

    auto xing = [](int frames) {
        std::string s = withHeader(100000, 1, 0xFB, 0x90, 0x44);
        s.replace(36, 4, "Xing");
        s[45] = static_cast<char>(frames >> 16);
        s[46] = static_cast<char>(frames >> 8);
        s[47] = static_cast<char>(frames);
        return s;
    };
    Mmp3 m;
    Mp3Info r = info(xing(58), m);
    EXPECT_EQ(r.BitRate, "800 Kbit (VBR)");
    EXPECT_EQ(r.Length, "00:01");
    EXPECT_EQ(r.Size, "0.1 MB");
    r = info(xing(57), m);  // no second: the division fails
    EXPECT_EQ(r.BitRate, "");
    EXPECT_EQ(r.Length, "");
    EXPECT_EQ(r.Size, "");
    EXPECT_EQ(r.MpegVersion, "MPEG 1.0");
}

TEST(FrameSearch, LengthAndSizeTexts) {
    EXPECT_EQ(Mmp3::lengthText(4000), "01:06:40");
    EXPECT_EQ(Mmp3::lengthText(59), "00:59");
    EXPECT_EQ(Mmp3::lengthText(3600), "01:00:00");
    Mmp3 m;
    EXPECT_EQ(info(withHeader(3638558, 1, 0xFB, 0x90, 0x44), m).Size, "3.47 MB");
    EXPECT_EQ(info(withHeader(5000, 1, 0xFB, 0x90, 0x44), m).Size, "0 MB");
    EXPECT_EQ(info(std::string(3000, 'x'), m).Size, "");  // no frame: no MPEG field at all
}

TEST(Id3Readers, BothReadersOnTheSameTag) {
    const std::string body = withHeader(5000, 1, 0xFB, 0x90, 0x44);
    struct {
        uint8_t genre;
        const char* playlist;
        int editorPosition;
    } const cases[] = {{12, "Other", 13}, {67, "Phychedelic", 68}, {147, "Synth Pop", 148}, {255, "", 256}};
    for (const auto& c : cases) {
        const std::string path = writeTemp("g.mp3", body + tag("Song", "Band", c.genre, '\0'));
        Mmp3 m;
        Mp3Info r = m.GetMp3Info(path);
        EXPECT_EQ(r.Title, "Song");  // zero bytes gone
        EXPECT_EQ(r.Artist, "Band");
        EXPECT_EQ(r.Genre, c.editorPosition);
        EXPECT_TRUE(m.HasId3Tag);
        clsMP3Info info;
        info.setFilename(path);
        EXPECT_EQ(info.Title(), std::string("Song") + std::string(26, '\0'));  // zero bytes stay
        EXPECT_EQ(info.Genre(), c.playlist);
        EXPECT_EQ(info.Year(), "1999");
    }
}

TEST(Id3Readers, TinyAndTaglessFiles) {
    Mmp3 m;
    m.HasId3Tag = true;
    Mp3Info r = info("short", m);  // under 128 bytes: the read fails at once
    EXPECT_TRUE(m.HasId3Tag);
    EXPECT_EQ(r.Layer, "");
    info(withHeader(5000, 1, 0xFB, 0x90, 0x44), m);
    EXPECT_FALSE(m.HasId3Tag);
    EXPECT_FALSE(m.HasLyricsTag);
    r = info("", m);
    EXPECT_EQ(r.Genre, std::nullopt);
    r = m.GetMp3Info("/nonexistent/file.mp3");
    EXPECT_EQ(r.BitRate, "");
}

TEST(FileNameGuess, TheCasesOfTheGuesser) {
    auto g = [](const std::string& p) { return clsMP3Info::ParseFileName(p); };
    NameRecord r = g("/music/Band Name - 07 - Song.mp3");
    EXPECT_EQ(trim(r.Artist), "Band Name");
    EXPECT_EQ(trim(r.Title), "Song");
    r = g("My_Song.mp3");
    EXPECT_EQ(r.Title, "My Song");
    EXPECT_EQ(r.Artist, "");
    r = g("(Band) Song Name.mp3");
    EXPECT_EQ(r.Artist, "Band");
    EXPECT_EQ(r.Title, "Song Name");
    r = g("(Band) Album-Title.mp3");
    EXPECT_EQ(r.Album, "Title");
    EXPECT_EQ(r.Title, "Album");
    r = g("D:/Music/Band/07 - My Song.mp3");
    EXPECT_EQ(trim(r.Artist), "Band");
    EXPECT_EQ(trim(r.Title), "My Song");
    r = g("D:/Music/Band/My Song.mp3");
    EXPECT_EQ(trim(r.Artist), "Music");
    EXPECT_EQ(trim(r.Album), "Band");
    EXPECT_EQ(r.Title, "");
    EXPECT_EQ(clsMP3Info::CountDelimiters("", " "), 0);
    EXPECT_EQ(clsMP3Info::CountDelimiters("a b c", " "), 2);
    EXPECT_EQ(clsMP3Info::FolderAsArtist("/a/b /c"), "/a/b - c");
    EXPECT_THROW(g("(Band Song.mp3"), std::exception);  // no closing bracket

    const std::string bak = writeTemp("old.MP3.bak", "x");
    EXPECT_TRUE(clsMP3Info::IsMp3File(bak));
    EXPECT_FALSE(clsMP3Info::IsMp3File("/nonexistent/a.mp3"));
    clsMP3Info named;
    named.setFilename(writeTemp("Artist - 01 - Title.mp3", std::string(300, 'a')));
    EXPECT_EQ(named.Title(), "Title");
}

TEST(Id3Writer, WriteId3PatchesInPlace) {
    const std::string body = withHeader(5000, 1, 0xFB, 0x90, 0x44);
    const std::string path = writeTemp("w.mp3", body);
    WriteId3(path, makeId3Fields("A title that is longer than thirty", "Me", "", "2026", "c", 0));
    const std::string after = readWholeFile(path);
    EXPECT_EQ(after.size(), body.size());  // the last 128 bytes of audio became the tag
    EXPECT_EQ(after.substr(after.size() - 128, 3), "TAG");
    EXPECT_EQ(after.substr(after.size() - 125, 30), "A title that is longer than th");
    EXPECT_EQ(after.substr(after.size() - 95, 30), "Me" + std::string(28, ' '));
    EXPECT_EQ(after.back(), '\0');
    EXPECT_EQ(after.substr(0, after.size() - 128), body.substr(0, body.size() - 128));
    EXPECT_THROW(WriteId3(writeTemp("tiny.mp3", "abc"), makeId3Fields("", "", "", "", "", 0)), std::exception);
    EXPECT_THROW(WriteId3("/nonexistent/x.mp3", makeId3Fields("", "", "", "", "", 0)), std::exception);
    EXPECT_FALSE(fileExists("/nonexistent/x.mp3"));
}

TEST(Lyrics3, SizesOverwriteShrinkAndRemoval) {
    const std::string audio = withHeader(5000, 1, 0xFB, 0x90, 0x44);
    const std::string record = tag("T", "A", 12);
    const std::string path = writeTemp("l.mp3", audio);
    Mmp3 m;
    m.GetMp3Info(path);
    ASSERT_TRUE(m.WriteLyricsTag(path, record, ""));
    EXPECT_EQ(fileLength(path), 5000 + 128);  // no tags, no lyrics: exactly one record more

    m.GetMp3Info(path);
    ASSERT_TRUE(m.WriteLyricsTag(path, record, "0123456789"));
    std::string bytes = readWholeFile(path);
    EXPECT_EQ(bytes.size(), 5000u + 44 + 128);
    EXPECT_EQ(bytes.substr(5000, 19), "LYRICSBEGINLYR00010");
    EXPECT_EQ(bytes.substr(5000 + 29, 15), "000029LYRICS200");

    Mp3Info r = m.GetMp3Info(path);
    EXPECT_EQ(r.Lyrics, "0123456789");
    EXPECT_TRUE(m.HasLyricsTag);
    EXPECT_EQ(m.LyricsBlockStart, 5001);
    ASSERT_TRUE(m.WriteLyricsTag(path, record, "0123456789"));
    EXPECT_EQ(fileLength(path), 5000 + 44 + 128);  // the same lyrics again: the same length

    m.GetMp3Info(path);
    ASSERT_TRUE(m.WriteLyricsTag(path, record, "abc"));
    EXPECT_EQ(fileLength(path), 5000 + 37 + 128);  // shorter text: the file shrinks
    m.GetMp3Info(path);
    ASSERT_TRUE(m.WriteLyricsTag(path, record, ""));
    EXPECT_EQ(readWholeFile(path), audio + record);  // removal restores the length
}

TEST(Lyrics3, ReadingOtherBlocks) {
    const std::string audio = withHeader(5000, 1, 0xFB, 0x90, 0x44);
    const std::string record = tag("T", "A", 12);
    Mmp3 m;
    // An IND field before LYR; blanks around the text are lost.
    Mp3Info r = m.GetMp3Info(
        writeTemp("ind.mp3", audio + lyricsBlock(lyrField("IND", "10") + lyrField("LYR", "  la la  ")) + record));
    EXPECT_EQ(r.Lyrics, "la la");
    EXPECT_TRUE(m.HasLyricsTag);
    EXPECT_TRUE(m.LyricsSeen);

    // The size points where there is no LYRICSBEGIN.
    std::string broken = audio + lyricsBlock(lyrField("LYR", "text")) + record;
    broken.replace(5000, 11, "LYRICSBEGIX");
    r = m.GetMp3Info(writeTemp("broken.mp3", broken));
    EXPECT_FALSE(m.HasLyricsTag);
    EXPECT_EQ(r.Lyrics, "");
    EXPECT_EQ(m.LyricsBlockStart, 5001);

    // A version 1 ending: handled as no lyrics, but the trailer was seen.
    m.LyricsSeen = false;
    r = m.GetMp3Info(writeTemp("v1.mp3", audio + "LYRICSBEGINhelloLYRICSEND" + record));
    EXPECT_FALSE(m.HasLyricsTag);
    EXPECT_TRUE(m.LyricsSeen);
    // Analysing a tagless file afterwards keeps LyricsSeen.
    m.GetMp3Info(writeTemp("plain.mp3", audio));
    EXPECT_TRUE(m.LyricsSeen);
    EXPECT_FALSE(m.HasId3Tag);
}

TEST(Lyrics3, AFailedWriteLeavesTheFileAlone) {
    const std::string audio = withHeader(5000, 1, 0xFB, 0x90, 0x44) + tag("T", "A", 1);
    const std::string path = writeTemp("ro.mp3", audio);
    Mmp3 m;
    m.GetMp3Info(path);
    m.LyricsBlockStart = 999999;  // a place past the end of the file
    m.HasLyricsTag = true;
    EXPECT_FALSE(m.WriteLyricsTag(path, tag("X", "Y", 2), "words"));
    EXPECT_EQ(readWholeFile(path), audio);
    EXPECT_FALSE(m.WriteLyricsTag("/nonexistent/a.mp3", tag("X", "Y", 2), "words"));
    EXPECT_FALSE(fileExists("/nonexistent/a.mp3"));
}
