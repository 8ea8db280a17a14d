#pragma once
// Output and capture devices of the machine.

#include <string>
#include <vector>

namespace velaro::platform {

struct DeviceInfo {
    std::string id;
    std::string description;
};

class SoundDevices {
public:
    virtual ~SoundDevices() = default;
    virtual std::vector<DeviceInfo> Outputs() = 0;
    virtual std::vector<DeviceInfo> Captures() = 0;
};

}  // namespace velaro::platform
