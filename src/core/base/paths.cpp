#include "paths.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "safe_file.h"
#include "vb_error.h"

namespace fs = std::filesystem;

namespace velaro {

std::string RPP(std::string_view path) {
    std::string p(path);
    if (p.empty() || p.back() != kPathSep) p += kPathSep;
    return p;
}

static std::string envOr(const char* name, const std::string& fallback) {
    const char* v = std::getenv(name);
    return (v && *v) ? std::string(v) : fallback;
}

std::string homeFolder() { return envOr("HOME", "/"); }

std::string applicationFolder() {
    std::string dir = envOr("VELARO_HOME", "");
    if (dir.empty()) {
        std::string data = envOr("XDG_DATA_HOME", RPP(homeFolder()) + ".local/share");
        dir = RPP(data) + "velaro-deck";
    }
    std::error_code ec;
    fs::create_directories(dir, ec);
    return dir;
}

std::string tempFolder() { return envOr("TMPDIR", "/tmp"); }

std::string programFolder() {
    std::error_code ec;
    fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    if (ec) return fs::current_path(ec).string();
    return exe.parent_path().string();
}

std::string readWholeFile(const std::string& path) {
    std::error_code ec;
    if (!fs::is_regular_file(path, ec)) throw VbError(VbErr::FileNotFound, "File not found: " + path);
    std::ifstream in(path, std::ios::binary);
    if (!in) throw VbError(VbErr::PathFileAccess, "Path/File access error: " + path);
    std::string bytes;
    in.seekg(0, std::ios::end);
    auto size = in.tellg();
    if (size < 0) throw VbError(VbErr::PathFileAccess);
    bytes.resize(static_cast<size_t>(size));
    in.seekg(0);
    in.read(bytes.data(), size);
    bytes.resize(static_cast<size_t>(in.gcount()));
    return bytes;
}

void writeWholeFile(const std::string& path, std::string_view bytes) { replaceFileSafely(path, bytes); }

bool fileExists(const std::string& path) {
    std::error_code ec;
    return fs::exists(path, ec);
}

int64_t fileLength(const std::string& path) {
    std::error_code ec;
    auto n = fs::file_size(path, ec);
    if (ec) throw VbError(VbErr::FileNotFound, "File not found: " + path);
    return static_cast<int64_t>(n);
}

void deleteFile(const std::string& path) {
    std::error_code ec;
    if (!fs::remove(path, ec) || ec) throw VbError(VbErr::FileNotFound, "File not found: " + path);
}

}  // namespace velaro
