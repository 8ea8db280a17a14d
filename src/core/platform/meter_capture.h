#pragma once
// Capture for the level meter: peak levels of what the capture device hears.

namespace velaro::platform {

class MeterCapture {
public:
    virtual ~MeterCapture() = default;
    virtual bool Start() = 0;
    virtual void Stop() = 0;
    virtual int LeftLevel() = 0;   // 0 to 100
    virtual int RightLevel() = 0;  // 0 to 100
};

}  // namespace velaro::platform
