#pragma once
// A copy of what the engine plays, taken on the audio thread without locks
// and written to a wave file by a thread of its own.

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace velaro::engine {

class WavWriter;

class AudioTap {
public:
    // Thread: logic. Throws std::runtime_error when the file cannot be made.
    AudioTap(const std::string& wavPath, int sampleRate, size_t capacityFrames = 1 << 20);
    ~AudioTap();
    // Thread: audio. Frames that find the ring full are dropped, never waited for.
    void push(const float* interleaved, int frames) noexcept;
    // Thread: logic. Writes what is left and puts the file in place; false
    // (with error()) when the file could not be written whole.
    bool finish();
    const std::string& error() const;
    int64_t framesWritten() const;

private:
    void drain();
    std::vector<float> ring_;
    size_t mask_;
    std::atomic<size_t> head_{0}, tail_{0};
    std::unique_ptr<WavWriter> wav_;
    std::atomic<bool> running_{true};
    std::thread writer_;
};

}  // namespace velaro::engine
