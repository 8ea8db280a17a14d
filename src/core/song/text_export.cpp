// Saving the words: the plain lyrics, or the lyrics with the stamps taken
// while the song played. A single print writes the text, so one more CR LF
// ends the file.

#include "../base/paths.h"
#include "../base/vb_error.h"
#include "frm_main.h"

namespace velaro::song {

namespace {

void saveText(ui::CommonDialog& dialog, const char* title, const char* filter, const std::string& text) {
    dialog.FileName.clear();
    dialog.Filter = filter;
    dialog.FilterIndex = 1;
    dialog.DialogTitle = title;
    dialog.CancelError = true;
    try {
        dialog.ShowSave();
        if (!dialog.FileName.empty()) writeWholeFile(dialog.FileName, text + "\r\n");
    } catch (const std::exception&) {
        // Cancel or a failed write ends the command without a word.
    }
}

}  // namespace

void frmMain::SaveT_Click() { saveText(CMDialog1, "Save Text", "File testo (*.txt)|*.txt", fullLyricText); }

void frmMain::SaveSyncro_Click() {
    saveText(CMDialog1, "Save Text & Syncro", "File Syncro (*.txt)|*.txt|Lrc File (*.lrc)|*.lrc", Text2.text());
}

}  // namespace velaro::song
