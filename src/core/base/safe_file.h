#pragma once
// Saves that never lose the old file. A whole-file save writes a new file
// beside the old one and renames it over only when every byte is down; an
// in-place save (the tags at a file's end) first reserves the room the new
// tail needs and touches nothing when it cannot. Failures throw VbError
// whose text names the file and the system's reason ("No space left on device").

#include <cstdint>
#include <string>
#include <string_view>

namespace velaro {

// Replaces (or creates) `path` with `bytes`. A file without any write
// permission bit is refused, as an in-place open would have refused it.
void replaceFileSafely(const std::string& path, std::string_view bytes);

// Writes `bytes` at the 0-based `offset` of an existing file and sets the
// file's end right behind them. The file grows, if it must, before its old
// bytes are overwritten, so a full disk leaves it as it was.
void writeTailInPlace(const std::string& path, int64_t offset, std::string_view bytes);

// A name for a new file in the same folder as `path`, not in use now.
std::string siblingTempName(const std::string& path);

// Bytes free for an unprivileged writer on the file system that holds
// `path` (or the folder it would be made in); -1 when unknown.
int64_t freeSpaceFor(const std::string& path);

}  // namespace velaro
