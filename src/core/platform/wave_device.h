#pragma once
// The wave device of the command interface: commands as text, as the
// recorder sends them ("open new type waveaudio alias capture", "record
// capture", "save capture NEWWAVE.WAV"), each answering an error number.

#include <string>

namespace velaro::platform {

class WaveDevice {
public:
    virtual ~WaveDevice() = default;
    // 0 on success; `reply` gets the command's text answer.
    virtual int SendString(const std::string& command, std::string& reply) = 0;
    virtual std::string ErrorString(int error) = 0;
};

}  // namespace velaro::platform
