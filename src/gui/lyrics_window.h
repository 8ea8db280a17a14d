#pragma once
// "Velaro  Mp3 Karaoke" on screen: the lyrics window's labels drawn where
// the form puts them, in their colours, ten lines to the page.

#include <QTimer>

#include "core/tags/frm_lyrics.h"
#include "record_bindings.h"

namespace velaro::gui {

class LyricsWindow : public FormWindow {
public:
    LyricsWindow(tags::FrmLyrics& form, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* e) override;

private:
    tags::FrmLyrics& lyrics_;
    QTimer repaint_;
    int lineHeight_ = 0;
    int header_ = 0;
};

}  // namespace velaro::gui
