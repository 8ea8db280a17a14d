#pragma once
// The wave device on the audio engine. A take is what the engine plays plus
// the microphone, kept as a flat file of stereo floats at the engine's rate
// in the temp folder; the set format (8 or 16 bit, mono or stereo, any rate)
// is applied when it is saved. Play sounds a range of it through the engine.
// Without a running sound device the take is recorded offline, block by
// block as the engine renders, with a wave file as the microphone.

#include <memory>
#include <string>

#include "core/platform/wave_device.h"

namespace velaro::engine {

class AudioEngine;
class TakeRecorder;
class TakePlayer;

class EngineWaveDevice : public platform::WaveDevice {
public:
    enum Error : int {
        kNotOpen = 263,
        kCannotOpen = 275,
        kCannotSave = 276,
        kCannotKeep = 277,
        kBadFormat = 278,
        kBusy = 279,
        kNoInput = 280,
    };

    explicit EngineWaveDevice(AudioEngine& engine);
    ~EngineWaveDevice() override;

    int Open(const std::string& element, uint32_t& id) override;
    int Close(uint32_t id) override;
    int Play(uint32_t id, int32_t fromMs, int32_t toMs) override;
    int Delete(uint32_t id, int32_t fromMs, int32_t toMs) override;
    int Record(uint32_t id) override;
    int Stop(uint32_t id) override;
    int Save(uint32_t id, const std::string& file) override;
    int Status(uint32_t id, uint32_t item, int32_t& value) override;
    int Set(uint32_t id, const platform::WaveFormat& format) override;
    int Info(uint32_t id, std::string& name) override;
    std::string ErrorString(int error) override;

    // The take's frames at the engine's rate, and its scratch file. Thread: logic.
    int64_t frames() const;
    const std::string& takePath() const { return takePath_; }
    bool recording() const { return recorder_ != nullptr; }
    bool playing() const;

private:
    int fail(int error, std::string detail);
    bool valid(uint32_t id) const { return id != 0 && id == id_; }
    int64_t frameOf(int32_t ms) const;
    int32_t msOf(int64_t frame) const;
    void stopPlayer();
    int stopRecorder();
    void dropTake();
    int newTake();

    AudioEngine& engine_;
    uint32_t id_ = 0, nextId_ = 1;
    std::string element_, takePath_, detail_;
    int64_t frames_ = 0;
    int32_t stoppedAtMs_ = 0;
    bool micHeld_ = false;
    platform::WaveFormat format_;
    std::unique_ptr<TakeRecorder> recorder_;
    std::unique_ptr<TakePlayer> player_;
};

}  // namespace velaro::engine
