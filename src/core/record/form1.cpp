#include "form1.h"

#include "../base/vb_error.h"
#include "bit_rates.h"
#include "wave_file_choice.h"

namespace velaro::record {

Form1::Form1(ui::Runtime& rt, platform::Platform& platform)
    : ui::Form(rt, "Form1"), test(rt.loop, platform.mp3) {
    caption = "Wav to Mp3";
    Combo1.setCaption("Quality");
    Combo2.setCaption("BitRate");
    Combo3.setCaption("VBR Quality");
    Combo4.setCaption("Channels");
    Option1.setCaption("VBR");
    Option2.setCaption("CBR");
    Check1.setCaption("Write CRC");
    Check2.setCaption("Allow Intensity");
    Text1.setCaption("WavFile");
    Text2.setCaption("Mp3File");
    Command1.setCaption("...");
    Command2.setCaption("...");
    Command3.setCaption("Encode");
    for (const char* q : {"Fast", "Medium", "High"}) Combo1.addItem(q);
    fillBitRates(Combo2);
    for (int i = 1; i <= 10; ++i) Combo3.addItem(std::to_string(i));
    for (const char* c : {"Stereo", "Mono"}) Combo4.addItem(c);

    Combo1.Click = [this] { Combo1_Click(); };
    Combo2.Click = [this] { Combo2_Click(); };
    Combo3.Click = [this] { Combo3_Click(); };
    Combo4.Click = [this] { Combo4_Click(); };
    Option1.Click = [this] { Option1_Click(); };
    Option2.Click = [this] { Option2_Click(); };
    Command1.Click = [this] { Command1_Click(); };
    Command2.Click = [this] { Command2_Click(); };
    Command3.Click = [this] { Command3_Click(); };
    test.encoderProgress = [this](double p) { test_encoderProgress(p); };
    // Constant bit rate until VBR is chosen.
    Option2.setValue(true);
}

void Form1::Combo1_Click() { test.encoderQuality = static_cast<int16_t>(Combo1.listIndex()); }

void Form1::Combo2_Click() { test.encoderBitRate = bitRateOfRow(Combo2.text()); }

void Form1::Combo3_Click() { test.encoderVbrQuality = static_cast<int16_t>(100 - Combo3.listIndex() * 10); }

// The channel list reads the quality list's row: "Mono" alone changes nothing.
void Form1::Combo4_Click() { test.encoderChannels = static_cast<int16_t>(2 - Combo1.listIndex()); }

void Form1::Option1_Click() {
    Combo3.setVisible(true);
    Combo2.setVisible(false);
}

void Form1::Option2_Click() {
    Combo3.setVisible(false);
    Combo2.setVisible(true);
}

void Form1::chooseFile(bool save, ui::TextBox& into) { chooseWaveFile(CommonDialog1, "Wave File|*.wav", save, into); }

void Form1::Command1_Click() { chooseFile(false, Text1); }
void Form1::Command2_Click() { chooseFile(true, Text2); }

void Form1::Command3_Click() {
    test.encoderInputFile = Text1.text();
    test.encoderOutputFile = Text2.text();
    test.encoderVbr = Option1.value() ? -1 : 0;
    test.encoderIntensity = Check2.value() == 1;
    test.encoderCrc = Check1.value() == 1;
    test.encoderStart();
}

void Form1::test_encoderProgress(double p) {
    resumeNext([&] { prog.setValue(p); });
    if (p == 100.0) {
        resumeNext([&] { prog.setValue(100); });
        rt.dialogs.msgBox("Fatto!", ui::vbOKOnly, "MIDIMP3");
        resumeNext([&] { prog.setValue(0); });
        mousePointer = ui::kPointerDefault;
    }
}

}  // namespace velaro::record
