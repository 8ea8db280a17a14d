#include "main_recording.h"

#include <filesystem>

#include "../base/paths.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../shell/frm_main.h"
#include "../ui/dialogs.h"

namespace velaro::record {

const TakeFormat kTakeFormats[12] = {
    {"11KHz @ 8bit Mono", 0, 0, 0, 1},          {"11KHz @ 16bit Mono", 11025, 1, 16, 4},
    {"11KHz @ 8bit Stereo", 11025, 2, 8, 2},    {"11KHz @ 16bit Stereo", 11025, 2, 16, 8},
    {"22KHz @ 8bit Mono", 22050, 1, 8, 16},     {"22KHz @ 16bit Mono", 22050, 1, 16, 64},
    {"22KHz @ 8bit Stereo", 22050, 2, 8, 32},   {"22KHz @ 16bit Stereo", 22050, 2, 16, 128},
    {"44KHz @ 8bit Mono", 44100, 1, 8, 256},    {"44KHz @ 16bit Mono", 44100, 1, 16, 1024},
    {"44KHz @ 8bit Stereo", 44100, 2, 8, 512},  {"44KHz @ 16bit Stereo", 44100, 2, 16, 2048},
};

namespace {
constexpr int32_t kLampDark = 0x4040;
constexpr int32_t kWhite = 0xFFFFFF;

bool endsWithAudioExtension(const std::string& path) {
    if (path.size() < 3) return false;
    const std::string ext = path.substr(path.size() - 3);
    return ext == "mp3" || ext == "wav" || ext == "MP3" || ext == "WAV";
}

// "Save WAVE File As", asking before an overwrite; false on cancel.
bool askTakeName(ui::CommonDialog& dialog) {
    dialog.DialogTitle = "Save WAVE File As";
    dialog.Filter = "File Wave (*.wav)|*.wav";
    dialog.Flags = 2;
    dialog.CancelError = true;
    dialog.FileName.clear();
    try {
        dialog.ShowSave();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

// A plain copy whose failure is ignored, as the old FileCopy under "errors ignored".
void copyQuietly(const std::string& from, const std::string& to) {
    resumeNext([&] {
        if (to.empty()) throw VbError(VbErr::PathNotFound);
        writeWholeFile(to, readWholeFile(from));
    });
}
}  // namespace

MainRecording::MainRecording(song::frmMain& form) : f(form) {
    for (const TakeFormat& row : kTakeFormats) {
        f.cmbQuality.addItem(row.text);
        f.cmbQuality.setItemData(f.cmbQuality.listCount() - 1, row.itemData);
    }
    f.cmbQuality.setVisible(false);
    f.Picture2.setBackColor(kLampDark);
    f.cmdrec.setCaption("Record");
    f.cmdstop.setCaption("StopRecord");
    f.cmdplaystop.setCaption("Stop PlayBack");
    f.Cmdplw.setCaption("PlayWav");
    f.cmdstw.setCaption("Stop Wav");
    // Nothing to stop before a take, nothing to end before its playback.
    f.cmdstop.setEnabled(false);
    f.cmdplaystop.setEnabled(false);

    f.cmdrec.Click = [this] { cmdrec_Click(); };
    f.cmdstop.Click = [this] { cmdstop_Click(); };
    f.cmdplaystop.Click = [this] { cmdplaystop_Click(); };
    f.Cmdplw.Click = [this] { Cmdplw_Click(); };
    f.cmdstw.Click = [this] { cmdstw_Click(); };
    f.mnwave.Click = [this] { mnwave_Click(); };
    f.cmbQuality.Click = [this] { cmbQuality_Click(); };
    f.Timer2.Tick = [this] { Timer2_Timer(); };
    f.Timer3.Tick = [this] { Timer3_Timer(); };
    f.Timer4.Tick = [this] { Timer4_Timer(); };
}

MainRecording::~MainRecording() = default;

std::string MainRecording::takePath() const { return RPP(applicationFolder()) + "newwave.wav"; }

bool MainRecording::backingIsAudio() const { return endsWithAudioExtension(f.songPath()); }

void MainRecording::cmdrec_Click() {
    // A ripped CD track stands in for the song.
    if (f.usingRippedTrack) {
        f.usingRippedTrack = false;
        if (ui::Form* cd = f.rt.forms.find("frmDemo")) cd->unload();
        f.setSongPath(RPP(applicationFolder()) + "TRACK.WAV");
        if (f.songPath().empty()) return;
    }
    f.Picture4.setVisible(false);
    f.Text2.setText("");
    f.lastSyncLine = 0;
    f.TimTps.setEnabled(true);
    f.timeOffsetMs = 0;

    if (f.digitalRecorderMode || f.noSongMode) {
        f.Timer3.setEnabled(true);
    } else if (backingIsAudio()) {
        f.cmdstw.setEnabled(false);
        f.Cmdplw.setEnabled(false);
        mp3rec();
        return;
    } else {
        resumeNext([&] { f.effects.vareff(); });
        f.recordingActive = true;
        f.List3.setVisible(false);
        resumeNext([&] { f.dismenu(); });
        if (!f.songStoppedFlag) {
            resumeNext([&] { f.unloadOthers(); });
            // The chain goes on and the compressor's panel comes up on the song's buffer.
            resumeNext([&] {
                if (f.openEffectPanels) f.openEffectPanels();
            });
        }
        f.Timer.setEnabled(true);
        f.stopRequested = false;
        f.keepSongModel = true;
        f.recordStopFlag = false;
        resumeNext([&] { f.dmenu(); });
    }
    runTake(false);
}

void MainRecording::mp3rec() {
    f.recordingActive = true;
    f.List3.setVisible(false);
    f.Timer3.setEnabled(true);
    resumeNext([&] { f.dismenu(); });
    f.Timer4.setEnabled(true);
    f.Timer.setEnabled(true);
    f.stopRequested = false;
    f.keepSongModel = true;
    // The backing starts before the wave device.
    resumeNext([&] { call(VocalRemove); });
    f.recordStopFlag = false;
    resumeNext([&] { f.dmenu(); });
    runTake(true);
}

void MainRecording::runTake(bool audioSession) {
    if (!(f.digitalRecorderMode || f.noSongMode) && !f.songRunning) {
        f.recordStopFlag = false;
        f.playStopFlag = false;
    }
    f.Cmd_Play.setEnabled(false);
    f.Cmd_Stop.setEnabled(false);
    f.cmdrec.setEnabled(false);
    f.cmdstop.setEnabled(true);

    // The device, the wait and the save run under "errors ignored": a take
    // that failed still ends in the same state as one that worked.
    resumeNext([&] {
        wave = std::make_unique<WavePlayer>(f);
        wave->setChannels(static_cast<uint8_t>(f.recordChannels));
        wave->setSamplerate(f.recordRate);
        wave->setBitsPerSample(f.recordBits);
    });
    resumeNext([&] {
        if (wave) wave->Record();
    });
    resumeNext([&] {
        if (wave) wave->StopRecording();
    });
    // The copy kept in the application folder; where that folder takes no
    // files the user hears why, and the take is saved from the scratch file.
    std::string keepFailure;
    resumeNext([&] {
        if (!wave) return;
        try {
            wave->SaveAs(takePath());
        } catch (const WaveError& e) {
            keepFailure = e.what();
        }
    });
    if (!keepFailure.empty()) f.rt.dialogs.msgBox(keepFailure, ui::vbExclamation, "VELARO DECK");

    f.lblM.setCaption("");
    f.lblS.setCaption("");
    f.tpsMinutes = 0;
    f.tpsSeconds = 0;
    f.cmdrec.setEnabled(false);
    f.TimTps.setEnabled(false);
    f.mousePointer = ui::kPointerDefault;
    resumeNext([&] { f.Picture3.canvas().cls(); });
    f.Timer2.setEnabled(false);
    f.Timer4.setEnabled(false);

    if (f.rt.dialogs.msgBox("PlayBack", ui::vbYesNo | ui::vbQuestion, "VELARO DECK") == ui::vbYes) {
        f.cmdplaystop.setEnabled(true);
        resumeNext([&] {
            int32_t from = 0, to = 0;
            if (wave) wave->Play(from, to);
        });
        f.cmdplaystop.setEnabled(false);
    }

    if (f.digitalRecorderMode) {
        savemicro(keepFailure.empty());
        f.digitalRecorderMode = false;
        f.MnuOpenSong.setEnabled(true);
        f.mnew.setEnabled(true);
        wave.reset();
        return;
    }

    ui::CommonDialog& dialog = f.Cmdialog2;
    const bool cancelled = !askTakeName(dialog);
    if (cancelled) {
        f.cmdSave.setEnabled(true);
        copyQuietly(takePath(), dialog.FileName);
        f.mousePointer = ui::kPointerDefault;
        f.playStopFlag = false;
        resumeNext([&] { f.enamenu(); });
        f.Meff.setEnabled(false);
        if (audioSession) {
            f.cmdstw.setEnabled(false);
            f.Cmdplw.setEnabled(false);
        }
        f.MnuOpenSong.setEnabled(true);
        f.mnew.setEnabled(true);
        wave.reset();
        return;
    }

    const std::string name = dialog.FileName;
    f.mousePointer = ui::kPointerHourglass;
    bool saved = false;
    try {
        if (wave) {
            wave->SaveAs(name);
            saved = true;
        }
    } catch (const WaveError& e) {
        // The take is still in newwave.wav; the user hears why the copy is missing.
        f.rt.dialogs.msgBox(e.what(), ui::vbExclamation, "VELARO DECK");
    } catch (const std::exception&) {
    }
    f.cmdSave.setEnabled(true);
    f.rt.dialogs.msgBox(audioSession ? "Done!" : "Fatto!", ui::vbOKOnly, audioSession ? "AudioRecorder" : "MIDItoWAV");
    if (saved && f.normalizeAfterSave) resumeNext([&] { f.encoding.takeSaved(name); });

    resumeNext([&] { f.enamenu(); });
    f.Meff.setEnabled(false);
    resumeNext([&] { call(f.showAbout); });
    f.HScroll3.setEnabled(true);
    f.Cmd_Play.setEnabled(true);
    f.Cmd_Stop.setEnabled(false);
    f.playStopFlag = false;
    f.mousePointer = ui::kPointerDefault;
    wave.reset();
    f.MnuOpenSong.setEnabled(true);
    f.mnew.setEnabled(true);
    f.Cmd_Play.setEnabled(false);
}

void MainRecording::savemicro(bool keptCopy) {
    ui::CommonDialog& dialog = f.Cmdialog2;
    const bool cancelled = !askTakeName(dialog);
    if (cancelled) f.cmdSave.setEnabled(true);
    // After a cancel the name is empty and the copy fails without a word; a
    // chosen file that cannot be written says why, and the old file stays.
    if (!dialog.FileName.empty()) {
        try {
            if (keptCopy)
                writeWholeFile(dialog.FileName, readWholeFile(takePath()));
            else if (wave)
                wave->SaveAs(dialog.FileName);
        } catch (const std::exception& e) {
            f.rt.dialogs.msgBox(e.what(), ui::vbExclamation, "VELARO DECK");
        }
    }
    f.cmdstw.setEnabled(false);
    f.Cmdplw.setEnabled(false);
    f.cmdstop.setEnabled(false);
    f.cmdrec.setEnabled(false);
    f.mousePointer = ui::kPointerDefault;
    f.recordStopFlag = false;
    f.playStopFlag = false;
    f.Timer.setEnabled(false);
    f.cmdSave.setEnabled(true);
}

void MainRecording::cmdstop_Click() {
    if (backingIsAudio()) {
        f.playStopFlag = true;
        f.TimTps.setEnabled(false);
        f.Timer4.setEnabled(false);
        f.Cmdplw.setEnabled(false);
        resumeNext([&] { call(StopRemover); });
        return;
    }
    f.TimTps.setEnabled(false);
    f.lblS.setCaption("");
    f.lblM.setCaption("");
    f.tpsMinutes = 0;
    f.tpsSeconds = 0;
    if (!f.noSongMode) {
        f.SaveSyncro.setEnabled(true);
        f.SaveT.setEnabled(true);
        f.playStopFlag = true;
    }
    resumeNext([&] { f.enamenu(); });
    f.dlsbank.setEnabled(true);
    f.cmdrec.setEnabled(false);
    f.recordingActive = false;
    f.cmdstop.setEnabled(false);
    f.recordStopFlag = false;
    f.Picture2.setBackColor(kWhite);
    f.Timer.setEnabled(false);
    f.Timer1.setEnabled(false);
    f.Timer2.setEnabled(false);
    f.Timer3.setEnabled(false);
    if (!f.digitalRecorderMode) {
        if (!f.noSongMode) {
            auto& perf = *f.platform.performance;
            resumeNext([&] { perf.StopEx(perf.GetDefaultAudioPath(), 0, 0); });
        }
        f.songState = 0;
        f.deviceOpen = false;
    }
}

void MainRecording::mp3stop() {
    f.playStopFlag = true;
    resumeNext([&] { f.enamenu(); });
    f.dlsbank.setEnabled(true);
    f.recordingActive = false;
    f.cmdstop.setEnabled(false);
    f.recordStopFlag = false;
    f.Picture2.setBackColor(kWhite);
    f.Timer1.setEnabled(false);
    f.Timer2.setEnabled(false);
    f.Timer4.setEnabled(false);
    f.Timer3.setEnabled(false);
    f.deviceOpen = false;
}

void MainRecording::cmdplaystop_Click() {
    f.recordStopFlag = true;
    f.playStopFlag = true;
    f.cmdplaystop.setEnabled(false);
}

void MainRecording::Cmdplw_Click() {
    if (!f.CdWaveLoaded) f.usingRippedTrack = false;
    if (f.usingRippedTrack) {
        f.usingRippedTrack = false;
        if (ui::Form* cd = f.rt.forms.find("frmDemo")) cd->unload();
        f.setSongPath(RPP(applicationFolder()) + "TRACK.WAV");
        if (f.songPath().empty()) return;
    }
    resumeNext([&] { f.dismenu(); });
    f.cmdrec.setEnabled(false);
    f.lstuse.setEnabled(false);
    f.cmdstw.setEnabled(true);
    resumeNext([&] { call(VocalRemove); });
}

void MainRecording::cmdstw_Click() {
    f.cmdrec.setEnabled(true);
    f.lstuse.setEnabled(true);
    resumeNext([&] { call(StopRemover); });
    f.Cmdplw.setEnabled(true);
    resumeNext([&] { f.enamenu(); });
    f.Meff.setEnabled(false);
}

void MainRecording::mnwave_Click() { f.cmbQuality.setVisible(true); }

void MainRecording::cmbQuality_Click() {
    const int row = f.cmbQuality.listIndex();
    // The first row is passed over on purpose: it changes nothing and says nothing.
    if (row <= 0 || row >= 12) return;
    const TakeFormat& t = kTakeFormats[row];
    f.recordRate = t.rate;
    f.recordChannels = t.channels;
    f.recordBits = t.bits;
    f.rt.dialogs.msgBox("Wave Setup", ui::vbOKOnly, "VELARO");
    f.cmbQuality.setVisible(false);
}

void MainRecording::Timer3_Timer() { f.Picture2.setBackColor(kWhite); }

void MainRecording::Timer4_Timer() { f.Picture2.setBackColor(kLampDark); }

void MainRecording::Timer2_Timer() {
    f.Picture2.setBackColor(kLampDark);
    // The song's place during a take, beside the transport tick.
    auto& perf = *f.platform.performance;
    resumeNext([&] {
        const double seek = perf.GetSeek(f.dmSegmentState);
        f.syncSeconds = vbInt(seek / 1000);
        f.syncMinutes = static_cast<int32_t>(vbInt(f.syncSeconds / 60));
        f.syncSeconds = vbInt(f.syncSeconds - f.syncMinutes * 60.0);
        const double length = perf.GetLength(f.dmSegment);
        if (seek >= length) f.SeekEnd();
        f.percentPlayed = checked16(static_cast<int64_t>(vbInt(seek * 100 / length)));
    });
    resumeNext([&] { f.rt.loop.doEvents(); });
    resumeNext([&] { f.UpdateBar(f.percentPlayed); });
}

}  // namespace velaro::record
