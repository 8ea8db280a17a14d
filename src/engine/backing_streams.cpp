#include "backing_streams.h"

#include <algorithm>

namespace velaro::engine {

BackingStreams::BackingStreams(AudioEngine& engine)
    : engine_(engine), mix_(2 * AudioEngine::kMaxBlock), scratch_(2 * AudioEngine::kMaxBlock) {
    engine_.addSource(this);
}

BackingStreams::~BackingStreams() {
    // The device calls into this source: it must be quiet before the streams go.
    engine_.stopDevice();
    for (auto& [id, m] : streams_) m.raw->stopWorker();
}

bool BackingStreams::SetConfig(int option, int value) {
    reap();
    error_ = 0;
    if (option == platform::kConfigFloatDsp) {
        floatDsp_.store(value != 0, std::memory_order_relaxed);
        return true;
    }
    error_ = kErrIllParam;
    return false;
}

BackingStreams::Mirror* BackingStreams::find(platform::StreamId s) {
    reap();
    auto it = streams_.find(s);
    if (it == streams_.end()) {
        error_ = kErrHandle;
        return nullptr;
    }
    error_ = 0;
    return &it->second;
}

bool BackingStreams::send(const Command& c) {
    if (commands_.push(c)) return true;
    error_ = kErrNotAvail;
    return false;
}

void BackingStreams::reap() {
    BackingStream* s = nullptr;
    while (retired_.pop(s))
        freed_.erase(std::remove_if(freed_.begin(), freed_.end(), [s](const auto& p) { return p.get() == s; }),
                     freed_.end());
}

platform::StreamId BackingStreams::create(const std::string& path, bool module, uint32_t flags, bool loop) {
    reap();
    auto stream = std::make_unique<BackingStream>(nextId_, engine_.sampleRate());
    int code = 0;
    if (!stream->open(path, module, loop, code)) {
        error_ = code ? code : kErrIllParam;
        return 0;
    }
    // The second stream of the same file right after the first is its
    // partner: whichever starts later starts on the other's sample.
    BackingStream* partner = nullptr;
    if (Mirror* last = lastCreated_ ? find(lastCreated_) : nullptr)
        if (last->raw->path() == path) partner = last->raw;
    Command c;
    c.kind = Command::Add;
    c.s = stream.get();
    c.partner = partner;
    if (!send(c)) return 0;
    const platform::StreamId id = nextId_++;
    Mirror& m = streams_[id];
    m.raw = stream.get();
    m.stream = std::move(stream);
    m.module = module;
    m.flags = flags;
    lastCreated_ = partner ? 0 : id;
    error_ = 0;
    return id;
}

platform::StreamId BackingStreams::StreamCreateFile(bool mem, const std::string& path, int64_t offset, int64_t length,
                                                    uint32_t flags) {
    if (mem || offset != 0 || length != 0) {
        error_ = kErrIllParam;
        return 0;
    }
    return create(path, false, flags, false);
}

platform::StreamId BackingStreams::MusicLoad(bool mem, const std::string& path, int64_t offset, int64_t length,
                                             uint32_t flags, int) {
    if (mem || offset != 0 || length != 0) {
        error_ = kErrIllParam;
        return 0;
    }
    return create(path, true, flags, (flags & platform::kMusicLoop) != 0);
}

bool BackingStreams::release(platform::StreamId s) {
    Mirror* m = find(s);
    if (!m) return false;
    Command c;
    c.kind = Command::Remove;
    c.s = m->raw;
    if (!send(c)) return false;
    m->raw->stopWorker();
    freed_.push_back(std::move(m->stream));
    streams_.erase(s);
    if (lastCreated_ == s) lastCreated_ = 0;
    return true;
}

// Either call frees either kind: the form frees a handle both ways, not knowing which it holds.
bool BackingStreams::StreamFree(platform::StreamId s) {
    Mirror* m = find(s);
    if (!m || m->module) {
        error_ = kErrHandle;
        return false;
    }
    return release(s);
}

bool BackingStreams::MusicFree(platform::StreamId s) {
    Mirror* m = find(s);
    if (!m || !m->module) {
        error_ = kErrHandle;
        return false;
    }
    return release(s);
}

bool BackingStreams::ChannelPlay(platform::StreamId s, bool restart) {
    Mirror* m = find(s);
    if (!m) return false;
    Command c;
    c.kind = Command::Play;
    c.s = m->raw;
    c.l = restart ? 1.0f : 0.0f;
    // Decoding starts with the first play, so key and speed set before it hold from the first frame.
    m->raw->startWorker();
    if (!send(c)) return false;
    m->raw->markActive(true);
    return true;
}

bool BackingStreams::ChannelStop(platform::StreamId s) {
    Mirror* m = find(s);
    if (!m) return false;
    Command c;
    c.kind = Command::Stop;
    c.s = m->raw;
    if (!send(c)) return false;
    m->raw->markActive(false);
    return true;
}

int BackingStreams::ChannelIsActive(platform::StreamId s) {
    Mirror* m = find(s);
    return m && m->raw->active() ? 1 : 0;
}

double BackingStreams::ChannelSeconds(platform::StreamId s) {
    Mirror* m = find(s);
    return m ? double(m->raw->position()) / engine_.sampleRate() : 0.0;
}

double BackingStreams::ChannelLengthSeconds(platform::StreamId s) {
    Mirror* m = find(s);
    return m ? m->raw->lengthSeconds() : 0.0;
}

bool BackingStreams::ChannelGetInfo(platform::StreamId s, platform::ChannelInfo& info) {
    Mirror* m = find(s);
    if (!m) return false;
    info.freq = engine_.sampleRate();
    info.chans = m->raw->fileChannels();
    info.flags = m->flags;
    info.module = m->module;
    return true;
}

bool BackingStreams::ChannelGetAttributes(platform::StreamId s, float& freq, int& volume, int& pan) {
    Mirror* m = find(s);
    if (!m) return false;
    // The stream plays (and its DSP runs) at the engine's rate, whatever the file's.
    freq = static_cast<float>(engine_.sampleRate());
    volume = 100;
    pan = 0;
    return true;
}

uint32_t BackingStreams::ChannelSetDSP(platform::StreamId s, platform::DspProc proc, void* user, int priority) {
    Mirror* m = find(s);
    if (!m) return 0;
    if (!proc) {
        error_ = kErrIllParam;
        return 0;
    }
    Command c;
    c.kind = Command::Entry;
    c.s = m->raw;
    c.entry.kind = BackingStream::Entry::Callback;
    c.entry.priority = priority;
    c.entry.handle = nextDsp_;
    c.entry.proc = proc;
    c.entry.user = user;
    if (!send(c)) return 0;
    m->dsps.push_back(nextDsp_);
    return nextDsp_++;
}

bool BackingStreams::ChannelRemoveDSP(platform::StreamId s, uint32_t dsp) {
    Mirror* m = find(s);
    if (!m) return false;
    auto it = std::find(m->dsps.begin(), m->dsps.end(), dsp);
    if (it == m->dsps.end()) {
        error_ = kErrHandle;
        return false;
    }
    m->dsps.erase(it);
    Command c;
    c.kind = Command::RemoveDsp;
    c.s = m->raw;
    c.entry.handle = dsp;
    return send(c);
}

bool BackingStreams::FX_DSP_Set(platform::StreamId s, int fx, int priority) {
    Mirror* m = find(s);
    if (!m) return false;
    Command c;
    c.kind = Command::Entry;
    c.s = m->raw;
    c.entry.priority = priority;
    switch (fx) {
    case platform::kFxVolume:
        if (m->volume) return true;
        c.entry.kind = BackingStream::Entry::Volume;
        if (!send(c)) return false;
        m->volume = true;
        m->vol = {};
        return true;
    case platform::kFxPeakEq:
        if (m->bands >= BackingStream::kBands) {
            error_ = kErrNotAvail;
            return false;
        }
        c.entry.kind = BackingStream::Entry::Eq;
        c.entry.band = m->bands;
        if (!send(c)) return false;
        m->eq[m->bands] = platform::PeakEqRecord{};
        m->eq[m->bands].band = m->bands;
        m->eq[m->bands].rate = engine_.sampleRate();
        m->eq[m->bands].gain = 0;
        ++m->bands;
        return true;
    case platform::kFxGain:
        c.entry.kind = BackingStream::Entry::Gain;
        if (!send(c)) return false;
        m->gainSet = true;
        return true;
    default:
        error_ = kErrIllParam;
        return false;
    }
}

bool BackingStreams::FX_DSP_Remove(platform::StreamId s, int fx) {
    Mirror* m = find(s);
    if (!m) return false;
    Command c;
    c.kind = Command::RemoveKind;
    c.s = m->raw;
    switch (fx) {
    case platform::kFxVolume:
        if (!m->volume) return error_ = kErrHandle, false;
        c.entry.kind = BackingStream::Entry::Volume;
        m->volume = false;
        break;
    case platform::kFxPeakEq:
        if (m->bands == 0) return error_ = kErrHandle, false;
        c.entry.kind = BackingStream::Entry::Eq;
        m->bands = 0;
        break;
    case platform::kFxGain:
        // Its record stays with the stream whether it was installed or not.
        c.entry.kind = BackingStream::Entry::Gain;
        m->gainSet = false;
        break;
    default:
        error_ = kErrIllParam;
        return false;
    }
    return send(c);
}

bool BackingStreams::FX_DSP_SetParameters(platform::StreamId s, int fx, const platform::VolumeRecord& r) {
    Mirror* m = find(s);
    if (!m) return false;
    if (fx != platform::kFxVolume || !m->volume) return error_ = kErrHandle, false;
    Command c;
    c.kind = Command::Volume;
    c.s = m->raw;
    c.l = r.left;
    c.r = r.right;
    if (!send(c)) return false;
    m->vol = r;
    return true;
}

bool BackingStreams::FX_DSP_SetParameters(platform::StreamId s, int fx, const platform::PeakEqRecord& r) {
    Mirror* m = find(s);
    if (!m) return false;
    if (fx != platform::kFxPeakEq || r.band < 0 || r.band >= m->bands) return error_ = kErrHandle, false;
    Command c;
    c.kind = Command::Band;
    c.s = m->raw;
    c.eq = r;
    if (!send(c)) return false;
    m->eq[r.band] = r;
    return true;
}

bool BackingStreams::FX_DSP_SetParameters(platform::StreamId s, int fx, const platform::GainRecord& r) {
    Mirror* m = find(s);
    if (!m) return false;
    if (fx != platform::kFxGain) return error_ = kErrHandle, false;
    m->gain = r;
    return true;
}

bool BackingStreams::FX_DSP_GetParameters(platform::StreamId s, int fx, platform::VolumeRecord& r) {
    Mirror* m = find(s);
    if (!m) return false;
    if (fx != platform::kFxVolume || !m->volume) return error_ = kErrHandle, false;
    r = m->vol;
    return true;
}

bool BackingStreams::FX_DSP_GetParameters(platform::StreamId s, int fx, platform::PeakEqRecord& r) {
    Mirror* m = find(s);
    if (!m) return false;
    if (fx != platform::kFxPeakEq || r.band < 0 || r.band >= m->bands) return error_ = kErrHandle, false;
    r = m->eq[r.band];
    return true;
}

bool BackingStreams::FX_DSP_GetParameters(platform::StreamId s, int fx, platform::GainRecord& r) {
    Mirror* m = find(s);
    if (!m) return false;
    if (fx != platform::kFxGain) return error_ = kErrHandle, false;
    r = m->gain;
    return true;
}

bool BackingStreams::ChannelSetShift(platform::StreamId s, int semitones, int speedPercent) {
    Mirror* m = find(s);
    if (!m) return false;
    if (semitones < -12 || semitones > 12 || speedPercent < 50 || speedPercent > 150) return error_ = kErrIllParam, false;
    m->raw->setShift(semitones, speedPercent);
    return true;
}

bool BackingStreams::anyActive() const {
    for (const auto& [id, m] : streams_)
        if (m.raw->active()) return true;
    return false;
}

// ---- audio thread ----

void BackingStreams::apply(const Command& c) noexcept {
    BackingStream* s = c.s;
    switch (c.kind) {
    case Command::Add:
        if (liveCount_ < static_cast<int>(live_.size())) live_[liveCount_++] = s;
        if (c.partner) {
            s->partner = c.partner;
            c.partner->partner = s;
        }
        break;
    case Command::Remove: {
        int w = 0;
        for (int i = 0; i < liveCount_; ++i)
            if (live_[i] != s) live_[w++] = live_[i];
        liveCount_ = w;
        for (int i = 0; i < liveCount_; ++i)
            if (live_[i]->partner == s) live_[i]->partner = nullptr;
        s->stop();
        retired_.push(s);
        break;
    }
    case Command::Play: {
        BackingStream* p = s->partner;
        s->play(c.l != 0, p && p->playing() ? p->playPosition() : 0);
        break;
    }
    case Command::Stop:
        s->stop();
        break;
    case Command::Entry:
        s->addEntry(c.entry);
        break;
    case Command::RemoveDsp:
        s->removeCallback(c.entry.handle);
        break;
    case Command::RemoveKind:
        s->removeKind(c.entry.kind);
        break;
    case Command::Volume:
        s->setVolume(c.l, c.r);
        break;
    case Command::Band:
        s->setBand(c.eq);
        break;
    }
}

void BackingStreams::process(float* left, float* right, int frames) noexcept {
    Command c;
    while (commands_.pop(c)) apply(c);
    if (liveCount_ == 0) return;
    const bool offline = engine_.rendering();
    const bool floatDsp = floatDsp_.load(std::memory_order_relaxed);
    std::fill(mix_.begin(), mix_.begin() + 2 * frames, 0.0f);
    for (int i = 0; i < liveCount_; ++i) live_[i]->render(mix_.data(), scratch_.data(), frames, offline, floatDsp);
    for (int i = 0; i < frames; ++i) {
        left[i] += mix_[2 * i];
        right[i] += mix_[2 * i + 1];
    }
}

}  // namespace velaro::engine
