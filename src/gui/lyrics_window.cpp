#include "lyrics_window.h"

#include <QFontMetrics>
#include <QPainter>

#include "core/base/cp1252.h"

namespace velaro::gui {

namespace {

QColor colour(uint32_t c) { return QColor(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF); }
QString shown(const std::string& bytes) { return QString::fromStdString(cp1252ToUtf8(bytes)); }

}  // namespace

LyricsWindow::LyricsWindow(tags::FrmLyrics& form, QWidget* parent) : FormWindow(form, parent), lyrics_(form) {
    QFont f = font();
    f.setPointSize(14);
    setFont(f);
    // A label is as high as a line of the window's font; the form places them by it.
    lineHeight_ = QFontMetrics(f).height() + 4;
    header_ = 3 * QFontMetrics(QFont()).height() + 16;
    form.lblLyrics(0).setHeight(lineHeight_);
    setFixedSize(460, header_ + 10 * lineHeight_ + 8);
    // The form recolours its labels without telling anyone: redraw while shown.
    repaint_.setInterval(50);
    QObject::connect(&repaint_, &QTimer::timeout, this, [this] { update(); });
    repaint_.start();
    follow();
}

void LyricsWindow::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const QColor back = colour(lyrics_.picBody.backColor());
    p.fillRect(rect(), back);
    QFont small;
    p.setFont(small);
    p.setPen(colour(lyrics_.lblNoLyrics.foreColor()));
    const int sh = QFontMetrics(small).height();
    p.drawText(8, 4 + sh, shown(lyrics_.lblTitle.caption()));
    p.drawText(8, 4 + 2 * sh, shown(lyrics_.lblArtist.caption()) + "  " + shown(lyrics_.lblAlbum.caption()));
    if (!lyrics_.Lblyr.caption().empty()) p.drawText(8, 4 + 3 * sh, shown(lyrics_.Lblyr.caption()));

    const QRect page(0, header_, width(), 10 * lineHeight_ + 4);
    p.setClipRect(page);
    if (lyrics_.LyricsRef.listCount() == 0) {
        p.setPen(colour(lyrics_.lblNoLyrics.foreColor()));
        p.drawText(page, Qt::AlignCenter, shown(lyrics_.lblNoLyrics.caption()));
        return;
    }
    p.fillRect(page, colour(lyrics_.picLyrics.backColor()));
    for (int i = 0; i < lyrics_.LyricsRef.listCount(); ++i) {
        if (!lyrics_.lblLyrics.exists(i)) continue;
        const ui::Label& l = lyrics_.lblLyrics(i);
        if (!l.visible()) continue;
        const int y = header_ + static_cast<int>(lyrics_.picLyrics.top() + l.top());
        if (y + lineHeight_ < page.top() || y > page.bottom()) continue;
        QFont f = font();
        f.setBold(l.font().bold);
        p.setFont(f);
        p.setPen(colour(l.foreColor()));
        p.drawText(QRect(12, y, width() - 24, lineHeight_), Qt::AlignVCenter | Qt::AlignLeft, shown(l.caption()));
    }
}

}  // namespace velaro::gui
