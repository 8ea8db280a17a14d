#pragma once
// Where a sound stream's frames lie on the machine's steady clock. Each
// callback says how many frames of the stream lie before "now"; the earliest
// such edge among the recent callbacks is the stream's frame 0 on the clock
// (a callback can run late, never early). Only recent ones count: after an
// underrun or a stall at the start the stream has slipped against the clock,
// and the old edges no longer hold. Two streams' clocks tell which input
// frame was heard while an output frame played, to well under a buffer,
// whatever the phase of their callbacks.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>

namespace velaro::engine {

class StreamClock {
public:
    explicit StreamClock(int rate) : rate_(rate) {}

    // Thread: the stream's callback. `framesBeforeNow`: frames of the stream
    // that lie wholly before this moment.
    void observe(int64_t framesBeforeNow) noexcept {
        const int gen = generation_.load(std::memory_order_acquire);
        if (gen != seenGeneration_) {
            seenGeneration_ = gen;
            earliest_ = before_ = std::numeric_limits<int64_t>::max();
            inWindow_ = 0;
            count_.store(0, std::memory_order_relaxed);
        }
        const int64_t now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                                std::chrono::steady_clock::now().time_since_epoch()).count();
        const int64_t edge = now - framesBeforeNow * 1'000'000'000 / rate_;
        // Two windows of callbacks: the earliest edge of this one and of the last.
        earliest_ = std::min(earliest_, edge);
        anchor_.store(std::min(earliest_, before_), std::memory_order_relaxed);
        if (++inWindow_ >= kWindow) {
            before_ = earliest_;
            earliest_ = std::numeric_limits<int64_t>::max();
            inWindow_ = 0;
        }
        count_.fetch_add(1, std::memory_order_release);
    }
    // Starts a fresh estimate at the next callback. Thread: any.
    void reset() noexcept {
        count_.store(0, std::memory_order_relaxed);
        generation_.fetch_add(1, std::memory_order_acq_rel);
    }
    // Callbacks seen since the reset. Thread: any.
    int observations() const { return count_.load(std::memory_order_acquire); }
    // The steady-clock time of frame 0, in nanoseconds. Thread: any.
    int64_t anchorNs() const { return anchor_.load(std::memory_order_relaxed); }

private:
    int rate_;
    std::atomic<int> generation_{0};
    std::atomic<int> count_{0};
    std::atomic<int64_t> anchor_{0};
    static constexpr int kWindow = 64;
    // Callback thread only.
    int seenGeneration_ = 0;
    int inWindow_ = 0;
    int64_t earliest_ = std::numeric_limits<int64_t>::max();
    int64_t before_ = std::numeric_limits<int64_t>::max();
};

// Frames from output frame `outFrame`'s playing to input frame 0's arrival,
// as the two clocks see it: input frame = outFrame + this + round trip.
inline int64_t inputFrameOffset(const StreamClock& out, const StreamClock& in, int rate) {
    const int64_t ns = out.anchorNs() - in.anchorNs();
    return (ns * rate + (ns >= 0 ? 500'000'000 : -500'000'000)) / 1'000'000'000;
}

}  // namespace velaro::engine
