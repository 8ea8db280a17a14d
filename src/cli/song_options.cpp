#include "song_options.h"

#include "arg_value.h"
#include "effect_option.h"

#include <charconv>
#include <filesystem>

namespace velaro::cli {

namespace {
bool number(const std::string& text, int lo, int hi, int& out) {
    auto [p, ec] = std::from_chars(text.data(), text.data() + text.size(), out);
    return ec == std::errc() && p == text.data() + text.size() && out >= lo && out <= hi;
}
}  // namespace

bool parseSongOptions(const std::vector<std::string>& args, bool wantOut, SongOptions& o, std::string& error) {
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        auto value = [&](std::string& v) { return takeValue(args, i, v, error); };
        auto ranged = [&](std::optional<int>& slot, int lo, int hi) {
            std::string v;
            int n = 0;
            if (!value(v)) return false;
            if (!number(v, lo, hi, n)) {
                error = a + " takes a whole number from " + std::to_string(lo) + " to " + std::to_string(hi);
                return false;
            }
            slot = n;
            return true;
        };
        if (a == "-o" || a == "--out") {
            if (!value(o.out)) return false;
        } else if (a == "--sync") {
            if (!value(o.sync)) return false;
        } else if (a == "--no-device") {
            o.noDevice = true;
        } else if (a == "--effect") {
            std::string v;
            dsp::EffectParams p;
            if (!value(v) || !parseEffect(v, p, error)) return false;
            o.effects.push_back(p);
        } else if (a == "--bank") {
            if (!value(o.bank)) return false;
        } else if (a == "--tempo") {
            if (!ranged(o.tempo, 0, 127)) return false;
        } else if (a == "--transpose") {
            if (!ranged(o.transpose, -10, 10)) return false;
        } else if (a == "--volume") {
            if (!ranged(o.volume, 50, 100)) return false;
        } else if (a == "--rate") {
            std::optional<int> r;
            if (!ranged(r, 8000, 192000)) return false;
            o.rate = *r;
        } else if (!a.empty() && a[0] == '-') {
            error = "unknown option " + a;
            return false;
        } else if (o.song.empty()) {
            o.song = a;
        } else {
            error = "one song only";
            return false;
        }
    }
    // The window's start moves into the application folder: names given
    // here are taken from where the command was typed.
    for (std::string* path : {&o.song, &o.out, &o.bank, &o.sync}) {
        std::error_code ec;
        if (!path->empty()) *path = std::filesystem::absolute(*path, ec).string();
    }
    if (o.song.empty()) error = "no song given";
    else if (wantOut && o.out.empty()) error = "no output file given (-o OUT.wav)";
    return error.empty();
}

}  // namespace velaro::cli
