// velaro render / velaro play: the song played as the main window plays it,
// through Cmd_Play and the transport tick, offline into a wave file or in
// real time through the sound card.

#include <atomic>
#include <csignal>
#include <cstdio>
#include <iostream>

#include "commands.h"
#include "core/base/byte_text.h"
#include "core/base/cp1252.h"
#include "core/base/paths.h"
#include "core/base/vb_number.h"
#include "core/song/frm_main.h"
#include "core/ui/headless.h"
#include "core/ui/realtime_loop.h"
#include "engine/engine_platform.h"
#include "engine/wav_file.h"
#include "song_options.h"

namespace velaro::cli {

namespace {

std::atomic<bool> interrupted{false};

void onSignal(int) { interrupted.store(true); }

// What the window does from start to the first press of Play: the
// performance is made, the song opened without the dialog, the sliders set.
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
    (void)ep;
    return true;
}

void applySliders(song::frmMain& f, const SongOptions& o) {
    if (o.tempo) f.vslidertempo.setValue(*o.tempo);
    if (o.transpose) f.vscroll1.setValue(*o.transpose);
    if (o.volume) f.Slider1.setValue(*o.volume);
}

bool songEnded(const song::frmMain& f) { return f.recordStopFlag; }

}  // namespace

int runRender(const std::vector<std::string>& args) {
    SongOptions o;
    std::string error;
    if (!parseSongOptions(args, true, o, error)) {
        std::cerr << "velaro render: " << error
                  << "\nusage: velaro render SONG -o OUT.wav [--bank FILE] [--tempo V] [--transpose N] "
                     "[--volume V] [--rate HZ]\n";
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
    std::unique_ptr<engine::WavWriter> wav;
    try {
        wav = std::make_unique<engine::WavWriter>(o.out, o.rate);
    } catch (const std::exception& e) {
        std::cerr << "velaro render: " << e.what() << '\n';
        return 1;
    }
    ep.audio().setSink([&](const float* frames, int n) { wav->write(frames, n); });
    ui.loop.attachAudio([&](int64_t frames) { ep.audio().render(frames); }, o.rate);

    f.Cmd_Play_Click();
    applySliders(f, o);
    // The cap only guards against a song whose end never comes: at the
    // slowest tempo a song of the format's longest length takes under 4 hours.
    const bool ended = ui.loop.advanceUntil([&] { return songEnded(f); }, 4LL * 3600 * 1000);
    wav->close();
    if (!ended) std::cerr << "velaro render: the song did not end; stopped after 4 hours\n";
    const double seconds = static_cast<double>(wav->framesWritten()) / o.rate;
    std::cerr << "velaro render: " << o.out << ": " << vbFormat(seconds, "0.00") << " s, " << o.rate
              << " Hz, 16-bit stereo, bank " << ep.performance().activeBank() << '\n';
    return 0;
}

int runPlay(const std::vector<std::string>& args) {
    SongOptions o;
    std::string error;
    if (!parseSongOptions(args, false, o, error)) {
        std::cerr << "velaro play: " << error
                  << "\nusage: velaro play SONG [--bank FILE] [--tempo V] [--transpose N] [--volume V]\n";
        return 2;
    }
    ui::RealtimeLoop loop;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    engine::EnginePlatform ep(o.rate);
    song::frmMain f(rt, ep.get());
    if (!openSong(f, ep, o, error)) {
        std::cerr << "velaro play: " << error << '\n';
        return 1;
    }
    if (!ep.audio().startDevice(error)) {
        std::cerr << "velaro play: no sound device" << (error == "no sound device" ? "" : " (" + error + ")") << '\n';
        return 3;
    }
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);

    f.Cmd_Play_Click();
    applySliders(f, o);
    std::cout << "Playing " << o.song << " (" << trim(f.lblTime.caption()) << "), Ctrl-C stops\n" << std::flush;

    // Each word is shown when the song clock reaches it; a new line of the
    // lyrics starts a new line here.
    size_t next = 1;
    int line = 0;
    auto showWords = [&] {
        const double seek = ep.performance().GetSeek(f.dmSegmentState);
        const double songMs = f.tempoUs * (seek / 768000.0) - f.timeOffsetMs;
        while (next < f.wordTable.size() && f.wordTable[next - 1].timeMs <= songMs) {
            const auto& w = f.wordTable[next++];
            if (w.lineIndex != line) {
                std::cout << '\n';
                line = w.lineIndex;
            }
            std::cout << cp1252ToUtf8(w.text) << std::flush;
        }
    };
    loop.run([&] {
        showWords();
        return songEnded(f) || interrupted.load();
    });
    if (interrupted.load()) f.Cmd_Stop_Click();
    std::cout << '\n' << (interrupted.load() ? "Stopped." : "End of song.") << '\n';
    ep.audio().stopDevice();
    return 0;
}

}  // namespace velaro::cli
