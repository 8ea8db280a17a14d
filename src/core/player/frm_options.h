#pragma once
// "Player Options": the playlist's four options and the player title. The
// boxes are written back to the playlist when the dialog closes.

#include "../ui/form.h"

namespace velaro::player {

class pList;

class FrmOptions : public ui::Form {
public:
    FrmOptions(ui::Runtime& rt, pList& owner);

    ui::CheckBox cbSavePlaylist{this, "cbSavePlaylist"};
    ui::CheckBox cbDelete{this, "cbDelete"};
    ui::CheckBox cbScroll{this, "cbScroll"};
    ui::CheckBox cbSave{this, "cbSave"};
    ui::TextBox Text1{this, "Text1"};
    ui::Label Label1{this, "Label1"};

    // A key typed into Text1, before it lands in the box. Throws when no row
    // of the playlist is selected, as the caption it composes needs one.
    void Text1_KeyPress(char key);

protected:
    void Form_Load() override;
    void Form_Unload(int& cancel) override;

private:
    pList& list_;
};

}  // namespace velaro::player
