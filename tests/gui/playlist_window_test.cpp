// The playlist window, offscreen, as a user meets it: File > Playlist, drop a
// folder of MP3s and songs on the list, sort by artist, save, reopen, double-
// click a song, and the main window opens it. Then the collapse on screen.

#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QApplication>
#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QUrl>

#include <filesystem>

#include "core/base/paths.h"
#include "core/ui/scripted_dialogs.h"
#include "engine/engine_platform.h"
#include "gui/main_window.h"
#include "gui/playlist_window.h"
#include "gui/qt_loop.h"
#include "gui/silent_device.h"

using namespace velaro;
namespace fs = std::filesystem;

namespace {

std::string id3(const std::string& title, const std::string& artist) {
    std::string t = "TAG";
    for (const auto& [text, w] : {std::pair{title, 30}, {artist, 30}, {std::string(), 64}, {std::string(), 30}}) {
        std::string f = text;
        f.resize(static_cast<size_t>(w), ' ');
        t += f;
    }
    t.resize(127, ' ');
    return t + '\0';
}

QAction* actionNamed(QMenu* menu, const QString& text) {
    for (QAction* a : menu->actions()) {
        if (a->text() == text) return a;
        if (a->menu())
            if (QAction* sub = actionNamed(a->menu(), text)) return sub;
    }
    return nullptr;
}

void drop(QTreeWidget* list, const std::vector<std::string>& paths) {
    auto* mime = new QMimeData;
    QList<QUrl> urls;
    for (const auto& p : paths) urls.append(QUrl::fromLocalFile(QString::fromStdString(p)));
    mime->setUrls(urls);
    // A drop lands only where the drag entered first, as from the desktop.
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(list->viewport(), &enter);
    QDropEvent ev(QPointF(20, 20), Qt::CopyAction, mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(list->viewport(), &ev);
    delete mime;
}

}  // namespace

TEST(PlaylistWindow, DropSortSaveReopenAndPick) {
    std::string tmpl = tempFolder() + "/plguiXXXXXX";
    const std::string dir = mkdtemp(tmpl.data());
    fs::create_directories(dir + "/night/older");
    writeWholeFile(dir + "/night/b.mp3", std::string(1000, '\0') + id3("Volare", "Modugno"));
    writeWholeFile(dir + "/night/a.mp3", std::string(1000, '\0') + id3("Azzurro", "Celentano"));
    writeWholeFile(dir + "/night/older/c.mp3", std::string(1000, '\0') + id3("Caruso", "Dalla"));
    fs::copy_file(VELARO_DEMO_SONG, dir + "/night/grace.mid");

    gui::QtLoop loop;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    engine::EnginePlatform ep(44100);
    song::frmMain form(rt, ep.get());
    gui::MainWindow window(form);
    gui::SilentDevice device(ep.audio());
    player::pList playlist(rt, ep.get(), dir);
    gui::PlaylistWindow plw(playlist, &window);
    form.showPlaylist = [&] {
        player::playlistSelection.clear();
        playlist.showModal();
        return player::playlistSelection;
    };
    form.load();
    ASSERT_FALSE(form.ended);
    window.show();

    bool sawRows = false;
    QTimer::singleShot(50, [&] {
        ASSERT_TRUE(plw.isVisible());
        EXPECT_EQ(plw.windowTitle(), "Velaro PlayList");
        drop(plw.list(), {dir + "/night"});
        ASSERT_EQ(plw.list()->topLevelItemCount(), 4);
        // Sub-folders first, then the folder's own files; songs show their path.
        EXPECT_EQ(plw.list()->topLevelItem(0)->text(1), "Caruso");
        actionNamed(plw.popup(playlist.mnuSort), "&Artista/Titolo")->trigger();
        QCoreApplication::processEvents();
        EXPECT_EQ(plw.list()->topLevelItem(0)->text(1), "Azzurro");
        EXPECT_EQ(plw.list()->topLevelItem(3)->text(1), QString::fromStdString(dir + "/night/grace"));
        EXPECT_EQ(plw.list()->topLevelItem(3)->text(0), "4");
        dialogs.answerFile(dir + "/night.mpl");
        actionNamed(plw.popup(playlist.mnuSort), "&Salva")->trigger();
        plw.findChild<QPushButton*>("cmdClear")->click();
        QCoreApplication::processEvents();
        EXPECT_EQ(plw.list()->topLevelItemCount(), 0);
        dialogs.answerFile(dir + "/night.mpl");
        plw.findChild<QPushButton*>("CmdOpenlist")->click();
        QCoreApplication::processEvents();  // the list follows its model on the next turn
        ASSERT_EQ(plw.list()->topLevelItemCount(), 4);
        EXPECT_EQ(plw.windowTitle().toStdString(), "Velaro PlayList    " + dir + "/night.mpl");
        sawRows = true;
        emit plw.list()->itemDoubleClicked(plw.list()->topLevelItem(3), 1);
    });
    form.pLmenu.userClick();  // returns when the pick hides the window

    EXPECT_TRUE(sawRows);
    EXPECT_FALSE(plw.isVisible());
    EXPECT_EQ(player::playlistSelection, dir + "/night/grace.mid");
    EXPECT_EQ(form.CMDialog1.FileName, dir + "/night/grace.mid");
    EXPECT_EQ(readWholeFile(dir + "/night.mpl"), dir + "/night/a.mp3\r\n" + dir + "/night/older/c.mp3\r\n" + dir +
                                                  "/night/b.mp3\r\n" + dir + "/night/grace.mid\r\n");

    // Shown again, the list is still there; collapsing leaves the buttons and boxes.
    QTimer::singleShot(50, [&] {
        EXPECT_EQ(plw.list()->topLevelItemCount(), 4);
        EXPECT_TRUE(plw.list()->topLevelItem(3)->font(1).bold());
        const int tall = plw.height();
        const char* out = std::getenv("VELARO_PLAYLIST_SHOT");  // to look at the window by eye
        if (out) plw.grab().save(QString(out) + ".full.png");
        playlist.mnuHidePlaylist_Click();
        EXPECT_LT(plw.height(), tall / 3);
        EXPECT_TRUE(plw.findChild<QPushButton*>("cmdShowPlaylist")->isVisible());
        if (out) plw.grab().save(out);
        plw.findChild<QPushButton*>("cmdShowPlaylist")->click();
        EXPECT_EQ(plw.height(), tall);

        // "Opzioni" opens the options beside the list; closing them keeps what was ticked.
        actionNamed(plw.popup(playlist.mnuSort), "&Opzioni")->trigger();
        auto* options = plw.findChild<QWidget*>("frmOptions");
        ASSERT_NE(options, nullptr);
        EXPECT_TRUE(options->isVisible());
        EXPECT_EQ(options->windowTitle(), "Player Options");
        auto* confirm = options->findChild<QCheckBox*>("cbDelete");
        ASSERT_NE(confirm, nullptr);
        EXPECT_EQ(confirm->text(), "Conferma eliminazione Mp3");
        confirm->click();
        if (out) options->grab().save(QString(out) + ".options.png");
        options->close();
        EXPECT_TRUE(playlist.ConfirmDelete);
        plw.findChild<QPushButton*>("cmdRefresh")->click();  // Exit unloads
    });
    form.pLmenu.userClick();
    EXPECT_FALSE(playlist.loaded());
    EXPECT_EQ(player::playlistSelection, "");
    fs::remove_all(dir);
}
