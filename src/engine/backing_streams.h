#pragma once
// The stream library's file and module streams on our engine: each stream
// decodes ahead on a worker of its own; this source mixes the playing ones
// into the engine. The logic thread commands the audio thread through a
// queue, so calls from the form never wait for the sound card.

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/platform/inert.h"

#include "audio_engine.h"
#include "backing_stream.h"
#include "spsc_queue.h"

namespace velaro::engine {

class BackingStreams : public platform::InertAudioStreams, public AudioSource {
public:
    // The library's error codes that these calls give.
    static constexpr int kErrHandle = 5, kErrIllParam = 20, kErrNotAvail = 37;

    explicit BackingStreams(AudioEngine& engine);
    ~BackingStreams() override;

    // ---- logic thread ----
    int ErrorGetCode() override { return error_; }
    bool SetConfig(int option, int value) override;
    platform::StreamId StreamCreateFile(bool mem, const std::string& path, int64_t offset, int64_t length,
                                        uint32_t flags) override;
    platform::StreamId MusicLoad(bool mem, const std::string& path, int64_t offset, int64_t length, uint32_t flags,
                                 int freq) override;
    bool StreamFree(platform::StreamId s) override;
    bool MusicFree(platform::StreamId s) override;
    bool ChannelPlay(platform::StreamId s, bool restart) override;
    bool ChannelStop(platform::StreamId s) override;
    // A stopped stream resumes where it stood: pausing is stopping.
    void ChannelPause(platform::StreamId s) override { ChannelStop(s); }
    int ChannelIsActive(platform::StreamId s) override;
    double ChannelSeconds(platform::StreamId s) override;
    double ChannelLengthSeconds(platform::StreamId s) override;
    bool ChannelGetInfo(platform::StreamId s, platform::ChannelInfo& info) override;
    bool ChannelGetAttributes(platform::StreamId s, float& freq, int& volume, int& pan) override;
    uint32_t ChannelSetDSP(platform::StreamId s, platform::DspProc proc, void* user, int priority) override;
    bool ChannelRemoveDSP(platform::StreamId s, uint32_t dsp) override;
    bool FX_DSP_Set(platform::StreamId s, int fx, int priority) override;
    bool FX_DSP_Remove(platform::StreamId s, int fx) override;
    bool FX_DSP_SetParameters(platform::StreamId s, int fx, const platform::VolumeRecord& r) override;
    bool FX_DSP_SetParameters(platform::StreamId s, int fx, const platform::PeakEqRecord& r) override;
    bool FX_DSP_SetParameters(platform::StreamId s, int fx, const platform::GainRecord& r) override;
    bool FX_DSP_GetParameters(platform::StreamId s, int fx, platform::VolumeRecord& r) override;
    bool FX_DSP_GetParameters(platform::StreamId s, int fx, platform::PeakEqRecord& r) override;
    bool FX_DSP_GetParameters(platform::StreamId s, int fx, platform::GainRecord& r) override;
    bool ChannelSetShift(platform::StreamId s, int semitones, int speedPercent) override;

    // True while any stream plays. Thread: any.
    bool anyActive() const;
    bool floatDsp() const { return floatDsp_.load(std::memory_order_relaxed); }

    // ---- audio thread ----
    void process(float* left, float* right, int frames) noexcept override;

private:
    struct Mirror {
        std::unique_ptr<BackingStream> stream;  // handed to the audio thread at creation
        BackingStream* raw = nullptr;
        bool module = false;
        uint32_t flags = 0;
        bool volume = false, gainSet = false;
        int bands = 0;
        platform::VolumeRecord vol;
        platform::PeakEqRecord eq[BackingStream::kBands];
        platform::GainRecord gain;
        std::vector<uint32_t> dsps;
    };
    struct Command {
        enum Kind : uint8_t { Add, Remove, Play, Stop, Entry, RemoveDsp, RemoveKind, Volume, Band } kind = Add;
        BackingStream* s = nullptr;
        BackingStream* partner = nullptr;
        BackingStream::Entry entry;
        platform::PeakEqRecord eq;
        float l = 1, r = 1;
    };
    platform::StreamId create(const std::string& path, bool module, uint32_t flags, bool loop);
    bool release(platform::StreamId s);
    Mirror* find(platform::StreamId s);
    bool send(const Command& c);
    void reap();
    void apply(const Command& c) noexcept;

    AudioEngine& engine_;
    int error_ = 0;
    std::atomic<bool> floatDsp_{false};
    platform::StreamId nextId_ = 1;
    uint32_t nextDsp_ = 1;
    std::map<platform::StreamId, Mirror> streams_;
    platform::StreamId lastCreated_ = 0;  // a backing's first stream, waiting for its partner
    std::vector<std::unique_ptr<BackingStream>> freed_;  // until the audio thread lets go

    SpscQueue<Command, 1024> commands_;
    SpscQueue<BackingStream*, 256> retired_;
    // Audio-thread state.
    std::array<BackingStream*, 32> live_{};
    int liveCount_ = 0;
    std::vector<float> mix_, scratch_;
};

}  // namespace velaro::engine
