// velaro playlist on a folder of real MP3s (LAME-encoded here, tagged by
// velaro tag) and songs: the rows it prints, the .mpl it writes, and the
// files it must leave alone.

#include <gtest/gtest.h>

#include <lame/lame.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "core/base/paths.h"

namespace fs = std::filesystem;
using velaro::readWholeFile;
using velaro::writeWholeFile;

namespace {

std::string encodeSine(double seconds) {
    lame_global_flags* gf = lame_init();
    lame_set_in_samplerate(gf, 22050);
    lame_set_num_channels(gf, 1);
    lame_set_mode(gf, MONO);
    lame_set_brate(gf, 32);
    lame_init_params(gf);
    const int n = static_cast<int>(seconds * 22050);
    std::vector<short> pcm(n);
    for (int i = 0; i < n; ++i) pcm[i] = static_cast<short>(8000 * std::sin(2 * M_PI * 330 * i / 22050.0));
    std::vector<unsigned char> out(static_cast<size_t>(1.25 * n + 7200));
    int bytes = lame_encode_buffer(gf, pcm.data(), pcm.data(), n, out.data(), static_cast<int>(out.size()));
    bytes += lame_encode_flush(gf, out.data() + bytes, static_cast<int>(out.size()) - bytes);
    lame_close(gf);
    return std::string(reinterpret_cast<char*>(out.data()), static_cast<size_t>(bytes));
}

struct Out {
    int code;
    std::string text;
};

std::string quote(const std::string& s) {
    std::string q = "'";
    for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}

Out run(const std::string& args) {
    const std::string cmd = "timeout -k 5 60 " + std::string(VELARO_BIN) + " " + args + " 2>/dev/null";
    FILE* p = popen(cmd.c_str(), "r");
    Out o{-1, {}};
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) o.text.append(buf, n);
    const int st = pclose(p);
    o.code = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return o;
}

class PlaylistCli : public ::testing::Test {
protected:
    void SetUp() override {
        std::string tmpl = velaro::tempFolder() + "/plcliXXXXXX";
        dir = mkdtemp(tmpl.data());
        fs::create_directories(dir + "/music/Live");
        const std::string mp3 = encodeSine(0.5);
        const struct {
            const char* name;
            const char* title;
            const char* artist;
        } songs[] = {{"a_zeta.mp3", "Zeta", "beatles"}, {"b_alpha.mp3", "Alpha", "Beatles"},
                     {"\xC3\xA9t\xC3\xA9.mp3", "\xC3\x89t\xC3\xA9", "\xC3\x89" "dith"}, {"Live/encore.mp3", "", ""}};
        for (const auto& s : songs) {
            const std::string p = dir + "/music/" + s.name;
            writeWholeFile(p, mp3);
            if (*s.title)
                ASSERT_EQ(run("tag " + quote(p) + " --title " + quote(s.title) + " --artist " + quote(s.artist)).code, 0);
        }
        writeWholeFile(dir + "/music/song.mid", "MThd");
        writeWholeFile(dir + "/music/duet.kar", "MThd");
        writeWholeFile(dir + "/music/notes.txt", "words");
    }
    void TearDown() override { fs::remove_all(dir); }
    std::string dir;
};

TEST_F(PlaylistCli, FolderRowsSortAndJson) {
    const std::string m = dir + "/music";
    // Sub-folders first, no .kar from a folder; an untagged MP3 shows its file name.
    Out o = run("playlist --add-dir " + quote(m));
    ASSERT_EQ(o.code, 0);
    EXPECT_EQ(o.text, "1\tencore\t\t" + m + "/Live/encore.mp3\n"
                      "2\tZeta\tbeatles\t" + m + "/a_zeta.mp3\n"
                      "3\tAlpha\tBeatles\t" + m + "/b_alpha.mp3\n"
                      "4\t" + m + "/song\tUnknown\t" + m + "/song.mid\n"
                      "5\t\xC3\x89t\xC3\xA9\t\xC3\x89" "dith\t" + m + "/\xC3\xA9t\xC3\xA9.mp3\n");

    o = run("playlist --add-dir " + quote(m + "/") + " --add " + quote(m + "/duet.kar") + " " +
            quote(m + "/notes.txt") + " --sort artist --json");
    ASSERT_EQ(o.code, 0);
    auto row = [&](int n, const std::string& title, const std::string& artist, const std::string& path) {
        return "{\"number\": \"" + std::to_string(n) + "\", \"title\": \"" + title + "\", \"artist\": \"" + artist +
               "\", \"path\": \"" + path + "\"}";
    };
    // Alpha wins on its title against an artist that differs only in case,
    // and leaves the first spelling in both rows.
    EXPECT_EQ(o.text, "{\"rows\": [" + row(1, "encore", "", m + "/Live/encore.mp3") + ", " +
                          row(2, "Alpha", "beatles", m + "/b_alpha.mp3") + ", " +
                          row(3, "Zeta", "beatles", m + "/a_zeta.mp3") + ", " +
                          row(4, "\xC3\x89t\xC3\xA9", "\xC3\x89" "dith", m + "/\xC3\xA9t\xC3\xA9.mp3") + ", " +
                          row(5, m + "/duet", "Unknown", m + "/duet.kar") + ", " +
                          row(6, m + "/song", "Unknown", m + "/song.mid") + "]}\n");
}

