// The rules of the device watch: when a device counts as lost, and when a
// late block is an underrun.

#include <gtest/gtest.h>

#include "engine/device_watch.h"

using namespace velaro::engine;

TEST(DeviceHealth, AStallIsALossOnlyPastItsTime) {
    DeviceHealth h(500, 3000);
    h.restart(0, 0);
    // The start-up: a full buffer, then a second's wait for the server.
    EXPECT_FALSE(h.lost(10, 6400, true, false));
    EXPECT_FALSE(h.lost(1200, 6400, true, false));
    EXPECT_FALSE(h.lost(1300, 7000, true, false));
    // Playing: frames move, then stand still.
    EXPECT_FALSE(h.lost(3500, 140000, true, false));
    EXPECT_FALSE(h.lost(3900, 140000, true, false));
    EXPECT_TRUE(h.lost(4000, 140000, true, false));
    // A stopped stream or a failing one is lost at once.
    h.restart(5000, 0);
    EXPECT_TRUE(h.lost(5001, 0, false, false));
    EXPECT_TRUE(h.lost(5001, 100, true, true));
    // A stream that never starts is lost once the start-up time is over.
    h.restart(10000, 0);
    EXPECT_FALSE(h.lost(12900, 0, true, false));
    EXPECT_TRUE(h.lost(13000, 0, true, false));
}

TEST(UnderrunCounter, OneEpisodeOneCount) {
    UnderrunCounter c;
    const int64_t cover = 100'000'000;  // 100 ms
    c.block(false, 0, cover);
    c.block(false, 90'000'000, cover);  // late, but the buffer lasted
    EXPECT_EQ(c.count(), 0);
    // A gap: several late blocks, then the clock moves on.
    c.block(false, 150'000'000, cover);
    c.block(false, 300'000'000, cover);
    c.block(false, 80'000'000, cover);  // not yet back under half the cover
    c.block(false, 120'000'000, cover);
    EXPECT_EQ(c.count(), 1);
    c.block(false, 10'000'000, cover);
    c.block(false, 150'000'000, cover);
    EXPECT_EQ(c.count(), 2);
    // The backend's own flag counts whatever the clock says, once per run of flags.
    c.block(false, 0, cover);
    c.block(true, 0, cover);
    c.block(true, 0, cover);
    EXPECT_EQ(c.count(), 3);
    c.block(false, 0, cover);
    c.block(true, 0, cover);
    EXPECT_EQ(c.count(), 4);
}
