// velaro karaoke: an MP3 played in the terminal with the lyrics window's
// page, its current line red and bold and the lines sung blue-white, moved by
// the same walk as the tag editor's play timer.

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <thread>

#include "commands.h"
#include "core/base/byte_text.h"
#include "core/base/cp1252.h"
#include "core/base/vb_number.h"
#include "core/settings/m_config.h"
#include "core/tags/frm_lyrics.h"
#include "core/tags/timed_lyrics.h"
#include "core/ui/headless.h"
#include "engine/engine_platform.h"

namespace velaro::cli {

namespace {

std::atomic<bool> stopRequested{false};
void onStopSignal(int) { stopRequested.store(true); }

std::string ansiColour(uint32_t c, bool bold) {
    char buf[48];
    std::snprintf(buf, sizeof buf, "\x1b[%s38;2;%u;%u;%um", bold ? "1;" : "", c & 0xFF, (c >> 8) & 0xFF,
                  (c >> 16) & 0xFF);
    return buf;
}

// The ten rows of the window's page as they stand.
std::string pageText(const tags::FrmLyrics& w, bool tty) {
    std::string out;
    if (w.LyricsRef.listCount() == 0) return "[ no lyrics found ]\n";
    const double h = w.lblLyrics(0).height() > 0 ? w.lblLyrics(0).height() : tags::kLyricLabelHeight;
    const int first = static_cast<int>(std::lround(-w.picLyrics.top() / h));
    for (int i = first; i < first + 10; ++i) {
        std::string line;
        if (i >= 0 && i < w.LyricsRef.listCount() && w.lblLyrics.exists(i)) {
            const ui::Label& l = w.lblLyrics(i);
            const bool current = l.font().bold;
            if (tty) line = ansiColour(l.foreColor(), current) + cp1252ToUtf8(l.caption()) + "\x1b[0m";
            else line = std::string(current ? "> " : "  ") + cp1252ToUtf8(l.caption());
        }
        out += line + (tty ? "\x1b[K\n" : "\n");
    }
    return out;
}

}  // namespace

int runKaraoke(const std::vector<std::string>& args) {
    std::string file;
    bool noDevice = false;
    for (const auto& a : args) {
        if (a == "--no-device") noDevice = true;
        else if (!a.empty() && a[0] == '-') {
            std::cerr << "velaro karaoke: unknown option " << a << "\nusage: velaro karaoke FILE.mp3 [--no-device]\n";
            return 2;
        } else if (file.empty()) file = a;
    }
    if (file.empty()) {
        std::cerr << "velaro karaoke: no file given\nusage: velaro karaoke FILE.mp3 [--no-device]\n";
        return 2;
    }

    ui::Headless h;
    tags::TagsState state;
    settings::mConfig config;
    tags::FrmLyrics window(h.rt, state, config);
    const tags::Mp3Info info = state.mmp3.GetMp3Info(file);
    for (const auto& e : tags::LyricEntries(info.Lyrics)) tags::addSorted(window.LyricsRef, e);
    window.Order_lblLyrics();

    engine::EnginePlatform ep;
    std::string error;
    const bool device = !noDevice && ep.audio().startDevice(error);
    if (!device && !noDevice) std::cerr << "velaro karaoke: no sound device; the file runs silently on the clock\n";
    auto& graph = ep.media();
    if (!graph.RenderFile(file)) {
        std::cerr << "velaro karaoke: " << file << ": " << graph.error() << '\n';
        return 1;
    }
    graph.Run();
    std::signal(SIGINT, onStopSignal);
    std::signal(SIGTERM, onStopSignal);

    const bool tty = isatty(fileno(stdout));
    const std::string title = trim(info.Artist).empty() ? trim(info.Title) : trim(info.Artist) + " - " + trim(info.Title);
    if (tty) std::printf("\x1b[2J\x1b[H");
    std::printf("VELARO DECK  Mp3 Karaoke  %s%s\n", cp1252ToUtf8(title.empty() ? file : title).c_str(),
                tty ? "   Ctrl-C stops" : "");
    int16_t lyricPos = 0;
    std::string lastPage;
    const auto start = std::chrono::steady_clock::now();
    int64_t rendered = 0;
    for (;;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (!device) {
            // Without a sound card the engine is rendered as the wall clock goes.
            const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
            const int64_t due = ms * ep.audio().sampleRate() / 1000;
            if (due > rendered) ep.audio().render(due - rendered);
            rendered = std::max(rendered, due);
        }
        const double position = graph.CurrentPosition(), duration = graph.Duration();
        const std::string clock = tags::TimeText(static_cast<int64_t>(roundHalfEven(position)));
        try {
            tags::SyncLyrics(clock, window.LyricsRef, lyricPos, [&] { window.Move_Next_Focus_Lyrics(); },
                             [&] { window.Move_Previous_Focus_Lyrics(); });
        } catch (const std::exception&) {
        }
        const std::string page = pageText(window, tty);
        if (tty) {
            std::printf("\x1b[2;1H%s / %s\x1b[K\n%s", clock.c_str(),
                        tags::TimeText(static_cast<int64_t>(roundHalfEven(duration))).c_str(), page.c_str());
        } else if (page != lastPage) {
            std::printf("[%s]\n%s", clock.c_str(), page.c_str());
        }
        lastPage = page;
        std::fflush(stdout);
        if (position >= duration || stopRequested.load()) break;
    }
    graph.Stop();
    graph.Release();
    ep.audio().stopDevice();
    std::printf("%s\n", stopRequested.load() ? "Stopped." : "End of song.");
    return 0;
}

}  // namespace velaro::cli
