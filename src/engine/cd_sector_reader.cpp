#include "cd_sector_reader.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>

#include <cdio/logging.h>

#include "core/platform/cd_library.h"

namespace velaro::engine {

namespace {

std::string lowerExtension(const std::string& path) {
    const auto dot = path.rfind('.');
    if (dot == std::string::npos || path.find('/', dot) != std::string::npos) return {};
    std::string ext = path.substr(dot + 1);
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

// libcdio talks on stderr by default; the window and the command line say what matters themselves.
void quietLog(cdio_log_level_t, const char*) {}

}  // namespace

bool isCdImage(const std::string& source) {
    const std::string ext = lowerExtension(source);
    return ext == "cue" || ext == "bin" || ext == "nrg" || ext == "toc";
}

// libcdio's CUE parser trusts the sheet: track numbers out of order or out
// of range, or a sheet the size of a disc, can take it past its tables. A
// sheet is handed over only when it is the size of a sheet, its tracks count
// up from 1 without a gap, and every line is text.
static bool plausibleCueSheet(const std::string& path) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return false;
    std::string text(256 * 1024 + 1, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), f));
    std::fclose(f);
    if (text.size() > 256 * 1024) return false;
    int expected = 1;
    size_t at = 0;
    while (at < text.size()) {
        size_t end = text.find_first_of("\r\n", at);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(at, end - at);
        at = end + 1;
        for (unsigned char c : line)
            if (c < 0x20 && c != '\t') return false;
        const size_t first = line.find_first_not_of(" \t");
        if (first == std::string::npos) continue;
        line.erase(0, first);
        std::string word;
        for (char c : line) {
            if (c == ' ' || c == '\t') break;
            word += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        if (word != "TRACK") continue;
        const size_t num = line.find_first_not_of(" \t", 5);
        if (num == std::string::npos) return false;
        int n = 0, digits = 0;
        for (size_t i = num; i < line.size() && std::isdigit(static_cast<unsigned char>(line[i])) && digits < 3; ++i, ++digits)
            n = n * 10 + (line[i] - '0');
        if (digits == 0 || n != expected || n > 99) return false;
        ++expected;
    }
    return true;
}

CdIo_t* openCdSource(const std::string& source) {
    static const bool quiet = [] {
        cdio_log_set_handler(quietLog);
        return true;
    }();
    (void)quiet;
    const std::string ext = lowerExtension(source);
    if (ext == "cue" && !plausibleCueSheet(source)) return nullptr;
    if (ext == "cue" || ext == "bin") return cdio_open(source.c_str(), DRIVER_BINCUE);
    if (ext == "nrg") return cdio_open(source.c_str(), DRIVER_NRG);
    if (ext == "toc") return cdio_open(source.c_str(), DRIVER_CDRDAO);
    return cdio_open(source.c_str(), DRIVER_DEVICE);
}

int32_t audioTrackSectors(CdIo_t* cdio, track_t t, lsn_t* start) {
    if (cdio_get_track_format(cdio, t) != TRACK_FORMAT_AUDIO) return 0;
    const lsn_t first = cdio_get_track_lsn(cdio, t);
    lsn_t last = cdio_get_track_last_lsn(cdio, t);
    if (first == CDIO_INVALID_LSN || last == CDIO_INVALID_LSN || last < first) return 0;
    const track_t next = static_cast<track_t>(t + 1);
    const track_t lastTrack = cdio_get_last_track_num(cdio);
    if (lastTrack != CDIO_INVALID_TRACK && next <= lastTrack && cdio_get_track_format(cdio, next) != TRACK_FORMAT_AUDIO) {
        lsn_t session = 0;
        const lsn_t nextStart = cdio_get_track_lsn(cdio, next);
        if (cdio_get_last_session(cdio, &session) == DRIVER_OP_SUCCESS && session > first && nextStart >= session &&
            last - 11400 >= first)
            last -= 11400;
    }
    if (start) *start = first;
    return last - first + 1;
}

