#pragma once
// MP3 and WMA encoders and the normaliser. Work runs off the logic thread;
// progress comes back as a percentage through the callback, which the engine
// posts to the event loop.

#include <functional>
#include <map>
#include <string>

namespace velaro::platform {

using Progress = std::function<void(int percent)>;

struct Mp3Options {
    int bitrate = 128;
    int quality = 1;  // 0 fast, 1 medium, 2 high
    bool vbr = false;
    int vbrQuality = 4;
    bool mono = false;
    bool crc = false;
    bool intensity = false;
};

class Mp3Encoder {
public:
    virtual ~Mp3Encoder() = default;
    // 0 on success, else an error number.
    virtual int Encode(const std::string& wavIn, const std::string& mp3Out, const Mp3Options& o,
                       Progress progress) = 0;
};

class WmaEncoder {
public:
    virtual ~WmaEncoder() = default;
    virtual int Encode(const std::string& wavIn, const std::string& wmaOut, int bitrate,
                       const std::map<std::string, std::string>& tags, Progress progress) = 0;
};

class Normaliser {
public:
    virtual ~Normaliser() = default;
    // Scales the wave file so its peak reaches `percent` of full scale.
    virtual int Normalise(const std::string& wavPath, int percent, Progress progress) = 0;
};

}  // namespace velaro::platform
