#pragma once
// Backing files made in code for the backing player's tests: stereo waves
// from a formula, a tiny tracker module, and the level of one frequency.

#include <sndfile.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace velaro::testing {

inline constexpr double kTwoPi = 6.283185307179586;

// `fn(t)` gives left and right at t seconds.
inline bool writeStereo(const std::string& path, int rate, double seconds,
                        const std::function<std::pair<double, double>(double)>& fn, int channels = 2) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!f) return false;
    const int64_t frames = static_cast<int64_t>(seconds * rate);
    std::vector<float> block;
    for (int64_t i = 0; i < frames;) {
        const int64_t n = std::min<int64_t>(frames - i, 8192);
        block.resize(static_cast<size_t>(n * channels));
        for (int64_t k = 0; k < n; ++k) {
            const auto [l, r] = fn(double(i + k) / rate);
            block[static_cast<size_t>(k * channels)] = static_cast<float>(l);
            if (channels == 2) block[static_cast<size_t>(k * 2 + 1)] = static_cast<float>(r);
        }
        sf_writef_float(f, block.data(), n);
        i += n;
    }
    sf_close(f);
    return true;
}

// A four-channel ProTracker module: one pattern, a looped sine sample struck every eight rows.
inline bool writeTinyModule(const std::string& path) {
    std::string m(20, '\0');
    m.replace(0, 4, "tiny");
    const int words = 64;
    auto sampleHeader = [&](bool used) {
        std::string h(22, '\0');
        if (used) h.replace(0, 4, "sine");
        const int len = used ? words : 0, vol = used ? 64 : 0, rep = 0, replen = used ? words : 1;
        h += char(len >> 8), h += char(len & 255), h += char(0), h += char(vol);
        h += char(rep >> 8), h += char(rep & 255), h += char(replen >> 8), h += char(replen & 255);
        return h;
    };
    m += sampleHeader(true);
    for (int i = 0; i < 30; ++i) m += sampleHeader(false);
    m += char(1), m += char(127);
    m += std::string(128, '\0');
    m += "M.K.";
    for (int row = 0; row < 64; ++row)
        for (int ch = 0; ch < 4; ++ch) {
            if (ch == 0 && row % 8 == 0) {
                const int period = 428;
                m += char(period >> 8), m += char(period & 255), m += char(1 << 4), m += char(0);
            } else {
                m += std::string(4, '\0');
            }
        }
    for (int i = 0; i < 2 * words; ++i) m += char(static_cast<int8_t>(100 * std::sin(kTwoPi * i / 32)));
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    std::fwrite(m.data(), 1, m.size(), f);
    std::fclose(f);
    return true;
}

// The level in dB (of full scale, a sine of amplitude 1 reading 0) of `hz` in
// one channel of interleaved stereo, over frames [from, from + count).
inline double levelDb(const std::vector<float>& lr, int channel, int rate, double hz, size_t from, size_t count) {
    double s = 0, c = 0;
    size_t n = 0;
    for (size_t i = from; i < from + count && 2 * i + 1 < lr.size(); ++i, ++n) {
        const double x = lr[2 * i + static_cast<size_t>(channel)];
        s += x * std::sin(kTwoPi * hz * double(i) / rate);
        c += x * std::cos(kTwoPi * hz * double(i) / rate);
    }
    if (n == 0) return -200;
    return 20 * std::log10(2 * std::hypot(s, c) / double(n) + 1e-12);
}

// Every frame of a wave file as interleaved stereo floats (mono doubled).
inline std::vector<float> readStereo(const std::string& path, int* rate = nullptr) {
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    std::vector<float> out;
    if (!f) return out;
    std::vector<float> raw(static_cast<size_t>(info.frames * info.channels));
    sf_readf_float(f, raw.data(), info.frames);
    sf_close(f);
    out.resize(static_cast<size_t>(info.frames) * 2);
    for (int64_t i = 0; i < info.frames; ++i) {
        out[static_cast<size_t>(2 * i)] = raw[static_cast<size_t>(i * info.channels)];
        out[static_cast<size_t>(2 * i + 1)] = raw[static_cast<size_t>(i * info.channels + (info.channels > 1 ? 1 : 0))];
    }
    if (rate) *rate = info.samplerate;
    return out;
}

// The strongest frequency between lo and hi Hz (tenth-of-a-hertz steps) in
// the left channel, from half a second in to half a second before the end.
inline double peakHz(const std::vector<float>& lr, int rate, double lo, double hi) {
    const size_t frames = lr.size() / 2;
    if (frames < static_cast<size_t>(rate) * 2) return 0;
    const size_t from = static_cast<size_t>(rate) / 2, count = frames - static_cast<size_t>(rate);
    double best = -1e9, at = 0;
    for (double hz = lo; hz <= hi; hz += 0.1) {
        const double db = levelDb(lr, 0, rate, hz, from, count);
        if (db > best) best = db, at = hz;
    }
    return at;
}

}  // namespace velaro::testing
