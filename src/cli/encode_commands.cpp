// velaro encode / normalize: a wave file to an MP3 with the settings of "Wav
// to Mp3", and a wave file raised to a percent of full level. Progress goes to
// stderr: a bar on a terminal, one percent per line into a pipe. Ctrl-C stops
// an encode and keeps what was encoded as a complete, shorter MP3.

#include <unistd.h>

#include <atomic>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <iostream>

#include "arg_value.h"
#include "commands.h"
#include "core/base/paths.h"
#include "core/record/bit_rates.h"
#include "core/shell/config_vlr.h"
#include "engine/mp3_encoder.h"
#include "engine/normaliser.h"

namespace velaro::cli {

namespace {

const char* kEncodeUsage =
    "usage: velaro encode IN.wav -o OUT.mp3 [--bitrate KBPS] [--quality fast|medium|high]\n"
    "                     [--channels stereo|mono] [--vbr Q] [--crc] [--intensity]\n";
const char* kNormalizeUsage = "usage: velaro normalize IN.wav -o OUT.wav [--percent P]\n";

std::atomic<bool> interrupted{false};

extern "C" void onInterrupt(int) { interrupted.store(true); }

// Ctrl-C asks the job to stop instead of killing the process half way.
struct InterruptStops {
    struct sigaction old {};
    InterruptStops() {
        struct sigaction sa {};
        sa.sa_handler = onInterrupt;
        sigemptyset(&sa.sa_mask);
        sigaction(SIGINT, &sa, &old);
    }
    ~InterruptStops() { sigaction(SIGINT, &old, nullptr); }
};

class ProgressLine {
public:
    ProgressLine() : tty_(isatty(STDERR_FILENO) == 1) {}
    void operator()(double p) {
        const int whole = static_cast<int>(p);
        if (tty_) {
            const int filled = whole * 40 / 100;
            std::fprintf(stderr, "\r[%s%s] %5.1f%%", std::string(static_cast<size_t>(filled), '#').c_str(),
                         std::string(static_cast<size_t>(40 - filled), '.').c_str(), p);
            shown_ = true;
        } else if (whole != last_) {
            std::fprintf(stderr, "%d%%\n", whole);
        }
        last_ = whole;
    }
    // Ends the bar's line so that what follows starts on its own.
    void finish() {
        if (shown_) std::fputc('\n', stderr);
        shown_ = false;
    }

private:
    bool tty_;
    bool shown_ = false;
    int last_ = -1;
};

bool wholeNumber(const std::string& v, int& out) {
    auto [p, ec] = std::from_chars(v.data(), v.data() + v.size(), out);
    return ec == std::errc() && p == v.data() + v.size();
}

struct Files {
    std::string in, out;
};

// A positional input and -o; false with the error for anything else.
bool takeFile(const std::vector<std::string>& args, size_t& i, Files& f, std::string& error) {
    const std::string& a = args[i];
    if (a == "-o" || a == "--output") return takeValue(args, i, f.out, error);
    if (!a.empty() && a[0] == '-' && a != "-") {
        error = "unknown option " + a;
        return false;
    }
    if (!f.in.empty()) {
        error = "one input file only";
        return false;
    }
    f.in = a;
    return true;
}

// The percent the normaliser window used last, when the configuration is ours and has one.
int configuredPercent() {
    try {
        shell::ConfigVlr c;
        shell::readConfig(readWholeFile(RPP(applicationFolder()) + "config.vlr"), c);
        if (c.configMark == "OK" && !c.normalizePercent.empty()) return record::wholeNumberOf(c.normalizePercent);
    } catch (const std::exception&) {
    }
    return 100;
}

}  // namespace

int runEncode(const std::vector<std::string>& args) {
    platform::Mp3Settings s;  // cmdSave's choices: constant rate, medium, stereo
    s.encoderBitRate = 128000;
    Files files;
    std::string error;
    for (size_t i = 0; i < args.size() && error.empty(); ++i) {
        const std::string& a = args[i];
        std::string v;
        int n = 0;
        if (a == "--crc") {
            s.encoderCrc = true;
        } else if (a == "--intensity") {
            s.encoderIntensity = true;
        } else if (a == "--bitrate") {
            if (takeValue(args, i, v, error) && (!wholeNumber(v, n) || n <= 0 || n > 100000))
                error = "--bitrate takes kilobits per second, such as 128";
            s.encoderBitRate = n * 1000;
        } else if (a == "--quality") {
            if (!takeValue(args, i, v, error)) break;
            if (v == "fast") s.encoderQuality = 0;
            else if (v == "medium") s.encoderQuality = 1;
            else if (v == "high") s.encoderQuality = 2;
            else error = "--quality is fast, medium or high";
        } else if (a == "--channels") {
            if (!takeValue(args, i, v, error)) break;
            if (v == "stereo") s.encoderChannels = 2;
            else if (v == "mono") s.encoderChannels = 1;
            else error = "--channels is stereo or mono";
        } else if (a == "--vbr") {
            // The list's rows 1 to 10: 1 is the best.
            if (takeValue(args, i, v, error) && (!wholeNumber(v, n) || n < 1 || n > 10))
                error = "--vbr takes a quality from 1 (best) to 10";
            s.encoderVbr = 1;
            s.encoderVbrQuality = static_cast<int16_t>(100 - (n - 1) * 10);
        } else {
            takeFile(args, i, files, error);
        }
    }
    if (error.empty() && files.in.empty()) error = "no input file given";
    if (error.empty() && files.out.empty()) error = "no output file given (-o OUT.mp3)";
    if (!error.empty()) {
        std::cerr << "velaro encode: " << error << '\n' << kEncodeUsage;
        return 2;
    }
    s.encoderInputFile = files.in;
    s.encoderOutputFile = files.out;

    InterruptStops guard;
    ProgressLine progress;
    engine::LameMp3Encoder encoder;
    const std::string why = encoder.Encode(s, interrupted, [&](double p) { progress(p); });
    progress.finish();
    if (!why.empty()) {
        std::cerr << "velaro encode: " << why << '\n';
        return 1;
    }
    if (interrupted.load()) std::cerr << "velaro encode: stopped; " << files.out << " holds what was encoded\n";
    return 0;
}

int runNormalize(const std::vector<std::string>& args) {
    Files files;
    std::string error;
    int percent = 0;
    bool percentGiven = false;
    for (size_t i = 0; i < args.size() && error.empty(); ++i) {
        std::string v;
        if (args[i] == "--percent") {
            if (takeValue(args, i, v, error) && (!wholeNumber(v, percent) || percent < 1 || percent > 100))
                error = "--percent takes a whole number from 1 to 100";
            percentGiven = true;
        } else {
            takeFile(args, i, files, error);
        }
    }
    if (error.empty() && files.in.empty()) error = "no input file given";
    if (error.empty() && files.out.empty()) error = "no output file given (-o OUT.wav)";
    if (!error.empty()) {
        std::cerr << "velaro normalize: " << error << '\n' << kNormalizeUsage;
        return 2;
    }
    if (!percentGiven) percent = configuredPercent();

    InterruptStops guard;
    ProgressLine progress;
    engine::SndfileNormaliser normaliser;
    const std::string why =
        normaliser.Normalize(files.in, files.out, percent, interrupted, [&](double p) { progress(p); });
    progress.finish();
    if (!why.empty()) {
        std::cerr << "velaro normalize: " << why << '\n';
        return 1;
    }
    return 0;
}

}  // namespace velaro::cli
