#pragma once
// Options of the commands that play an audio backing (backing, play, record
// --audio): the backing player's controls as the window holds them.

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velaro::song {
class frmMain;
}
namespace velaro::engine {
class EnginePlatform;
}

namespace velaro::cli {

struct BackingOptions {
    std::string file;
    std::string out;
    bool removeVocals = false;                 // Chkrem checked
    std::optional<std::array<int, 8>> vseq;   // 0-19 each
    std::optional<std::array<int, 8>> veq;    // Veq1, 0-19 each
    std::optional<int> bassBoost;              // Slider3, 0-10
    bool noBassBoost = false;                  // Chklow unchecked
    std::optional<int> rate;
    int key = 0;                               // semitones, -12..12
    int speed = 100;                           // percent, 50..150
};

// Takes the backing options out of args[i] (and its value); true when it was
// one of them. On a bad value returns true with `error` set.
bool takeBackingOption(const std::vector<std::string>& args, size_t& i, BackingOptions& o, std::string& error);

// The file's own rate (44100 for a module or a file nothing reads).
int backingFileRate(const std::string& path);
// Seconds a module plays once through, or 0 when the file is no module.
double moduleSeconds(const std::string& path);

// Before the backing starts: the controls that must be set when it starts.
void prepareBacking(song::frmMain& f, const BackingOptions& o);
// After VocalRemove: the sliders and boxes the user moves while it plays.
void tuneBacking(song::frmMain& f, const BackingOptions& o);
// The Error_ box VocalRemove showed, as one line per line of text; "" when none.
std::string backingError(song::frmMain& f);
// Renders the started backing offline to its last frame (a module once
// through) and hands the frames to `out`; gives how many.
int64_t renderBacking(song::frmMain& f, engine::EnginePlatform& ep, const BackingOptions& o, int rate,
                      const std::function<void(const float*, int)>& out);
// Every other box the backing showed ("title: text"), for the user to read.
std::vector<std::string> backingNotes(song::frmMain& f);
// True while a stream of the backing plays.
bool backingPlaying(song::frmMain& f, engine::EnginePlatform& ep);

}  // namespace velaro::cli
