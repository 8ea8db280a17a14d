#pragma once
// The machine's mixer: master, record source and its level, the microphone
// and audio lines. Levels 0 to 100.

#include <string>
#include <vector>

namespace velaro::platform {

class SystemMixer {
public:
    virtual ~SystemMixer() = default;
    virtual int MasterVolume() = 0;
    virtual void SetMasterVolume(int v) = 0;
    virtual std::vector<std::string> RecordSources() = 0;
    virtual int RecordSource() = 0;
    virtual void SetRecordSource(int index) = 0;
    virtual int RecordVolume() = 0;
    virtual void SetRecordVolume(int v) = 0;
    virtual int MicVolume() = 0;
    virtual void SetMicVolume(int v) = 0;
    virtual bool MicMute() = 0;
    virtual void SetMicMute(bool on) = 0;
    virtual int LineVolume() = 0;
    virtual void SetLineVolume(int v) = 0;
};

}  // namespace velaro::platform
