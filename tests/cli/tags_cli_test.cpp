// velaro mp3info, tag and id3 on a real MP3 that LAME encodes here, on
// hostile files, and on files that must not be touched.

#include <gtest/gtest.h>

#include <lame/lame.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "core/base/paths.h"
#include "support/song_bytes.h"

using namespace velaro::testing;

namespace {

std::string encodeSine(double seconds, int kbps) {
    lame_global_flags* gf = lame_init();
    lame_set_in_samplerate(gf, 44100);
    lame_set_num_channels(gf, 2);
    lame_set_brate(gf, kbps);
    lame_set_quality(gf, 5);
    lame_init_params(gf);
    const int n = static_cast<int>(seconds * 44100);
    std::vector<short> l(n), r(n);
    for (int i = 0; i < n; ++i) l[i] = r[i] = static_cast<short>(8000 * std::sin(2 * M_PI * 440 * i / 44100.0));
    std::vector<unsigned char> out(static_cast<size_t>(1.25 * n + 7200));
    int bytes = lame_encode_buffer(gf, l.data(), r.data(), n, out.data(), static_cast<int>(out.size()));
    bytes += lame_encode_flush(gf, out.data() + bytes, static_cast<int>(out.size()) - bytes);
    lame_close(gf);
    return std::string(reinterpret_cast<char*>(out.data()), static_cast<size_t>(bytes));
}

struct Out {
    int code;
    std::string text;
};

Out run(const std::string& args) {
    FILE* p = popen((std::string(VELARO_BIN) + " " + args + " 2>/dev/null").c_str(), "r");
    Out o{-1, {}};
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) o.text.append(buf, n);
    const int st = pclose(p);
    o.code = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return o;
}

bool has(const std::string& s, const std::string& part) { return s.find(part) != std::string::npos; }

}  // namespace

TEST(TagCommands, ARealMp3FromLame) {
    const std::string mp3 = writeTemp("lame.mp3", encodeSine(3.0, 128));
    Out info = run("mp3info " + mp3 + " --json");
    ASSERT_EQ(info.code, 0);
    EXPECT_TRUE(has(info.text, "\"BitRate\":\"128 Kbps\"")) << info.text;
    EXPECT_TRUE(has(info.text, "\"SampleRate\":\"44.1 Hz\""));
    EXPECT_TRUE(has(info.text, "\"Layer\":\"layer 3\""));
    EXPECT_TRUE(has(info.text, "\"MpegVersion\":\"MPEG 1.0\""));
    EXPECT_TRUE(has(info.text, "\"Length\":\"00:03\""));
    EXPECT_TRUE(has(info.text, "\"Genre\":\"\",\"Lyrics\":\"\",\"HasId3Tag\":false,\"HasLyricsTag\":false"));

    const std::string lyrics = writeTemp("words.txt", "[00:01]First line\n[00:02]Second line\n");
    const int64_t before = velaro::fileLength(mp3);
    ASSERT_EQ(run("tag " + mp3 + " --title 'Perch\xC3\xA8' --artist Band --genre-pos 68 --lyrics-file " + lyrics).code, 0);
    info = run("mp3info " + mp3 + " --json");
    EXPECT_TRUE(has(info.text, "\"Title\":\"Perch\xC3\xA8\""));
    EXPECT_TRUE(has(info.text, "\"Genre\":68"));
    EXPECT_TRUE(has(info.text, "\"Lyrics\":\"[00:01]First line\\r\\n[00:02]Second line\\r\\n\""));
    EXPECT_TRUE(has(info.text, "\"HasId3Tag\":true,\"HasLyricsTag\":true"));
    const std::string bytes = velaro::readWholeFile(mp3);
    EXPECT_EQ(bytes.substr(bytes.size() - 128 - 9), "LYRICS200" + bytes.substr(bytes.size() - 128));
    EXPECT_EQ(static_cast<unsigned char>(bytes[bytes.size() - 125 + 5]), 0xE8u);  // è in Windows-1252

    Out id3 = run("id3 " + mp3);
    EXPECT_TRUE(has(id3.text, "\"Title\":\"Perch\xC3\xA8\",\"Artist\":\"Band\""));
    EXPECT_TRUE(has(id3.text, "\"Genre\":\"Phychedelic\""));

    // Without options the tag keeps everything: the file does not change.
    ASSERT_EQ(run("tag " + mp3).code, 0);
    EXPECT_EQ(velaro::readWholeFile(mp3), bytes);
    // Removing the lyrics leaves the audio and one record.
    ASSERT_EQ(run("tag " + mp3 + " --no-lyrics --genre-pos 0").code, 0);
    EXPECT_EQ(velaro::fileLength(mp3), before + 128);
    EXPECT_TRUE(has(run("mp3info " + mp3 + " --json").text, "\"Genre\":13"));  // 0 or less is "Other"

    // The small editor's save resets the genre to Blues.
    ASSERT_EQ(run("id3 " + mp3 + " --comment 'new comment'").code, 0);
    id3 = run("id3 " + mp3);
    EXPECT_TRUE(has(id3.text, "\"Comment\":\"new comment\",\"Genre\":\"Blues\""));
    EXPECT_TRUE(has(id3.text, "\"Title\":\"Perch\xC3\xA8\""));
    EXPECT_EQ(velaro::fileLength(mp3), before + 128);
}

