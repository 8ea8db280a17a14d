// Writes demo.kar: this project's own arrangement of "Amazing Grace" (words
// John Newton, 1779; tune "New Britain", 1829; both in the public domain), a
// format 1 karaoke file with a tempo track, a "Words" track of one text event
// per syllable, melody, bass, strings, piano and drums on channel 10.
//
// usage: make_demo_song OUT.kar

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int kDivision = 480;  // ticks per quarter
constexpr int kEighth = kDivision / 2;
constexpr int kBar = 3 * kDivision;  // 3/4 time
constexpr int kTempoUs = 750000;     // 80 beats per minute

struct Event {
    int tick;
    int order;  // at equal ticks: 0 meta, 1 note off, 2 controller/program, 3 note on
    std::string bytes;
};

struct Track {
    std::vector<Event> events;
    void meta(int tick, int type, const std::string& data) {
        std::string b{'\xFF', static_cast<char>(type)};
        b += static_cast<char>(data.size());  // all our texts are under 128 bytes
        b += data;
        events.push_back({tick, 0, b});
    }
    void text(int tick, const std::string& t) { meta(tick, 0x01, t); }
    void ctrl(int tick, int ch, int cc, int v) {
        events.push_back({tick, 2, {static_cast<char>(0xB0 + ch), static_cast<char>(cc), static_cast<char>(v)}});
    }
    void program(int tick, int ch, int p) {
        events.push_back({tick, 2, {static_cast<char>(0xC0 + ch), static_cast<char>(p)}});
    }
    void note(int tick, int len, int ch, int key, int vel) {
        events.push_back({tick, 3, {static_cast<char>(0x90 + ch), static_cast<char>(key), static_cast<char>(vel)}});
        events.push_back({tick + len, 1, {static_cast<char>(0x80 + ch), static_cast<char>(key), '\x40'}});
    }
};

std::string vlq(uint32_t v) {
    std::string out(1, static_cast<char>(v & 0x7F));
    while (v >>= 7) out.insert(out.begin(), static_cast<char>(0x80 | (v & 0x7F)));
    return out;
}

std::string be(uint32_t v, int bytes) {
    std::string out;
    for (int i = bytes - 1; i >= 0; --i) out += static_cast<char>((v >> (8 * i)) & 0xFF);
    return out;
}

std::string chunk(Track t, int endTick) {
    std::stable_sort(t.events.begin(), t.events.end(), [](const Event& a, const Event& b) {
        return a.tick != b.tick ? a.tick < b.tick : a.order < b.order;
    });
    std::string body;
    int last = 0;
    for (const auto& e : t.events) {
        body += vlq(static_cast<uint32_t>(e.tick - last));
        body += e.bytes;
        last = e.tick;
    }
    body += vlq(static_cast<uint32_t>(std::max(0, endTick - last)));
    body += "\xFF\x2F";
    body += '\0';
    return "MTrk" + be(static_cast<uint32_t>(body.size()), 4) + body;
}

// One melody note: the syllable sung on it ("" continues the one before),
// the key, and its length in eighths.
struct Note {
    const char* syllable;
    int key;
    int eighths;
};

enum : int { D4 = 62, E4 = 64, G4 = 67, A4 = 69, B4 = 71, D5 = 74 };

// The tune, one verse from the pickup on; `s` holds the 30 syllables in order.
std::vector<Note> verse(const std::vector<const char*>& s) {
    size_t i = 0;
    auto n = [&](int key, int e) { return Note{s[i++], key, e}; };
    auto hold = [](int key, int e) { return Note{"", key, e}; };
    std::vector<Note> v;
    v.push_back(n(D4, 2));                                              // pickup
    v.insert(v.end(), {n(G4, 4), n(B4, 1), hold(G4, 1)});              // bar 1
    v.insert(v.end(), {n(B4, 4), n(A4, 2)});                            // 2
    v.insert(v.end(), {n(G4, 4), n(E4, 2)});                            // 3
    v.insert(v.end(), {n(D4, 4), n(D4, 2)});                            // 4
    v.insert(v.end(), {n(G4, 4), n(B4, 1), hold(G4, 1)});              // 5
    v.insert(v.end(), {n(B4, 4), n(A4, 2)});                            // 6
    v.insert(v.end(), {n(D5, 10), n(B4, 2)});                           // 7-8
    v.insert(v.end(), {n(D5, 4), n(B4, 1), hold(G4, 1)});              // 9
    v.insert(v.end(), {n(B4, 4), n(A4, 2)});                            // 10
    v.insert(v.end(), {n(G4, 4), n(E4, 2)});                            // 11
    v.insert(v.end(), {n(D4, 4), n(D4, 2)});                            // 12
    v.insert(v.end(), {n(G4, 4), n(B4, 1), hold(G4, 1)});              // 13
    v.insert(v.end(), {n(B4, 4), n(A4, 2)});                            // 14
    v.insert(v.end(), {n(G4, 10)});                                     // 15-16 (to the next pickup)
    return v;
}

// Chord roots per bar (1-16) of a verse: G G C G G Em D D7 G G C G G D G G.
struct Chord {
    int root;                // bass key
    std::vector<int> tones;  // strings and piano keys
};

