#include "synth.h"

#include <fluidsynth.h>

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "core/base/paths.h"

namespace velaro::engine {

void Synth::SettingsDeleter::operator()(_fluid_hashtable_t* s) const { delete_fluid_settings(s); }
void Synth::SynthDeleter::operator()(_fluid_synth_t* s) const { delete_fluid_synth(s); }

namespace {
// Synthesisers are made and banks loaded on the logic thread and on the
// loudness worker; FluidSynth's one-time set-up and its loaders are not
// promised to be safe side by side, so they take turns.
std::mutex& loadMutex() {
    static std::mutex m;
    return m;
}

void quietLogs() {
    static bool done = false;
    if (done) return;
    done = true;
    for (int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO, FLUID_DBG})
        fluid_set_log_function(level, nullptr, nullptr);
}
}  // namespace

Synth::Synth(int sampleRate, int polyphony) {
    std::lock_guard<std::mutex> lock(loadMutex());
    quietLogs();
    settings_.reset(new_fluid_settings());
    if (!settings_) throw std::runtime_error("new_fluid_settings failed");
    fluid_settings_setnum(settings_.get(), "synth.sample-rate", sampleRate);
    fluid_settings_setint(settings_.get(), "synth.polyphony", polyphony);
    // Only one thread at a time ever calls it, so its own lock is not needed
    // and must not be taken on the audio thread.
    fluid_settings_setint(settings_.get(), "synth.threadsafe-api", 0);
    // One core: the library's parallel rendering would start a thread team
    // (allocating) from inside the audio callback.
    fluid_settings_setint(settings_.get(), "synth.cpu-cores", 1);
    // The synthesiser's own resting gain: the song's level is set after a
    // measurement of its loudness, and the master bus has a limiter.
    fluid_settings_setnum(settings_.get(), "synth.gain", 0.2);
    synth_.reset(new_fluid_synth(settings_.get()));
    if (!synth_) throw std::runtime_error("new_fluid_synth failed");
}

Synth::~Synth() {
    std::lock_guard<std::mutex> lock(loadMutex());
    synth_.reset();
    settings_.reset();
}

bool Synth::loadBank(const std::string& path) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) return false;
    std::lock_guard<std::mutex> lock(loadMutex());
    if (fluid_synth_sfload(synth_.get(), path.c_str(), 1) == FLUID_FAILED) return false;
    ++banks_;
    return true;
}

void Synth::noteOn(int ch, int key, int vel) noexcept { fluid_synth_noteon(synth_.get(), ch, key, vel); }
void Synth::noteOff(int ch, int key) noexcept { fluid_synth_noteoff(synth_.get(), ch, key); }
void Synth::controlChange(int ch, int cc, int v) noexcept { fluid_synth_cc(synth_.get(), ch, cc, v); }
void Synth::programChange(int ch, int p) noexcept { fluid_synth_program_change(synth_.get(), ch, p); }
void Synth::pitchBend(int ch, int v) noexcept { fluid_synth_pitch_bend(synth_.get(), ch, v); }
void Synth::channelPressure(int ch, int v) noexcept { fluid_synth_channel_pressure(synth_.get(), ch, v); }
void Synth::keyPressure(int ch, int key, int v) noexcept { fluid_synth_key_pressure(synth_.get(), ch, key, v); }
void Synth::allNotesOff() noexcept { fluid_synth_all_notes_off(synth_.get(), -1); }
void Synth::allSoundsOff() noexcept { fluid_synth_all_sounds_off(synth_.get(), -1); }
void Synth::reset() noexcept { fluid_synth_system_reset(synth_.get()); }

void Synth::render(float* left, float* right, int frames) noexcept {
    fluid_synth_write_float(synth_.get(), frames, left, 0, 1, right, 0, 1);
}

std::string Synth::defaultBankPath() {
    namespace fs = std::filesystem;
    std::error_code ec;
    const std::string own = RPP(applicationFolder()) + "sound01.dls";
    if (fs::is_regular_file(own, ec)) return own;
    const fs::path dir = "/usr/share/sounds/sf2";
    if (fs::exists(dir / "default-GM.sf2", ec)) return (dir / "default-GM.sf2").string();
    std::vector<std::string> found;
    for (const auto& e : fs::directory_iterator(dir, ec)) {
        const std::string ext = e.path().extension().string();
        if (ext == ".sf2" || ext == ".sf3") found.push_back(e.path().string());
    }
    std::sort(found.begin(), found.end());
    return found.empty() ? std::string() : found.front();
}

}  // namespace velaro::engine
