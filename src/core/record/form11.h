#pragma once
// " Normalize Wave File": a wave file raised to a percentage of full level by
// the normaliser control. The percent used last is kept in the main form's
// configuration.

#include <string>

#include "../platform/platform.h"
#include "../ui/common_dialog.h"
#include "../ui/form.h"
#include "encoder_controls.h"

namespace velaro::record {

class Form11 : public ui::Form {
public:
    // `normalizePercent` is the configuration's field, which Start updates.
    Form11(ui::Runtime& rt, platform::Platform& platform, std::string& normalizePercent);

    ui::TextBox Text1{this, "Text1"};  // source
    ui::TextBox Text2{this, "Text2"};  // target
    ui::TextBox Text3{this, "Text3"};  // percent
    ui::Label Label1{this, "Label1"};
    ui::Label Label2{this, "Label2"};  // progress as "00 %"
    ui::ProgressBar prog{this, "prog"};
    ui::CommandButton Command1{this, "Command1"};
    ui::CommandButton Command2{this, "Command2"};
    ui::CommandButton Command3{this, "Command3"};  // "Start"
    ui::CommonDialog CommonDialog1{this, "CommonDialog1"};
    DGPNorm norm;

    void Command1_Click();
    void Command2_Click();
    // A percent that is no number stops here with the runtime's type mismatch.
    void Command3_Click();
    void norm_Progress(double p);

private:
    void chooseFile(bool save, ui::TextBox& into);
    std::string& normalizePercent_;
};

}  // namespace velaro::record
