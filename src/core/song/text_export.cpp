// Saving the words: the plain lyrics, or the lyrics with the stamps taken
// while the song played. A single print writes the text, so one more CR LF
// ends the file.

#include "../base/paths.h"
#include "../base/vb_error.h"
#include "../shell/frm_main.h"

namespace velaro::song {

namespace {

void saveText(frmMain& f, ui::CommonDialog& dialog, const char* title, const char* filter, const std::string& text) {
    dialog.FileName.clear();
    dialog.Filter = filter;
    dialog.FilterIndex = 1;
    dialog.DialogTitle = title;
    dialog.CancelError = true;
    try {
        dialog.ShowSave();
    } catch (const std::exception&) {
        return;  // Cancel ends the command without a word.
    }
    if (dialog.FileName.empty()) return;
    try {
        writeWholeFile(dialog.FileName, text + "\r\n");
    } catch (const std::exception& e) {
        // The old file is still there; the stamps are still in the box.
        f.reportWriteFailure(e);
    }
}

}  // namespace

void frmMain::SaveT_Click() { saveText(*this, CMDialog1, "Save Text", "File testo (*.txt)|*.txt", fullLyricText); }

void frmMain::SaveSyncro_Click() {
    saveText(*this, CMDialog1, "Save Text & Syncro", "File Syncro (*.txt)|*.txt|Lrc File (*.lrc)|*.lrc",
             Text2.text());
}

void frmMain::reportWriteFailure(const std::exception& e) {
    rt.dialogs.msgBox(e.what(), ui::vbExclamation, "VELARO DECK");
}

}  // namespace velaro::song
