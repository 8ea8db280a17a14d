#pragma once
// The machine's mixer through PulseAudio: master is the default sink's
// volume, the record source is the default source (sources listed with the
// sinks' monitors last) and its volume; the microphone line is the engine's
// microphone level and mute, the audio line the backing level. Every call
// waits for the server's answer, at most two seconds, and a failure is told
// through the Error event.

#include <memory>
#include <string>
#include <vector>

#include "core/platform/system_mixer.h"

struct pa_mainloop;
struct pa_context;
struct pa_operation;

namespace velaro::engine {

class AudioEngine;

class PulseMixer : public platform::SystemMixer {
public:
    // nullptr, with the reason in `error`, when no server answers.
    static std::unique_ptr<PulseMixer> connect(AudioEngine& audio, std::string& error);
    ~PulseMixer() override;

    int MasterVolume() override;
    void SetMasterVolume(int v) override;
    std::vector<std::string> RecordSources() override;
    int RecordSource() override;
    void SetRecordSource(int index) override;
    int RecordVolume() override;
    void SetRecordVolume(int v) override;
    int SelectedLine() override { return selectedLine_; }
    void SetSelectedLine(int line) override;
    int LineVolume() override;
    void SetLineVolume(int v) override;
    bool LineMute() override;
    void SetLineMute(bool on) override;

    // The backing level the audio line holds, for the backing player.
    int audioLineVolume() const { return audioVolume_; }

private:
    struct LoopFree {
        void operator()(pa_mainloop* m) const;
    };
    struct ContextFree {
        void operator()(pa_context* c) const;
    };
    struct Source {
        std::string name;
        std::string description;
    };

    explicit PulseMixer(AudioEngine& audio);
    bool open(std::string& error);
    // Runs the loop until `done` holds; false when the time is up or the connection died.
    template <class Done>
    bool runUntil(Done done);
    // Waits for `op` to end; on failure tells why, naming `what`.
    bool finish(pa_operation* op, const char* what);
    bool defaults(std::string& sink, std::string& source);
    std::vector<Source> sources();
    int sinkVolume(const std::string& sink);
    int sourceVolume(const std::string& source);
    void fail(const std::string& what);

    AudioEngine& audio_;
    std::unique_ptr<pa_mainloop, LoopFree> loop_;
    std::unique_ptr<pa_context, ContextFree> context_;
    int selectedLine_ = kMicLine;
    int audioVolume_ = 100;
    bool audioMute_ = false;
};

}  // namespace velaro::engine
