#include "seek_bar.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPalette>

namespace velaro::gui {

SeekBar::SeekBar(song::frmMain& form, QWidget* parent) : QWidget(parent), f_(form) {
    setMinimumHeight(22);
    setCursor(Qt::PointingHandCursor);
    auto refresh = [this](ui::Control&) {
        setVisible(f_.Picture4.visible());
        update();
    };
    f_.Command9.addObserver(refresh);
    f_.Picture4.addObserver(refresh);
}

double SeekBar::toModel(double x) const { return x * f_.Picture4.width() / std::max(1, width()); }

QRectF SeekBar::thumbRect() const {
    const double scale = width() / std::max(1.0, f_.Picture4.width());
    return QRectF(f_.Command9.left() * scale, 2, std::max(10.0, f_.Command9.width() * scale), height() - 4);
}

void SeekBar::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QPalette& pal = palette();
    const QRectF groove(0, height() / 2.0 - 3, width(), 6);
    p.setPen(Qt::NoPen);
    p.setBrush(pal.color(QPalette::Mid));
    p.drawRoundedRect(groove, 3, 3);
    const QRectF thumb = thumbRect();
    p.setBrush(pal.color(QPalette::Highlight));
    p.drawRoundedRect(QRectF(0, groove.top(), thumb.center().x(), groove.height()), 3, 3);
    p.setBrush(pal.color(f_.Command9.enabled() ? QPalette::Button : QPalette::Window));
    p.setPen(pal.color(QPalette::Dark));
    p.drawRoundedRect(thumb, 4, 4);
}

void SeekBar::mousePressEvent(QMouseEvent* e) {
    if (e->button() != Qt::LeftButton || !thumbRect().contains(e->position())) return;
    dragging_ = true;
    const double x = toModel(e->position().x()) - f_.Command9.left();
    f_.Command9_MouseDown(1, 0, x, 0);
}

void SeekBar::mouseMoveEvent(QMouseEvent* e) {
    if (!dragging_) return;
    f_.Command9_MouseMove(1, 0, toModel(e->position().x()) - f_.Command9.left(), 0);
    update();
}

void SeekBar::mouseReleaseEvent(QMouseEvent* e) {
    if (!dragging_ || e->button() != Qt::LeftButton) return;
    dragging_ = false;
    f_.Command9_MouseUp(1, 0, toModel(e->position().x()), 0);
}

}  // namespace velaro::gui
