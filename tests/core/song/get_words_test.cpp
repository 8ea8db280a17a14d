#include "song_fixture.h"

using namespace velaro::testing;
using Lines = std::vector<std::string>;

namespace {

struct Words : SongFixture {
    void run(const std::string& text, double msPerTick = 1.0) {
        f.ZeroVariables();
        f.msPerTick = msPerTick;
        f.GetWords(text);
    }
    // Text events each followed by a one-byte delta of 10 ticks.
    static std::string events(const std::vector<std::string>& words) {
        std::string s;
        for (const auto& w : words) s += textEvent(w) + bytes({10});
        return s + meta(0x2F, "");
    }
};

}  // namespace

TEST_F(Words, WorkedExample) {
    run(bytes({0xFF, 0x01, 0x03, 0x2F, 0x48, 0x65, 0x0A, 0xFF, 0x01, 0x02, 0x6C, 0x6C, 0x14, 0xFF, 0x01,
               0x01, 0x6F, 0x05, 0xFF, 0x2F, 0x00}));
    ASSERT_EQ(f.wordUpperBound(), 4);
    struct Row {
        const char* text;
        double delta, time;
        int line, pos, len;
    };
    const Row want[] = {{"He", 10, 10, 1, 0, 2}, {"ll", 20, 30, 1, 2, 2}, {"o", 5, 35, 1, 4, 1}, {"", 5, 40, 1, 5, 0}};
    for (int i = 1; i <= 4; ++i) {
        const auto& w = f.wordTable[i];
        SCOPED_TRACE(i);
        EXPECT_EQ(w.text, want[i - 1].text);
        EXPECT_EQ(w.deltaMs, want[i - 1].delta);
        EXPECT_EQ(w.timeMs, want[i - 1].time);
        EXPECT_EQ(w.lineIndex, want[i - 1].line);
        EXPECT_EQ(w.linePos, want[i - 1].pos);
        EXPECT_EQ(w.textLen, want[i - 1].len);
    }
    EXPECT_EQ(f.lineTable, (Lines{"", "Hello"}));
}

TEST_F(Words, MarksMakeLines) {
    run(events({"pre ", "/", "One ", "two", "\\ Three", " /kept", " / ", "//x", "@Ttitle", "end"}));
    EXPECT_EQ(f.lineTable, (Lines{"pre ", "One two", "Three /kept", "", "/xend"}));
    // The lone mark's record: empty, at the head of its own line.
    EXPECT_EQ(f.wordTable[2].text, "");
    EXPECT_EQ(f.wordTable[2].lineIndex, 1);
    // The word after a lone mark starts that line at 0.
    EXPECT_EQ(f.wordTable[3].linePos, 0);
    EXPECT_EQ(f.wordTable[4].linePos, 4);
    // A space before the mark makes a plain word that keeps it.
    EXPECT_EQ(f.wordTable[6].text, " /kept");
    EXPECT_EQ(f.wordTable[6].linePos, 5);
    // "@" texts give an empty record that still counts its delta.
    EXPECT_EQ(f.wordTable[9].text, "");
    EXPECT_EQ(f.wordTable[9].timeMs, 90);
    EXPECT_EQ(f.wordTable[10].linePos, 2);
}

TEST_F(Words, DeltaFormsFollowTheNextFF) {
    // Two-byte delta 0x81 0x00 = 128 ticks; three-byte 0x81 0x80 0x00 = 16384.
    std::string s = textEvent("a") + bytes({0x81, 0x00}) + textEvent("b") + bytes({0x81, 0x80, 0x00}) +
                    textEvent("c") + bytes({0xC8}) + textEvent("d");
    run(s, 0.5);
    EXPECT_EQ(f.wordTable[1].deltaMs, 64);
    EXPECT_EQ(f.wordTable[2].deltaMs, 8192);
    EXPECT_EQ(f.wordTable[3].deltaMs, 100);  // a one-byte delta is taken unmasked
    EXPECT_EQ(f.wordTable[3].timeMs, 64 + 8192 + 100);

    // A channel event after the delta: the four bytes are read as one delta.
    run(textEvent("x") + bytes({0x10, 0x90, 0x3C, 0x40, 0x00}) + textEvent("y") + bytes({0x05}) +
        meta(0x2F, ""));
    const double four = ((((0x10 * 128) | 0x10) * 128) | 0x3C) * 128 | 0x40;
    EXPECT_EQ(f.wordTable[1].deltaMs, four);
    EXPECT_EQ(f.wordTable[2].timeMs, four + 5);

    // At the end of the text the delta bytes cannot be read and keep their
    // last values: the tail record repeats the delta before it.
    run(textEvent("x") + bytes({0x10, 0x90, 0x3C, 0x40, 0x00}) + textEvent("y") + bytes({0x05}));
    EXPECT_EQ(f.wordTable[2].deltaMs, ((((0x05 * 128) | 0x10) * 128) | 0x3C) * 128 | 0x40);
}

TEST_F(Words, EveryFFByteIsAnEvent) {
    // A tempo value holding FF gives a record of its own.
    run(textEvent("a") + bytes({0x00}) + meta(0x51, bytes({0x07, 0xFF, 0x20})) + bytes({0x00}) + textEvent("b"));
    EXPECT_EQ(f.wordUpperBound(), 4);
    EXPECT_EQ(texts(), (Lines{"a", "b"}));

    // Lyric events (FF 05) are not words.
    run(meta(0x05, "la") + bytes({0x10}) + meta(0x05, "/li") + bytes({0x10}));
    EXPECT_EQ(f.lineTable, (Lines{""}));
    EXPECT_TRUE(texts().empty());

    // No FF at all: only the index 0 entries.
    run("plain text");
    EXPECT_EQ(f.wordUpperBound(), 0);
    EXPECT_EQ(f.lineTable, (Lines{""}));
}

TEST_F(Words, ALengthPastTheEndGivesAShorterWord) {
    run(bytes({0xFF, 0x01, 0x40}) + "abc");
    EXPECT_EQ(f.wordTable[1].text, "abc");
    EXPECT_EQ(f.wordTable[1].deltaMs, 0);  // the delta bytes were never there
}

TEST_F(Words, ALineLongerThan32767CharactersStopsGrowingItsCount) {
    std::vector<std::string> many(300, std::string(120, 'x'));
    run(events(many));
    // charPos is a 16-bit count: once it would overflow it stays where it was.
    EXPECT_EQ(f.wordTable[273].linePos, 272 * 120);
    EXPECT_EQ(f.wordTable[274].linePos, 32760);
    EXPECT_EQ(f.wordTable[300].linePos, 32760);
    EXPECT_EQ(f.lineTable[0].size(), 300u * 120);  // the line text itself goes on
}
