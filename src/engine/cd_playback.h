#pragma once
// A CD track playing on the engine: a reader thread keeps a ring of frames
// filled from the disc and delivers the stream's syncs; the audio thread only
// takes frames, applies volume, pan and slide, and keeps the level.

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "audio_engine.h"
#include "cd_sector_reader.h"
#include "frame_ring.h"

namespace velaro::engine {

class CdDeck {
public:
    // Takes the reader, already opened and placed.
    explicit CdDeck(std::unique_ptr<CdSectorReader> reader, int sampleRate);
    ~CdDeck();

    // Thread: logic. Reads a second ahead, so that a short track plays whole
    // from memory, then starts the reader thread.
    void start();
    // Thread: logic. Ends the reader thread.
    void halt();
    int64_t lengthBytes() const { return length_; }
    // Bytes heard so far. Thread: any.
    int64_t positionBytes() const;
    // Thread: logic; only while the deck is off the engine.
    bool seek(int64_t bytes);

    std::atomic<bool> playing{false};
    std::atomic<bool> paused{false};
    std::atomic<bool> ended{false};
    std::atomic<float> volume{1.0f};  // 0..1
    std::atomic<float> pan{0.0f};     // -1..1
    // A slide: the volume glides to slideTarget over slideFrames.
    std::atomic<float> slideTarget{1.0f};
    std::atomic<int64_t> slideFrames{0};
    std::atomic<bool> slideGeneration{false};
    std::atomic<uint32_t> level{0xFFFFFFFFu};

    // Syncs, one-shot, run on the reader thread. Set from the logic thread.
    void setSync(uint32_t type, std::function<void()> fn);

    // Thread: audio.
    void process(float* left, float* right, int frames) noexcept;

private:
    void readerLoop();
    void fireDue();
    bool readSome();

    std::unique_ptr<CdSectorReader> reader_;
    int rate_;
    int64_t length_;
    int64_t startBytes_ = 0;  // where the ring's first frame lies on the track
    FrameRing ring_;
    std::vector<float> scratch_;
    std::atomic<int64_t> framesOut_{0};
    std::atomic<bool> readerDone_{false};
    std::atomic<bool> readError_{false};
    std::atomic<bool> slideEnded_{false};
    std::atomic<bool> quit_{false};
    std::thread thread_;
    float gainNow_ = 1.0f;
    int64_t slideLeft_ = 0;
    float slideStep_ = 0.0f;
    bool slideSeen_ = false;

    std::mutex syncMutex_;
    std::function<void()> onEnd_, onSlide_, onError_;
};

// The engine source that plays whichever deck is current.
class CdPlaybackSource : public AudioSource {
public:
    void process(float* left, float* right, int frames) noexcept override;
    // Thread: logic. Returns once the audio thread no longer uses the old deck.
    void setDeck(CdDeck* deck);
    CdDeck* deck() const { return deck_.load(std::memory_order_acquire); }

private:
    std::atomic<CdDeck*> deck_{nullptr};
    std::atomic<bool> busy_{false};
};

}  // namespace velaro::engine
