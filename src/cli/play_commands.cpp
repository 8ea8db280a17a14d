// velaro render / velaro play: the song played as the main window plays it,
// through Cmd_Play and the transport tick, offline into a wave file or in
// real time through the sound card.

#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <iostream>

#include "commands.h"
#include "core/base/byte_text.h"
#include "core/base/cp1252.h"
#include "core/base/paths.h"
#include "core/base/safe_file.h"
#include "core/base/vb_number.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "core/ui/realtime_loop.h"
#include "engine/engine_platform.h"
#include "engine/wav_file.h"
#include "song_options.h"
#include "song_start.h"
#include "terminal_canvas.h"
#include "engine/audio_tap.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <thread>

namespace velaro::cli {

namespace {

std::atomic<bool> interrupted{false};

void onSignal(int) { interrupted.store(true); }

}  // namespace

bool openSong(song::frmMain& f, engine::EnginePlatform& ep, const SongOptions& o, std::string& error) {
    if (!fileExists(o.song)) {
        error = "cannot open " + o.song;
        return false;
    }
    if (!o.bank.empty()) {
        if (!fileExists(o.bank)) {
            error = "cannot open sound bank " + o.bank;
            return false;
        }
        f.soundBankPath = o.bank;
    }
    f.load();
    if (o.volume) f.Slider1.setValue(*o.volume);
    f.Initialize();  // at start-up: the loader exists from here on
    f.setSongPath(o.song);
    f.OpenFile();
    if (f.dmSegment == 0) {
        error = o.song + " is not a MIDI song";
        return false;
    }
    // The command line's chain is the one given with --effect, nothing else:
    // the window's own start (its compressor and panel) stays out of it.
    f.openEffectPanels = nullptr;
    ep.songEffects().setChain(o.effects);
    return true;
}

void applySliders(song::frmMain& f, const SongOptions& o) {
    if (o.tempo) f.vslidertempo.setValue(*o.tempo);
    if (o.transpose) f.vscroll1.setValue(*o.transpose);
    if (o.volume) f.Slider1.setValue(*o.volume);
}

namespace {

// The command line has no Stop button: a song ends at its last event, when
// the window's tick says so or when the song source has run out of song.
bool songEnded(const song::frmMain& f, engine::EnginePlatform& ep) {
    return f.recordStopFlag || !ep.performance().player().playing();
}

// The song the performance will play, when it holds a note to play.
const engine::Segment* songToPlay(const song::frmMain& f, engine::EnginePlatform& ep) {
    const engine::Segment* seg = ep.performance().segment(f.dmSegment);
    if (!seg || !seg->hasNotes() || seg->length <= 0) return nullptr;
    return seg;
}

// The master tempo the window's tempo slider gives (1 at rest).
double tempoFactor(const SongOptions& o) {
    if (!o.tempo) return 1.0;
    return std::floor(30.0 / 127 * *o.tempo) * 2 / 30;
}

int terminalColumns() {
    winsize ws{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &ws) == 0 && ws.ws_col > 0) return ws.ws_col;
    if (const char* c = std::getenv("COLUMNS")) return std::max(20, std::atoi(c));
    return 80;
}

}  // namespace

