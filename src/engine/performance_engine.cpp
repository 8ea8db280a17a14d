#include "performance_engine.h"

#include <chrono>
#include <cmath>
#include <limits>
#include <thread>

#include "core/base/paths.h"
#include "core/base/vb_error.h"
#include "synth.h"

namespace velaro::engine {

namespace {
// The level a song plays at while its loudness is still being measured:
// that of a typical General MIDI song.
constexpr double kTypicalLufs = -24.0;
}  // namespace

PerformanceEngine::PerformanceEngine(AudioEngine& engine, int polyphony)
    : engine_(engine), player_(engine.sampleRate()), polyphony_(polyphony), defaultBank_(Synth::defaultBankPath()) {
    engine_.addSource(&player_);
    player_.setLevel(SongLoudness::levelFor(kTypicalLufs), true);
    loudnessThread_ = std::thread([this] { loudnessWorker(); });
}

PerformanceEngine::~PerformanceEngine() {
    {
        std::lock_guard<std::mutex> lock(loudnessMutex_);
        loudnessQuit_ = true;
        loudnessJobs_.clear();
    }
    loudnessCancel_.store(true);
    loudnessChanged_.notify_all();
    if (loudnessThread_.joinable()) loudnessThread_.join();
    // The engine calls the player from its own thread: stop that first.
    engine_.stopDevice();
}

std::string PerformanceEngine::bankOf(const SegmentSlot& s) const {
    if (s.collection) {
        auto it = collections_.find(s.collection);
        if (it != collections_.end()) return it->second;
    }
    return defaultBank_;
}

const Segment* PerformanceEngine::segment(platform::SegmentId id) const {
    auto it = segments_.find(id);
    return it == segments_.end() ? nullptr : it->second.segment.get();
}

bool PerformanceEngine::loudnessKey(platform::SegmentId id, LoudnessKey& key) const {
    auto it = segments_.find(id);
    if (it == segments_.end()) return false;
    // What the window sends that the song itself sets at its start changes
    // nothing: such channels count as the song's own, so the measurement
    // made when the song was opened still holds at Play.
    ChannelSetup setup = channelSetup_;
    const Segment& seg = *it->second.segment;
    for (int ch = 0; ch < 16; ++ch) {
        // A channel the song leaves alone starts at the synthesiser's own 100 and program 0.
        const int volume = seg.firstValue(ch, 0xB0, 7), program = seg.firstValue(ch, 0xC0, -1);
        if (setup.volume[ch] == (volume < 0 ? 100 : volume)) setup.volume[ch] = -1;
        if (setup.program[ch] == (program < 0 ? 0 : program)) setup.program[ch] = -1;
    }
    key = LoudnessKey{id, bankOf(it->second), setup};
    return true;
}

void PerformanceEngine::queueLoudness(platform::SegmentId id) {
    LoudnessKey key;
    if (!loudnessKey(id, key)) return;
    std::lock_guard<std::mutex> lock(loudnessMutex_);
    if (loudnessResults_.count(key) || (loudnessBusy_ && loudnessRunning_ == key)) return;
    for (const auto& j : loudnessJobs_)
        if (j.key == key) return;
    loudnessJobs_.push_back({key, segments_.at(id).segment.get()});
    loudnessChanged_.notify_all();
}

void PerformanceEngine::loudnessWorker() {
    std::unique_lock<std::mutex> lock(loudnessMutex_);
    for (;;) {
        loudnessChanged_.wait(lock, [&] { return loudnessQuit_ || !loudnessJobs_.empty(); });
        if (loudnessQuit_) return;
        const LoudnessJob job = loudnessJobs_.front();
        loudnessJobs_.pop_front();
        loudnessBusy_ = true;
        loudnessRunning_ = job.key;
        lock.unlock();
        double lufs;
        try {
            lufs = loudness_.measure(*job.segment, std::get<1>(job.key), std::get<2>(job.key), loudnessCancel_);
        } catch (const std::exception&) {
            lufs = std::numeric_limits<double>::quiet_NaN();  // a bank that will not load: unity
        }
        lock.lock();
        loudnessBusy_ = false;
        if (!loudnessQuit_) {
            loudnessResults_[job.key] = lufs;
            // A song already playing glides to its level.
            if (levelFollows_.load() == std::get<0>(job.key)) {
                player_.setLevel(SongLoudness::levelFor(lufs));
                levelFollows_.store(0);
            }
        }
        loudnessChanged_.notify_all();
    }
}

bool PerformanceEngine::knownLoudness(const LoudnessKey& key, double& lufs) {
    std::lock_guard<std::mutex> lock(loudnessMutex_);
    auto it = loudnessResults_.find(key);
    if (it == loudnessResults_.end()) return false;
    lufs = it->second;
    return true;
}

double PerformanceEngine::songLoudness(platform::SegmentId id) {
    LoudnessKey key;
    if (!loudnessKey(id, key)) return std::numeric_limits<double>::quiet_NaN();
    queueLoudness(id);
    std::unique_lock<std::mutex> lock(loudnessMutex_);
    loudnessChanged_.wait(lock, [&] { return loudnessQuit_ || loudnessResults_.count(key) > 0; });
    auto r = loudnessResults_.find(key);
    return r == loudnessResults_.end() ? std::numeric_limits<double>::quiet_NaN() : r->second;
}

PerformanceEngine::SegmentSlot& PerformanceEngine::slot(platform::SegmentId id) {
    auto it = segments_.find(id);
    if (it == segments_.end()) throw VbError(VbErr::InvalidCall, "no such segment");
    return it->second;
}

platform::SegmentId PerformanceEngine::LoadSegment(const std::string& path) {
    auto seg = std::make_unique<Segment>();
    if (!parseSmf(readWholeFile(path), *seg)) throw VbError(VbErr::InvalidCall, "not a MIDI file: " + path);
    const int id = nextId_++;
    // A new song starts from its own channel setup; the window re-sends its
    // changes after opening it. (The patch file, without notes, keeps them.)
    if (seg->hasNotes()) channelSetup_ = ChannelSetup();
    segments_[id].segment = std::move(seg);
    queueLoudness(id);
    return id;
}

platform::CollectionId PerformanceEngine::LoadCollection(const std::string& path) {
    if (!fileExists(path)) throw VbError(VbErr::FileNotFound, "File not found: " + path);
    const int id = nextId_++;
    collections_[id] = path;
    return id;
}

void PerformanceEngine::useBank(const std::string& bank) {
    if (bank == activeBank_ && !synths_.empty()) return;
    auto it = synths_.find(bank);
    if (it == synths_.end()) {
        auto synth = std::make_unique<Synth>(engine_.sampleRate(), polyphony_);
        if (!bank.empty() && !synth->loadBank(bank)) throw VbError(VbErr::InvalidCall, "not a sound bank: " + bank);
        it = synths_.emplace(bank, std::move(synth)).first;
    }
    player_.swapSynth(it->second.get());
    activeBank_ = bank;
}

void PerformanceEngine::InitAudio(int, const platform::AudioParams&, int, int) { initialised_ = true; }

void PerformanceEngine::CloseDown() {
    player_.stop();
    initialised_ = false;
}

platform::AudioPathId PerformanceEngine::GetDefaultAudioPath() {
    if (!initialised_) throw VbError(VbErr::InvalidCall, "performance not initialised");
    return 1;
}

platform::SegmentStateId PerformanceEngine::PlaySegmentEx(platform::SegmentId seg, int, int64_t,
                                                         platform::AudioPathId) {
    SegmentSlot& s = slot(seg);
    if (synths_.empty() || activeBank_.empty()) useBank(s.collection ? collections_[s.collection] : defaultBank_);
    // The song's level from its loudness. Offline the measurement is waited
    // for, so a render is the same every time; live (through a device, or on
    // the wall clock in place of a lost one), a song whose measurement is
    // still running starts at a typical level and glides to its own.
    LoudnessKey key;
    loudnessKey(seg, key);
    double lufs;
    if (knownLoudness(key, lufs)) {
        levelFollows_.store(0);
        player_.setLevel(SongLoudness::levelFor(lufs), true);
    } else if (!engine_.deviceRunning() && !engine_.playingSilently()) {
        levelFollows_.store(0);
        player_.setLevel(SongLoudness::levelFor(songLoudness(seg)), true);
    } else {
        levelFollows_.store(seg);
        // The worker may have finished just before it could see the request.
        if (knownLoudness(key, lufs) && levelFollows_.exchange(0) == seg)
            player_.setLevel(SongLoudness::levelFor(lufs));
    }
    const double start = std::clamp<double>(s.startPoint, 0.0, s.segment->length);
    playOrigin_ = player_.musicTicks() - start;
    playingSegment_ = seg;
    player_.play(s.segment.get(), start);
    return ++state_;
}

void PerformanceEngine::StopEx(platform::AudioPathId, int64_t, int) { player_.stop(); }

int32_t PerformanceEngine::GetMusicTime() { return static_cast<int32_t>(std::floor(player_.musicTicks())); }

double PerformanceEngine::GetTempo(int32_t musicTime) {
    auto it = segments_.find(playingSegment_);
    if (it == segments_.end()) return 120.0;
    return 60000000.0 / it->second.segment->usPerQuarterAt(musicTime - playOrigin_);
}

void PerformanceEngine::SetMasterTempo(float factor) { player_.setMasterTempo(factor); }

float PerformanceEngine::GetMasterTempo() { return player_.masterTempo(); }

void PerformanceEngine::SetMasterVolume(int32_t v) {
    // The window maps its volume slider to 9-30 dB of attenuation, made for a
    // synthesiser that ran hot. FluidSynth does not, so the slider's resting
    // place (75, -19.5 dB) is unity here and the slider keeps its full range.
    engine_.setMasterGain(std::pow(10.0f, static_cast<float>(v - kUnityAttenuation) / 2000.0f));
}

void PerformanceEngine::SendMIDIPMSG(int64_t, int, int channel, int status, int b1, int b2) {
    // The window's channel volumes go over the song's own: the loudness measurement hears them too.
    if ((status & 0xF0) == 0xB0 && b1 == 7) channelSetup_.volume[channel & 15] = b2 & 0x7F;
    player_.sendMidi(channel, status, b1, b2);
}

void PerformanceEngine::SendPatchPMSG(int64_t, int, int channel, int program, int, int) {
    channelSetup_.program[channel & 15] = program & 0x7F;
    player_.sendMidi(channel, 0xC0, program, 0);
}

void PerformanceEngine::SendTransposePMSG(int64_t, int, int channel, int semitones) {
    player_.setTranspose(channel, semitones);
}

void PerformanceEngine::SetStartPoint(platform::SegmentId seg, int32_t musicTime) {
    SegmentSlot& s = slot(seg);
    if (musicTime < 0 || musicTime > s.segment->length) throw VbError(VbErr::InvalidCall, "start point out of range");
    s.startPoint = musicTime;
}

int32_t PerformanceEngine::GetLength(platform::SegmentId seg) {
    return static_cast<int32_t>(std::lround(slot(seg).segment->length));
}

void PerformanceEngine::SetStandardMidiFile(platform::SegmentId seg) { slot(seg); }

void PerformanceEngine::Download(platform::SegmentId seg) {
    // Loading the bank here keeps the wait out of the press of Play.
    SegmentSlot& s = slot(seg);
    useBank(s.collection ? collections_[s.collection] : defaultBank_);
    queueLoudness(seg);
}

void PerformanceEngine::Unload(platform::SegmentId seg) { slot(seg); }

void PerformanceEngine::ConnectToCollection(platform::SegmentId seg, platform::CollectionId coll) {
    if (!collections_.count(coll)) throw VbError(VbErr::InvalidCall, "no such collection");
    slot(seg).collection = coll;
}

int32_t PerformanceEngine::GetSeek(platform::SegmentStateId) {
    return static_cast<int32_t>(std::floor(player_.seekTicks()));
}

}  // namespace velaro::engine
