// The take recorder offline: resident memory along a ten-minute take rendered
// as fast as it goes (it must stay flat: the take lives in a file), and the
// CPU the recording path costs per second of audio (render with the recorder
// and a microphone file, less the same render without), then the save to
// 16-bit stereo and to 8-bit mono at 22 kHz. Then, through a private
// PulseAudio daemon whose null sink's monitor is the input (a loop cable),
// how far a live take's echo lands from what played after a calibration.

#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>

#include "core/base/paths.h"
#include "engine/audio_engine.h"
#include "engine/engine_wave_device.h"
#include "engine/latency_probe.h"
#include "engine/mic_input.h"
#include "support/private_pulse.h"

using namespace velaro;

namespace {

constexpr int kRate = 44100;

struct Tones : engine::AudioSource {
    int64_t n = 0;
    void process(float* l, float* r, int frames) noexcept override {
        for (int i = 0; i < frames; ++i, ++n) {
            const float t = static_cast<float>(n % 441000) / kRate;
            l[i] += 0.3f * std::sin(2 * 3.14159265f * 220 * t);
            r[i] += 0.3f * std::sin(2 * 3.14159265f * 330 * t);
        }
    }
};

// Half-millisecond clicks every 0.4 s once armed. Thread: audio.
struct Clicks : engine::AudioSource {
    std::atomic<bool> armed{false};
    long at = 0;
    void process(float* l, float* r, int frames) noexcept override {
        if (!armed.load()) return;
        for (int i = 0; i < frames; ++i, ++at) {
            const long in = at % 17640;
            if (at >= 4410 && in < 22) l[i] += r[i] += 0.7f * std::sin(3.14159265f * in / 22);
        }
    }
};

// A take over a loop: each click and its echo should fall on the same frames;
// how much wider than one click they come out is the alignment error.
void alignment() {
    testing::PrivatePulse pulse;
    if (const std::string why = pulse.start(); !why.empty()) {
        std::printf("bench_record: alignment: skipped (%s)\n", why.c_str());
        return;
    }
    if (std::system("pactl set-default-source null.monitor >/dev/null 2>&1") != 0) {
        std::printf("bench_record: alignment: skipped (pactl failed)\n");
        return;
    }
    engine::AudioEngine audio(kRate);
    std::string error;
    if (!audio.startDevice(error)) {
        std::printf("bench_record: alignment: skipped (%s)\n", error.c_str());
        return;
    }
    const engine::LatencyResult cal = engine::measureRoundTrip(audio);
    if (!cal.ok) {
        std::printf("bench_record: alignment: calibration failed (%s)\n", cal.error.c_str());
        return;
    }
    audio.setInputLatencyMs(static_cast<int>(std::lround(cal.ms)));
    Clicks clicks;
    audio.addSource(&clicks);
    std::vector<double> errors;
    for (int take = 0; take < 3; ++take) {
        clicks.armed = false;
        engine::EngineWaveDevice dev(audio);
        uint32_t id = 0;
        if (dev.Open("", id) != 0 || dev.Record(id) != 0) break;
        clicks.at = 0;
        clicks.armed = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(6000));
        dev.Stop(id);
        std::ifstream in(dev.takePath(), std::ios::binary);
        std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
        const size_t frames = bytes.size() / 8;
        std::vector<float> mono(frames);
        for (size_t i = 0; i < frames; ++i) std::memcpy(&mono[i], bytes.data() + i * 8, 4);
        for (size_t i = 0; i < frames; ++i) {
            if (std::fabs(mono[i]) < 0.1f) continue;
            size_t end = i;
            for (size_t j = i; j < std::min(frames, i + 2000); ++j)
                if (std::fabs(mono[j]) >= 0.1f) end = j;
            errors.push_back(1000.0 * std::abs(static_cast<long>(end - i + 1) - 21) / kRate);
            i = end + 4000;
        }
    }
    audio.stopDevice();
    if (errors.empty()) {
        std::printf("bench_record: alignment: no clicks in the takes\n");
        return;
    }
    std::sort(errors.begin(), errors.end());
    std::printf("bench_record: alignment after calibration (round trip %.1f ms): error median %.2f ms, "
                "highest %.2f ms over %zu clicks in 3 live takes (goal <= 2 ms)\n",
                cal.ms, errors[errors.size() / 2], errors.back(), errors.size());
}

