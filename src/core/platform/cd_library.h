#pragma once
// Audio CD drives: tracks, CD-TEXT, the door and a decoding stream.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace velaro::platform {

struct CdTrack {
    int number = 0;
    bool audio = true;
    int64_t startSector = 0;
    int64_t sectors = 0;
    std::string title;      // CD-TEXT, Windows-1252 bytes
    std::string performer;  // CD-TEXT
};

class CdLibrary {
public:
    virtual ~CdLibrary() = default;
    virtual std::vector<std::string> Drives() = 0;
    virtual bool IsReady(int drive) = 0;
    virtual std::vector<CdTrack> Tracks(int drive) = 0;
    virtual std::string AlbumTitle(int drive) = 0;
    virtual std::string AlbumPerformer(int drive) = 0;
    virtual bool DoorIsOpen(int drive) = 0;
    virtual void Door(int drive, bool open) = 0;
    // Reads one track as 16-bit stereo 44100 Hz samples into a wave file.
    virtual int ExtractTrack(int drive, int track, const std::string& wavOut,
                             std::function<void(int percent)> progress) = 0;
};

}  // namespace velaro::platform
