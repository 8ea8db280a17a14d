#include "media_graph_engine.h"

#include <samplerate.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <memory>

#include "audio_file_decoder.h"

namespace velaro::engine {

// A file's frames at the engine's rate, decoded ahead of the play position
// into a ring. A song fits whole: it is decoded to its end and the file let
// go, as the editor's save wants; a longer file streams through a ring of a
// few minutes, so an hour-long one costs no more memory than a song. Frames
// are numbered from the file's start; the ring holds those in [start,
// decoded) that are less than a ring behind `decoded`, and the decoder never
// runs more than a ring ahead of the player. A seek only moves the play
// position; the decoding side starts over there when the ring lacks it.
struct EngineMediaGraph::Track {
    static constexpr int64_t kMostRing = int64_t(1) << 23;  // about 3 minutes at 44.1 kHz, 32 MB
    static constexpr int kChunk = 4096;                      // source frames per decode
    int64_t ringFrames = 0;  // the length plus room, up to kMostRing
    // Stereo, interleaved. Atomic samples: right after a seek the player may
    // read slots the decoder is writing again (a moment of stale sound, which
    // is harmless), and that must not be a data race.
    std::unique_ptr<std::atomic<int16_t>[]> frames;
    std::atomic<int64_t> length{0};  // frames expected at the engine's rate; the decoded count once at the end
    std::atomic<int64_t> start{0};
    std::atomic<int64_t> decoded{0};
    std::atomic<bool> cancel{false};
    std::thread worker;
    AudioFileDecoder decoder;
    double ratio = 1;
    SRC_STATE* src = nullptr;
    bool atEnd = false;
    std::vector<float> raw, in, out;

    ~Track() {
        if (src) src_delete(src);
    }

    bool prepare() {
        int err = 0;
        if (ratio != 1.0) {
            src = src_new(SRC_SINC_MEDIUM_QUALITY, 2, &err);
            if (!src) return false;
        }
        raw.resize(size_t(kChunk) * size_t(decoder.channels()));
        in.resize(size_t(kChunk) * 2);
        out.resize(size_t(std::ceil(kChunk * ratio) + 16) * 2);
        ringFrames = std::min(length.load() + 2 * mostPerChunk(), kMostRing);
        frames = std::make_unique<std::atomic<int16_t>[]>(size_t(ringFrames) * 2);
        return true;
    }
    bool fitsWhole() const { return length.load() + mostPerChunk() <= ringFrames; }
    int64_t mostPerChunk() const { return int64_t(out.size() / 2); }

    // Starts decoding again at `frame` (engine rate).
    void seekNow(int64_t frame) {
        start.store(INT64_MAX, std::memory_order_release);  // nothing valid while the ring refills
        const int64_t total = length.load();
        frame = std::clamp<int64_t>(frame, 0, total);
        const bool found = frame < total && decoder.seek(std::llround(double(frame) / ratio));
        atEnd = !found;
        if (!found) length.store(frame);  // a cut file ends where it can no longer be found
        if (src) src_reset(src);
        decoded.store(frame, std::memory_order_release);
        start.store(frame, std::memory_order_release);
    }

    // Decodes one chunk into the ring behind `decoded`; the caller has made
    // sure a whole chunk fits before the player's position comes round.
    void decodeChunk() {
        const int ch = decoder.channels();
        const int got = std::max(0, decoder.read(raw.data(), kChunk));
        const bool end = got < kChunk;  // the end of the file, or all that is left of a cut one
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
            if (src_process(src, &d) != 0) {
                n = 0;
            } else {
                produced = out.data();
                n = d.output_frames_gen;
            }
        }
        int64_t at = decoded.load(std::memory_order_relaxed);
        for (long i = 0; i < n; ++i) {
            const size_t slot = size_t((at + i) % ringFrames) * 2;
            frames[slot].store(static_cast<int16_t>(std::lround(std::clamp(produced[i * 2], -1.0f, 1.0f) * 32767.0f)),
                               std::memory_order_relaxed);
            frames[slot + 1].store(
                static_cast<int16_t>(std::lround(std::clamp(produced[i * 2 + 1], -1.0f, 1.0f) * 32767.0f)),
                std::memory_order_relaxed);
        }
        at += n;
        decoded.store(at, std::memory_order_release);
        if (end) {
            atEnd = true;
            length.store(at);
            if (fitsWhole() && start.load() == 0) decoder.close();  // all of it is here: the file is free
        }
    }

    // Decodes until the frames up to `upTo` are in, or the ring is full, or the file ends.
    void fill(int64_t position, int64_t upTo) {
        while (!atEnd && !cancel.load(std::memory_order_relaxed) && decoded.load() < upTo &&
               decoded.load() + mostPerChunk() - position <= ringFrames)
            decodeChunk();
    }

    // Whether decoding must start over at `frame`: the ring has not got it and
    // will not get it by going on (the player only moves through the ring).
    bool lacks(int64_t frame) const {
        const int64_t end = decoded.load();
        return frame < std::max(start.load(), end - ringFrames) || frame > end;
    }

    // The worker: keeps the ring full ahead of the player and follows its seeks.
    void run(const std::atomic<int64_t>& position) {
        while (!cancel.load(std::memory_order_relaxed)) {
            const int64_t pos = position.load(std::memory_order_relaxed);
            if (lacks(pos)) seekNow(pos);
            if (!atEnd && decoded.load() + mostPerChunk() - pos <= ringFrames)
                decodeChunk();
            else
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
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
    if (!t->prepare()) {
        error_ = "the file cannot be played at this rate";
        return false;
    }
    position_.store(0);
    if (decodeAhead_) {
        Track* raw = t.get();
        t->worker = std::thread([raw, this] { raw->run(position_); });
    } else {
        t->fill(0, t->fitsWhole() ? INT64_MAX : Track::kChunk * 4);
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
    Track* t = track_.load();
    if (!t) return;
    const int64_t frame = std::clamp<int64_t>(std::llround(std::max(0.0, seconds) * engine_.sampleRate()), 0, t->length.load());
    position_.store(frame);
    // Frames still in the ring play on at once; elsewhere the decoder starts
    // over there: the worker sees it, and offline it happens here.
    if (!decodeAhead_ && t->lacks(frame)) t->seekNow(frame);
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
        // Offline there is no worker: the block decodes what it needs first.
        if (!decodeAhead_) t->fill(pos, pos + frames);
        const int64_t ready = t->decoded.load(std::memory_order_acquire);
        const int64_t first = std::max(t->start.load(std::memory_order_acquire), ready - t->ringFrames);
        const int64_t end = t->length.load(std::memory_order_acquire);
        for (int i = 0; i < frames && pos < end; ++i) {
            if (pos >= first && pos < ready) {
                const size_t slot = size_t(pos % t->ringFrames) * 2;
                left[i] += t->frames[slot].load(std::memory_order_relaxed) * (gain * gl / 32767.0f);
                right[i] += t->frames[slot + 1].load(std::memory_order_relaxed) * (gain * gr / 32767.0f);
                ++pos;
            }
            // Not decoded yet: silence, and the clock waits for the frames.
        }
        position_.store(pos, std::memory_order_relaxed);
    }
    inCallback_.store(false);
}

}  // namespace velaro::engine
