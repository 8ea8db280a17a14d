#include "mixer_panel.h"

#include <unistd.h>

#include <cstdlib>

#include "../ui/dialogs.h"
#include "frm_main.h"

namespace velaro::song {

namespace {
const char* const kFrameCaption = " Micro     Midi      Audio     Rec     Master";
constexpr int kLastSourceRow = 9;  // "9 - Analog", where a mixer error leaves the source
}  // namespace

MixerPanel::MixerPanel(frmMain& form)
    : f(form),
      mixerFrame(&form, "mixerFrame"),
      cmbSoundDriver(&form, "cmbSoundDriver"),
      Cominput(&form, "Cominput"),
      Comout(&form, "Comout") {
    mixerFrame.setCaption(kFrameCaption);
    f.sldInputLevel.toolTipText = "Record Level";
    f.Sldmastervolume.toolTipText = "Volume Output";
    f.SLDPLAYVOLUME.toolTipText = "Micro Level";
    f.Slider4.toolTipText = "Audio Level";
    f.Slider1.toolTipText = "Midi Level";
    f.CHKPLAYMUTE.toolTipText = "Mute Micro";
    f.sldInputLevel.setValue(20);  // the design value, before the slider acts on the mixer
    Cominput.setCaption("Input Control");
    Comout.setCaption("Output Control");
    // The two lists come up from the Settings menu and go away with a choice.
    f.cmbInput.setVisible(false);
    cmbSoundDriver.setVisible(false);

    f.cmbInput.Click = [this] { cmbInput_Click(); };
    f.chooseInput = [this] { chooseInput(); };
    f.sldInputLevel.Change = [this] { sldInputLevel_Change(); };
    f.Sldmastervolume.Change = [this] { Sldmastervolume_Change(); };
    f.SLDPLAYVOLUME.Change = [this] { SLDPLAYVOLUME_Change(); };
    f.Slider4.Change = [this] { Slider4_Change(); };
    f.CHKPLAYMUTE.Click = [this] { CHKPLAYMUTE_Click(); };
    f.cboRecSrcType.Click = [this] { cboRecSrcType_Click(); };
    f.inputRec.Click = [this] { inputRec_Click(); };
    f.inputmenu.Click = [this] { inputmenu_Click(); };
    cmbSoundDriver.Click = [this] { cmbSoundDriver.setVisible(false); };
    Cominput.Click = [this] { Cominput_Click(); };
    Comout.Click = [this] { Comout_Click(); };
    if (platform::SystemMixer* m = f.platform.mixer) {
        m->Error = [this](const std::string& text) { VRMixer1_Error(text); };
        m->MuteChange = [this](bool muted) { VRMixer1_MuteChange(muted); };
    }
}

MixerPanel::~MixerPanel() {
    // The mixer outlives the form: it must not call into a panel that is gone.
    if (platform::SystemMixer* m = f.platform.mixer) {
        m->Error = nullptr;
        m->MuteChange = nullptr;
    }
}

void MixerPanel::cmbInput_Click() {
    f.chosenInput = f.cmbInput.listIndex();
    chooseInput();
    f.cmbInput.setVisible(false);
}

void MixerPanel::chooseInput() {
    // A saved input the machine no longer has acts on an empty row: nothing is chosen.
    const std::string name = f.cmbInput.list(f.chosenInput);
    if (f.chosenInput < 0 || f.chosenInput >= f.cmbInput.listCount()) return;
    f.platform.streams->SelectRecordInput(f.chosenInput);
    // The input becomes the machine's record source, so the level slider acts on it.
    platform::SystemMixer& m = *f.platform.mixer;
    const std::vector<std::string> sources = m.RecordSources();
    for (size_t i = 0; i < sources.size(); ++i)
        if (sources[i] == name) {
            m.SetRecordSource(static_cast<int>(i));
            break;
        }
}

void MixerPanel::sldInputLevel_Change() {
    f.inputLevelStored = 100 - f.sldInputLevel.value();
    f.platform.mixer->SetRecordVolume(f.inputLevelStored);
}

void MixerPanel::Sldmastervolume_Change() { f.platform.mixer->SetMasterVolume(100 - f.Sldmastervolume.value()); }

void MixerPanel::SLDPLAYVOLUME_Change() {
    f.platform.mixer->SetSelectedLine(platform::SystemMixer::kMicLine);
    f.platform.mixer->SetLineVolume(100 - f.SLDPLAYVOLUME.value());
}

void MixerPanel::Slider4_Change() {
    // A song plays through the synthesiser: the audio line has nothing to do.
    if (f.midiMode) return;
    f.platform.mixer->SetSelectedLine(platform::SystemMixer::kAudioLine);
    f.platform.mixer->SetLineVolume(100 - f.Slider4.value());
}

void MixerPanel::CHKPLAYMUTE_Click() {
    f.platform.mixer->SetSelectedLine(platform::SystemMixer::kMicLine);
    f.platform.mixer->SetLineMute(f.CHKPLAYMUTE.value() != 0);
}

void MixerPanel::cboRecSrcType_Click() {
    platform::SystemMixer& m = *f.platform.mixer;
    const int row = f.cboRecSrcType.listIndex();
    m.SetRecordSource(row);
    const int kept = m.RecordSource();
    if (kept != row) {
        // The card refused: the list shows what it kept.
        if (kept >= -1 && kept < f.cboRecSrcType.listCount()) f.cboRecSrcType.setListIndex(kept);
        f.cboRecSrcType.setVisible(false);
        return;
    }
    f.sldInputLevel.setValue(100 - m.RecordVolume());
    m.SetRecordSource(row);
    if (!mixerErrorText.empty()) {
        f.rt.dialogs.msgBox(mixerErrorText, ui::vbOKOnly, "Input Recording ");
        f.cboRecSrcType.setVisible(false);
    }
    mixerErrorText.clear();
    f.cboRecSrcType.setVisible(false);
}

void MixerPanel::VRMixer1_Error(const std::string& text) {
    mixerErrorText = text;
    // Falling back to the last source may fail too: that failure is not told twice.
    if (inErrorEvent_) return;
    inErrorEvent_ = true;
    f.platform.mixer->SetRecordSource(kLastSourceRow);
    f.rt.dialogs.msgBox(text, ui::vbExclamation, "No Line Record");
    inErrorEvent_ = false;
}

void MixerPanel::VRMixer1_MuteChange(bool muted) { f.CHKPLAYMUTE.setValue(muted ? 1 : 0); }

void MixerPanel::inputRec_Click() { f.cmbInput.setVisible(true); }

void MixerPanel::inputmenu_Click() { cmbSoundDriver.setVisible(true); }

void MixerPanel::Cominput_Click() { launchVolumeProgram("4"); }

void MixerPanel::Comout_Click() { launchVolumeProgram("3"); }

std::string MixerPanel::onPath(const std::string& program) {
    const char* env = std::getenv("PATH");
    const std::string path = env ? env : "/usr/bin:/bin";
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find(':', start);
        if (end == std::string::npos) end = path.size();
        const std::string dir = path.substr(start, end - start);
        if (!dir.empty()) {
            const std::string full = dir + "/" + program;
            if (access(full.c_str(), X_OK) == 0) return full;
        }
        start = end + 1;
    }
    return {};
}

void MixerPanel::launchVolumeProgram(const char* pavucontrolTab) {
    platform::ProcessLauncher& p = *f.platform.processes;
    std::string program = onPath("pavucontrol");
    std::vector<std::string> args = {"-t", pavucontrolTab};
    if (program.empty()) {
        program = onPath("x-terminal-emulator");
        args = {"-e", "alsamixer"};
        if (program.empty() || onPath("alsamixer").empty()) {
            f.rt.dialogs.msgBox("Neither pavucontrol nor alsamixer is installed.", ui::vbExclamation, "VELARO DECK");
            return;
        }
    }
    // Not waited for: a shell starts it in the background and ends at once, so
    // the volume program outlives nothing of ours and leaves no zombie behind.
    std::vector<std::string> shell = {"-c", "\"$0\" \"$@\" </dev/null >/dev/null 2>&1 &", program};
    shell.insert(shell.end(), args.begin(), args.end());
    const int handle = p.Start("/bin/sh", shell);
    if (handle < 0) {
        f.rt.dialogs.msgBox(program + " could not be started.", ui::vbExclamation, "VELARO DECK");
        return;
    }
    p.Wait(handle);
}

}  // namespace velaro::song