int runRender(const std::vector<std::string>& args) {
    SongOptions o;
    std::string error;
    if (!parseSongOptions(args, true, o, error)) {
        std::cerr << "velaro render: " << error
                  << "\nusage: velaro render SONG -o OUT.wav [--bank FILE] [--tempo V] [--transpose N] "
                     "[--volume V] [--rate HZ] [--effect NAME[:FIELD=VALUE,...]]...\n";
        return 2;
    }
    if (o.tempo && *o.tempo < 5) {
        // Below 5 the master tempo is 0: the song stands still and never ends.
        std::cerr << "velaro render: at --tempo " << *o.tempo << " the song stands still; nothing to render\n";
        return 2;
    }
    ui::Headless ui;
    engine::EnginePlatform ep(o.rate);
    song::frmMain f(ui.rt, ep.get());
    if (!openSong(f, ep, o, error)) {
        std::cerr << "velaro render: " << error << '\n';
        return 1;
    }
    const engine::Segment* seg = songToPlay(f, ep);
    if (seg) {
        // The whole file, with the longest ringing tail, must fit before a frame is made.
        const double seconds = seg->secondsAt(seg->length, tempoFactor(o)) + 6;
        const int64_t need = static_cast<int64_t>(seconds * o.rate) * 4 + 44;
        const int64_t room = freeSpaceFor(o.out);
        if (room >= 0 && room < need) {
            std::cerr << "velaro render: not enough room for " << o.out << ": the song needs about "
                      << vbFormat(need / 1048576.0, "0.0") << " MB, the disk has "
                      << vbFormat(room / 1048576.0, "0.0") << " MB free\n";
            return 1;
        }
    }
    std::unique_ptr<engine::WavWriter> wav;
    try {
        wav = std::make_unique<engine::WavWriter>(o.out, o.rate);
    } catch (const std::exception& e) {
        std::cerr << "velaro render: " << e.what() << '\n';
        return 1;
    }
    if (!seg) {
        // Nothing would ever sound: the file holds no frames and the command ends.
        if (!wav->close()) {
            std::cerr << "velaro render: " << wav->error() << '\n';
            return 1;
        }
        std::cerr << "velaro render: the song has no notes; " << o.out << " holds no sound\n";
        return 0;
    }
    ep.audio().setSink([&](const float* frames, int n) { wav->write(frames, n); });
    ui.loop.attachAudio([&](int64_t frames) { ep.audio().render(frames); }, o.rate);

    f.Cmd_Play_Click();
    applySliders(f, o);
    // The cap only guards against a song whose end never comes: at the
    // slowest tempo a song of the format's longest length takes under 4 hours.
    const bool ended = ui.loop.advanceUntil([&] { return songEnded(f, ep); }, 4LL * 3600 * 1000);
    if (!ended) std::cerr << "velaro render: the song did not end; stopped after 4 hours\n";
    // The last notes ring out rather than stop dead, with the chain's echoes.
    ep.audio().renderTail(5.0, -60.0f, ep.songEffects().longestGap());
    if (!wav->close()) {
        std::cerr << "velaro render: " << wav->error() << '\n';
        return 1;
    }
    const double seconds = static_cast<double>(wav->framesWritten()) / o.rate;
    std::cerr << "velaro render: " << o.out << ": " << vbFormat(seconds, "0.00") << " s, " << o.rate
              << " Hz, 16-bit stereo, bank " << ep.performance().activeBank() << '\n';
    return 0;
}

