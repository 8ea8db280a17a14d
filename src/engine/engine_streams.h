#pragma once
// The stream library on our engine: its version, the recording inputs the
// machine has, and the file and module streams of the backing player.

#include "backing_streams.h"

namespace velaro::engine {

class EngineStreams : public BackingStreams {
public:
    explicit EngineStreams(AudioEngine& engine) : BackingStreams(engine) {}
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
