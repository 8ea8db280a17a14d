#include "peaking_eq.h"

#include <cmath>
#include <complex>

namespace velaro::dsp {

namespace {
constexpr double kPi = 3.14159265358979323846;
}

void PeakingEq::design(double rate, double hz, double octaves, double q, double db) noexcept {
    flat_ = !(rate > 0 && hz > 0 && hz < rate / 2 && std::isfinite(db) && db != 0 &&
              ((q > 0 && std::isfinite(q)) || (octaves > 0 && std::isfinite(octaves))));
    if (flat_) {
        b0_ = 1, b1_ = b2_ = a1_ = a2_ = 0;
        return;
    }
    const double a = std::pow(10.0, db / 40.0), w = 2 * kPi * hz / rate, s = std::sin(w), c = std::cos(w);
    const double alpha = q > 0 ? s / (2 * q) : s * std::sinh(std::log(2.0) / 2 * octaves * w / s);
    const double a0 = 1 + alpha / a;
    b0_ = (1 + alpha * a) / a0;
    b1_ = -2 * c / a0;
    b2_ = (1 - alpha * a) / a0;
    a1_ = -2 * c / a0;
    a2_ = (1 - alpha / a) / a0;
}

void PeakingEq::process(float* lr, int frames) noexcept {
    if (flat_) return;
    for (int ch = 0; ch < 2; ++ch) {
        double z1 = z_[ch][0], z2 = z_[ch][1];
        for (int i = 0; i < frames; ++i) {
            const double x = lr[2 * i + ch];
            const double y = b0_ * x + z1;
            z1 = b1_ * x - a1_ * y + z2;
            z2 = b2_ * x - a2_ * y;
            lr[2 * i + ch] = static_cast<float>(y);
        }
        // Denormals would slow the audio thread down to a crawl in silence.
        z_[ch][0] = std::fabs(z1) < 1e-20 ? 0.0 : z1;
        z_[ch][1] = std::fabs(z2) < 1e-20 ? 0.0 : z2;
    }
}

void PeakingEq::reset() noexcept { z_[0][0] = z_[0][1] = z_[1][0] = z_[1][1] = 0; }

double PeakingEq::responseDb(double rate, double hz) const noexcept {
    const std::complex<double> z = std::polar(1.0, -2 * kPi * hz / rate);
    const std::complex<double> h = (b0_ + b1_ * z + b2_ * z * z) / (1.0 + a1_ * z + a2_ * z * z);
    return 20 * std::log10(std::abs(h));
}

}  // namespace velaro::dsp
