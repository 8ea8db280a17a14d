// velaro cd: the ripper's drives and track list, extraction of one track to the
// wave file or WMA, and playing the disc through the engine.

#include <unistd.h>

#include <atomic>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <memory>
#include <thread>

#include "arg_value.h"
#include "commands.h"
#include "core/base/cp1252.h"
#include "core/base/vb_error.h"
#include "core/cd/cd_text.h"
#include "core/cd/rip.h"
#include "engine/audio_engine.h"
#include "engine/cd_drives.h"
#include "engine/cd_wma_encoder.h"
#include "json_writer.h"

namespace velaro::cli {

namespace {

const char* kCdUsage =
    "usage: velaro cd list [--device DEV|IMAGE.cue] [--json]\n"
    "       velaro cd rip --device DEV|IMAGE.cue --track N [-o OUT.wav | --wma OUT.wma --bitrate K]\n"
    "       velaro cd play --device DEV|IMAGE.cue [--track N] [--no-device]\n";

// The ripper's own texts for a drive without a disc and a stream that can't be made.
const char* kNoTracks = "Error retreiving number of tracks.";
const char* kNoStream = "Unable to Create CD Stream!";

std::atomic<bool> interrupted{false};
void onInterrupt(int) { interrupted = true; }

struct CdArgs {
    std::string device, out, wma;
    int track = 0;  // from 1; 0 when not given
    int bitrate = 0;
    bool json = false;
    bool noDevice = false;
};

bool number(const std::string& v, int& out) {
    auto [p, ec] = std::from_chars(v.data(), v.data() + v.size(), out);
    return ec == std::errc() && p == v.data() + v.size();
}

int usage(const std::string& why) {
    if (!why.empty()) std::cerr << "velaro cd: " << why << '\n';
    std::cerr << kCdUsage;
    return 2;
}

bool parse(const std::vector<std::string>& args, CdArgs& a, std::string& error) {
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& o = args[i];
        std::string v;
        if (o == "--json") a.json = true;
        else if (o == "--no-device") a.noDevice = true;
        else if (o == "--device") {
            if (!takeValue(args, i, a.device, error)) return false;
        } else if (o == "-o") {
            if (!takeValue(args, i, a.out, error)) return false;
        } else if (o == "--wma") {
            if (!takeValue(args, i, a.wma, error)) return false;
        } else if (o == "--track") {
            if (!takeValue(args, i, v, error)) return false;
            if (!number(v, a.track)) {
                error = "--track needs a whole number, not '" + v + "'";
                return false;
            }
        } else if (o == "--bitrate") {
            if (!takeValue(args, i, v, error)) return false;
            if (!number(v, a.bitrate) || a.bitrate <= 0) {
                error = "--bitrate needs kbps as a whole number, not '" + v + "'";
                return false;
            }
        } else {
            error = "unknown option '" + o + "'";
            return false;
        }
    }
    return true;
}

// The drives of the machine, or the one named.
std::unique_ptr<engine::EngineCdLibrary> makeLibrary(const CdArgs& a, engine::AudioEngine* engine) {
    auto cd = std::make_unique<engine::EngineCdLibrary>(engine, a.device.empty());
    if (!a.device.empty()) cd->addDrive(a.device);
    return cd;
}

std::string comboEntry(platform::CdLibrary& cd, int drive, const std::string& description) {
    return std::string(1, static_cast<char>('A' + cd.GetDriveLetter(drive))) + ": " + description;
}

// The track number given, checked against the disc; -1 (after the message) when it is out of range.
int trackIndex(platform::CdLibrary& cd, int track, int& exitCode) {
    if (!cd.IsReady(0) || cd.GetTracks(0) <= 0) {
        std::cerr << kNoStream << '\n';
        exitCode = 1;
        return -1;
    }
    const int tracks = cd.GetTracks(0);
    if (track < 1 || track > tracks) {
        std::cerr << "velaro cd: track " << track << " out of range (1-" << tracks << ")\n";
        exitCode = 2;
        return -1;
    }
    return track - 1;
}

int runList(const CdArgs& a) {
    auto library = makeLibrary(a, nullptr);
    engine::EngineCdLibrary& cd = *library;
    std::vector<std::string> drives;
    std::string description;
    for (int i = 0; cd.GetDriveDescription(i, description); ++i) drives.push_back(comboEntry(cd, i, description));

    struct Row {
        int number;
        std::string title, performer, time, line;
        int64_t bytes;
    };
    std::vector<Row> rows;
    std::string error;
    // The list of the first drive, as the window shows it when it opens.
    if (drives.empty()) error = kNoTracks;
    else if (!cd.IsReady(0)) error = kNoTracks;
    else {
        const int tracks = cd.GetTracks(0);
        std::string block;
        const bool text = cd.GetID(0, 4, block);
        const cd::CdText cdText = cd::parseCdText(block, tracks);
        for (int t = 1; t <= tracks; ++t) {
            const int64_t bytes = cd.GetTrackLength(0, t - 1);
            if (bytes <= 0) continue;  // a data track has no place in the list
            Row r{t, text ? cdText.titles[t] : "", text ? cdText.performers[t] : "", cd::trackTime(bytes), "", bytes};
            r.line = text ? cd::trackLine(t, bytes, r.title, r.performer) : cd::trackLine(t, bytes);
            rows.push_back(r);
        }
    }
    if (a.json) {
        JsonWriter j(true);
        j.beginObject().key("drives").beginArray();
        for (const auto& d : drives) j.value(cp1252ToUtf8(d));
        j.endArray().key("tracks").beginArray();
        for (const Row& r : rows) {
            j.beginObject().key("number").value(r.number).key("title").value(cp1252ToUtf8(r.title));
            j.key("performer").value(cp1252ToUtf8(r.performer)).key("bytes").value(r.bytes);
            j.key("time").value(r.time).key("line").value(cp1252ToUtf8(r.line)).endObject();
        }
        j.endArray().endObject();
        std::cout << j.str() << '\n';
    } else {
        for (const auto& d : drives) std::cout << cp1252ToUtf8(d) << '\n';
        for (const Row& r : rows) std::cout << cp1252ToUtf8(r.line) << '\n';
    }
    if (!error.empty()) {
        std::cerr << error << '\n';
        return 1;
    }
    return 0;
}

class Bar {
public:
    Bar() : tty_(isatty(STDERR_FILENO) == 1) {}
    void operator()(int64_t pos, int64_t length) {
        if (!tty_ || length <= 0) return;
        const double p = 100.0 * static_cast<double>(pos) / static_cast<double>(length);
        const int filled = static_cast<int>(p * 40 / 100);
        std::fprintf(stderr, "\r[%s%s] %5.1f%%", std::string(static_cast<size_t>(filled), '#').c_str(),
                     std::string(static_cast<size_t>(40 - filled), '.').c_str(), p);
        shown_ = true;
    }
    void finish() {
        if (shown_) std::fputc('\n', stderr);
        shown_ = false;
    }

private:
    bool tty_;
    bool shown_ = false;
};

int runRip(const CdArgs& a) {
    if (a.device.empty()) return usage("rip needs --device");
    if (a.track == 0) return usage("rip needs --track N");
    if (a.out.empty() == a.wma.empty()) return usage("rip needs either -o OUT.wav or --wma OUT.wma");
    auto library = makeLibrary(a, nullptr);
    engine::EngineCdLibrary& cd = *library;
    int code = 0;
    const int track = trackIndex(cd, a.track, code);
    if (track < 0) return code;

    struct sigaction sa{}, old{};
    sa.sa_handler = onInterrupt;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, &old);
    Bar bar;
    const auto onBlock = [&](int64_t pos, int64_t length) {
        bar(pos, length);
        return !interrupted.load();
    };
    cd.Door(0, platform::kDoorLock);
    cd::RipResult r;
    std::string failure;
    try {
        if (!a.out.empty()) {
            r = cd::ripToWave(cd, 0, track, a.out, onBlock);
        } else {
            engine::FfmpegWmaEncoder wma;
            const int rate = a.bitrate ? a.bitrate * 1000 : 128000;
            r = cd::ripToWma(cd, wma, 0, track, a.wma, rate, nullptr, onBlock, [&](int c) {
                failure = "An error occured while encoding WMA data.\nError Code : " + std::to_string(c);
            });
        }
    } catch (const std::exception& e) {
        failure = e.what();
    }
    cd.Door(0, platform::kDoorUnlock);
    bar.finish();
    sigaction(SIGINT, &old, nullptr);
    if (!failure.empty()) {
        std::cerr << "velaro cd: " << failure << '\n';
        return 1;
    }
    if (r.outcome == cd::RipOutcome::NoStream) {
        std::cerr << kNoStream << "\nError Code : " << r.code << '\n';
        return 1;
    }
    if (r.outcome == cd::RipOutcome::NoOutput) {
        std::cerr << "An error occured while opening output file.\nError Code : " << r.code << '\n';
        return 1;
    }
    std::cerr << (a.out.empty() ? "WMA File Encoded." : "WAV File Encoded.") << '\n';
    return 0;
}

