#include "frm_id3.h"

#include "id3v1.h"

namespace velaro::tags {

FrmID3::FrmID3(ui::Runtime& rt) : ui::Form(rt, "FrmID3") {
    caption = "ID3 Editor";
    const std::pair<ui::Control*, const char*> captions[] = {
        {&txtFilename, "Nome File:"}, {&txtSong, "Titolo"},   {&txtArtist, "Artista:"},  {&txtAlbum, "Album:"},
        {&txtYear, "Anno:"},          {&txtGenre, "Genere: "}, {&txtComments, "Commenti:"}, {&cmdSave, "Salva"},
        {&cmdCancel, "Cancella"}};
    for (const auto& [c, text] : captions) c->setCaption(text);
    txtGenre.locked = true;  // shown only
    cmdSave.Click = [this] { cmdSave_Click(); };
    cmdCancel.Click = [this] { unload(); };
}

void FrmID3::Form_Load() {
    clsMP3Info info;
    info.setFilename(Filename);
    txtFilename.setText(Filename);
    txtSong.setText(info.Title());
    txtArtist.setText(info.Artist());
    txtAlbum.setText(info.Album());
    txtYear.setText(info.Year());
    txtGenre.setText(info.Genre());
    txtComments.setText(info.Comment());
}

void FrmID3::cmdSave_Click() {
    saveError.clear();
    try {
        // The genre box is not read: the record's genre byte stays 0.
        WriteId3(Filename, makeId3Fields(txtSong.text(), txtArtist.text(), txtAlbum.text(), txtYear.text(),
                                         txtComments.text(), 0));
    } catch (const std::exception& e) {
        saveError = e.what();
    }
    unload();
}

}  // namespace velaro::tags
