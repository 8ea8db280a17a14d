#pragma once
// Reads the audio of one track through paranoia (verify, retries, jitter
// correction), as 16-bit little-endian stereo bytes, in whole sample frames.

#include <cdio/cdio.h>
#include <cdio/paranoia/cdda.h>
#include <cdio/paranoia/paranoia.h>

#include <cstdint>
#include <string>
#include <vector>

namespace velaro::engine {

class CdSectorReader {
public:
    static constexpr int kSectorBytes = 2352;

    ~CdSectorReader();
    // Opens its own handle on `source` (a drive or an image) for track `track` (from 1).
    // False with `error` set to a library code when the track can't be read as audio.
    bool open(const std::string& source, int track, int& error);
    int64_t lengthBytes() const { return static_cast<int64_t>(sectors_) * kSectorBytes; }
    int64_t position() const { return pos_; }
    bool atEnd() const { return pos_ >= lengthBytes(); }
    bool failed() const { return failed_; }
    // Up to `bytes` (rounded down to whole frames of 4 bytes); 0 at the end or after a failure.
    int read(uint8_t* out, int bytes);
    bool seek(int64_t bytes);

private:
    bool fill();
    CdIo_t* cdio_ = nullptr;
    cdrom_drive_t* drive_ = nullptr;
    cdrom_paranoia_t* paranoia_ = nullptr;
    lsn_t first_ = 0;
    int32_t sectors_ = 0;
    int64_t pos_ = 0;           // bytes handed out
    uint8_t sector_[kSectorBytes];
    int sectorOffset_ = kSectorBytes;  // next byte of sector_ to hand out
    bool failed_ = false;
};

// Sectors of audio in track `t`; 0 when it is no audio track or can't be read.
// An audio track followed by a data track of a later session (an enhanced CD)
// ends 11400 sectors before that track: the gap between the sessions is no audio.
int32_t audioTrackSectors(CdIo_t* cdio, track_t t, lsn_t* start = nullptr);

// Opens a drive or an image: by extension for images, else as a device.
CdIo_t* openCdSource(const std::string& source);
bool isCdImage(const std::string& source);

}  // namespace velaro::engine
