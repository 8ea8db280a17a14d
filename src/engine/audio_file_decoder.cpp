#include "engine/audio_file_decoder.h"

#include <mpg123.h>
#include <sndfile.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <libopenmpt/libopenmpt.hpp>
#include <mutex>
#include <vector>

namespace velaro::engine {

namespace {

// The codes the old stream library gave for these failures, which the error
// box shows: the file could not be opened, or its format is not one we take.
constexpr int kErrFileOpen = 2;
constexpr int kErrFileForm = 41;

void initMpg123Once() {
    static std::once_flag once;
    std::call_once(once, [] {
#if MPG123_API_VERSION < 46
        mpg123_init();
#endif
    });
}

bool readable(const std::string& path) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return false;
    std::fclose(f);
    return true;
}

}  // namespace

struct AudioFileDecoder::Impl {
    mpg123_handle* mpg = nullptr;
    SNDFILE* snd = nullptr;
    int sndChannels = 0;  // the file's own count, which may exceed two
    std::vector<float> wide;
    std::unique_ptr<openmpt::module> module;

    ~Impl() {
        if (mpg) {
            mpg123_close(mpg);
            mpg123_delete(mpg);
        }
        if (snd) sf_close(snd);
    }
};

AudioFileDecoder::AudioFileDecoder() = default;
AudioFileDecoder::~AudioFileDecoder() = default;

void AudioFileDecoder::close() {
    impl_.reset();
    kind_ = Kind::None;
    rate_ = channels_ = 0;
    length_ = position_ = 0;
}

bool AudioFileDecoder::open(const std::string& path) {
    if (openStream(path)) return true;
    return openModule(path, 44100, false);
}

bool AudioFileDecoder::openStream(const std::string& path) {
    close();
    error_.clear();
    if (!readable(path)) {
        streamError_ = kErrFileOpen;
        error_ = "cannot open " + path;
        return false;
    }
    // libsndfile first, except for MPEG audio, which libmpg123 decodes with
    // its gapless handling whichever library would take it.
    if (openSoundFile(path) || openMpeg(path)) {
        streamError_ = 0;
        return true;
    }
    streamError_ = kErrFileForm;
    error_ = "not an audio file we can read: " + path;
    return false;
}

bool AudioFileDecoder::openSoundFile(const std::string& path) {
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f) return false;
    const int major = info.format & SF_FORMAT_TYPEMASK;
    // SF_FORMAT_MPEG, by value: older libsndfile headers do not have it.
    if (major == 0x230000) {
        sf_close(f);
        return false;
    }
    if (info.channels < 1 || info.samplerate < 1 || info.frames < 0) {
        sf_close(f);
        return false;
    }
    impl_ = std::make_unique<Impl>();
    impl_->snd = f;
    impl_->sndChannels = info.channels;
    kind_ = Kind::SoundFile;
    rate_ = info.samplerate;
    channels_ = std::min(info.channels, 2);
    length_ = info.frames;
    position_ = 0;
    return true;
}

bool AudioFileDecoder::openMpeg(const std::string& path) {
    initMpg123Once();
    int err = 0;
    mpg123_handle* h = mpg123_new(nullptr, &err);
    if (!h) return false;
    auto fail = [&] {
        mpg123_close(h);
        mpg123_delete(h);
        return false;
    };
    mpg123_param(h, MPG123_VERBOSE, 0, 0.);
    mpg123_param(h, MPG123_ADD_FLAGS, MPG123_QUIET | MPG123_GAPLESS, 0.);
    // Random bytes must not pass for MPEG audio: look for the first frame
    // within a short distance only.
    mpg123_param(h, MPG123_RESYNC_LIMIT, 16384, 0.);
    mpg123_format_none(h);
    const long* rates = nullptr;
    size_t rateCount = 0;
    mpg123_rates(&rates, &rateCount);
    for (size_t i = 0; i < rateCount; ++i)
        mpg123_format(h, rates[i], MPG123_MONO | MPG123_STEREO, MPG123_ENC_FLOAT_32);
    if (mpg123_open(h, path.c_str()) != MPG123_OK) return fail();
    long rate = 0;
    int channels = 0, enc = 0;
    if (mpg123_getformat(h, &rate, &channels, &enc) != MPG123_OK || rate <= 0 || channels < 1) return fail();
    // The length from a full scan, which a VBR file without a header needs.
    mpg123_scan(h);
    const off_t frames = mpg123_length(h);
    impl_ = std::make_unique<Impl>();
    impl_->mpg = h;
    kind_ = Kind::Mpeg;
    rate_ = int(rate);
    channels_ = std::min(channels, 2);
    length_ = frames < 0 ? 0 : int64_t(frames);
    position_ = 0;
    return true;
}

