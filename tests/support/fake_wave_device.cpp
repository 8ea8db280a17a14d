#include "fake_wave_device.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

namespace velaro::testing {

namespace {
constexpr int kFileNotFound = 275;

void put16(std::string& s, uint32_t v) {
    s.push_back(static_cast<char>(v & 0xFF));
    s.push_back(static_cast<char>((v >> 8) & 0xFF));
}
void put32(std::string& s, uint32_t v) {
    put16(s, v & 0xFFFF);
    put16(s, v >> 16);
}
uint32_t get32(const std::string& s, size_t at) {
    uint32_t v = 0;
    for (int i = 3; i >= 0; --i) v = (v << 8) | static_cast<uint8_t>(s[at + i]);
    return v;
}
}  // namespace

int FakeWaveDevice::sampleAt(int64_t frame, int channel, int bits) {
    // A slow ramp, the right side a mirror of the left: each frame tells its time.
    const int v = static_cast<int>((frame / 4) % 200) - 100 + (channel ? 1 : 0);
    return bits == 8 ? 128 + v : v * 300;
}

int FakeWaveDevice::fail(const std::string& command) {
    auto it = failures.find(command);
    return it == failures.end() ? 0 : it->second;
}

int64_t FakeWaveDevice::frames() const {
    const int block = std::max(1, format_.blockAlign);
    return static_cast<int64_t>(data_.size()) / block;
}

int64_t FakeWaveDevice::frameOf(int32_t ms) const { return int64_t{ms} * format_.samplesPerSec / 1000; }

int32_t FakeWaveDevice::msOf(int64_t frame) const {
    return format_.samplesPerSec > 0 ? static_cast<int32_t>(frame * 1000 / format_.samplesPerSec) : 0;
}

void FakeWaveDevice::settle() {
    if (!recording_) return;
    const int64_t want = recordStartFrame_ + frameOf(static_cast<int32_t>(loop_.now() - recordStartMs_));
    const int bytes = format_.bitsPerSample / 8;
    for (int64_t f = frames(); f < want; ++f)
        for (int c = 0; c < format_.channels; ++c) {
            const int v = sampleAt(f, c, format_.bitsPerSample);
            for (int b = 0; b < bytes; ++b) data_.push_back(static_cast<uint8_t>((v >> (8 * b)) & 0xFF));
        }
}

int FakeWaveDevice::Open(const std::string& element, uint32_t& id) {
    log.push_back("Open " + element);
    if (int e = fail("Open")) return id = 0, e;
    format_ = platform::WaveFormat{};
    data_.clear();
    if (!element.empty()) {
        std::ifstream in(element, std::ios::binary);
        if (!in) return id = 0, kFileNotFound;
        std::string s((std::istreambuf_iterator<char>(in)), {});
        if (s.size() < 44 || s.compare(0, 4, "RIFF") != 0) return id = 0, kBadFormat;
        format_.formatTag = get32(s, 20) & 0xFFFF;
        format_.channels = get32(s, 22) & 0xFFFF;
        format_.samplesPerSec = static_cast<int32_t>(get32(s, 24));
        format_.avgBytesPerSec = static_cast<int32_t>(get32(s, 28));
        format_.blockAlign = get32(s, 32) & 0xFFFF;
        format_.bitsPerSample = get32(s, 34) & 0xFFFF;
        data_.assign(s.begin() + 44, s.end());
    }
    element_ = element;
    recording_ = playing_ = false;
    stoppedAt_ = 0;
    id = id_ = nextId_++;
    return 0;
}

int FakeWaveDevice::Close(uint32_t id) {
    log.push_back("Close");
    if (id == 0 || id != id_) return kNotOpen;
    if (int e = fail("Close")) return e;
    id_ = 0;
    return 0;
}

int FakeWaveDevice::Play(uint32_t id, int32_t fromMs, int32_t toMs) {
    log.push_back("Play " + std::to_string(fromMs) + " " + std::to_string(toMs));
    if (id == 0 || id != id_) return kNotOpen;
    if (int e = fail("Play")) return e;
    settle();
    recording_ = false;
    playing_ = true;
    playStartMs_ = loop_.now();
    playFrom_ = fromMs;
    playTo_ = toMs;
    return 0;
}

int FakeWaveDevice::Delete(uint32_t id, int32_t fromMs, int32_t toMs) {
    log.push_back("Delete " + std::to_string(fromMs) + " " + std::to_string(toMs));
    if (id == 0 || id != id_) return kNotOpen;
    if (int e = fail("Delete")) return e;
    settle();
    const size_t block = static_cast<size_t>(std::max(1, format_.blockAlign));
    const size_t a = std::min(data_.size(), static_cast<size_t>(frameOf(fromMs)) * block);
    const size_t b = std::min(data_.size(), static_cast<size_t>(frameOf(toMs)) * block);
    if (b > a) data_.erase(data_.begin() + static_cast<long>(a), data_.begin() + static_cast<long>(b));
    return 0;
}

int FakeWaveDevice::Record(uint32_t id) {
    log.push_back("Record");
    if (id == 0 || id != id_) return kNotOpen;
    if (int e = fail("Record")) return e;
    settle();
    recording_ = true;
    playing_ = false;
    recordStartMs_ = loop_.now();
    recordStartFrame_ = frames();
    return 0;
}

int FakeWaveDevice::Stop(uint32_t id) {
    log.push_back("Stop");
    if (id == 0 || id != id_) return kNotOpen;
    if (int e = fail("Stop")) return e;
    settle();
    int32_t pos = 0;
    Status(id, platform::kItemPosition, pos);
    stoppedAt_ = pos;
    recording_ = playing_ = false;
    return 0;
}

int FakeWaveDevice::Save(uint32_t id, const std::string& file) {
    log.push_back("Save " + file);
    if (id == 0 || id != id_) return kNotOpen;
    if (int e = fail("Save")) return e;
    settle();
    std::string s = "RIFF";
    put32(s, static_cast<uint32_t>(36 + data_.size()));
    s += "WAVEfmt ";
    put32(s, 16);
    put16(s, static_cast<uint32_t>(format_.formatTag));
    put16(s, static_cast<uint32_t>(format_.channels));
    put32(s, static_cast<uint32_t>(format_.samplesPerSec));
    put32(s, static_cast<uint32_t>(format_.avgBytesPerSec));
    put16(s, static_cast<uint32_t>(format_.blockAlign));
    put16(s, static_cast<uint32_t>(format_.bitsPerSample));
    s += "data";
    put32(s, static_cast<uint32_t>(data_.size()));
    s.append(data_.begin(), data_.end());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    if (!out) return kFileNotFound;
    out.write(s.data(), static_cast<std::streamsize>(s.size()));
    return out ? 0 : kFileNotFound;
}

int FakeWaveDevice::Status(uint32_t id, uint32_t item, int32_t& value) {
    value = 0;
    if (id == 0 || id != id_) return kNotOpen;
    if (int e = fail("Status")) return e;
    settle();
    switch (item) {
        case platform::kItemLength: value = msOf(frames()); break;
        case platform::kItemPosition:
            if (recording_)
                value = msOf(frames());
            else if (playing_)
                value = static_cast<int32_t>(std::min<int64_t>(playTo_, playFrom_ + (loop_.now() - playStartMs_)));
            else
                value = stoppedAt_;
            break;
        case platform::kItemFormatTag: value = format_.formatTag; break;
        case platform::kItemChannels: value = format_.channels; break;
        case platform::kItemSamplesPerSec: value = format_.samplesPerSec; break;
        case platform::kItemAvgBytesPerSec: value = format_.avgBytesPerSec; break;
        case platform::kItemBitsPerSample: value = format_.bitsPerSample; break;
        default: return kBadFormat;
    }
    return 0;
}

int FakeWaveDevice::Set(uint32_t id, const platform::WaveFormat& format) {
    log.push_back("Set");
    if (id == 0 || id != id_) return kNotOpen;
    if (int e = fail("Set")) return e;
    formats.push_back(format);
    // Only what a PCM buffer can hold; the device refuses the rest.
    if (format.formatTag != 1 || (format.bitsPerSample != 8 && format.bitsPerSample != 16) ||
        (format.channels != 1 && format.channels != 2) || format.samplesPerSec <= 0)
        return kBadFormat;
    settle();
    if (!data_.empty()) return kBadFormat;
    format_ = format;
    return 0;
}

int FakeWaveDevice::Info(uint32_t id, std::string& name) {
    name.clear();
    if (id == 0 || id != id_) return kNotOpen;
    name = element_;
    return 0;
}

std::string FakeWaveDevice::ErrorString(int error) {
    auto it = texts.find(error);
    if (it != texts.end()) return it->second;
    return "Fake error " + std::to_string(error) + " of the wave device.";
}

}  // namespace velaro::testing
