#pragma once
// The synthesiser performance: loader, segments, collection and playback,
// under the operation names the song logic calls. Music time runs at 768
// ticks per quarter note. Handles are small integers, 0 meaning none.

#include <cstdint>
#include <string>

namespace velaro::platform {

using SegmentId = int;
using CollectionId = int;
using SegmentStateId = int;
using AudioPathId = int;

struct AudioParams {
    bool initNow = true;
    int validData = 7;
    int features = 63;
    int voices = 128;
    int sampleRate = 48000;
};

class Performance {
public:
    virtual ~Performance() = default;
    // Every operation throws VbError when it fails, as the automation calls did.
    virtual SegmentId LoadSegment(const std::string& path) = 0;
    virtual CollectionId LoadCollection(const std::string& path) = 0;
    virtual void InitAudio(int flags, const AudioParams& params, int defaultPathType, int channels) = 0;
    virtual void CloseDown() = 0;
    virtual AudioPathId GetDefaultAudioPath() = 0;
    virtual SegmentStateId PlaySegmentEx(SegmentId seg, int flags, int64_t startTime, AudioPathId path) = 0;
    virtual void StopEx(AudioPathId path, int64_t time, int flags) = 0;
    virtual int32_t GetMusicTime() = 0;
    virtual double GetTempo(int32_t musicTime) = 0;
    virtual void SetMasterTempo(float factor) = 0;
    virtual float GetMasterTempo() = 0;
    virtual void SetMasterVolume(int32_t hundredthsDb) = 0;
    virtual void SendMIDIPMSG(int64_t time, int flags, int channel, int status, int byte1, int byte2) = 0;
    virtual void SendPatchPMSG(int64_t time, int flags, int channel, int program, int msb, int lsb) = 0;
    virtual void SendTransposePMSG(int64_t time, int flags, int channel, int semitones) = 0;
    // Segment operations.
    virtual void SetStartPoint(SegmentId seg, int32_t musicTime) = 0;
    virtual int32_t GetLength(SegmentId seg) = 0;
    virtual void SetStandardMidiFile(SegmentId seg) = 0;
    virtual void Download(SegmentId seg) = 0;  // to the performance or its audio path
    virtual void Unload(SegmentId seg) = 0;
    virtual void ConnectToCollection(SegmentId seg, CollectionId coll) = 0;
    // Segment state: music time played so far.
    virtual int32_t GetSeek(SegmentStateId state) = 0;
};

}  // namespace velaro::platform
