#pragma once
// Services that do nothing and succeed at nothing: no sound, no devices, no
// drives. For tests and runs that do not care about the outside world.

#include <memory>

#include "platform.h"

namespace velaro::platform {

class InertPerformance : public Performance {
public:
    SegmentId LoadSegment(const std::string& path) override;
    CollectionId LoadCollection(const std::string& path) override;
    void InitAudio(int, const AudioParams&, int, int) override {}
    void CloseDown() override {}
    AudioPathId GetDefaultAudioPath() override { return 1; }
    SegmentStateId PlaySegmentEx(SegmentId, int, int64_t, AudioPathId) override { return 1; }
    void StopEx(AudioPathId, int64_t, int) override {}
    int32_t GetMusicTime() override { return 0; }
    double GetTempo(int32_t) override { return 120.0; }
    void SetMasterTempo(float f) override { tempo_ = f; }
    float GetMasterTempo() override { return tempo_; }
    void SetMasterVolume(int32_t) override {}
    void SendMIDIPMSG(int64_t, int, int, int, int, int) override {}
    void SendPatchPMSG(int64_t, int, int, int, int, int) override {}
    void SendTransposePMSG(int64_t, int, int, int) override {}
    void SetStartPoint(SegmentId, int32_t) override {}
    int32_t GetLength(SegmentId) override { return 0; }
    void SetStandardMidiFile(SegmentId) override {}
    void Download(SegmentId) override {}
    void Unload(SegmentId) override {}
    void ConnectToCollection(SegmentId, CollectionId) override {}
    int32_t GetSeek(SegmentStateId) override { return 0; }

private:
    float tempo_ = 1.0f;
    int next_ = 1;
};

class InertAudioStreams : public AudioStreams {
public:
    // A library that starts and has nothing: the right version, no inputs.
    uint32_t GetVersion() override { return kStreamsVersion; }
    bool Init(int, int) override { return true; }
    bool RecordInit(int) override { return true; }
    int ErrorGetCode() override { return 0; }
    void Free() override {}
    std::vector<std::string> RecordInputs() override { return {}; }
    bool RecordInputEnabled(int) override { return false; }
    void SelectRecordInput(int) override {}
    StreamId StreamCreateFile(const std::string&, bool) override { return 0; }
    void StreamFree(StreamId) override {}
    bool ChannelPlay(StreamId, bool) override { return false; }
    void ChannelStop(StreamId) override {}
    void ChannelPause(StreamId) override {}
    int ChannelIsActive(StreamId) override { return 0; }
    double ChannelSeconds(StreamId) override { return 0; }
    double ChannelLengthSeconds(StreamId) override { return 0; }
    void ChannelSetSeconds(StreamId, double) override {}
    void ChannelSetVolume(StreamId, int) override {}
    void ChannelSetPan(StreamId, int) override {}
    uint32_t ChannelLevel(StreamId) override { return 0; }
    uint32_t ChannelSetDSP(StreamId, Dsp, int) override { return 0; }
    void ChannelRemoveDSP(StreamId, uint32_t) override {}
    uint32_t ChannelSetEq(StreamId, float, float, float) override { return 0; }
    void ChannelUpdateEq(StreamId, uint32_t, float, float, float) override {}
    void ChannelRemoveFX(StreamId, uint32_t) override {}
};

// The song's buffer keeps its chain and records; nothing sounds.
class InertSongEffects : public EffectBook {};

class InertSoundDevices : public SoundDevices {
public:
    std::vector<DeviceInfo> Outputs() override { return {}; }
    std::vector<DeviceInfo> Captures() override { return {}; }
};

class InertMediaGraph : public MediaGraph {
public:
    bool RenderFile(const std::string&) override { return false; }
    void Run() override {}
    void Pause() override {}
    void Stop() override {}
    void Release() override {}
    double CurrentPosition() override { return 0; }
    void SetCurrentPosition(double) override {}
    double Duration() override { return 0; }
    int State() override { return 0; }
    void SetVolume(int v) override { volume_ = v; }
    int Volume() override { return volume_; }
    void SetBalance(int) override {}

private:
    int volume_ = 0;
};

// A desktop without window effects: nothing stays on top, nothing fades, nothing moves.
class InertWindowService : public WindowService {
public:
    void setTopMost(ui::Form&, bool) override {}
    bool layeredWindows() override { return false; }
    void setOpacity(ui::Form&, int) override {}
    void startMove(ui::Form&) override {}
};

// No wave device on this machine: every command answers "no such device".
class InertWaveDevice : public WaveDevice {
public:
    static constexpr int kNoDevice = 263;
    int Open(const std::string&, uint32_t& id) override { id = 0; return kNoDevice; }
    int Close(uint32_t) override { return kNoDevice; }
    int Play(uint32_t, int32_t, int32_t) override { return kNoDevice; }
    int Delete(uint32_t, int32_t, int32_t) override { return kNoDevice; }
    int Record(uint32_t) override { return kNoDevice; }
    int Stop(uint32_t) override { return kNoDevice; }
    int Save(uint32_t, const std::string&) override { return kNoDevice; }
    int Status(uint32_t, uint32_t, int32_t& v) override { v = 0; return kNoDevice; }
    int Set(uint32_t, const WaveFormat&) override { return kNoDevice; }
    int Info(uint32_t, std::string& name) override { name.clear(); return kNoDevice; }
    std::string ErrorString(int error) override;
};

class InertSystemMixer : public SystemMixer {
public:
    int MasterVolume() override { return 0; }
    void SetMasterVolume(int) override {}
    std::vector<std::string> RecordSources() override { return {}; }
    int RecordSource() override { return -1; }
    void SetRecordSource(int) override {}
    int RecordVolume() override { return 0; }
    void SetRecordVolume(int) override {}
    int SelectedLine() override { return kMicLine; }
    void SetSelectedLine(int) override {}
    int LineVolume() override { return 0; }
    void SetLineVolume(int) override {}
    bool LineMute() override { return true; }
    void SetLineMute(bool) override {}
};

class InertMeterCapture : public MeterCapture {
public:
    bool Start() override { return false; }
    void Stop() override {}
    int LeftLevel() override { return 0; }
    int RightLevel() override { return 0; }
};

class InertMp3Encoder : public Mp3Encoder {
public:
    std::string Encode(const Mp3Settings&, const std::atomic<bool>&, const PercentDone&) override {
        return "no MP3 encoder";
    }
};

class InertWmaEncoder : public WmaEncoder {
public:
    int Encode(const std::string&, const std::string&, int, const std::map<std::string, std::string>&,
               Progress) override {
        return -1;
    }
};

class InertNormaliser : public Normaliser {
public:
    std::string Normalize(const std::string&, const std::string&, int32_t, const std::atomic<bool>&,
                          const PercentDone&) override {
        return "no normaliser";
    }
};

class InertCdLibrary : public CdLibrary {
public:
    std::vector<std::string> Drives() override { return {}; }
    bool IsReady(int) override { return false; }
    std::vector<CdTrack> Tracks(int) override { return {}; }
    std::string AlbumTitle(int) override { return {}; }
    std::string AlbumPerformer(int) override { return {}; }
    bool DoorIsOpen(int) override { return false; }
    void Door(int, bool) override {}
    int ExtractTrack(int, int, const std::string&, std::function<void(int)>) override { return -1; }
};

class InertProcessLauncher : public ProcessLauncher {
public:
    int Start(const std::string&, const std::vector<std::string>&) override { return -1; }
    int Wait(int) override { return -1; }
};

// Paths are taken as given; truncation really happens, since it is plain file work.
class PlainFileSystem : public FileSystem {
public:
    std::string FullPath(const std::string& path) override;
    std::string ShortPath(const std::string& path) override;
    std::string TempPath() override;
    bool Truncate(const std::string& path, int64_t length) override;
};

// Owns one inert service of each kind and hands them out as a Platform.
class InertPlatform {
public:
    InertPlatform();
    Platform& get() { return platform_; }

private:
    InertPerformance performance_;
    InertAudioStreams streams_;
    InertSongEffects effects_;
    InertSoundDevices devices_;
    InertMediaGraph media_;
    InertWindowService windows_;
    InertWaveDevice wave_;
    InertSystemMixer mixer_;
    InertMeterCapture meter_;
    InertMp3Encoder mp3_;
    InertWmaEncoder wma_;
    InertNormaliser normaliser_;
    InertCdLibrary cd_;
    InertProcessLauncher processes_;
    PlainFileSystem files_;
    Platform platform_;
};

}  // namespace velaro::platform
