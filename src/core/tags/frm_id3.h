#pragma once
// "ID3 Editor": the small dialog that shows what clsMP3Info reads and saves
// the texts through WriteId3. Its save always resets the genre to 0.

#include "../ui/form.h"

namespace velaro::tags {

class FrmID3 : public ui::Form {
public:
    explicit FrmID3(ui::Runtime& rt);

    ui::TextBox txtFilename{this, "txtFilename"};
    ui::TextBox txtSong{this, "txtSong"};
    ui::TextBox txtArtist{this, "txtArtist"};
    ui::TextBox txtAlbum{this, "txtAlbum"};
    ui::TextBox txtYear{this, "txtYear"};
    ui::TextBox txtGenre{this, "txtGenre"};
    ui::TextBox txtComments{this, "txtComments"};
    ui::CommandButton cmdSave{this, "cmdSave"};
    ui::CommandButton cmdCancel{this, "cmdCancel"};

    // Set before the form is shown.
    std::string Filename;
    // The error of the last save, empty when it went through (the dialog's caller sees it).
    std::string saveError;

    void cmdSave_Click();

protected:
    void Form_Load() override;
};

}  // namespace velaro::tags
