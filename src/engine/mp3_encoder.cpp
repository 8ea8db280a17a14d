#include "mp3_encoder.h"

#include <lame/lame.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <vector>

#include "file_beside.h"

namespace velaro::engine {

namespace {

struct SndfileCloser {
    void operator()(SNDFILE* f) const { sf_close(f); }
};
struct LameCloser {
    void operator()(lame_global_flags* g) const { lame_close(g); }
};

constexpr int kBlockFrames = 8192;

// Reports only when the shown tenth of a percent changes, so that a fast
// encode does not flood the event loop.
class Reporter {
public:
    Reporter(const platform::PercentDone& fn, int64_t total) : fn_(fn), total_(total) {}
    void at(int64_t done) {
        if (!fn_ || total_ <= 0) return;
        const double p = std::min(99.9, std::floor(1000.0 * static_cast<double>(done) / total_) / 10.0);
        if (p != last_) {
            last_ = p;
            fn_(p);
        }
    }

private:
    const platform::PercentDone& fn_;
    int64_t total_;
    double last_ = -1;
};

}  // namespace

int lameQuality(int q) {
    switch (q) {
        case 0: return 7;   // what lame -f uses
        case 2: return 2;   // what lame -h uses
        default: return 3;  // LAME's own default
    }
}

float lameVbrQuality(int q) {
    q = std::clamp(q, 0, 100);
    return std::min(9.999f, static_cast<float>(100 - q) / 10.0f);
}

std::string LameMp3Encoder::Encode(const platform::Mp3Settings& s, const std::atomic<bool>& stop,
                                   const platform::PercentDone& progress) {
    const std::string& in = s.encoderInputFile;
    if (const std::string why = unreadable(in); !why.empty()) return why;
    if (s.encoderOutputFile.empty()) return "no output file given";
    if (s.encoderVbr == 0 && (s.encoderBitRate < 8000 || s.encoderBitRate > 320000))
        return "bit rate " + std::to_string(s.encoderBitRate) +
               " bps is refused: MP3 takes 8000 to 320000 bits per second";

    SF_INFO info{};
    std::unique_ptr<SNDFILE, SndfileCloser> sf(sf_open(in.c_str(), SFM_READ, &info));
    if (!sf) return in + " is not an audio file (" + sf_strerror(nullptr) + ")";
    if (info.channels < 1 || info.samplerate < 1) return in + " is not an audio file (no channels)";
    sf_command(sf.get(), SFC_SET_NORM_FLOAT, nullptr, SF_TRUE);

    const bool mono = s.encoderChannels == 1;
    std::unique_ptr<lame_global_flags, LameCloser> gf(lame_init());
    if (!gf) return "LAME cannot start (out of memory)";
    lame_set_in_samplerate(gf.get(), info.samplerate);
    lame_set_num_channels(gf.get(), mono ? 1 : 2);
    lame_set_mode(gf.get(), mono ? MONO : s.encoderIntensity ? JOINT_STEREO : STEREO);
    lame_set_quality(gf.get(), lameQuality(s.encoderQuality));
    lame_set_error_protection(gf.get(), s.encoderCrc ? 1 : 0);
    if (s.encoderVbr != 0) {
        lame_set_VBR(gf.get(), vbr_default);
        lame_set_VBR_quality(gf.get(), lameVbrQuality(s.encoderVbrQuality));
    } else {
        lame_set_VBR(gf.get(), vbr_off);
        lame_set_brate(gf.get(), s.encoderBitRate / 1000);
    }
    lame_set_bWriteVbrTag(gf.get(), 1);
    if (lame_init_params(gf.get()) < 0)
        return "LAME refuses these settings (" + std::to_string(info.samplerate) + " Hz, " +
               std::to_string(s.encoderBitRate) + " bps)";

    try {
        FileBeside out(s.encoderOutputFile);
        Reporter report(progress, info.frames);
        const int ch = info.channels;
        std::vector<float> frames(static_cast<size_t>(kBlockFrames) * ch);
        std::vector<float> left(kBlockFrames), right(kBlockFrames);
        // LAME's own bound on the output of one call: 1.25 x samples + 7200.
        std::vector<unsigned char> mp3(static_cast<size_t>(kBlockFrames * 5 / 4 + 7200));
        int64_t done = 0;
        report.at(0);
        while (!stop.load(std::memory_order_relaxed)) {
            const sf_count_t n = sf_readf_float(sf.get(), frames.data(), kBlockFrames);
            if (n <= 0) {
                if (sf_error(sf.get()) != SF_ERR_NO_ERROR)
                    return "cannot read " + in + ": " + sf_strerror(sf.get());
                break;
            }
            for (sf_count_t i = 0; i < n; ++i) {
                const float* f = &frames[static_cast<size_t>(i * ch)];
                if (mono) {
                    float sum = 0;
                    for (int c = 0; c < ch; ++c) sum += f[c];
                    left[i] = sum / static_cast<float>(ch);
                } else {
                    // Stereo from the first two channels; a mono source goes to both sides.
                    left[i] = f[0];
                    right[i] = ch > 1 ? f[1] : f[0];
                }
            }
            const int bytes = lame_encode_buffer_ieee_float(gf.get(), left.data(), mono ? left.data() : right.data(),
                                                            static_cast<int>(n), mp3.data(),
                                                            static_cast<int>(mp3.size()));
            if (bytes < 0) return "LAME failed on " + in + " (error " + std::to_string(bytes) + ")";
            out.write(mp3.data(), static_cast<size_t>(bytes));
            done += n;
            report.at(done);
        }
        const int bytes = lame_encode_flush(gf.get(), mp3.data(), static_cast<int>(mp3.size()));
        if (bytes < 0) return "LAME failed on " + in + " (error " + std::to_string(bytes) + ")";
        out.write(mp3.data(), static_cast<size_t>(bytes));
        // The info frame, with the real frame count, delay and padding, over the
        // place LAME kept for it at the start.
        unsigned char tag[2880];
        const size_t tagBytes = lame_get_lametag_frame(gf.get(), tag, sizeof tag);
        if (tagBytes > 0 && tagBytes <= sizeof tag) out.writeAt(tag, tagBytes, 0);
        out.commit();
    } catch (const std::exception& e) {
        return e.what();
    }
    if (progress && !stop.load()) progress(100.0);
    return {};
}

}  // namespace velaro::engine
