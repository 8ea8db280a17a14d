// Speed of start: from the program's first line to a main window that is shown
// and has painted (offscreen), with the sound bank not yet needed; then, once
// the bank is loaded, from opening a 100 KB karaoke song to its first sound
// in real time (through the card, or on the wall clock without one; the
// card's own latency comes on top).

#include <QApplication>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "core/base/paths.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "engine/engine_platform.h"
#include "gui/main_window.h"
#include "gui/qt_dialogs.h"
#include "gui/qt_loop.h"
#include "support/song_bytes.h"

using namespace velaro;
using Clock = std::chrono::steady_clock;

namespace {

double msSince(Clock::time_point t0) { return std::chrono::duration<double, std::milli>(Clock::now() - t0).count(); }

double windowShown(int argc, char** argv) {
    const auto t0 = Clock::now();
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);
    gui::QtLoop loop;
    gui::QtDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    engine::EnginePlatform ep(44100);
    song::frmMain form(rt, ep.get());
    gui::MainWindow window(form);
    form.load();
    window.show();
    QApplication::processEvents();
    (void)window.grab();  // one whole paint
    return msSince(t0);
}

// A karaoke file of about `bytes`: the dense song's notes, repeated.
std::string songOfAbout(size_t bytes) {
    int beats = 64;
    std::string s = testing::denseSong(beats);
    while (s.size() < bytes) s = testing::denseSong(beats *= 2);
    return s;
}

double openToFirstSound(const std::string& song, const std::string& warmup) {
    ui::Headless ui;
    engine::EnginePlatform ep(44100);
    song::frmMain f(ui.rt, ep.get());
    f.load();
    f.Initialize();
    // In real time, as a user hears it: through the card, or on the wall clock without one.
    ep.audio().startDeviceOrSilence();
    auto playUntilHeard = [&](const std::string& path) {
        f.setSongPath(path);
        f.OpenFile();
        f.Cmd_Play_Click();
        for (int i = 0; i < 20000 && ep.audio().lastPeak() == 0.0f; ++i)
            std::this_thread::sleep_for(std::chrono::microseconds(500));
        return ep.audio().lastPeak() > 0.0f;
    };
    // The bank is loaded by the first song.
    playUntilHeard(warmup);
    f.Cmd_Stop_Click();
    for (int i = 0; i < 2000 && ep.audio().lastPeak() != 0.0f; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const auto t0 = Clock::now();
    const bool heard = playUntilHeard(song);
    const double ms = msSince(t0);
    ep.audio().stopDevice();
    return heard ? ms : -1;
}

}  // namespace

int main(int argc, char** argv) {
    const double shown = windowShown(argc, argv);
    std::printf("bench_start: launch to a shown and painted main window: %.0f ms (goal <= 400 ms)\n", shown);
    const std::string warm = testing::writeTemp("bench-start-warm.kar", testing::denseSong(16));
    const std::string big = songOfAbout(100 * 1024);
    const std::string path = testing::writeTemp("bench-start-100k.kar", big);
    const double first = openToFirstSound(path, warm);
    std::printf("bench_start: a %zu KB song opened to its first sound, bank loaded: %.0f ms (goal <= 50 ms)\n",
                big.size() / 1024, first);
    return 0;
}
