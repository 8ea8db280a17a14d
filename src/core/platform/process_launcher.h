#pragma once
// Starting outside programs (the lyric-event converter, the volume program).

#include <string>
#include <vector>

namespace velaro::platform {

class ProcessLauncher {
public:
    virtual ~ProcessLauncher() = default;
    // Starts the program and returns at once: a handle above 0, or -1 when it could not start.
    virtual int Start(const std::string& program, const std::vector<std::string>& args) = 0;
    // Waits for a started program to end; its exit code, or -1.
    virtual int Wait(int handle) = 0;
};

}  // namespace velaro::platform
