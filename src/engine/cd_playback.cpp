#include "cd_playback.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "core/platform/cd_library.h"

namespace velaro::engine {

namespace {
constexpr int kRingFrames = 44100 * 4;    // four seconds of slack against a slow drive
constexpr int kPrefillFrames = 44100;     // read before play starts: a short track plays whole from memory
constexpr int kChunkFrames = 588 * 4;   // four sectors per read
}  // namespace

CdDeck::CdDeck(std::unique_ptr<CdSectorReader> reader, int sampleRate)
    : reader_(std::move(reader)), rate_(sampleRate), length_(reader_->lengthBytes()), ring_(kRingFrames),
      scratch_(2 * AudioEngine::kMaxBlock) {}

CdDeck::~CdDeck() { halt(); }

void CdDeck::setSync(uint32_t type, std::function<void()> fn) {
    std::lock_guard<std::mutex> lock(syncMutex_);
    if (type == platform::kCdSyncEnd) onEnd_ = std::move(fn);
    else if (type == platform::kCdSyncSlide) onSlide_ = std::move(fn);
    else if (type == platform::kCdSyncCdError) onError_ = std::move(fn);
}

bool CdDeck::readSome() {
    static thread_local std::vector<uint8_t> bytes(kChunkFrames * 4);
    static thread_local std::vector<float> frames(kChunkFrames * 2);
    if (readerDone_.load()) return false;
    const size_t room = kRingFrames - ring_.available();
    if (room < static_cast<size_t>(kChunkFrames)) return false;
    const int got = reader_->read(bytes.data(), kChunkFrames * 4);
    const int n = got / 4;
    for (int i = 0; i < 2 * n; ++i) {
        const auto s = static_cast<int16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
        frames[i] = static_cast<float>(s) / 32768.0f;
    }
    if (n > 0) ring_.push(frames.data(), n);
    if (got < kChunkFrames * 4) {
        if (reader_->failed()) readError_ = true;
        readerDone_ = true;
    }
    return n > 0;
}

void CdDeck::start() {
    halt();
    quit_ = false;
    while (ring_.available() < static_cast<size_t>(kPrefillFrames) && readSome()) {
    }
    thread_ = std::thread([this] { readerLoop(); });
}

void CdDeck::halt() {
    quit_ = true;
    if (thread_.joinable()) thread_.join();
}

int64_t CdDeck::positionBytes() const { return std::min(length_, startBytes_ + framesOut_.load() * 4); }

bool CdDeck::seek(int64_t bytes) {
    if (bytes < 0 || bytes > length_) return false;
    halt();
    ring_.skip(ring_.available());
    if (!reader_->seek(bytes)) return false;
    startBytes_ = reader_->position();
    framesOut_ = 0;
    readerDone_ = false;
    readError_ = false;
    ended = false;
    return true;
}

void CdDeck::fireDue() {
    std::function<void()> fn;
    {
        std::lock_guard<std::mutex> lock(syncMutex_);
        if (readError_.load() && onError_) fn = std::exchange(onError_, nullptr);
        else if (ended.load() && onEnd_) fn = std::exchange(onEnd_, nullptr);
        else if (slideEnded_.exchange(false) && onSlide_) fn = std::exchange(onSlide_, nullptr);
    }
    if (fn) fn();
}

void CdDeck::readerLoop() {
    while (!quit_.load()) {
        const bool read = readSome();
        fireDue();
        if (!read) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

void CdDeck::process(float* left, float* right, int frames) noexcept {
    if (!playing.load(std::memory_order_acquire) || paused.load(std::memory_order_acquire)) return;
    const size_t got = ring_.pop(scratch_.data(), static_cast<size_t>(frames));
    framesOut_.fetch_add(static_cast<int64_t>(got), std::memory_order_release);

    const bool gen = slideGeneration.load(std::memory_order_acquire);
    if (gen != slideSeen_) {
        slideSeen_ = gen;
        slideLeft_ = std::max<int64_t>(1, slideFrames.load());
        slideStep_ = (slideTarget.load() - gainNow_) / static_cast<float>(slideLeft_);
    }
    const float p = pan.load(std::memory_order_relaxed);
    const float panL = p > 0 ? 1.0f - p : 1.0f;
    const float panR = p < 0 ? 1.0f + p : 1.0f;
    float peakL = 0, peakR = 0;
    for (size_t i = 0; i < got; ++i) {
        if (slideLeft_ > 0) {
            gainNow_ += slideStep_;
            if (--slideLeft_ == 0) {
                gainNow_ = slideTarget.load();
                volume.store(gainNow_);
                slideEnded_.store(true);
            }
        } else {
            gainNow_ = volume.load(std::memory_order_relaxed);
        }
        const float l = scratch_[2 * i] * gainNow_ * panL;
        const float r = scratch_[2 * i + 1] * gainNow_ * panR;
        left[i] += l;
        right[i] += r;
        peakL = std::max(peakL, std::fabs(l));
        peakR = std::max(peakR, std::fabs(r));
    }
    const auto toLevel = [](float v) { return static_cast<uint32_t>(std::min(1.0f, v) * 32768.0f); };
    level.store(toLevel(peakL) | (toLevel(peakR) << 16), std::memory_order_relaxed);
    if (got < static_cast<size_t>(frames) && readerDone_.load(std::memory_order_acquire) && ring_.available() == 0) {
        playing.store(false, std::memory_order_release);
        level.store(0xFFFFFFFFu, std::memory_order_relaxed);
        ended.store(true, std::memory_order_release);
    }
}

void CdPlaybackSource::process(float* left, float* right, int frames) noexcept {
    busy_.store(true, std::memory_order_seq_cst);
    if (CdDeck* d = deck_.load(std::memory_order_seq_cst)) d->process(left, right, frames);
    busy_.store(false, std::memory_order_release);
}

void CdPlaybackSource::setDeck(CdDeck* deck) {
    deck_.store(deck, std::memory_order_seq_cst);
    // The audio thread finishes the block it may have begun with the old deck.
    while (busy_.load(std::memory_order_seq_cst)) std::this_thread::yield();
}

}  // namespace velaro::engine
