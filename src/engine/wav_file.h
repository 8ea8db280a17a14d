#pragma once
// 16-bit PCM wave files written from the engine's float frames.

#include <memory>
#include <string>

struct sf_private_tag;

namespace velaro::engine {

class WavWriter {
public:
    // Throws std::runtime_error with libsndfile's reason when the file cannot be made.
    WavWriter(const std::string& path, int sampleRate, int channels = 2);
    ~WavWriter();
    void write(const float* interleaved, int frames);
    int64_t framesWritten() const { return frames_; }
    void close();

private:
    sf_private_tag* file_ = nullptr;
    int channels_;
    int64_t frames_ = 0;
};

}  // namespace velaro::engine
