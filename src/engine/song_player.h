#pragma once
// The song source: walks a segment in music time, sends its events to the
// synthesiser and renders it. The logic thread commands it through a queue;
// positions come back through atomics.

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "dsp/effect_chain.h"

#include "audio_engine.h"
#include "segment.h"
#include "spsc_queue.h"

namespace velaro::engine {

class Synth;

class SongPlayer : public AudioSource {
public:
    explicit SongPlayer(int sampleRate);
    ~SongPlayer() override;

    // ---- logic thread: commands, applied at the start of the next block ----
    void play(const Segment* seg, double startTicks);
    void stop();
    void sendMidi(int channel, int status, int data1, int data2);
    void setTranspose(int channel, int semitones);
    void setMasterTempo(float factor);
    // Hands a synthesiser over; the caller keeps the old one alive.
    void swapSynth(Synth* synth);
    // The song's own level (linear), from its loudness. Thread: any. A new
    // level glides in over a few tens of milliseconds unless `now` is set.
    void setLevel(float level, bool now = false);
    float level() const { return levelTarget_.load(std::memory_order_relaxed); }
    // The effect chain on the song's sound, after its level; the player keeps
    // it and frees the one before once the audio thread has let go of it.
    void setEffectChain(std::unique_ptr<dsp::EffectChain> chain);
    // A new record for the effect at `slot` of the chain last set.
    void setEffectParams(int slot, const dsp::EffectParams& p);

    // ---- any thread ----
    double seekTicks() const { return seek_.load(std::memory_order_acquire); }
    double musicTicks() const { return perfTicks_.load(std::memory_order_acquire); }
    bool playing() const { return playing_.load(std::memory_order_acquire); }
    float masterTempo() const { return factorShown_.load(std::memory_order_relaxed); }

    // ---- audio thread ----
    void process(float* left, float* right, int frames) noexcept override;

private:
    struct Command {
        enum Kind : uint8_t { Play, Stop, Midi, Transpose, Tempo, Swap, Chain, Params } kind = Stop;
        const Segment* seg = nullptr;
        double start = 0;
        int channel = 0;
        int a = 0, b = 0, c = 0;
        float factor = 1;
        Synth* synth = nullptr;
        dsp::EffectChain* chain = nullptr;
        uint64_t serial = 0;
        dsp::EffectParams params;
    };
    void push(const Command& c);
    void apply(const Command& c) noexcept;
    void dispatch(const SeqEvent& e, bool notes) noexcept;
    void silence() noexcept;

    const int rate_;
    SpscQueue<Command, 1024> commands_;

    // Audio-thread state.
    Synth* synth_ = nullptr;
    const Segment* seg_ = nullptr;
    size_t next_ = 0;
    size_t tempoIndex_ = 0;
    double pos_ = 0;
    double perf_ = 0;
    double factor_ = 1.0;
    bool running_ = false;
    int transpose_[16] = {};
    uint8_t sounding_[16][128] = {};  // key sent + 1, per channel and key of the file
    std::vector<float> l_, r_;
    float level_ = 1.0f;
    float levelStep_ = 0;  // per frame while gliding
    dsp::EffectChain* chain_ = nullptr;
    std::vector<float> fx_;  // the song's block, interleaved, through the chain

    // Logic thread: the chains handed over, each with its number; the audio
    // thread says which number it has taken up.
    std::vector<std::pair<uint64_t, std::unique_ptr<dsp::EffectChain>>> chains_;
    uint64_t chainsSent_ = 0;
    std::atomic<uint64_t> chainTaken_{0};

    std::atomic<float> levelTarget_{1.0f};
    std::atomic<bool> levelNow_{false};

    std::atomic<double> seek_{0};
    std::atomic<double> perfTicks_{0};
    std::atomic<bool> playing_{false};
    std::atomic<float> factorShown_{1.0f};
};

}  // namespace velaro::engine
