#pragma once
// FluidSynth as the engine's synthesiser: it renders into the engine's
// buffers (no FluidSynth audio driver). Made and loaded on the logic thread;
// once handed to the audio thread only that thread touches it.

#include <memory>
#include <string>

struct _fluid_synth_t;
struct _fluid_hashtable_t;

namespace velaro::engine {

class Synth {
public:
    // Thread: logic. Throws std::runtime_error naming the failing call.
    Synth(int sampleRate, int polyphony = 256);
    ~Synth();
    Synth(const Synth&) = delete;
    Synth& operator=(const Synth&) = delete;

    // Loads an SF2, SF3 or DLS bank; returns false when the file is no bank. Thread: logic.
    bool loadBank(const std::string& path);
    bool hasBank() const { return banks_ > 0; }

    // Thread: audio (or logic before the synth is handed over).
    void noteOn(int ch, int key, int vel) noexcept;
    void noteOff(int ch, int key) noexcept;
    void controlChange(int ch, int cc, int value) noexcept;
    void programChange(int ch, int program) noexcept;
    void pitchBend(int ch, int value14) noexcept;
    void channelPressure(int ch, int value) noexcept;
    void keyPressure(int ch, int key, int value) noexcept;
    void allNotesOff() noexcept;
    void allSoundsOff() noexcept;
    // Back to the state after loading: voices, programs and controllers of every channel.
    void reset() noexcept;
    // Writes `frames` of stereo sound into left/right (not interleaved).
    void render(float* left, float* right, int frames) noexcept;

    // The bank used when the user named none: sound01.dls in the application
    // folder when present, else the system's General MIDI bank.
    static std::string defaultBankPath();

private:
    struct SettingsDeleter {
        void operator()(_fluid_hashtable_t* s) const;
    };
    struct SynthDeleter {
        void operator()(_fluid_synth_t* s) const;
    };
    std::unique_ptr<_fluid_hashtable_t, SettingsDeleter> settings_;
    std::unique_ptr<_fluid_synth_t, SynthDeleter> synth_;
    int banks_ = 0;
};

}  // namespace velaro::engine
