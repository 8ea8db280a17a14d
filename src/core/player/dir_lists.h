#pragma once
// The hidden directory and file lists the folder scan walks: a folder's
// sub-folders and its files, each sorted as the lists showed them.

#include <string>
#include <vector>

namespace velaro::player {

class DirListBox {
public:
    const std::string& path() const { return path_; }
    // A path that is not a folder is "path not found", and the list stays where it was.
    void setPath(const std::string& path);
    // Read afresh each time, as the control re-read the disk.
    int listCount() const;
    // Full path of sub-folder i; "" outside the list.
    std::string list(int i) const;

private:
    std::vector<std::string> read() const;
    std::string path_;
};

class FileListBox {
public:
    const std::string& path() const { return path_; }
    void setPath(const std::string& path);
    int listCount() const { return static_cast<int>(names_.size()); }
    // File name i (no folder); "" outside the list.
    std::string list(int i) const;

private:
    std::string path_;
    std::vector<std::string> names_;
};

}  // namespace velaro::player
