#pragma once
// The audio engine: sources mixed into a master with one gain, played by the
// output device or rendered offline in the caller's thread. The audio
// callback never allocates, locks, waits or throws.

#include <array>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "device_watch.h"
#include "stream_clock.h"
#include "dsp/peak_limiter.h"

namespace velaro::engine {

class OutputDevice;
class AudioTap;
class MicInput;

// Something that sounds: adds its frames into the left and right buffers.
class AudioSource {
public:
    virtual ~AudioSource() = default;
    // Thread: audio (or the offline renderer). frames <= AudioEngine::kMaxBlock.
    virtual void process(float* left, float* right, int frames) noexcept = 0;
};

// Gets every block the engine plays, after the limiter.
class BlockListener {
public:
    virtual ~BlockListener() = default;
    // Thread: audio (or the offline renderer).
    virtual void block(const float* interleaved, int frames) noexcept = 0;
};

class AudioEngine {
public:
    static constexpr int kMaxBlock = 1024;
    static constexpr int kOfflineBlock = 256;

    explicit AudioEngine(int sampleRate = 44100);
    ~AudioEngine();
    AudioEngine(const AudioEngine&) = delete;
    AudioEngine& operator=(const AudioEngine&) = delete;

    int sampleRate() const { return rate_; }

    // Thread: logic. A source stays until the engine ends.
    void addSource(AudioSource* source);
    // The same, for a source the engine then owns: it is freed with the engine,
    // never while a device may still be calling it.
    AudioSource* adoptSource(std::unique_ptr<AudioSource> source);
    // Thread: any.
    void setMasterGain(float gain) { masterGain_.store(gain, std::memory_order_relaxed); }
    float masterGain() const { return masterGain_.load(std::memory_order_relaxed); }

    // Thread: audio. Interleaved stereo float.
    void process(float* interleaved, int frames) noexcept;

    // Offline: renders `frames` in fixed blocks and hands each to the sink.
    // The sink gets the master bus without the limiter's delay: its first
    // frame is the first frame the sources made after setSink.
    // Thread: logic, only while no device runs.
    using Sink = std::function<void(const float* interleaved, int frames)>;
    void setSink(Sink sink);
    void render(int64_t frames);
    // True inside render: sources then wait for their decoders rather than drop. Thread: audio.
    bool rendering() const { return rendering_.load(std::memory_order_relaxed); }
    // After the end of a song: renders on while the notes ring out, until the
    // blocks have peaked below `floorDb` for `quietFrames` (an echo's gap; at
    // least one block) or `maxSeconds` have passed. Returns the frames rendered.
    int64_t renderTail(double maxSeconds = 5.0, float floorDb = -60.0f, int64_t quietFrames = 0);

    // The limiter is always on; tests turn it off to compare (it stays a delay). Thread: any.
    void setLimiterEnabled(bool on) { limiter_.setEnabled(on); }
    // The highest sample of the last block out (after the limiter). Thread: any.
    float lastPeak() const { return lastPeak_.load(std::memory_order_relaxed); }

    // A copy of everything played goes to the tap (nullptr: none). Thread: logic.
    void setTap(AudioTap* tap) { tap_.store(tap, std::memory_order_release); }

    // The take recorder hears every block played (nullptr: none). Thread: logic.
    void setRecorder(BlockListener* r) { recorder_.store(r, std::memory_order_release); }
    // Frames the limiter holds back. Thread: any.
    int limiterLatency() const { return limiter_.latencyFrames(); }

    // The microphone and its mixer line. Level 0 to 100. Thread: logic.
    MicInput& mic() { return *mic_; }
    void setMicLevel(int level);
    void setMicMute(bool on);
    void setInputDevice(const std::string& name);
    void setInputLatencyMs(int ms);

    // The sound device. Thread: logic. False (with a reason) when none can be opened.
    // Once open it is watched: when it goes, the engine plays on silently in
    // time with the wall clock, tries for a device every so often and plays
    // through the one that opens.
    bool startDevice(std::string& error, int bufferFrames = 256);
    // As startDevice, but with no device the engine starts out silent and keeps trying. Thread: logic.
    void startDeviceOrSilence(int bufferFrames = 256);
    void stopDevice();
    bool deviceRunning() const;
    // A device lost or found again, said for the user. Runs on the watch's
    // thread: post it on; it must not call back into the device. Thread: logic, before startDevice.
    using DeviceNotice = std::function<void(bool lost, const std::string& message)>;
    void setDeviceNotice(DeviceNotice notice) { notice_ = std::move(notice); }
    // True while the engine plays silently in place of a device. Thread: any.
    bool playingSilently() const { return silent_.load(std::memory_order_acquire); }
    // Times a lost device left the engine playing silently. Thread: any.
    int deviceFallbacks() const { return fallbacks_.load(std::memory_order_relaxed); }
    // Times the device ran dry since the engine began. Thread: any.
    int64_t underruns() const { return underruns_.load(std::memory_order_relaxed); }
    // The API of the device playing, or of the last one ("" when none opened). Thread: logic.
    std::string deviceApi() const;
    // Frames the device has played; the clock of real-time runs. Thread: any.
    int64_t framesPlayed() const { return framesPlayed_.load(std::memory_order_acquire); }
    // The output's frames on the steady clock, for lining the input up. Thread: any.
    StreamClock& outputClock() { return outClock_; }
    const StreamClock& outputClock() const { return outClock_; }
    // The played frame the current recorder's first block started at. Thread: any, once it has a block.
    int64_t recorderStartFrame() const { return recorderStart_.load(std::memory_order_acquire); }

private:
    int rate_;
    std::array<std::atomic<AudioSource*>, 32> sources_{};
    std::atomic<int> sourceCount_{0};
    std::atomic<float> masterGain_{1.0f};
    float gainNow_ = 1.0f;  // audio thread: the gain reached, gliding to masterGain_
    dsp::PeakLimiter limiter_;
    std::atomic<float> lastPeak_{0.0f};
    int64_t skipFrames_ = 0;  // offline: the limiter's delay not yet passed to the sink
    std::atomic<int64_t> framesPlayed_{0};
    std::atomic<bool> rendering_{false};
    std::atomic<AudioTap*> tap_{nullptr};
    std::atomic<BlockListener*> recorder_{nullptr};
    BlockListener* lastRecorder_ = nullptr;  // audio thread
    std::atomic<int64_t> recorderStart_{0};
    std::vector<float> left_, right_, offline_;
    StreamClock outClock_;
    Sink sink_;
    std::unique_ptr<OutputDevice> device_;
    std::unique_ptr<MicInput> mic_;
    std::vector<std::unique_ptr<AudioSource>> owned_;  // freed after the device has stopped

    bool openDevice(std::string& error);  // with deviceMutex_ held
    void deviceBlock(float* out, int frames, bool underflow, int64_t coverNs) noexcept;
    void watch(bool silent);
    void stopWatch();
    int bufferFrames_ = 256;
    mutable std::mutex deviceMutex_;  // device_ and api_, between the logic thread and the watch
    std::string api_;
    DeviceNotice notice_;
    std::thread watch_;
    std::mutex watchMutex_;
    std::condition_variable watchWake_;
    bool watchStop_ = false;
    std::atomic<bool> silent_{false};
    std::atomic<int> fallbacks_{0};
    std::atomic<int64_t> underruns_{0};
    UnderrunCounter underrunCounter_;  // device thread
    std::vector<float> silentBlock_;  // the watch's thread
};

}  // namespace velaro::engine
