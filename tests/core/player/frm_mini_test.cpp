// The compact face: its buttons forward to the player, its time label
// switches between elapsed and remaining, and the swap places each face under
// the pressed button.

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "core/player/music_mp3.h"
#include "core/ui/headless.h"
#include "core/ui/recording_canvas.h"
#include "support/fake_media_graph.h"

using namespace velaro;
using namespace velaro::player;

namespace {

class FakeWindows : public platform::WindowService {
public:
    void setTopMost(ui::Form& w, bool on) override { calls.push_back("top " + w.name() + (on ? " on" : " off")); }
    bool layeredWindows() override { return true; }
    void setOpacity(ui::Form& w, int alpha) override { calls.push_back("alpha " + w.name() + " " + std::to_string(alpha)); }
    void startMove(ui::Form& w) override { calls.push_back("move " + w.name()); }
    std::vector<std::string> calls;
};

// A folder of one track, per test process.
std::string oneTrack(const std::string& name) {
    const std::string dir = ::testing::TempDir() + "mini-" + std::to_string(getpid()) + "-" + name;
    std::filesystem::create_directories(dir);
    std::ofstream(dir + "/t.mp3", std::ios::binary) << std::string(2000, '\0');
    return dir;
}

struct Faces {
    ui::Headless h;
    tags::TagsState state;
    settings::mConfig config;
    PlayerModule module;
    velaro::testing::ClockGraph graph{h.loop};
    FakeWindows windows;
    MusicMp3 p{h.rt, state, config, module, graph};
    FrmMini& m = p.frmMini;
    Faces() {
        config.appFolder = ::testing::TempDir() + "/mini-home";
        p.windows = &windows;
        p.load();
        p.show();
    }
    int lastCell(ui::PictureBox& b) {
        auto& c = dynamic_cast<ui::RecordingCanvas&>(b.canvas());
        for (auto it = c.entries().rbegin(); it != c.entries().rend(); ++it)
            if (it->op == ui::RecordingCanvas::Op::PaintCell) return it->cell;
        return -1;
    }
};

}  // namespace

TEST(FrmMini, TheSwapPlacesEachFaceUnderThePressedButton) {
    Faces f;
    f.p.Left = 3000, f.p.Top = 1500;
    f.p.imgNormal_MouseUp(13, 1);  // "Mini Mascara"
    EXPECT_TRUE(f.state.MiniMode);
    EXPECT_TRUE(f.config.MiniMode);
    EXPECT_FALSE(f.p.visible());
    EXPECT_TRUE(f.m.visible());
    // Minimise button at (302, 1), compact swap button at (98, 3), 18 wide.
    EXPECT_DOUBLE_EQ(f.m.Left, 302 * 15 + 3000 - 98 * 15 + 18 * 15);
    EXPECT_DOUBLE_EQ(f.m.Top, 1 * 15 + 1500 - 3 * 15);
    // Nothing sets the level: at 0 the new face is fully see-through.
    EXPECT_EQ(f.windows.calls, (std::vector<std::string>{"top frmMini off", "alpha frmMini 0"}));

    f.m.picNormal_MouseUp(5, 1);
    EXPECT_FALSE(f.state.MiniMode);
    EXPECT_TRUE(f.p.visible());
    EXPECT_FALSE(f.m.visible());
    // Both buttons are 18 wide: the full face comes back where it was.
    EXPECT_DOUBLE_EQ(f.p.Left, 3000);
    EXPECT_DOUBLE_EQ(f.p.Top, 1500);

    // A wider compact button moves the full face by the difference.
    f.m.picNormal(5).setWidth(30);
    f.config.windowAlpha = 100;
    f.config.alwaysOnTop = true;
    f.windows.calls.clear();
    Switch_Mini(f.p, true);
    Switch_Mini(f.p, false);
    EXPECT_DOUBLE_EQ(f.p.Left, 3000 + (30 - 18) * 15);
    EXPECT_EQ(f.windows.calls, (std::vector<std::string>{"top frmMini on", "alpha frmMini 100", "top MusicMp3 on",
                                                         "alpha MusicMp3 100"}));
}

TEST(FrmMini, ButtonsForwardAndPaintTheirCells) {
    const std::string dir = oneTrack("album");
    Faces f;
    Switch_Mini(f.p, true);
    f.module.albumCount = 1;
    f.p.ListaRep.setPath(dir);
    f.p.ListaRep.setListIndex(0);
    f.p.playState = "false";
    f.p.Stop_Player();

    f.m.picNormal_MouseDown(1, 1);
    EXPECT_EQ(f.lastCell(f.m.picNormal(1)), 1 * kMiniColumns + 1);
    f.m.picNormal_MouseUp(1, 1);  // Play
    EXPECT_EQ(f.p.playState, "true");
    EXPECT_EQ(f.graph.file, dir + "/t.mp3");
    // The player's refresh lights the same button on both faces.
    EXPECT_EQ(f.lastCell(f.m.picNormal(1)), 1 * kMiniColumns + 1);
    EXPECT_EQ(f.lastCell(f.p.imgNormal(1)), 1 * kBotonesColumns + 1);
    EXPECT_EQ(f.lastCell(f.m.picNormal(3)), 3);

    f.m.picNormal_MouseUp(2, 1);  // Pause
    EXPECT_EQ(f.p.playState, "pause");
    EXPECT_EQ(f.lastCell(f.m.picNormal(2)), 1 * kMiniColumns + 2);
    f.m.picNormal_MouseUp(3, 1);  // Stop
    EXPECT_EQ(f.p.playState, "false");

    // The first button has no pressed look.
    const int before = f.lastCell(f.m.picNormal(0));
    f.m.picNormal_MouseDown(0, 1);
    EXPECT_EQ(f.lastCell(f.m.picNormal(0)), before);

    // Keys reach the player's volume knob.
    f.m.Form_KeyPress('-');
    EXPECT_EQ(f.p.imgNormal(16).top(), 2);

    bool ended = false;
    f.p.endProgram = [&] { ended = true; };
    f.m.picNormal_MouseUp(6, 1);
    EXPECT_TRUE(ended);
    EXPECT_FALSE(f.p.loaded());
}

TEST(FrmMini, TheTimeLabelShowsRemainingUntilClicked) {
    const std::string dir = oneTrack("time");
    Faces f;
    f.module.albumCount = 1;
    f.p.ListaRep.setPath(dir);
    f.p.ListaRep.setListIndex(0);
    Switch_Mini(f.p, true);
    f.graph.duration = 200;
    f.graph.SetCurrentPosition(60.9);
    f.h.loop.advance(100);
    EXPECT_EQ(f.m.lblTiempoT.caption(), "-02:19");
    EXPECT_EQ(f.p.lblTiempoT.caption(), "00:00");  // the full face's label rests in mini mode
    f.m.lblTiempoT.userClick();
    EXPECT_TRUE(f.m.ShowElapsed);
    EXPECT_EQ(f.m.lblTiempoT.caption(), "-02:19");  // until the next tick
    f.h.loop.advance(100);
    EXPECT_EQ(f.m.lblTiempoT.caption(), "01:01");

    // A click on the compact strip clears the full path and toggles a scroll that does not fit.
    f.p.showFullPath = true;
    f.module.scrollText = "short";
    f.m.picScroll.userClick();
    EXPECT_FALSE(f.p.showFullPath);
    EXPECT_FALSE(f.p.Timer_Texto.enabled());
}
