#pragma once
// The CD service over libcdio: the machine's drives and any disc images the
// program was given, drive capabilities from the MMC capabilities page, the
// door, tracks and CD-TEXT, and streams of tracks for reading or playing.

#include <cdio/cdio.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "audio_engine.h"
#include "cd_playback.h"
#include "core/platform/cd_library.h"

namespace velaro::engine {

class EngineCdLibrary : public platform::CdLibrary {
public:
    // Without an engine the service reads and decodes but plays nothing.
    explicit EngineCdLibrary(AudioEngine* engine = nullptr, bool scanDrives = true);
    ~EngineCdLibrary() override;

    // An image (or a device path) that stands as one more drive, after the machine's own.
    void addDrive(const std::string& source);
    const std::string& driveSource(int drive) const;

    bool GetDriveDescription(int drive, std::string& description) override;
    int GetDriveLetter(int drive) override;
    bool GetInfo(int drive, platform::CdInfo& info) override;
    bool IsReady(int drive) override;
    int GetTracks(int drive) override;
    int64_t GetTrackLength(int drive, int track) override;
    bool GetID(int drive, int id, std::string& block) override;
    bool Door(int drive, int action) override;
    bool DoorIsOpen(int drive) override;
    bool DoorIsLocked(int drive) override;
    int ErrorGetCode() override { return error_; }
    int GetVolume() override;

    platform::CdStreamId StreamCreate(int drive, int track, uint32_t flags) override;
    bool StreamFree(platform::CdStreamId s) override;
    int64_t StreamGetLength(platform::CdStreamId s) override;
    bool ChannelGetInfo(platform::CdStreamId s, platform::CdChannelInfo& info) override;
    int ChannelIsActive(platform::CdStreamId s) override;
    int ChannelGetData(platform::CdStreamId s, void* buffer, int bytes) override;
    int64_t ChannelGetPosition(platform::CdStreamId s) override;
    bool ChannelSetPosition(platform::CdStreamId s, int64_t bytes) override;
    bool ChannelPlay(platform::CdStreamId s, bool restart) override;
    bool ChannelPause(platform::CdStreamId s) override;
    bool ChannelStop(platform::CdStreamId s) override;
    bool ChannelSetAttributes(platform::CdStreamId s, int freq, int volume, int pan) override;
    bool ChannelSlideAttributes(platform::CdStreamId s, int freq, int volume, int pan, int ms) override;
    uint32_t ChannelGetLevel(platform::CdStreamId s) override;
    uint32_t ChannelSetSync(platform::CdStreamId s, uint32_t type, std::function<void()> fn) override;

private:
    struct Drive {
        std::string source;
        bool image = false;
        CdIo_t* cdio = nullptr;
        bool locked = false;
    };
    struct Stream {
        int drive = 0;
        int track = 0;
        uint32_t flags = 0;
        std::unique_ptr<CdSectorReader> reader;  // decoding streams
        std::unique_ptr<CdDeck> deck;            // playing streams
        bool stopped = false;
        float volume = 1.0f;
    };
    Drive* drive(int i);
    CdIo_t* handle(int i);  // opened on first use; nullptr when no disc can be opened
    void reopen(int i);
    Stream* stream(platform::CdStreamId s);
    bool fail(int code) {
        error_ = code;
        return false;
    }
    void dropStream(platform::CdStreamId s);

    AudioEngine* engine_;
    // The engine keeps its sources to its end, which may come after ours: once
    // playing, the source is handed to it rather than freed under a running device.
    std::unique_ptr<CdPlaybackSource> ownSource_ = std::make_unique<CdPlaybackSource>();
    CdPlaybackSource& source_ = *ownSource_;
    bool sourceAdded_ = false;
    std::vector<Drive> drives_;
    std::map<platform::CdStreamId, std::unique_ptr<Stream>> streams_;
    platform::CdStreamId next_ = 1;
    int error_ = 0;
};

}  // namespace velaro::engine
