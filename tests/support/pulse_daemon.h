#pragma once
// A private PulseAudio daemon for one test: a null sink and a sine source,
// reached through PULSE_SERVER, stopped with the test. Skips the test when
// the daemon or `tool` is not installed.

#include <gtest/gtest.h>
#include <sys/types.h>

#include <string>

#include "private_pulse.h"

namespace velaro::testing {

class PulseServer : public ::testing::Test {
protected:
    void SetUp() override { start("parec"); }
    void TearDown() override;
    // Starts the daemon; the test is skipped when it or `tool` is missing.
    void start(const char* tool);
    const std::string& dir() const { return pulse_.dir(); }
    // Kills the daemon mid-test, and starts a new one at the same socket.
    void killDaemon() { pulse_.kill(); }
    std::string restartDaemon() { return pulse_.start(); }
    void freezeDaemon(int ms) { pulse_.freeze(ms); }

private:
    PrivatePulse pulse_;
};

}  // namespace velaro::testing
