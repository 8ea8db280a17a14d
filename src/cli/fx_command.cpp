// velaro fx: a wave file through the effect chain, in the order given, with
// the tail the chain leaves (echo repeats, reverb decay) kept.

#include <sndfile.h>

#include <cmath>
#include <filesystem>
#include <iostream>
#include <memory>

#include "commands.h"
#include "core/base/vb_number.h"
#include "dsp/effect_chain.h"
#include "effect_option.h"
#include "engine/file_beside.h"
#include "engine/wav_file.h"

namespace velaro::cli {

namespace {

constexpr int kBlock = 4096;
// The tail ends when the sound stays under -90 dBFS, and never lasts past 10 s.
constexpr float kTailFloor = 3.1622777e-5f;
constexpr double kTailMaxSeconds = 10.0;

const char* kFxUsage =
    "usage: velaro fx IN.wav -o OUT.wav --effect NAME[:FIELD=VALUE,...] [--effect ...]\n"
    "  NAME: gargle, chorus, flanger, echo, distortion, compressor, parameq, reverb\n";

struct SndfileCloser {
    void operator()(SNDFILE* f) const { sf_close(f); }
};

// Between the file's channels and the chain's stereo: a mono file is played
// on both sides and written back as their mean.
void toStereo(const float* in, int channels, float* lr, int frames) {
    for (int i = 0; i < frames; ++i) {
        lr[2 * i] = in[i * channels];
        lr[2 * i + 1] = channels > 1 ? in[i * channels + 1] : in[i * channels];
    }
}
void fromStereo(const float* lr, int channels, float* out, int frames) {
    for (int i = 0; i < frames; ++i) {
        if (channels == 1) {
            out[i] = 0.5f * (lr[2 * i] + lr[2 * i + 1]);
        } else {
            out[2 * i] = lr[2 * i];
            out[2 * i + 1] = lr[2 * i + 1];
        }
    }
}

}  // namespace

int runFx(const std::vector<std::string>& args) {
    std::string in, out, error;
    bool usage = true;  // a bad --effect says what is wrong in its own line
    std::vector<dsp::EffectParams> effects;
    for (size_t i = 0; i < args.size() && error.empty(); ++i) {
        const std::string& a = args[i];
        if (a == "-o" || a == "--out") {
            if (i + 1 >= args.size()) error = a + " needs a value";
            else out = args[++i];
        } else if (a == "--effect") {
            dsp::EffectParams p;
            if (i + 1 >= args.size()) error = "--effect needs a value";
            else if (parseEffect(args[++i], p, error)) effects.push_back(p);
            else usage = false;
        } else if (!a.empty() && a[0] == '-') {
            error = "unknown option " + a;
        } else if (in.empty()) {
            in = a;
        } else {
            error = "one input file only";
        }
    }
    if (error.empty() && in.empty()) error = "no input file given";
    if (error.empty() && out.empty()) error = "no output file given (-o OUT.wav)";
    if (error.empty() && effects.empty()) error = "no effect given (--effect NAME)";
    if (!error.empty()) {
        std::cerr << "velaro fx: " << error << '\n' << (usage ? kFxUsage : "");
        return 2;
    }

    if (std::string why = engine::unreadable(in); !why.empty()) {
        std::cerr << "velaro fx: " << why << '\n';
        return 1;
    }
    SF_INFO info{};
    std::unique_ptr<SNDFILE, SndfileCloser> src(sf_open(in.c_str(), SFM_READ, &info));
    if (!src) {
        std::cerr << "velaro fx: cannot read " << in << ": " << sf_strerror(nullptr) << '\n';
        return 1;
    }
    if (info.channels < 1 || info.channels > 2 || info.samplerate < 1000 || info.samplerate > 768000) {
        std::cerr << "velaro fx: " << in << ": " << info.channels << " channels at " << info.samplerate
                  << " Hz; mono or stereo only\n";
        return 1;
    }
    const int rate = info.samplerate, channels = info.channels;

    dsp::EffectChain chain(rate);
    for (const dsp::EffectParams& p : effects) {
        dsp::Effect& e = chain.add(dsp::classOf(p));
        e.setParams(p);
        e.reset();
    }
    std::unique_ptr<engine::WavWriter> wav;
    try {
        wav = std::make_unique<engine::WavWriter>(std::filesystem::absolute(out).string(), rate, channels);
    } catch (const std::exception& e) {
        std::cerr << "velaro fx: " << e.what() << '\n';
        return 1;
    }

    std::vector<float> raw(static_cast<size_t>(kBlock) * channels), lr(2 * kBlock), back(raw.size());
    int64_t inFrames = 0;
    for (;;) {
        const sf_count_t n = sf_readf_float(src.get(), raw.data(), kBlock);
        if (n <= 0) break;
        toStereo(raw.data(), channels, lr.data(), static_cast<int>(n));
        chain.process(lr.data(), static_cast<int>(n));
        fromStereo(lr.data(), channels, back.data(), static_cast<int>(n));
        wav->write(back.data(), static_cast<int>(n));
        inFrames += n;
    }

    // The tail: silence through the chain until it has stayed quiet for longer
    // than any gap the chain can leave; kept up to its last audible frame.
    std::vector<float> tail;
    const int64_t most = static_cast<int64_t>(kTailMaxSeconds * rate);
    const int64_t quietNeeded = chain.longestGap() + kBlock;
    int64_t made = 0, lastLoud = 0, quiet = 0;
    while (made < most && quiet < quietNeeded) {
        const int n = static_cast<int>(std::min<int64_t>(kBlock, most - made));
        std::fill_n(lr.data(), 2 * n, 0.0f);
        chain.process(lr.data(), n);
        for (int i = 0; i < n; ++i) {
            const bool loud = std::fabs(lr[2 * i]) >= kTailFloor || std::fabs(lr[2 * i + 1]) >= kTailFloor;
            if (loud) {
                lastLoud = made + i + 1;
                quiet = 0;
            } else {
                ++quiet;
            }
        }
        fromStereo(lr.data(), channels, back.data(), n);
        tail.insert(tail.end(), back.begin(), back.begin() + static_cast<size_t>(n) * channels);
        made += n;
    }
    if (lastLoud > 0) wav->write(tail.data(), static_cast<int>(lastLoud));
    if (!wav->close()) {
        std::cerr << "velaro fx: " << wav->error() << '\n';
        return 1;
    }
    std::string names;
    for (const dsp::EffectParams& p : effects) names += (names.empty() ? "" : ", ") + std::string(dsp::effectName(dsp::classOf(p)));
    std::cerr << "velaro fx: " << out << ": " << vbFormat(double(inFrames) / rate, "0.00") << " s + "
              << vbFormat(double(lastLoud) / rate, "0.00") << " s of tail, " << rate << " Hz, "
              << (channels == 1 ? "mono" : "stereo") << ", 16-bit; " << names << '\n';
    return 0;
}

}  // namespace velaro::cli
