#pragma once
// Small parts the song effects share: a parameter glide, a delay line read
// between samples, a biquad section. None allocates after construction.

#include <algorithm>
#include <cmath>
#include <vector>

namespace velaro::dsp {

inline constexpr double kPi = 3.14159265358979323846;

inline float dbToGain(double db) { return static_cast<float>(std::pow(10.0, db / 20.0)); }

// A value that glides to its target over about 20 ms, so that a slider moved
// while the song plays changes the sound without a step.
class Glide {
public:
    void setRate(int sampleRate, double ms = 20.0) {
        coeff_ = static_cast<float>(1.0 - std::exp(-1.0 / std::max(1.0, ms * 0.001 * sampleRate)));
    }
    void jump(float v) { now_ = target_ = v; }
    void set(float v) { target_ = v; }
    float target() const { return target_; }
    float value() const { return now_; }
    bool moving() const { return now_ != target_; }
    float next() {
        if (now_ != target_) {
            now_ += (target_ - now_) * coeff_;
            if (std::fabs(target_ - now_) < 1e-6f * std::max(1.0f, std::fabs(target_))) now_ = target_;
        }
        return now_;
    }

private:
    float now_ = 0, target_ = 0, coeff_ = 1;
};

// sin(2 pi phase) for a phase in [0, 1), within 0.1 %: enough for an LFO.
inline float lfoSine(double phase) {
    // The angle over pi, -1 to 1; a parabola through the sine's zeros and
    // peaks, then a correction of its shape.
    const float u = static_cast<float>(phase < 0.5 ? 2 * phase : 2 * phase - 2);
    const float y = 4 * u * (1 - std::fabs(u));
    return 0.225f * (y * std::fabs(y) - y) + y;
}

// A ring of past samples; read(d) gives the sample d frames ago, d >= 1,
// linear between samples.
class DelayLine {
public:
    void allocate(int frames) {
        size_ = 1;
        while (size_ < frames + 2) size_ <<= 1;
        buf_.assign(size_, 0.0f);
        pos_ = 0;
    }
    void clear() { std::fill(buf_.begin(), buf_.end(), 0.0f); }
    int capacity() const { return size_ - 2; }
    void push(float x) {
        pos_ = (pos_ + 1) & (size_ - 1);
        buf_[pos_] = x;
    }
    // A whole number of frames back, d >= 1: no interpolation.
    float at(int d) const { return buf_[(pos_ - d + 1) & (size_ - 1)]; }
    // Reads before the next push: read(1) is the newest sample pushed.
    float read(float d) const {
        d = std::clamp(d, 1.0f, static_cast<float>(size_ - 2));
        const int i = static_cast<int>(d);
        const float frac = d - static_cast<float>(i);
        const float a = buf_[(pos_ - i + 1 + size_) & (size_ - 1)];
        const float b = buf_[(pos_ - i + size_) & (size_ - 1)];
        return a + (b - a) * frac;
    }

private:
    std::vector<float> buf_;
    int size_ = 1;
    int pos_ = 0;
};

// Direct form II transposed; coefficients from the audio EQ cookbook.
class Biquad {
public:
    void peaking(double rate, double hz, double octaves, double db) {
        const double a = std::pow(10.0, db / 40.0), w = 2 * kPi * hz / rate;
        const double alpha = std::sin(w) * std::sinh(std::log(2.0) / 2 * octaves * w / std::sin(w));
        set(1 + alpha * a, -2 * std::cos(w), 1 - alpha * a, 1 + alpha / a, -2 * std::cos(w), 1 - alpha / a);
    }
    void lowpass(double rate, double hz, double q = 0.7071) {
        const double w = 2 * kPi * hz / rate, alpha = std::sin(w) / (2 * q), c = std::cos(w);
        set((1 - c) / 2, 1 - c, (1 - c) / 2, 1 + alpha, -2 * c, 1 - alpha);
    }
    // Peak gain 1 at the centre.
    void bandpass(double rate, double hz, double q) {
        const double w = 2 * kPi * hz / rate, alpha = std::sin(w) / (2 * q), c = std::cos(w);
        set(alpha, 0, -alpha, 1 + alpha, -2 * c, 1 - alpha);
    }
    void clear() { z1_ = z2_ = 0; }
    float process(float x) {
        const double y = b0_ * x + z1_;
        z1_ = b1_ * x - a1_ * y + z2_;
        z2_ = b2_ * x - a2_ * y;
        return static_cast<float>(y);
    }

private:
    void set(double b0, double b1, double b2, double a0, double a1, double a2) {
        b0_ = b0 / a0, b1_ = b1 / a0, b2_ = b2 / a0, a1_ = a1 / a0, a2_ = a2 / a0;
    }
    double b0_ = 1, b1_ = 0, b2_ = 0, a1_ = 0, a2_ = 0;
    double z1_ = 0, z2_ = 0;
};

}  // namespace velaro::dsp
