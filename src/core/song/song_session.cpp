// From opening a song to the end of its playing: the open commands, the song
// dialog, preparing the song, and the three transport buttons. Nearly every
// step runs with errors ignored, each on its own.

#include "../base/byte_text.h"
#include "../base/paths.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../shell/frm_main.h"

namespace velaro::song {


void frmMain::MnuOpenSong_Click() { openCommon(true); }

void frmMain::OpenFile() { openCommon(false); }

void frmMain::openCommon(bool withDialog) {
    // 1. Song mode; the vocal remover belongs to the audio backing.
    midiMode = true;
    audioFileMode = false;
    noSongMode = false;
    Command4.setEnabled(true);
    Command5.setEnabled(true);
    Command6.setEnabled(true);
    backing.Chkrem.setVisible(false);
    backing.Frame4.setVisible(false);
    backing.vseq.forEach([](ui::Slider& s) { s.setVisible(false); });

    // 2. Empty the lyric and time displays.
    fullLyricText.clear();
    for (ui::Label* l : {&lblS, &lblM, &Label5, &lblTime}) l->setCaption("");
    tpsMinutes = 0;
    resumeNext([&] { Text2.setText(""); });
    resumeNext([&] { Picture3.canvas().cls(); });
    SaveSyncro.setEnabled(false);
    SaveT.setEnabled(false);
    Cmd_Play.setEnabled(false);
    cmdrec.setEnabled(false);
    cmdSave.setEnabled(false);
    Cmdplw.setVisible(false);
    cmdstw.setVisible(false);

    // 3. From here errors are ignored.
    resumeNext([&] { deleteFile(convertedPath); });
    // 4.
    resumeNext([&] { Frame8.setCaption("    Midi Player   "); });
    resumeNext([&] { lblInfo(0).setCaption("0"); });
    // 5.
    resumeNext([&] { platform.performance->CloseDown(); });
    perfReady = false;
    resumeNext([&] { Initialize(); });
    resumeNext([&] { ZeroVariables(); });
    // 6.
    noSongMode = false;
    deviceOpen = false;
    stopRequested = false;
    songStoppedFlag = false;
    recordStopFlag = false;
    keepSongModel = false;
    songRunning = false;
    // 7.
    if (withDialog) {
        resumeNext([&] { songDialog(); });
    } else {
        resumeNext([&] { dialogSuccessState(); });
    }
    // 8.
    resumeNext([&] { Check2.setEnabled(true); });
    resumeNext([&] { LabelSongLength.setCaption(songPath()); });
    for (int c = 0; c < 16; ++c) {
        resumeNext([&] { Slider2(c).setEnabled(false); });
        resumeNext([&] { Slider2(c).setValue(0); });
        resumeNext([&] { Check1(c).setEnabled(false); });
    }
    // 9. How the file keeps its lyrics.
    if (!songPath().empty()) {
        resumeNext([&] { SOLTON(); });
        const std::string ext = right(songPath(), 3);
        if ((ext == "mid" || ext == "MID") && !skipConversion) {
            resumeNext([&] { senzatesto(); });
            if (lyricRich) {
                resumeNext([&] { midkar(); });
                resumeNext([&] {
                    if (fileLength(convertedPath) > 0) setSongPath(convertedPath);
                });
            } else {
                resumeNext([&] { dmSegment = platform.performance->LoadSegment(songPath()); });
                return;
            }
        }
    }
    // 10.
    resumeNext([&] { dmSegment = platform.performance->LoadSegment(songPath()); });
}

void frmMain::dialogSuccessState() {
    resumeNext([&] { HScroll3.setValue(0); });
    Cmd_Play.setEnabled(true);
    cmdrec.setEnabled(true);
    Meff.setEnabled(true);
    dlsbank.setEnabled(false);
    HScroll3.setEnabled(true);
    vslidertempo.setEnabled(true);
    mousePointer = ui::kPointerDefault;
}

bool frmMain::songDialog() {
    resumeNext([&] { deleteFile(RPP(applicationFolder()) + "newwave.wav"); });
    mousePointer = ui::kPointerHourglass;
    CMDialog1.DialogTitle = "Open Song File";
    CMDialog1.Filter = "Kar File (*.kar)|*.kar|Mid File(*.mid)|*.mid";
    CMDialog1.FilterIndex = 1;
    CMDialog1.InitDir = homeFolder();  // the old drive root
    CMDialog1.CancelError = true;
    CMDialog1.FileName.clear();
    try {
        CMDialog1.ShowOpen();
    } catch (const std::exception&) {
        mousePointer = ui::kPointerDefault;
        return false;
    }
    dialogSuccessState();
    return true;
}

void frmMain::pLmenu_Click() {
    // The display is cleared as the open command clears it.
    fullLyricText.clear();
    for (ui::Label* l : {&lblS, &lblM, &Label5, &lblTime}) l->setCaption("");
    tpsMinutes = 0;
    resumeNext([&] { Text2.setText(""); });
    resumeNext([&] { Picture3.canvas().cls(); });
    for (int c = 0; c < 16; ++c) {
        Check1(c).setEnabled(false);
        Slider2(c).setEnabled(false);
        Option1(c).setEnabled(false);
        Label3(c).setCaption("");
    }
    std::string chosen;
    if (showPlaylist) resumeNext([&] { chosen = showPlaylist(); });
    if (chosen.empty()) return;
    LabelSongLength.setCaption(chosen);
    Cmdplw.setEnabled(true);
    cmdstw.setEnabled(true);
    setSongPath(chosen);
    const std::string ext = lcase(right(chosen, 3));
    if (ext == "mid" || ext == "kar") OpenFile();
    else PlayAudio();
}

void frmMain::OpenMusic() {
    // 1.
    Check2.setEnabled(false);
    mousePointer = ui::kPointerHourglass;
    // 2.
    resumeNext([&] { CloseDevice(); });
    // 3.
    resumeNext([&] { readfile(); });
    resumeNext([&] { rt.loop.doEvents(); });
    deviceOpen = true;
    // 4. The patch file goes with the song so every instrument is ready.
    resumeNext([&] { tempPatchPath = RPP(tempFolder()) + "filetemp.tmp"; });
    resumeNext([&] { dmPatchSegment = platform.performance->LoadSegment(tempPatchPath); });
    // 5.
    if (Check2.value() == 1) {
        programChangeOn = true;
        resumeNext([&] { platform.performance->ConnectToCollection(dmPatchSegment, dmCollection); });
    } else {
        programChangeOn = false;
    }
    // 6.
    auto& perf = *platform.performance;
    resumeNext([&] { perf.ConnectToCollection(dmSegment, dmCollection); });
    resumeNext([&] { perf.SetStandardMidiFile(dmSegment); });
    resumeNext([&] { perf.SetStandardMidiFile(dmPatchSegment); });
    resumeNext([&] { perf.Download(dmSegment); });
    resumeNext([&] { perf.Download(dmPatchSegment); });
    resumeNext([&] {
        perf.GetDefaultAudioPath();
        perf.Download(dmSegment);
    });
    // 7. Display fields in a unit of their own; Play replaces them.
    resumeNext([&] { lengthFields(); });
    // 8. Two fields nothing ever fills.
    resumeNext([&] { Label9.setCaption("0/0"); });
    // 9.
    resumeNext([&] { perf.SetMasterTempo(1.0f); });
    songState = 1;
    resumeMusicTime = 0;
    resumeNext([&] { vslidertempo.setValue(64); });
    resumeNext([&] { vscroll1.setValue(0); });
    // 10.
    resumeNext([&] { perf.SetMasterVolume((100 - Slider1.value()) * 42 - 3000); });
    // 11.
    wordCursor = 0;
    resumeNext([&] { Timer1.setInterval(static_cast<int>(vbInt(vbDivide(tempoUs, vbDivide(768000, divisionQuarter))))); });
    // 12.
    deviceOpen = true;
    mousePointer = ui::kPointerDefault;
}

void frmMain::lengthFields() {
    const double len = platform.performance->GetLength(dmSegment);
    const double minutes = vbFix(len / 60000);
    lengthMinutesField = vbFormat(minutes, "00");
    lengthSecondsField = vbFormat(vbFix(len / 1000 - minutes * 60), "00");
}

void frmMain::prepareStart() {
    auto& perf = *platform.performance;
    resumeNext([&] { timeOffsetMs = clng(perf.GetMasterTempo() * 1000.0 - songBpm); });
    resumeNext([&] { resumeMs = tempoUs * (resumeMusicTime / 768000.0) - timeOffsetMs; });
    resumeNext([&] {
        const int32_t upper = wordUpperBound();
        int32_t found = upper;
        for (int32_t i = 0; i <= upper - 1; ++i) {
            if (wordTable[static_cast<size_t>(i)].timeMs > resumeMs) {
                found = i;
                break;
            }
        }
        wordCursor = found;
    });
    resumeNext([&] {
        const int32_t len = perf.GetLength(dmSegment);
        if (resumeMusicTime >= len) resumeMusicTime -= 10;
        if (resumeMusicTime < 0) resumeMusicTime = 0;
        perf.SetStartPoint(dmSegment, resumeMusicTime);
    });
}

void frmMain::showLength() {
    auto& perf = *platform.performance;
    resumeNext([&] {
        const int32_t mt = perf.GetMusicTime();
        playTempo = perf.GetTempo(mt + 2000);
    });
    resumeNext([&] { lengthSeconds = clng((perf.GetLength(dmSegment) / 768.0 * 60) / playTempo); });
    int32_t minutes = lengthSeconds / 60;
    int32_t seconds = lengthSeconds - minutes * 60;
    if (seconds > 59) seconds -= minutes * 60;
    resumeNext([&] { lblTime.setCaption(" " + vbFormat(minutes, "00") + ":" + vbFormat(seconds, "00")); });
}

void frmMain::Cmd_Play_Click() {
    // 1.
    Picture4.setVisible(true);
    lastSyncLine = 0;
    resumeNext([&] { Text2.setText(""); });
    if (songState == 2) {
        // 2. Resume from the pause point.
        Cmd_Play.setEnabled(false);
        songState = 0;
    } else {
        // 3.
        Cmd_Play.setEnabled(false);
        resumeNext([&] { call(unloadEffectPanels); });
        Meff.setEnabled(false);
        resumeNext([&] { dismenu(); });
        // The chain goes on and the compressor panel comes up.
        resumeNext([&] { call(openEffectPanels); });
        Timer.setEnabled(true);
        cmdrec.setEnabled(false);
        resumeNext([&] { dmenu(); });
        // 4.
        resumeNext([&] { ZeroVariables(); });
        if (keepSongModel) {
            // 5. A replay after Stop: the model is kept and the song starts over.
            resumeMusicTime = 0;
            resumeNext([&] { platform.performance->SetStartPoint(dmSegment, 0); });
        } else {
            // 6.
            resumeNext([&] { vslidertempo.setValue(0); });
            resumeNext([&] { vscroll1.setValue(0); });
            for (int c = 0; c < 16; ++c) resumeNext([&] { Check1(c).setEnabled(false); });
        }
    }
    // 7. Errors are ignored from here on.
    mousePointer = ui::kPointerHourglass;
    if (!deviceOpen) resumeNext([&] { OpenMusic(); });
    // 8, 9.
    prepareStart();
    // 10.
    songState = 0;
    resumeNext([&] {
        auto& perf = *platform.performance;
        dmSegmentState = perf.PlaySegmentEx(dmSegment, 16384, 0, perf.GetDefaultAudioPath());
    });
    // 11.
    showLength();
    // 12.
    resumeNext([&] { SetChannels(); });
    Timer1.setEnabled(true);
    mousePointer = ui::kPointerDefault;
    songState = 1;
    // 13.
    if (keepSongModel) {
        keepSongModel = false;
        resumeNext([&] { call(STOPVALUE); });
    }
    // 14.
    songRunning = true;
    HScroll3.setEnabled(true);
    Cmd_Stop.setEnabled(true);
    CmdPause.setEnabled(true);
    rt.screenMousePointer = ui::kPointerDefault;
    if (pausedFlag) pausedFlag = false;
}

void frmMain::Cmd_Stop_Click() {
    // 1.
    SaveT.setEnabled(true);
    Cmd_Play.setEnabled(true);
    CmdPause.setEnabled(false);
    resumeNext([&] { Picture3.canvas().cls(); });
    // 2.
    songRunning = false;
    List3.setVisible(false);
    resumeNext([&] { enamenu(); });
    dlsbank.setEnabled(true);
    Meff.setEnabled(true);
    // 3.
    keepSongModel = true;
    stopRequested = true;
    songStoppedFlag = true;
    // 4.
    resumeNext([&] { HScroll3.setValue(0); });
    MnuOpenSong.setEnabled(true);
    mnew.setEnabled(true);
    // 5. A paused song is already stopped: no second stop.
    if (!pausedFlag) {
        resumeNext([&] {
            auto& perf = *platform.performance;
            perf.StopEx(perf.GetDefaultAudioPath(), 0, 0);
        });
    }
    // 6.
    cmdrec.setEnabled(true);
    rt.screenMousePointer = ui::kPointerDefault;
    songState = 0;
    Cmd_Stop.setEnabled(false);
    Timer1.setEnabled(false);
}

void frmMain::CmdPause_Click() {
    auto& perf = *platform.performance;
    resumeNext([&] { resumeMusicTime = add32(perf.GetSeek(dmSegmentState), -100); });
    resumeNext([&] { perf.StopEx(perf.GetDefaultAudioPath(), 0, 0); });
    Cmd_Play.setEnabled(true);
    songState = 2;
    pausedFlag = true;
}

}  // namespace velaro::song
