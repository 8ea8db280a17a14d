// velaro-deck: the desktop program.
//
// usage: velaro-deck [--screenshot FILE.png [--open SONG [--play-ms N]] [--show-player | --show-mini]]
//                    [--cd-image IMAGE.cue]...

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "core/cd/frm_demo.h"
#include "core/base/paths.h"
#include "engine/engine_platform.h"
#include "gui/cd_window.h"
#include "gui/main_window.h"
#include "gui/meter_window.h"
#include "gui/playlist_window.h"
#include "engine/media_graph_engine.h"
#include "gui/mini_window.h"
#include "gui/player_window.h"
#include "gui/qt_dialogs.h"
#include "gui/qt_loop.h"
#include "gui/qt_window_service.h"
#include "gui/silent_device.h"
#include "gui/tags_window.h"
#include "core/tags/frm_tags.h"

using namespace velaro;

namespace {

struct Options {
    std::string screenshot;
    std::string open;
    int playMs = -1;
    std::vector<std::string> cdImages;  // disc images the CD window lists after the drives
    // Which face of the skinned player to show (for a screenshot): "player" or "mini".
    std::string face;
};

bool parse(int argc, char** argv, Options& o) {
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        auto next = [&](std::string& v) {
            if (i + 1 >= argc) return false;
            v = argv[++i];
            return true;
        };
        std::string v;
        if (a == "--screenshot" && next(o.screenshot)) continue;
        if (a == "--open" && next(v)) {
            std::error_code ec;
            o.open = std::filesystem::absolute(v, ec).string();
            continue;
        }
        if (a == "--cd-image" && next(v)) {
            std::error_code ec;
            o.cdImages.push_back(std::filesystem::absolute(v, ec).string());
            continue;
        }
        if (a == "--play-ms" && next(v)) {
            o.playMs = std::atoi(v.c_str());
            if (o.playMs >= 0) continue;
        }
        if (a == "--show-player") {
            o.face = "player";
            continue;
        }
        if (a == "--show-mini") {
            o.face = "mini";
            continue;
        }
        if (a == "--help" || a == "-h") return false;
        std::fprintf(stderr, "velaro-deck: unknown or incomplete option %s\n", a.c_str());
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    Options o;
    if (!parse(argc, argv, o)) {
        std::fprintf(stderr,
                     "usage: velaro-deck [--screenshot FILE.png [--open SONG [--play-ms N]] [--show-player | "
                     "--show-mini]] [--cd-image IMAGE.cue]...\n");
        return 2;
    }
    // A screenshot needs no screen.
    if (!o.screenshot.empty() && !std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);
    QApplication::setApplicationName("VELARO DECK");
    QApplication::setDesktopFileName("velaro-deck");

    gui::QtLoop loop;
    gui::QtDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    engine::EnginePlatform ep(44100);
    song::frmMain form(rt, ep.get());
    gui::MainWindow window(form);
    dialogs.setParent(&window);
    gui::MeterWindow meter(*ep.get().meter, &window);
    form.meterStart = [&] { meter.start(); };
    form.meterStop = [&] { meter.stop(); };
    for (const std::string& image : o.cdImages) ep.cd().addDrive(image);
    cd::frmDemo ripper(rt, ep.get(), &form);
    gui::CdWindow ripperWindow(ripper, &window);
    form.showCdRipper = [&] { ripper.showModal(); };
    // The playlist lives for the whole run: hidden, not unloaded, between shows.
    player::pList playlist(rt, ep.get(), applicationFolder());
    gui::PlaylistWindow playlistWindow(playlist, &window);
    form.showPlaylist = [&] {
        player::playlistSelection.clear();
        playlist.showModal();
        return player::playlistSelection;
    };

    // The tag editor and its lyrics window, made on first use from the MP3 menu.
    tags::TagsState tagsState;
    settings::mConfig settingsConfig;
    // The skinned player and its compact face, with a media graph of their own;
    // nothing shows them but the options below, and the editor drives the player.
    gui::QtWindowService windowService;
    player::PlayerModule playerModule;
    engine::EngineMediaGraph playerGraph(ep.audio());
    player::MusicMp3 musicPlayer(rt, tagsState, settingsConfig, playerModule, playerGraph);
    gui::PlayerWindow playerWindow(musicPlayer);
    gui::MiniWindow miniWindow(musicPlayer.frmMini);
    windowService.attach(musicPlayer, &playerWindow);
    windowService.attach(musicPlayer.frmMini, &miniWindow);
    musicPlayer.windows = &windowService;
    musicPlayer.endProgram = [&] { QTimer::singleShot(0, &app, [] { QApplication::exit(0); }); };

    std::unique_ptr<tags::FrmTags> frmTags;
    std::unique_ptr<gui::TagsWindow> tagsWindow;
    form.showTags = [&] {
        if (!frmTags) {
            frmTags = std::make_unique<tags::FrmTags>(rt, tagsState, settingsConfig, ep.media());
            frmTags->skinned.enamenu = [&] { form.enamenu(); };
            musicPlayer.attachEditor(*frmTags);
            tagsWindow = std::make_unique<gui::TagsWindow>(*frmTags, &window);
        }
        frmTags->show();
    };

    int exitCode = 0;
    form.endProgram = [&](int code) {
        exitCode = code;
        QTimer::singleShot(0, &app, [code] { QApplication::exit(code); });
    };

    // With no sound card, or when it goes, the song still runs, silently.
    gui::DeviceOrSilence device(ep.audio(), window);
    if (device.silent()) std::fprintf(stderr, "velaro-deck: no sound device; playing silently\n");

    form.load();
    if (form.ended) return exitCode;
    window.setWindowTitle(QString::fromStdString(form.caption).trimmed());
    window.show();

    if (!o.open.empty()) {
        form.setSongPath(o.open);
        form.OpenFile();
        if (o.playMs >= 0) form.Cmd_Play_Click();
    }
    if (!o.face.empty()) {
        musicPlayer.load();
        musicPlayer.show();
        if (o.face == "mini") player::Switch_Mini(musicPlayer, true);
    }
    if (!o.screenshot.empty()) {
        const int wait = o.playMs >= 0 ? o.playMs : 300;
        QTimer::singleShot(wait, &app, [&] {
            QWidget& shown = o.face == "player" ? static_cast<QWidget&>(playerWindow)
                             : o.face == "mini" ? static_cast<QWidget&>(miniWindow)
                                                : static_cast<QWidget&>(window);
            const bool saved = shown.grab().save(QString::fromStdString(o.screenshot));
            if (!saved) std::fprintf(stderr, "velaro-deck: cannot write %s\n", o.screenshot.c_str());
            QApplication::exit(saved ? 0 : 1);
        });
    }
    const int code = app.exec();
    ep.audio().stopDevice();
    return form.ended ? exitCode : code;
}
