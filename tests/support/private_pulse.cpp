#include "private_pulse.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

extern char** environ;

namespace fs = std::filesystem;

namespace velaro::testing {

bool onPath(const char* tool) {
    const char* path = std::getenv("PATH");
    std::string p = path ? path : "/usr/bin:/bin";
    size_t start = 0;
    while (start <= p.size()) {
        size_t end = p.find(':', start);
        std::string dir = p.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (!dir.empty() && access((dir + "/" + tool).c_str(), X_OK) == 0) return true;
        if (end == std::string::npos) break;
        start = end + 1;
    }
    return false;
}

std::string PrivatePulse::start() {
    if (!onPath("pulseaudio")) return "pulseaudio is not installed";
    // Short on purpose: a socket path must stay under 108 bytes.
    dir_ = "/tmp/velaro-pulse-" + std::to_string(getpid());
    fs::create_directories(dir_);
    const std::string socket = dir_ + "/pulse.sock";
    const std::string native = "module-native-protocol-unix auth-anonymous=1 socket=" + socket;
    std::vector<std::string> args = {"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1",
                                     "--use-pid-file=no", "-L", native, "-L", "module-null-sink",
                                     "-L", "module-sine-source"};
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, (dir_ + "/daemon.log").c_str(), O_WRONLY | O_CREAT, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    const int rc = posix_spawnp(&pid_, "pulseaudio", &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) {
        pid_ = 0;
        return "pulseaudio could not be started";
    }
    for (int i = 0; i < 100 && !fs::exists(socket); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    if (!fs::exists(socket)) return "the daemon did not start; see " + dir_ + "/daemon.log";
    setenv("PULSE_SERVER", ("unix:" + socket).c_str(), 1);
    return "";
}

void PrivatePulse::kill() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    int status;
    waitpid(pid_, &status, 0);
    pid_ = 0;
    std::error_code ec;
    fs::remove(dir_ + "/pulse.sock", ec);
}

void PrivatePulse::freeze(int ms) {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGSTOP);
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
    ::kill(pid_, SIGCONT);
}

void PrivatePulse::stop() {
    if (pid_ > 0) {
        ::kill(pid_, SIGTERM);
        int status;
        waitpid(pid_, &status, 0);
        pid_ = 0;
    }
    unsetenv("PULSE_SERVER");
    std::error_code ec;
    if (!dir_.empty()) fs::remove_all(dir_, ec);
    dir_.clear();
}

}  // namespace velaro::testing
