#include "performance_engine.h"

#include <chrono>
#include <cmath>
#include <thread>

#include "core/base/paths.h"
#include "core/base/vb_error.h"
#include "synth.h"

namespace velaro::engine {

PerformanceEngine::PerformanceEngine(AudioEngine& engine, int polyphony)
    : engine_(engine), player_(engine.sampleRate()), polyphony_(polyphony), defaultBank_(Synth::defaultBankPath()) {
    engine_.addSource(&player_);
}

PerformanceEngine::~PerformanceEngine() {
    // The engine calls the player from its own thread: stop that first.
    engine_.stopDevice();
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
    segments_[id].segment = std::move(seg);
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
    player_.sendMidi(channel, status, b1, b2);
}

void PerformanceEngine::SendPatchPMSG(int64_t, int, int channel, int program, int, int) {
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
