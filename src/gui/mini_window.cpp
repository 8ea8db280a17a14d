#include "mini_window.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPointer>

#include "core/player/music_mp3.h"
#include "player_window.h"

namespace velaro::gui {

MiniWindow::MiniWindow(player::FrmMini& m, QWidget* parent) : FormWindow(m, parent), m_(m) {
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setFixedSize(int(m.picMini.width()), int(m.picMini.height()));
    setWindowTitle("MusicMp3 1.0");

    auto* back = new SkinCanvas(m.picMini, this);
    followGeometry(m.picMini, back);
    for (int i = 0; i < 7; ++i) {
        auto* b = new SkinCanvas(m.picNormal(i), this);
        followGeometry(m.picNormal(i), b);
    }
    auto* time = new SkinLabel(m.lblTiempoT, this);
    time->setAlignment(Qt::AlignCenter);
    time->setStyleSheet("color:#7cf0a0;background:transparent;font-size:11px;font-weight:bold;");
    followGeometry(m.lblTiempoT, time);
    auto* strip = new SkinCanvas(m.picScroll, this);
    followGeometry(m.picScroll, strip);

    for (int i = 0; i < 7; ++i) m.Images_Buttons(i, false);
    setFocusPolicy(Qt::StrongFocus);
    move(int(m.Left / player::kPlayerTwipsPerPixel), int(m.Top / player::kPlayerTwipsPerPixel));
    QPointer<MiniWindow> self(this);
    auto previous = m.rt.formStateChanged;
    m.rt.formStateChanged = [self, previous, &m](ui::Form& f) {
        // Placed before it shows, so the show reports the new place back.
        if (self && &f == &m && m.visible())
            self->move(int(m.Left / player::kPlayerTwipsPerPixel), int(m.Top / player::kPlayerTwipsPerPixel));
        if (previous) previous(f);
    };
}

void MiniWindow::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.drawPixmap(0, 0, SkinStrips::get().miniFondo);
}

void MiniWindow::moveEvent(QMoveEvent*) {
    // Only where the window really stands on screen counts.
    if (!isVisible()) return;
    m_.Left = x() * player::kPlayerTwipsPerPixel;
    m_.Top = y() * player::kPlayerTwipsPerPixel;
}

void MiniWindow::keyPressEvent(QKeyEvent* e) {
    const QString t = e->text();
    if (t.size() == 1 && t[0].unicode() < 128) m_.Form_KeyPress(char(t[0].unicode()));
}

}  // namespace velaro::gui