TEST(TagCommands, FilesThatCannotBeWrittenStayAsTheyWere) {
    const std::string content = encodeSine(0.5, 64);
    const std::string ro = writeTemp("readonly.mp3", content);
    chmod(ro.c_str(), 0444);
    EXPECT_EQ(run("tag " + ro + " --title X").code, 1);
    EXPECT_EQ(run("id3 " + ro + " --title X").code, 1);
    EXPECT_EQ(velaro::readWholeFile(ro), content);
    chmod(ro.c_str(), 0644);

    EXPECT_EQ(run("tag /nonexistent/a.mp3 --title X").code, 1);
    EXPECT_EQ(run("id3 /nonexistent/a.mp3 --title X").code, 1);
    EXPECT_FALSE(velaro::fileExists("/nonexistent/a.mp3"));

    const std::string tiny = writeTemp("tiny.mp3", "short");
    EXPECT_EQ(run("id3 " + tiny + " --title X").code, 1);
    EXPECT_EQ(velaro::readWholeFile(tiny), "short");
    EXPECT_EQ(run("tag x.mp3 --genre-pos 300").code, 2);
    EXPECT_EQ(run("tag x.mp3 --lyrics-file a --no-lyrics").code, 2);
    EXPECT_EQ(run("mp3info").code, 2);
}

TEST(TagCommands, AnyBytesGiveAnAnswer) {
    std::mt19937 rng(99);
    std::vector<std::string> files = {writeTemp("empty.mp3", ""), "/nonexistent/x.mp3",
                                      writeTemp("cut.mp3", encodeSine(0.3, 128).substr(0, 700))};
    for (int k = 0; k < 6; ++k) {
        std::string junk(rng() % 9000, '\0');
        for (char& c : junk) c = static_cast<char>(rng());
        if (k % 2) junk += "LYRICSBEGINLYR00003abc000020LYRICS200";
        if (k % 3 == 0) junk += "TAG" + std::string(125, '\xFF');
        files.push_back(writeTemp("junk" + std::to_string(k) + ".mp3", junk));
    }
    for (const auto& f : files) {
        Out info = run("mp3info '" + f + "' --json");
        EXPECT_EQ(info.code, 0) << f;
        EXPECT_TRUE(has(info.text, "\"LyricsBlockStart\":")) << f;
        Out id3 = run("id3 '" + f + "'");
        EXPECT_EQ(id3.code, 0) << f;
        EXPECT_TRUE(has(id3.text, "\"Genre\":")) << f;
    }
    // A writing pass over each junk file leaves a tag that reads back.
    const std::string junk = files.back();
    if (run("tag '" + junk + "' --title Junk --lyrics-file /dev/null").code == 0)
        EXPECT_TRUE(has(run("mp3info '" + junk + "' --json").text, "\"Title\":\"Junk\""));
}