int runPlay(const std::vector<std::string>& given) {
    // --stats is this command's own: the figures of the run, at its end.
    std::vector<std::string> args;
    bool stats = false;
    for (const std::string& a : given) {
        if (a == "--stats")
            stats = true;
        else
            args.push_back(a);
    }
    // An audio file is a backing, not a song.
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        const bool afterValueOption = i > 0 && !args[i - 1].empty() && args[i - 1][0] == '-' &&
                                      args[i - 1] != "--no-device" && args[i - 1] != "--remove-vocals" &&
                                      args[i - 1] != "--no-bass-boost";
        if (a.empty() || a[0] == '-' || afterValueOption) continue;
        if (isAudioBacking(a)) return runPlayBacking(args);
        break;
    }
    SongOptions o;
    std::string error;
    if (!parseSongOptions(args, false, o, error)) {
        std::cerr << "velaro play: " << error
                  << "\nusage: velaro play SONG [--out FILE.wav] [--sync FILE] [--bank FILE] [--tempo V] "
                     "[--transpose N] [--volume V] [--no-device] [--stats] [--effect NAME[:FIELD=VALUE,...]]...\n";
        return 2;
    }
    engine::EnginePlatform ep(o.rate);
    // A device lost mid-song: the engine plays on silently on the wall
    // clock, and takes up a device again when one opens.
    ep.audio().setDeviceNotice([](bool, const std::string& message) {
        std::fprintf(stderr, "velaro play: %s\n", message.c_str());
    });
    // With a sound card the wall clock drives everything; without one the
    // virtual clock is moved along with the wall clock and the audio is
    // rendered offline, so the page runs in real time all the same.
    const bool device = !o.noDevice && ep.audio().startDevice(error);
    if (!device && !o.noDevice) std::cerr << "velaro play: no sound device; the song runs on the virtual clock\n";
    ui::RealtimeLoop realtime;
    ui::VirtualLoop virtualClock;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt(device ? static_cast<ui::EventLoop&>(realtime) : virtualClock, dialogs);
    song::frmMain f(rt, ep.get());
    if (!openSong(f, ep, o, error)) {
        std::cerr << "velaro play: " << error << '\n';
        return 1;
    }
    const bool silent = songToPlay(f, ep) == nullptr;
    auto printStats = [&](const std::string& api) {
        std::printf("stats: %lld frames played, %lld underruns, device %s, %d fallbacks to the silent clock\n",
                    static_cast<long long>(ep.audio().framesPlayed()), static_cast<long long>(ep.audio().underruns()),
                    api.c_str(), ep.audio().deviceFallbacks());
    };

    std::unique_ptr<engine::AudioTap> tap;
    std::unique_ptr<engine::WavWriter> wav;
    try {
        if (!o.out.empty() && device) {
            tap = std::make_unique<engine::AudioTap>(o.out, o.rate);
            ep.audio().setTap(tap.get());
        } else if (!o.out.empty()) {
            wav = std::make_unique<engine::WavWriter>(o.out, o.rate);
            ep.audio().setSink([&](const float* frames, int n) { wav->write(frames, n); });
        }
    } catch (const std::exception& e) {
        std::cerr << "velaro play: " << e.what() << '\n';
        return 1;
    }
    if (!device) virtualClock.attachAudio([&](int64_t frames) { ep.audio().render(frames); }, o.rate);

    const bool tty = isatty(fileno(stdout));
    TerminalCanvas page(stdout, terminalColumns(), tty);
    f.Picture3.attachCanvas(&page);
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);

    if (silent) {
        // A song without a note would run on its clock for ever: it ends at once.
        ep.audio().stopDevice();
        if (tap && !tap->finish()) std::cerr << "velaro play: " << tap->error() << '\n';
        if (wav && !wav->close()) std::cerr << "velaro play: " << wav->error() << '\n';
        std::printf("VELARO DECK  %s\nThe song has no notes.\n", o.song.c_str());
        if (stats) printStats(device ? ep.audio().deviceApi() : "none");
        return 0;
    }

    if (tty) std::printf("\x1b[2J\x1b[H");
    f.Cmd_Play_Click();
    applySliders(f, o);
    std::printf("%s  %s  (%s)%s\n", tty ? "\x1b[1mVELARO DECK\x1b[0m" : "VELARO DECK", o.song.c_str(),
                trim(f.lblTime.caption()).c_str(), tty ? "   Ctrl-C stops" : "");
    std::fflush(stdout);

    auto done = [&] { return songEnded(f, ep) || interrupted.load(); };
    if (device) {
        realtime.run(done);
    } else {
        const auto start = std::chrono::steady_clock::now();
        while (!done()) {
            const auto wall = std::chrono::duration_cast<std::chrono::milliseconds>(
                                  std::chrono::steady_clock::now() - start).count();
            if (wall > virtualClock.now()) virtualClock.advance(wall - virtualClock.now());
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    const bool stopped = interrupted.load();
    if (stopped) f.Cmd_Stop_Click();
    page.flush();
    // The last notes ring out (a second Ctrl-C cuts them short).
    interrupted.store(false);
    if (device) {
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        const float floor = 0.001f;  // -60 dBFS
        while (std::chrono::steady_clock::now() < until && !interrupted.load()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            if (ep.audio().lastPeak() < floor) break;
        }
    } else {
        ep.audio().renderTail(5.0, -60.0f, ep.songEffects().longestGap());
    }
    ep.audio().setTap(nullptr);
    const std::string api = device ? ep.audio().deviceApi() : "none";
    ep.audio().stopDevice();
    bool written = true;
    if (tap && !tap->finish()) {
        std::cerr << "velaro play: " << tap->error() << '\n';
        written = false;
    }
    if (wav && !wav->close()) {
        std::cerr << "velaro play: " << wav->error() << '\n';
        written = false;
    }

    if (tty) std::printf("\x1b[10;1H");
    std::printf("%s\n\n", stopped ? "Stopped." : "End of song.");
    // The sync text, as SaveSyncro would write it.
    std::string sync = cp1252ToUtf8(f.Text2.text());
    for (size_t at = sync.find("\r\n"); at != std::string::npos; at = sync.find("\r\n", at)) sync.erase(at, 1);
    std::fputs(sync.c_str(), stdout);
    std::fflush(stdout);
    if (stats && !sync.empty() && sync.back() != '\n') std::fputc('\n', stdout);
    if (stats) printStats(api);
    std::fflush(stdout);
    if (!o.out.empty() && written) {
        const int64_t frames = tap ? tap->framesWritten() : wav->framesWritten();
        std::cerr << "velaro play: recorded " << vbFormat(double(frames) / o.rate, "0.00") << " s to " << o.out << '\n';
    }
    if (!o.sync.empty()) {
        try {
            writeWholeFile(o.sync, f.Text2.text() + "\r\n");
            std::cerr << "velaro play: sync text saved to " << o.sync << '\n';
        } catch (const std::exception& e) {
            std::cerr << "velaro play: " << e.what() << '\n';
            return 1;
        }
    }
    return written ? 0 : 1;
}

}  // namespace velaro::cli
