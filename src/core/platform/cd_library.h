#pragma once
// Audio CD drives under the operations the CD window calls: drives and their
// capabilities, the door, tracks, CD-TEXT, and decoding or playing streams of
// a track. A disc image (BIN/CUE, NRG, TOC) stands where a drive is expected.

#include <cstdint>
#include <functional>
#include <string>

namespace velaro::platform {

using CdStreamId = uint32_t;  // 0: none

// What a drive says of itself. `rwflags` packs bytes 2 to 5 of the drive's
// capabilities page: bit 0 reads CD-R, 1 CD-RW, 2 method 2, 3 DVD-ROM, 4 DVD-R,
// 5 DVD-RAM, 20 mode 2 form 1, 21 mode 2 form 2, 22 multi-session, 24 CD audio,
// 25 stream is accurate.
struct CdInfo {
    uint32_t rwflags = 0;
    int maxspeed = 0;  // KB per second
    int cache = 0;     // KB
    bool canopen = false;
    bool canlock = false;
};

struct CdChannelInfo {
    int freq = 44100;
    int chans = 2;
    bool eightBits = false;
};

// Error codes the library reports, by the old library's numbers.
enum CdError : int {
    kCdOk = 0,
    kCdErrorHandle = 5,
    kCdErrorPosition = 7,
    kCdErrorNoCd = 12,
    kCdErrorTrack = 13,
    kCdErrorNotAudio = 17,
    kCdErrorIllParam = 20,
    kCdErrorDevice = 23,
    kCdErrorNotAvail = 37,
    kCdErrorUnknown = -1,
};

// Stream flags, the library's own values.
inline constexpr uint32_t kCdStreamFreeOld = 0x10000;   // a new stream frees the drive's old one
inline constexpr uint32_t kCdStreamAutoFree = 0x40000;  // freed when it stops
inline constexpr uint32_t kCdStreamDecode = 0x200000;   // read by GetData, not played

// Sync types.
inline constexpr uint32_t kCdSyncEnd = 0x80000002;       // one-shot: the end of the track
inline constexpr uint32_t kCdSyncSlide = 0x80000005;     // one-shot: a slide has ended
inline constexpr uint32_t kCdSyncCdError = 0x800003E8;   // one-shot: the disc could not be read

// Door actions.
enum CdDoor : int { kDoorClose = 0, kDoorOpen = 1, kDoorLock = 2, kDoorUnlock = 3 };

class CdLibrary {
public:
    virtual ~CdLibrary() = default;
    // Drives: false past the last one.
    virtual bool GetDriveDescription(int drive, std::string& description) = 0;
    virtual int GetDriveLetter(int drive) = 0;  // 0-based
    virtual bool GetInfo(int drive, CdInfo& info) = 0;
    virtual bool IsReady(int drive) = 0;
    virtual int GetTracks(int drive) = 0;  // -1 on failure
    // Bytes of 16-bit stereo 44100 Hz audio; -1 on failure (a data track is not audio).
    virtual int64_t GetTrackLength(int drive, int track) = 0;
    // id 4: the CD-TEXT block, "KEYn=text" strings each ended by a zero byte
    // and a final empty one (Windows-1252). False when the disc has none.
    virtual bool GetID(int drive, int id, std::string& block) = 0;
    virtual bool Door(int drive, int action) = 0;
    virtual bool DoorIsOpen(int drive) = 0;
    virtual bool DoorIsLocked(int drive) = 0;
    virtual int ErrorGetCode() = 0;
    // The output's volume, 0 to 100.
    virtual int GetVolume() = 0;

    // Streams of a track (from 0); 0 on failure.
    virtual CdStreamId StreamCreate(int drive, int track, uint32_t flags) = 0;
    virtual bool StreamFree(CdStreamId s) = 0;
    virtual int64_t StreamGetLength(CdStreamId s) = 0;  // bytes
    virtual bool ChannelGetInfo(CdStreamId s, CdChannelInfo& info) = 0;
    // 0 stopped, 1 playing, 3 paused. A decoding stream is active while it has data.
    virtual int ChannelIsActive(CdStreamId s) = 0;
    // Decoding streams: up to `bytes` of samples, in whole sample frames; -1 on error.
    virtual int ChannelGetData(CdStreamId s, void* buffer, int bytes) = 0;
    virtual int64_t ChannelGetPosition(CdStreamId s) = 0;  // bytes
    virtual bool ChannelSetPosition(CdStreamId s, int64_t bytes) = 0;
    virtual bool ChannelPlay(CdStreamId s, bool restart) = 0;
    virtual bool ChannelPause(CdStreamId s) = 0;
    virtual bool ChannelStop(CdStreamId s) = 0;
    // Volume 0 to 100 (-1 keeps it), pan -100 to 100 (-101 keeps it).
    virtual bool ChannelSetAttributes(CdStreamId s, int freq, int volume, int pan) = 0;
    virtual bool ChannelSlideAttributes(CdStreamId s, int freq, int volume, int pan, int ms) = 0;
    // Peak level, left in the low word and right in the high, 0 to 32768; 0xFFFFFFFF when not playing.
    virtual uint32_t ChannelGetLevel(CdStreamId s) = 0;
    // A one-shot sync. `fn` runs on a library thread: post to the logic's loop from it.
    virtual uint32_t ChannelSetSync(CdStreamId s, uint32_t type, std::function<void()> fn) = 0;
};

}  // namespace velaro::platform
