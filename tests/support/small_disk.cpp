#include "small_disk.h"

#include <sys/mount.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace velaro::testing {

SmallDisk::SmallDisk(long kilobytes) {
    const char* t = std::getenv("TMPDIR");
    std::string base = std::string(t && *t ? t : "/tmp") + "/disk-" + std::to_string(getpid()) + "-XXXXXX";
    std::vector<char> name(base.begin(), base.end());
    name.push_back('\0');
    if (!mkdtemp(name.data())) return;
    dir_ = name.data();
    const std::string opts = "size=" + std::to_string(kilobytes) + "k";
    mounted_ = ::mount("tmpfs", dir_.c_str(), "tmpfs", 0, opts.c_str()) == 0;
}

SmallDisk::~SmallDisk() {
    if (mounted_) ::umount2(dir_.c_str(), MNT_DETACH);
    std::error_code ec;
    if (!dir_.empty()) std::filesystem::remove_all(dir_, ec);
}

void SmallDisk::fill() {
    std::FILE* f = std::fopen(path("filler").c_str(), "wb");
    if (!f) return;
    std::vector<char> block(4096, 'x');
    while (std::fwrite(block.data(), 1, block.size(), f) == block.size() && std::fflush(f) == 0) {
    }
    // Single bytes too, so not even a part of a block is left.
    std::clearerr(f);
    while (std::fputc('x', f) != EOF && std::fflush(f) == 0) {
    }
    std::fclose(f);
}

std::string SmallDisk::put(const std::string& name, const std::string& bytes) const {
    std::ofstream out(path(name), std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path(name);
}

bool SmallDisk::makeReadOnly() {
    return mounted_ && ::mount("tmpfs", dir_.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

}  // namespace velaro::testing
