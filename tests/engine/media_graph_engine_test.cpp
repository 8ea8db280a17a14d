// The tag editor's player on the audio engine, rendered offline: a file at
// another rate plays at the engine's, positions follow the frames played,
// pause holds, the volume scales, and Release lets go of the file. Then the
// editor's whole round on a real MP3 with it.

#include <gtest/gtest.h>

#include <dirent.h>
#include <lame/lame.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <vector>

#include "core/base/paths.h"
#include "core/tags/frm_tags.h"
#include "core/ui/headless.h"
#include "engine/audio_engine.h"
#include "engine/media_graph_engine.h"
#include "support/tone_wav.h"

using namespace velaro;

namespace {

bool fileIsOpen(const std::string& path) {
    const auto target = std::filesystem::canonical(path);
    for (const auto& e : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ec;
        if (std::filesystem::read_symlink(e.path(), ec) == target) return true;
    }
    return false;
}

struct Rendered {
    double peak = 0;
    int64_t frames = 0;
};

Rendered render(engine::AudioEngine& audio, int64_t frames) {
    Rendered r;
    audio.setSink([&](const float* f, int n) {
        for (int i = 0; i < n * 2; ++i) r.peak = std::max(r.peak, double(std::fabs(f[i])));
        r.frames += n;
    });
    audio.render(frames);
    audio.setSink(nullptr);
    return r;
}

}  // namespace

TEST(EngineMediaGraph, PlaysPausesSeeksAndLetsGo) {
    const std::string wav = ::testing::TempDir() + "/graph-tone.wav";
    velaro::testing::writeTone(wav, {.rate = 22050, .channels = 1, .seconds = 2.0, .amplitude = 0.5});
    engine::AudioEngine audio(44100);
    engine::EngineMediaGraph graph(audio, false);
    EXPECT_FALSE(graph.RenderFile("/nonexistent.wav"));
    EXPECT_EQ(graph.State(), 0);
    ASSERT_TRUE(graph.RenderFile(wav));
    EXPECT_NEAR(graph.Duration(), 2.0, 0.01);
    EXPECT_FALSE(fileIsOpen(wav));  // read whole, the file is free at once

    EXPECT_EQ(render(audio, 4410).peak, 0.0);  // not running yet
    graph.Run();
    EXPECT_EQ(graph.State(), 2);
    EXPECT_NEAR(render(audio, 44100).peak, 0.5, 0.02);
    EXPECT_NEAR(graph.CurrentPosition(), 1.0, 0.001);
    graph.Pause();
    render(audio, 4410);
    EXPECT_NEAR(graph.CurrentPosition(), 1.0, 0.001);
    graph.SetVolume(-600);  // -6 dB
    graph.Run();
    EXPECT_NEAR(render(audio, 4410).peak, 0.5 * std::pow(10.0, -0.3), 0.02);
    graph.SetCurrentPosition(10);  // no further than the end
    EXPECT_NEAR(graph.CurrentPosition(), graph.Duration(), 1e-9);
    EXPECT_EQ(render(audio, 4410).peak, 0.0);
    graph.SetCurrentPosition(0.5);
    EXPECT_NEAR(graph.CurrentPosition(), 0.5, 1e-9);
    graph.Stop();
    graph.Release();
    EXPECT_EQ(graph.Duration(), 0.0);
    EXPECT_EQ(graph.State(), 0);
}

TEST(EngineMediaGraph, DecodesAheadOnItsWorker) {
    const std::string wav = ::testing::TempDir() + "/graph-ahead.wav";
    velaro::testing::writeTone(wav, {.seconds = 1.0});
    engine::AudioEngine audio(48000);
    engine::EngineMediaGraph graph(audio);
    ASSERT_TRUE(graph.RenderFile(wav));
    graph.Run();
    for (int i = 0; i < 400 && graph.CurrentPosition() < graph.Duration(); ++i) {
        render(audio, 4800);
        usleep(2000);
    }
    EXPECT_NEAR(graph.CurrentPosition(), 1.0, 0.001);
    graph.Release();
    EXPECT_FALSE(fileIsOpen(wav));
    ASSERT_TRUE(graph.RenderFile(wav));  // the same graph takes the next file
    graph.Release();
}

namespace {

}  // namespace

// Play, press Add at each line as the song goes, let it end, save, reopen.
TEST(EngineMediaGraph, TheEditorStampsARealSongAndKeepsItsAudio) {
    const std::string mp3 = ::testing::TempDir() + "/editor-round.mp3";
    const std::string audio = velaro::testing::mp3Tone(6.0);
    writeWholeFile(mp3, audio);
    ui::Headless h;
    engine::AudioEngine engine(44100);
    engine::EngineMediaGraph graph(engine, false);
    h.loop.attachAudio([&](int64_t frames) { engine.render(frames); }, 44100);
    tags::TagsState state;
    settings::mConfig config;
    config.appFolder = ::testing::TempDir() + "/editor-round-home";
    tags::FrmTags f(h.rt, state, config, graph);
    f.show();
    h.dialogs.answerFile(mp3);
    f.btnParcourSon.userClick();
    f.txtLyrics.setText("uno\r\ndue\r\ntre\r\n");
    f.cmdPlayer(1).userClick();
    for (int second : {1, 3, 5}) {
        h.loop.advance(second * 1000 - static_cast<int64_t>(graph.CurrentPosition() * 1000));
        f.cmdAdd.userClick();
    }
    EXPECT_EQ(f.txtLyrics.text(), "[00:01]uno\r\n[00:03]due\r\n[00:05]tre\r\n");
    EXPECT_EQ(f.lblTiempoT.caption(), "00:05");
    // At the end of the file the timer stops the player by itself and lets the file go.
    h.loop.advance(2000);
    EXPECT_EQ(state.PlayerState, "false");
    EXPECT_FALSE(fileIsOpen(mp3));
    f.txtTitle.setText("Round");
    f.fieldKeyDown('r');
    f.cmdApply.userClick();
    ASSERT_FALSE(h.dialogs.messageBoxes().empty());
    EXPECT_EQ(h.dialogs.messageBoxes().back().text, "Done!");
    const std::string saved = readWholeFile(mp3);
    EXPECT_EQ(saved.substr(0, audio.size()), audio);
    h.dialogs.answerFile(mp3);
    f.btnParcourSon.userClick();
    EXPECT_EQ(f.txtLyrics.text(), "[00:01]uno\r\n[00:03]due\r\n[00:05]tre\r\n");
    EXPECT_EQ(f.txtTitle.text(), "Round");
}
