// MP3 encoding against the lame command with the same settings on one minute
// of stereo music-like sound (speed ratio: lame's time / ours, goal >= 0.95),
// and normalising as a multiple of real time.

#include <sndfile.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "core/base/paths.h"
#include "engine/mp3_encoder.h"
#include "engine/normaliser.h"

using namespace velaro;

namespace {

constexpr int kRate = 44100;
constexpr double kSeconds = 60;

void writeMusic(const std::string& path, double amplitude) {
    SF_INFO info{};
    info.samplerate = kRate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
    const auto frames = static_cast<size_t>(kSeconds * kRate);
    std::vector<float> buf(frames * 2);
    std::mt19937 rng(7);
    std::normal_distribution<float> noise(0, 0.02f);
    for (size_t i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / kRate;
        const double chord = std::sin(2 * M_PI * 220 * t) + 0.6 * std::sin(2 * M_PI * 277.2 * t) +
                             0.4 * std::sin(2 * M_PI * 329.6 * t * (1 + 0.001 * std::sin(t)));
        buf[2 * i] = static_cast<float>(amplitude * chord / 2) + noise(rng);
        buf[2 * i + 1] = static_cast<float>(amplitude * chord / 2.2) + noise(rng);
    }
    sf_writef_float(f, buf.data(), static_cast<sf_count_t>(frames));
    sf_close(f);
}

double bestSeconds(int rounds, const std::function<bool()>& job) {
    double best = 1e9;
    for (int r = 0; r < rounds; ++r) {
        const auto t0 = std::chrono::steady_clock::now();
        if (!job()) return -1;
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count());
    }
    return best;
}

}  // namespace

int main() {
    const std::string dir = tempFolder();
    const std::string wav = dir + "/velaro-bench-music.wav", ours = dir + "/velaro-bench-ours.mp3",
                      theirs = dir + "/velaro-bench-lame.mp3", loud = dir + "/velaro-bench-loud.wav";
    writeMusic(wav, 0.3);

    struct Setting {
        const char* name;
        int16_t quality;
        int32_t bitRate;
        bool intensity;
        int16_t vbr, vbrQuality;
        const char* lameArgs;
    };
    const Setting settings[] = {
        {"CBR 128 medium stereo", 1, 128000, false, 0, 0, "-b 128 -q 3 -m s"},
        {"CBR 192 high joint", 2, 192000, true, 0, 0, "-b 192 -q 2 -m j"},
        {"CBR 128 fast stereo", 0, 128000, false, 0, 0, "-b 128 -q 7 -m s"},
        {"VBR 5 medium joint", 1, 128000, true, 1, 60, "-V 4 -q 3 -m j"},
    };
    const bool haveLame = std::system("lame --version > /dev/null 2>&1") == 0;
    std::printf("encode: %.0f s of 44.1 kHz stereo, best of 3\n", kSeconds);
    for (const Setting& s : settings) {
        platform::Mp3Settings m;
        m.encoderInputFile = wav;
        m.encoderOutputFile = ours;
        m.encoderQuality = s.quality;
        m.encoderBitRate = s.bitRate;
        m.encoderIntensity = s.intensity;
        m.encoderVbr = s.vbr;
        m.encoderVbrQuality = s.vbrQuality;
        engine::LameMp3Encoder enc;
        std::atomic<bool> stop{false};
        const double ourTime = bestSeconds(3, [&] { return enc.Encode(m, stop, {}).empty(); });
        std::printf("  %-24s ours %6.2f s (%5.1fx real time)", s.name, ourTime, kSeconds / ourTime);
        if (haveLame) {
            const std::string cmd = std::string("lame --quiet ") + s.lameArgs + " '" + wav + "' '" + theirs + "'";
            const double lameTime = bestSeconds(3, [&] { return std::system(cmd.c_str()) == 0; });
            std::printf("  lame %6.2f s  speed ratio %.2f", lameTime, lameTime / ourTime);
        }
        std::printf("\n");
    }
    if (!haveLame) std::printf("  (no lame command: install lame for the ratio)\n");

    engine::SndfileNormaliser norm;
    std::atomic<bool> stop{false};
    const double normTime = bestSeconds(3, [&] { return norm.Normalize(wav, loud, 95, stop, {}).empty(); });
    std::printf("normalise: %.0f s of 16-bit stereo in %.3f s = %.0fx real time\n", kSeconds, normTime,
                kSeconds / normTime);
    for (const std::string& p : {wav, ours, theirs, loud}) std::remove(p.c_str());
    return 0;
}
