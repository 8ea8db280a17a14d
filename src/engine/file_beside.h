#pragma once
// A new file written beside its target under a temporary name and renamed
// over the target only once it is complete, so that a failed write (full
// disk, no permission, a stop signal) never costs the old file. The
// temporary goes away with the object unless it was committed.

#include <sys/types.h>

#include <cstddef>
#include <string>

namespace velaro::engine {

class FileBeside {
public:
    // Throws std::runtime_error "cannot write TARGET: <cause>".
    explicit FileBeside(std::string target);
    ~FileBeside();
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    int fd() const { return fd_; }
    const std::string& path() const { return temp_; }
    const std::string& target() const { return target_; }

    // Both throw with the cause from errno.
    void write(const void* data, size_t n);
    void writeAt(const void* data, size_t n, off_t offset);
    // Flushes to the disk, closes and renames over the target; throws on failure.
    void commit();
    // The message for a failure of this file, from errno.
    [[noreturn]] void fail(int err) const;

private:
    std::string target_;
    std::string temp_;
    int fd_ = -1;
    bool committed_ = false;
};

// "cannot read PATH: <cause>" when the path is no readable regular file, else "".
std::string unreadable(const std::string& path);

}  // namespace velaro::engine
