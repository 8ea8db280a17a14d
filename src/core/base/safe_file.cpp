#include "safe_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>

#include "vb_error.h"

namespace velaro {

namespace fs = std::filesystem;

namespace {

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

[[noreturn]] void fail(const std::string& path, int err) {
    // Disk full is its own run-time error in the old runtime; the rest are access errors.
    const VbErr code = err == ENOSPC || err == EDQUOT ? VbErr::DiskFull : VbErr::PathFileAccess;
    throw VbError(code, "cannot write " + path + ": " + std::strerror(err ? err : EIO));
}

bool writeAll(std::FILE* f, const char* data, size_t n) {
    while (n > 0) {
        const size_t w = std::fwrite(data, 1, n, f);
        if (w == 0) return false;
        data += w;
        n -= w;
    }
    return true;
}

// Closes and reports the first error that the close or the last flush met.
int closeChecked(File& f) {
    errno = 0;
    int err = 0;
    if (std::fflush(f.get()) != 0) err = errno ? errno : EIO;
    errno = 0;
    if (std::fclose(f.release()) != 0 && !err) err = errno ? errno : EIO;
    return err;
}

bool hasAnyWriteBit(const fs::path& p) {
    std::error_code ec;
    const auto perms = fs::status(p, ec).permissions();
    if (ec) return true;
    using P = fs::perms;
    return (perms & (P::owner_write | P::group_write | P::others_write)) != P::none;
}

}  // namespace

std::string siblingTempName(const std::string& path) {
    static std::mt19937_64 rng{std::random_device{}()};
    const fs::path p(path);
    for (;;) {
        char tag[24];
        std::snprintf(tag, sizeof tag, ".%012llx.part", static_cast<unsigned long long>(rng() & 0xFFFFFFFFFFFFull));
        fs::path t = p;
        t += tag;
        std::error_code ec;
        if (!fs::exists(t, ec)) return t.string();
    }
}

void replaceFileSafely(const std::string& path, std::string_view bytes) {
    std::error_code ec;
    const bool existed = fs::exists(path, ec);
    if (existed && fs::is_regular_file(path, ec) && !hasAnyWriteBit(path)) fail(path, EACCES);
    const std::string temp = siblingTempName(path);
    errno = 0;
    File f(std::fopen(temp.c_str(), "wb"));
    if (!f) fail(path, errno);
    int err = 0;
    if (!writeAll(f.get(), bytes.data(), bytes.size())) err = errno ? errno : EIO;
    const int closeErr = closeChecked(f);
    if (!err) err = closeErr;
    if (!err && existed) {
        // The new file keeps the old one's permissions.
        fs::permissions(temp, fs::status(path, ec).permissions(), ec);
    }
    if (!err) {
        fs::rename(temp, path, ec);
        if (ec) err = ec.value();
    }
    if (err) {
        fs::remove(temp, ec);
        fail(path, err);
    }
}

void writeTailInPlace(const std::string& path, int64_t offset, std::string_view bytes) {
    std::error_code ec;
    if (!fs::is_regular_file(path, ec)) fail(path, ENOENT);
    if (!hasAnyWriteBit(path)) fail(path, EACCES);
    const auto oldSize = static_cast<int64_t>(fs::file_size(path, ec));
    if (ec) fail(path, ec.value());
    if (offset < 0 || offset > oldSize) fail(path, EINVAL);
    const int64_t newSize = offset + static_cast<int64_t>(bytes.size());

    errno = 0;
    File f(std::fopen(path.c_str(), "r+b"));
    if (!f) fail(path, errno);

    // The room first: zeros written past the old end make the file system
    // give us every block now. If it cannot, the old end is restored and
    // nothing that was there has been touched.
    if (newSize > oldSize) {
        int err = 0;
        if (std::fseek(f.get(), 0, SEEK_END) != 0) err = errno ? errno : EIO;
        static const char zeros[8192] = {};
        for (int64_t left = newSize - oldSize; !err && left > 0;) {
            const size_t n = static_cast<size_t>(std::min<int64_t>(left, sizeof zeros));
            if (!writeAll(f.get(), zeros, n)) err = errno ? errno : EIO;
            left -= static_cast<int64_t>(n);
        }
        if (!err && std::fflush(f.get()) != 0) err = errno ? errno : EIO;
        if (err) {
            std::fclose(f.release());
            fs::resize_file(path, static_cast<uintmax_t>(oldSize), ec);
            fail(path, err);
        }
    }

    int err = 0;
    if (std::fseek(f.get(), static_cast<long>(offset), SEEK_SET) != 0) err = errno ? errno : EIO;
    if (!err && !writeAll(f.get(), bytes.data(), bytes.size())) err = errno ? errno : EIO;
    const int closeErr = closeChecked(f);
    if (!err) err = closeErr;
    if (err) fail(path, err);
    if (newSize < oldSize) {
        fs::resize_file(path, static_cast<uintmax_t>(newSize), ec);
        if (ec) fail(path, ec.value());
    }
}

int64_t freeSpaceFor(const std::string& path) {
    std::error_code ec;
    fs::path p = fs::absolute(path, ec);
    if (ec) return -1;
    // The file may not exist yet: ask about the nearest folder that does.
    while (!p.empty() && !fs::exists(p, ec)) {
        if (p == p.parent_path()) return -1;
        p = p.parent_path();
    }
    const fs::space_info s = fs::space(p, ec);
    if (ec) return -1;
    return static_cast<int64_t>(s.available);
}

}  // namespace velaro
