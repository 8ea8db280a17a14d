// velaro backing: what the backing player plays with the given control
// values, rendered offline into a 16-bit wave file; and velaro play for an
// audio backing, in real time.

#include <algorithm>
#include <atomic>
#include <climits>
#include <chrono>
#include <csignal>
#include <iostream>
#include <thread>

#include "arg_value.h"
#include "backing_options.h"
#include "commands.h"
#include "core/base/cp1252.h"
#include "core/base/paths.h"
#include "core/base/vb_number.h"
#include "core/shell/frm_main.h"
#include "core/tags/mmp3.h"
#include "core/ui/headless.h"
#include "engine/engine_platform.h"
#include "engine/wav_file.h"

namespace velaro::cli {

namespace {

const char* kBackingUsage =
    "usage: velaro backing FILE -o OUT.wav [--remove-vocals] [--vseq V0,...,V7] [--veq V0,...,V7]\n"
    "       [--bass-boost V] [--no-bass-boost] [--rate HZ] [--key N] [--speed P]\n";

// One timed line of the file's Lyrics3 lyrics: the words behind its marks.
struct TimedLine {
    double seconds;
    std::string words;
};

// "MM:SS", "HH:MM:SS" or "MM:SS.xx" as seconds; negative when it is no time.
double markSeconds(const std::string& mark) {
    double total = 0;
    int fields = 0;
    size_t at = 0;
    while (at <= mark.size()) {
        const size_t colon = mark.find(':', at);
        const std::string part = mark.substr(at, colon == std::string::npos ? std::string::npos : colon - at);
        if (part.empty() || part.find_first_not_of("0123456789.") != std::string::npos) return -1;
        try {
            total = total * 60 + std::stod(part);
        } catch (const std::exception&) {
            return -1;
        }
        ++fields;
        if (colon == std::string::npos) break;
        at = colon + 1;
    }
    return fields >= 2 && fields <= 3 ? total : -1;
}

// The lines of an MP3's Lyrics3 text that carry a time, in time order. A line
// may carry several marks (a chorus sung twice); a bracket wider than eight
// characters is part of the words.
std::vector<TimedLine> timedLyrics(const std::string& path) {
    tags::Mmp3 module;
    const std::string text = module.GetMp3Info(path).Lyrics;
    std::vector<TimedLine> out;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(start, end - start);
        start = end + 1;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        std::vector<double> times;
        size_t words = 0, at = 0;
        while (at < line.size() && line[at] == '[') {
            const size_t close = line.find(']', at);
            if (close == std::string::npos || close - at - 1 > 8) break;
            const double t = markSeconds(line.substr(at + 1, close - at - 1));
            if (t >= 0) times.push_back(t);
            at = words = close + 1;
        }
        for (double t : times) out.push_back({t, cp1252ToUtf8(line.substr(words))});
    }
    std::stable_sort(out.begin(), out.end(), [](const TimedLine& a, const TimedLine& b) { return a.seconds < b.seconds; });
    return out;
}

std::atomic<bool> stopAsked{false};
void onStop(int) { stopAsked.store(true); }

bool parse(const std::vector<std::string>& args, bool wantOut, BackingOptions& o, std::string& error) {
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (takeBackingOption(args, i, o, error)) {
            if (!error.empty()) return false;
            continue;
        }
        if (wantOut && (a == "-o" || a == "--out")) {
            if (!takeValue(args, i, o.out, error)) return false;
        } else if (!a.empty() && a[0] == '-') {
            error = "unknown option " + a;
            return false;
        } else if (o.file.empty()) {
            o.file = a;
        } else {
            error = "one file only";
            return false;
        }
    }
    if (o.file.empty()) error = "no file given";
    else if (wantOut && o.out.empty()) error = "no output given (-o OUT.wav)";
    return error.empty();
}

// Starts the backing as Cmdplw does; false (with the box's text) when it cannot load.
bool startBacking(song::frmMain& f, const BackingOptions& o, std::string& error, const char* command) {
    f.setSongPath(o.file);
    prepareBacking(f, o);
    f.recording.Cmdplw_Click();
    error = backingError(f);
    if (!error.empty()) return false;
    // A mono file plays all the same; the user hears of the box it gave.
    for (const std::string& note : backingNotes(f)) std::cerr << command << ": " << note << '\n';
    tuneBacking(f, o);
    return true;
}

}  // namespace

int64_t renderBacking(song::frmMain& f, engine::EnginePlatform& ep, const BackingOptions& o, int rate,
                      const std::function<void(const float*, int)>& out) {
    // One block held back, so the file can stop on the backing's last frame
    // once that is known.
    std::vector<float> held;
    int64_t written = 0, limit = INT64_MAX;
    auto emit = [&] {
        const int64_t n = std::min<int64_t>(static_cast<int64_t>(held.size() / 2), limit - written);
        if (n > 0) out(held.data(), static_cast<int>(n));
        written += std::max<int64_t>(n, 0);
        held.clear();
    };
    ep.audio().setSink([&](const float* frames, int n) {
        emit();
        held.assign(frames, frames + 2 * n);
    });
    // A module loops: it plays once through and no more.
    const double once = moduleSeconds(o.file);
    const int64_t cap = once > 0 ? static_cast<int64_t>(once * 100.0 / o.speed * rate) : -1;
    int64_t done = 0;
    while (backingPlaying(f, ep) && (cap < 0 || done < cap)) {
        ep.audio().render(engine::AudioEngine::kOfflineBlock);
        done += engine::AudioEngine::kOfflineBlock;
    }
    limit = static_cast<int64_t>(ep.streams().ChannelSeconds(f.backing.mainStream) * rate + 0.5);
    if (cap >= 0) limit = std::min(limit, cap);
    // The limiter still holds the last frames.
    ep.audio().render(ep.audio().limiterLatency() + engine::AudioEngine::kOfflineBlock);
    emit();
    ep.audio().setSink(nullptr);
    return written;
}

