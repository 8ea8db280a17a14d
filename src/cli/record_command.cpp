// velaro record: a take as the window makes one, through the form's Record
// button, the wave device and the save dialog, with the dialogs answered as
// a user would (no playback, the -o name). With --mic FILE.wav, or without a
// sound card, it runs on the virtual clock and the file is the microphone.

#include <sndfile.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <iostream>

#include "arg_value.h"
#include "backing_options.h"
#include "calibration.h"
#include "commands.h"
#include "core/base/paths.h"
#include "core/base/vb_number.h"
#include "core/ui/realtime_loop.h"
#include "core/ui/virtual_loop.h"
#include "engine/audio_file_decoder.h"
#include "engine/engine_platform.h"
#include "engine/mic_input.h"
#include "song_start.h"

namespace velaro::cli {

namespace {

std::atomic<bool> stopAsked{false};
// The first Ctrl-C stops the take as the stop button would; a second one ends the program.
void onStop(int sig) {
    stopAsked.store(true);
    std::signal(sig, SIG_DFL);
}

struct RecordOptions {
    std::string mic, input, audio;
    int quality = -1;
    bool digital = false;
    double seconds = 0;
    BackingOptions backing;  // the backing player's controls for an Audio take
};

// The user at the take's dialogs: no playback, the take saved under -o.
class TakeDialogs : public ui::Dialogs {
public:
    explicit TakeDialogs(std::string out) : out_(std::move(out)) {}
    std::vector<std::string> boxes;  // every box shown, "title: text"

    int msgBox(std::string_view prompt, int style, std::string_view title) override {
        boxes.push_back(std::string(title) + ": " + std::string(prompt));
        if (prompt == "PlayBack") return ui::vbNo;
        return (style & 7) == ui::vbYesNo ? ui::vbYes : ui::vbOK;
    }
    ui::FileDialogResult showOpen(const ui::FileDialogRequest&) override { return {true, {}, 1}; }
    ui::FileDialogResult showSave(const ui::FileDialogRequest& req) override {
        if (req.title == "Save WAVE File As") return {false, out_, 1};
        return {true, {}, 1};
    }
    std::optional<uint32_t> showColor(uint32_t) override { return std::nullopt; }
    std::optional<ui::Font> showFont(const ui::Font&) override { return std::nullopt; }
    std::optional<std::string> inputBox(std::string_view, std::string_view, std::string_view) override {
        return std::nullopt;
    }

private:
    std::string out_;
};

const char* kUsage =
    "usage: velaro record SONG -o TAKE.wav [--mic FILE.wav] [--input NAME] [--quality ROW] [--tempo V]\n"
    "           [--transpose N] [--volume V] [--bank FILE] [--no-device]\n"
    "       velaro record --digital --seconds N -o TAKE.wav [--mic FILE.wav] [--input NAME] [--quality ROW]\n"
    "       velaro record --audio FILE.mp3|wav -o TAKE.wav [--mic FILE.wav] [--remove-vocals] [--key N] [--speed P]\n"
    "           [--vseq V0,...,V7] [--veq V0,...,V7] [--bass-boost V] [--no-bass-boost] [--input NAME] [--quality ROW]\n";

// The Record button takes the Audio session for these endings only.
bool audioSession(const std::string& path) {
    if (path.size() < 3) return false;
    const std::string ext = path.substr(path.size() - 3);
    return ext == "mp3" || ext == "wav" || ext == "MP3" || ext == "WAV";
}

bool parse(const std::vector<std::string>& args, RecordOptions& r, SongOptions& o, std::string& error) {
    std::vector<std::string> rest;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        std::string v;
        if (a == "--mic" || a == "--input" || a == "--audio" || a == "--quality" || a == "--seconds") {
            if (!takeValue(args, i, v, error)) return false;
            if (a == "--mic") r.mic = std::filesystem::absolute(v).string();
            else if (a == "--input") r.input = v;
            else if (a == "--audio") r.audio = v;
            else if (a == "--quality") {
                char* end = nullptr;
                const long row = std::strtol(v.c_str(), &end, 10);
                if (v.empty() || *end || row < 0 || row > 11) {
                    error = "--quality takes a row of the take format list, 0 to 11";
                    return false;
                }
                r.quality = static_cast<int>(row);
            } else {
                char* end = nullptr;
                r.seconds = std::strtod(v.c_str(), &end);
                if (v.empty() || *end || !(r.seconds > 0) || r.seconds > 4 * 3600) {
                    error = "--seconds takes a length in seconds, above 0 and at most 4 hours";
                    return false;
                }
            }
        } else if (a == "--digital") {
            r.digital = true;
        } else if (takeBackingOption(args, i, r.backing, error)) {
            if (!error.empty()) return false;
        } else {
            rest.push_back(a);
        }
    }
    if (!parseSongOptions(rest, true, o, error)) {
        // The digital recorder and an audio backing take no song.
        if (!((r.digital || !r.audio.empty()) && error == "no song given")) return false;
        error.clear();
    }
    if (r.digital && !o.song.empty()) error = "the digital recorder takes no song";
    else if (r.digital && r.seconds <= 0) error = "--digital needs --seconds N";
    else if (!r.digital && r.seconds > 0) error = "--seconds is for the digital recorder";
    else if (!r.audio.empty() && !o.song.empty()) error = "a song or an audio backing, not both";
    else if (!r.audio.empty() && !audioSession(r.audio)) error = "--audio takes an .mp3 or .wav file";
    else if (r.audio.empty() && r.backing.removeVocals) error = "--remove-vocals is for an audio backing (--audio)";
    return error.empty();
}

// The reason a wave file cannot be the microphone, or "".
std::string micProblem(const std::string& path) {
    if (!fileExists(path)) return "cannot open " + path;
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f) return path + " is not a wave file (" + sf_strerror(nullptr) + ")";
    sf_close(f);
    return {};
}