CdSectorReader::~CdSectorReader() {
    if (paranoia_) cdio_paranoia_free(paranoia_);
    // The drive handle owns nothing of ours; the cdio handle is closed apart.
    if (drive_) cdio_cddap_close_no_free_cdio(drive_);
    if (cdio_) cdio_destroy(cdio_);
}

bool CdSectorReader::open(const std::string& source, int track, int& error) {
    cdio_ = openCdSource(source);
    if (!cdio_) {
        error = platform::kCdErrorNoCd;
        return false;
    }
    const track_t first = cdio_get_first_track_num(cdio_);
    const track_t count = cdio_get_num_tracks(cdio_);
    if (first == CDIO_INVALID_TRACK || count == CDIO_INVALID_TRACK || count == 0) {
        error = platform::kCdErrorNoCd;
        return false;
    }
    if (track < first || track >= first + count) {
        error = platform::kCdErrorTrack;
        return false;
    }
    const auto t = static_cast<track_t>(track);
    if (cdio_get_track_format(cdio_, t) != TRACK_FORMAT_AUDIO) {
        error = platform::kCdErrorNotAudio;
        return false;
    }
    sectors_ = audioTrackSectors(cdio_, t, &first_);
    if (sectors_ <= 0) {
        error = platform::kCdErrorTrack;
        return false;
    }
    drive_ = cdio_cddap_identify_cdio(cdio_, CDDA_MESSAGE_FORGETIT, nullptr);
    if (!drive_ || cdio_cddap_open(drive_) != 0) {
        error = platform::kCdErrorDevice;
        return false;
    }
    // Paranoia would guess the byte order from the samples; the disc's order is little-endian.
    drive_->bigendianp = 0;
    paranoia_ = cdio_paranoia_init(drive_);
    if (!paranoia_) {
        error = platform::kCdErrorDevice;
        return false;
    }
    cdio_paranoia_modeset(paranoia_, PARANOIA_MODE_FULL ^ PARANOIA_MODE_NEVERSKIP);
    cdio_paranoia_seek(paranoia_, first_, SEEK_SET);
    error = platform::kCdOk;
    return true;
}

bool CdSectorReader::fill() {
    if (failed_ || !paranoia_) return false;
    const int16_t* samples = cdio_paranoia_read_limited(paranoia_, nullptr, 20);
    if (!samples) {
        failed_ = true;
        return false;
    }
    std::memcpy(sector_, samples, kSectorBytes);
    if constexpr (std::endian::native == std::endian::big)
        for (int i = 0; i < kSectorBytes; i += 2) std::swap(sector_[i], sector_[i + 1]);
    sectorOffset_ = 0;
    return true;
}

int CdSectorReader::read(uint8_t* out, int bytes) {
    bytes -= bytes % 4;
    int done = 0;
    while (done < bytes && !atEnd()) {
        if (sectorOffset_ >= kSectorBytes && !fill()) break;
        const int n = static_cast<int>(std::min<int64_t>(
            {static_cast<int64_t>(bytes - done), static_cast<int64_t>(kSectorBytes - sectorOffset_), lengthBytes() - pos_}));
        std::memcpy(out + done, sector_ + sectorOffset_, static_cast<size_t>(n));
        sectorOffset_ += n;
        done += n;
        pos_ += n;
    }
    return done;
}

bool CdSectorReader::seek(int64_t bytes) {
    if (!paranoia_ || bytes < 0 || bytes > lengthBytes()) return false;
    bytes -= bytes % 4;
    const int64_t sector = bytes / kSectorBytes;
    cdio_paranoia_seek(paranoia_, static_cast<int32_t>(first_ + sector), SEEK_SET);
    pos_ = sector * kSectorBytes;
    sectorOffset_ = kSectorBytes;
    failed_ = false;
    const int within = static_cast<int>(bytes - pos_);
    if (within > 0) {
        if (!fill()) return false;
        sectorOffset_ = within;
        pos_ += within;
    }
    return true;
}

}  // namespace velaro::engine
