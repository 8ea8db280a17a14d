#pragma once
// A song ready to play: its channel events and tempo map in music time
// (768 ticks per quarter note), and its length.

#include <cstdint>
#include <string>
#include <vector>

namespace velaro::engine {

inline constexpr int kMusicTicksPerQuarter = 768;

struct SeqEvent {
    double time;  // music ticks
    uint8_t status;
    uint8_t data1;
    uint8_t data2;
};

struct TempoPoint {
    double time;       // music ticks
    double usPerQuarter;
};

struct Segment {
    std::vector<SeqEvent> events;   // channel messages, in time order
    std::vector<TempoPoint> tempos;  // at least one point, at time 0
    double length = 0;               // music ticks: the end of the longest track
    int format = 0;
    int tracks = 0;
    int division = 0;

    double usPerQuarterAt(double time) const;
    // True when some note is struck: a song of only meta events or controllers makes no sound.
    bool hasNotes() const;
    // The first value a channel gets for a controller (status 0xB0, its number)
    // or a program (status 0xC0, number -1); -1 when the song never sets it.
    int firstValue(int channel, int status, int number) const;
    // Seconds from the start to `time` at the file's tempo map, played at `factor` (> 0).
    double secondsAt(double time, double factor = 1.0) const;
    // Index of the tempo point in force at `time`.
    size_t tempoIndexAt(double time) const;
};

// Parses a Standard MIDI File. Running status, meta and sysex events are
// handled; anything malformed ends the track where it breaks, never the
// program. Returns false when the bytes hold no MIDI header at all.
bool parseSmf(const std::string& bytes, Segment& out);

}  // namespace velaro::engine
