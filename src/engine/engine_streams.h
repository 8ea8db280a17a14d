#pragma once
// The stream library's start on our engine: its version, and the recording
// inputs the machine has. Streams of files come with the backing player.

#include "core/platform/inert.h"

namespace velaro::engine {

class EngineStreams : public platform::InertAudioStreams {
public:
    uint32_t GetVersion() override;
    std::vector<std::string> RecordInputs() override;
    // Monitors of outputs are listed but count as switched off: the last
    // real input is the one a take records from.
    bool RecordInputEnabled(int input) override;

private:
    void scan();
    bool scanned_ = false;
    std::vector<std::string> names_;
    std::vector<bool> enabled_;
};

}  // namespace velaro::engine
