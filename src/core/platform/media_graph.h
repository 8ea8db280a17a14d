#pragma once
// The media player of the tag editor and the skinned player: one file at a
// time, positions in seconds, volume and balance in hundredths of a decibel.

#include <string>

namespace velaro::platform {

class MediaGraph {
public:
    virtual ~MediaGraph() = default;
    virtual bool RenderFile(const std::string& path) = 0;  // opens; false when it cannot
    virtual void Run() = 0;
    virtual void Pause() = 0;
    virtual void Stop() = 0;
    virtual void Release() = 0;  // lets go of the file
    virtual double CurrentPosition() = 0;
    virtual void SetCurrentPosition(double seconds) = 0;
    virtual double Duration() = 0;
    virtual int State() = 0;  // 0 stopped, 1 paused, 2 running
    virtual void SetVolume(int hundredthsDb) = 0;  // 0 loudest, -10000 silent
    virtual int Volume() = 0;
    virtual void SetBalance(int hundredthsDb) = 0;
};

}  // namespace velaro::platform
