#include "form11.h"

#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "bit_rates.h"
#include "wave_file_choice.h"

namespace velaro::record {

Form11::Form11(ui::Runtime& rt, platform::Platform& platform, std::string& normalizePercent)
    : ui::Form(rt, "Form11"), norm(rt.loop, platform.normaliser), normalizePercent_(normalizePercent) {
    caption = " Normalize Wave File";
    Label1.setCaption("% Normalization");
    Label2.setCaption("00 %");
    Command1.setCaption("...");
    Command2.setCaption("...");
    Command3.setCaption("Start");
    Command1.Click = [this] { Command1_Click(); };
    Command2.Click = [this] { Command2_Click(); };
    Command3.Click = [this] { Command3_Click(); };
    norm.progress = [this](double p) { norm_Progress(p); };
}

void Form11::chooseFile(bool save, ui::TextBox& into) { chooseWaveFile(CommonDialog1, "Wave Audio File|*.wav", save, into); }

void Form11::Command1_Click() { chooseFile(false, Text1); }
void Form11::Command2_Click() { chooseFile(true, Text2); }

void Form11::Command3_Click() {
    mousePointer = ui::kPointerHourglass;
    norm.Normalize(Text1.text(), Text2.text(), wholeNumberOf(Text3.text()));
    normalizePercent_ = Text3.text();
}

void Form11::norm_Progress(double p) {
    resumeNext([&] { prog.setValue(p); });
    resumeNext([&] { Label2.setCaption(vbFormat(p, "00") + " %"); });
    if (p == 100.0) {
        resumeNext([&] { prog.setValue(100); });
        rt.dialogs.msgBox("Finished Normalizing The Wave Audio File", ui::vbInformation, "Finished");
        resumeNext([&] { prog.setValue(0); });
        Label2.setCaption("00 %");
        mousePointer = ui::kPointerDefault;
        hide();
    }
}

}  // namespace velaro::record
