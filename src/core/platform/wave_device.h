#pragma once
// The wave device of the multimedia command interface, as the recorder's
// class drives it: a buffer of a set PCM format that records, plays a range,
// loses a range and is saved as a RIFF/WAVE file. Positions and lengths are
// in milliseconds (the device's time format). Every call answers 0 or an
// error number that ErrorString explains.

#include <cstdint>
#include <string>

namespace velaro::platform {

// The format record the set command sends.
struct WaveFormat {
    int formatTag = 1;  // PCM
    int channels = 2;
    int32_t samplesPerSec = 44100;
    int32_t avgBytesPerSec = 176400;
    int blockAlign = 4;
    int bitsPerSample = 16;
};

// Status items, as the command interface numbers them.
enum WaveItem : uint32_t {
    kItemLength = 1,
    kItemPosition = 2,
    kItemFormatTag = 0x4001,
    kItemChannels = 0x4002,
    kItemSamplesPerSec = 0x4003,
    kItemAvgBytesPerSec = 0x4004,
    kItemBitsPerSample = 0x4006,
};

class WaveDevice {
public:
    virtual ~WaveDevice() = default;
    // Opens a device on `element` (a wave file), or on a new empty buffer for "". Gives its id (never 0).
    virtual int Open(const std::string& element, uint32_t& id) = 0;
    virtual int Close(uint32_t id) = 0;
    // Starts playing [fromMs, toMs) and returns at once; the sound goes on by itself.
    virtual int Play(uint32_t id, int32_t fromMs, int32_t toMs) = 0;
    virtual int Delete(uint32_t id, int32_t fromMs, int32_t toMs) = 0;
    // Starts recording at the buffer's end and returns at once.
    virtual int Record(uint32_t id) = 0;
    virtual int Stop(uint32_t id) = 0;
    virtual int Save(uint32_t id, const std::string& file) = 0;
    virtual int Status(uint32_t id, uint32_t item, int32_t& value) = 0;
    virtual int Set(uint32_t id, const WaveFormat& format) = 0;
    // The element's file name ("" for a new buffer).
    virtual int Info(uint32_t id, std::string& name) = 0;
    virtual std::string ErrorString(int error) = 0;
};

}  // namespace velaro::platform
