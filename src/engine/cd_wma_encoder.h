#pragma once
// WMA files through FFmpeg: the wmav2 encoder in an ASF file, fed with 16-bit
// stereo blocks as the CD window reads them, tags under their WM names.

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "core/platform/encoders.h"

namespace velaro::engine {

class FfmpegWmaEncoder : public platform::WmaEncoder {
public:
    FfmpegWmaEncoder();
    ~FfmpegWmaEncoder() override;

    // A whole wave file (any libsndfile reads, as 44100 Hz stereo) to WMA; 0 or a library code.
    int Encode(const std::string& wavIn, const std::string& wmaOut, int bitrate,
               const std::map<std::string, std::string>& tags, platform::Progress progress) override;

    std::vector<int> EncodeGetRates(int freq, int chans, int flags) override;
    uint32_t EncodeOpenFile(int freq, int chans, int flags, int bitrate, const std::string& path) override;
    bool EncodeSetTag(uint32_t handle, const std::string& tag, const std::string& text) override;
    bool EncodeWrite(uint32_t handle, const void* samples, int bytes) override;
    bool EncodeClose(uint32_t handle) override;
    int ErrorGetCode() override { return error_; }

private:
    struct File;
    File* file(uint32_t handle);
    std::map<uint32_t, std::unique_ptr<File>> files_;
    uint32_t next_ = 1;
    int error_ = 0;
};

}  // namespace velaro::engine
