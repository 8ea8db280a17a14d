#include "pulse_daemon.h"

namespace velaro::testing {

void PulseServer::start(const char* tool) {
    if (!onPath("pulseaudio") || !onPath(tool)) GTEST_SKIP() << "pulseaudio or " << tool << " not installed";
    const std::string error = pulse_.start();
    ASSERT_TRUE(error.empty()) << error;
}

void PulseServer::TearDown() { pulse_.stop(); }

}  // namespace velaro::testing
