#include "wave_reader.h"

#include <samplerate.h>
#include <sndfile.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace velaro::engine {

namespace {
constexpr int kChunk = 1024;
}

WaveReader::WaveReader(const std::string& path, int engineRate) : engineRate_(engineRate) {
    SF_INFO info{};
    errno = 0;
    file_ = sf_open(path.c_str(), SFM_READ, &info);
    if (!file_) {
        const int err = errno;
        throw std::runtime_error("cannot read " + path + ": " + (err ? std::strerror(err) : sf_strerror(nullptr)));
    }
    rate_ = info.samplerate;
    channels_ = info.channels;
    const int sub = info.format & SF_FORMAT_SUBMASK;
    bits_ = (sub == SF_FORMAT_PCM_U8 || sub == SF_FORMAT_PCM_S8) ? 8 : 16;
    if (channels_ < 1 || rate_ <= 0) {
        sf_close(file_);
        throw std::runtime_error("cannot read " + path + ": no sound in it");
    }
    raw_.resize(static_cast<size_t>(kChunk) * channels_);
    in_.resize(4 * kChunk);
    if (rate_ != engineRate_) {
        int err = 0;
        src_ = src_new(SRC_SINC_MEDIUM_QUALITY, 2, &err);
        if (!src_) {
            sf_close(file_);
            throw std::runtime_error("cannot read " + path + ": " + src_strerror(err));
        }
        ratio_ = static_cast<double>(engineRate_) / rate_;
    }
}

WaveReader::~WaveReader() {
    if (src_) src_delete(src_);
    if (file_) sf_close(file_);
}

int WaveReader::readSource(float* stereo, int frames) {
    const sf_count_t got = sf_readf_float(file_, raw_.data(), std::min(frames, kChunk));
    for (sf_count_t i = 0; i < got; ++i) {
        const float* f = raw_.data() + i * channels_;
        stereo[2 * i] = f[0];
        stereo[2 * i + 1] = channels_ > 1 ? f[1] : f[0];
    }
    return static_cast<int>(got);
}

int WaveReader::read(float* out, int frames) {
    if (!src_) {
        int done = 0;
        while (done < frames) {
            const int n = readSource(out + 2 * done, frames - done);
            if (n <= 0) break;
            done += n;
        }
        return done;
    }
    int done = 0;
    int idle = 0;
    while (done < frames && idle < 2) {
        if (!inputDone_ && inFrames_ < static_cast<size_t>(kChunk)) {
            const int n = readSource(in_.data() + 2 * inFrames_, kChunk);
            if (n == 0) inputDone_ = true;
            inFrames_ += static_cast<size_t>(n);
        }
        SRC_DATA d{};
        d.data_in = in_.data();
        d.input_frames = static_cast<long>(inFrames_);
        d.data_out = out + 2 * done;
        d.output_frames = frames - done;
        d.src_ratio = ratio_;
        d.end_of_input = inputDone_ ? 1 : 0;
        if (src_process(src_, &d) != 0) break;
        if (d.input_frames_used > 0) {
            std::memmove(in_.data(), in_.data() + 2 * d.input_frames_used,
                         sizeof(float) * 2 * (inFrames_ - static_cast<size_t>(d.input_frames_used)));
            inFrames_ -= static_cast<size_t>(d.input_frames_used);
        }
        done += static_cast<int>(d.output_frames_gen);
        idle = (d.output_frames_gen == 0 && d.input_frames_used == 0) ? idle + 1 : 0;
    }
    return done;
}

}  // namespace velaro::engine
