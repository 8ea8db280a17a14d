#pragma once
// One peaking equaliser band on interleaved stereo (the cookbook's biquad):
// gain in dB at a centre, as wide as a bandwidth in octaves or, when Q is
// above 0, as narrow as Q says.

namespace velaro::dsp {

class PeakingEq {
public:
    // A centre outside (0, rate/2) or a zero width leaves the band flat.
    void design(double rate, double centerHz, double bandwidthOctaves, double q, double gainDb) noexcept;
    void process(float* lr, int frames) noexcept;
    void reset() noexcept;
    // The band's gain in dB at `hz` (what design made; for tests and tools).
    double responseDb(double rate, double hz) const noexcept;
    bool flat() const noexcept { return flat_; }

private:
    double b0_ = 1, b1_ = 0, b2_ = 0, a1_ = 0, a2_ = 0;
    double z_[2][2] = {};
    bool flat_ = true;
};

}  // namespace velaro::dsp
