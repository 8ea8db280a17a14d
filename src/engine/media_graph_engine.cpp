#include "media_graph_engine.h"

#include <samplerate.h>

#include <algorithm>
#include <cmath>

#include "audio_file_decoder.h"

namespace velaro::engine {

// A file's frames at the engine's rate, filled by the worker; the audio
// thread reads only below `decoded`.
struct EngineMediaGraph::Track {
    std::vector<int16_t> frames;  // stereo, interleaved
    std::atomic<int64_t> length{0};  // frames expected at the engine's rate; the decoded count once done
    std::atomic<int64_t> decoded{0};
    std::atomic<bool> cancel{false};
    std::thread worker;
    AudioFileDecoder decoder;
    double ratio = 1;

    void decodeAll() {
        const int ch = decoder.channels();
        constexpr int kChunk = 4096;
        std::vector<float> in(static_cast<size_t>(kChunk) * 2), out;
        int err = 0;
        SRC_STATE* src = ratio != 1.0 ? src_new(SRC_SINC_MEDIUM_QUALITY, 2, &err) : nullptr;
        out.resize(static_cast<size_t>(std::ceil(kChunk * ratio) + 16) * 2);
        int64_t at = 0;
        bool end = false;
        while (!cancel.load(std::memory_order_relaxed) && !end) {
            std::vector<float> raw(static_cast<size_t>(kChunk * ch));
            const int got = decoder.read(raw.data(), kChunk);
            end = got < kChunk;
            for (int i = 0; i < got; ++i) {
                in[size_t(i) * 2] = raw[size_t(i) * ch];
                in[size_t(i) * 2 + 1] = raw[size_t(i) * ch + (ch > 1 ? 1 : 0)];
            }
            const float* produced = in.data();
            long n = got;
            if (src) {
                SRC_DATA d{};
                d.data_in = in.data();
                d.input_frames = got;
                d.data_out = out.data();
                d.output_frames = static_cast<long>(out.size() / 2);
                d.src_ratio = ratio;
                d.end_of_input = end ? 1 : 0;
                if (src_process(src, &d) != 0) break;
                produced = out.data();
                n = d.output_frames_gen;
            }
            const int64_t room = static_cast<int64_t>(frames.size() / 2) - at;
            n = static_cast<long>(std::min<int64_t>(n, room));
            for (long i = 0; i < n * 2; ++i)
                frames[size_t(at * 2 + i)] =
                    static_cast<int16_t>(std::lround(std::clamp(produced[i], -1.0f, 1.0f) * 32767.0f));
            at += n;
            decoded.store(at, std::memory_order_release);
            if (room <= n) break;
        }
        if (src) src_delete(src);
        decoder.close();  // the file is free as soon as it is read
        length.store(at);
    }
};

EngineMediaGraph::EngineMediaGraph(AudioEngine& engine, bool decodeAhead) : engine_(engine), decodeAhead_(decodeAhead) {
    engine_.addSource(this);
}

EngineMediaGraph::~EngineMediaGraph() { drop(); }

void EngineMediaGraph::drop() {
    state_.store(0);
    track_.store(nullptr);
    // Wait until the audio thread has left any block that still reads the old track.
    while (inCallback_.load()) std::this_thread::yield();
    if (owned_) {
        owned_->cancel.store(true);
        if (owned_->worker.joinable()) owned_->worker.join();
        owned_.reset();
    }
}

bool EngineMediaGraph::RenderFile(const std::string& path) {
    drop();
    auto t = std::make_unique<Track>();
    if (!t->decoder.open(path)) {
        error_ = t->decoder.error();
        return false;
    }
    if (t->decoder.rate() <= 0 || t->decoder.lengthFrames() < 0) {
        error_ = "the file has no length";
        return false;
    }
    t->ratio = double(engine_.sampleRate()) / t->decoder.rate();
    t->length = static_cast<int64_t>(std::ceil(t->decoder.lengthFrames() * t->ratio));
    try {
        t->frames.assign(static_cast<size_t>(t->length.load() + 64) * 2, 0);
    } catch (const std::bad_alloc&) {
        error_ = "the file is too long to play here";
        return false;
    }
    position_.store(0);
    if (decodeAhead_) {
        Track* raw = t.get();
        t->worker = std::thread([raw] { raw->decodeAll(); });
    } else {
        t->decodeAll();
    }
    owned_ = std::move(t);
    track_.store(owned_.get());
    error_.clear();
    return true;
}

void EngineMediaGraph::Run() {
    if (track_.load()) state_.store(2);
}
void EngineMediaGraph::Pause() {
    if (track_.load()) state_.store(1);
}
void EngineMediaGraph::Stop() {
    state_.store(0);
}
void EngineMediaGraph::Release() { drop(); }

double EngineMediaGraph::CurrentPosition() { return double(position_.load()) / engine_.sampleRate(); }

void EngineMediaGraph::SetCurrentPosition(double seconds) {
    const Track* t = track_.load();
    if (!t) return;
    const int64_t frame = std::clamp<int64_t>(std::llround(std::max(0.0, seconds) * engine_.sampleRate()), 0, t->length.load());
    position_.store(frame);
}

double EngineMediaGraph::Duration() {
    const Track* t = track_.load();
    return t ? double(t->length.load()) / engine_.sampleRate() : 0.0;
}

int EngineMediaGraph::State() { return track_.load() ? state_.load() : 0; }

void EngineMediaGraph::SetVolume(int hundredthsDb) { volume_.store(std::clamp(hundredthsDb, -10000, 0)); }

void EngineMediaGraph::process(float* left, float* right, int frames) noexcept {
    inCallback_.store(true);
    Track* t = track_.load();
    if (t && state_.load(std::memory_order_relaxed) == 2) {
        const int v = volume_.load(std::memory_order_relaxed);
        const float gain = v <= -10000 ? 0.0f : std::pow(10.0f, float(v) / 2000.0f);
        const int b = balance_.load(std::memory_order_relaxed);
        const float gl = b > 0 ? std::pow(10.0f, float(-b) / 2000.0f) : 1.0f;
        const float gr = b < 0 ? std::pow(10.0f, float(b) / 2000.0f) : 1.0f;
        int64_t pos = position_.load(std::memory_order_relaxed);
        const int64_t ready = t->decoded.load(std::memory_order_acquire);
        const int64_t end = t->length.load(std::memory_order_acquire);
        for (int i = 0; i < frames && pos < end; ++i) {
            if (pos < ready) {
                left[i] += t->frames[size_t(pos * 2)] * (gain * gl / 32767.0f);
                right[i] += t->frames[size_t(pos * 2 + 1)] * (gain * gr / 32767.0f);
                ++pos;
            }
            // Not decoded yet: silence, and the clock waits for the frames.
        }
        position_.store(pos, std::memory_order_relaxed);
    }
    inCallback_.store(false);
}

}  // namespace velaro::engine
