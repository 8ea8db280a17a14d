#pragma once
// A private PulseAudio daemon (a null sink and a sine source) reached through
// PULSE_SERVER, for tests and benchmarks that need a sound server of their own.

#include <sys/types.h>

#include <string>

namespace velaro::testing {

bool onPath(const char* tool);

class PrivatePulse {
public:
    ~PrivatePulse() { stop(); }
    // "" when the daemon runs, else why not.
    std::string start();
    void stop();
    // The daemon dies as a crash would; PULSE_SERVER still names its socket,
    // where start() brings up a new one.
    void kill();
    // The daemon stands still for `ms` (SIGSTOP, then SIGCONT), as a starved server would.
    void freeze(int ms);
    const std::string& dir() const { return dir_; }

private:
    pid_t pid_ = 0;
    std::string dir_;
};

}  // namespace velaro::testing
