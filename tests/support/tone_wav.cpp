#include "tone_wav.h"

#include <lame/lame.h>

#include <mpg123.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <vector>

namespace velaro::testing {

int64_t writeTone(const std::string& path, const Tone& t) {
    SF_INFO info{};
    info.samplerate = t.rate;
    info.channels = t.channels;
    info.format = t.format ? t.format : (SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!f) return -1;
    const auto frames = static_cast<int64_t>(t.seconds * t.rate);
    std::vector<double> buf(static_cast<size_t>(frames * t.channels));
    for (int64_t i = 0; i < frames; ++i)
        for (int c = 0; c < t.channels; ++c)
            buf[static_cast<size_t>(i * t.channels + c)] =
                t.amplitude * std::sin(2 * M_PI * t.hz * (c + 1) * static_cast<double>(i) / t.rate);
    sf_writef_double(f, buf.data(), frames);
    sf_close(f);
    return frames;
}

double peakOf(const std::string& path, int64_t* frames) {
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f) return -1;
    std::vector<double> buf(static_cast<size_t>(info.frames * info.channels));
    sf_readf_double(f, buf.data(), info.frames);
    sf_close(f);
    if (frames) *frames = info.frames;
    double peak = 0;
    for (double v : buf) peak = std::max(peak, std::fabs(v));
    return peak;
}

Decoded decodeMp3(const std::string& path) {
    Decoded d;
    int err = 0;
    mpg123_handle* h = mpg123_new(nullptr, &err);
    if (!h) return d;
    mpg123_param(h, MPG123_ADD_FLAGS, MPG123_GAPLESS | MPG123_FORCE_FLOAT | MPG123_QUIET, 0);
    if (mpg123_open(h, path.c_str()) != MPG123_OK) {
        mpg123_delete(h);
        return d;
    }
    int enc = 0;
    if (mpg123_getformat(h, &d.rate, &d.channels, &enc) != MPG123_OK) {
        mpg123_delete(h);
        return d;
    }
    std::vector<unsigned char> buf(1 << 16);
    int64_t bytes = 0;
    for (;;) {
        size_t done = 0;
        const int r = mpg123_read(h, buf.data(), buf.size(), &done);
        bytes += static_cast<int64_t>(done);
        const float* s = reinterpret_cast<const float*>(buf.data());
        for (size_t i = 0; i < done / sizeof(float); ++i) d.peak = std::max(d.peak, static_cast<double>(std::fabs(s[i])));
        if (r == MPG123_DONE) {
            d.ok = true;
            break;
        }
        if (r != MPG123_OK && r != MPG123_NEW_FORMAT) break;
    }
    d.frames = bytes / static_cast<int64_t>(sizeof(float) * std::max(1, d.channels));
    mpg123_close(h);
    mpg123_delete(h);
    return d;
}

LameTag lameTagOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::string head(4096, '\0');
    in.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<size_t>(in.gcount()));
    LameTag t;
    size_t x = head.find("Info");
    t.info = x != std::string::npos && x < 200;
    if (!t.info) x = head.find("Xing");
    if (x == std::string::npos || x > 200) return t;
    const size_t lame = head.find("LAME", x);
    if (lame == std::string::npos || lame + 24 > head.size()) return t;
    const auto b = [&](size_t i) { return static_cast<unsigned char>(head[lame + i]); };
    t.delay = (b(21) << 4) | (b(22) >> 4);
    t.padding = ((b(22) & 0x0F) << 8) | b(23);
    return t;
}

std::string mp3Tone(double seconds) {
    lame_global_flags* gf = lame_init();
    lame_set_in_samplerate(gf, 44100);
    lame_set_num_channels(gf, 2);
    lame_set_brate(gf, 128);
    lame_init_params(gf);
    const int n = static_cast<int>(seconds * 44100);
    std::vector<short> l(n), r(n);
    for (int i = 0; i < n; ++i) l[i] = r[i] = static_cast<short>(6000 * std::sin(2 * M_PI * 330 * i / 44100.0));
    std::vector<unsigned char> out(static_cast<size_t>(1.25 * n + 7200));
    int bytes = lame_encode_buffer(gf, l.data(), r.data(), n, out.data(), static_cast<int>(out.size()));
    bytes += lame_encode_flush(gf, out.data() + bytes, static_cast<int>(out.size()) - bytes);
    lame_close(gf);
    return std::string(reinterpret_cast<char*>(out.data()), static_cast<size_t>(bytes));
}

}  // namespace velaro::testing
