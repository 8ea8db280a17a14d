#pragma once
// The main form's encoding part: the bit-rate setup list, "Encode Mp3" and
// "Encode Stop" with the encoder control MEnc1 and its progress bar, and the
// two windows it opens, "Wav to Mp3" and the normaliser.

#include <string>

#include "../ui/control.h"
#include "encoder_controls.h"
#include "form1.h"
#include "form11.h"

namespace velaro::song {
class frmMain;
}

namespace velaro::record {

struct MainEncoding {
    explicit MainEncoding(song::frmMain& form);

    song::frmMain& f;
    ui::ProgressBar prog;
    ui::ComboBox Combo2;  // "BitRate", shown by Mmp3
    MEnc2 MEnc1;
    // The backing to encode instead of the take; nothing ever sets it but to "".
    std::string backingPath;
    Form1 form1;
    Form11 form11;

    void Mmp3_Click();
    void Combo2_Click();
    void cmdSave_Click();
    void encstop_Click();
    void wavp3_Click();
    void MnuNorm_Click();
    // The two handlers of MEnc1's progress event, in this order.
    void MEnc1_encoderProgress(double p);
    void MEnc1_encoderProgressGuarded(double p);
    // The take was saved under `chosenName`: with normalizeAfterSave on, the
    // normaliser opens set to raise the take into that file.
    void takeSaved(const std::string& chosenName);
    // The file cmdSave encodes: the backing when there is one, else the take.
    std::string encodeInput() const;
};

}  // namespace velaro::record
