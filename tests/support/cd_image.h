#pragma once
// BIN/CUE disc images built in code: audio tracks of known samples, data
// tracks, with or without CD-TEXT lines in the sheet.

#include <cstdint>
#include <string>
#include <vector>

namespace velaro::testing {

struct ImageTrack {
    int sectors = 75;      // 2352 bytes each
    bool data = false;     // a MODE1/2352 track
    std::string title;     // CD-TEXT, written when `cdText`
    std::string performer;
};

struct ImageDisc {
    std::vector<ImageTrack> tracks;
    bool cdText = false;
    std::string title;      // the album
    std::string performer;  // the artist
};

// The bytes track `index` (from 0) holds in the BIN: distinct for every track and sector.
std::vector<uint8_t> trackBytes(const ImageDisc& disc, int index);
// Writes `dir`/`name`.bin and `dir`/`name`.cue; returns the sheet's path.
std::string writeImage(const std::string& dir, const std::string& name, const ImageDisc& disc);
// A disc of `n` audio tracks of `sectors` each, no CD-TEXT.
ImageDisc plainDisc(int n, int sectors);

}  // namespace velaro::testing
