#include "rip.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <cstdio>
#include <fstream>

#include "../base/safe_file.h"
#include "../base/vb_error.h"
#include "cd_text.h"

namespace velaro::cd {

namespace {

// Frees the stream however the reading ends.
struct StreamGuard {
    platform::CdLibrary& cd;
    platform::CdStreamId id;
    ~StreamGuard() {
        if (id) {
            cd.ChannelStop(id);
            cd.StreamFree(id);
        }
    }
};

constexpr uint32_t kDecodeFlags = platform::kCdStreamDecode | platform::kCdStreamAutoFree;

}  // namespace

namespace {

// The message of a failed write, with the system's reason.
VbError cannotWrite(VbErr code, const std::string& path) {
    const int err = errno ? errno : EIO;
    return VbError(code, "can't write " + path + ": " + std::strerror(err));
}

}  // namespace

RipResult ripToWave(platform::CdLibrary& cd, int drive, int track, const std::string& path, const RipBlock& onBlock) {
    RipResult result;
    StreamGuard stream{cd, cd.StreamCreate(drive, track, kDecodeFlags)};
    if (!stream.id) {
        result.code = cd.ErrorGetCode();
        return result;
    }
    platform::CdChannelInfo info;
    cd.ChannelGetInfo(stream.id, info);
    const int channels = std::clamp(info.chans, 1, 2);
    const int bits = info.eightBits ? 8 : 16;
    const int64_t length = cd.StreamGetLength(stream.id);

    const std::string temp = siblingTempName(path);
    errno = 0;
    std::ofstream file(temp, std::ios::binary | std::ios::trunc);
    if (!file) throw cannotWrite(VbErr::PathFileAccess, path);
    try {
        // The header goes first with both sizes 0; they are filled in once the samples are down.
        const std::string header = waveHeader(channels, info.freq, bits, 0);
        file.write(header.data(), static_cast<std::streamsize>(header.size()));
        std::vector<char> buffer(kRipBlock);
        int64_t data = 0;
        while (cd.ChannelIsActive(stream.id)) {
            const int got = cd.ChannelGetData(stream.id, buffer.data(), kRipBlock);
            if (got > 0) {
                file.write(buffer.data(), got);
                data += got;
            }
            if (!file) throw cannotWrite(VbErr::DiskFull, path);
            const bool go = !onBlock || onBlock(cd.ChannelGetPosition(stream.id), length);
            if (!go || got <= 0) break;  // stopped, or a stream that gives nothing more
        }
        const std::string sized = waveHeader(channels, info.freq, bits, static_cast<uint32_t>(data));
        file.seekp(4);
        file.write(sized.data() + 4, 4);
        file.seekp(40);
        file.write(sized.data() + 40, 4);
        errno = 0;
        file.close();
        if (file.fail()) throw cannotWrite(VbErr::DiskFull, path);
        if (std::rename(temp.c_str(), path.c_str()) != 0) throw cannotWrite(VbErr::PathFileAccess, path);
        result.outcome = RipOutcome::Done;
        result.dataBytes = data;
    } catch (...) {
        file.close();
        std::remove(temp.c_str());
        throw;
    }
    return result;
}

RipResult ripToWma(platform::CdLibrary& cd, platform::WmaEncoder& wma, int drive, int track, const std::string& path,
                   int bitRate, const std::vector<std::pair<std::string, std::string>>* tags, const RipBlock& onBlock,
                   const std::function<void(int code)>& onWriteError) {
    RipResult result;
    StreamGuard stream{cd, cd.StreamCreate(drive, track, kDecodeFlags)};
    if (!stream.id) {
        result.code = cd.ErrorGetCode();
        return result;
    }
    const uint32_t encoder = wma.EncodeOpenFile(44100, 2, 0x10000, bitRate, path);
    if (!encoder) {
        result.outcome = RipOutcome::NoOutput;
        result.code = wma.ErrorGetCode();
        return result;
    }
    if (tags) {
        for (const auto& [name, text] : *tags) wma.EncodeSetTag(encoder, name, text);
        wma.EncodeSetTag(encoder, "", "");
    }
    const int64_t length = cd.StreamGetLength(stream.id);
    std::vector<char> buffer(kRipBlock);
    while (cd.ChannelIsActive(stream.id)) {
        const int got = cd.ChannelGetData(stream.id, buffer.data(), kRipBlock);
        if (got > 0) {
            if (wma.EncodeWrite(encoder, buffer.data(), got)) result.dataBytes += got;
            else {
                result.outcome = RipOutcome::EncodeFailed;
                if (onWriteError) onWriteError(wma.ErrorGetCode());
            }
        }
        const bool go = !onBlock || onBlock(cd.ChannelGetPosition(stream.id), length);
        if (!go || got <= 0) break;
    }
    // The last blocks reach the disk only at the close: a full disk shows there.
    if (!wma.EncodeClose(encoder) && result.outcome != RipOutcome::EncodeFailed) {
        result.outcome = RipOutcome::EncodeFailed;
        if (onWriteError) onWriteError(wma.ErrorGetCode());
    }
    if (result.outcome != RipOutcome::EncodeFailed) result.outcome = RipOutcome::Done;
    return result;
}

}  // namespace velaro::cd