std::string cannotWriteTarget(const std::string& out) {
    namespace fs = std::filesystem;
    const fs::path dir = fs::path(out).parent_path();
    std::error_code ec;
    if (!fs::is_directory(dir, ec)) return "cannot write " + out + ": no such folder";
    if (access(dir.c_str(), W_OK) != 0) return "cannot write " + out + ": " + std::strerror(errno);
    if (fs::is_directory(out, ec)) return "cannot write " + out + ": it is a folder";
    return {};
}

}  // namespace

int runRecord(const std::vector<std::string>& args) {
    RecordOptions r;
    SongOptions o;
    std::string error;
    if (!parse(args, r, o, error)) {
        std::cerr << "velaro record: " << error << '\n' << kUsage;
        return 2;
    }
    if (!r.audio.empty()) {
        engine::AudioFileDecoder probe;
        if (!probe.openStream(r.audio)) {
            // What the backing player's error box says.
            const int code = probe.openModule(r.audio, 44100, false) ? 0 : probe.moduleErrorCode();
            if (code != 0) {
                std::cerr << "velaro record: " << r.audio << ": Selected file couldn't be loaded!\n\nBASS Error Code: "
                          << code << "\nBASS_FX Error Code: \n";
                return 1;
            }
        }
    }
    if (!r.digital && r.audio.empty() && !fileExists(o.song)) {
        std::cerr << "velaro record: cannot open " << o.song << '\n';
        return 1;
    }
    if (!r.mic.empty()) {
        if (const std::string why = micProblem(r.mic); !why.empty()) {
            std::cerr << "velaro record: " << why << '\n';
            return 1;
        }
    }
    if (const std::string why = cannotWriteTarget(o.out); !why.empty()) {
        std::cerr << "velaro record: " << why << '\n';
        return 1;
    }

    engine::EnginePlatform ep(o.rate);
    ep.audio().setInputDevice(r.input);
    // The measured round trip lines the voice up with what the singer heard.
    if (const int ms = storedLatencyMs(); ms >= 0) ep.audio().setInputLatencyMs(ms);
    // With a microphone file the take is made offline, frame for frame.
    const bool live = r.mic.empty() && !o.noDevice && ep.audio().startDevice(error);
    if (!live && r.mic.empty() && !o.noDevice)
        std::cerr << "velaro record: no sound device; the take runs on the virtual clock without a microphone\n";
    if (!r.mic.empty()) ep.audio().mic().setFile(r.mic);

    ui::RealtimeLoop realtime;
    ui::VirtualLoop virtualClock;
    TakeDialogs dialogs(o.out);
    ui::Runtime rt(live ? static_cast<ui::EventLoop&>(realtime) : virtualClock, dialogs);
    song::frmMain f(rt, ep.get());

    const bool audio = !r.audio.empty();
    if (r.digital) {
        f.load();
        f.mnew_Click();
    } else if (audio) {
        f.load();
        f.setSongPath(r.audio);
        f.PlayAudio();
        prepareBacking(f, r.backing);
        // The user's sliders are in place from the backing's first sample.
        auto start = f.recording.VocalRemove;
        f.recording.VocalRemove = [&f, &r, start] {
            if (start) start();
            tuneBacking(f, r.backing);
        };
    } else if (!openSong(f, ep, o, error)) {
        std::cerr << "velaro record: " << error << '\n';
        return 1;
    }
    if (r.quality >= 0) f.cmbQuality.setListIndex(r.quality);
    if (!live) virtualClock.attachAudio([&](int64_t frames) { ep.audio().render(frames); }, o.rate);

    std::signal(SIGINT, onStop);
    std::signal(SIGTERM, onStop);
    // The user's hand on the stop button: Ctrl-C, or the digital recorder's length.
    const int64_t start = rt.loop.now();
    // A song without a note, or whose length reads as zero, would never reach
    // the window's end of song: the take ends once the song source has run
    // out of song, or at once when there is nothing to play.
    const engine::Segment* seg = r.digital || audio ? nullptr : ep.performance().segment(f.dmSegment);
    const bool silentSong = !r.digital && !audio && (!seg || !seg->hasNotes() || seg->length <= 0);
    if (silentSong) std::cerr << "velaro record: the song has no notes; the take holds only what the input hears\n";
    bool songWasPlaying = false;
    auto watch = [&] {
        const bool timeUp = r.digital && rt.loop.now() - start >= static_cast<int64_t>(r.seconds * 1000);
        bool songOver = false;
        if (!r.digital) {
            // The take ends with its backing: the song, or the audio file's streams.
            const bool playing = audio ? backingPlaying(f, ep) : ep.performance().player().playing();
            songOver = silentSong || (songWasPlaying && !playing);
            songWasPlaying = songWasPlaying || playing;
        }
        if (stopAsked.load() || timeUp || songOver) f.playStopFlag = true;
    };
    ui::Timer watcher(&f, "cliStopWatch", 10);
    watcher.Tick = watch;
    watcher.setEnabled(true);
    if (!r.digital && !audio) {
        // The sliders move once the song has started, as in the window.
        rt.loop.post([&] { applySliders(f, o); });
    }

    const int64_t before = fileExists(o.out) ? fileLength(o.out) : -1;
    std::error_code ec;
    const auto stampBefore = std::filesystem::last_write_time(o.out, ec);
    f.recording.cmdrec_Click();
    watcher.setEnabled(false);
    ep.audio().stopDevice();

    const auto stampAfter = std::filesystem::last_write_time(o.out, ec);
    const bool written = fileExists(o.out) && (before < 0 || stampAfter != stampBefore);
    if (!written) {
        std::string why = "the take could not be saved";
        for (const auto& b : dialogs.boxes)
            if (b.rfind("VELARO DECK: ", 0) == 0 && b.find("PlayBack") == std::string::npos) why = b.substr(13);
        std::cerr << "velaro record: " << why << '\n';
        return 1;
    }
    SF_INFO info{};
    if (SNDFILE* sf = sf_open(o.out.c_str(), SFM_READ, &info)) {
        std::cerr << "velaro record: " << o.out << ": " << vbFormat(double(info.frames) / info.samplerate, "0.00")
                  << " s, " << info.samplerate << " Hz, " << ((info.format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_U8 ? 8 : 16)
                  << "-bit " << (info.channels == 1 ? "mono" : "stereo") << '\n';
        sf_close(sf);
    }
    return 0;
}

}  // namespace velaro::cli
