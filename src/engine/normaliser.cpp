#include "normaliser.h"

#include <fcntl.h>
#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "file_beside.h"

namespace velaro::engine {

namespace {

struct SndfileCloser {
    void operator()(SNDFILE* f) const { sf_close(f); }
};
using Sndfile = std::unique_ptr<SNDFILE, SndfileCloser>;

constexpr sf_count_t kBlockFrames = 8192;

// Bits of a whole-number format, 0 for the others.
int pcmBits(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8: return 8;
        case SF_FORMAT_PCM_16: return 16;
        case SF_FORMAT_PCM_24: return 24;
        case SF_FORMAT_PCM_32: return 32;
        default: return 0;
    }
}

class Reporter {
public:
    explicit Reporter(const platform::PercentDone& fn) : fn_(fn) {}
    void at(double p) {
        p = std::min(99.9, std::floor(p * 10.0) / 10.0);
        if (fn_ && p != last_) {
            last_ = p;
            fn_(p);
        }
    }

private:
    const platform::PercentDone& fn_;
    double last_ = -1;
};

struct Job {
    SNDFILE* in;
    const SF_INFO& info;
    const std::atomic<bool>& stop;
    Reporter& report;
    std::string source;
    // true when stopped
    bool stopped() const { return stop.load(std::memory_order_relaxed); }
    std::string readError() const { return "cannot read " + source + ": " + sf_strerror(in); }
};

// Scans the peak in the format's own steps (whole numbers) or as doubles.
template <typename T, typename Read>
std::string scanPeak(Job& j, Read read, double& peak) {
    std::vector<T> buf(static_cast<size_t>(kBlockFrames * j.info.channels));
    sf_count_t done = 0;
    while (!j.stopped()) {
        const sf_count_t n = read(j.in, buf.data(), kBlockFrames);
        if (n <= 0) {
            if (sf_error(j.in) != SF_ERR_NO_ERROR) return j.readError();
            break;
        }
        for (sf_count_t i = 0; i < n * j.info.channels; ++i)
            peak = std::max(peak, std::fabs(static_cast<double>(buf[static_cast<size_t>(i)])));
        done += n;
        if (j.info.frames > 0) j.report.at(50.0 * static_cast<double>(done) / static_cast<double>(j.info.frames));
    }
    return {};
}

std::string copyBytes(const std::string& source, FileBeside& out, const std::atomic<bool>& stop) {
    const int fd = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return "cannot read " + source + ": " + std::strerror(errno);
    std::vector<char> buf(1 << 16);
    std::string error;
    while (!stop.load()) {
        const ssize_t n = ::read(fd, buf.data(), buf.size());
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            error = "cannot read " + source + ": " + std::strerror(errno);
            break;
        }
        if (n == 0) break;
        try {
            out.write(buf.data(), static_cast<size_t>(n));
        } catch (const std::exception& e) {
            error = e.what();
            break;
        }
    }
    ::close(fd);
    return error;
}

}  // namespace