int runBacking(const std::vector<std::string>& args) {
    BackingOptions o;
    std::string error;
    if (!parse(args, true, o, error)) {
        std::cerr << "velaro backing: " << error << '\n' << kBackingUsage;
        return 2;
    }
    const int rate = o.rate ? *o.rate : backingFileRate(o.file);
    ui::Headless ui;
    engine::EnginePlatform ep(rate);
    song::frmMain f(ui.rt, ep.get());
    std::unique_ptr<engine::WavWriter> wav;
    if (!startBacking(f, o, error, "velaro backing")) {
        std::cerr << "velaro backing: " << o.file << ": " << error << '\n';
        return 1;
    }
    try {
        wav = std::make_unique<engine::WavWriter>(o.out, rate);
    } catch (const std::exception& e) {
        std::cerr << "velaro backing: " << e.what() << '\n';
        return 1;
    }
    const int64_t frames = renderBacking(f, ep, o, rate, [&](const float* lr, int n) { wav->write(lr, n); });
    f.recording.cmdstw_Click();
    if (!wav->close()) {
        std::cerr << "velaro backing: " << wav->error() << '\n';
        return 1;
    }
    std::cerr << "velaro backing: " << o.out << ": " << vbFormat(double(frames) / rate, "0.00") << " s, " << rate
              << " Hz, 16-bit stereo" << (o.removeVocals ? ", vocals removed" : "") << '\n';
    return 0;
}

bool isAudioBacking(const std::string& path) {
    const size_t dot = path.find_last_of('.');
    if (dot == std::string::npos) return false;
    std::string ext = path.substr(dot + 1);
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext != "mid" && ext != "kar" && ext != "midi" && ext != "rmi";
}

int runPlayBacking(const std::vector<std::string>& args) {
    BackingOptions o;
    std::string error;
    bool noDevice = false;
    std::vector<std::string> rest;
    for (const std::string& a : args) {
        if (a == "--no-device") noDevice = true;
        else rest.push_back(a);
    }
    if (!parse(rest, false, o, error)) {
        std::cerr << "velaro play: " << error
                  << "\nusage: velaro play FILE.mp3|wav|mod [--remove-vocals] [--vseq V0,...,V7] [--veq V0,...,V7]\n"
                     "       [--bass-boost V] [--no-bass-boost] [--key N] [--speed P] [--no-device]\n";
        return 2;
    }
    const int rate = o.rate ? *o.rate : 44100;
    engine::EnginePlatform ep(rate);
    const bool device = !noDevice && ep.audio().startDevice(error);
    if (!device && !noDevice) std::cerr << "velaro play: no sound device; the backing runs on the virtual clock\n";
    ui::Headless ui;
    song::frmMain f(ui.rt, ep.get());
    if (!startBacking(f, o, error, "velaro play")) {
        std::cerr << "velaro play: " << o.file << ": " << error << '\n';
        return 1;
    }
    std::signal(SIGINT, onStop);
    std::signal(SIGTERM, onStop);
    std::printf("VELARO DECK  %s%s   Ctrl-C stops\n", o.file.c_str(), o.removeVocals ? "  (vocal remover on)" : "");
    std::fflush(stdout);
    const double once = moduleSeconds(o.file);
    // The words of an MP3's Lyrics3 tag come as the backing reaches their marks.
    const std::vector<TimedLine> lyrics = timedLyrics(o.file);
    size_t nextLine = 0;
    const auto start = std::chrono::steady_clock::now();
    int64_t rendered = 0;
    while (backingPlaying(f, ep) && !stopAsked.load()) {
        // The backing's own clock, which key and speed leave as the file's.
        const double at = ep.streams().ChannelSeconds(f.backing.mainStream) * o.speed / 100.0;
        for (; nextLine < lyrics.size() && lyrics[nextLine].seconds <= at; ++nextLine) {
            std::printf("%s\n", lyrics[nextLine].words.c_str());
            std::fflush(stdout);
        }
        const double wall =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (once > 0 && wall > once * 100.0 / o.speed) break;
        if (!device) {
            // Without a card the backing keeps the wall clock's pace all the same.
            const int64_t due = static_cast<int64_t>(wall * rate);
            if (due > rendered) {
                ep.audio().render(due - rendered);
                rendered = due;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const bool stopped = stopAsked.load();
    f.recording.cmdstw_Click();
    ep.audio().stopDevice();
    std::printf("%s\n", stopped ? "Stopped." : "End of backing.");
    return 0;
}

}  // namespace velaro::cli
