// velaro backing, play and record --audio as a user runs them: an MP3 with a
// singer in the middle comes out without the singer and with its bass; the
// error box's text and exit codes; a module; key and speed; an Audio take is
// the backing's render plus the microphone from the backing's first sample.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "core/base/paths.h"
#include "support/backing_audio.h"

using namespace velaro::testing;

namespace {

struct Out {
    int code;
    std::string text;
};

Out run(const std::string& args) {
    const std::string home = velaro::tempFolder() + "/backing-home-" + std::to_string(getpid());
    FILE* p = popen(("VELARO_HOME=" + home + " timeout -k 5 120 " + std::string(VELARO_BIN) + " " + args + " 2>&1").c_str(), "r");
    Out o{-1, {}};
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) o.text.append(buf, n);
    const int st = pclose(p);
    o.code = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return o;
}

struct BackingCli : ::testing::Test {
    std::string dir = velaro::tempFolder() + "/backing-cli-" + std::to_string(getpid());
    void SetUp() override { std::filesystem::create_directories(dir); }
    void TearDown() override { std::filesystem::remove_all(dir); }
    std::string at(const std::string& name) const { return dir + "/" + name; }
    // A song: a voice at 1 kHz and a bass at 60 Hz in the middle, a 3 kHz guitar out to the sides.
    std::string song(double seconds = 3.0) {
        const std::string wav = at("song.wav");
        writeStereo(wav, 44100, seconds, [](double t) {
            const double voice = 0.25 * std::sin(kTwoPi * 1000 * t), bass = 0.25 * std::sin(kTwoPi * 60 * t),
                         side = 0.15 * std::sin(kTwoPi * 3000 * t);
            return std::make_pair(voice + bass + side, voice + bass - side);
        });
        return wav;
    }
};

}  // namespace

TEST_F(BackingCli, TheRemoverTakesTheSingerOutOfAnMp3AndKeepsTheBass) {
    const std::string mp3 = at("song.mp3");
    ASSERT_EQ(std::system(("lame --quiet -b 192 " + song() + " " + mp3).c_str()), 0);
    Out plain = run("backing " + mp3 + " -o " + at("plain.wav"));
    ASSERT_EQ(plain.code, 0) << plain.text;
    Out cut = run("backing " + mp3 + " --remove-vocals -o " + at("cut.wav"));
    ASSERT_EQ(cut.code, 0) << cut.text;
    int rate = 0;
    const std::vector<float> a = readStereo(at("plain.wav"), &rate), b = readStereo(at("cut.wav"));
    EXPECT_EQ(rate, 44100);
    EXPECT_NEAR(double(a.size()) / 2 / rate, 3.0, 0.01);
    EXPECT_EQ(a.size(), b.size());
    const size_t from = 22050, count = 44100;
    for (int ch = 0; ch < 2; ++ch) {
        // The voice falls by more than 25 dB; the bass stays within a few dB.
        EXPECT_LT(levelDb(b, ch, rate, 1000, from, count), levelDb(a, ch, rate, 1000, from, count) - 25);
        EXPECT_GT(levelDb(b, ch, rate, 60, from, count), levelDb(a, ch, rate, 60, from, count) - 6);
        EXPECT_GT(levelDb(b, ch, rate, 3000, from, count), -30);
    }
    // Flat equalisers and no bass stream: the backing as it is.
    Out flat = run("backing " + at("song.wav") + " --vseq 10,10,10,10,10,10,10,10 -o " + at("flat.wav"));
    ASSERT_EQ(flat.code, 0) << flat.text;
    const std::vector<float> f = readStereo(at("flat.wav")), s = readStereo(at("song.wav"));
    ASSERT_EQ(f.size(), s.size());
    double worst = 0;
    for (size_t i = 0; i < f.size(); ++i) worst = std::max(worst, double(std::fabs(f[i] - s[i])));
    EXPECT_LT(worst, 2.0 / 32768);
}

