#pragma once
// Options shared by the commands that play a song, with their checks.

#include <optional>
#include <string>
#include <vector>

#include "dsp/effect_params.h"

namespace velaro::cli {

struct SongOptions {
    std::string song;
    std::string out;
    std::string bank;
    std::optional<int> tempo;      // vslidertempo, 0-127
    std::optional<int> transpose;  // vscroll1, -10..10
    std::optional<int> volume;     // Slider1, 50-100
    int rate = 44100;
    std::string sync;        // play: where to write the sync text
    bool noDevice = false;   // play: stay off the sound card
    // --effect NAME[:FIELD=VALUE,...], in the order given: the chain on the song.
    std::vector<dsp::EffectParams> effects;
};

// Parses args into opts; on a usage error returns false with the reason.
bool parseSongOptions(const std::vector<std::string>& args, bool wantOut, SongOptions& opts, std::string& error);

}  // namespace velaro::cli
