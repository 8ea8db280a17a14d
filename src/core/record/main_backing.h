#pragma once
// The main form's backing player: an audio file plays twice at once,
// `mainStream` through the vocal cut and its equaliser, `lowStream` filtered
// to a low-pass so the bass the cut takes away comes back in. Also the key
// and speed of the backing, both streams alike.

#include <cstdint>

#include "../platform/audio_streams.h"
#include "../ui/control.h"
#include "../ui/control_array.h"

namespace velaro::song {
class frmMain;
}

namespace velaro::record {

// Equaliser centres in Hz, band 0 to 7, and the controls' design values.
inline constexpr float kMainCentres[8] = {40, 100, 400, 1500, 4000, 8000, 12000, 16000};
inline constexpr float kLowCentres[8] = {40, 100, 200, 1500, 3000, 4000, 5000, 8000};
inline constexpr int kVseqDesign[8] = {0, 4, 4, 10, 10, 10, 10, 3};
inline constexpr int kVeq1Design[8] = {0, 0, 9, 19, 19, 19, 19, 19};
inline constexpr float kEqBandwidth = 2.5f;

struct MainBacking {
    explicit MainBacking(song::frmMain& form);

    song::frmMain& f;
    ui::Label lblPlayer;  // the player label
    ui::CheckBox Chkrem, Chklow;
    ui::Frame Frame4;
    ui::ControlArray<ui::Slider> vseq;       // mainStream's bands, 0 (+10 dB) to 19 (-9 dB)
    ui::ControlArray<ui::ScrollBar> Veq1;    // lowStream's bands, the same scale
    ui::Slider Slider3;                      // "BassBooster": 10 silent, 0 full
    ui::Slider vcompr;                       // "Gain Audio"
    ui::Slider sldKey;                       // semitones, -12 to 12
    ui::Slider sldSpeed;                     // percent, 50 to 150

    platform::StreamId mainStream = 0, lowStream = 0;
    uint32_t vocalCutDsp = 0;
    uint32_t streamFlags = 0;
    float sampleRate = 44100;

    // Runs on the audio thread: left and right become (right - left) / 2,
    // so whatever sits in the centre cancels. Touches only its arguments.
    static void VocalCutCallback(uint32_t handle, uint32_t channel, void* buffer, uint32_t length, void* user);

    void VocalRemove();
    void StopRemover();
    void equalizzatore();
    void equal1();
    void Default();
    void Chkrem_Click();
    void Chklow_Click();
    void vseq_Change(int band);
    void Veq1_Change(int band);
    void Slider3_Change();
    void vcompr_Change();
    // Key or speed moved: both streams follow.
    void shift_Change();

private:
    platform::AudioStreams& streams();
    void installBands(platform::StreamId s, const float* centres);
    void setBandGain(platform::StreamId s, int band, int value);
};

}  // namespace velaro::record