bool AudioFileDecoder::openModule(const std::string& path, int rate, bool loop) {
    close();
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        moduleError_ = kErrFileOpen;
        error_ = "cannot open " + path;
        return false;
    }
    try {
        auto m = std::make_unique<openmpt::module>(in);
        m->set_repeat_count(loop ? -1 : 0);
        m->ctl_set_boolean("render.resampler.emulate_amiga", false);
        impl_ = std::make_unique<Impl>();
        kind_ = Kind::Module;
        rate_ = rate;
        channels_ = 2;
        length_ = loop ? -1 : int64_t(m->get_duration_seconds() * rate + 0.5);
        impl_->module = std::move(m);
        moduleError_ = 0;
        return true;
    } catch (const std::exception&) {
        impl_.reset();
        moduleError_ = kErrFileForm;
        error_ = "not an audio file we can read: " + path;
        return false;
    }
}

int AudioFileDecoder::read(float* out, int frames) {
    if (!impl_ || frames <= 0) return 0;
    int got = 0;
    switch (kind_) {
    case Kind::SoundFile: {
        const int ch = impl_->sndChannels;
        if (ch <= 2) {
            got = int(sf_readf_float(impl_->snd, out, frames));
        } else {
            impl_->wide.resize(size_t(frames) * ch);
            got = int(sf_readf_float(impl_->snd, impl_->wide.data(), frames));
            for (int i = 0; i < got; ++i) {
                out[2 * i] = impl_->wide[size_t(i) * ch];
                out[2 * i + 1] = impl_->wide[size_t(i) * ch + 1];
            }
        }
        break;
    }
    case Kind::Mpeg: {
        const size_t want = size_t(frames) * channels_ * sizeof(float);
        size_t done = 0;
        while (done < want) {
            size_t n = 0;
            const int rc = mpg123_read(impl_->mpg, reinterpret_cast<unsigned char*>(out) + done, want - done, &n);
            done += n;
            if (rc == MPG123_NEW_FORMAT) continue;  // the format is fixed: same layout
            if (rc != MPG123_OK) break;
            if (n == 0) break;
        }
        got = int(done / (channels_ * sizeof(float)));
        break;
    }
    case Kind::Module:
        got = int(impl_->module->read_interleaved_stereo(rate_, size_t(frames), out));
        break;
    case Kind::None:
        break;
    }
    if (got < 0) got = 0;
    position_ += got;
    return got;
}

bool AudioFileDecoder::seek(int64_t frame) {
    if (!impl_) return false;
    frame = std::max<int64_t>(0, frame);
    switch (kind_) {
    case Kind::SoundFile:
        if (sf_seek(impl_->snd, sf_count_t(frame), SEEK_SET) < 0) return false;
        break;
    case Kind::Mpeg:
        if (mpg123_seek(impl_->mpg, off_t(frame), SEEK_SET) < 0) return false;
        break;
    case Kind::Module:
        impl_->module->set_position_seconds(double(frame) / rate_);
        break;
    case Kind::None:
        return false;
    }
    position_ = frame;
    return true;
}

}  // namespace velaro::engine
