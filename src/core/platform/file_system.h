#pragma once
// The file calls the logic makes beyond plain reading and writing.

#include <cstdint>
#include <string>

namespace velaro::platform {

class FileSystem {
public:
    virtual ~FileSystem() = default;
    // Full and short forms of a path; "" when the call gives nothing.
    virtual std::string FullPath(const std::string& path) = 0;
    virtual std::string ShortPath(const std::string& path) = 0;
    virtual std::string TempPath() = 0;
    // Sets the file's end at `length` bytes; false when it cannot.
    virtual bool Truncate(const std::string& path, int64_t length) = 0;
};

}  // namespace velaro::platform
