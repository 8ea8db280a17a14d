#include "main_backing.h"

#include <cstring>

#include "../base/paths.h"
#include "../base/vb_error.h"
#include "../shell/frm_main.h"
#include "../ui/dialogs.h"

namespace velaro::record {

MainBacking::MainBacking(song::frmMain& form)
    : f(form),
      lblPlayer(&form, "lblPlayer"),
      Chkrem(&form, "Chkrem"),
      Chklow(&form, "Chklow"),
      Frame4(&form, "Frame4"),
      vseq(&form, "vseq", 8, 0, 19),
      Veq1(&form, "Veq1", 8, 0, 19),
      Slider3(&form, "Slider3", -1, 0, 10),
      vcompr(&form, "vcompr", -1, 0, 10),
      sldKey(&form, "sldKey", -1, -12, 12),
      sldSpeed(&form, "sldSpeed", -1, 50, 150) {
    Chkrem.setCaption("  Vocal  Remover   ");
    Chklow.setCaption("BassBoost");
    Slider3.setCaption("BassBooster");
    vcompr.setCaption("Gain Audio");
    vcompr.largeChange = 5;
    sldKey.setCaption("Key");
    sldSpeed.setCaption("Speed");
    // Design values, set before any handler is there to hear them.
    Chklow.setValue(1);
    Slider3.setValue(10);
    vcompr.setValue(10);
    sldKey.setValue(0);
    sldSpeed.setValue(100);
    Slider3.setEnabled(false);
    for (int i = 0; i < 8; ++i) {
        vseq(i).setValue(kVseqDesign[i]);
        Veq1(i).setValue(kVeq1Design[i]);
        vseq(i).Change = [this, i] { vseq_Change(i); };
        vseq(i).Scroll = [this, i] { vseq_Change(i); };
        Veq1(i).Change = [this, i] { Veq1_Change(i); };
    }
    Chkrem.Click = [this] { Chkrem_Click(); };
    Chklow.Click = [this] { Chklow_Click(); };
    Slider3.Change = [this] { Slider3_Change(); };
    vcompr.Change = [this] { vcompr_Change(); };
    sldKey.Change = [this] { shift_Change(); };
    sldSpeed.Change = [this] { shift_Change(); };

    f.recording.VocalRemove = [this] { VocalRemove(); };
    f.recording.StopRemover = [this] { StopRemover(); };
}

platform::AudioStreams& MainBacking::streams() { return *f.platform.streams; }

void MainBacking::VocalCutCallback(uint32_t, uint32_t, void* buffer, uint32_t length, void*) {
    // In place: the pairs only ever read themselves, so no copy is needed.
    float* s = static_cast<float*>(buffer);
    const uint32_t floats = length / sizeof(float);
    for (uint32_t i = 0; i + 1 < floats; i += 2) {
        const float m = (s[i + 1] - s[i]) / 2;
        s[i] = m;
        s[i + 1] = m;
    }
}

void MainBacking::VocalRemove() {
    f.Cmdplw.setEnabled(false);
    if (f.usingRippedTrack) {
        f.usingRippedTrack = false;
        resumeNext([&] {
            if (ui::Form* cd = f.rt.forms.find("frmDemo")) cd->unload();
        });
        f.setSongPath(RPP(applicationFolder()) + "TRACK.WAV");
        if (f.songPath().empty()) return;
    }
    resumeNext([&] { f.dismenu(); });
    f.cmdstw.setEnabled(!f.recordingActive);
    f.cmdrec.setEnabled(false);

    platform::AudioStreams& s = streams();
    // Float samples for the callback's arithmetic, before any stream is made.
    s.SetConfig(platform::kConfigFloatDsp, 1);
    const std::string path = f.songPath();
    mainStream = s.StreamCreateFile(false, path, 0, 0, streamFlags);
    lowStream = s.StreamCreateFile(false, path, 0, 0, streamFlags);
    if (mainStream == 0)
        mainStream = s.MusicLoad(false, path, 0, 0, streamFlags | platform::kMusicRamp | platform::kMusicLoop, 0);
    if (mainStream == 0) {
        lblPlayer.setCaption("click here to open a file && play it...");
        resumeNext([&] { f.Error_("Selected file couldn't be loaded!"); });
        return;
    }
    float freq = 0;
    int volume = 0, pan = 0;
    if (s.ChannelGetAttributes(mainStream, freq, volume, pan)) sampleRate = freq;
    if (s.ChannelGetAttributes(lowStream, freq, volume, pan)) sampleRate = freq;
    shift_Change();
    if (Chkrem.value() == 1) resumeNext([&] { Chkrem_Click(); });
    s.ChannelPlay(mainStream, false);
    s.ChannelPlay(lowStream, false);
    Slider3.setEnabled(false);
    s.FX_DSP_Set(lowStream, platform::kFxVolume, 1);
    resumeNext([&] { Slider3_Change(); });
}

void MainBacking::Chkrem_Click() {
    platform::ChannelInfo info;
    streams().ChannelGetInfo(mainStream, info);
    // Mono has no sides to tell apart; the cut goes on all the same.
    if (info.chans == 1) f.rt.dialogs.msgBox("Only Stereo ", ui::vbOKOnly | ui::vbCritical, "VelaroRemover");
    if (Chkrem.value() == 1) {
        vocalCutDsp = streams().ChannelSetDSP(mainStream, &VocalCutCallback, nullptr, 0);
        resumeNext([&] { equalizzatore(); });
        resumeNext([&] { equal1(); });
        Frame4.setVisible(true);
        vseq.forEach([](ui::Slider& v) { v.setVisible(true); });
        Slider3.setEnabled(true);
        // 7.5 as the old runtime rounded it.
        Slider3.setValue(8);
    } else {
        Default();
    }
}

void MainBacking::installBands(platform::StreamId s, const float* centres) {
    platform::AudioStreams& a = streams();
    float freq = 0;
    int volume = 0, pan = 0;
    if (a.ChannelGetAttributes(s, freq, volume, pan)) sampleRate = freq;
    for (int i = 0; i < 8; ++i) a.FX_DSP_Set(s, platform::kFxPeakEq, 0);
    for (int i = 0; i < 8; ++i) {
        platform::PeakEqRecord r;
        r.band = i;
        r.rate = static_cast<int32_t>(sampleRate);
        r.bandwidth = kEqBandwidth;
        r.q = 0;
        r.center = centres[i];
        r.gain = 0;
        a.FX_DSP_SetParameters(s, platform::kFxPeakEq, r);
    }
}

void MainBacking::equalizzatore() {
    installBands(mainStream, kMainCentres);
    for (int i = 0; i < 8; ++i) resumeNext([&] { vseq_Change(i); });
}

void MainBacking::equal1() {
    installBands(lowStream, kLowCentres);
    for (int i = 0; i < 8; ++i) resumeNext([&] { Veq1_Change(i); });
}

void MainBacking::setBandGain(platform::StreamId s, int band, int value) {
    platform::PeakEqRecord r;
    r.band = band;
    streams().FX_DSP_GetParameters(s, platform::kFxPeakEq, r);
    r.gain = static_cast<float>(10 - value);
    streams().FX_DSP_SetParameters(s, platform::kFxPeakEq, r);
}

void MainBacking::vseq_Change(int band) { setBandGain(mainStream, band, vseq(band).value()); }

void MainBacking::Veq1_Change(int band) { setBandGain(lowStream, band, Veq1(band).value()); }

void MainBacking::Slider3_Change() {
    const int v = 10 - Slider3.value();
    platform::VolumeRecord r;
    streams().FX_DSP_GetParameters(lowStream, platform::kFxVolume, r);
    r.left = r.right = static_cast<float>(v) / 10.0f;
    streams().FX_DSP_SetParameters(lowStream, platform::kFxVolume, r);
}

void MainBacking::vcompr_Change() {
    platform::GainRecord r;
    r.a = r.b = r.c = 10.0f;
    r.gain = static_cast<float>(10 - vcompr.value());
    r.e = 1000.0f;
    // Never installed: the record is kept and nothing is heard, as designed.
    streams().FX_DSP_SetParameters(mainStream, platform::kFxGain, r);
}

void MainBacking::Chklow_Click() {
    if (Chklow.value() == 1) {
        streams().FX_DSP_Set(lowStream, platform::kFxVolume, 1);
        Slider3_Change();
    } else {
        streams().FX_DSP_Remove(lowStream, platform::kFxVolume);
    }
}

void MainBacking::Default() {
    Frame4.setVisible(false);
    vseq.forEach([](ui::Slider& v) { v.setVisible(false); });
    resumeNext([&] { Chkrem.setValue(0); });
    Slider3.setEnabled(false);
    resumeNext([&] { Slider3.setValue(10); });
    resumeNext([&] { vcompr.setValue(10); });
    platform::AudioStreams& s = streams();
    // The volume effect on lowStream stays: only the cut and the equalisers go.
    s.FX_DSP_Remove(lowStream, platform::kFxPeakEq);
    s.ChannelRemoveDSP(mainStream, vocalCutDsp);
    s.FX_DSP_Remove(mainStream, platform::kFxPeakEq);
    s.FX_DSP_Remove(mainStream, platform::kFxGain);
}

void MainBacking::StopRemover() {
    f.cmdrec.setEnabled(true);
    platform::AudioStreams& s = streams();
    s.FX_DSP_Remove(lowStream, platform::kFxVolume);
    // The handle may be a stream or a module: both frees, one of them fails.
    s.StreamFree(lowStream);
    s.MusicFree(lowStream);
    s.StreamFree(mainStream);
    s.MusicFree(mainStream);
    resumeNext([&] { f.enamenu(); });
}

void MainBacking::shift_Change() {
    for (platform::StreamId id : {mainStream, lowStream})
        if (id) streams().ChannelSetShift(id, sldKey.value(), sldSpeed.value());
}

}  // namespace velaro::record
