#include "core/base/paths.h"
#include "song_fixture.h"

using namespace velaro::testing;

namespace {

struct Variants : SongFixture {
    // A format 0 file whose track holds `events` after a tempo.
    static std::string format0(const std::string& events) {
        return smfHeader(0, 1, 96) + smfTrack(bytes({0x00}) + tempoEvent(500000) + events + bytes({0x00, 0xFF, 0x2F, 0x00}));
    }
    static std::string lyrics(int n, const std::string& word) {
        std::string s;
        for (int i = 0; i < n; ++i) s += bytes({0x10}) + meta(0x05, word);
        return s;
    }
    void open(const std::string& content, const std::string& name) {
        f.setSongPath(writeTemp(name, content));
        f.SOLTON();
        if (!f.skipConversion) f.senzatesto();
    }
    std::vector<std::string> notices() const {
        std::vector<std::string> out;
        for (const auto& b : dialogs.messageBoxes()) out.push_back(b.title + ": " + b.text);
        return out;
    }
};

}  // namespace

TEST_F(Variants, KarAndFormat1FilesGoStraightOn) {
    f.setSongPath("/nonexistent/song.kar");
    f.SOLTON();
    EXPECT_TRUE(f.skipConversion);  // decided by the name alone

    f.skipConversion = false;
    open(smfHeader(1, 1, 96) + smfTrack(lyrics(30, "<x")), "f1.mid");
    EXPECT_TRUE(f.skipConversion);
    EXPECT_TRUE(notices().empty());
}

TEST_F(Variants, SoltonLayoutIsNoticed) {
    open(format0(lyrics(30, "a<")), "plain.mid");
    EXPECT_FALSE(f.skipConversion);
    EXPECT_TRUE(notices().empty());
    open(format0(lyrics(7, "<a")), "seven.MID");
    EXPECT_TRUE(f.skipConversion);
    EXPECT_EQ(notices(), (std::vector<std::string>{"VELARO: Attenzione, il file \xC3\xA8 formato SOLTON"}));
}

TEST_F(Variants, AMissStartsTheSearchAgainSoOneMarkCountsManyTimes) {
    // Twenty searches over a single "<" event: hit, miss, hit, miss... ten hits.
    open(format0(lyrics(1, "<a")), "one.mid");
    EXPECT_TRUE(f.skipConversion);
    EXPECT_EQ(notices().size(), 1u);
}

TEST_F(Variants, MLiveMarkIsNoticedEvenWithoutLyrics) {
    open(format0(bytes({0x00, 0x20, 0x24, 0x00})), "mlive.mid");
    EXPECT_TRUE(f.skipConversion);
    EXPECT_EQ(notices(), (std::vector<std::string>{"VELARO: Attenzione, il file \xC3\xA8 formato M-LIVE"}));
}

TEST_F(Variants, TwentyFiveLyricEventsMakeALyricRichFile) {
    open(format0(lyrics(24, "la")), "24.mid");
    EXPECT_FALSE(f.skipConversion);
    EXPECT_EQ(f.lyricRich, 0);
    open(format0(lyrics(25, "la")), "25.mid");
    EXPECT_EQ(f.lyricRich, 1);
}

TEST_F(Variants, AHitPast32766EndsTheCheckSilently) {
    // The search start is a 16-bit number: a lyric event that far in overflows,
    // and the check ends before it could see the M-LIVE mark.
    std::string pad(33000, 'x');
    open(format0(pad + lyrics(1, "<a") + bytes({0x00, 0x20, 0x24, 0x00})), "far.mid");
    EXPECT_FALSE(f.skipConversion);
    EXPECT_TRUE(notices().empty());
}

TEST_F(Variants, UnreadableFilesEndTheCheck) {
    f.setSongPath("/nonexistent/song.mid");
    f.SOLTON();
    EXPECT_FALSE(f.skipConversion);
    open("MThd", "short.mid");  // too short for the format word
    EXPECT_FALSE(f.skipConversion);
    EXPECT_TRUE(notices().empty());
}

namespace {

// Records the converter's command line and writes what the converter would.
struct FakeConverter : velaro::platform::ProcessLauncher {
    std::string program;
    std::vector<std::string> args;
    std::string output;  // written to the second argument when waited for
    bool waited = false;
    int Start(const std::string& p, const std::vector<std::string>& a) override {
        program = p;
        args = a;
        return 42;
    }
    int Wait(int handle) override {
        waited = handle == 42;
        if (args.size() == 2 && !output.empty()) velaro::writeWholeFile(args[1], output);
        return 0;
    }
};

}  // namespace

TEST_F(Variants, ALyricRichFileGoesThroughTheConverter) {
    FakeConverter converter;
    velaro::platform::Platform p = inert.get();
    p.processes = &converter;
    velaro::song::frmMain form(rt, p);
    converter.output = song({bytes({0x00}) + textEvent("x")});

    const std::string mid = writeTemp("rich.mid", format0(lyrics(25, "la")));
    form.setSongPath(mid);
    form.OpenFile();
    EXPECT_EQ(converter.program, velaro::RPP(velaro::programFolder()) + "velaro-tx");
    EXPECT_EQ(converter.args, (std::vector<std::string>{mid, form.convertedPath}));
    EXPECT_TRUE(converter.waited);
    EXPECT_EQ(notices(), (std::vector<std::string>{"VELARO DECK: MID to KARAOKE"}));
    EXPECT_EQ(form.songPath(), form.convertedPath);

    // No output from the converter: the song stays as chosen.
    converter.output.clear();
    velaro::deleteFile(form.convertedPath);
    form.setSongPath(mid);
    form.OpenFile();
    EXPECT_EQ(form.songPath(), mid);
}