long rssKb() {
    std::ifstream in("/proc/self/status");
    std::string line;
    while (std::getline(in, line))
        if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
    return -1;
}

double cpuSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

void writeVoice(const std::string& path, int seconds) {
    SF_INFO info{};
    info.samplerate = 22050;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
    std::vector<float> buf(22050);
    for (int s = 0; s < seconds; ++s) {
        for (int i = 0; i < 22050; ++i) buf[i] = 0.2f * std::sin(2 * 3.14159265f * 500 * i / 22050.0f);
        sf_writef_float(f, buf.data(), 22050);
    }
    sf_close(f);
}

// CPU seconds of rendering `seconds` of audio, with or without a take recorded.
double renderCpu(int seconds, bool recording, const std::string& voice) {
    engine::AudioEngine audio(kRate);
    Tones tones;
    audio.addSource(&tones);
    engine::EngineWaveDevice dev(audio);
    audio.mic().setFile(voice);
    uint32_t id = 0;
    dev.Open("", id);
    if (recording) dev.Record(id);
    const double t0 = cpuSeconds();
    audio.render(static_cast<int64_t>(seconds) * kRate);
    if (recording) dev.Stop(id);
    return cpuSeconds() - t0;
}

}  // namespace

int main() {
    const std::string voice = tempFolder() + "/bench-record-voice.wav";
    writeVoice(voice, 60);

    // Memory along a ten-minute take.
    {
        engine::AudioEngine audio(kRate);
        Tones tones;
        audio.addSource(&tones);
        engine::EngineWaveDevice dev(audio);
        audio.mic().setFile(voice);
        uint32_t id = 0;
        dev.Open("", id);
        const long before = rssKb();
        dev.Record(id);
        long peak = before;
        std::printf("bench_record: 10-minute offline take, resident memory (KB):");
        const auto w0 = std::chrono::steady_clock::now();
        for (int minute = 1; minute <= 10; ++minute) {
            audio.render(60LL * kRate);
            const long now = rssKb();
            peak = std::max(peak, now);
            std::printf(" %ld", now);
        }
        dev.Stop(id);
        const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - w0).count();
        std::printf("\nbench_record: before %ld KB, highest %ld KB (growth %ld KB for a %.0f MB take), %.1fx real time\n",
                    before, peak, peak - before, static_cast<double>(dev.frames()) * 8 / 1e6, 600.0 / wall);

        platform::WaveFormat f;
        const std::string out = tempFolder() + "/bench-record-take.wav";
        for (auto [rate, channels, bits] : {std::tuple{44100, 2, 16}, std::tuple{22050, 1, 8}}) {
            f.samplesPerSec = rate;
            f.channels = channels;
            f.bitsPerSample = bits;
            f.blockAlign = channels * bits / 8;
            f.avgBytesPerSec = f.blockAlign * rate;
            dev.Set(id, f);
            const double c0 = cpuSeconds();
            const auto s0 = std::chrono::steady_clock::now();
            const int err = dev.Save(id, out);
            const double wallSave = std::chrono::duration<double>(std::chrono::steady_clock::now() - s0).count();
            std::printf("bench_record: save %d Hz %d ch %d bit: %s, %.2f s (%.2f s CPU), RSS %ld KB\n", rate, channels,
                        bits, err ? dev.ErrorString(err).c_str() : "ok", wallSave, cpuSeconds() - c0, rssKb());
        }
        std::remove(out.c_str());
    }

    // CPU of the recording path per second of audio.
    const int seconds = 120;
    double with = 1e300, without = 1e300;
    for (int r = 0; r < 3; ++r) {
        without = std::min(without, renderCpu(seconds, false, voice));
        with = std::min(with, renderCpu(seconds, true, voice));
    }
    const double us = (with - without) / seconds * 1e6;
    std::printf("bench_record: render %.1f us per second of audio, with a take and a microphone file %.1f us: "
                "the recording path costs %.1f us per second of audio (%.0fx real time)\n",
                without / seconds * 1e6, with / seconds * 1e6, us, us > 0 ? 1e6 / us : 0.0);
    std::remove(voice.c_str());
    alignment();
    return 0;
}
