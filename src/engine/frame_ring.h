#pragma once
// Stereo float frames from one thread to another without locks: the writer
// never waits (a full ring drops the frames), the reader takes what is there.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <vector>

namespace velaro::engine {

class FrameRing {
public:
    // Capacity in frames, rounded up to a power of two. Thread: logic.
    explicit FrameRing(size_t frames) {
        size_t n = 1;
        while (n < frames) n <<= 1;
        buf_.assign(2 * n, 0.0f);
        mask_ = 2 * n - 1;
    }
    // Producer. False when the frames found no room (none were written).
    bool push(const float* interleaved, int frames) noexcept {
        const size_t head = head_.load(std::memory_order_relaxed);
        const size_t tail = tail_.load(std::memory_order_acquire);
        const size_t n = 2 * static_cast<size_t>(frames);
        if (buf_.size() - (head - tail) < n) return false;
        for (size_t i = 0; i < n; ++i) buf_[(head + i) & mask_] = interleaved[i];
        head_.store(head + n, std::memory_order_release);
        return true;
    }
    // Consumer. Frames waiting.
    size_t available() const noexcept {
        return (head_.load(std::memory_order_acquire) - tail_.load(std::memory_order_relaxed)) / 2;
    }
    // Consumer. Takes up to `frames`; gives how many it took.
    size_t pop(float* interleaved, size_t frames) noexcept {
        const size_t tail = tail_.load(std::memory_order_relaxed);
        const size_t n = 2 * std::min(frames, available());
        for (size_t i = 0; i < n; ++i) interleaved[i] = buf_[(tail + i) & mask_];
        tail_.store(tail + n, std::memory_order_release);
        return n / 2;
    }
    // Consumer. Drops up to `frames`.
    size_t skip(size_t frames) noexcept {
        const size_t tail = tail_.load(std::memory_order_relaxed);
        const size_t n = 2 * std::min(frames, available());
        tail_.store(tail + n, std::memory_order_release);
        return n / 2;
    }

private:
    std::vector<float> buf_;
    size_t mask_ = 0;
    alignas(64) std::atomic<size_t> head_{0};
    alignas(64) std::atomic<size_t> tail_{0};
};

}  // namespace velaro::engine
