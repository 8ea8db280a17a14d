#include "cd_drives.h"

#include <cdio/cdtext.h>
#include <cdio/mmc.h>
#include <cdio/mmc_ll_cmds.h>

#include <algorithm>
#include <cmath>

#include "core/base/cp1252.h"

namespace velaro::engine {

using platform::CdStreamId;

namespace {

bool validUtf8(const std::string& s) {
    size_t i = 0;
    while (i < s.size()) {
        const auto c = static_cast<unsigned char>(s[i]);
        int n = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
        if (n < 0 || i + n >= s.size() + (n == 0 ? 1 : 0)) return false;
        for (int k = 1; k <= n; ++k)
            if ((static_cast<unsigned char>(s[i + k]) >> 6) != 2) return false;
        i += n + 1;
    }
    return true;
}

// CD-TEXT reaches us as UTF-8 from discs and as the sheet's own bytes (Latin-1) from
// CUE files; the program keeps Windows-1252.
std::string toCp1252(const char* text) {
    std::string s = text ? text : "";
    return validUtf8(s) ? utf8ToCp1252(s) : s;
}

std::string baseName(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

EngineCdLibrary::EngineCdLibrary(AudioEngine* engine, bool scanDrives) : engine_(engine) {
    if (!scanDrives) return;
    // No drive gives no list at all, not an empty one.
    if (char** list = cdio_get_devices(DRIVER_DEVICE)) {
        for (char** d = list; *d; ++d) drives_.push_back(Drive{*d, false, nullptr, false});
        cdio_free_device_list(list);
    }
}

EngineCdLibrary::~EngineCdLibrary() {
    source_.setDeck(nullptr);
    streams_.clear();
    for (Drive& d : drives_)
        if (d.cdio) cdio_destroy(d.cdio);
}

void EngineCdLibrary::addDrive(const std::string& source) { drives_.push_back(Drive{source, isCdImage(source), nullptr, false}); }

const std::string& EngineCdLibrary::driveSource(int drive) const {
    static const std::string none;
    return drive >= 0 && drive < static_cast<int>(drives_.size()) ? drives_[drive].source : none;
}

EngineCdLibrary::Drive* EngineCdLibrary::drive(int i) {
    if (i < 0 || i >= static_cast<int>(drives_.size())) {
        error_ = platform::kCdErrorDevice;
        return nullptr;
    }
    return &drives_[i];
}

void EngineCdLibrary::reopen(int i) {
    Drive* d = drive(i);
    if (!d) return;
    if (d->cdio) cdio_destroy(d->cdio);
    d->cdio = openCdSource(d->source);
}

CdIo_t* EngineCdLibrary::handle(int i) {
    Drive* d = drive(i);
    if (!d) return nullptr;
    if (!d->cdio) d->cdio = openCdSource(d->source);
    if (!d->cdio) error_ = platform::kCdErrorNoCd;
    return d->cdio;
}

bool EngineCdLibrary::GetDriveDescription(int i, std::string& description) {
    Drive* d = drive(i);
    if (!d) return false;
    description.clear();
    if (!d->image) {
        if (CdIo_t* cdio = handle(i)) {
            cdio_hwinfo_t hw{};
            if (cdio_get_hwinfo(cdio, &hw)) {
                for (const char* part : {hw.psz_vendor, hw.psz_model, hw.psz_revision}) {
                    std::string p = part;
                    while (!p.empty() && p.back() == ' ') p.pop_back();
                    if (p.empty()) continue;
                    if (!description.empty()) description += ' ';
                    description += p;
                }
            }
        }
    }
    if (description.empty()) description = d->image ? "Image " + baseName(d->source) : d->source;
    return true;
}

int EngineCdLibrary::GetDriveLetter(int i) { return drive(i) ? i : -1; }

bool EngineCdLibrary::GetInfo(int i, platform::CdInfo& info) {
    Drive* d = drive(i);
    if (!d) return false;
    info = {};
    if (d->image) {
        // A file reads audio exactly; it has no tray and no lock.
        info.rwflags = (1u << 24) | (1u << 25);
        return true;
    }
    CdIo_t* cdio = handle(i);
    if (!cdio) return fail(platform::kCdErrorNoCd);
    uint8_t buf[256] = {};
    if (mmc_mode_sense_10(cdio, buf, sizeof buf, 0x2A) == DRIVER_OP_SUCCESS) {
        const size_t blockDescriptors = (buf[6] << 8) | buf[7];
        const uint8_t* page = buf + 8 + blockDescriptors;
        if (8 + blockDescriptors + 14 <= sizeof buf && (page[0] & 0x3F) == 0x2A) {
            info.rwflags = page[2] | (page[3] << 8) | (page[4] << 16) | (static_cast<uint32_t>(page[5]) << 24);
            info.canlock = page[6] & 0x01;
            info.canopen = page[6] & 0x08;
            info.maxspeed = (page[8] << 8) | page[9];
            info.cache = (page[12] << 8) | page[13];
            return true;
        }
    }
    // Without the page, what the driver knows of the drive.
    cdio_drive_read_cap_t read = 0;
    cdio_drive_write_cap_t write = 0;
    cdio_drive_misc_cap_t misc = 0;
    cdio_get_drive_cap(cdio, &read, &write, &misc);
    if (read & CDIO_DRIVE_CAP_ERROR) return true;
    const std::pair<uint32_t, int> bits[] = {
        {CDIO_DRIVE_CAP_READ_CD_R, 0},        {CDIO_DRIVE_CAP_READ_CD_RW, 1},
        {CDIO_DRIVE_CAP_READ_DVD_ROM, 3},     {CDIO_DRIVE_CAP_READ_DVD_R, 4},
        {CDIO_DRIVE_CAP_READ_DVD_RAM, 5},     {CDIO_DRIVE_CAP_READ_MODE2_FORM1, 20},
        {CDIO_DRIVE_CAP_READ_MODE2_FORM2, 21}, 
        {CDIO_DRIVE_CAP_READ_CD_DA, 24},
    };
    for (auto [cap, bit] : bits)
        if (read & cap) info.rwflags |= 1u << bit;
    if (misc & CDIO_DRIVE_CAP_MISC_MULTI_SESSION) info.rwflags |= 1u << 22;
    info.canopen = misc & CDIO_DRIVE_CAP_MISC_EJECT;
    info.canlock = misc & CDIO_DRIVE_CAP_MISC_LOCK;
    return true;
}

bool EngineCdLibrary::IsReady(int i) {
    Drive* d = drive(i);
    if (!d) return false;
    // A drive is asked afresh: the disc may have changed since the last look.
    if (!d->image) reopen(i);
    CdIo_t* cdio = handle(i);
    if (!cdio) return fail(platform::kCdErrorNoCd);
    const track_t n = cdio_get_num_tracks(cdio);
    if (n == CDIO_INVALID_TRACK || n == 0) return fail(platform::kCdErrorNoCd);
    return true;
}

int EngineCdLibrary::GetTracks(int i) {
    CdIo_t* cdio = handle(i);
    if (!cdio) return -1;
    const track_t n = cdio_get_num_tracks(cdio);
    if (n == CDIO_INVALID_TRACK || n == 0) {
        error_ = platform::kCdErrorNoCd;
        return -1;
    }
    return n;
}

int64_t EngineCdLibrary::GetTrackLength(int i, int track) {
    CdIo_t* cdio = handle(i);
    if (!cdio) return -1;
    const track_t first = cdio_get_first_track_num(cdio);
    const track_t n = cdio_get_num_tracks(cdio);
    if (first == CDIO_INVALID_TRACK || n == CDIO_INVALID_TRACK || track < 0 || track >= n) {
        error_ = platform::kCdErrorTrack;
        return -1;
    }
    const auto t = static_cast<track_t>(first + track);
    // A data track is not audio: it has no length to play.
    if (cdio_get_track_format(cdio, t) != TRACK_FORMAT_AUDIO) {
        error_ = platform::kCdErrorNotAudio;
        return -1;
    }
    const int32_t sectors = audioTrackSectors(cdio, t);
    if (sectors <= 0) {
        error_ = platform::kCdErrorTrack;
        return -1;
    }
    return static_cast<int64_t>(sectors) * CDIO_CD_FRAMESIZE_RAW;
}

bool EngineCdLibrary::GetID(int i, int id, std::string& block) {
    block.clear();
    if (id != 4) return fail(platform::kCdErrorIllParam);
    CdIo_t* cdio = handle(i);
    if (!cdio) return false;
    cdtext_t* text = cdio_get_cdtext(cdio);
    if (!text) return fail(platform::kCdErrorNotAvail);
    static const std::pair<cdtext_field_t, const char*> keys[] = {
        {CDTEXT_FIELD_TITLE, "TITLE"},       {CDTEXT_FIELD_PERFORMER, "PERFORMER"},
        {CDTEXT_FIELD_SONGWRITER, "SONGWRITER"}, {CDTEXT_FIELD_COMPOSER, "COMPOSER"},
        {CDTEXT_FIELD_ARRANGER, "ARRANGER"}, {CDTEXT_FIELD_MESSAGE, "MESSAGE"},
        {CDTEXT_FIELD_ISRC, "ISRC"},         {CDTEXT_FIELD_UPC_EAN, "UPC_EAN"},
        {CDTEXT_FIELD_GENRE, "GENRE"},       {CDTEXT_FIELD_DISCID, "DISCID"},
    };
    const track_t first = cdio_get_first_track_num(cdio);
    const track_t n = cdio_get_num_tracks(cdio);
    const int last = (first == CDIO_INVALID_TRACK || n == CDIO_INVALID_TRACK) ? 0 : first + n - 1;
    for (int t = 0; t <= last; ++t) {
        if (t > 0 && t < first) continue;
        for (auto [field, key] : keys) {
            const char* value = cdtext_get_const(text, field, static_cast<track_t>(t));
            if (!value || !*value) continue;
            // Track n of the list is the disc's n-th track from its first.
            const int number = t == 0 ? 0 : t - first + 1;
            block += std::string(key) + std::to_string(number) + "=" + toCp1252(value);
            block += '\0';
        }
    }
    if (block.empty()) return fail(platform::kCdErrorNotAvail);
    block += '\0';
    return true;
}

bool EngineCdLibrary::Door(int i, int action) {
    Drive* d = drive(i);
    if (!d) return false;
    // An image has no door; ejecting one would free the handle twice.
    if (d->image) return fail(platform::kCdErrorNotAvail);
    switch (action) {
        case platform::kDoorOpen: {
            if (d->cdio) cdio_destroy(d->cdio);
            d->cdio = nullptr;
            return cdio_eject_media_drive(d->source.c_str()) == DRIVER_OP_SUCCESS || fail(platform::kCdErrorNotAvail);
        }
        case platform::kDoorClose: {
            if (d->cdio) cdio_destroy(d->cdio);
            d->cdio = nullptr;
            return cdio_close_tray(d->source.c_str(), nullptr) == DRIVER_OP_SUCCESS || fail(platform::kCdErrorNotAvail);
        }
        case platform::kDoorLock:
        case platform::kDoorUnlock: {
            CdIo_t* cdio = handle(i);
            if (!cdio) return false;
            const bool lock = action == platform::kDoorLock;
            if (mmc_prevent_allow_medium_removal(cdio, false, lock, 0) != DRIVER_OP_SUCCESS)
                return fail(platform::kCdErrorNotAvail);
            d->locked = lock;
            return true;
        }
        default: return fail(platform::kCdErrorIllParam);
    }
}

bool EngineCdLibrary::DoorIsOpen(int i) {
    Drive* d = drive(i);
    if (!d || d->image) return false;
    CdIo_t* cdio = handle(i);
    return cdio && mmc_get_tray_status(cdio) == 1;
}

bool EngineCdLibrary::DoorIsLocked(int i) {
    Drive* d = drive(i);
    return d && d->locked;
}

int EngineCdLibrary::GetVolume() {
    return engine_ ? static_cast<int>(std::lround(std::clamp(engine_->masterGain(), 0.0f, 1.0f) * 100)) : 100;
}

// ---- streams ----

EngineCdLibrary::Stream* EngineCdLibrary::stream(CdStreamId s) {
    auto it = streams_.find(s);
    if (it == streams_.end()) {
        error_ = platform::kCdErrorHandle;
        return nullptr;
    }
    return it->second.get();
}

void EngineCdLibrary::dropStream(CdStreamId s) {
    auto it = streams_.find(s);
    if (it == streams_.end()) return;
    if (it->second->deck) {
        if (source_.deck() == it->second->deck.get()) source_.setDeck(nullptr);
        it->second->deck->halt();
    }
    streams_.erase(it);
}

CdStreamId EngineCdLibrary::StreamCreate(int i, int track, uint32_t flags) {
    Drive* d = drive(i);
    if (!d) return 0;
    if (flags & platform::kCdStreamFreeOld) {
        std::vector<CdStreamId> old;
        for (auto& [id, s] : streams_)
            if (s->drive == i) old.push_back(id);
        for (CdStreamId id : old) dropStream(id);
    }
    const bool decode = flags & platform::kCdStreamDecode;
    if (!decode && !engine_) {
        error_ = platform::kCdErrorNotAvail;
        return 0;
    }
    CdIo_t* cdio = handle(i);
    if (!cdio) return 0;
    const track_t first = cdio_get_first_track_num(cdio);
    if (first == CDIO_INVALID_TRACK) {
        error_ = platform::kCdErrorNoCd;
        return 0;
    }
    auto reader = std::make_unique<CdSectorReader>();
    int code = 0;
    if (track < 0 || !reader->open(d->source, first + track, code)) {
        error_ = track < 0 ? platform::kCdErrorTrack : code;
        return 0;
    }
    auto s = std::make_unique<Stream>();
    s->drive = i;
    s->track = track;
    s->flags = flags;
    if (decode) {
        s->reader = std::move(reader);
    } else {
        s->deck = std::make_unique<CdDeck>(std::move(reader), engine_->sampleRate());
        if (!sourceAdded_) {
            engine_->adoptSource(std::move(ownSource_));
            sourceAdded_ = true;
        }
    }
    const CdStreamId id = next_++;
    streams_[id] = std::move(s);
    error_ = platform::kCdOk;
    return id;
}

bool EngineCdLibrary::StreamFree(CdStreamId s) {
    if (!stream(s)) return false;
    dropStream(s);
    return true;
}

int64_t EngineCdLibrary::StreamGetLength(CdStreamId s) {
    Stream* st = stream(s);
    if (!st) return -1;
    return st->reader ? st->reader->lengthBytes() : st->deck->lengthBytes();
}

bool EngineCdLibrary::ChannelGetInfo(CdStreamId s, platform::CdChannelInfo& info) {
    if (!stream(s)) return false;
    info = platform::CdChannelInfo{44100, 2, false};
    return true;
}

int EngineCdLibrary::ChannelIsActive(CdStreamId s) {
    Stream* st = stream(s);
    if (!st) return 0;
    if (st->reader) return !st->stopped && !st->reader->atEnd() && !st->reader->failed() ? 1 : 0;
    if (!st->deck->playing.load()) return 0;
    return st->deck->paused.load() ? 3 : 1;
}

int EngineCdLibrary::ChannelGetData(CdStreamId s, void* buffer, int bytes) {
    Stream* st = stream(s);
    if (!st) return -1;
    if (!st->reader || bytes < 0) {
        error_ = platform::kCdErrorNotAvail;
        return -1;
    }
    if (st->stopped) return 0;
    return st->reader->read(static_cast<uint8_t*>(buffer), bytes);
}

int64_t EngineCdLibrary::ChannelGetPosition(CdStreamId s) {
    Stream* st = stream(s);
    if (!st) return -1;
    return st->reader ? st->reader->position() : st->deck->positionBytes();
}

bool EngineCdLibrary::ChannelSetPosition(CdStreamId s, int64_t bytes) {
    Stream* st = stream(s);
    if (!st) return false;
    if (st->reader) return st->reader->seek(bytes) || fail(platform::kCdErrorPosition);
    CdDeck& deck = *st->deck;
    const bool current = source_.deck() == &deck;
    if (current) source_.setDeck(nullptr);
    const bool ok = deck.seek(bytes);
    deck.start();
    if (current) source_.setDeck(&deck);
    return ok || fail(platform::kCdErrorPosition);
}

bool EngineCdLibrary::ChannelPlay(CdStreamId s, bool restart) {
    Stream* st = stream(s);
    if (!st) return false;
    if (!st->deck) return fail(platform::kCdErrorNotAvail);
    CdDeck& deck = *st->deck;
    if (restart || deck.ended.load() || source_.deck() != &deck) {
        if (source_.deck() && source_.deck() != &deck) source_.deck()->playing = false;
        source_.setDeck(nullptr);
        if (restart || deck.ended.load()) deck.seek(0);
        deck.start();
    }
    deck.paused = false;
    deck.playing = true;
    source_.setDeck(&deck);
    st->stopped = false;
    return true;
}

bool EngineCdLibrary::ChannelPause(CdStreamId s) {
    Stream* st = stream(s);
    if (!st || !st->deck || !st->deck->playing.load()) return st && fail(platform::kCdErrorNotAvail);
    st->deck->paused = true;
    return true;
}

bool EngineCdLibrary::ChannelStop(CdStreamId s) {
    Stream* st = stream(s);
    if (!st) return false;
    st->stopped = true;
    if (st->deck) {
        st->deck->playing = false;
        st->deck->paused = false;
        st->deck->level = 0xFFFFFFFFu;
    }
    if (st->flags & platform::kCdStreamAutoFree) dropStream(s);
    return true;
}

bool EngineCdLibrary::ChannelSetAttributes(CdStreamId s, int, int volume, int pan) {
    Stream* st = stream(s);
    if (!st) return false;
    if (!st->deck) return true;
    if (volume != -1) st->deck->volume = std::clamp(volume, 0, 100) / 100.0f;
    if (pan != -101) st->deck->pan = std::clamp(pan, -100, 100) / 100.0f;
    return true;
}

bool EngineCdLibrary::ChannelSlideAttributes(CdStreamId s, int, int volume, int pan, int ms) {
    Stream* st = stream(s);
    if (!st) return false;
    if (!st->deck) return true;
    if (pan != -101) st->deck->pan = std::clamp(pan, -100, 100) / 100.0f;
    if (volume == -1) return true;
    st->deck->slideTarget = std::clamp(volume, 0, 100) / 100.0f;
    st->deck->slideFrames = static_cast<int64_t>(std::max(ms, 1)) * engine_->sampleRate() / 1000;
    st->deck->slideGeneration = !st->deck->slideGeneration.load();
    return true;
}

uint32_t EngineCdLibrary::ChannelGetLevel(CdStreamId s) {
    Stream* st = stream(s);
    if (!st || !st->deck || !st->deck->playing.load()) return 0xFFFFFFFFu;
    return st->deck->level.load();
}

uint32_t EngineCdLibrary::ChannelSetSync(CdStreamId s, uint32_t type, std::function<void()> fn) {
    Stream* st = stream(s);
    if (!st) return 0;
    if (!st->deck) return fail(platform::kCdErrorNotAvail);
    st->deck->setSync(type, std::move(fn));
    return type;
}

}  // namespace velaro::engine