int runPlayDisc(const CdArgs& a) {
    if (a.device.empty()) return usage("play needs --device");
    engine::AudioEngine audio(44100);
    auto library = makeLibrary(a, &audio);
    engine::EngineCdLibrary& cd = *library;
    int code = 0;
    int track = trackIndex(cd, a.track == 0 ? 1 : a.track, code);
    if (track < 0) return code;
    std::string why;
    const bool device = !a.noDevice && audio.startDevice(why);
    if (!device) std::cerr << "velaro cd: no sound device" << (why.empty() ? "" : " (" + why + ")") << ", playing offline\n";
    struct sigaction sa{}, old{};
    sa.sa_handler = onInterrupt;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, &old);
    const int tracks = cd.GetTracks(0);
    const bool tty = isatty(STDOUT_FILENO) == 1;
    int result = 0;
    // Track after track to the disc's end; the window goes round again, a command ends.
    for (; track < tracks && !interrupted; ++track) {
        if (cd.GetTrackLength(0, track) <= 0) continue;
        const platform::CdStreamId s = cd.StreamCreate(0, track, platform::kCdStreamFreeOld | platform::kCdStreamAutoFree);
        if (!s || !cd.ChannelPlay(s, true)) {
            std::cerr << kNoStream << "\nError Code : " << cd.ErrorGetCode() << '\n';
            result = 1;
            break;
        }
        std::atomic<bool> ended{false}, failed{false};
        cd.ChannelSetSync(s, platform::kCdSyncEnd, [&] { ended = true; });
        cd.ChannelSetSync(s, platform::kCdSyncCdError, [&] { failed = true; });
        const int64_t length = cd.StreamGetLength(s);
        std::cout << "Track " << track + 1 << " [" << cd::trackTime(length) << "]\n" << std::flush;
        while (!ended && !failed && !interrupted && cd.ChannelIsActive(s) != 0) {
            if (device) std::this_thread::sleep_for(std::chrono::milliseconds(50));
            else audio.render(2205);
            if (tty) {
                const double pos = static_cast<double>(cd.ChannelGetPosition(s)) / cd::kBytesPerSecond;
                std::printf("\r%s / %s", cd::Seconds2HMS(pos).c_str(), cd::trackTime(length).c_str());
                std::fflush(stdout);
            }
        }
        if (tty) std::printf("\n");
        if (failed) {
            std::cerr << "There was an error playing back and Audio CD stream. Most probable cause is the CD drive was opened.\n";
            result = 1;
            cd.StreamFree(s);
            break;
        }
        cd.ChannelStop(s);
    }
    sigaction(SIGINT, &old, nullptr);
    if (device) audio.stopDevice();
    return result;
}

}  // namespace

int runCd(const std::vector<std::string>& args) {
    if (args.empty()) return usage("");
    const std::string sub = args.front();
    CdArgs a;
    std::string error;
    if (!parse(std::vector<std::string>(args.begin() + 1, args.end()), a, error)) return usage(error);
    if (sub == "list") return runList(a);
    if (sub == "rip") return runRip(a);
    if (sub == "play") return runPlayDisc(a);
    return usage("unknown subcommand '" + sub + "'");
}

}  // namespace velaro::cli
