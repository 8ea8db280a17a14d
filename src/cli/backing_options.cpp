#include "backing_options.h"

#include <sstream>

#include "arg_value.h"
#include "core/shell/frm_main.h"
#include "core/ui/scripted_dialogs.h"
#include "engine/audio_file_decoder.h"
#include "engine/engine_platform.h"

namespace velaro::cli {

namespace {

bool parseInt(const std::string& text, int lo, int hi, int& out) {
    try {
        size_t used = 0;
        const int v = std::stoi(text, &used);
        if (used != text.size() || v < lo || v > hi) return false;
        out = v;
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool parseBands(const std::string& text, std::array<int, 8>& out) {
    std::stringstream in(text);
    std::string part;
    int n = 0;
    while (std::getline(in, part, ',')) {
        if (n >= 8 || !parseInt(part, 0, 19, out[static_cast<size_t>(n)])) return false;
        ++n;
    }
    return n == 8 && (text.empty() || text.back() != ',');
}

}  // namespace

bool takeBackingOption(const std::vector<std::string>& args, size_t& i, BackingOptions& o, std::string& error) {
    const std::string& a = args[i];
    std::string v;
    if (a == "--remove-vocals") {
        o.removeVocals = true;
        return true;
    }
    if (a == "--no-bass-boost") {
        o.noBassBoost = true;
        return true;
    }
    if (a == "--vseq" || a == "--veq") {
        if (!takeValue(args, i, v, error)) return true;
        std::array<int, 8> bands{};
        if (!parseBands(v, bands)) {
            error = a + " takes eight values 0-19, separated by commas";
            return true;
        }
        (a == "--vseq" ? o.vseq : o.veq) = bands;
        return true;
    }
    struct Ranged {
        const char* name;
        int lo, hi;
    };
    for (const Ranged r : {Ranged{"--bass-boost", 0, 10}, Ranged{"--rate", 8000, 192000}, Ranged{"--key", -12, 12},
                           Ranged{"--speed", 50, 150}}) {
        if (a != r.name) continue;
        if (!takeValue(args, i, v, error)) return true;
        int n = 0;
        if (!parseInt(v, r.lo, r.hi, n)) {
            error = a + " takes a whole number from " + std::to_string(r.lo) + " to " + std::to_string(r.hi);
            return true;
        }
        if (a == "--bass-boost") o.bassBoost = n;
        else if (a == "--rate") o.rate = n;
        else if (a == "--key") o.key = n;
        else o.speed = n;
        return true;
    }
    return false;
}

int backingFileRate(const std::string& path) {
    engine::AudioFileDecoder d;
    if (d.openStream(path) && d.rate() > 0) return d.rate();
    return 44100;
}

double moduleSeconds(const std::string& path) {
    engine::AudioFileDecoder d;
    if (d.openStream(path)) return 0;
    if (!d.openModule(path, 44100, false)) return 0;
    return d.lengthSeconds();
}

void prepareBacking(song::frmMain& f, const BackingOptions& o) {
    record::MainBacking& b = f.backing;
    b.sldKey.setValue(o.key);
    b.sldSpeed.setValue(o.speed);
    // Checking the box is what sets the bass stream's slider to 8.
    if (o.removeVocals) b.Chkrem.setValue(1);
}

void tuneBacking(song::frmMain& f, const BackingOptions& o) {
    record::MainBacking& b = f.backing;
    for (int i = 0; i < 8; ++i) {
        if (o.vseq) b.vseq(i).setValue((*o.vseq)[static_cast<size_t>(i)]);
        if (o.veq) b.Veq1(i).setValue((*o.veq)[static_cast<size_t>(i)]);
    }
    if (o.bassBoost) b.Slider3.setValue(*o.bassBoost);
    if (o.noBassBoost) b.Chklow.setValue(0);
}

std::string backingError(song::frmMain& f) {
    auto* dialogs = dynamic_cast<ui::ScriptedDialogs*>(&f.rt.dialogs);
    if (!dialogs) return "";
    for (const auto& box : dialogs->messageBoxes()) {
        if (box.title != "Error") continue;
        std::string text = box.text;
        for (size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at)) text.erase(at, 1);
        return text;
    }
    return "";
}

std::vector<std::string> backingNotes(song::frmMain& f) {
    std::vector<std::string> out;
    if (auto* dialogs = dynamic_cast<ui::ScriptedDialogs*>(&f.rt.dialogs))
        for (const auto& box : dialogs->messageBoxes())
            if (box.title != "Error") out.push_back(box.title + ": " + box.text);
    return out;
}

bool backingPlaying(song::frmMain& f, engine::EnginePlatform& ep) {
    const record::MainBacking& b = f.backing;
    return (b.mainStream && ep.streams().ChannelIsActive(b.mainStream)) ||
           (b.lowStream && ep.streams().ChannelIsActive(b.lowStream));
}

}  // namespace velaro::cli
