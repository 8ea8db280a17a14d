#include "wav_file.h"

#include <sndfile.h>

#include <stdexcept>

namespace velaro::engine {

WavWriter::WavWriter(const std::string& path, int sampleRate, int channels) : channels_(channels) {
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    file_ = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file_) throw std::runtime_error("sf_open(" + path + "): " + sf_strerror(nullptr));
    // Floats at full scale become full-scale integers, clipped rather than wrapped.
    sf_command(file_, SFC_SET_CLIPPING, nullptr, SF_TRUE);
}

WavWriter::~WavWriter() { close(); }

void WavWriter::write(const float* interleaved, int frames) {
    if (!file_ || frames <= 0) return;
    frames_ += sf_writef_float(file_, interleaved, frames);
}

void WavWriter::close() {
    if (file_) sf_close(file_);
    file_ = nullptr;
}

}  // namespace velaro::engine
