// The skinned player on the real media graph, rendered offline on the virtual
// clock: a LAME-encoded MP3 and a wave file of one folder play one after the
// other, the position follows the frames played, mute holds from the next start.

#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "core/player/music_mp3.h"
#include "core/ui/headless.h"
#include "engine/audio_engine.h"
#include "engine/media_graph_engine.h"
#include "support/tone_wav.h"

using namespace velaro;

TEST(MusicMp3Engine, PlaysTheFolderThroughToTheEnd) {
    const std::string dir = ::testing::TempDir() + "player-engine-" + std::to_string(getpid());
    std::filesystem::create_directories(dir);
    velaro::testing::writeTone(dir + "/source.tmp", {.seconds = 1.5, .amplitude = 0.5});
    const std::string cmd = "lame --quiet -b 128 '" + dir + "/source.tmp' '" + dir + "/a.mp3' 2>/dev/null";
    if (std::system(cmd.c_str()) != 0) GTEST_SKIP() << "lame is not installed";
    velaro::testing::writeTone(dir + "/b.wav", {.rate = 22050, .channels = 1, .seconds = 1.0, .amplitude = 0.5});

    ui::Headless h;
    engine::AudioEngine audio(44100);
    engine::EngineMediaGraph graph(audio, false);
    tags::TagsState state;
    settings::mConfig config;
    config.appFolder = dir + "/home";
    player::PlayerModule module;
    player::MusicMp3 p(h.rt, state, config, module, graph);
    double peak = 0;
    audio.setSink([&](const float* f, int n) {
        for (int i = 0; i < n * 2; ++i) peak = std::max(peak, double(std::fabs(f[i])));
    });
    h.loop.attachAudio([&](int64_t frames) { audio.render(frames); }, 44100);
    p.load();

    module.albumCount = 1;
    p.picAlbum.load(1).tag = dir;
    p.Play_Album(1);
    ASSERT_EQ(p.ListaRep.listCount(), 2);
    p.ListaRep.setListIndex(0);
    EXPECT_EQ(state.PlayerFile, dir + "/a.mp3");
    EXPECT_EQ(p.lblDuracion.caption(), "00:01");
    EXPECT_EQ(p.lblBitrate.caption(), "128 Kbps");
    EXPECT_EQ(p.module.scrollText, "a");  // no tags: the file name goes to the strip
    h.loop.advance(1050);
    EXPECT_EQ(p.lblTiempoT.caption(), "00:01");
    EXPECT_NEAR(graph.CurrentPosition(), 1.05, 0.06);
    EXPECT_NEAR(peak, 0.5, 0.05);

    h.loop.advance(700);  // past the end of the MP3: the wave file follows
    EXPECT_EQ(state.PlayerFile, dir + "/b.wav");
    EXPECT_EQ(p.lblTrackRep.caption(), "Track 2 of 2");
    EXPECT_EQ(p.playState, "true");

    p.Player_Mute();
    p.Play();  // again from the top, silent once the level has glided down
    h.loop.advance(300);
    peak = 0;
    h.loop.advance(200);
    EXPECT_LT(peak, 1e-4);
    EXPECT_EQ(graph.Volume(), -10000);
    h.loop.advance(800);
    EXPECT_EQ(p.playState, "false");  // the last track, no album after it
    EXPECT_EQ(p.lblTiempoT.caption(), "00:00");
    EXPECT_EQ(graph.Duration(), 0.0);  // released
}
