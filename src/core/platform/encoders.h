#pragma once
// MP3 and WMA encoders and the normaliser. The services here do one whole job
// on the calling thread and report progress through a callback on that
// thread; the controls of core/record run them on a worker thread and post
// the reports to the event loop.

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace velaro::platform {

using Progress = std::function<void(int percent)>;
// Percent done, 0 to 100; a service reports 100.0 only when the job is complete.
using PercentDone = std::function<void(double percent)>;

// What the MP3 encoder control holds in its members 2 to 10.
struct Mp3Settings {
    int16_t encoderQuality = 1;         // 0 fast, 1 medium, 2 high
    int16_t encoderChannels = 2;        // 2 stereo, 1 mono
    int32_t encoderBitRate = 128000;    // bits per second, constant bit rate
    bool encoderIntensity = false;      // joint stereo
    bool encoderCrc = false;            // a CRC in every frame
    int16_t encoderVbr = 0;             // 0 constant bit rate, else variable
    int16_t encoderVbrQuality = 60;     // 0 to 100, higher is better
    std::string encoderInputFile;       // any audio file libsndfile reads
    std::string encoderOutputFile;
};

class Mp3Encoder {
public:
    virtual ~Mp3Encoder() = default;
    // Encodes the input into the output. `stop` ends the work early and still
    // leaves a complete, shorter file. Returns "" when the file was written,
    // else the reason in one line; on failure an old output file is kept as it was.
    virtual std::string Encode(const Mp3Settings& s, const std::atomic<bool>& stop, const PercentDone& progress) = 0;
};

class WmaEncoder {
public:
    virtual ~WmaEncoder() = default;
    virtual int Encode(const std::string& wavIn, const std::string& wmaOut, int bitrate,
                       const std::map<std::string, std::string>& tags, Progress progress) = 0;

    // The CD window's encoder, fed block by block. Rates in bits per second,
    // best first; none when no codec is there.
    virtual std::vector<int> EncodeGetRates(int freq, int chans, int flags) { return {}; }
    // A handle, 0 on failure. Samples are 16-bit little-endian interleaved.
    virtual uint32_t EncodeOpenFile(int freq, int chans, int flags, int bitrate, const std::string& path) { return 0; }
    // A tag under its WM name; a call with both texts empty ends the tag set.
    virtual bool EncodeSetTag(uint32_t handle, const std::string& tag, const std::string& text) { return false; }
    virtual bool EncodeWrite(uint32_t handle, const void* samples, int bytes) { return false; }
    // False when the file could not be finished and put in place (ErrorGetCode says why).
    virtual bool EncodeClose(uint32_t handle) { return true; }
    virtual int ErrorGetCode() { return -1; }
};

class Normaliser {
public:
    virtual ~Normaliser() = default;
    // Writes `target` as `source` with every sample scaled so that the peak
    // reaches `percent` of full scale, in the source's own format. Source and
    // target may be the same file. Returns "" or the reason in one line; on
    // failure both files are kept as they were.
    virtual std::string Normalize(const std::string& source, const std::string& target, int32_t percent,
                                  const std::atomic<bool>& stop, const PercentDone& progress) = 0;
};

}  // namespace velaro::platform
