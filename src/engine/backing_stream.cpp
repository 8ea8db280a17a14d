#include "backing_stream.h"

#include <rubberband/RubberBandStretcher.h>
#include <samplerate.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>

namespace velaro::engine {

namespace {
constexpr int kChunk = 1024;         // file frames decoded at a time: the same for both streams of a backing
constexpr size_t kRingFrames = 1 << 15;  // about 0.7 s ahead at 44.1 kHz
constexpr int kPushPiece = 512;
}  // namespace

BackingStream::BackingStream(platform::StreamId id, int engineRate)
    : id_(id), engineRate_(engineRate), ring_(kRingFrames) {}

BackingStream::~BackingStream() {
    stopWorker();
    if (src_) src_delete(src_);
}

bool BackingStream::open(const std::string& path, bool module, bool loop, int& errorCode) {
    path_ = path;
    const bool ok = module ? decoder_.openModule(path, engineRate_, loop) : decoder_.openStream(path);
    if (!ok) {
        errorCode = module ? decoder_.moduleErrorCode() : decoder_.streamErrorCode();
        return false;
    }
    raw_.resize(2 * kChunk);
    stereo_.resize(2 * kChunk);
    if (decoder_.rate() != engineRate_) {
        int err = 0;
        src_ = src_new(SRC_SINC_MEDIUM_QUALITY, 2, &err);
        if (!src_) {
            errorCode = 41;
            return false;
        }
    }
    // The most one chunk can become: a rate raised up to eight times.
    converted_.resize(2 * (8 * kChunk + 64));
    return true;
}

void BackingStream::startWorker() {
    if (thread_.joinable()) return;
    quit_ = false;
    thread_ = std::thread([this] { worker(); });
}

void BackingStream::stopWorker() {
    if (!thread_.joinable()) return;
    {
        std::lock_guard<std::mutex> lock(wakeMutex_);
        quit_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void BackingStream::setShift(int semitones, int speedPercent) {
    semitones_.store(std::clamp(semitones, -12, 12), std::memory_order_relaxed);
    speed_.store(std::clamp(speedPercent, 50, 150), std::memory_order_relaxed);
}

void BackingStream::worker() {
    size_t sent = 0;  // frames of pending_ already in the ring
    while (!quit_.load(std::memory_order_relaxed)) {
        if (sent < pendingFrames_) {
            const int n = static_cast<int>(std::min<size_t>(kPushPiece, pendingFrames_ - sent));
            if (ring_.push(pending_.data() + 2 * sent, n)) {
                sent += static_cast<size_t>(n);
                continue;
            }
            // The ring is full: the audio side will take some soon.
            std::unique_lock<std::mutex> lock(wakeMutex_);
            wake_.wait_for(lock, std::chrono::milliseconds(2), [this] { return quit_.load(); });
            continue;
        }
        pendingFrames_ = 0;
        sent = 0;
        if (ended_.load(std::memory_order_relaxed)) {
            std::unique_lock<std::mutex> lock(wakeMutex_);
            wake_.wait_for(lock, std::chrono::milliseconds(50), [this] { return quit_.load(); });
            continue;
        }
        if (!produce() && pendingFrames_ == 0) ended_.store(true, std::memory_order_release);
    }
}

bool BackingStream::produce() {
    if (inputDone_) return false;
    const int got = decoder_.read(raw_.data(), kChunk);
    const int n = std::max(got, 0);
    if (n < kChunk) inputDone_ = true;
    const bool mono = decoder_.channels() == 1;
    for (int i = 0; i < n; ++i) {
        stereo_[2 * i] = raw_[mono ? i : 2 * i];
        stereo_[2 * i + 1] = raw_[mono ? i : 2 * i + 1];
    }
    const float* conv = stereo_.data();
    int convFrames = n;
    if (src_) {
        SRC_DATA d{};
        d.data_in = stereo_.data();
        d.input_frames = n;
        d.data_out = converted_.data();
        d.output_frames = static_cast<long>(converted_.size() / 2);
        d.src_ratio = static_cast<double>(engineRate_) / decoder_.rate();
        d.end_of_input = inputDone_ ? 1 : 0;
        convFrames = 0;
        if (d.src_ratio > 1.0 / 256 && d.src_ratio < 256 && src_process(src_, &d) == 0)
            convFrames = static_cast<int>(d.output_frames_gen);
        conv = converted_.data();
        // At the end the converter still holds a tail; drain it.
        while (inputDone_ && d.output_frames_gen > 0 && convFrames + 64 < static_cast<int>(converted_.size() / 2)) {
            d.data_in = stereo_.data();
            d.input_frames = 0;
            d.data_out = converted_.data() + 2 * convFrames;
            d.output_frames = static_cast<long>(converted_.size() / 2) - convFrames;
            if (src_process(src_, &d) != 0) break;
            convFrames += static_cast<int>(d.output_frames_gen);
        }
    }
    pushShifted(conv, convFrames, inputDone_);
    return !inputDone_ || pendingFrames_ > 0;
}

void BackingStream::pushShifted(const float* lr, int frames, bool final) {
    const int semis = semitones_.load(std::memory_order_relaxed);
    const int speed = speed_.load(std::memory_order_relaxed);
    auto append = [this](const float* f, size_t count) {
        if (count == 0) return;
        if (pending_.size() < 2 * (pendingFrames_ + count)) pending_.resize(2 * (pendingFrames_ + count));
        std::memcpy(pending_.data() + 2 * pendingFrames_, f, sizeof(float) * 2 * count);
        pendingFrames_ += count;
    };
    if (!stretch_ && semis == 0 && speed == 100) {
        append(lr, static_cast<size_t>(frames));
        return;
    }
    using RB = RubberBand::RubberBandStretcher;
    const double ratio = 100.0 / speed, pitch = std::pow(2.0, semis / 12.0);
    if (!stretch_) {
        stretch_ = std::make_unique<RB>(static_cast<size_t>(engineRate_), 2,
                                        RB::OptionProcessRealTime | RB::OptionEngineFiner, ratio, pitch);
        stretch_->setMaxProcessSize(8 * kChunk + 64);
        // Primed with silence so the first frame out is the file's first frame.
        const size_t pad = stretch_->getPreferredStartPad();
        planar_[0].assign(std::max<size_t>(pad, 8 * kChunk + 64), 0.0f);
        planar_[1].assign(planar_[0].size(), 0.0f);
        for (size_t done = 0; done < pad;) {
            const size_t n = std::min<size_t>(pad - done, 8 * kChunk);
            const float* in[2] = {planar_[0].data(), planar_[1].data()};
            stretch_->process(in, n, false);
            done += n;
        }
        stretchSkip_ = static_cast<int64_t>(stretch_->getStartDelay());
    }
    if (stretch_->getTimeRatio() != ratio) stretch_->setTimeRatio(ratio);
    if (stretch_->getPitchScale() != pitch) stretch_->setPitchScale(pitch);
    for (int i = 0; i < frames; ++i) {
        planar_[0][i] = lr[2 * i];
        planar_[1][i] = lr[2 * i + 1];
    }
    auto drain = [&] {
        for (;;) {
            const int avail = stretch_->available();
            if (avail <= 0) break;
            stretchL_.resize(static_cast<size_t>(avail));
            stretchR_.resize(static_cast<size_t>(avail));
            float* outp[2] = {stretchL_.data(), stretchR_.data()};
            const size_t got = stretch_->retrieve(outp, static_cast<size_t>(avail));
            out_.resize(2 * got);
            size_t keep = 0;
            for (size_t i = 0; i < got; ++i) {
                if (stretchSkip_ > 0) {
                    --stretchSkip_;
                    continue;
                }
                out_[2 * keep] = stretchL_[i];
                out_[2 * keep + 1] = stretchR_[i];
                ++keep;
            }
            if (final) {
                // Its last output is a ringing tail past the end of the music: the file ends where it should.
                const int64_t room = std::max<int64_t>(0, std::llround(stretchExpected_) - stretchOut_);
                keep = static_cast<size_t>(std::min<int64_t>(static_cast<int64_t>(keep), room));
            }
            stretchOut_ += static_cast<int64_t>(keep);
            append(out_.data(), keep);
        }
    };
    stretchExpected_ += frames * ratio;
    // Fed as much as it asks for at a time, so its ratio holds from block to block.
    int fed = 0;
    do {
        const int want = std::max<int>(1, static_cast<int>(stretch_->getSamplesRequired()));
        const int n = std::min(want, frames - fed);
        const float* in[2] = {planar_[0].data() + fed, planar_[1].data() + fed};
        stretch_->process(in, static_cast<size_t>(n), final && fed + n == frames);
        fed += n;
        drain();
    } while (fed < frames);
}

// ---- audio thread ----

void BackingStream::play(bool, int64_t alignTo) noexcept {
    if (playing_) return;
    if (pos_ == 0 && alignTo > 0) {
        // Joins its partner on the partner's sample: what it would have played so far is left out.
        pos_ = alignTo;
        owed_ += alignTo;
    }
    playing_ = true;
    active_.store(true, std::memory_order_release);
}

void BackingStream::stop() noexcept {
    playing_ = false;
    active_.store(false, std::memory_order_release);
}

void BackingStream::addEntry(const Entry& e) noexcept {
    if (entryCount_ >= kMaxDsp) return;
    // Higher priority runs first; among equals, the one set first.
    int at = entryCount_;
    while (at > 0 && entries_[at - 1].priority < e.priority) {
        entries_[at] = entries_[at - 1];
        --at;
    }
    entries_[at] = e;
    ++entryCount_;
    if (e.kind == Entry::Eq && e.band >= 0 && e.band < kBands) {
        bands_[e.band].design(engineRate_, 1000, 1, 0, 0);
        bands_[e.band].reset();
    }
    if (e.kind == Entry::Volume) volume_[0] = volume_[1] = 1.0f;
}

void BackingStream::removeCallback(uint32_t handle) noexcept {
    int w = 0;
    for (int i = 0; i < entryCount_; ++i)
        if (!(entries_[i].kind == Entry::Callback && entries_[i].handle == handle)) entries_[w++] = entries_[i];
    entryCount_ = w;
}

void BackingStream::removeKind(Entry::Kind k) noexcept {
    int w = 0;
    for (int i = 0; i < entryCount_; ++i)
        if (entries_[i].kind != k) entries_[w++] = entries_[i];
    entryCount_ = w;
}

void BackingStream::setVolume(float left, float right) noexcept {
    volume_[0] = std::isfinite(left) ? left : 0.0f;
    volume_[1] = std::isfinite(right) ? right : 0.0f;
}

void BackingStream::setBand(const platform::PeakEqRecord& r) noexcept {
    if (r.band < 0 || r.band >= kBands) return;
    bands_[r.band].design(r.rate, r.center, r.bandwidth, r.q, r.gain);
}

size_t BackingStream::takeFrames(float* out, size_t frames, bool offline) noexcept {
    if (offline) {
        // Offline nothing may be dropped: wait for the worker.
        while (ring_.available() < frames && !ended_.load(std::memory_order_acquire)) {
            wake_.notify_one();
            std::this_thread::yield();
        }
    }
    return out ? ring_.pop(out, frames) : ring_.skip(frames);
}

void BackingStream::render(float* mix, float* scratch, int frames, bool offline, bool floatDsp) noexcept {
    if (!playing_) return;
    while (owed_ > 0) {
        const size_t n = takeFrames(nullptr, static_cast<size_t>(std::min<int64_t>(owed_, kRingFrames / 2)), offline);
        owed_ -= static_cast<int64_t>(n);
        if (n == 0) break;
    }
    size_t got = 0;
    if (owed_ == 0) got = takeFrames(scratch, static_cast<size_t>(frames), offline);
    std::fill(scratch + 2 * got, scratch + 2 * frames, 0.0f);
    if (got < static_cast<size_t>(frames)) {
        if (ended_.load(std::memory_order_acquire) && ring_.available() == 0) {
            playing_ = false;
            active_.store(false, std::memory_order_release);
        } else {
            // Late: silence now, and the missing frames are skipped later, so the stream keeps its time.
            owed_ += frames - static_cast<int64_t>(got);
        }
    }
    for (int i = 0; i < entryCount_; ++i) {
        const Entry& e = entries_[i];
        switch (e.kind) {
        case Entry::Callback:
            if (floatDsp || frames > static_cast<int>(pcm_.size() / 2)) {
                e.proc(e.handle, id_, scratch, static_cast<uint32_t>(frames) * 2 * sizeof(float), e.user);
            } else {
                for (int k = 0; k < 2 * frames; ++k)
                    pcm_[static_cast<size_t>(k)] =
                        static_cast<int16_t>(std::lrint(std::clamp(scratch[k], -1.0f, 32767.0f / 32768.0f) * 32768.0f));
                e.proc(e.handle, id_, pcm_.data(), static_cast<uint32_t>(frames) * 2 * sizeof(int16_t), e.user);
                for (int k = 0; k < 2 * frames; ++k) scratch[k] = pcm_[static_cast<size_t>(k)] / 32768.0f;
            }
            break;
        case Entry::Volume:
            for (int k = 0; k < frames; ++k) {
                scratch[2 * k] *= volume_[0];
                scratch[2 * k + 1] *= volume_[1];
            }
            break;
        case Entry::Eq:
            if (e.band >= 0 && e.band < kBands) bands_[e.band].process(scratch, frames);
            break;
        case Entry::Gain:
            break;  // accepted and kept, without sound
        }
    }
    for (int k = 0; k < 2 * frames; ++k) mix[k] += scratch[k];
    // At the end the position is the last real frame, so a render can stop on it.
    pos_ += playing_ ? frames : static_cast<int64_t>(got);
    shownPos_.store(pos_, std::memory_order_release);
}

}  // namespace velaro::engine
