#pragma once
// Reading one track into a file, block by block, as the ripper window does:
// the wave file with the header written by hand, or WMA through the encoder.

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "../platform/cd_library.h"
#include "../platform/encoders.h"

namespace velaro::cd {

inline constexpr int kRipBlock = 20000;  // bytes asked of the stream each time

// After each block: the stream's position and length in bytes. False stops the reading;
// what was read stays in the file.
using RipBlock = std::function<bool(int64_t position, int64_t length)>;

enum class RipOutcome { Done, NoStream, NoOutput, EncodeFailed };

struct RipResult {
    RipOutcome outcome = RipOutcome::NoStream;
    int code = 0;            // the library's error code when it failed
    int64_t dataBytes = 0;   // samples written
    std::string failedWrite; // an encoder write failed (the message is shown, reading goes on)
};

// The wave file: written beside `path` and put in its place when complete, so a
// failure leaves an old file as it was. Write failures throw VbError.
RipResult ripToWave(platform::CdLibrary& cd, int drive, int track, const std::string& path, const RipBlock& onBlock);

// WMA: `tags` are (name, text) pairs, all given to the encoder, then the closing call;
// nullptr writes no tag call at all. `onWriteError` is told of each failed block.
RipResult ripToWma(platform::CdLibrary& cd, platform::WmaEncoder& wma, int drive, int track, const std::string& path,
                   int bitRate, const std::vector<std::pair<std::string, std::string>>* tags, const RipBlock& onBlock,
                   const std::function<void(int code)>& onWriteError);

}  // namespace velaro::cd
