#include "take_recorder.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>

#include "mic_input.h"
#include "wave_reader.h"

namespace velaro::engine {

namespace {
constexpr size_t kChunk = 4096;
// Ten seconds of either stream may wait for the writer.
constexpr size_t kRingFrames = 1 << 19;
// A stream's clock is trusted after enough callbacks and, for the input,
// a few seconds: a sound server settles an input's fragments in its first
// seconds, and until then its blocks come late. The rings hold all of it.
constexpr int kClockObservations = 128;
constexpr double kInputSettleSeconds = 3.5;
}  // namespace

TakeRecorder::TakeRecorder(const std::string& path, Options options)
    : opt_(std::move(options)), skipLeft_(opt_.skipFrames), micSkipLeft_(opt_.micSkipFrames),
      mic_(2 * kChunk), out_(2 * kChunk), outRing_(opt_.live ? kRingFrames : 1), micRing_(opt_.live ? kRingFrames : 1) {
    errno = 0;
    file_ = std::fopen(path.c_str(), "ab");
    if (!file_) throw std::runtime_error("cannot write " + path + ": " + std::strerror(errno));
    if (opt_.live) writer_ = std::thread([this] { writerLoop(); });
}

TakeRecorder::~TakeRecorder() {
    std::string ignored;
    finish(ignored);
}

void TakeRecorder::write(const float* s, size_t frames) noexcept {
    if (!file_ || error_ || frames == 0) return;
    errno = 0;
    if (std::fwrite(s, sizeof(float) * 2, frames, file_) != frames) error_ = errno ? errno : EIO;
    written_.fetch_add(static_cast<int64_t>(frames), std::memory_order_release);
}

void TakeRecorder::block(const float* s, int frames) noexcept {
    if (skipLeft_ > 0) {
        const int skip = std::min(skipLeft_, frames);
        skipLeft_ -= skip;
        s += 2 * skip;
        frames -= skip;
    }
    if (frames <= 0) return;
    if (opt_.live) {
        if (!outRing_.push(s, frames)) dropped_.fetch_add(frames, std::memory_order_relaxed);
        return;
    }
    // Offline: this is the caller's thread, so the file is written here.
    int done = 0;
    while (done < frames) {
        const int n = std::min(frames - done, static_cast<int>(kChunk));
        int got = 0;
        if (opt_.micFile) {
            try {
                got = opt_.micFile->read(mic_.data(), n);
            } catch (...) {
                got = 0;
            }
        }
        const float g = opt_.level ? opt_.level->gain() : 1.0f;
        for (int i = 0; i < 2 * n; ++i) out_[i] = s[2 * done + i] + (i < 2 * got ? g * mic_[i] : 0.0f);
        write(out_.data(), static_cast<size_t>(n));
        done += n;
    }
}

bool TakeRecorder::align(bool last) {
    if (aligned_) return true;
    if (!opt_.engine || !opt_.mic) {
        aligned_ = true;
        return true;
    }
    const bool started = outRing_.available() > 0 && micRing_.available() > 0;
    const bool trusted = opt_.engine->outputClock().observations() >= kClockObservations &&
                         opt_.mic->clock().observations() >= kClockObservations &&
                         micRing_.available() >= static_cast<size_t>(kInputSettleSeconds * opt_.engine->sampleRate());
    if (!(started && trusted)) {
        if (!last) return false;
        // Too short a take to know: the first frames meet, less the round trip.
        aligned_ = true;
        shift_.store(micSkipLeft_, std::memory_order_release);
        return true;
    }
    const int rate = opt_.engine->sampleRate();
    const int64_t heard = opt_.engine->recorderStartFrame() +
                          inputFrameOffset(opt_.engine->outputClock(), opt_.mic->clock(), rate) + opt_.micSkipFrames;
    const int64_t skip = heard - opt_.mic->consumerStartFrame();
    if (skip >= 0) micSkipLeft_ = skip;
    else {
        micSkipLeft_ = 0;
        micPadLeft_ = -skip;
    }
    shift_.store(skip, std::memory_order_release);
    aligned_ = true;
    return true;
}

void TakeRecorder::drain(bool last) {
    if (!align(last)) {
        // Waiting for the clocks; only a ring about to fill forces the old way.
        if (outRing_.available() < kRingFrames / 2) return;
        aligned_ = true;
    }
    for (;;) {
        if (micSkipLeft_ > 0) micSkipLeft_ -= static_cast<int64_t>(micRing_.skip(static_cast<size_t>(micSkipLeft_)));
        if (micPadLeft_ > 0) {
            // The input started after the output's first frame: those frames have no voice.
            const size_t n = std::min<size_t>({outRing_.available(), kChunk, static_cast<size_t>(micPadLeft_)});
            if (n == 0) return;
            outRing_.pop(out_.data(), n);
            write(out_.data(), n);
            micPadLeft_ -= static_cast<int64_t>(n);
            continue;
        }
        const size_t outN = std::min(outRing_.available(), kChunk);
        if (outN == 0) return;
        size_t micN = micSkipLeft_ > 0 ? 0 : std::min(micRing_.available(), outN);
        // Wait for the input to catch up, unless it is done or has fallen a whole ring behind.
        size_t n = micN;
        if (micN < outN && (last || outRing_.available() > kRingFrames / 2)) n = outN;
        if (n == 0) return;
        outRing_.pop(out_.data(), n);
        const size_t got = micRing_.pop(mic_.data(), std::min(micN, n));
        for (size_t i = 0; i < 2 * n; ++i) out_[i] += i < 2 * got ? mic_[i] : 0.0f;
        write(out_.data(), n);
    }
}

void TakeRecorder::writerLoop() {
    while (running_.load(std::memory_order_acquire)) {
        drain(false);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

bool TakeRecorder::finish(std::string& error) {
    if (!file_) return error_ == 0;
    if (writer_.joinable()) {
        running_.store(false, std::memory_order_release);
        writer_.join();
        drain(true);
    }
    errno = 0;
    if (std::fclose(file_) != 0 && !error_) error_ = errno ? errno : EIO;
    file_ = nullptr;
    if (error_) error = std::strerror(error_);
    return error_ == 0;
}

}  // namespace velaro::engine
