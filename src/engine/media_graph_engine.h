#pragma once
// The tag editor's player: one audio file (MP3, sound files, modules)
// decoded a few seconds ahead on a worker thread at the engine's rate, played as a source
// on the audio engine with run, pause, stop, seek and a volume in hundredths
// of a decibel. Release stops the worker and closes the file, so a save can
// rewrite it.

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "audio_engine.h"
#include "core/platform/media_graph.h"

namespace velaro::engine {

class EngineMediaGraph : public platform::MediaGraph, public AudioSource {
public:
    // `decodeAhead` false decodes inside each rendered block instead, for offline
    // renders whose output must not depend on the worker's pace.
    explicit EngineMediaGraph(AudioEngine& engine, bool decodeAhead = true);
    ~EngineMediaGraph() override;

    // Thread: logic.
    bool RenderFile(const std::string& path) override;
    void Run() override;
    void Pause() override;
    void Stop() override;
    void Release() override;
    double CurrentPosition() override;
    void SetCurrentPosition(double seconds) override;
    double Duration() override;
    int State() override;
    void SetVolume(int hundredthsDb) override;
    int Volume() override { return volume_.load(); }
    void SetBalance(int hundredthsDb) override { balance_.store(hundredthsDb); }
    const std::string& error() const { return error_; }

    // Thread: audio.
    void process(float* left, float* right, int frames) noexcept override;

private:
    struct Track;
    void drop();
    AudioEngine& engine_;
    bool decodeAhead_;
    std::atomic<Track*> track_{nullptr};
    std::atomic<bool> inCallback_{false};
    std::atomic<int> state_{0};
    std::atomic<int64_t> position_{0};  // frames at the engine's rate
    std::atomic<int> volume_{0};
    std::atomic<int> balance_{0};
    std::unique_ptr<Track> owned_;
    std::string error_;
};

}  // namespace velaro::engine
