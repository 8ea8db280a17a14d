#pragma once
// "Wav to Mp3": a wave file to an MP3 with every setting of the encoder in
// view. Its channel list reads the quality list's row, and that is kept.

#include "../platform/platform.h"
#include "../ui/common_dialog.h"
#include "../ui/form.h"
#include "encoder_controls.h"

namespace velaro::record {

class Form1 : public ui::Form {
public:
    Form1(ui::Runtime& rt, platform::Platform& platform);

    ui::ComboBox Combo1{this, "Combo1"};  // "Quality"
    ui::ComboBox Combo2{this, "Combo2"};  // "BitRate"
    ui::ComboBox Combo3{this, "Combo3"};  // "VBR Quality"
    ui::ComboBox Combo4{this, "Combo4"};  // "Channels"
    ui::OptionButton Option1{this, "Option1"};  // "VBR"
    ui::OptionButton Option2{this, "Option2"};  // "CBR"
    ui::CheckBox Check1{this, "Check1"};        // "Write CRC"
    ui::CheckBox Check2{this, "Check2"};        // "Allow Intensity"
    ui::TextBox Text1{this, "Text1"};           // "WavFile"
    ui::TextBox Text2{this, "Text2"};           // "Mp3File"
    ui::CommandButton Command1{this, "Command1"};
    ui::CommandButton Command2{this, "Command2"};
    ui::CommandButton Command3{this, "Command3"};  // "Encode"
    ui::ProgressBar prog{this, "prog"};
    ui::CommonDialog CommonDialog1{this, "CommonDialog1"};
    MEnc2 test;

    void Combo1_Click();
    void Combo2_Click();
    void Combo3_Click();
    void Combo4_Click();
    void Option1_Click();
    void Option2_Click();
    void Command1_Click();
    void Command2_Click();
    void Command3_Click();
    void test_encoderProgress(double p);

private:
    void chooseFile(bool save, ui::TextBox& into);
};

}  // namespace velaro::record
