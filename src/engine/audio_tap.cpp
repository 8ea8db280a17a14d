#include "audio_tap.h"

#include <chrono>

#include "wav_file.h"

namespace velaro::engine {

AudioTap::AudioTap(const std::string& wavPath, int sampleRate, size_t capacityFrames)
    : ring_(2 * capacityFrames), mask_(2 * capacityFrames - 1),
      wav_(std::make_unique<WavWriter>(wavPath, sampleRate)) {
    writer_ = std::thread([this] {
        while (running_.load(std::memory_order_acquire)) {
            drain();
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    });
}

AudioTap::~AudioTap() { finish(); }

void AudioTap::push(const float* s, int frames) noexcept {
    const size_t head = head_.load(std::memory_order_relaxed);
    const size_t tail = tail_.load(std::memory_order_acquire);
    const size_t n = 2 * static_cast<size_t>(frames);
    if (ring_.size() - (head - tail) < n) return;
    for (size_t i = 0; i < n; ++i) ring_[(head + i) & mask_] = s[i];
    head_.store(head + n, std::memory_order_release);
}

void AudioTap::drain() {
    size_t tail = tail_.load(std::memory_order_relaxed);
    const size_t head = head_.load(std::memory_order_acquire);
    float block[2 * 1024];
    while (tail != head) {
        size_t n = std::min<size_t>(head - tail, 2 * 1024);
        for (size_t i = 0; i < n; ++i) block[i] = ring_[(tail + i) & mask_];
        wav_->write(block, static_cast<int>(n / 2));
        tail += n;
    }
    tail_.store(tail, std::memory_order_release);
}

bool AudioTap::finish() {
    if (writer_.joinable()) {
        running_.store(false, std::memory_order_release);
        writer_.join();
        drain();
        return wav_->close();
    }
    return wav_->error().empty();
}

const std::string& AudioTap::error() const { return wav_->error(); }

int64_t AudioTap::framesWritten() const { return wav_->framesWritten(); }

}  // namespace velaro::engine
