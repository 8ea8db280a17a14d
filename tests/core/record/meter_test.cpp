// The needle meters' arithmetic: one sample every 256 bytes, the level by
// format, the angle from 18 to 75, the smoothing over four buffers and the
// needle's line.

#include <gtest/gtest.h>

#include <cmath>

#include "core/record/meter.h"

using velaro::record::LevelMeter;

namespace {
std::vector<uint8_t> filled(size_t n, std::initializer_list<uint8_t> frame) {
    std::vector<uint8_t> b;
    while (b.size() < n)
        for (uint8_t v : frame) b.push_back(v);
    b.resize(n);
    return b;
}
}  // namespace

TEST(LevelMeter, SilenceRestsAt18AndFullScaleStopsAt75InEveryFormat) {
    struct Case {
        int32_t format;
        std::initializer_list<uint8_t> silence, loud;
    };
    const Case cases[] = {
        {0x100, {128}, {0}},
        {0x20, {128, 128}, {255, 0}},
        {4, {0, 0}, {0, 0x80}},
        {0x800, {0, 0, 0, 0}, {0xFF, 0x7F, 0, 0x80}},
    };
    for (const Case& c : cases) {
        LevelMeter m;
        m.meterFormat = c.format;
        ASSERT_TRUE(m.meterBuffer(filled(4096, c.silence), 0, 4095));
        EXPECT_EQ(m.leftLevel, 18) << c.format;
        EXPECT_EQ(m.rightLevel, 18) << c.format;
        ASSERT_TRUE(m.meterBuffer(filled(4096, c.loud), 0, 4095));
        EXPECT_EQ(m.leftLevel, 75) << c.format;
        // Mono formats leave the right sum empty: its needle rests.
        const bool stereo = c.format == 0x20 || c.format == 0x800;
        EXPECT_EQ(m.rightLevel, stereo ? 75 : 18) << c.format;
    }
}

TEST(LevelMeter, SixteenBitSamplesAreReadByTheirHighByteWithTheLowAsAFraction) {
    LevelMeter m;
    m.meterFormat = 0x400;
    m.calibrationFactor = 1.0f;
    // High byte 16, or -16: level 16 -> 16/128 x 75 + 18 = 27.375 -> 27.
    ASSERT_TRUE(m.meterBuffer(filled(1024, {0x00, 0x10}), 0, 1023));
    EXPECT_EQ(m.leftLevel, 27);
    ASSERT_TRUE(m.meterBuffer(filled(1024, {0x00, 0xF0}), 0, 1023));
    EXPECT_EQ(m.leftLevel, 27);
    // 0x7F + 0x80/256 = 127.5 rounds to 128, which wraps to -128: full scale.
    ASSERT_TRUE(m.meterBuffer(filled(1024, {0x80, 0x7F}), 0, 1023));
    EXPECT_EQ(m.leftLevel, 75);
    // 0x40 + 0x80/256 = 64.5 goes to the even 64; 64/128 x 75 + 18 = 55.5 to the even 56.
    ASSERT_TRUE(m.meterBuffer(filled(1024, {0x80, 0x40}), 0, 1023));
    EXPECT_EQ(m.leftLevel, 56);
}

TEST(LevelMeter, OnlyEvery256thByteIsSampledAndARingWrapsPastItsTop) {
    LevelMeter m;
    m.meterFormat = 1;
    m.calibrationFactor = 1.0f;
    std::vector<uint8_t> b(1000, 128);
    b[256] = 0;  // sampled: v = 128 among four samples -> sqrt(128^2 / 4) = 64
    b[257] = 0;  // not sampled
    ASSERT_TRUE(m.meterBuffer(b, 0, 999));
    EXPECT_EQ(m.leftLevel, 18 + 38);  // 64 / 128 x 75 + 18 = 55.5 -> 56
    // Past the top, i becomes i - top + 1: from 900 the second step reads 1156 - 999 + 1 = 158.
    std::vector<uint8_t> r(1000, 128);
    r[158] = 0;
    ASSERT_TRUE(m.meterBuffer(r, 900, 1156));
    EXPECT_EQ(m.leftLevel, 71);  // sqrt(128^2 / 2) = 90.5 -> 91 -> 71.3
}

TEST(LevelMeter, UnknownFormatsReadNothingAndBadBuffersLeaveTheNeedles) {
    LevelMeter m;
    m.meterFormat = 0x3;
    ASSERT_TRUE(m.meterBuffer(filled(512, {0}), 0, 511));
    EXPECT_EQ(m.leftLevel, 18);
    m.meterFormat = 0x800;
    const auto before = m.leftHistory;
    EXPECT_FALSE(m.meterBuffer(filled(512, {0}), 10, 5));     // nothing between start and end
    EXPECT_FALSE(m.meterBuffer(filled(512, {0}), 0, 2000));   // reaches past the ring
    EXPECT_FALSE(m.meterBuffer({}, 0, 0));
    EXPECT_EQ(m.leftHistory, before);
}

TEST(LevelMeter, TheNeedleIsTheMeanOfTheNewAngleAndTheThreeBefore) {
    LevelMeter m;
    m.meterFormat = 8;
    const auto loud = filled(1024, {0, 0x80, 0, 0x80});
    std::vector<int> seen;
    for (int i = 0; i < 4; ++i) {
        m.meterBuffer(loud, 0, 1023);
        seen.push_back(m.leftAngle());
    }
    // 75/4 = 18.75 -> 19; (75+19)/4 = 23.5 -> 24; (75+19+24)/4 = 29.5 -> 30; (75+19+24+30)/4 = 37.
    EXPECT_EQ(seen, (std::vector<int>{19, 24, 30, 37}));
    EXPECT_EQ(m.leftHistory, (std::array<int16_t, 4>{37, 37, 30, 24}));
    // The rounding stops a falling needle short of the rest angle: (18 + 3 x 20) / 4 = 19.5 -> 20.
    const auto quiet = filled(1024, {0, 0, 0, 0});
    for (int i = 0; i < 40; ++i) m.meterBuffer(quiet, 0, 1023);
    EXPECT_EQ(m.leftAngle(), 20);
}

TEST(LevelMeter, NeedleLinesRunFromTheHubToTheArc) {
    LevelMeter m;
    m.meterWidth = 200;
    m.meterHeight = 300;
    const auto rest = m.needle(18);
    EXPECT_DOUBLE_EQ(rest.x1, 100);
    EXPECT_DOUBLE_EQ(rest.y1, 90);
    EXPECT_NEAR(rest.x2, std::abs(100 * std::cos(18 * 0.0174532925199) - 100), 1e-9);
    EXPECT_NEAR(rest.y2, 300 - 300 * std::sin(18 * 0.0174532925199), 1e-9);
    const auto up = m.needle(90);
    EXPECT_NEAR(up.x2, 100, 1e-6);
    EXPECT_NEAR(up.y2, 0, 1e-6);
}
