// velaro info, run as a user runs it: on the demo song and on files that are
// empty, cut short or random. Stdout must be exactly one JSON object.

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <sys/wait.h>

#include "core/base/paths.h"
#include "support/song_bytes.h"

using namespace velaro::testing;

namespace {

struct CliRun {
    int code = -1;
    std::string out;
};

CliRun run(const std::string& args) {
    CliRun r;
    std::string cmd = std::string(VELARO_BIN) + " " + args + " 2>/dev/null";
    FILE* p = popen(cmd.c_str(), "r");
    if (!p) return r;
    char buf[65536];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) r.out.append(buf, n);
    int status = pclose(p);
    r.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return r;
}

// A strict JSON checker: true when `s` is exactly one value plus a line end.
class JsonCheck {
public:
    explicit JsonCheck(const std::string& s) : s_(s) {}
    bool wholeObject() {
        ws();
        if (peek() != '{' || !value()) return false;
        ws();
        return i_ == s_.size();
    }

private:
    char peek() const { return i_ < s_.size() ? s_[i_] : '\0'; }
    void ws() {
        while (i_ < s_.size() && (s_[i_] == ' ' || s_[i_] == '\n' || s_[i_] == '\t' || s_[i_] == '\r')) ++i_;
    }
    bool lit(const char* w) {
        std::string t(w);
        if (s_.compare(i_, t.size(), t) != 0) return false;
        i_ += t.size();
        return true;
    }
    bool string() {
        if (peek() != '"') return false;
        ++i_;
        while (i_ < s_.size()) {
            auto c = static_cast<unsigned char>(s_[i_++]);
            if (c == '"') return true;
            if (c < 0x20) return false;
            if (c == '\\') {
                char e = peek();
                ++i_;
                if (e == 'u') i_ += 4;
                else if (std::string("\"\\/bfnrt").find(e) == std::string::npos) return false;
            }
        }
        return false;
    }
    bool number() {
        size_t start = i_;
        if (peek() == '-') ++i_;
        while (std::isdigit(static_cast<unsigned char>(peek())) || peek() == '.' || peek() == 'e' ||
               peek() == 'E' || peek() == '+' || peek() == '-')
            ++i_;
        return i_ > start;
    }
    bool value() {
        ws();
        char c = peek();
        if (c == '{') {
            ++i_;
            ws();
            if (peek() == '}') return ++i_, true;
            for (;;) {
                ws();
                if (!string()) return false;
                ws();
                if (peek() != ':') return false;
                ++i_;
                if (!value()) return false;
                ws();
                if (peek() == ',') { ++i_; continue; }
                if (peek() == '}') return ++i_, true;
                return false;
            }
        }
        if (c == '[') {
            ++i_;
            ws();
            if (peek() == ']') return ++i_, true;
            for (;;) {
                if (!value()) return false;
                ws();
                if (peek() == ',') { ++i_; continue; }
                if (peek() == ']') return ++i_, true;
                return false;
            }
        }
        if (c == '"') return string();
        if (c == 't') return lit("true");
        if (c == 'f') return lit("false");
        if (c == 'n') return lit("null");
        return number();
    }
    const std::string& s_;
    size_t i_ = 0;
};

size_t count(const std::string& s, const std::string& what) {
    size_t n = 0;
    for (size_t p = s.find(what); p != std::string::npos; p = s.find(what, p + 1)) ++n;
    return n;
}

}  // namespace

TEST(InfoCommand, DemoSongModelAsJson) {
    CliRun r = run(std::string("info ") + VELARO_DEMO_SONG + " --json");
    ASSERT_EQ(r.code, 0);
    ASSERT_TRUE(JsonCheck(r.out).wholeObject()) << r.out.substr(0, 400);
    EXPECT_NE(r.out.find("\"smfFormat\":1,\"smfTracks\":7,\"divisionQuarter\":120,\"tempoUs\":750000,"
                         "\"songBpm\":80,\"msPerTick\":1.5625,\"skipConversion\":true,\"lyricRich\":0,"
                         "\"notices\":[]"),
              std::string::npos);
    EXPECT_EQ(count(r.out, "\"patchChanged\""), 16u);
    // Checking a used channel's box while no song is open marks its volume as
    // changed (True, -1), so the first play sends it.
    EXPECT_NE(r.out.find("{\"patchChanged\":0,\"volumeChanged\":-1,\"patch\":73,\"channelNo\":1,"
                         "\"volume\":110,\"pan\":64,\"rowState\":2}"),
              std::string::npos);
    EXPECT_NE(r.out.find("\"text\":\"ma\""), std::string::npos);
    EXPECT_NE(r.out.find("\"Amazing grace! How sweet the sound\""), std::string::npos);
    EXPECT_NE(r.out.find("\"fullLyricText\":\"\\r\\nAmazing grace!"), std::string::npos);
}

TEST(InfoCommand, NoticesAndTextsComeOutAsUtf8) {
    // A format 0 .mid with the M-LIVE mark and a Windows-1252 word.
    std::string body = textEvent("/Perch\xE8") + bytes({0x10}) + meta(0x2F, "") + bytes({0x00, 0x20, 0x24, 0x00});
    std::string path = writeTemp("mlive.mid", smfHeader(0, 1, 96) + smfTrack(bytes({0}) + tempoEvent(500000) +
                                                                               bytes({0}) + body));
    CliRun r = run("info " + path + " --json");
    ASSERT_EQ(r.code, 0);
    ASSERT_TRUE(JsonCheck(r.out).wholeObject());
    EXPECT_NE(r.out.find("\"notices\":[{\"title\":\"VELARO\",\"text\":\"Attenzione, il file \xC3\xA8 formato M-LIVE\"}]"),
              std::string::npos);
    EXPECT_NE(r.out.find("\"text\":\"Perch\xC3\xA8\""), std::string::npos);
}

TEST(InfoCommand, HostileFilesStillGiveOneObject) {
    std::mt19937 rng(7);
    std::string demo = velaro::readWholeFile(VELARO_DEMO_SONG);
    std::vector<std::string> files;
    files.push_back(writeTemp("empty.kar", ""));
    files.push_back("/nonexistent/song.mid");
    files.push_back(writeTemp("cut.mid", demo.substr(0, 40)));
    files.push_back(writeTemp("cut2.kar", demo.substr(0, demo.size() / 2)));
    for (int k = 0; k < 6; ++k) {
        std::string junk(static_cast<size_t>(rng() % 5000), '\0');
        for (char& c : junk) c = static_cast<char>(rng());
        if (k % 2) junk.replace(0, 4, "MThd");
        files.push_back(writeTemp("junk" + std::to_string(k) + (k % 3 ? ".mid" : ".kar"), junk));
    }
    for (const auto& f : files) {
        CliRun r = run("info '" + f + "' --json");
        EXPECT_EQ(r.code, 0) << f;
        EXPECT_TRUE(JsonCheck(r.out).wholeObject()) << f;
        EXPECT_EQ(count(r.out, "\"rowState\""), 16u) << f;
    }
}

TEST(InfoCommand, UsageErrorsExitTwo) {
    EXPECT_EQ(run("info").code, 2);
    EXPECT_EQ(run("info a b").code, 2);
    EXPECT_EQ(run("info --bogus x").code, 2);
    EXPECT_EQ(run("frobnicate").code, 2);
    CliRun help = run("--help");
    EXPECT_EQ(help.code, 0);
    EXPECT_NE(help.out.find("info FILE"), std::string::npos);
}
