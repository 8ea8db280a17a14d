// The sequencer's clock: music time at 768 ticks per quarter, tempo map,
// start point, master tempo, stop and end, on byte-built files.

#include <gtest/gtest.h>

#include "engine/audio_engine.h"
#include "engine/segment.h"
#include "engine/song_player.h"
#include "support/song_bytes.h"

using namespace velaro::engine;
using namespace velaro::testing;

namespace {

// Division 96: a quarter of file ticks is 768 music ticks.
std::string twoTempoSong() {
    std::string conductor = bytes({0x00}) + tempoEvent(500000) + vlq(96) + tempoEvent(250000) + vlq(192) +
                            meta(0x2F, "");
    std::string notes = bytes({0x00, 0xC0, 0x05, 0x00, 0x90, 0x3C, 0x64}) + vlq(96) +
                        bytes({0x3C, 0x00, 0x00, 0x3E, 0x64}) +  // running status
                        vlq(96) + bytes({0x80, 0x3E, 0x40}) + bytes({0x00, 0xF0, 0x03, 0x7E, 0x7F, 0xF7}) +
                        vlq(96) + meta(0x2F, "");
    return smfHeader(1, 2, 96) + smfTrack(conductor) + smfTrack(notes);
}

struct Clock : ::testing::Test {
    AudioEngine engine{44100};
    SongPlayer player{44100};
    Segment seg;
    void SetUp() override {
        ASSERT_TRUE(parseSmf(twoTempoSong(), seg));
        engine.addSource(&player);
    }
    void seconds(double s) { engine.render(static_cast<int64_t>(s * 44100)); }
};

}  // namespace

TEST(Segment, ParsesEventsTempoAndLength) {
    Segment seg;
    ASSERT_TRUE(parseSmf(twoTempoSong(), seg));
    EXPECT_EQ(seg.division, 96);
    EXPECT_EQ(seg.length, 3 * 768);
    ASSERT_EQ(seg.tempos.size(), 2u);
    EXPECT_EQ(seg.tempos[1].time, 768);
    EXPECT_EQ(seg.usPerQuarterAt(767), 500000);
    EXPECT_EQ(seg.usPerQuarterAt(768), 250000);
    // program, note on, running-status note off and note on, note off
    ASSERT_EQ(seg.events.size(), 5u);
    EXPECT_EQ(seg.events[2].status, 0x90);
    EXPECT_EQ(seg.events[2].data2, 0);
    EXPECT_EQ(seg.events[3].time, 768);
    EXPECT_EQ(seg.events[4].time, 1536);
    EXPECT_FALSE(parseSmf("not midi", seg));
}

TEST(Segment, SurvivesBrokenFiles) {
    const std::string good = twoTempoSong();
    Segment seg;
    for (size_t n = 0; n <= good.size(); ++n) parseSmf(good.substr(0, n), seg);
    std::string liar = good;
    liar[14 + 7] = 0x7F;  // first track claims far more bytes than there are
    EXPECT_TRUE(parseSmf(liar, seg));
    std::string vlqRun = smfHeader(0, 1, 96) + smfTrack(std::string(40, '\xFF'));
    EXPECT_TRUE(parseSmf(vlqRun, seg));
    EXPECT_TRUE(seg.events.empty());
}

TEST_F(Clock, MusicTimeFollowsTheTempoMap) {
    player.play(&seg, 0);
    seconds(0.5);  // one quarter at 120 BPM
    EXPECT_NEAR(player.seekTicks(), 768, 1);
    seconds(0.25);  // one quarter at 240 BPM
    EXPECT_NEAR(player.seekTicks(), 1536, 1);
    EXPECT_TRUE(player.playing());
    seconds(1.0);  // past the end: it stops there
    EXPECT_EQ(player.seekTicks(), 3 * 768);
    EXPECT_FALSE(player.playing());
}

TEST_F(Clock, StartPointAndMasterTempo) {
    player.play(&seg, 768);
    EXPECT_EQ(player.seekTicks(), 768);  // known at once, before any block
    seconds(0.125);
    EXPECT_NEAR(player.seekTicks(), 768 + 384, 1);

    player.setMasterTempo(0.0f);  // stands still
    seconds(1.0);
    EXPECT_NEAR(player.seekTicks(), 768 + 384, 1);
    EXPECT_TRUE(player.playing());

    player.play(&seg, 0);
    player.setMasterTempo(2.0f);
    seconds(0.25);
    EXPECT_NEAR(player.seekTicks(), 768, 1);
}

TEST_F(Clock, StopHoldsThePosition) {
    player.play(&seg, 0);
    seconds(0.25);
    player.stop();
    seconds(0.5);
    EXPECT_NEAR(player.seekTicks(), 384, 1);
    EXPECT_FALSE(player.playing());
    const double perf = player.musicTicks();
    seconds(0.5);
    EXPECT_GT(player.musicTicks(), perf);  // the performance's own clock goes on
}
