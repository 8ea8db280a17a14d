#include <gtest/gtest.h>

#include "dsp/level.h"

using namespace velaro::dsp;

TEST(Level, DecibelsAndMeterReadings) {
    EXPECT_FLOAT_EQ(gainFromHundredthsDb(0), 1.0f);
    EXPECT_NEAR(gainFromHundredthsDb(-600), 0.501f, 0.001f);
    EXPECT_NEAR(gainFromHundredthsDb(-3000), 0.0316f, 0.0001f);
    const float s[] = {0.1f, -0.5f, 0.25f, -2.0f};
    EXPECT_FLOAT_EQ(peak(s, 3), 0.5f);
    EXPECT_FLOAT_EQ(peak(s, 4), 1.0f);  // clipped
    EXPECT_EQ(peak(s, 0), 0.0f);
    EXPECT_EQ(meterPercent(0.0f), 0);
    EXPECT_EQ(meterPercent(1.0f), 100);
    EXPECT_EQ(meterPercent(0.001f), 0);     // -60 dB: the bottom
    EXPECT_EQ(meterPercent(0.0316228f), 50);  // -30 dB: half way
}
