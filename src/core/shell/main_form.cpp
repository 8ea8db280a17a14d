// The main form from start to end: the start sequence, config.vlr, the
// modes its menus switch, the toggles, and the two ways out.

#include <filesystem>

#include "../base/paths.h"
#include "../base/vb_error.h"
#include "frm_main.h"
#include "config_vlr.h"

namespace velaro::song {

namespace {


constexpr int kInputOff = 0x10000;
constexpr int kFileMustExist = 0x1000;
const char* const kWindowTitle =
    "     " " VELARO DECK - Karaoke Recorder  MP3Karaoke Editor   V. 1.0    Velaro Multimedia";

}  // namespace

std::string frmMain::configPath() const { return RPP(applicationFolder()) + "config.vlr"; }

std::string frmMain::tempPatchFile() const { return RPP(tempFolder()) + "filetemp.tmp"; }

void frmMain::end(int code) {
    ended = true;
    endCode = code;
    if (endProgram) endProgram(code);
}

void frmMain::BASSDLL() {
    backing.Chkrem.setVisible(false);
    backing.Frame4.setVisible(false);
    backing.vseq.forEach([](ui::Slider& s) { s.setVisible(false); });
    std::error_code ec;
    std::filesystem::current_path(applicationFolder(), ec);
    auto& bass = *platform.streams;
    if (bass.GetVersion() != platform::kStreamsVersion) {
        rt.dialogs.msgBox("BASS version 2.1 was not loaded", ui::vbCritical, "Incorrect BASS.DLL");
        end(1);
        return;
    }
    if (!bass.RecordInit(0) || !bass.Init(1, 44100)) {
        end(1);  // no audio: the program ends without a word
        return;
    }
    // The last input that is not switched off wins.
    chosenInput = -1;
    const std::vector<std::string> inputs = bass.RecordInputs();
    for (size_t i = 0; i < inputs.size(); ++i) {
        cmbInput.addItem(inputs[i]);
        if (bass.RecordInputEnabled(static_cast<int>(i))) {
            resumeNext([&] { cmbInput.setListIndex(static_cast<int>(i)); });
            chosenInput = static_cast<int32_t>(i);
        }
    }
}

// The form's fields as the file's record, and back.
static shell::ConfigVlr configOf(const frmMain& f) {
    return {f.configMark,         f.chosenInput,  f.colorUnsung,     f.colorSung,   f.fontSize,     f.fontName,
            f.normalizePercent,   f.normalizeAfterSave, f.meterEnabled, f.programChangeOn, f.soundBankOn,
            f.meterDeviceId};
}

void frmMain::confload() {
    shell::ConfigVlr c = configOf(*this);
    resumeNext([&] { shell::readConfig(readWholeFile(configPath()), c); });
    configMark = c.configMark;
    chosenInput = c.chosenInput;
    colorUnsung = c.colorUnsung;
    colorSung = c.colorSung;
    fontSize = c.fontSize;
    fontName = c.fontName;
    normalizePercent = c.normalizePercent;
    normalizeAfterSave = c.normalizeAfterSave;
    meterEnabled = c.meterEnabled;
    programChangeOn = c.programChangeOn;
    soundBankOn = c.soundBankOn;
    meterDeviceId = c.meterDeviceId;
}

void frmMain::confsave() { writeWholeFile(configPath(), shell::writeConfig(configOf(*this))); }

void frmMain::SaveC_Click() {
    try {
        confsave();
    } catch (const std::exception& e) {
        reportWriteFailure(e);
    }
    rt.dialogs.msgBox("Done!", ui::vbQuestion, "VELARO DECK");
}

void frmMain::Form_Load() {
    // 1. Check2 keeps quiet while the form loads.
    loadingPatches = true;
    // 2.
    BASSDLL();
    if (ended) return;
    // 3, 4.
    const int32_t foundInput = chosenInput;
    confload();
    ui::Font font = Picture3.font();
    if (configMark == "OK") {
        resumeNext([&] { Check2.setValue(programChangeOn ? 1 : 0); });
        resumeNext([&] { call(chooseInput); });
        font.size = fontSize;
        if (fontName != " ") font.name = fontName;
        NormMnu.setChecked(normalizeAfterSave);
    } else {
        // Not ours: the default column, whatever was read.
        configMark.clear();
        chosenInput = foundInput;
        colorUnsung = 0x8080;
        colorSung = 0xFF8080;
        fontSize = 18;
        fontName = "tahoma";
        normalizePercent.clear();
        normalizeAfterSave = meterEnabled = programChangeOn = soundBankOn = false;
        meterDeviceId = 0;
        font.name = "tahoma";
        font.bold = true;
        font.italic = false;
        font.size = 18;
        lblInfo(0).setCaption("0");
    }
    Picture3.setFont(font);
    Picture3.canvas().font = font;
    // 5.
    if (soundBankOn) {
        loadSbank.setChecked(true);
        soundBankPath = RPP(applicationFolder()) + "sound01.dls";
    }
    // 6.
    resumeNext([&] { call(Vmeter); });
    // 7. The compressor is in the effect chain from the first moment.
    Mecompr.setChecked(true);
    ++effectCount;
    lstuse.addItem(" ");
    // 8.
    caption = kWindowTitle;
    // 9.
    Meff.setEnabled(false);
    resumeNext([&] { Initialize(); });
    resumeNext([&] { ZeroVariables(); });
    LoadPatches();
    resumeNext([&] { Check3.setValue(1); });
    deviceOpen = false;
    // 10.
    for (int i = 0; i < 16; ++i) {
        resumeNext([&] { Check1(i).setValue(0); });
        Slider2(i).setEnabled(false);
        Check1(i).setVisible(false);
        Option1(i).setVisible(false);
    }
    // 11.
    if (cmbQuality.listCount() > 0) cmbQuality.setListIndex(0);
    calibrationFactor = 2.5;

    // 12-15, under the start's own handler.
    auto guarded = [&](auto&& step) {
        try {
            step();
        } catch (const VbError& e) {
            if (e.code() == VbErr::InvalidPropertyValue) {
                resumeNext([&] { platform.mixer->SetRecordSource(0); });  // the mixer has no such source: go on
                return true;
            }
            rt.dialogs.msgBox("Unanticipated error number" + std::to_string(int(e.code())) + " occurred: " + e.what(),
                              ui::vbCritical, "VELARO DECK");
            end(1);
            return false;
        } catch (const std::exception& e) {
            rt.dialogs.msgBox(std::string("Unanticipated error number") + "0" + " occurred: " + e.what(),
                              ui::vbCritical, "VELARO DECK");
            end(1);
            return false;
        }
        return true;
    };
    const std::function<void()> steps[] = {
        [&] { vslidertempo.setValue(64); },
        [&] {
            cboRecSrcType.clear();
            for (const char* t : {"0 - Undefined", "1 - Line", "2 - Mic", "3 - Wave", "4 - MIDI", "5 - CD",
                                  "6 - Phone", "7 - Aux", "8 - Digital", "9 - Analog"})
                cboRecSrcType.addItem(t);
        },
        [&] {
            Timer2.setEnabled(false);
            Timer3.setEnabled(false);
            Picture2.setBackColor(0xFFFFFF);
            encoderProgressGuard = true;
            encoderProgressGuard = false;
        },
        [&] { Slider1.setValue(75); },
        [&] { Slider4.setValue(50); },
        [&] { Sldmastervolume.setValue(100 - platform.mixer->MasterVolume()); },
        [&] {
            sldInputLevel.setRange(0, 100);
            SLDPLAYVOLUME.setRange(0, 100);
        },
        [&] { CHKPLAYMUTE.setValue(1); },
        [&] { platform.mixer->SetLineMute(true); },
        [&] { SLDPLAYVOLUME.setValue(100 - platform.mixer->LineVolume()); },
        [&] { sldInputLevel.setValue(100 - inputLevelStored); },
        [&] {
            keepSongModel = stopRequested = songRunning = recordStopFlag = false;
            cmdplaystop.setEnabled(false);
            encstop.setEnabled(false);
            digitalRecorderMode = false;
            recordRate = 44100;
            recordChannels = 2;
            recordBits = 16;
            mp3BitRate = 192000;
        },
    };
    for (const auto& step : steps)
        if (!guarded(step)) return;
    loadingPatches = false;
}

void frmMain::unloadOthers() { rt.forms.unloadOthers(*this); }

void frmMain::dismenu() {
    for (ui::Menu* m : {&MnuFile, &mnutil, &cvmenu, &Meff}) m->setEnabled(false);
}

void frmMain::enamenu() {
    for (ui::Menu* m : {&MnuFile, &mnutil, &cvmenu, &Meff}) m->setEnabled(true);
}

void frmMain::dmenu() {
    MnuOpenSong.setEnabled(false);
    mnew.setEnabled(false);
}

void frmMain::abilita() {
    Timer3.setEnabled(false);
    Picture2.setBackColor(0x4040);
    cmdSave.setEnabled(false);
    Cmd_Play.setEnabled(false);
    Cmd_Stop.setEnabled(false);
    recordStopFlag = false;
    resumeNext([&] { deleteFile(RPP(applicationFolder()) + "newwave.wav"); });
    cmdrec.setEnabled(true);
}

void frmMain::Error_(const std::string& text) {
    rt.dialogs.msgBox(text + "\r\n\r\nBASS Error Code: " + std::to_string(platform.streams->ErrorGetCode()) +
                          "\r\nBASS_FX Error Code: ",
                      ui::vbOKOnly, "Error");
}

void frmMain::clearChannelRows() {
    for (int c = 0; c < 16; ++c) {
        resumeNext([&] { Check1(c).setValue(0); });
        Check1(c).setEnabled(false);
        resumeNext([&] { Slider2(c).setValue(0); });
        Slider2(c).setEnabled(false);
        Option1(c).setEnabled(false);
        Label3(c).setCaption("");
    }
}

void frmMain::menuwave_Click() {
    midiMode = false;
    audioFileMode = true;
    noSongMode = false;
    for (ui::Label* l : {&lblM, &lblS, &Label5, &lblTime, &LabelSongLength}) l->setCaption("");
    for (ui::Control* c : std::initializer_list<ui::Control*>{&SaveSyncro, &SaveT, &Command4, &Command5, &Command6,
                                                             &cmdSave, &Cmd_Play, &cmdrec})
        c->setEnabled(false);
    Picture4.setVisible(false);
    backing.Chkrem.setVisible(true);
    clearChannelRows();
    CMDialog1.FileName.clear();
    Frame8.setCaption("     Audio          Player     ");
    resumeNext([&] { Picture3.canvas().cls(); });
    unloadOthers();

    CMDialog1.DefaultExt = ".mpl";
    CMDialog1.Filter = "MP3 Audio (*.mp3)|*.MP3|Wave Files (*.wav)|*.WAV";
    CMDialog1.InitDir = homeFolder();
    CMDialog1.Flags = 2;
    CMDialog1.CancelError = true;
    try {
        CMDialog1.ShowOpen();
    } catch (const std::exception&) {
        backing.Chkrem.setVisible(false);
        return;
    }
    cmdstw.setVisible(true);
    Cmdplw.setVisible(true);
    cmdstw.setEnabled(false);
    cmdrec.setEnabled(true);
    Cmdplw.setEnabled(true);
    Cmd_Play.setEnabled(false);
    LabelSongLength.setCaption(songPath());
    dismenu();
}

void frmMain::PlayAudio() {
    midiMode = false;
    audioFileMode = true;
    noSongMode = false;
    clearChannelRows();
    Frame8.setCaption("  Audio Player   ");
    resumeNext([&] { Picture3.canvas().cls(); });
    unloadOthers();
    cmdstw.setVisible(true);
    Cmdplw.setVisible(true);
    cmdstw.setEnabled(false);
    cmdrec.setEnabled(true);
    Cmdplw.setEnabled(true);
    Cmd_Play.setEnabled(false);
    dismenu();
}

void frmMain::MnuMp3_Click() {
    dismenu();
    midiMode = false;
    audioFileMode = true;
    noSongMode = false;
    unloadOthers();
    Picture4.setVisible(false);
    for (ui::Control* c : std::initializer_list<ui::Control*>{&Command4, &Command5, &Command6, &cmdrec, &Cmd_Play,
                                                             &CmdPause, &cmdplaystop, &Cmdplw, &cmdstw, &Meff,
                                                             &Cmd_Stop, &cmdSave})
        c->setEnabled(false);
    clearChannelRows();
    backing.Chkrem.setVisible(false);
    backing.Frame4.setVisible(false);
    backing.vseq.forEach([](ui::Slider& s) { s.setVisible(false); });
    for (ui::Label* l : {&Label5, &lblTime, &LabelSongLength, &lblM, &lblS}) l->setCaption("");
    resumeNext([&] { Picture3.canvas().cls(); });
    call(showTags);
}

void frmMain::mnew_Click() {
    noSongMode = true;
    digitalRecorderMode = true;
    SaveSyncro.setEnabled(false);
    SaveT.setEnabled(false);
    MnuFile.setEnabled(false);
    for (ui::Label* l : {&lblM, &lblS, &Label5, &lblTime, &LabelSongLength}) l->setCaption("");
    for (ui::Control* c :
         std::initializer_list<ui::Control*>{&Cmdplw, &cmdstw, &Picture4, &backing.Chkrem, &backing.Frame4})
        c->setVisible(false);
    backing.vseq.forEach([](ui::Slider& s) { s.setVisible(false); });
    Command4.setEnabled(false);
    Command5.setEnabled(false);
    Command6.setEnabled(false);
    unloadOthers();
    CMDialog1.FileName.clear();
    Timer3.setEnabled(false);
    Picture2.setBackColor(0x4040);
    cmdSave.setEnabled(false);
    Cmd_Play.setEnabled(false);
    Cmd_Stop.setEnabled(false);
    recordStopFlag = false;
    resumeNext([&] { HScroll3.setValue(0); });
    resumeNext([&] { deleteFile(RPP(applicationFolder()) + "newwave.wav"); });
    cmdrec.setEnabled(true);
}

void frmMain::cdRipper_Click() {
    midiMode = false;
    noSongMode = false;
    audioFileMode = true;
    clearChannelRows();
    unloadOthers();
    usingRippedTrack = true;
    cmdSave.setEnabled(false);
    backing.Chkrem.setVisible(false);
    call(showCdRipper);
    // Opening the track file makes it when it is missing, as a binary open did.
    int64_t length = 0;
    resumeNext([&] {
        const std::string track = RPP(applicationFolder()) + "TRACK.WAV";
        if (!fileExists(track)) writeWholeFile(track, "");
        length = fileLength(track);
    });
    if (!CdWaveLoaded) backing.Chkrem.setVisible(false);
    if (length == 0) usingRippedTrack = false;
}

void frmMain::dlsbank_Click() {
    if (songRunning || recordingActive) return;
    Cmd_Play.setEnabled(false);
    cmdrec.setEnabled(false);
    if (recordStopFlag || songStoppedFlag) Cmd_Stop.setEnabled(false);
    CMDialog1.DialogTitle = "Load Sound Bank";
    CMDialog1.Filter = "DLS (*.DLS)|*.dls";
    CMDialog1.InitDir = applicationFolder();
    CMDialog1.CancelError = true;
    CMDialog1.Flags = kFileMustExist;
    try {
        CMDialog1.ShowOpen();
    } catch (const std::exception&) {
        mousePointer = ui::kPointerDefault;
        return;
    }
    soundBankPath = CMDialog1.FileName;
    auto& perf = *platform.performance;
    resumeNext([&] { dmCollection = perf.LoadCollection(soundBankPath); });
    resumeNext([&] { perf.ConnectToCollection(dmSegment, dmCollection); });
    soundBankOn = true;
    loadSbank.setEnabled(true);
    loadSbank.setChecked(true);
}

void frmMain::NormMnu_Click() {
    normalizeAfterSave = !normalizeAfterSave;
    NormMnu.setChecked(normalizeAfterSave);
    rt.dialogs.msgBox(normalizeAfterSave ? "Normalize Enabled" : "Normalize Disabled", ui::vbOKOnly, "Velaro Deck");
}

void frmMain::loadSbank_Click() {
    soundBankOn = !soundBankOn;
    loadSbank.setChecked(soundBankOn);
    if (soundBankOn) {
        rt.dialogs.msgBox("SoundBank Enabled", ui::vbOKOnly, "Velaro Deck");
    } else {
        rt.dialogs.msgBox("SounBank Disabled", ui::vbOKOnly, "Velaro Deck");
        loadSbank.setEnabled(false);  // a one-way door until the next start or a bank is loaded
    }
}

void frmMain::MnuMeter_Click() {
    meterEnabled = !meterEnabled;
    MnuMeter.setChecked(meterEnabled);
    if (meterEnabled) {
        rt.dialogs.msgBox("VUMeter Enabled", ui::vbOKOnly, "Velaro Deck");
        call(meterStart);
    } else {
        rt.dialogs.msgBox("VUMeter Disabled", ui::vbOKOnly, "Velaro Deck");
        call(meterStop);
        MnuMeter.setEnabled(false);
    }
}

void frmMain::mnuExit_Click() {
    if (rt.dialogs.msgBox("Exit ?", ui::vbYesNo | ui::vbInformation, "Velaro Deck") == ui::vbNo) return;
    try {
        confsave();
    } catch (const std::exception& e) {
        reportWriteFailure(e);
    }
    resumeNext([&] { platform.streams->Free(); });
    Timer1.setEnabled(false);
    unloadOthers();
    auto& perf = *platform.performance;
    resumeNext([&] { perf.StopEx(perf.GetDefaultAudioPath(), 0, 0); });
    resumeNext([&] { perf.CloseDown(); });
    resumeNext([&] { deleteFile(tempPatchFile()); });
    resumeNext([&] { call(meterStop); });
    end(0);
}

void frmMain::Form_QueryUnload(int&) {
    if (ended) return;  // leaving by Exit has done all this already
    // The close box neither asks nor saves.
    unloadOthers();
    Timer1.setEnabled(false);
    auto& perf = *platform.performance;
    if (deviceOpen) {
        resumeNext([&] { perf.StopEx(perf.GetDefaultAudioPath(), 0, 0); });
        resumeNext([&] { perf.CloseDown(); });
        resumeNext([&] { rt.loop.doEvents(); });
    } else {
        resumeNext([&] { deleteFile(tempPatchFile()); });
        resumeNext([&] { perf.CloseDown(); });
        resumeNext([&] { call(meterStop); });
    }
    end(0);
}

}  // namespace velaro::song
