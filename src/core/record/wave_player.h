#pragma once
// WavePlayer: one wave device, opened on a new buffer or a file; it records,
// plays a range, cuts a range and saves. Play and Record wait by letting the
// form's events run until the main form's flags say stop.

#include <cstdint>
#include <stdexcept>
#include <string>

#include "../platform/wave_device.h"

namespace velaro::song {
class frmMain;
}

namespace velaro::record {

// A device error: its number, "WavePlayer::<operation>" and the device's text.
class WaveError : public std::runtime_error {
public:
    WaveError(int number, std::string source, const std::string& description)
        : std::runtime_error(description), number(number), source(std::move(source)) {}
    int number;
    std::string source;
};

// The device's text for an error: at most 1024 characters, cut at the first
// NUL. When the caller asks for the first word it goes there and the rest is
// the answer; otherwise the whole text is.
std::string waveErrorText(platform::WaveDevice& device, int error, std::string* firstWord = nullptr);

class WavePlayer {
public:
    // Opens the device on a new, empty buffer.
    explicit WavePlayer(song::frmMain& form);
    // Closes the device.
    ~WavePlayer();
    WavePlayer(const WavePlayer&) = delete;
    WavePlayer& operator=(const WavePlayer&) = delete;

    bool Wait() const { return waitMode_ == 2; }
    void setWait(bool on);
    void OpenFile(const std::string& name);
    // Plays [from, to) (clamped as the class does) and waits until playStopFlag.
    void Play(int32_t& from, int32_t& to);
    void Delete(int32_t from, int32_t to);
    // Records until recordStopFlag, starting the song after the device unless
    // the main form's path is a wave or MP3 file, then one second more.
    void Record(int32_t from = 0, int32_t to = 0, bool insert = false);
    void SaveAs(const std::string& name);
    void Save();
    std::string Filename();
    int32_t length();
    uint8_t channels();
    void setChannels(uint8_t v);
    uint8_t FormatTag();
    void setFormatTag(uint8_t v);
    int32_t samplerate();
    void setSamplerate(int32_t v);
    uint8_t BitsPerSample();
    void setBitsPerSample(uint8_t v);
    int32_t AvgBytesPerSecond();
    int32_t Position();
    void StopRecording();
    void Reset();

    uint32_t deviceId() const { return deviceId_; }

private:
    void OpenDevice(const std::string& name);
    void CloseDevice();
    void ChangeSetting(uint32_t item, int32_t value);
    int32_t status(uint32_t item, const char* operation);
    [[noreturn]] void fail(int error, const char* operation);

    song::frmMain& f_;
    platform::WaveDevice& device_;
    uint32_t deviceId_ = 0;
    int32_t waitMode_ = 0;
};

}  // namespace velaro::record
