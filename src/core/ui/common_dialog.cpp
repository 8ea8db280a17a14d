#include "common_dialog.h"

#include "../base/vb_error.h"
#include "form.h"

namespace velaro::ui {

void CommonDialog::file(bool save) {
    FileDialogRequest req{DialogTitle, Filter, FilterIndex, InitDir, DefaultExt, FileName, Flags};
    Dialogs& d = owner()->rt.dialogs;
    FileDialogResult r = save ? d.showSave(req) : d.showOpen(req);
    if (r.cancelled) {
        if (CancelError) throw VbError(VbErr::CancelError, "Cancel was selected.");
        return;
    }
    FileName = r.fileName;
    FilterIndex = r.filterIndex;
}

void CommonDialog::ShowOpen() { file(false); }
void CommonDialog::ShowSave() { file(true); }

void CommonDialog::ShowColor() {
    auto c = owner()->rt.dialogs.showColor(Color);
    if (!c) {
        if (CancelError) throw VbError(VbErr::CancelError, "Cancel was selected.");
        return;
    }
    Color = *c;
}

void CommonDialog::ShowFont() {
    auto f = owner()->rt.dialogs.showFont(FontValue);
    if (!f) {
        if (CancelError) throw VbError(VbErr::CancelError, "Cancel was selected.");
        return;
    }
    FontValue = *f;
}

}  // namespace velaro::ui
