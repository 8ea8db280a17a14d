// Line ends in the lyrics (CR or LF) become the "/" mark on the next
// syllable; marks already there are kept.

#include "tx_convert.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace velaro::tools {

namespace {

struct Event {
    uint64_t tick;
    std::string bytes;  // with its status byte, never running status
};

std::string vlq(uint64_t v) {
    v &= 0x0FFFFFFF;
    std::string out(1, static_cast<char>(v & 0x7F));
    while (v >>= 7) out.insert(out.begin(), static_cast<char>(0x80 | (v & 0x7F)));
    return out;
}

std::string be(uint32_t v, int n) {
    std::string s;
    for (int i = n - 1; i >= 0; --i) s += static_cast<char>((v >> (8 * i)) & 0xFF);
    return s;
}

uint32_t be32(const std::string& s, size_t at) {
    return (uint32_t(uint8_t(s[at])) << 24) | (uint32_t(uint8_t(s[at + 1])) << 16) |
           (uint32_t(uint8_t(s[at + 2])) << 8) | uint32_t(uint8_t(s[at + 3]));
}

// Reads one track's events; stops quietly where the bytes break.
std::vector<Event> readTrack(const std::string& s, size_t p, size_t end) {
    std::vector<Event> out;
    uint64_t tick = 0;
    uint8_t running = 0;
    auto readVlq = [&](uint64_t& v) {
        v = 0;
        for (int i = 0; i < 4; ++i) {
            if (p >= end) return false;
            uint8_t b = uint8_t(s[p++]);
            v = (v << 7) | (b & 0x7F);
            if (!(b & 0x80)) return true;
        }
        return true;
    };
    while (p < end) {
        uint64_t delta;
        if (!readVlq(delta) || p >= end) break;
        tick += delta;
        const size_t start = p;
        uint8_t b = uint8_t(s[p]);
        if (b == 0xFF) {
            if (p + 2 > end) break;
            p += 2;
            uint64_t n;
            if (!readVlq(n) || n > end - p) break;
            p += n;
            out.push_back({tick, s.substr(start, p - start)});
            if (uint8_t(s[start + 1]) == 0x2F) break;
            continue;
        }
        if (b == 0xF0 || b == 0xF7) {
            ++p;
            uint64_t n;
            if (!readVlq(n) || n > end - p) break;
            p += n;
            out.push_back({tick, s.substr(start, p - start)});
            running = 0;
            continue;
        }
        uint8_t status;
        if (b & 0x80) {
            status = b;
            ++p;
            running = status;
        } else if (running) {
            status = running;
        } else {
            ++p;
            continue;
        }
        const int n = ((status & 0xF0) == 0xC0 || (status & 0xF0) == 0xD0) ? 1 : 2;
        if (p + n > end) break;
        out.push_back({tick, std::string(1, char(status)) + s.substr(p, n)});
        p += n;
    }
    return out;
}

std::string trackChunk(const std::vector<Event>& events) {
    std::string body;
    uint64_t last = 0;
    bool ended = false;
    for (const auto& e : events) {
        body += vlq(e.tick - last) + e.bytes;
        last = e.tick;
        ended = e.bytes.size() >= 2 && uint8_t(e.bytes[0]) == 0xFF && uint8_t(e.bytes[1]) == 0x2F;
    }
    if (!ended) body += std::string("\x00\xFF\x2F\x00", 4);
    return "MTrk" + be(static_cast<uint32_t>(body.size()), 4) + body;
}

std::string metaEvent(int type, const std::string& data) {
    return std::string{'\xFF', static_cast<char>(type)} + vlq(data.size()) + data;
}

}  // namespace

bool convertLyricEvents(const std::string& s, std::string& out) {
    size_t head = s.find("MThd");
    if (head == std::string::npos || s.size() < head + 14) return false;
    const std::string division = s.substr(head + 12, 2);

    std::vector<std::vector<Event>> tracks;
    std::vector<Event> words;
    size_t p = head + 8 + std::min<size_t>(be32(s, head + 4), s.size() - head - 8);
    while (p + 8 <= s.size()) {
        const std::string id = s.substr(p, 4);
        const size_t body = p + 8;
        const size_t end = body + std::min<size_t>(be32(s, p + 4), s.size() - body);
        p = end;
        if (id != "MTrk") continue;
        std::vector<Event> kept;
        for (auto& e : readTrack(s, body, end)) {
            if (e.bytes.size() >= 2 && uint8_t(e.bytes[0]) == 0xFF && uint8_t(e.bytes[1]) == 0x05) {
                // The lyric's text: what follows the length.
                size_t at = 2;
                while (at < e.bytes.size() && (uint8_t(e.bytes[at]) & 0x80)) ++at;
                words.push_back({e.tick, e.bytes.substr(std::min(at + 1, e.bytes.size()))});
            } else {
                kept.push_back(std::move(e));
            }
        }
        tracks.push_back(std::move(kept));
    }

    std::stable_sort(words.begin(), words.end(), [](const Event& a, const Event& b) { return a.tick < b.tick; });
    std::vector<Event> wordTrack = {{0, metaEvent(0x03, "Words")}};
    // The first line starts with a paragraph mark, as karaoke files do.
    bool newLine = false, first = true;
    for (auto& w : words) {
        std::string t = w.bytes;
        bool leadBreak = !t.empty() && (t.front() == '\r' || t.front() == '\n');
        bool endBreak = !t.empty() && (t.back() == '\r' || t.back() == '\n');
        t.erase(std::remove_if(t.begin(), t.end(), [](char c) { return c == '\r' || c == '\n'; }), t.end());
        const bool marked = !t.empty() && (t.front() == '/' || t.front() == '\\');
        if (!marked && first && !t.empty()) t = "\\" + t;
        else if (!marked && (newLine || leadBreak)) t = "/" + t;
        newLine = endBreak;
        if (t.empty()) continue;
        first = false;
        wordTrack.push_back({w.tick, metaEvent(0x01, t)});
    }

    out = "MThd" + be(6, 4) + be(1, 2) + be(static_cast<uint32_t>(tracks.size() + 1), 2) + division;
    for (const auto& t : tracks) out += trackChunk(t);
    out += trackChunk(wordTrack);
    return true;
}

}  // namespace velaro::tools
