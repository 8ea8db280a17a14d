#pragma once
// The synthesiser performance on our engine: segments from our sequencer,
// collections as FluidSynth banks, playback on the engine's song source.
// Every operation runs on the logic thread.

#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>

#include "audio_engine.h"
#include "core/platform/performance.h"
#include "segment.h"
#include "song_loudness.h"
#include "song_player.h"

namespace velaro::engine {

class Synth;

class PerformanceEngine : public platform::Performance {
public:
    // The master volume, in hundredths of a decibel, that plays at unity gain.
    static constexpr int32_t kUnityAttenuation = -1950;

    explicit PerformanceEngine(AudioEngine& engine, int polyphony = 256);
    ~PerformanceEngine() override;

    platform::SegmentId LoadSegment(const std::string& path) override;
    platform::CollectionId LoadCollection(const std::string& path) override;
    void InitAudio(int flags, const platform::AudioParams& params, int defaultPathType, int channels) override;
    void CloseDown() override;
    platform::AudioPathId GetDefaultAudioPath() override;
    platform::SegmentStateId PlaySegmentEx(platform::SegmentId seg, int flags, int64_t startTime,
                                           platform::AudioPathId path) override;
    void StopEx(platform::AudioPathId path, int64_t time, int flags) override;
    int32_t GetMusicTime() override;
    double GetTempo(int32_t musicTime) override;
    void SetMasterTempo(float factor) override;
    float GetMasterTempo() override;
    void SetMasterVolume(int32_t hundredthsDb) override;
    void SendMIDIPMSG(int64_t time, int flags, int channel, int status, int byte1, int byte2) override;
    void SendPatchPMSG(int64_t time, int flags, int channel, int program, int msb, int lsb) override;
    void SendTransposePMSG(int64_t time, int flags, int channel, int semitones) override;
    void SetStartPoint(platform::SegmentId seg, int32_t musicTime) override;
    int32_t GetLength(platform::SegmentId seg) override;
    void SetStandardMidiFile(platform::SegmentId seg) override;
    void Download(platform::SegmentId seg) override;
    void Unload(platform::SegmentId seg) override;
    void ConnectToCollection(platform::SegmentId seg, platform::CollectionId coll) override;
    int32_t GetSeek(platform::SegmentStateId state) override;

    // The bank used when no collection is connected (default: the system's GM bank).
    void setDefaultBank(std::string path) { defaultBank_ = std::move(path); }
    const std::string& activeBank() const { return activeBank_; }
    SongPlayer& player() { return player_; }
    // The parsed song behind a segment id (nullptr when none). Thread: logic.
    const Segment* segment(platform::SegmentId id) const;
    // Measured loudness of a segment with the bank it plays with, waiting for
    // the measurement when it is still running. Thread: logic.
    double songLoudness(platform::SegmentId id);

private:
    struct SegmentSlot {
        std::unique_ptr<Segment> segment;
        int32_t startPoint = 0;
        platform::CollectionId collection = 0;
    };
    SegmentSlot& slot(platform::SegmentId id);
    // Makes sure the synthesiser plays `bank`, loading it when it is not the one in use.
    void useBank(const std::string& bank);

    // Loudness measurements run on a worker of their own, one song at a time,
    // started when a song is loaded so that they are usually done by Play.
    using LoudnessKey = std::tuple<platform::SegmentId, std::string, ChannelSetup>;
    struct LoudnessJob {
        LoudnessKey key;
        const Segment* segment;
    };
    // What a measurement of this segment depends on now. Thread: logic.
    bool loudnessKey(platform::SegmentId id, LoudnessKey& key) const;
    std::string bankOf(const SegmentSlot& s) const;
    void queueLoudness(platform::SegmentId id);
    void loudnessWorker();
    // The measured loudness, when there is one for this song and bank.
    bool knownLoudness(const LoudnessKey& key, double& lufs);

    AudioEngine& engine_;
    SongPlayer player_;
    SongLoudness loudness_;
    std::mutex loudnessMutex_;
    std::condition_variable loudnessChanged_;
    std::deque<LoudnessJob> loudnessJobs_;
    std::map<LoudnessKey, double> loudnessResults_;
    ChannelSetup channelSetup_;  // the window's latest channel volumes and programs
    bool loudnessBusy_ = false;
    LoudnessKey loudnessRunning_;  // the measurement under way, while busy
    bool loudnessQuit_ = false;
    std::atomic<bool> loudnessCancel_{false};
    std::atomic<platform::SegmentId> levelFollows_{0};
    std::thread loudnessThread_;
    int polyphony_;
    std::map<platform::SegmentId, SegmentSlot> segments_;
    std::map<platform::CollectionId, std::string> collections_;
    int nextId_ = 1;
    platform::SegmentStateId state_ = 0;
    platform::SegmentId playingSegment_ = 0;
    double playOrigin_ = 0;  // performance music time at which the segment's tick 0 lies
    bool initialised_ = false;
    std::string defaultBank_;
    std::string activeBank_;
    // One synthesiser per bank used in the session, kept so that going back
    // to a bank is instant and no synth is freed while the audio thread may hold it.
    std::map<std::string, std::unique_ptr<Synth>> synths_;
};

}  // namespace velaro::engine