std::string SndfileNormaliser::Normalize(const std::string& source, const std::string& target, int32_t percent,
                                         const std::atomic<bool>& stop, const platform::PercentDone& progress) {
    if (const std::string why = unreadable(source); !why.empty()) return why;
    if (target.empty()) return "no target file given";
    if (percent <= 0) return "the percent must be above 0, not " + std::to_string(percent);

    SF_INFO info{};
    Sndfile in(sf_open(source.c_str(), SFM_READ, &info));
    if (!in) return source + " is not an audio file (" + sf_strerror(nullptr) + ")";
    if (info.channels < 1) return source + " is not an audio file (no channels)";
    // Doubles come back as they are stored, not clipped or scaled.
    sf_command(in.get(), SFC_SET_NORM_DOUBLE, nullptr, SF_TRUE);
    sf_command(in.get(), SFC_SET_CLIPPING, nullptr, SF_FALSE);

    try {
        // The new file is made first, so that a target that cannot be written
        // is told at once rather than after the scan.
        FileBeside out(target);
        Reporter report(progress);
        report.at(0);
        Job job{in.get(), info, stop, report, source};
        const int bits = pcmBits(info.format);
        const bool whole = bits > 0;
        double peak = 0;
        const std::string error =
            whole ? scanPeak<int>(job, sf_readf_int, peak) : scanPeak<double>(job, sf_readf_double, peak);
        if (!error.empty()) return error;
        if (stop.load()) return "stopped";

        if (peak == 0) {
            // Nothing to raise: the file goes over as it is.
            in.reset();
            if (std::string e = copyBytes(source, out, stop); !e.empty()) return e;
        } else {
            if (sf_seek(in.get(), 0, SEEK_SET) != 0) return "cannot read " + source + ": " + sf_strerror(in.get());
            SF_INFO outInfo = info;
            Sndfile dst(sf_open_fd(out.fd(), SFM_WRITE, &outInfo, SF_FALSE));
            if (!dst) return "cannot write " + target + ": " + sf_strerror(nullptr);
            sf_command(dst.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
            const int ch = info.channels;
            sf_count_t done = 0;
            auto writeFailed = [&] {
                const int err = errno;
                std::string why = err ? std::strerror(err) : sf_strerror(dst.get());
                return "cannot write " + target + ": " + why;
            };
            if (whole) {
                // sf_readf_int gives the samples left-justified in 32 bits; scale
                // them in the format's own steps and round to the nearest step.
                const int shift = 32 - bits;
                const double top = std::ldexp(1.0, bits - 1) - 1;
                const double gain = std::round(top * percent / 100.0) / (peak / std::ldexp(1.0, shift));
                const double lo = -top - 1, hi = top;
                std::vector<int> buf(static_cast<size_t>(kBlockFrames * ch));
                while (!stop.load()) {
                    const sf_count_t n = sf_readf_int(in.get(), buf.data(), kBlockFrames);
                    if (n <= 0) {
                        if (sf_error(in.get()) != SF_ERR_NO_ERROR) return job.readError();
                        break;
                    }
                    for (sf_count_t i = 0; i < n * ch; ++i) {
                        int& v = buf[static_cast<size_t>(i)];
                        const double step = static_cast<double>(v >> shift);
                        const double scaled = std::clamp(std::round(step * gain), lo, hi);
                        v = static_cast<int>(static_cast<uint32_t>(static_cast<int64_t>(scaled)) << shift);
                    }
                    errno = 0;
                    if (sf_writef_int(dst.get(), buf.data(), n) != n) return writeFailed();
                    done += n;
                    if (info.frames > 0) report.at(50.0 + 50.0 * static_cast<double>(done) / info.frames);
                }
            } else {
                const double gain = (percent / 100.0) / peak;
                std::vector<double> buf(static_cast<size_t>(kBlockFrames * ch));
                while (!stop.load()) {
                    const sf_count_t n = sf_readf_double(in.get(), buf.data(), kBlockFrames);
                    if (n <= 0) {
                        if (sf_error(in.get()) != SF_ERR_NO_ERROR) return job.readError();
                        break;
                    }
                    for (sf_count_t i = 0; i < n * ch; ++i) buf[static_cast<size_t>(i)] *= gain;
                    errno = 0;
                    if (sf_writef_double(dst.get(), buf.data(), n) != n) return writeFailed();
                    done += n;
                    if (info.frames > 0) report.at(50.0 + 50.0 * static_cast<double>(done) / info.frames);
                }
            }
            if (stop.load()) return "stopped";
            // The header's sizes are written at the close; a failure there is a write failure too.
            sf_write_sync(dst.get());
            errno = 0;
            if (sf_close(dst.release()) != 0) return writeFailed();
        }
        if (stop.load()) return "stopped";
        out.commit();
    } catch (const std::exception& e) {
        return e.what();
    }
    if (progress) progress(100.0);
    return {};
}

}  // namespace velaro::engine
