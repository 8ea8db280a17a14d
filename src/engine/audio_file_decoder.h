#pragma once
// One audio file decoded to 32-bit float frames at its own rate: MP3 through
// libmpg123, WAV/FLAC/OGG/AIFF through libsndfile, tracker modules through
// libopenmpt. Shared by the backing player, the tag editor's player and the
// wave readers; it never converts the rate (the caller decides).

#include <cstdint>
#include <memory>
#include <string>

namespace velaro::engine {

class AudioFileDecoder {
public:
    enum class Kind { None, Mpeg, SoundFile, Module };

    AudioFileDecoder();
    ~AudioFileDecoder();
    AudioFileDecoder(const AudioFileDecoder&) = delete;
    AudioFileDecoder& operator=(const AudioFileDecoder&) = delete;

    // Opens a file of any kind we know; false with error() when none takes it.
    bool open(const std::string& path);
    // Only what a sample stream takes (MP3, sound files), or only a module.
    bool openStream(const std::string& path);
    bool openModule(const std::string& path, int rate, bool loop);
    void close();

    Kind kind() const { return kind_; }
    int rate() const { return rate_; }
    int channels() const { return channels_; }  // 1 or 2 (wider files give their first two)
    int64_t lengthFrames() const { return length_; }  // -1 when unknown (a looping module)
    double lengthSeconds() const { return length_ < 0 || rate_ <= 0 ? 0.0 : double(length_) / rate_; }
    int64_t position() const { return position_; }
    // The library's codes of the last failures: the stream loaders' and the
    // module loader's, for the error box that shows both.
    int streamErrorCode() const { return streamError_; }
    int moduleErrorCode() const { return moduleError_; }
    const std::string& error() const { return error_; }

    // Reads up to `frames` frames of channels() interleaved floats; fewer only
    // at the end of the file.
    int read(float* out, int frames);
    bool seek(int64_t frame);

private:
    struct Impl;
    bool openMpeg(const std::string& path);
    bool openSoundFile(const std::string& path);
    std::unique_ptr<Impl> impl_;
    Kind kind_ = Kind::None;
    int rate_ = 0, channels_ = 0;
    int64_t length_ = 0, position_ = 0;
    int streamError_ = 0, moduleError_ = 0;
    std::string error_;
};

}  // namespace velaro::engine
