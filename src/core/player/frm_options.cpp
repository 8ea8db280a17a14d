#include "frm_options.h"

#include "plist.h"

namespace velaro::player {

FrmOptions::FrmOptions(ui::Runtime& rt, pList& owner) : ui::Form(rt, "frmOptions"), list_(owner) {
    caption = "Player Options";
    cbSavePlaylist.setCaption("Salva la lista ed esci");
    cbDelete.setCaption("Conferma eliminazione Mp3");
    cbScroll.setCaption("Scroll Titoli");
    cbSave.setCaption("Salva settaggi ed esci");
    Label1.setCaption("Player");
    cbScroll.Click = [this] { list_.ScrollTitle = cbScroll.value() != 0; };
}

void FrmOptions::Form_Load() {
    // The title box is left as designed, not filled with the current title.
    if (list_.SavePlaylistOnExit) cbSavePlaylist.setValue(1);
    if (list_.ConfirmDelete) cbDelete.setValue(1);
    if (list_.ScrollTitle) cbScroll.setValue(1);
    if (list_.SaveSettingsOnExit) cbSave.setValue(1);
}

void FrmOptions::Form_Unload(int&) {
    list_.SavePlaylistOnExit = cbSavePlaylist.value() != 0;
    list_.ConfirmDelete = cbDelete.value() != 0;
    list_.ScrollTitle = cbScroll.value() != 0;
    list_.SaveSettingsOnExit = cbSave.value() != 0;
    // An empty box blanks the title: that is how the user clears it.
    list_.PlayerTitle = Text1.text();
    // The boxes go with the dialog: the next load starts from the design again.
    const ui::Handler scroll = cbScroll.Click;
    cbScroll.Click = nullptr;
    for (ui::CheckBox* c : {&cbSavePlaylist, &cbDelete, &cbScroll, &cbSave}) c->setValue(0);
    cbScroll.Click = scroll;
    Text1.setText("");
}

void FrmOptions::Text1_KeyPress(char key) {
    list_.PlayerTitle = Text1.text() + key;
    const int sel = list_.lstPlayList1.selectedItem();
    const ListItem& row = list_.lstPlayList1.item(sel);  // no row selected: the error goes up
    list_.windowTitle = list_.PlayerTitle + " - [" + row.subItems[0] + "-" + row.subItems[1] + "]  ";
    list_.caption = list_.windowTitle;
    list_.notifyGeometry();
}

}  // namespace velaro::player
