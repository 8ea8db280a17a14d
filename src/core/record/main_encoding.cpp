#include "main_encoding.h"

#include <cstdlib>

#include "../base/paths.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../shell/frm_main.h"
#include "bit_rates.h"

namespace velaro::record {

MainEncoding::MainEncoding(song::frmMain& form)
    : f(form),
      prog(&form, "prog"),
      Combo2(&form, "Combo2"),
      MEnc1(form.rt.loop, form.platform.mp3),
      form1(form.rt, form.platform),
      form11(form.rt, form.platform, form.normalizePercent) {
    f.cmdSave.setCaption("Encode Mp3");
    f.encstop.setCaption("Encode Stop");
    Combo2.setCaption("BitRate");
    fillBitRates(Combo2);
    Combo2.setVisible(false);
    prog.setVisible(false);
    // Nothing to encode until a take has been made.
    f.cmdSave.setEnabled(false);

    f.Mmp3.Click = [this] { Mmp3_Click(); };
    Combo2.Click = [this] { Combo2_Click(); };
    f.cmdSave.Click = [this] { cmdSave_Click(); };
    f.encstop.Click = [this] { encstop_Click(); };
    f.wavp3.Click = [this] { wavp3_Click(); };
    f.MnuNorm.Click = [this] { MnuNorm_Click(); };
    MEnc1.encoderProgress = [this](double p) {
        MEnc1_encoderProgress(p);
        MEnc1_encoderProgressGuarded(p);
    };
}

void MainEncoding::Mmp3_Click() { Combo2.setVisible(true); }

void MainEncoding::Combo2_Click() {
    f.mp3BitRate = bitRateOfRow(Combo2.text());
    f.rt.dialogs.msgBox("Mp3 Setup", ui::vbQuestion, "VELARO");
    Combo2.setVisible(false);
}

std::string MainEncoding::encodeInput() const {
    return backingPath.empty() ? RPP(applicationFolder()) + "newwave.wav" : backingPath;
}

void MainEncoding::cmdSave_Click() {
    f.encoderProgressGuard = false;
    ui::CommonDialog& d = f.Cmdialog2;
    d.DialogTitle = "Save MP3 File As";
    d.Filter = "File MP3 (*.MP3)|*.MP3";
    d.Flags = 2;
    d.CancelError = true;
    d.FileName.clear();
    resumeNext([&] { d.ShowSave(); });
    if (d.FileName.empty()) {
        f.cmdSave.setEnabled(false);
        f.rt.dialogs.msgBox("Annullato!", ui::vbOKOnly, "MIDI to MP3");
        f.enamenu();
        f.Meff.setEnabled(false);
        return;
    }
    prog.setVisible(true);
    f.cmdSave.setEnabled(false);
    f.encstop.setEnabled(true);
    f.mousePointer = ui::kPointerHourglass;
    MEnc1.encoderVbr = 0;
    MEnc1.encoderQuality = 1;
    MEnc1.encoderBitRate = f.mp3BitRate;
    MEnc1.encoderChannels = 2;
    MEnc1.encoderOutputFile = d.FileName;
    MEnc1.encoderInputFile = encodeInput();
    MEnc1.encoderStart();
}

void MainEncoding::encstop_Click() {
    f.encstop.setEnabled(false);
    f.cmdSave.setEnabled(false);
    MEnc1.encoderStop();
    f.mousePointer = ui::kPointerDefault;
}

void MainEncoding::MEnc1_encoderProgress(double p) {
    resumeNext([&] { prog.setValue(p); });
    if (p == 100.0) {
        resumeNext([&] { prog.setValue(100); });
        f.rt.dialogs.msgBox("Done!", ui::vbOKOnly, "MIDI to MP3");
        prog.setVisible(false);
        f.encstop.setEnabled(false);
        resumeNext([&] { prog.setValue(0); });
        f.mousePointer = ui::kPointerDefault;
    }
}

void MainEncoding::MEnc1_encoderProgressGuarded(double p) {
    if (f.encoderProgressGuard) return;
    // The value as shown with one decimal; 9.9 itself and 99 on are left out.
    const double v = std::strtod(vbFormat(p, "00.0").c_str(), nullptr);
    if (((v < 99 && v > 9.9) || v < 9.9) && prog.value() != 100) resumeNext([&] { prog.setValue(v); });
}

void MainEncoding::wavp3_Click() { form1.show(); }

void MainEncoding::MnuNorm_Click() {
    form11.Text1.setText("");
    form11.Text2.setText("");
    form11.Text3.setText(f.normalizePercent);
    form11.show();
}

void MainEncoding::takeSaved(const std::string& chosenName) {
    if (!f.normalizeAfterSave) return;
    form11.Text1.setText(RPP(applicationFolder()) + "newwave.wav");
    form11.Text2.setText(chosenName);
    form11.Text3.setText(f.normalizePercent);
    form11.show();
}

}  // namespace velaro::record
