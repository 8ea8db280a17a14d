#include "inert.h"

#include <filesystem>

#include "../base/paths.h"
#include "../base/vb_error.h"

namespace velaro::platform {

SegmentId InertPerformance::LoadSegment(const std::string& path) {
    // Loading still fails on a file that is not there, as the loader did.
    if (!fileExists(path)) throw VbError(VbErr::FileNotFound, "File not found: " + path);
    return next_++;
}

CollectionId InertPerformance::LoadCollection(const std::string& path) {
    if (!fileExists(path)) throw VbError(VbErr::FileNotFound, "File not found: " + path);
    return next_++;
}

std::string InertWaveDevice::ErrorString(int) { return "The specified device is not open or is not recognized by MCI."; }

std::string PlainFileSystem::FullPath(const std::string& path) {
    std::error_code ec;
    auto p = std::filesystem::absolute(path, ec);
    return ec ? std::string() : p.lexically_normal().string();
}

std::string PlainFileSystem::ShortPath(const std::string& path) {
    // Linux has no short names: the short form of an existing file is its own path.
    return fileExists(path) ? path : std::string();
}

std::string PlainFileSystem::TempPath() { return RPP(tempFolder()); }

bool PlainFileSystem::Truncate(const std::string& path, int64_t length) {
    std::error_code ec;
    if (length < 0 || !std::filesystem::is_regular_file(path, ec)) return false;
    std::filesystem::resize_file(path, static_cast<uintmax_t>(length), ec);
    return !ec;
}

InertPlatform::InertPlatform() {
    platform_.performance = &performance_;
    platform_.streams = &streams_;
    platform_.songEffects = &effects_;
    platform_.devices = &devices_;
    platform_.media = &media_;
    platform_.windows = &windows_;
    platform_.wave = &wave_;
    platform_.mixer = &mixer_;
    platform_.meter = &meter_;
    platform_.mp3 = &mp3_;
    platform_.wma = &wma_;
    platform_.normaliser = &normaliser_;
    platform_.cd = &cd_;
    platform_.processes = &processes_;
    platform_.files = &files_;
}

}  // namespace velaro::platform
