#pragma once
// The main form's recording part: the take over a song, over an audio
// backing or alone (the digital recorder), its stop and playback buttons,
// the take format list and the recording lamp.

#include <functional>
#include <memory>
#include <string>

#include "wave_player.h"

namespace velaro::song {
class frmMain;
}

namespace velaro::record {

// A row of the take format list: what it sets, or nothing for row 0.
struct TakeFormat {
    const char* text;
    int32_t rate;  // 0: the row changes nothing
    int16_t channels;
    uint8_t bits;
    int32_t itemData;
};
extern const TakeFormat kTakeFormats[12];

struct MainRecording {
    explicit MainRecording(song::frmMain& form);
    ~MainRecording();

    song::frmMain& f;
    // The take's device, from the start of a take to its end.
    std::unique_ptr<WavePlayer> wave;

    // What the backing player (a part of its own, still to come) does here.
    std::function<void()> VocalRemove;  // starts the audio backing
    std::function<void()> StopRemover;  // stops it

    // The take as the device saves it; one spelling, for a file system that tells case apart.
    std::string takePath() const;

    void cmdrec_Click();
    void mp3rec();
    // `keptCopy`: the take is in the application folder to copy from.
    void savemicro(bool keptCopy = true);
    void cmdstop_Click();
    void mp3stop();
    void cmdplaystop_Click();
    void Cmdplw_Click();
    void cmdstw_Click();
    void mnwave_Click();
    void cmbQuality_Click();
    void Timer2_Timer();
    void Timer3_Timer();
    void Timer4_Timer();

private:
    bool backingIsAudio() const;
    // The steps every take shares once its backing has started: record, save, review, name.
    void runTake(bool audioSession);
    void call(const std::function<void()>& hook) {
        if (hook) hook();
    }
};

}  // namespace velaro::record
