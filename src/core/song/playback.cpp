// Playing the song through the performance: setting it up, the transport
// tick, restarts after a seek, the seek bar, tempo, transpose and volume.

#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../shell/frm_main.h"

namespace velaro::song {

namespace {
// The seek bar keeps a fixed margin of 50 at its end.
constexpr double kBarMargin = 50;
}  // namespace

void frmMain::Initialize() {
    if (perfReady) return;
    perfReady = true;
    if (Check3.value() == 1) rvText = "1";
    auto& perf = *platform.performance;
    // The collection comes from the loader made by the call before, so the
    // very first call goes without one.
    resumeNext([&] {
        if (!loaderCreated) throw VbError(VbErr::InvalidCall, "no loader yet");
        dmCollection = perf.LoadCollection(soundBankPath);
    });
    resumeNext([&] {
        if (!loaderCreated) throw VbError(VbErr::InvalidCall, "no loader yet");
        perf.ConnectToCollection(dmSegment, dmCollection);
    });
    loaderCreated = true;
    platform::AudioParams params;
    params.initNow = true;
    params.validData = 7;
    params.features = 63;
    params.voices = 128;
    params.sampleRate = 48000;
    resumeNext([&] { perf.InitAudio(63, params, Check3.value() == 1 ? 1 : 8, 128); });
    deviceOpen = true;
}

void frmMain::CloseDevice() {
    if (!deviceOpen) return;
    auto& perf = *platform.performance;
    resumeNext([&] { perf.StopEx(perf.GetDefaultAudioPath(), 0, 0); });
    resumeNext([&] { perf.CloseDown(); });
    resumeNext([&] { rt.loop.doEvents(); });
}

void frmMain::SeekEnd() {
    auto& perf = *platform.performance;
    resumeNext([&] { perf.StopEx(perf.GetDefaultAudioPath(), 0, 0); });
}

void frmMain::Timer_Timer() {
    if (noSongMode || digitalRecorderMode) {
        Picture2.setBackColor(16448);
        return;
    }
    auto& perf = *platform.performance;
    // 1.
    if (songState == 1) {
        resumeNext([&] {
            const double len = perf.GetLength(dmSegment);
            const double seek = perf.GetSeek(dmSegmentState);
            percentPlayed = checked16(static_cast<int64_t>(vbInt(vbDivide(seek * 100, len))));
        });
        resumeNext([&] { rt.loop.doEvents(); });
        resumeNext([&] { UpdateBar(percentPlayed); });
    }
    // 2.
    resumeNext([&] { HScroll3.setValue(percentPlayed); });
    // 3. The end of the song, unless Stop was pressed.
    if (percentPlayed == 100 && !stopRequested) {
        TimTps.setEnabled(false);
        CmdPause.setEnabled(false);
        lblS.setCaption("");
        lblM.setCaption("");
        tpsMinutes = 0;
        tpsSeconds = 0;
        SaveT.setEnabled(true);
        recordStopFlag = true;
        deviceOpen = false;
        resumeNext([&] { enamenu(); });
        dlsbank.setEnabled(true);
        Timer1.setEnabled(false);
        if (recordingActive) {
            SaveSyncro.setEnabled(true);
            cmdrec.setEnabled(false);
        }
        songState = 0;
        resumeNext([&] { HScroll3.setValue(0); });
        MnuOpenSong.setEnabled(true);
        mnew.setEnabled(true);
        rt.screenMousePointer = ui::kPointerDefault;
        Cmd_Play.setEnabled(false);
        Cmd_Stop.setEnabled(false);
    }
    // 4.
    if (recordStopFlag && recordingActive) {
        cmdrec.setEnabled(false);
        cmdstop.setEnabled(false);
        Cmd_Stop.setEnabled(false);
    }
    // 5. The clock in Label5, in real seconds at the song's tempo.
    if (songState != 0) {
        resumeNext([&] {
            const double seek = perf.GetSeek(dmSegmentState);
            const double total = vbInt(vbDivide((seek / 768) * 60, playTempo));
            syncMinutes = clng(vbInt(total / 60));
            const double seconds = vbInt(total - syncMinutes * 60.0);
            Label5.setCaption(vbFormat(syncMinutes, "00") + ":" + vbFormat(seconds, "00"));
        });
        resumeNext([&] {
            if (perf.GetSeek(dmSegmentState) >= perf.GetLength(dmSegment)) SeekEnd();
        });
    }
}

void frmMain::Play() {
    if (recordingActive) return;
    mousePointer = ui::kPointerHourglass;
    if (!deviceOpen) resumeNext([&] { OpenMusic(); });
    prepareStart();
    songState = 1;
    resumeNext([&] {
        auto& perf = *platform.performance;
        dmSegmentState = perf.PlaySegmentEx(dmSegment, 16384, 0, perf.GetDefaultAudioPath());
    });
    resumeNext([&] { SetChannels(); });
    Timer1.setEnabled(true);
    mousePointer = ui::kPointerDefault;
}

void frmMain::PLAYERMIDI() {
    if (digitalRecorderMode) return;
    auto& perf = *platform.performance;
    // 2.
    if (!(percentPlayed == 100 || songStoppedFlag)) {
        resumeNext([&] { ZeroVariables(); });
        Timer1.setEnabled(false);
        resumeNext([&] { OpenMusic(); });
        deviceOpen = true;
        songStoppedFlag = false;
    }
    // 3.
    resumeNext([&] { lengthFields(); });
    deviceOpen = true;
    // 4, 5.
    prepareStart();
    songState = 0;
    resumeNext([&] { dmSegmentState = perf.PlaySegmentEx(dmSegment, 16384, 0, perf.GetDefaultAudioPath()); });
    showLength();
    // 6.
    resumeNext([&] { SetChannels(); });
    Timer2.setEnabled(true);
    Timer3.setEnabled(true);
    Timer1.setEnabled(true);
    resumeNext([&] { call(recorderPlay); });
    // 7.
    if (keepSongModel) {
        keepSongModel = false;
        mousePointer = ui::kPointerDefault;
        songState = 1;
    }
}

void frmMain::UpdateBar(int) {
    auto& perf = *platform.performance;
    const double seek = perf.GetSeek(dmSegmentState);
    const double len = perf.GetLength(dmSegment);
    const double left =
        vbDivide(seek * 100, len) * (Picture4.width() - Command9.width() - kBarMargin) / 100;
    Command9.setLeft(left);
}

void frmMain::Command9_MouseDown(int, int, double x, double) {
    if (!songRunning || recordingActive) return;
    auto& perf = *platform.performance;
    resumeNext([&] { perf.SetStartPoint(dmSegment, resumeMusicTime); });
    resumeNext([&] { perf.StopEx(perf.GetDefaultAudioPath(), 0, 0); });
    Cmd_Stop.setEnabled(true);
    thumbGrab_ = x;  // the views already give twips
    resumeNext([&] { Picture3.canvas().cls(); });
    songState = 2;
    resumeNext([&] { Picture1.canvas().cls(); });
    thumbDown_ = true;
}

void frmMain::Command9_MouseMove(int button, int shift, double x, double y) {
    Picture4_MouseMove(button, shift, x + Command9.left(), y);
}

void frmMain::Picture4_MouseMove(int button, int, double x, double) {
    if (recordingActive || songPath().empty() || button != 1) return;
    const double maxLeft = Picture4.width() - Command9.width();
    Command9.setLeft(std::clamp(x - thumbGrab_, 0.0, std::max(0.0, maxLeft)));
    Cmd_Stop.setEnabled(true);
}

void frmMain::Command9_MouseUp(int, int, double, double) {
    if (recordingActive) return;
    thumbDown_ = false;
    SetMusicPosition();
}

void frmMain::SetMusicPosition() {
    if (!deviceOpen) return;
    resumeNext([&] {
        const double percent =
            vbInt(vbDivide(Command9.left(), (Picture4.width() - Command9.width() - kBarMargin) / 100));
        resumeMusicTime = clng(percent * platform.performance->GetLength(dmSegment) / 100);
    });
    songState = 2;
    Play();
}

void frmMain::vslidertempo_Change() {
    const int v = vslidertempo.value();
    resumeNext([&] {
        const double t = vbInt(30.0 / 127 * v);
        platform.performance->SetMasterTempo(static_cast<float>(t * 2 / 30));
    });
    // Written twice, as it always was.
    for (int twice = 0; twice < 2; ++twice)
        resumeNext([&] { lblInfo(2).setCaption(std::to_string(static_cast<int>(vbInt((24.0 / 127 * v - 12) / 2)))); });
}

void frmMain::vscroll1_Change() {
    const int v = vscroll1.value();
    if (songState != 0) {
        for (int c = 0; c < 16; ++c) {
            if (c == 9) continue;  // the drum channel is never transposed
            resumeNext([&] { platform.performance->SendTransposePMSG(0, 1, c, v); });
        }
    }
    resumeNext([&] { lblInfo(0).setCaption(std::to_string(v)); });
}

void frmMain::Slider1_Change() {
    resumeNext([&] { platform.performance->SetMasterVolume((100 - Slider1.value()) * 42 - 3000); });
}

}  // namespace velaro::song
