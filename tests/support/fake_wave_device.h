#pragma once
// A wave device without sound: a buffer of PCM bytes in the set format and a
// clock read from the event loop, so a recording grows as virtual time runs
// and a play moves its position until the end of its range. What it records
// is a known ramp (each frame's value follows from its time), so a test can
// tell which part of a take survived a cut. Saves write real RIFF/WAVE files.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "core/platform/wave_device.h"
#include "core/ui/event_loop.h"

namespace velaro::testing {

class FakeWaveDevice : public platform::WaveDevice {
public:
    explicit FakeWaveDevice(ui::EventLoop& loop) : loop_(loop) {}

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

    // The 8-bit (unsigned) or 16-bit sample recorded `ms` into a take, for each side.
    static int sampleAt(int64_t frame, int channel, int bits);

    static constexpr int kNotOpen = 263;
    static constexpr int kBadFormat = 259;
    // Makes the named command ("Open", "Play", "Record", ...) answer this error.
    std::map<std::string, int> failures;
    // Texts for error numbers; unknown numbers get a generic one.
    std::map<int, std::string> texts;

    std::vector<std::string> log;              // each command as it came, "Play 0 500"
    std::vector<platform::WaveFormat> formats;  // each format the set command sent
    bool open() const { return id_ != 0; }
    bool recording() const { return recording_; }
    bool playing() const { return playing_; }
    const std::vector<uint8_t>& buffer() { settle(); return data_; }
    const platform::WaveFormat& format() const { return format_; }

private:
    int fail(const std::string& command);
    int64_t frames() const;
    int64_t frameOf(int32_t ms) const;
    int32_t msOf(int64_t frame) const;
    // Brings a running recording up to the loop's clock.
    void settle();

    ui::EventLoop& loop_;
    uint32_t id_ = 0;
    uint32_t nextId_ = 1;
    std::string element_;
    platform::WaveFormat format_;
    std::vector<uint8_t> data_;
    bool recording_ = false;
    int64_t recordStartMs_ = 0;
    int64_t recordStartFrame_ = 0;
    bool playing_ = false;
    int64_t playStartMs_ = 0;
    int32_t playFrom_ = 0, playTo_ = 0;
    int32_t stoppedAt_ = 0;
};

}  // namespace velaro::testing
