#include "file_beside.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace velaro::engine {

namespace {

std::string folderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string nameOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

FileBeside::FileBeside(std::string target) : target_(std::move(target)) {
    struct stat st {};
    if (target_.empty()) throw std::runtime_error("no output file given");
    if (::stat(target_.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) fail(EISDIR);
    const bool existed = ::stat(target_.c_str(), &st) == 0;
    std::string pattern = folderOf(target_) + "/." + nameOf(target_) + ".XXXXXX";
    std::vector<char> buf(pattern.begin(), pattern.end());
    buf.push_back('\0');
    fd_ = ::mkstemp(buf.data());
    if (fd_ < 0) fail(errno);
    temp_ = buf.data();
    // The new file gets the old one's permissions, or those of any new file.
    mode_t mode;
    if (existed) {
        mode = st.st_mode & 07777;
    } else {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        mode = 0666 & ~mask;
    }
    ::fchmod(fd_, mode);
}

FileBeside::~FileBeside() {
    if (fd_ >= 0) ::close(fd_);
    if (!committed_ && !temp_.empty()) ::unlink(temp_.c_str());
}

void FileBeside::fail(int err) const {
    throw std::runtime_error("cannot write " + target_ + ": " + std::strerror(err));
}

void FileBeside::write(const void* data, size_t n) {
    const char* p = static_cast<const char*>(data);
    while (n > 0) {
        const ssize_t w = ::write(fd_, p, n);
        if (w < 0) {
            if (errno == EINTR) continue;
            fail(errno);
        }
        if (w == 0) fail(ENOSPC);
        p += w;
        n -= static_cast<size_t>(w);
    }
}

void FileBeside::writeAt(const void* data, size_t n, off_t offset) {
    const char* p = static_cast<const char*>(data);
    while (n > 0) {
        const ssize_t w = ::pwrite(fd_, p, n, offset);
        if (w < 0) {
            if (errno == EINTR) continue;
            fail(errno);
        }
        if (w == 0) fail(ENOSPC);
        p += w;
        n -= static_cast<size_t>(w);
        offset += w;
    }
}

void FileBeside::commit() {
    // A full disk can show only at the flush or the close.
    if (::fsync(fd_) != 0 && errno != EINVAL) fail(errno);
    const int fd = fd_;
    fd_ = -1;
    if (::close(fd) != 0) fail(errno);
    if (::rename(temp_.c_str(), target_.c_str()) != 0) fail(errno);
    committed_ = true;
}

std::string unreadable(const std::string& path) {
    struct stat st {};
    if (path.empty()) return "no input file given";
    if (::stat(path.c_str(), &st) != 0) return "cannot read " + path + ": " + std::strerror(errno);
    if (S_ISDIR(st.st_mode)) return "cannot read " + path + ": " + std::strerror(EISDIR);
    if (::access(path.c_str(), R_OK) != 0) return "cannot read " + path + ": " + std::strerror(errno);
    return {};
}

}  // namespace velaro::engine
