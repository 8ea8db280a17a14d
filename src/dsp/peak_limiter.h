#pragma once
// Look-ahead peak limiter for the master bus: keeps every output sample at or
// under a ceiling and leaves quieter audio untouched, bit for bit.

#include <atomic>
#include <cstdint>
#include <vector>

namespace velaro::dsp {

class PeakLimiter {
public:
    // ceilingDb: the highest output peak (-1 dBFS). lookaheadMs: delay through the limiter.
    explicit PeakLimiter(int sampleRate, float ceilingDb = -1.0f, float lookaheadMs = 5.0f, float releaseMs = 80.0f);
    // Interleaved stereo float, in place. Output frame n is input frame n - latencyFrames().
    // Thread: audio. Never allocates, locks or throws. Any frame count >= 0.
    void process(float* interleaved, int frames) noexcept;
    int latencyFrames() const;
    void reset() noexcept;               // clears the delay line and the gain (silence in the line)
    void setEnabled(bool on) noexcept;   // off: a plain delay of latencyFrames() (for comparisons)
    float gainReductionDb() const;       // current reduction, >= 0, for meters/tests

private:
    double gainFor(float left, float right) noexcept;

    float ceiling_;        // linear; no output sample is ever louder
    double target_;        // what the gain aims for: a hair under the ceiling, so rounding never crosses it
    int latency_;          // frames in the delay line
    int window_;           // latency + 1: the frames one gain decision must cover
    double releaseCoeff_;  // per-frame pull of the envelope back toward the held gain

    std::vector<float> delay_;  // interleaved stereo ring of latency_ frames
    int delayPos_ = 0;

    // Sliding minimum of the gains each frame needs, over the last window_ frames:
    // a ring used as a deque whose gains rise from front to back.
    std::vector<double> minGain_;
    std::vector<uint64_t> minFrame_;
    int minHead_ = 0, minCount_ = 0;
    uint64_t frame_ = 0;

    double envelope_ = 1.0;  // held minimum with exponential release

    // Moving average of the envelope over window_ frames: turns each drop into a ramp
    // that ends exactly when the loud frame leaves the delay line.
    std::vector<double> box_;
    int boxPos_ = 0;
    double boxSum_ = 0;
    int boxBelowUnity_ = 0;  // while zero the gain is exactly 1

    std::atomic<bool> enabled_{true};
    std::atomic<float> lastGain_{1.0f};
};

}  // namespace velaro::dsp