const Chord kG{43, {55, 59, 62}};
const Chord kC{48, {55, 60, 64}};
const Chord kEm{40, {55, 59, 64}};
const Chord kD{38, {54, 57, 62}};
const Chord kD7{38, {54, 57, 60}};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_demo_song OUT.kar\n");
        return 2;
    }

    const std::vector<const char*> verse1 = {
        "\\A", "ma", "zing ", "grace! ", "How ", "sweet ", "the ", "sound",
        "/That ", "saved ", "a ", "wretch ", "like ", "me!",
        "/I ", "once ", "was ", "lost, ", "but ", "now ", "am ", "found;",
        "/Was ", "blind, ", "but ", "now ", "I ", "see."};
    const std::vector<const char*> verse2 = {
        "\\'Twas ", "grace ", "that ", "taught ", "my ", "heart ", "to ", "fear,",
        "/And ", "grace ", "my ", "fears ", "re", "lieved;",
        "/How ", "pre", "cious ", "did ", "that ", "grace ", "ap", "pear",
        "/The ", "hour ", "I ", "first ", "be", "lieved."};
    const std::vector<Chord> bars = {kG, kG, kC, kG, kG, kEm, kD, kD7, kG, kG, kC, kG, kG, kD, kG, kG};

    Track conductor, words, melody, bass, strings, piano, drums;
    conductor.meta(0, 0x03, "Amazing Grace");
    conductor.meta(0, 0x58, std::string("\x03\x02\x18\x08", 4));  // 3/4
    conductor.meta(0, 0x51, be(kTempoUs, 3));
    conductor.text(0, "@KMIDI KARAOKE FILE");
    conductor.text(0, "@V0100");
    conductor.text(0, "@LENG");
    conductor.text(0, "@TAmazing Grace");
    conductor.text(0, "@TWords: John Newton - Tune: New Britain");
    conductor.text(0, "@TArranged for VELARO DECK");
    words.meta(0, 0x03, "Words");

    // Channels: 0 melody (flute), 1 bass, 2 strings, 3 piano, 9 drums.
    struct Setup {
        Track* t;
        int ch, prog, vol, pan;
    };
    for (const Setup& s : {Setup{&melody, 0, 73, 110, 64}, Setup{&bass, 1, 32, 100, 58},
                           Setup{&strings, 2, 48, 70, 40}, Setup{&piano, 3, 0, 80, 88},
                           Setup{&drums, 9, 0, 90, 64}}) {
        s.t->program(0, s.ch, s.prog);
        s.t->ctrl(0, s.ch, 7, s.vol);
        s.t->ctrl(0, s.ch, 10, s.pan);
        s.t->ctrl(0, s.ch, 91, 40);  // a little reverb
    }

    // Two bars of introduction, then each verse starts on the pickup beat.
    const int introBars = 2;
    auto accompany = [&](int barStart, const Chord& c, bool accent) {
        bass.note(barStart, 2 * kDivision - 20, 1, c.root, 96);
        bass.note(barStart + 2 * kDivision, kDivision - 20, 1, c.root + 7, 80);
        for (int k : c.tones) strings.note(barStart, kBar - 10, 2, k, 64);
        for (int beat = 1; beat < 3; ++beat)
            for (int k : c.tones) piano.note(barStart + beat * kDivision, kDivision - 60, 3, k + 12, 58);
        drums.note(barStart, kEighth, 9, 36, accent ? 100 : 84);                  // kick
        drums.note(barStart + kDivision, kEighth, 9, 42, 60);                     // closed hat
        drums.note(barStart + 2 * kDivision, kEighth, 9, 42, 56);
        if (accent) drums.note(barStart, kDivision, 9, 49, 80);                   // crash
    };
    for (int b = 0; b < introBars; ++b) accompany(b * kBar, kG, b == 0);

    int tick = introBars * kBar - kDivision;  // the pickup: beat 3 of the last intro bar
    int firstBar = introBars * kBar;
    for (const auto* syllables : {&verse1, &verse2}) {
        for (int b = 0; b < 16; ++b) accompany(firstBar + b * kBar, bars[b], b == 0);
        for (const Note& n : verse(*syllables)) {
            if (*n.syllable) words.text(tick, n.syllable);
            melody.note(tick, n.eighths * kEighth - 30, 0, n.key, 100);
            tick += n.eighths * kEighth;
        }
        firstBar += 16 * kBar;
    }
    // Ending: a last bar of G, held.
    const int endBar = firstBar;
    bass.note(endBar, kBar, 1, 43, 96);
    for (int k : kG.tones) strings.note(endBar, 2 * kBar, 2, k, 64);
    drums.note(endBar, kDivision, 9, 49, 80);
    const int endTick = endBar + 2 * kBar;

    std::string file = "MThd" + be(6, 4) + be(1, 2) + be(7, 2) + be(kDivision, 2);
    for (Track* t : {&conductor, &words, &melody, &bass, &strings, &piano, &drums})
        file += chunk(*t, endTick);

    std::ofstream out(argv[1], std::ios::binary);
    out.write(file.data(), static_cast<std::streamsize>(file.size()));
    if (!out) {
        std::fprintf(stderr, "make_demo_song: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
