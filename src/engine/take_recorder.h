#pragma once
// The take as it is recorded: every block the engine plays (after the
// limiter) plus the microphone, frame for frame, appended to a flat file of
// stereo floats so an hour's take costs no memory. Offline, the blocks come
// on the caller's thread and are written at once; live, the audio thread
// only copies into a ring and a writer thread of its own does the rest,
// pairing each output frame with the input captured a latency later.

#include <atomic>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "audio_engine.h"
#include "frame_ring.h"

namespace velaro::engine {

class MicInput;
class WaveReader;

class TakeRecorder : public BlockListener {
public:
    struct Options {
        bool live = false;
        int skipFrames = 0;     // output frames to leave out first (the limiter's delay, offline)
        int micSkipFrames = 0;  // the round trip in frames (live)
        // Live: the two streams whose clocks line the input up with the
        // output (without them the input's first frame meets the output's
        // first, less the round trip).
        const AudioEngine* engine = nullptr;
        const MicInput* mic = nullptr;
        const MicInput* level = nullptr;  // offline input level, read each block (live input comes with it applied)
        std::unique_ptr<WaveReader> micFile;  // offline input, or none
    };
    // Appends to `path`. Throws std::runtime_error when the file cannot be opened.
    TakeRecorder(const std::string& path, Options options);
    ~TakeRecorder() override;

    // Thread: audio (live) or the offline renderer.
    void block(const float* interleaved, int frames) noexcept override;
    // The ring live input goes into. Thread: capture.
    FrameRing& micRing() { return micRing_; }
    // Stops and writes what is left. False with the cause when the file failed. Thread: logic.
    bool finish(std::string& error);
    // Frames in the file so far. Thread: any.
    int64_t framesWritten() const { return written_.load(std::memory_order_acquire); }
    // Live: how many input frames were left out (negative: silent input frames
    // put before the first) to line the input up; 0 until it is known. Thread: any.
    int64_t inputShift() const { return shift_.load(std::memory_order_acquire); }
    // Output frames that found the ring full (live only). Thread: any.
    int64_t framesDropped() const { return dropped_.load(std::memory_order_relaxed); }

private:
    void write(const float* interleaved, size_t frames) noexcept;
    void writerLoop();
    // Live: moves what can be paired from the rings to the file.
    void drain(bool last);
    // Live: decides where in the input the output's first frame falls, once
    // both streams have run long enough for their clocks to be trusted.
    bool align(bool last);

    std::FILE* file_ = nullptr;
    Options opt_;
    int skipLeft_;
    int64_t micSkipLeft_;
    int64_t micPadLeft_ = 0;  // silent input frames still to put before the first captured one
    bool aligned_ = false;
    std::atomic<int64_t> shift_{0};
    std::vector<float> mic_, out_;
    FrameRing outRing_, micRing_;
    std::atomic<int64_t> written_{0}, dropped_{0};
    std::atomic<bool> running_{true};
    int error_ = 0;
    std::thread writer_;
};

}  // namespace velaro::engine
