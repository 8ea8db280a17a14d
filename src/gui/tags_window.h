#pragma once
// The tag editor on screen: the ID3v1 fields and MPEG facts on one page, the
// lyric text with its caret, Add, Undo and the transport on the other, and
// the Save, Cancel and Exit buttons. The caret is the form's: stamps land
// where it stands and it walks down the lines as they are stamped.

#include <QPlainTextEdit>
#include <QSlider>

#include "core/tags/frm_tags.h"
#include "record_bindings.h"

namespace velaro::gui {

class LyricsWindow;

// Caret positions between the form's CR LF text and the editor's one-character line ends.
int qtCaretOf(const std::string& text, int offset);
int modelCaretOf(const std::string& text, int qtPosition);

class TagsWindow : public FormWindow {
public:
    TagsWindow(tags::FrmTags& form, QWidget* parent);
    ~TagsWindow() override;
    QPlainTextEdit* lyricsEditor() const { return lyrics_; }
    LyricsWindow* lyricsWindow() const { return lyricsWindow_; }

private:
    void caretFromForm();
    tags::FrmTags& tags_;
    QPlainTextEdit* lyrics_ = nullptr;
    QSlider* position_ = nullptr;
    QSlider* volume_ = nullptr;
    LyricsWindow* lyricsWindow_ = nullptr;
};

}  // namespace velaro::gui
