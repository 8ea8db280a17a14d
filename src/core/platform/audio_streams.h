#pragma once
// The stream library: start, recording inputs, file and module streams with
// DSP callbacks and effects, channel control. Levels in hundredths of a decibel.

#include <cstdint>
#include <string>
#include <vector>

namespace velaro::platform {

using StreamId = uint32_t;  // 0: none

// The version the program was made for: major 2 in the low word, minor 1 in
// the high word, as the library packs it.
inline constexpr uint32_t kStreamsVersion = (1u << 16) | 2u;

// SetConfig option: DSP callbacks and effects get 32-bit float samples.
inline constexpr int kConfigFloatDsp = 9;
// MusicLoad flags: volume ramping, and looping.
inline constexpr uint32_t kMusicRamp = 0x200;
inline constexpr uint32_t kMusicLoop = 4;

// Effect numbers of FX_DSP_Set, as the effects library numbers them.
inline constexpr int kFxVolume = 4;
inline constexpr int kFxPeakEq = 5;
inline constexpr int kFxGain = 11;

// Effect 4: left and right volume, 1 unchanged.
struct VolumeRecord {
    float left = 1.0f;
    float right = 1.0f;
};
// Effect 5, one band of up to eight on a stream. Q 0: the bandwidth (octaves) rules.
struct PeakEqRecord {
    int32_t band = 0;
    int32_t rate = 44100;
    float bandwidth = 2.5f;
    float q = 0.0f;
    float center = 1000.0f;
    float gain = 0.0f;  // dB
};
// Effect 11: five floats, the gain in the fourth.
struct GainRecord {
    float a = 10.0f, b = 10.0f, c = 10.0f, gain = 0.0f, e = 1000.0f;
};

struct ChannelInfo {
    int32_t freq = 0;      // the rate the channel plays (and its DSP sees) at
    int32_t chans = 0;     // channels of the file: 1 mono, 2 stereo
    uint32_t flags = 0;
    bool module = false;
};

// A DSP callback: `buffer` holds `length` bytes of interleaved stereo 32-bit
// floats, changed in place. Runs on the audio thread: touch only the arguments.
using DspProc = void (*)(uint32_t handle, uint32_t channel, void* buffer, uint32_t length, void* user);

class AudioStreams {
public:
    virtual ~AudioStreams() = default;
    virtual uint32_t GetVersion() = 0;  // high word major, low word minor
    virtual bool Init(int device, int rate) = 0;
    virtual bool RecordInit(int device) = 0;
    // The code of the last failure, 0 when the last call went well.
    virtual int ErrorGetCode() = 0;
    virtual void Free() = 0;
    virtual bool SetConfig(int option, int value) = 0;
    virtual std::vector<std::string> RecordInputs() = 0;
    virtual bool RecordInputEnabled(int input) = 0;
    virtual void SelectRecordInput(int input) = 0;

    // A sample stream of a file (MP3, WAV, FLAC, OGG); 0 when it can't be read.
    // `mem`, `offset` and `length` are the library's: only a whole file on disk is taken.
    virtual StreamId StreamCreateFile(bool mem, const std::string& path, int64_t offset, int64_t length,
                                      uint32_t flags) = 0;
    // A tracker module; 0 when it isn't one.
    virtual StreamId MusicLoad(bool mem, const std::string& path, int64_t offset, int64_t length, uint32_t flags,
                               int freq) = 0;
    virtual bool StreamFree(StreamId s) = 0;
    virtual bool MusicFree(StreamId s) = 0;

    virtual bool ChannelPlay(StreamId s, bool restart) = 0;
    virtual bool ChannelStop(StreamId s) = 0;
    virtual void ChannelPause(StreamId s) = 0;
    virtual int ChannelIsActive(StreamId s) = 0;  // 0 stopped, 1 playing
    virtual double ChannelSeconds(StreamId s) = 0;
    virtual double ChannelLengthSeconds(StreamId s) = 0;  // 0 when unknown
    virtual void ChannelSetSeconds(StreamId s, double seconds) = 0;
    virtual void ChannelSetVolume(StreamId s, int percent) = 0;
    virtual void ChannelSetPan(StreamId s, int pan) = 0;
    virtual uint32_t ChannelLevel(StreamId s) = 0;  // left in the low word, right in the high
    virtual bool ChannelGetInfo(StreamId s, ChannelInfo& info) = 0;
    // The channel's rate (`freq`), volume 0-100 and pan -100..100.
    virtual bool ChannelGetAttributes(StreamId s, float& freq, int& volume, int& pan) = 0;

    virtual uint32_t ChannelSetDSP(StreamId s, DspProc proc, void* user, int priority) = 0;  // 0: refused
    virtual bool ChannelRemoveDSP(StreamId s, uint32_t dsp) = 0;

    // Effects 4, 5 and 11. Set installs (for effect 5: one more band), Remove
    // takes every instance away; the records go with the effect's number.
    virtual bool FX_DSP_Set(StreamId s, int fx, int priority) = 0;
    virtual bool FX_DSP_Remove(StreamId s, int fx) = 0;
    virtual bool FX_DSP_SetParameters(StreamId s, int fx, const VolumeRecord& r) = 0;
    virtual bool FX_DSP_SetParameters(StreamId s, int fx, const PeakEqRecord& r) = 0;
    virtual bool FX_DSP_SetParameters(StreamId s, int fx, const GainRecord& r) = 0;
    virtual bool FX_DSP_GetParameters(StreamId s, int fx, VolumeRecord& r) = 0;
    // Reads the band that `r.band` names.
    virtual bool FX_DSP_GetParameters(StreamId s, int fx, PeakEqRecord& r) = 0;
    virtual bool FX_DSP_GetParameters(StreamId s, int fx, GainRecord& r) = 0;

    // Key and speed of a stream without one changing the other: semitones
    // -12..12, speed in percent 50..150. Set before play, or live.
    virtual bool ChannelSetShift(StreamId s, int semitones, int speedPercent) = 0;
};

}  // namespace velaro::platform
