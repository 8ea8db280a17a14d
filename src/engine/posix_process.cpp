#include "posix_process.h"

#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>

extern char** environ;

namespace velaro::engine {

int PosixProcess::Start(const std::string& program, const std::vector<std::string>& args) {
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawn(&pid, program.c_str(), nullptr, nullptr, argv.data(), environ) != 0) return -1;
    return static_cast<int>(pid);
}

int PosixProcess::Wait(int handle) {
    if (handle <= 0) return -1;
    int status = 0;
    pid_t r;
    do {
        r = waitpid(handle, &status, 0);
    } while (r < 0 && errno == EINTR);
    if (r < 0) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace velaro::engine
