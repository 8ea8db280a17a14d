#include "frm_lyrics.h"

#include "../base/byte_text.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "frm_tags.h"

namespace velaro::tags {

namespace {

void setBold(ui::Label& l, bool on) {
    ui::Font f = l.font();
    f.bold = on;
    l.setFont(f);
}

}  // namespace

FrmLyrics::FrmLyrics(ui::Runtime& rt, TagsState& state, const settings::mConfig& config)
    : ui::Form(rt, "frmLyrics"), state_(state), config_(config) {
    caption = "Velaro  Mp3 Karaoke";
    lblLyrics(0).setCaption("Letras");
    lblLyrics(0).setHeight(kLyricLabelHeight);
    lblNoLyrics.setCaption("[ no lyrics found ]");
    LyricsRef.sorted = true;
    LyricsRef.setVisible(false);
}

void FrmLyrics::Form_Load() {
    state_.LyricsWindowOpen = true;
    const auto back = static_cast<uint32_t>(config_.ReadColor("Skin", "RepBackColor", 0x000000));
    picLyrics.setBackColor(back);
    picBody.setBackColor(back);
    const auto fore = static_cast<uint32_t>(config_.ReadColor("Skin", "RepForeColor", 0xFFFFFF));
    picLyrics.setForeColor(fore);
    lblNoLyrics.setForeColor(fore);
    if (!state_.mmp3.LyricsSeen) Lblyr.setCaption("No lyrics found!");
    if (editor) {
        lblAlbum.setCaption(editor->txtAlbum.text());
        lblArtist.setCaption(editor->txtArtist.text());
        lblTitle.setCaption(editor->txtTitle.text());
    }
    Order_lblLyrics();
    ui::Font f = lblLyrics(0).font();
    f.size = 14;
    lblLyrics(0).setFont(f);
}

void FrmLyrics::Form_Unload(int&) {
    state_.LyricsWindowOpen = false;
    // Unloading ends the labels loaded at run time and brings back the design's captions.
    for (int i = lblLyrics.ubound(); i > 0; --i) lblLyrics.unload(i);
    ui::Label& first = lblLyrics(0);
    first.setCaption("Letras");
    first.setForeColor(0x000000);
    first.move(first.left(), 0);
    ui::Font f = first.font();
    f.bold = false;
    first.setFont(f);
    Lblyr.setCaption("");
    LyricsRef.clear();
    picLyrics.move(picLyrics.left(), 0);
    lyricIndex = pageLine = lyricLast = 0;
}

void FrmLyrics::Order_lblLyrics() {
    if (LyricsRef.listCount() == 0) return;
    lyricForeColor = lblNoLyrics.foreColor();
    lyricIndex = pageLine = 0;
    lyricLast = checked16(LyricsRef.listCount());
    picLyrics.move(picLyrics.left(), 0);
    setBold(lblLyrics(0), false);
    double sum = 0;
    for (int i = 0; i < LyricsRef.listCount(); ++i) {
        if (!lblLyrics.exists(i)) {
            // A new element starts as a copy of the first, as loading one did.
            ui::Label& l = lblLyrics.load(i);
            const ui::Label& model = lblLyrics(0);
            l.setFont(model.font());
            l.setWidth(model.width());
            l.setHeight(model.height());
            l.setBackColor(model.backColor());
        }
        ui::Label& l = lblLyrics(i);
        if (i > 0) {
            const ui::Label& above = lblLyrics(i - 1);
            l.move(above.left(), above.top() + above.height());
        }
        l.setCaption(mid(LyricsRef.list(i), 10));
        l.setForeColor(lyricForeColor);
        l.setVisible(true);
        sum += l.height();
    }
    picLyrics.setHeight(sum);
    lblLyrics(0).setForeColor(kLyricRed);
    setBold(lblLyrics(0), true);
}

void FrmLyrics::Move_Next_Focus_Lyrics() {
    ++lyricIndex;
    if (lyricIndex > lyricLast) {
        lyricIndex = lyricLast;
        return;
    }
    ++pageLine;
    if (pageLine > 9) {
        pageLine = 0;
        resumeNext([&] { picLyrics.move(picLyrics.left(), -(lblLyrics(0).height() * lyricIndex)); });
    }
    resumeNext([&] {
        lblLyrics(lyricIndex - 1).setForeColor(kLyricSung);
        setBold(lblLyrics(lyricIndex - 1), false);
    });
    resumeNext([&] {
        setBold(lblLyrics(lyricIndex), true);
        lblLyrics(lyricIndex).setForeColor(kLyricRed);
    });
}

void FrmLyrics::Move_Previous_Focus_Lyrics() {
    --lyricIndex;
    if (lyricIndex < 0) {
        lyricIndex = pageLine = 0;
        return;
    }
    --pageLine;
    if (pageLine < 0) pageLine = 9;
    // Only the marks move back; the column stays where it is.
    resumeNext([&] { setBold(lblLyrics(lyricIndex + 1), false); });
    resumeNext([&] { setBold(lblLyrics(lyricIndex), true); });
}

void FrmLyrics::Reset_Values() {
    pageLine = 0;
    if (lyricIndex > 0) resumeNext([&] { setBold(lblLyrics(lyricIndex), false); });
    lyricIndex = 0;
    lyricLast = checked16(LyricsRef.listCount());
    picLyrics.move(picLyrics.left(), 0);
    resumeNext([&] { setBold(lblLyrics(0), true); });
}

std::string FrmLyrics::highlightedText() const { return LyricsRef.list(lyricIndex); }

}  // namespace velaro::tags
