#pragma once
// 16-bit PCM wave files written from the engine's float frames. The file is
// made under a temporary name beside the target and takes the target's name
// only when closed complete, so a full disk never costs the old file.

#include <memory>
#include <string>

struct sf_private_tag;

namespace velaro::engine {

class WavWriter {
public:
    // Throws std::runtime_error with the reason when the file cannot be made.
    WavWriter(const std::string& path, int sampleRate, int channels = 2);
    // Without a successful close the temporary file is removed; the target stays as it was.
    ~WavWriter();
    void write(const float* interleaved, int frames);
    int64_t framesWritten() const { return frames_; }
    // Finishes the file and puts it in place. False, with error() saying why,
    // when a write failed or the file cannot be put in place.
    bool close();
    const std::string& error() const { return error_; }

private:
    void discard();
    sf_private_tag* file_ = nullptr;
    std::string path_, temp_, error_;
    int channels_;
    int64_t frames_ = 0;
    bool failed_ = false;
};

}  // namespace velaro::engine
