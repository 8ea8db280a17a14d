#pragma once
// A wave (or any libsndfile) file read as stereo float frames at the engine's
// rate, a block at a time: mono goes to both sides, other rates are converted
// with libsamplerate. Memory stays flat however long the file is.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct sf_private_tag;
struct SRC_STATE_tag;

namespace velaro::engine {

class WaveReader {
public:
    // Throws std::runtime_error "cannot read PATH: <cause>".
    WaveReader(const std::string& path, int engineRate);
    ~WaveReader();
    WaveReader(const WaveReader&) = delete;
    WaveReader& operator=(const WaveReader&) = delete;

    // Fills up to `frames` interleaved stereo frames; fewer only at the end.
    int read(float* interleaved, int frames);
    int fileRate() const { return rate_; }
    int fileChannels() const { return channels_; }
    int fileBits() const { return bits_; }

private:
    int readSource(float* stereo, int frames);
    sf_private_tag* file_ = nullptr;
    SRC_STATE_tag* src_ = nullptr;
    int rate_ = 0, channels_ = 0, bits_ = 16, engineRate_;
    double ratio_ = 1.0;
    bool inputDone_ = false;
    std::vector<float> raw_, in_;
    size_t inFrames_ = 0;  // converted input waiting in in_
};

}  // namespace velaro::engine
