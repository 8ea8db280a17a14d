#include "latency_probe.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>

#include "audio_engine.h"
#include "frame_ring.h"
#include "mic_input.h"

namespace velaro::engine {

namespace {

constexpr double kSpacingSeconds = 0.4;

// Short bursts at fixed places, then silence. Thread: audio.
class ClickSource : public AudioSource {
public:
    ClickSource(int rate, int clicks) : spacing_(static_cast<long>(kSpacingSeconds * rate)), burst_(rate / 500), clicks_(clicks) {}
    void arm() { armed_.store(true, std::memory_order_release); }
    void process(float* left, float* right, int frames) noexcept override {
        if (!armed_.load(std::memory_order_acquire)) return;
        for (int i = 0; i < frames; ++i, ++at_) {
            // The first click waits a little, so both streams are surely running.
            const long t = at_ - spacing_ / 2;
            if (t < 0 || t / spacing_ >= clicks_) continue;
            const long inClick = t % spacing_;
            if (inClick < burst_) {
                const float s = 0.7f * std::sin(static_cast<float>(M_PI) * inClick / burst_);
                left[i] += s;
                right[i] += s;
            }
        }
    }

private:
    long spacing_, burst_, clicks_;
    long at_ = 0;
    std::atomic<bool> armed_{false};
};

// What the engine plays, block by block after the limiter. Thread: audio.
class OutputCopy : public BlockListener {
public:
    explicit OutputCopy(size_t frames) : ring(frames) {}
    void block(const float* interleaved, int frames) noexcept override { ring.push(interleaved, frames); }
    FrameRing ring;
};

std::vector<float> drainMono(FrameRing& ring, std::vector<float>& into) {
    std::vector<float> block(2 * 4096);
    for (size_t n; (n = ring.pop(block.data(), 4096)) > 0;)
        for (size_t i = 0; i < n; ++i) into.push_back(0.5f * (block[2 * i] + block[2 * i + 1]));
    return into;
}

}  // namespace

std::vector<long> clickOnsets(const std::vector<float>& mono, float threshold, long gap) {
    // A click rises out of quiet: a steady tone or noise above the threshold is no click.
    // The quiet is looked for before the click's own rise (`margin` frames back).
    const long quiet = std::max(2L, gap / 2), margin = std::max(1L, quiet / 4);
    std::vector<long> out;
    long last = -gap, loudAt = -quiet - 1;
    for (long i = 0; i < static_cast<long>(mono.size()); ++i) {
        if (i >= margin && std::fabs(mono[i - margin]) >= threshold / 2) loudAt = i - margin;
        if (std::fabs(mono[i]) >= threshold && i - last >= gap && i - loudAt > quiet) {
            out.push_back(i);
            last = i;
        }
    }
    return out;
}

std::vector<long> clickDelays(const std::vector<long>& out, const std::vector<long>& in, long maxDelay) {
    std::vector<long> delays;
    for (long o : out) {
        auto it = std::lower_bound(in.begin(), in.end(), o);
        if (it != in.end() && *it - o <= maxDelay) delays.push_back(*it - o);
    }
    return delays;
}

LatencyResult measureRoundTrip(AudioEngine& engine, int clicks) {
    LatencyResult r;
    const int rate = engine.sampleRate();
    if (!engine.deviceRunning()) {
        r.error = "no sound device is running";
        return r;
    }
    MicInput& mic = engine.mic();
    if (!mic.acquire(r.error)) return r;
    const size_t capacity = static_cast<size_t>((clicks + 3) * kSpacingSeconds * rate) + rate;
    OutputCopy out(capacity);
    FrameRing in(capacity);
    // Sources stay for the engine's life: a click source that has finished is silent.
    static thread_local std::vector<std::unique_ptr<ClickSource>> keep;
    keep.push_back(std::make_unique<ClickSource>(rate, clicks));
    ClickSource* source = keep.back().get();
    engine.addSource(source);

    // Both copies start together, as a take's do, and the delays are told
    // by the streams' clocks, as a take lines them up.
    engine.outputClock().reset();
    mic.clock().reset();
    mic.setConsumer(&in);
    engine.setRecorder(&out);
    source->arm();
    const auto wait = std::chrono::duration<double>((clicks + 2.5) * kSpacingSeconds);
    std::vector<float> played, heard;
    const auto until = std::chrono::steady_clock::now() + wait;
    while (std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        drainMono(out.ring, played);
        drainMono(in, heard);
    }
    const int64_t offset = inputFrameOffset(engine.outputClock(), mic.clock(), rate);
    const int64_t outStart = engine.recorderStartFrame(), inStart = mic.consumerStartFrame();
    engine.setRecorder(nullptr);
    mic.setConsumer(nullptr);
    // The audio thread may still be inside a block that holds the copies: let it pass.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    mic.release();
    drainMono(out.ring, played);
    drainMono(in, heard);

    float loudest = 0;
    for (float s : heard) loudest = std::max(loudest, std::fabs(s));
    const long gap = static_cast<long>(kSpacingSeconds * rate / 2);
    const auto outs = clickOnsets(played, 0.2f, gap);
    const auto ins = loudest > 0.01f ? clickOnsets(heard, 0.3f * loudest, gap) : std::vector<long>{};
    // Both on the input's frame count: a played frame p was heard as input
    // frame p + offset when the round trip is nothing.
    std::vector<long> outsOnInput;
    for (long o : outs) outsOnInput.push_back(static_cast<long>(o + outStart + offset - inStart));
    std::vector<long> delays = clickDelays(outsOnInput, ins, static_cast<long>(kSpacingSeconds * rate) - 1);
    if (delays.size() < static_cast<size_t>(std::max(3, clicks / 2))) {
        r.error = "the clicks did not come back through the input (" + std::to_string(delays.size()) + " of " +
                  std::to_string(clicks) + " heard)";
        return r;
    }
    for (long d : delays) r.clicksMs.push_back(1000.0 * d / rate);
    std::vector<long> sorted = delays;
    std::sort(sorted.begin(), sorted.end());
    r.ms = 1000.0 * sorted[sorted.size() / 2] / rate;
    r.ok = true;
    return r;
}

}  // namespace velaro::engine
