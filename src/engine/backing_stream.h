#pragma once
// One file or module stream of the backing player. A worker thread decodes
// ahead (file rate -> engine rate, then key and speed) into a lock-free ring;
// the audio thread takes the frames and runs the stream's DSP callbacks and
// effects on them in 32-bit float.

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/platform/audio_streams.h"
#include "dsp/peaking_eq.h"

#include "audio_file_decoder.h"
#include "frame_ring.h"

namespace RubberBand {
class RubberBandStretcher;
}
struct SRC_STATE_tag;

namespace velaro::engine {

class BackingStream {
public:
    static constexpr int kMaxDsp = 24;
    static constexpr int kBands = 8;

    BackingStream(platform::StreamId id, int engineRate);
    ~BackingStream();
    BackingStream(const BackingStream&) = delete;
    BackingStream& operator=(const BackingStream&) = delete;

    // ---- logic thread ----
    // False with the decoder's code in `errorCode` when the file is not one we read.
    bool open(const std::string& path, bool module, bool loop, int& errorCode);
    // Starts decoding ahead (once).
    void startWorker();
    // Stops and joins the worker; the ring stays for the audio thread.
    void stopWorker();
    void setShift(int semitones, int speedPercent);
    platform::StreamId id() const { return id_; }
    const std::string& path() const { return path_; }
    bool module() const { return decoder_.kind() == AudioFileDecoder::Kind::Module; }
    int fileChannels() const { return decoder_.channels(); }
    int fileRate() const { return decoder_.rate(); }
    double lengthSeconds() const { return decoder_.lengthSeconds(); }
    int engineRate() const { return engineRate_; }

    // ---- any thread ----
    bool active() const { return active_.load(std::memory_order_acquire); }
    // Playing from the call on, as the library says, before the audio thread has started it.
    void markActive(bool on) { active_.store(on, std::memory_order_release); }
    int64_t position() const { return shownPos_.load(std::memory_order_acquire); }

    // ---- audio thread (or the offline renderer, which waits for the worker) ----
    struct Entry {
        enum Kind : uint8_t { Callback, Volume, Eq, Gain } kind = Callback;
        int priority = 0;
        uint32_t handle = 0;  // callbacks
        platform::DspProc proc = nullptr;
        void* user = nullptr;
        int band = 0;  // Eq
    };
    void play(bool restart, int64_t alignTo) noexcept;
    void stop() noexcept;
    void addEntry(const Entry& e) noexcept;
    void removeCallback(uint32_t handle) noexcept;
    void removeKind(Entry::Kind k) noexcept;
    void setVolume(float left, float right) noexcept;
    void setBand(const platform::PeakEqRecord& r) noexcept;
    // Adds the stream's frames into `mix` (interleaved stereo); `scratch` holds
    // at least 2 * frames floats.
    // `floatDsp` off: the callbacks get 16-bit samples, as the library gives them without its float option.
    void render(float* mix, float* scratch, int frames, bool offline, bool floatDsp = true) noexcept;
    bool playing() const noexcept { return playing_; }
    int64_t playPosition() const noexcept { return pos_; }
    BackingStream* partner = nullptr;  // the other stream of the same backing

private:
    void worker();
    // Decodes one block into the ring; false at the end of the file.
    bool produce();
    void pushShifted(const float* lr, int frames, bool final);
    size_t takeFrames(float* out, size_t frames, bool offline) noexcept;

    const platform::StreamId id_;
    const int engineRate_;
    std::string path_;
    AudioFileDecoder decoder_;
    FrameRing ring_;

    // Worker state.
    std::thread thread_;
    std::atomic<bool> quit_{false};
    std::atomic<bool> ended_{false};  // the worker has pushed the last frame
    std::mutex wakeMutex_;
    std::condition_variable wake_;
    SRC_STATE_tag* src_ = nullptr;
    std::unique_ptr<RubberBand::RubberBandStretcher> stretch_;
    int64_t stretchSkip_ = 0;  // the stretcher's start delay still to drop
    double stretchExpected_ = 0;  // frames the music fed in should come out as
    int64_t stretchOut_ = 0;
    std::vector<float> raw_, stereo_, converted_, planar_[2], out_, stretchL_, stretchR_;
    std::vector<float> pending_;  // converted frames that found no room in the ring
    size_t pendingFrames_ = 0;
    bool inputDone_ = false;
    std::atomic<int> semitones_{0}, speed_{100};

    // Audio-thread state.
    bool playing_ = false;
    int64_t pos_ = 0;    // frames played since the start
    int64_t owed_ = 0;   // frames played as silence (late, or to line up) not yet taken from the ring
    std::array<Entry, kMaxDsp> entries_{};
    int entryCount_ = 0;
    float volume_[2] = {1.0f, 1.0f};
    std::array<int16_t, 2 * 1024> pcm_{};  // a block as 16-bit samples, for callbacks without float
    std::array<dsp::PeakingEq, kBands> bands_{};
    std::atomic<bool> active_{false};
    std::atomic<int64_t> shownPos_{0};
};

}  // namespace velaro::engine
