#pragma once
// The main form's mixer panel: the recording input list, the machine's
// mixer (master, record source and level, the microphone and audio lines)
// and the two buttons that start the machine's own volume program.

#include <string>

#include "../ui/control.h"

namespace velaro::song {

class frmMain;

struct MixerPanel {
    explicit MixerPanel(frmMain& form);
    ~MixerPanel();
    MixerPanel(const MixerPanel&) = delete;
    MixerPanel& operator=(const MixerPanel&) = delete;

    frmMain& f;
    ui::Frame mixerFrame;
    ui::ComboBox cmbSoundDriver;  // the level meter's capture devices, filled by the meter
    ui::CommandButton Cominput;
    ui::CommandButton Comout;
    // The text of the mixer's last error, until the source list has shown it.
    std::string mixerErrorText;

    void cmbInput_Click();
    void chooseInput();
    void sldInputLevel_Change();
    void Sldmastervolume_Change();
    void SLDPLAYVOLUME_Change();
    void Slider4_Change();
    void CHKPLAYMUTE_Click();
    void cboRecSrcType_Click();
    void inputRec_Click();
    void inputmenu_Click();
    void Cominput_Click();
    void Comout_Click();
    void VRMixer1_Error(const std::string& text);
    void VRMixer1_MuteChange(bool muted);

    // The full path of `program` on PATH, "" when it is not installed.
    static std::string onPath(const std::string& program);

private:
    // pavucontrol on the tab given, else alsamixer in a terminal, else a box.
    void launchVolumeProgram(const char* pavucontrolTab);
    bool inErrorEvent_ = false;
};

}  // namespace velaro::song
