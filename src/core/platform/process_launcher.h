#pragma once
// Starting outside programs (the lyric-event converter, the volume program).

#include <string>
#include <vector>

namespace velaro::platform {

class ProcessLauncher {
public:
    virtual ~ProcessLauncher() = default;
    // Starts the program and returns at once; false when it could not start.
    virtual bool Start(const std::string& program, const std::vector<std::string>& args) = 0;
    // Runs the program and waits for its end; -1 when it could not start.
    virtual int Run(const std::string& program, const std::vector<std::string>& args) = 0;
};

}  // namespace velaro::platform