TEST_F(BackingCli, ControlValuesChangeTheSoundAsTheirSlidersDo) {
    song();
    // The main stream's 40 Hz band up (0 = +10 dB) against the design; the bass stream off.
    ASSERT_EQ(run("backing " + at("song.wav") + " --remove-vocals --bass-boost 10 -o " + at("nobass.wav")).code, 0);
    ASSERT_EQ(run("backing " + at("song.wav") + " --remove-vocals --bass-boost 0 -o " + at("bass.wav")).code, 0);
    ASSERT_EQ(run("backing " + at("song.wav") + " --remove-vocals --no-bass-boost -o " + at("free.wav")).code, 0);
    const std::vector<float> none = readStereo(at("nobass.wav")), full = readStereo(at("bass.wav")),
                             free = readStereo(at("free.wav"));
    const double n = levelDb(none, 0, 44100, 60, 22050, 44100), b = levelDb(full, 0, 44100, 60, 22050, 44100),
                 fr = levelDb(free, 0, 44100, 60, 22050, 44100);
    EXPECT_LT(n, -50);   // the centre bass is cut and nothing brings it back
    EXPECT_GT(b, n + 40);
    // Without BassBoost the volume effect is gone: the bass stream at full level, as at 0.
    EXPECT_NEAR(fr, b, 0.5);
}

TEST_F(BackingCli, BadInputExitsWithTheBoxOrTheUsage) {
    Out missing = run("backing " + at("nothing.mp3") + " -o " + at("x.wav"));
    EXPECT_EQ(missing.code, 1);
    EXPECT_NE(missing.text.find("Selected file couldn't be loaded!"), std::string::npos) << missing.text;
    EXPECT_NE(missing.text.find("BASS Error Code: 2"), std::string::npos);
    EXPECT_NE(missing.text.find("BASS_FX Error Code: "), std::string::npos);
    FILE* junk = std::fopen(at("junk.mp3").c_str(), "wb");
    std::fputs("this is not sound at all, just words in a file", junk);
    std::fclose(junk);
    Out bad = run("backing " + at("junk.mp3") + " -o " + at("x.wav"));
    EXPECT_EQ(bad.code, 1);
    EXPECT_NE(bad.text.find("BASS Error Code: 41"), std::string::npos) << bad.text;
    EXPECT_FALSE(std::filesystem::exists(at("x.wav")));
    for (const char* opts : {"--vseq 1,2,3", "--vseq 0,0,0,0,0,0,0,20", "--veq a,b,c,d,e,f,g,h", "--bass-boost 11",
                             "--key 13", "--speed 49", "--speed 151", "--rate 0", "--frobnicate", ""}) {
        Out o = run("backing " + at("junk.mp3") + " " + opts + (std::string(opts).empty() ? "" : " -o " + at("x.wav")));
        EXPECT_EQ(o.code, 2) << opts << ": " << o.text;
    }
    Out rec = run("record --audio " + at("nothing.mp3") + " -o " + at("take.wav") + " --mic " + at("nothing.wav"));
    EXPECT_EQ(rec.code, 1);
    EXPECT_NE(rec.text.find("Selected file couldn't be loaded!"), std::string::npos) << rec.text;
}

TEST_F(BackingCli, AMonoFileTellsOfTheBoxAndPlaysAllTheSame) {
    writeStereo(at("mono.wav"), 22050, 1.0, [](double t) { return std::make_pair(0.3 * std::sin(kTwoPi * 300 * t), 0.0); }, 1);
    Out o = run("backing " + at("mono.wav") + " --remove-vocals -o " + at("mono-out.wav"));
    ASSERT_EQ(o.code, 0) << o.text;
    EXPECT_NE(o.text.find("VelaroRemover: Only Stereo "), std::string::npos) << o.text;
    int rate = 0;
    const std::vector<float> m = readStereo(at("mono-out.wav"), &rate);
    EXPECT_EQ(rate, 22050);
    EXPECT_NEAR(double(m.size()) / 2 / rate, 1.0, 0.01);
    // Left and right alike: the cut leaves nothing of the main stream, the bass stream plays on.
    EXPECT_GT(levelDb(m, 0, rate, 300, rate / 4, rate / 2), -60);
}

