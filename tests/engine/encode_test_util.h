#pragma once
// A fresh folder per test, byte-for-byte file checks, and a child process
// whose files may not grow past a limit, for the write-failure cases.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>

#include "core/base/paths.h"

namespace velaro::testing {

inline std::string freshFolder() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string dir = tempFolder() + "/enc-" + std::to_string(getpid()) + "-" + info->test_suite_name() + "-" +
                      info->name();
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

inline size_t filesIn(const std::string& dir) {
    size_t n = 0;
    for ([[maybe_unused]] const auto& e : std::filesystem::directory_iterator(dir)) ++n;
    return n;
}

// Runs fn in a child whose files cannot grow past `bytes` (writes then fail
// with "File too large"); the child's exit code is fn's.
inline int withFileSizeLimit(size_t bytes, const std::function<int()>& fn) {
    const pid_t pid = fork();
    if (pid == 0) {
        signal(SIGXFSZ, SIG_IGN);
        rlimit r{bytes, bytes};
        setrlimit(RLIMIT_FSIZE, &r);
        _exit(fn());
    }
    int st = 0;
    waitpid(pid, &st, 0);
    return WIFEXITED(st) ? WEXITSTATUS(st) : -1;
}

}  // namespace velaro::testing