TEST_F(PlaylistCli, SaveReloadReverseAndShuffle) {
    const std::string m = dir + "/music", out = dir + "/night.mpl";
    ASSERT_EQ(run("playlist --add-dir " + quote(m) + " --sort filename -o " + quote(out)).code, 0);
    // CR LF, Windows-1252, in the collation's order (é with e, case ignored).
    EXPECT_EQ(readWholeFile(out), m + "/a_zeta.mp3\r\n" + m + "/b_alpha.mp3\r\n" + m + "/\xE9t\xE9.mp3\r\n" + m +
                                      "/Live/encore.mp3\r\n" + m + "/song.mid\r\n");
    Out o = run("playlist " + quote(out) + " --reverse");
    ASSERT_EQ(o.code, 0);
    EXPECT_EQ(o.text.substr(0, o.text.find('\n')), "1\t" + m + "/song\tUnknown\t" + m + "/song.mid");
    EXPECT_NE(o.text.find("3\t\xC3\x89t\xC3\xA9\t\xC3\x89" "dith\t" + m + "/\xC3\xA9t\xC3\xA9.mp3\n"), std::string::npos);

    const Out a = run("playlist " + quote(out) + " --shuffle 42");
    const Out b = run("playlist " + quote(out) + " --shuffle 42");
    const Out c = run("playlist " + quote(out) + " --shuffle 43");
    ASSERT_EQ(a.code, 0);
    EXPECT_EQ(a.text, b.text);
    EXPECT_NE(a.text, c.text);
    EXPECT_EQ(std::count(a.text.begin(), a.text.end(), '\n'), 5);
}

TEST_F(PlaylistCli, MissingListsBadTargetsAndUsage) {
    Out o = run("playlist " + quote(dir + "/none.mpl") + " --json");
    EXPECT_EQ(o.code, 0);
    EXPECT_EQ(o.text, "{\"rows\": []}\n");

    // A target that cannot be written: exit 1, the old file as it was.
    fs::create_directories(dir + "/locked");
    writeWholeFile(dir + "/locked/old.mpl", "keep me\r\n");
    chmod((dir + "/locked").c_str(), 0500);
    if (::geteuid() != 0) {
        EXPECT_EQ(run("playlist --add " + quote(dir + "/music/song.mid") + " -o " + quote(dir + "/locked/old.mpl")).code, 1);
        EXPECT_EQ(readWholeFile(dir + "/locked/old.mpl"), "keep me\r\n");
    }
    chmod((dir + "/locked").c_str(), 0700);
    EXPECT_EQ(run("playlist --add " + quote(dir + "/music/song.mid") + " -o " + quote(dir + "/no/such/dir.mpl")).code, 1);

    // Hostile bytes in a playlist: lines that are no entries are dropped, nothing breaks.
    std::string junk;
    for (int i = 0; i < 4096; ++i) junk += static_cast<char>((i * 7919) & 0xFF);
    writeWholeFile(dir + "/junk.mpl", junk + "\r\n" + dir + "/music/song.mid\r\n");
    o = run("playlist " + quote(dir + "/junk.mpl"));
    EXPECT_EQ(o.code, 0);

    // Quotes, backslashes and tabs in a path come out escaped.
    writeWholeFile(dir + "/odd.mpl", "a\"b\\c\tq.mid\r\n");
    o = run("playlist " + quote(dir + "/odd.mpl") + " --json");
    EXPECT_EQ(o.text, "{\"rows\": [{\"number\": \"1\", \"title\": \"a\\\"b\\\\c\\tq\", \"artist\": \"Unknown\", "
                      "\"path\": \"a\\\"b\\\\c\\tq.mid\"}]}\n");

    EXPECT_EQ(run("playlist --sort colour").code, 2);
    EXPECT_EQ(run("playlist --shuffle x").code, 2);
    EXPECT_EQ(run("playlist --add").code, 2);
    EXPECT_EQ(run("playlist a.mpl b.mpl").code, 2);
}

}  // namespace
