#pragma once
// Outside programs started with posix_spawn and waited for with waitpid.

#include "core/platform/process_launcher.h"

namespace velaro::engine {

class PosixProcess : public platform::ProcessLauncher {
public:
    int Start(const std::string& program, const std::vector<std::string>& args) override;
    int Wait(int handle) override;
};

}  // namespace velaro::engine
