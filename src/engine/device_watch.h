#pragma once
// What the engine's watch over the sound device decides: when a device that
// should be playing has gone (stopped, or its frames standing still), and
// when a device's callback came too late for the audio it had buffered (an
// underrun, counted once however long the gap lasts). Plain arithmetic, so
// the rules can be tried without a sound server.

#include <cstdint>

namespace velaro::engine {

class DeviceHealth {
public:
    // A stream that has just started may fill its buffer and then wait
    // for its server to start playing (a second or more on a busy
    // machine): a stall counts for `startMs` in that time.
    explicit DeviceHealth(int64_t stallMs = 500, int64_t startMs = 3000) : stallMs_(stallMs), startMs_(startMs) {}

    // A device has just started playing. Thread: the watch.
    void restart(int64_t nowMs, int64_t framesPlayed) {
        lastFrames_ = framesPlayed;
        lastChangeMs_ = startedMs_ = nowMs;
    }
    // True once the device no longer plays: its stream stopped, its callback
    // gave up on it, or no frame has been played for the stall time.
    bool lost(int64_t nowMs, int64_t framesPlayed, bool running, bool failed) {
        if (!running || failed) return true;
        if (framesPlayed != lastFrames_) {
            lastFrames_ = framesPlayed;
            lastChangeMs_ = nowMs;
            return false;
        }
        const bool starting = nowMs - startedMs_ < startMs_;
        return nowMs - lastChangeMs_ >= (starting ? startMs_ : stallMs_);
    }

private:
    int64_t stallMs_, startMs_;
    int64_t startedMs_ = 0;
    int64_t lastFrames_ = 0;
    int64_t lastChangeMs_ = 0;
};

// Thread: the device's callback; never allocates.
class UnderrunCounter {
public:
    // One device block. `flagged`: the backend reported an underflow.
    // `lateNs`: how much later than the stream's clock this block was asked
    // for; `coverNs`: how long the audio buffered ahead lasts. The episode
    // ends once the stream keeps time again (the clock has moved to the new
    // edge, or the lateness is back under half the cover).
    void block(bool flagged, int64_t lateNs, int64_t coverNs) noexcept {
        const bool dry = flagged || lateNs > coverNs;
        if (dry && !inEpisode_) ++count_;
        if (dry)
            inEpisode_ = true;
        else if (lateNs <= coverNs / 2)
            inEpisode_ = false;
    }
    int64_t count() const noexcept { return count_; }

private:
    bool inEpisode_ = false;
    int64_t count_ = 0;
};

// The frames a silent stand-in for the device owes at a moment of the wall
// clock: the device's pace carried on from where it stopped.
struct SilentPace {
    int rate = 44100;
    int64_t startMs = 0;
    int64_t startFrames = 0;
    int64_t due(int64_t nowMs) const {
        return startFrames + (nowMs > startMs ? (nowMs - startMs) * rate / 1000 : 0);
    }
};

}  // namespace velaro::engine
