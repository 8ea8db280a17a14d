#include "song_bytes.h"

#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

namespace velaro::testing {

std::string bytes(std::initializer_list<int> b) {
    std::string s;
    for (int v : b) s += static_cast<char>(v);
    return s;
}

std::string vlq(uint32_t v) {
    std::string out(1, static_cast<char>(v & 0x7F));
    while (v >>= 7) out.insert(out.begin(), static_cast<char>(0x80 | (v & 0x7F)));
    return out;
}

static std::string be(uint32_t v, int n) {
    std::string s;
    for (int i = n - 1; i >= 0; --i) s += static_cast<char>((v >> (8 * i)) & 0xFF);
    return s;
}

std::string smfHeader(int format, int tracks, int division) {
    return "MThd" + be(6, 4) + be(format, 2) + be(tracks, 2) + be(division, 2);
}

std::string smfTrack(const std::string& body) { return "MTrk" + be(body.size(), 4) + body; }

std::string meta(int type, const std::string& data) {
    return bytes({0xFF, type, static_cast<int>(data.size())}) + data;
}

std::string textEvent(const std::string& text) { return meta(0x01, text); }

std::string tempoEvent(uint32_t us) { return meta(0x51, be(us, 3)); }

std::string denseSong(int beats) {
    std::string s = smfHeader(1, 16, 96);
    for (int ch = 0; ch < 16; ++ch) {
        std::string t = bytes({0x00, 0xC0 | ch, (ch * 7 + 16) % 128, 0x00, 0xB0 | ch, 7, 127, 0x00, 0xB0 | ch, 11, 127});
        if (ch == 0) t = bytes({0x00}) + tempoEvent(500000) + t;
        for (int b = 0; b < beats; ++b) {
            const int root = ch == 9 ? 35 + b % 12 : 36 + (ch * 5 + b * 3) % 40;
            for (int k : {0, 4, 7, 12}) t += bytes({0x00, 0x90 | ch, root + k, 127});
            t += vlq(96);
            for (int k : {0, 4, 7, 12}) t += bytes({0x80 | ch, root + k, 0, 0x00});
            t.pop_back();
        }
        s += smfTrack(t + bytes({0x00, 0xFF, 0x2F, 0x00}));
    }
    return s;
}

std::string writeTemp(const std::string& name, const std::string& content) {
    const char* t = std::getenv("TMPDIR");
    // The process id keeps test executables that run side by side apart.
    std::string path = std::string(t && *t ? t : "/tmp") + "/" + std::to_string(getpid()) + "-" + name;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    return path;
}

}  // namespace velaro::testing
