#pragma once
// The stream library: start, recording inputs, file streams with DSP
// callbacks and effects, channel control. Levels in hundredths of a decibel.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace velaro::platform {

using StreamId = uint32_t;  // 0: none

// The version the program was made for: major 2 in the low word, minor 1 in
// the high word, as the library packs it.
inline constexpr uint32_t kStreamsVersion = (1u << 16) | 2u;

class AudioStreams {
public:
    virtual ~AudioStreams() = default;
    virtual uint32_t GetVersion() = 0;  // high word major, low word minor
    virtual bool Init(int device, int rate) = 0;
    virtual bool RecordInit(int device) = 0;
    virtual int ErrorGetCode() = 0;
    virtual void Free() = 0;
    virtual std::vector<std::string> RecordInputs() = 0;
    virtual bool RecordInputEnabled(int input) = 0;
    virtual void SelectRecordInput(int input) = 0;
    virtual StreamId StreamCreateFile(const std::string& path, bool decodeOnly) = 0;
    virtual void StreamFree(StreamId s) = 0;
    virtual bool ChannelPlay(StreamId s, bool restart) = 0;
    virtual void ChannelStop(StreamId s) = 0;
    virtual void ChannelPause(StreamId s) = 0;
    virtual int ChannelIsActive(StreamId s) = 0;  // 0 stopped, 1 playing, 3 paused
    virtual double ChannelSeconds(StreamId s) = 0;
    virtual double ChannelLengthSeconds(StreamId s) = 0;
    virtual void ChannelSetSeconds(StreamId s, double seconds) = 0;
    virtual void ChannelSetVolume(StreamId s, int percent) = 0;
    virtual void ChannelSetPan(StreamId s, int pan) = 0;
    virtual uint32_t ChannelLevel(StreamId s) = 0;  // left in the low word, right in the high
    // A DSP callback on float stereo frames; runs on the audio thread.
    using Dsp = std::function<void(float* frames, int count)>;
    virtual uint32_t ChannelSetDSP(StreamId s, Dsp dsp, int priority) = 0;
    virtual void ChannelRemoveDSP(StreamId s, uint32_t handle) = 0;
    // Effects: volume, peaking equaliser band, gain.
    virtual uint32_t ChannelSetEq(StreamId s, float centerHz, float bandwidth, float gainDb) = 0;
    virtual void ChannelUpdateEq(StreamId s, uint32_t fx, float centerHz, float bandwidth, float gainDb) = 0;
    virtual void ChannelRemoveFX(StreamId s, uint32_t fx) = 0;
};

}  // namespace velaro::platform
