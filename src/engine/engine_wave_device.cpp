#include "engine_wave_device.h"

#include <fcntl.h>
#include <samplerate.h>
#include <sndfile.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <thread>
#include <vector>

#include "audio_engine.h"
#include "core/base/paths.h"
#include "core/base/safe_file.h"
#include "mic_input.h"
#include "take_recorder.h"
#include "wave_reader.h"

namespace velaro::engine {

namespace {
constexpr size_t kFrameBytes = 2 * sizeof(float);
constexpr int kChunk = 4096;

// Waits until the audio thread has finished the block it may be in, so what
// it was handed can go. Offline nothing runs beside the caller.
void letAudioPass(AudioEngine& engine, const std::atomic<int64_t>* counter = nullptr) {
    if (!engine.deviceRunning()) return;
    const auto read = [&] { return counter ? counter->load() : engine.framesPlayed(); };
    const int64_t seen = read();
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
    while (read() == seen && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}
}  // namespace

// Sounds [from, to) of a mapped take. The audio thread reads the mapping; the
// logic thread swaps it only between blocks.
class TakePlayer : public AudioSource {
public:
    void process(float* left, float* right, int frames) noexcept override {
        if (const float* data = data_.load(std::memory_order_acquire)) {
            const int64_t pos = pos_.load(std::memory_order_relaxed);
            const int n = static_cast<int>(std::clamp<int64_t>(end_ - pos, 0, frames));
            for (int i = 0; i < n; ++i) {
                left[i] += data[2 * (pos + i)];
                right[i] += data[2 * (pos + i) + 1];
            }
            pos_.store(pos + n, std::memory_order_relaxed);
        }
        blocks_.fetch_add(1, std::memory_order_release);
    }
    // Thread: logic.
    bool start(AudioEngine& engine, const std::string& path, int64_t from, int64_t to) {
        stop(engine);
        if (to <= from) return true;
        const int fd = ::open(path.c_str(), O_RDONLY);
        if (fd < 0) return false;
        const size_t bytes = static_cast<size_t>(to) * kFrameBytes;
        void* m = ::mmap(nullptr, bytes, PROT_READ, MAP_SHARED, fd, 0);
        ::close(fd);
        if (m == MAP_FAILED) return false;
        // The audio thread reads the mapping: have the range read in ahead of it.
        ::madvise(m, bytes, MADV_SEQUENTIAL);
        ::madvise(m, bytes, MADV_WILLNEED);
        map_ = m;
        mapBytes_ = bytes;
        end_ = to;
        pos_.store(from, std::memory_order_relaxed);
        data_.store(static_cast<const float*>(m), std::memory_order_release);
        return true;
    }
    void stop(AudioEngine& engine) {
        if (!map_) return;
        data_.store(nullptr, std::memory_order_release);
        letAudioPass(engine, &blocks_);
        ::munmap(map_, mapBytes_);
        map_ = nullptr;
    }
    bool active() const { return map_ != nullptr && pos_.load(std::memory_order_relaxed) < end_; }
    bool mapped() const { return map_ != nullptr; }
    int64_t position() const { return pos_.load(std::memory_order_relaxed); }

private:
    std::atomic<const float*> data_{nullptr};
    std::atomic<int64_t> pos_{0};
    std::atomic<int64_t> blocks_{0};
    int64_t end_ = 0;
    void* map_ = nullptr;
    size_t mapBytes_ = 0;
};

EngineWaveDevice::EngineWaveDevice(AudioEngine& engine) : engine_(engine), player_(std::make_unique<TakePlayer>()) {
    engine_.addSource(player_.get());
}

EngineWaveDevice::~EngineWaveDevice() {
    // The player stays one of the engine's sources: no device may call it once it is gone.
    engine_.stopDevice();
    stopRecorder();
    stopPlayer();
    dropTake();
}

int EngineWaveDevice::fail(int error, std::string detail) {
    detail_ = std::move(detail);
    return error;
}

int64_t EngineWaveDevice::frames() const { return frames_ + (recorder_ ? recorder_->framesWritten() : 0); }

int64_t EngineWaveDevice::frameOf(int32_t ms) const {
    return std::clamp<int64_t>(int64_t{ms} * engine_.sampleRate() / 1000, 0, frames());
}

int32_t EngineWaveDevice::msOf(int64_t frame) const {
    return static_cast<int32_t>(frame * 1000 / engine_.sampleRate());
}

bool EngineWaveDevice::playing() const { return player_->active(); }

void EngineWaveDevice::stopPlayer() {
    if (!player_->mapped()) return;
    stoppedAtMs_ = msOf(player_->position());
    player_->stop(engine_);
}

int EngineWaveDevice::stopRecorder() {
    if (!recorder_) return 0;
    engine_.setRecorder(nullptr);
    letAudioPass(engine_);
    if (micHeld_) {
        engine_.mic().setConsumer(nullptr);
        // The capture thread may be inside a push into the ring that goes now.
        const int64_t seen = engine_.mic().framesCaptured();
        const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
        while (engine_.mic().framesCaptured() == seen && std::chrono::steady_clock::now() < until)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        engine_.mic().release();
        micHeld_ = false;
    }
    std::string error;
    const bool ok = recorder_->finish(error);
    frames_ += recorder_->framesWritten();
    recorder_.reset();
    stoppedAtMs_ = msOf(frames_);
    // What reached the file stays the take even when the disk filled up.
    std::error_code ec;
    const auto size = std::filesystem::file_size(takePath_, ec);
    if (!ec) frames_ = static_cast<int64_t>(size / kFrameBytes);
    return ok ? 0 : fail(kCannotKeep, "the take's scratch file in " + tempFolder() + ": " + error);
}

void EngineWaveDevice::dropTake() {
    if (!takePath_.empty()) ::unlink(takePath_.c_str());
    takePath_.clear();
    frames_ = 0;
}

int EngineWaveDevice::newTake() {
    dropTake();
    std::string pattern = tempFolder() + "/velaro-take-XXXXXX";
    std::vector<char> buf(pattern.begin(), pattern.end());
    buf.push_back('\0');
    const int fd = ::mkstemp(buf.data());
    if (fd < 0) return fail(kCannotKeep, "the take's scratch file in " + tempFolder() + ": " + std::strerror(errno));
    ::close(fd);
    takePath_ = buf.data();
    return 0;
}

int EngineWaveDevice::Open(const std::string& element, uint32_t& id) {
    id = 0;
    if (id_ != 0) Close(id_);
    if (int e = newTake()) return e;
    format_ = platform::WaveFormat{};
    element_ = element;
    stoppedAtMs_ = 0;
    if (!element.empty()) {
        // A file opens as a take of its own: read in at the engine's rate, its format kept for saving.
        try {
            WaveReader reader(element, engine_.sampleRate());
            std::FILE* out = std::fopen(takePath_.c_str(), "wb");
            if (!out) return fail(kCannotKeep, "the take's scratch file: " + std::string(std::strerror(errno)));
            std::vector<float> buf(2 * kChunk);
            int n;
            bool ok = true;
            while ((n = reader.read(buf.data(), kChunk)) > 0) {
                ok = ok && std::fwrite(buf.data(), kFrameBytes, static_cast<size_t>(n), out) == static_cast<size_t>(n);
                frames_ += n;
            }
            if (std::fclose(out) != 0 || !ok) {
                dropTake();
                return fail(kCannotKeep, "the take's scratch file: " + std::string(std::strerror(errno)));
            }
            format_.channels = std::min(reader.fileChannels(), 2);
            format_.samplesPerSec = reader.fileRate();
            format_.bitsPerSample = reader.fileBits();
            format_.blockAlign = format_.bitsPerSample / 8 * format_.channels;
            format_.avgBytesPerSec = format_.blockAlign * format_.samplesPerSec;
        } catch (const std::exception& e) {
            dropTake();
            return fail(kCannotOpen, e.what());
        }
    }
    id = id_ = nextId_++;
    return 0;
}

int EngineWaveDevice::Close(uint32_t id) {
    if (!valid(id)) return fail(kNotOpen, "");
    const int e = stopRecorder();
    stopPlayer();
    dropTake();
    id_ = 0;
    return e;
}

int EngineWaveDevice::Play(uint32_t id, int32_t fromMs, int32_t toMs) {
    if (!valid(id)) return fail(kNotOpen, "");
    if (int e = stopRecorder()) return e;
    stopPlayer();
    const int64_t from = frameOf(fromMs), to = frameOf(toMs);
    if (!player_->start(engine_, takePath_, from, to))
        return fail(kCannotOpen, "the take's scratch file: " + std::string(std::strerror(errno)));
    stoppedAtMs_ = msOf(from);
    return 0;
}

int EngineWaveDevice::Delete(uint32_t id, int32_t fromMs, int32_t toMs) {
    if (!valid(id)) return fail(kNotOpen, "");
    if (recorder_) return fail(kBusy, "");
    stopPlayer();
    const int64_t a = frameOf(fromMs), b = frameOf(toMs);
    if (b <= a) return 0;
    // The take without [a, b): copied to a new scratch file that takes the old one's place.
    const std::string next = siblingTempName(takePath_);
    std::FILE* in = std::fopen(takePath_.c_str(), "rb");
    std::FILE* out = in ? std::fopen(next.c_str(), "wb") : nullptr;
    bool ok = in && out;
    std::vector<float> buf(2 * kChunk);
    int64_t at = 0;
    while (ok && at < frames_) {
        const size_t n = std::fread(buf.data(), kFrameBytes, kChunk, in);
        if (n == 0) break;
        for (size_t i = 0; i < n; ++i, ++at)
            if (at < a || at >= b)
                ok = ok && std::fwrite(&buf[2 * i], kFrameBytes, 1, out) == 1;
    }
    const int err = errno;
    if (in) std::fclose(in);
    if (out && std::fclose(out) != 0) ok = false;
    if (!ok || std::rename(next.c_str(), takePath_.c_str()) != 0) {
        ::unlink(next.c_str());
        return fail(kCannotKeep, "the take's scratch file: " + std::string(std::strerror(err ? err : EIO)));
    }
    frames_ -= b - a;
    stoppedAtMs_ = std::min(stoppedAtMs_, msOf(frames_));
    return 0;
}

int EngineWaveDevice::Record(uint32_t id) {
    if (!valid(id)) return fail(kNotOpen, "");
    if (recorder_) return 0;
    stopPlayer();
    TakeRecorder::Options opt;
    MicInput& mic = engine_.mic();
    opt.live = engine_.deviceRunning();
    if (opt.live) {
        std::string error;
        if (!mic.acquire(error)) return fail(kNoInput, error);
        micHeld_ = true;
        opt.micSkipFrames = mic.latencyFrames();
        // Fresh clocks for this take: a long-running stream's clock may have
        // drifted from the machine's since its first callback.
        engine_.outputClock().reset();
        mic.clock().reset();
        opt.engine = &engine_;
        opt.mic = &mic;
    } else {
        // Offline the limiter's delay is left out, so the take lines up with the render.
        opt.skipFrames = engine_.limiterLatency();
        opt.level = &mic;
        if (!mic.file().empty()) {
            try {
                opt.micFile = std::make_unique<WaveReader>(mic.file(), engine_.sampleRate());
            } catch (const std::exception& e) {
                return fail(kNoInput, e.what());
            }
        }
    }
    try {
        recorder_ = std::make_unique<TakeRecorder>(takePath_, std::move(opt));
    } catch (const std::exception& e) {
        if (micHeld_) mic.release();
        micHeld_ = false;
        return fail(kCannotKeep, e.what());
    }
    if (micHeld_) mic.setConsumer(&recorder_->micRing());
    engine_.setRecorder(recorder_.get());
    return 0;
}

int EngineWaveDevice::Stop(uint32_t id) {
    if (!valid(id)) return fail(kNotOpen, "");
    const int e = stopRecorder();
    stopPlayer();
    return e;
}

int EngineWaveDevice::Save(uint32_t id, const std::string& file) {
    if (!valid(id)) return fail(kNotOpen, "");
    if (recorder_) return fail(kBusy, "");
    const platform::WaveFormat f = format_;
    const std::string temp = siblingTempName(file);
    SF_INFO info{};
    info.samplerate = f.samplesPerSec;
    info.channels = f.channels;
    // WAV keeps 8-bit samples unsigned.
    info.format = SF_FORMAT_WAV | (f.bitsPerSample == 8 ? SF_FORMAT_PCM_U8 : SF_FORMAT_PCM_16);
    const auto cannot = [&](int err) {
        return fail(kCannotSave, "cannot write " + file + ": " + (err ? std::strerror(err) : "the file could not be finished"));
    };
    errno = 0;
    SNDFILE* out = sf_open(temp.c_str(), SFM_WRITE, &info);
    if (!out) {
        const int err = errno;
        ::unlink(temp.c_str());  // made, but its header found no room
        return cannot(err);
    }
    sf_command(out, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    std::FILE* in = std::fopen(takePath_.c_str(), "rb");
    SRC_STATE* src = nullptr;
    int srcErr = 0;
    if (f.samplesPerSec != engine_.sampleRate()) src = src_new(SRC_SINC_MEDIUM_QUALITY, 2, &srcErr);
    const double ratio = static_cast<double>(f.samplesPerSec) / engine_.sampleRate();
    std::vector<float> buf(2 * kChunk), conv(2 * (static_cast<size_t>(kChunk * ratio) + 16)), mono(kChunk * 4);
    int err = in ? 0 : errno;
    bool ok = in != nullptr && (src || f.samplesPerSec == engine_.sampleRate());
    bool done = false;
    int64_t left = frames_;
    while (ok && !done) {
        const size_t n = left > 0 ? std::fread(buf.data(), kFrameBytes, static_cast<size_t>(std::min<int64_t>(left, kChunk)), in) : 0;
        left -= static_cast<int64_t>(n);
        done = n == 0;
        const float* s = buf.data();
        size_t outN = n;
        if (src) {
            SRC_DATA d{};
            d.data_in = buf.data();
            d.input_frames = static_cast<long>(n);
            d.data_out = conv.data();
            d.output_frames = static_cast<long>(conv.size() / 2);
            d.src_ratio = ratio;
            d.end_of_input = done ? 1 : 0;
            // The converter may hold input back; at the end it is drained in full.
            do {
                if (src_process(src, &d) != 0) {
                    ok = false;
                    break;
                }
                outN = static_cast<size_t>(d.output_frames_gen);
                s = conv.data();
                if (f.channels == 1) {
                    for (size_t i = 0; i < outN; ++i) mono[i] = 0.5f * (s[2 * i] + s[2 * i + 1]);
                    s = mono.data();
                }
                errno = 0;
                if (sf_writef_float(out, s, static_cast<sf_count_t>(outN)) != static_cast<sf_count_t>(outN)) {
                    err = errno;
                    ok = false;
                }
                d.data_in += 2 * d.input_frames_used;
                d.input_frames -= d.input_frames_used;
            } while (ok && (d.input_frames > 0 || (done && d.output_frames_gen > 0)));
            continue;
        }
        if (f.channels == 1) {
            for (size_t i = 0; i < outN; ++i) mono[i] = 0.5f * (s[2 * i] + s[2 * i + 1]);
            s = mono.data();
        }
        errno = 0;
        if (outN > 0 && sf_writef_float(out, s, static_cast<sf_count_t>(outN)) != static_cast<sf_count_t>(outN)) {
            err = errno;
            ok = false;
        }
    }
    if (src) src_delete(src);
    if (in) std::fclose(in);
    errno = 0;
    // Closing writes the header's sizes; it fails on a full disk as well.
    if (sf_close(out) != 0 && ok) {
        err = errno;
        ok = false;
    }
    if (ok && std::rename(temp.c_str(), file.c_str()) != 0) {
        err = errno;
        ok = false;
    }
    if (!ok) {
        ::unlink(temp.c_str());
        return cannot(err);
    }
    return 0;
}

int EngineWaveDevice::Status(uint32_t id, uint32_t item, int32_t& value) {
    value = 0;
    if (!valid(id)) return fail(kNotOpen, "");
    switch (item) {
        case platform::kItemLength: value = msOf(frames()); break;
        case platform::kItemPosition:
            if (recorder_)
                value = msOf(frames());
            else if (player_->mapped())
                value = msOf(player_->position());
            else
                value = stoppedAtMs_;
            break;
        case platform::kItemFormatTag: value = format_.formatTag; break;
        case platform::kItemChannels: value = format_.channels; break;
        case platform::kItemSamplesPerSec: value = format_.samplesPerSec; break;
        case platform::kItemAvgBytesPerSec: value = format_.avgBytesPerSec; break;
        case platform::kItemBitsPerSample: value = format_.bitsPerSample; break;
        default: return fail(kBadFormat, "");
    }
    return 0;
}

int EngineWaveDevice::Set(uint32_t id, const platform::WaveFormat& format) {
    if (!valid(id)) return fail(kNotOpen, "");
    if (format.formatTag != 1 || (format.bitsPerSample != 8 && format.bitsPerSample != 16) ||
        (format.channels != 1 && format.channels != 2) || format.samplesPerSec < 8000 ||
        format.samplesPerSec > 192000)
        return fail(kBadFormat, "");
    format_ = format;
    return 0;
}

int EngineWaveDevice::Info(uint32_t id, std::string& name) {
    name.clear();
    if (!valid(id)) return fail(kNotOpen, "");
    name = element_;
    return 0;
}

std::string EngineWaveDevice::ErrorString(int error) {
    switch (error) {
        case 0: return "The specified command was carried out.";
        case kNotOpen: return "The specified device is not open or is not recognized.";
        case kCannotOpen: return "The wave file cannot be opened: " + detail_;
        case kCannotSave: return "The take cannot be saved: " + detail_;
        case kCannotKeep: return "The take cannot be kept: " + detail_;
        case kBadFormat: return "The wave format is not one the recorder can use: PCM, 8 or 16 bits, mono or stereo.";
        case kBusy: return "The device is recording; stop it first.";
        case kNoInput: return "There is no microphone to record from: " + detail_;
        default: return "Unknown wave device error " + std::to_string(error) + ".";
    }
}

}  // namespace velaro::engine
