#include "wav_file.h"

#include <sndfile.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "core/base/safe_file.h"

namespace velaro::engine {

WavWriter::WavWriter(const std::string& path, int sampleRate, int channels)
    : path_(path), temp_(siblingTempName(path)), channels_(channels) {
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    errno = 0;
    file_ = sf_open(temp_.c_str(), SFM_WRITE, &info);
    if (!file_) {
        const int err = errno;
        ::unlink(temp_.c_str());  // made, but its header found no room
        throw std::runtime_error("cannot write " + path + ": " + (err ? std::strerror(err) : sf_strerror(nullptr)));
    }
    // Floats at full scale become full-scale integers, clipped rather than wrapped.
    sf_command(file_, SFC_SET_CLIPPING, nullptr, SF_TRUE);
}

WavWriter::~WavWriter() { discard(); }

void WavWriter::write(const float* interleaved, int frames) {
    if (!file_ || failed_ || frames <= 0) return;
    errno = 0;
    const sf_count_t n = sf_writef_float(file_, interleaved, frames);
    frames_ += n;
    if (n < frames) {
        const int err = errno;
        failed_ = true;
        error_ = "cannot write " + path_ + ": " + (err ? std::strerror(err) : sf_strerror(file_));
    }
}

bool WavWriter::close() {
    if (!file_) return !failed_ && error_.empty();
    errno = 0;
    // Closing writes the header's final sizes: it can fail on a full disk too.
    if (sf_close(file_) != 0 && !failed_) {
        const int err = errno;
        failed_ = true;
        error_ = "cannot write " + path_ + ": " + (err ? std::strerror(err) : "the file could not be finished");
    }
    file_ = nullptr;
    std::error_code ec;
    if (!failed_) {
        std::filesystem::rename(temp_, path_, ec);
        if (ec) {
            failed_ = true;
            error_ = "cannot write " + path_ + ": " + ec.message();
        }
    }
    if (failed_) std::filesystem::remove(temp_, ec);
    return !failed_;
}

void WavWriter::discard() {
    if (!file_) return;
    sf_close(file_);
    file_ = nullptr;
    std::error_code ec;
    std::filesystem::remove(temp_, ec);
}

}  // namespace velaro::engine
