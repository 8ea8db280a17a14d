#pragma once
// The machine's mixer: master level, the record source and its level, and
// the line that selectedLine names (2 the microphone, 3 the audio backing).
// Levels 0 to 100. Every read gives what the mixer really holds, so a value
// it refused reads back as what it kept.

#include <functional>
#include <string>
#include <vector>

namespace velaro::platform {

class SystemMixer {
public:
    static constexpr int kMicLine = 2;
    static constexpr int kAudioLine = 3;

    virtual ~SystemMixer() = default;
    virtual int MasterVolume() = 0;
    virtual void SetMasterVolume(int v) = 0;
    // The sources the machine records from; RecordSource indexes them, -1 when none.
    virtual std::vector<std::string> RecordSources() = 0;
    virtual int RecordSource() = 0;
    virtual void SetRecordSource(int index) = 0;
    virtual int RecordVolume() = 0;
    virtual void SetRecordVolume(int v) = 0;
    virtual int SelectedLine() = 0;
    virtual void SetSelectedLine(int line) = 0;
    virtual int LineVolume() = 0;
    virtual void SetLineVolume(int v) = 0;
    virtual bool LineMute() = 0;
    virtual void SetLineMute(bool on) = 0;

    // Raised on the logic thread, from inside the call that failed or changed the mute.
    std::function<void(const std::string& text)> Error;
    std::function<void(bool muted)> MuteChange;

protected:
    void raiseError(const std::string& text) {
        if (Error) Error(text);
    }
    void raiseMuteChange(bool muted) {
        if (MuteChange) MuteChange(muted);
    }
};

}  // namespace velaro::platform
