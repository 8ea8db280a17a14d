// The CD window, offscreen, on a generated disc image: it opens from the main
// window's menu, lists the tracks with CD-TEXT, rips one, and the main window
// takes the wave as its backing.

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QListWidget>
#include <QPushButton>
#include <QSlider>
#include <QTimer>

#include <cstdlib>
#include <filesystem>

#include "core/base/paths.h"
#include "core/cd/frm_demo.h"
#include "core/ui/scripted_dialogs.h"
#include "engine/engine_platform.h"
#include "gui/cd_window.h"
#include "gui/main_window.h"
#include "gui/qt_loop.h"
#include "support/cd_image.h"

using namespace velaro;

TEST(CdWindow, RipsATrackThatTheMainWindowTakesAsItsBacking) {
    const std::string dir = tempFolder() + "/gui-cd";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    velaro::testing::ImageDisc disc;
    disc.cdText = true;
    disc.title = "Album";
    disc.performer = "Band";
    disc.tracks = {{75 * 2, false, "First", "Ann"}, {75 * 3 + 1, false, "Second", "Bob"}};
    const std::string cue = velaro::testing::writeImage(dir, "disc", disc);
    // A hand-over clears the take in the application folder: this test keeps a folder of
    // its own, apart from the other window tests running beside it.
    const char* oldHome = std::getenv("VELARO_HOME");
    const std::string keepHome = oldHome ? oldHome : "";
    setenv("VELARO_HOME", (dir + "/home").c_str(), 1);

    gui::QtLoop loop;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    engine::EnginePlatform ep(44100);
    ep.cd().addDrive(cue);
    song::frmMain form(rt, ep.get());
    gui::MainWindow window(form);
    cd::frmDemo ripper(rt, ep.get(), &form);
    gui::CdWindow cdWindow(ripper, &window);
    form.showCdRipper = [&] { ripper.showModal(); };
    window.show();

    // The machine's own drives come first; the image is the last entry.
    std::vector<std::string> rows;
    bool shown = false;
    double seekedTo = -1;
    QTimer::singleShot(50, [&] {
        shown = cdWindow.isVisible();
        ripper.cmbCDDrives.setListIndex(ripper.cmbCDDrives.listCount() - 1);
        auto lists = cdWindow.findChildren<QListWidget*>();
        ASSERT_EQ(lists.size(), 1);
        for (int i = 0; i < lists[0]->count(); ++i) rows.push_back(lists[0]->item(i)->text().toStdString());
        ripper.optExtractMode(1).userClick();
        ripper.Cmdbutton(9).userClick();
        cdWindow.adjustSize();
        cdWindow.grab().save(QString::fromStdString(dir + "/cd-window.png"));
        ripper.Cmdbutton(9).userClick();
        ripper.optExtractMode(0).userClick();
        emit lists[0]->itemClicked(lists[0]->item(1));  // a click plays the track and allows extraction
        // Moving the position slider seeks in the playing track.
        auto sliders = cdWindow.findChildren<QSlider*>();
        ASSERT_FALSE(sliders.empty());
        sliders[0]->setValue(5000);
        const int64_t length = ep.cd().StreamGetLength(ripper.cdStream);
        seekedTo = static_cast<double>(ep.cd().ChannelGetPosition(ripper.cdStream)) / static_cast<double>(length);
        QPushButton* extract = nullptr;
        for (auto* b : cdWindow.findChildren<QPushButton*>())
            if (b->text() == "Extract") extract = b;
        ASSERT_NE(extract, nullptr);
        ASSERT_TRUE(extract->isEnabled());
        dialogs.answerMsgBox(ui::vbOK);
        dialogs.answerFile(dir + "/kept.wav");
        extract->click();
    });
    // A safety net: the window goes away even if a step above failed.
    QTimer::singleShot(20000, [&] { ripper.hide(); });
    form.cdRipper.userClick();

    EXPECT_TRUE(shown);
    EXPECT_NEAR(seekedTo, 0.5, 0.01);
    EXPECT_EQ(rows, (std::vector<std::string>{"01\tFirst / Ann\t[00:02]", "02\tSecond / Bob\t[00:03]"}));
    EXPECT_FALSE(cdWindow.isVisible());
    const std::string track = RPP(applicationFolder()) + "TRACK.WAV";
    EXPECT_EQ(fileLength(track), 44 + (75 * 3 + 1) * 2352);
    EXPECT_EQ(readWholeFile(dir + "/kept.wav"), readWholeFile(track));
    EXPECT_TRUE(form.usingRippedTrack);
    EXPECT_TRUE(form.CdWaveLoaded);
    EXPECT_EQ(form.LabelSongLength.caption(), "    From CdAudio TRACK2");
    EXPECT_TRUE(form.Cmdplw.visible() && form.Cmdplw.enabled());
    EXPECT_FALSE(form.Cmd_Play.enabled());
    if (oldHome) setenv("VELARO_HOME", keepHome.c_str(), 1);
    else unsetenv("VELARO_HOME");
}
