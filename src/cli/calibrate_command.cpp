// velaro calibrate: the sound card's round trip, measured with clicks played
// and heard back (a loop cable, or the microphone near the speaker), kept in
// the application folder for the takes to line the voice up by.

#include <cmath>
#include <iostream>

#include "arg_value.h"
#include "calibration.h"
#include "commands.h"
#include "core/base/paths.h"
#include "core/base/vb_number.h"
#include "engine/audio_engine.h"
#include "engine/latency_probe.h"

namespace velaro::cli {

std::string calibrationPath() { return RPP(applicationFolder()) + "latency.txt"; }

int storedLatencyMs() {
    try {
        const std::string text = readWholeFile(calibrationPath());
        const int ms = std::stoi(text);
        return ms >= 0 && ms <= 2000 ? ms : -1;
    } catch (const std::exception&) {
        return -1;
    }
}

int runCalibrate(const std::vector<std::string>& args) {
    std::string input, error;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--input") {
            if (!takeValue(args, i, input, error)) break;
        } else {
            error = "unknown option " + args[i];
        }
    }
    if (!error.empty()) {
        std::cerr << "velaro calibrate: " << error << "\nusage: velaro calibrate [--input NAME]\n";
        return 2;
    }
    engine::AudioEngine audio(44100);
    audio.setInputDevice(input);
    if (!audio.startDevice(error)) {
        std::cerr << "velaro calibrate: no sound device (" << error << ")\n";
        return 1;
    }
    const engine::LatencyResult r = engine::measureRoundTrip(audio);
    audio.stopDevice();
    if (!r.ok) {
        std::cerr << "velaro calibrate: " << r.error
                  << "; loop the output into the input, or hold the microphone near the speaker\n";
        return 1;
    }
    const int ms = static_cast<int>(std::lround(r.ms));
    try {
        writeWholeFile(calibrationPath(), std::to_string(ms) + "\n");
    } catch (const std::exception& e) {
        std::cerr << "velaro calibrate: " << e.what() << '\n';
        return 1;
    }
    std::cerr << "velaro calibrate: " << r.clicksMs.size() << " clicks heard back; kept in " << calibrationPath() << '\n';
    std::cout << ms << " ms\n";
    return 0;
}

}  // namespace velaro::cli
