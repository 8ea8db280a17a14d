#pragma once
// A tiny tmpfs mounted for one test, to fill up and write to. Mounting needs
// root (or a user namespace); where it is refused the test is skipped.

#include <string>

namespace velaro::testing {

class SmallDisk {
public:
    explicit SmallDisk(long kilobytes = 512);
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool mounted() const { return mounted_; }
    const std::string& dir() const { return dir_; }
    std::string path(const std::string& name) const { return dir_ + "/" + name; }
    // Fills what is left with one file, so the next block written finds no room.
    void fill();
    // Puts bytes in a file on the disk (before it is filled).
    std::string put(const std::string& name, const std::string& bytes) const;
    // Remounts the disk read-only: unlike permission bits, this stops root too.
    bool makeReadOnly();

private:
    std::string dir_;
    bool mounted_ = false;
};

// The whole content of a file ("" when missing).
std::string fileBytes(const std::string& path);

}  // namespace velaro::testing
