#pragma once
// How loud a song plays: the song is rendered once, quickly and at a low
// rate, on a synthesiser of its own, and its integrated loudness (EBU R128)
// measured. The song source then plays at the level that brings the song to
// the program's reference loudness, so dense and sparse songs sound alike.

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <string>

#include "segment.h"

namespace velaro::engine {

class Synth;

// The loudness the resting volume gives a song, in LUFS.
inline constexpr double kReferenceLufs = -18.0;

// Integrated loudness of interleaved stereo float audio, in LUFS; -inf for silence.
class LoudnessMeter {
public:
    explicit LoudnessMeter(int sampleRate);
    ~LoudnessMeter();
    LoudnessMeter(const LoudnessMeter&) = delete;
    LoudnessMeter& operator=(const LoudnessMeter&) = delete;
    void add(const float* interleaved, size_t frames);
    double integrated() const;

private:
    struct State;
    State* state_;
};

// The channel volumes and programs the window sends over the song's own at
// the start of play (-1: the song's own), which the measurement must hear too.
struct ChannelSetup {
    std::array<int, 16> volume;
    std::array<int, 16> program;
    ChannelSetup() {
        volume.fill(-1);
        program.fill(-1);
    }
    auto operator<=>(const ChannelSetup&) const = default;
};

class SongLoudness {
public:
    static constexpr int kAnalysisRate = 11025;

    SongLoudness();
    ~SongLoudness();
    // Renders the segment with `bank` and measures it. Returns -inf for a song
    // that makes no sound, NaN when stopped by `cancel`. Thread: one worker at a time.
    double measure(const Segment& seg, const std::string& bank, const ChannelSetup& setup,
                   const std::atomic<bool>& cancel);

    // The song source's linear level for a measured loudness: unity when the
    // song is silent or could not be measured, within -24..+30 dB otherwise.
    static float levelFor(double lufs);

private:
    static std::unique_ptr<Synth> synthFor(const std::string& bank);
};

}  // namespace velaro::engine