TEST_F(BackingCli, AModulePlaysOnceThroughAtTheEnginesRate) {
    ASSERT_TRUE(writeTinyModule(at("tiny.mod")));
    Out o = run("backing " + at("tiny.mod") + " --remove-vocals -o " + at("mod.wav"));
    ASSERT_EQ(o.code, 0) << o.text;
    int rate = 0;
    const std::vector<float> m = readStereo(at("mod.wav"), &rate);
    EXPECT_EQ(rate, 44100);
    // 64 rows at speed 6 and 125 BPM: 7.68 s, once.
    EXPECT_NEAR(double(m.size()) / 2 / rate, 7.68, 1.0);
    float peak = 0;
    for (float v : m) peak = std::max(peak, std::fabs(v));
    EXPECT_GT(peak, 0.01f);
}

TEST_F(BackingCli, KeyAndSpeedOnTheCommandLine) {
    const std::string tone = at("a440.wav");
    writeStereo(tone, 48000, 3.0, [](double t) {
        const double v = 0.3 * std::sin(kTwoPi * 440 * t);
        return std::make_pair(v, v);
    });
    ASSERT_EQ(run("backing " + tone + " --key 2 -o " + at("up.wav")).code, 0);
    int rate = 0;
    const std::vector<float> up = readStereo(at("up.wav"), &rate);
    EXPECT_EQ(rate, 48000);  // the file's own rate
    EXPECT_NEAR(peakHz(up, rate, 480, 510), 493.9, 1.0);
    ASSERT_EQ(run("backing " + tone + " --speed 80 --rate 44100 -o " + at("slow.wav")).code, 0);
    const std::vector<float> slow = readStereo(at("slow.wav"), &rate);
    EXPECT_EQ(rate, 44100);
    EXPECT_NEAR(double(slow.size()) / 2 / rate / 3.0, 1.25, 0.0125);
}

TEST_F(BackingCli, AnAudioTakeIsTheBackingPlusTheMicFromItsFirstSample) {
    song(2.0);
    const std::string mic = at("mic.wav");
    writeStereo(mic, 44100, 4.0, [](double t) { return std::make_pair(0.05 * std::sin(kTwoPi * 2000 * t), 0.0); }, 1);
    Out ref = run("backing " + at("song.wav") + " --remove-vocals --key -1 -o " + at("ref.wav"));
    ASSERT_EQ(ref.code, 0) << ref.text;
    Out take = run("record --audio " + at("song.wav") + " --remove-vocals --key -1 --mic " + mic + " -o " + at("take.wav"));
    ASSERT_EQ(take.code, 0) << take.text;
    const std::vector<float> t = readStereo(at("take.wav")), r = readStereo(at("ref.wav")), m = readStereo(mic);
    // The take ends with the backing, and the one second the device runs on.
    EXPECT_NEAR(double(t.size()) / 2 / 44100, 3.0, 0.02);
    double worst = 0;
    for (size_t i = 0; i < r.size(); ++i) worst = std::max(worst, double(std::fabs(t[i] - r[i] - m[i])));
    EXPECT_LT(worst, 3.0 / 32768);
}

TEST_F(BackingCli, PlayShowsTheLyrics3WordsAtTheirMarks) {
    const std::string mp3 = at("sung.mp3");
    ASSERT_EQ(std::system(("lame --quiet -b 128 " + song(1.5) + " " + mp3).c_str()), 0);
    const std::string words = at("words.txt");
    FILE* f = std::fopen(words.c_str(), "wb");
    std::fputs("[00:01]second\r\n[00:00]first[x]\r\n[ti:Hello]not timed\r\nno mark\r\n", f);
    std::fclose(f);
    ASSERT_EQ(run("tag " + mp3 + " --title Sung --lyrics-file " + words).code, 0);
    Out o = run("play " + mp3 + " --no-device --remove-vocals");
    ASSERT_EQ(o.code, 0) << o.text;
    const size_t first = o.text.find("first[x]\n"), second = o.text.find("second\n");
    ASSERT_NE(first, std::string::npos) << o.text;
    ASSERT_NE(second, std::string::npos) << o.text;
    EXPECT_LT(first, second);
    EXPECT_EQ(o.text.find("not timed"), std::string::npos);
    EXPECT_EQ(o.text.find("no mark"), std::string::npos);
    EXPECT_NE(o.text.find("End of backing."), std::string::npos);
}
