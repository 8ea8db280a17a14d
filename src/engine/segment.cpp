#include "segment.h"

#include <algorithm>

namespace velaro::engine {

namespace {

class Reader {
public:
    Reader(const std::string& s, size_t begin, size_t end) : s_(s), pos_(begin), end_(end) {}
    bool more() const { return pos_ < end_; }
    bool byte(uint8_t& b) {
        if (pos_ >= end_) return false;
        b = static_cast<uint8_t>(s_[pos_++]);
        return true;
    }
    bool peek(uint8_t& b) const {
        if (pos_ >= end_) return false;
        b = static_cast<uint8_t>(s_[pos_]);
        return true;
    }
    // A variable-length quantity of at most four bytes.
    bool vlq(uint32_t& v) {
        v = 0;
        for (int i = 0; i < 4; ++i) {
            uint8_t b;
            if (!byte(b)) return false;
            v = (v << 7) | (b & 0x7F);
            if (!(b & 0x80)) return true;
        }
        return true;  // an over-long quantity: take what was read
    }
    bool skip(uint32_t n, size_t& at) {
        at = pos_;
        if (n > end_ - pos_) return false;
        pos_ += n;
        return true;
    }

private:
    const std::string& s_;
    size_t pos_;
    size_t end_;
};

uint32_t be32(const std::string& s, size_t at) {
    return (uint32_t(uint8_t(s[at])) << 24) | (uint32_t(uint8_t(s[at + 1])) << 16) |
           (uint32_t(uint8_t(s[at + 2])) << 8) | uint32_t(uint8_t(s[at + 3]));
}

int dataBytes(uint8_t status) {
    switch (status & 0xF0) {
        case 0xC0:
        case 0xD0: return 1;
        default: return 2;
    }
}

}  // namespace

size_t Segment::tempoIndexAt(double time) const {
    auto it = std::upper_bound(tempos.begin(), tempos.end(), time,
                               [](double t, const TempoPoint& p) { return t < p.time; });
    return it == tempos.begin() ? 0 : static_cast<size_t>(it - tempos.begin() - 1);
}

double Segment::usPerQuarterAt(double time) const {
    return tempos.empty() ? 500000.0 : tempos[tempoIndexAt(time)].usPerQuarter;
}

bool Segment::hasNotes() const {
    return std::any_of(events.begin(), events.end(),
                       [](const SeqEvent& e) { return (e.status & 0xF0) == 0x90 && e.data2 > 0; });
}

int Segment::firstValue(int channel, int status, int number) const {
    for (const SeqEvent& e : events) {
        if ((e.status & 0x0F) != channel || (e.status & 0xF0) != status) continue;
        if (status == 0xC0) return e.data1;
        if (e.data1 == number) return e.data2;
    }
    return -1;
}

double Segment::secondsAt(double time, double factor) const {
    if (factor <= 0) return 0;
    double us = 0;
    for (size_t i = 0; i < tempos.size() && tempos[i].time < time; ++i) {
        const double until = i + 1 < tempos.size() ? std::min(time, tempos[i + 1].time) : time;
        us += (until - tempos[i].time) / kMusicTicksPerQuarter * tempos[i].usPerQuarter;
    }
    return us / 1e6 / factor;
}

bool parseSmf(const std::string& s, Segment& out) {
    out = Segment{};
    size_t head = s.find("MThd");
    if (head == std::string::npos || s.size() < head + 14) return false;
    const uint32_t headLen = be32(s, head + 4);
    out.format = (uint8_t(s[head + 8]) << 8) | uint8_t(s[head + 9]);
    out.tracks = (uint8_t(s[head + 10]) << 8) | uint8_t(s[head + 11]);
    int division = (uint8_t(s[head + 12]) << 8) | uint8_t(s[head + 13]);
    if (division & 0x8000) {
        // Frames per second times ticks per frame: ticks per second, taken at 120 BPM.
        const int fps = -static_cast<int8_t>(division >> 8);
        const int tpf = division & 0xFF;
        division = std::max(1, fps * tpf / 2);
    }
    if (division <= 0) division = 96;
    out.division = division;
    const double scale = static_cast<double>(kMusicTicksPerQuarter) / division;

    struct Timed {
        double time;
        size_t order;
        SeqEvent ev;
    };
    std::vector<Timed> events;
    std::vector<TempoPoint> tempos;
    size_t pos = head + 8 + std::min<size_t>(headLen, s.size() - head - 8);
    size_t order = 0;
    while (pos + 8 <= s.size()) {
        const std::string id = s.substr(pos, 4);
        uint32_t len = be32(s, pos + 4);
        size_t body = pos + 8;
        size_t end = body + std::min<size_t>(len, s.size() - body);
        pos = end;
        if (id != "MTrk") continue;

        Reader r(s, body, end);
        uint64_t tick = 0;
        uint8_t running = 0;
        while (r.more()) {
            uint32_t delta;
            if (!r.vlq(delta)) break;
            tick += delta;
            uint8_t b;
            if (!r.peek(b)) break;
            if (b == 0xFF) {
                r.byte(b);
                uint8_t type;
                uint32_t n;
                size_t at;
                if (!r.byte(type) || !r.vlq(n) || !r.skip(n, at)) break;
                if (type == 0x51 && n >= 3) {
                    double us = (uint8_t(s[at]) << 16) | (uint8_t(s[at + 1]) << 8) | uint8_t(s[at + 2]);
                    if (us > 0) tempos.push_back({tick * scale, us});
                }
                if (type == 0x2F) break;
                continue;
            }
            if (b == 0xF0 || b == 0xF7) {
                r.byte(b);
                uint32_t n;
                size_t at;
                if (!r.vlq(n) || !r.skip(n, at)) break;
                running = 0;
                continue;
            }
            uint8_t status;
            if (b & 0x80) {
                r.byte(status);
                if (status >= 0xF0) continue;  // stray system byte: no data known, go on
                running = status;
            } else if (running) {
                status = running;
            } else {
                r.byte(b);  // a data byte with no status before it
                continue;
            }
            uint8_t d1 = 0, d2 = 0;
            if (!r.byte(d1)) break;
            if (dataBytes(status) == 2 && !r.byte(d2)) break;
            events.push_back({tick * scale, order++, {tick * scale, status, uint8_t(d1 & 0x7F), uint8_t(d2 & 0x7F)}});
        }
        out.length = std::max(out.length, static_cast<double>(tick) * scale);
    }

    std::stable_sort(events.begin(), events.end(),
                     [](const Timed& a, const Timed& b) { return a.time < b.time; });
    out.events.reserve(events.size());
    for (const auto& t : events) out.events.push_back(t.ev);
    std::stable_sort(tempos.begin(), tempos.end(),
                     [](const TempoPoint& a, const TempoPoint& b) { return a.time < b.time; });
    if (tempos.empty() || tempos.front().time > 0) tempos.insert(tempos.begin(), {0.0, 500000.0});
    out.tempos = std::move(tempos);
    return true;
}

}  // namespace velaro::engine
