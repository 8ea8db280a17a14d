// The backing player's peaking band: its gain at the centre is what was
// asked, far away it is flat, and a band it cannot make stays flat.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "dsp/peaking_eq.h"

using velaro::dsp::PeakingEq;

namespace {

// Gain in dB the band gives a sine of `hz`, measured on the samples after it settles.
double measured(PeakingEq& eq, double rate, double hz) {
    const int n = static_cast<int>(rate);
    std::vector<float> lr(2 * static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) lr[2 * i] = lr[2 * i + 1] = static_cast<float>(0.25 * std::sin(2 * M_PI * hz * i / rate));
    eq.reset();
    eq.process(lr.data(), n);
    double peak = 0;
    for (int i = n / 2; i < n; ++i) peak = std::max(peak, std::fabs(static_cast<double>(lr[2 * i + 1])));
    return 20 * std::log10(peak / 0.25);
}

}  // namespace

TEST(PeakingEq, GivesItsGainAtTheCentreAndNothingFarAway) {
    const double rate = 44100;
    for (const double centre : {100.0, 1500.0, 8000.0})
        for (const double gain : {10.0, 6.0, -9.0}) {
            PeakingEq eq;
            eq.design(rate, centre, 2.5, 0, gain);
            EXPECT_NEAR(measured(eq, rate, centre), gain, 0.5) << centre << " Hz, " << gain << " dB";
            EXPECT_NEAR(eq.responseDb(rate, centre), gain, 0.01);
            // Five octaves off the band has all but let go.
            const double far = centre >= 1000 ? centre / 32 : centre * 32;
            EXPECT_NEAR(measured(eq, rate, far), 0.0, 0.5) << far << " Hz";
        }
}

TEST(PeakingEq, QNarrowsTheBandWhenAboveZero) {
    PeakingEq wide, narrow;
    wide.design(44100, 1000, 2.5, 0, 10);
    narrow.design(44100, 1000, 2.5, 4, 10);
    EXPECT_NEAR(narrow.responseDb(44100, 1000), 10, 0.01);
    // An octave off, the narrow band is far below the wide one.
    EXPECT_LT(narrow.responseDb(44100, 2000), wide.responseDb(44100, 2000) - 3);
}

TEST(PeakingEq, ABandItCannotMakeLeavesTheSoundAlone) {
    for (const double centre : {0.0, -5.0, 22050.0, 30000.0, double(NAN)}) {
        PeakingEq eq;
        eq.design(44100, centre, 2.5, 0, 10);
        EXPECT_TRUE(eq.flat());
        std::vector<float> lr = {0.5f, -0.25f, 0.1f, 0.2f};
        eq.process(lr.data(), 2);
        EXPECT_EQ(lr, (std::vector<float>{0.5f, -0.25f, 0.1f, 0.2f}));
    }
    PeakingEq zeroWidth;
    zeroWidth.design(44100, 1000, 0, 0, 10);
    EXPECT_TRUE(zeroWidth.flat());
}
