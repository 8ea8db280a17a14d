#pragma once
// The encoder's and normaliser's windows pick their wave files the same way.

#include <string>

#include "../ui/common_dialog.h"
#include "../ui/control.h"

namespace velaro::record {

// Shows the open or save dialog with `filter`; the chosen name goes into the
// box, and a cancelled choice leaves the box as it was.
inline void chooseWaveFile(ui::CommonDialog& dialog, const char* filter, bool save, ui::TextBox& into) {
    dialog.Filter = filter;
    dialog.FileName.clear();
    dialog.CancelError = true;
    try {
        if (save) dialog.ShowSave();
        else dialog.ShowOpen();
    } catch (const std::exception&) {
        return;
    }
    into.setText(dialog.FileName);
}

}  // namespace velaro::record
