// Both faces of the skinned player on screen (offscreen): painted from our
// strips, with the Spanish tool tips, and a press on a painted button
// reaching the model, the swap included.

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <QApplication>
#include <QListWidget>
#include <QImage>
#include <QMouseEvent>

#include "core/ui/headless.h"
#include "gui/mini_window.h"
#include "gui/player_window.h"
#include "support/fake_media_graph.h"

using namespace velaro;

namespace {

struct Faces {
    ui::Headless h;
    tags::TagsState state;
    settings::mConfig config;
    player::PlayerModule module;
    velaro::testing::ClockGraph graph{h.loop};
    player::MusicMp3 p{h.rt, state, config, module, graph};
    gui::PlayerWindow full{p};
    gui::MiniWindow mini{p.frmMini};
    Faces() {
        config.appFolder = std::string(std::getenv("VELARO_HOME") ? std::getenv("VELARO_HOME") : "/tmp") + "/faces";
        p.load();
        p.show();
        QApplication::processEvents();
    }
};

bool amber(QRgb c) { return qAlpha(c) > 200 && qRed(c) > 180 && qBlue(c) < 120; }
bool steel(QRgb c) { return qAlpha(c) > 200 && qBlue(c) >= qRed(c); }

void click(QWidget* w, QPoint at) {
    QMouseEvent press(QEvent::MouseButtonPress, at, w->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(w, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, at, w->mapToGlobal(at), Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    QApplication::sendEvent(w, &release);
}

}  // namespace

TEST(PlayerFaces, BothFacesArePaintedFromTheStripsWithTheirToolTips) {
    Faces f;
    const QImage face = f.full.grab().toImage();
    ASSERT_EQ(face.size(), QSize(360, 200));
    // The play button (element 1) at rest, then lit by the transport's refresh.
    const QPoint play(136 + 26 + 12, 150 + 15);
    EXPECT_TRUE(steel(face.pixel(play))) << std::hex << face.pixel(play);
    f.p.playState = "true";
    f.p.RefreshTransportButtons();
    EXPECT_TRUE(amber(f.full.grab().toImage().pixel(play)));
    EXPECT_TRUE(amber(f.mini.grab().toImage().pixel(3 + 19 + 9, 3 + 14)));

    QWidget* playButton = f.full.childAt(play);
    ASSERT_NE(playButton, nullptr);
    EXPECT_EQ(playButton->toolTip(), "X  Reproducir");
    EXPECT_EQ(f.full.childAt(136 + 5 * 20 + 9, 176 + 8)->toolTip(), "L  Lista Rep/Caratula");
    EXPECT_EQ(f.full.childAt(302 + 2 * 19 + 9, 9)->toolTip(), "Cerrar");
    EXPECT_EQ(f.full.childAt(302 + 9, 9)->toolTip(), "Minimizar");
    EXPECT_TRUE(f.full.windowFlags() & Qt::FramelessWindowHint);

    const QImage small = f.mini.grab().toImage();
    EXPECT_EQ(small.size(), QSize(306, 22));
    EXPECT_TRUE(steel(small.pixel(3 + 9, 3 + 2)));
    EXPECT_TRUE(f.mini.windowFlags() & Qt::FramelessWindowHint);
}

TEST(PlayerFaces, APressOnAPaintedButtonReachesThePlayer) {
    Faces f;
    const QPoint intro(136 + 2, 176 + 8);
    click(f.full.childAt(intro), QPoint(5, 5));
    EXPECT_TRUE(f.p.introActive);
    EXPECT_TRUE(amber(f.full.grab().toImage().pixel(intro)));  // latched

    // The position knob follows the model along its groove.
    QWidget* knob = f.full.childAt(136 + 6, 128 + 6);
    ASSERT_NE(knob, nullptr);
    EXPECT_EQ(f.full.childAt(136 + 64 + 6, 128 + 6), nullptr);
    f.p.imgNormal(15).setLeft(64);
    EXPECT_EQ(f.full.childAt(136 + 64 + 6, 128 + 6), knob);

    // "Mini Mascara": the compact face shows where the model placed it.
    f.full.move(400, 300);
    click(f.full.childAt(302 + 19 + 9, 9), QPoint(5, 5));
    QApplication::processEvents();
    EXPECT_TRUE(f.state.MiniMode);
    EXPECT_FALSE(f.full.isVisible());
    EXPECT_TRUE(f.mini.isVisible());
    EXPECT_EQ(f.mini.pos(), QPoint(400 + 302 - 98 + 18, 300 + 1 - 3));
    // And back, from the compact face's own button.
    click(f.mini.childAt(98 + 9, 3 + 8), QPoint(5, 5));
    QApplication::processEvents();
    EXPECT_FALSE(f.state.MiniMode);
    EXPECT_TRUE(f.full.isVisible());
    EXPECT_EQ(f.full.pos(), QPoint(400, 300));
}

TEST(PlayerFaces, ALoadedTrackShowsItsCoverAndName) {
    const std::string dir = ::testing::TempDir() + "faces-" + std::to_string(getpid());
    std::filesystem::create_directories(dir);
    QImage red(64, 64, QImage::Format_RGB32);
    red.fill(QColor(200, 30, 30));
    ASSERT_TRUE(red.save(QString::fromStdString(dir + "/Front.jpg")));
    std::ofstream(dir + "/Una Cancion Larga Sin Etiquetas Del Todo.mp3", std::ios::binary) << std::string(4000, '\0');
    Faces f;
    f.module.albumCount = 1;
    f.p.picAlbum.load(1).tag = dir;
    f.p.Play_Album(1);
    f.state.PlayerFile = dir + "/" + f.p.ListaRep.list(0);
    f.p.Load_File_Tags();
    QApplication::processEvents();
    const QImage face = f.full.grab().toImage();
    const QRgb c = face.pixel(8 + 60, 24 + 60);
    EXPECT_GT(qRed(c), 150);
    EXPECT_LT(qGreen(c), 80);
    // The name is longer than the strip: it is drawn once, then blanked while the scroll timer runs.
    EXPECT_TRUE(f.p.Timer_Texto.enabled());
    face.save(QString::fromStdString(::testing::TempDir() + "player-face.png"));
    f.p.Front_Click();
    QApplication::processEvents();
    QWidget* under = f.full.childAt(8 + 60, 24 + 60);
    while (under && !under->inherits("QListWidget")) under = under->parentWidget();
    ASSERT_NE(under, nullptr);  // the list is in front of the cover now
    EXPECT_EQ(static_cast<QListWidget*>(under)->count(), 1);
}
