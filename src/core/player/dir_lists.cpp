#include "dir_lists.h"

#include <algorithm>
#include <filesystem>

#include "../base/byte_text.h"
#include "../base/vb_error.h"

namespace velaro::player {

namespace fs = std::filesystem;

namespace {

// Entries of a folder, hidden ones left out as the lists left them out,
// ordered without regard to case.
std::vector<std::string> entries(const std::string& folder, bool folders) {
    std::vector<std::string> out;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        if (name.empty() || name[0] == '.') continue;
        std::error_code e2;
        const bool isDir = it->is_directory(e2);
        if (isDir == folders && (folders || it->is_regular_file(e2))) out.push_back(name);
    }
    std::sort(out.begin(), out.end(), [](const std::string& a, const std::string& b) {
        const std::string la = lcase(a), lb = lcase(b);
        return la != lb ? la < lb : a < b;
    });
    return out;
}

std::string join(const std::string& folder, const std::string& name) {
    return !folder.empty() && folder.back() == '/' ? folder + name : folder + "/" + name;
}

}  // namespace

void DirListBox::setPath(const std::string& path) {
    std::error_code ec;
    if (!fs::is_directory(path, ec)) throw VbError(VbErr::PathNotFound, "Path not found: " + path);
    path_ = path;
}

std::vector<std::string> DirListBox::read() const { return path_.empty() ? std::vector<std::string>{} : entries(path_, true); }

int DirListBox::listCount() const { return static_cast<int>(read().size()); }

std::string DirListBox::list(int i) const {
    const auto names = read();
    if (i < 0 || i >= static_cast<int>(names.size())) return {};
    return join(path_, names[i]);
}

void FileListBox::setPath(const std::string& path) {
    std::error_code ec;
    if (!fs::is_directory(path, ec)) throw VbError(VbErr::PathNotFound, "Path not found: " + path);
    path_ = path;
    names_ = entries(path, false);
}

std::string FileListBox::list(int i) const {
    if (i < 0 || i >= listCount()) return {};
    return names_[i];
}

}  // namespace velaro::player
