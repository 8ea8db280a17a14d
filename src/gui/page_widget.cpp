#include "page_widget.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QResizeEvent>

#include <algorithm>

#include "core/base/cp1252.h"

namespace velaro::gui {

QColor qcolor(uint32_t c) { return QColor(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF); }

namespace {
QString text(std::string_view bytes) { return QString::fromStdString(cp1252ToUtf8(bytes)); }
}  // namespace

PageWidget::PageWidget(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(480, 220);
    backColor = 0x201810;  // a deep blue-black, easy on the eyes in a dark room
    ui::Canvas::font.name = "tahoma";
    ui::Canvas::font.size = 18;
    ui::Canvas::font.bold = true;
}

QFont PageWidget::qfont() const {
    const ui::Font& page = ui::Canvas::font;
    QFont f(QString::fromStdString(page.name));
    // The configured size is for a page about 320 pixels high; a bigger
    // page gets bigger words, so they read from across a room.
    const double zoom = std::clamp(height() / 320.0, 1.0, 3.0);
    f.setPointSizeF((page.size > 0 ? page.size : 18) * zoom);
    f.setBold(page.bold);
    f.setItalic(page.italic);
    f.setUnderline(page.underline);
    f.setStrikeOut(page.strikethrough);
    return f;
}

void PageWidget::ensureImage() {
    const qreal dpr = devicePixelRatioF();
    const QSize want = size() * dpr;
    if (image_.size() == want) return;
    QImage next(want, QImage::Format_RGB32);
    next.setDevicePixelRatio(dpr);
    next.fill(qcolor(backColor));
    if (!image_.isNull()) {
        QPainter p(&next);
        p.drawImage(0, 0, image_);
    }
    image_ = next;
}

void PageWidget::cls() {
    ensureImage();
    image_.fill(qcolor(backColor));
    shown_.clear();
    currentX = currentY = 0;
    update();
}

void PageWidget::print(std::string_view bytes, bool lineEnd) {
    ensureImage();
    const QFont f = qfont();
    const QFontMetricsF fm(f);
    {
        QPainter p(&image_);
        p.setRenderHint(QPainter::TextAntialiasing);
        p.setFont(f);
        p.setPen(qcolor(foreColor));
        p.drawText(QPointF(currentX, currentY + fm.ascent()), text(bytes));
    }
    shown_.emplace_back(std::string(bytes), foreColor);
    if (lineEnd) {
        currentX = 0;
        currentY += fm.height();
    } else {
        currentX += fm.horizontalAdvance(text(bytes));
    }
    update();
}

double PageWidget::textWidth(std::string_view bytes) const { return QFontMetricsF(qfont()).horizontalAdvance(text(bytes)); }

double PageWidget::textHeight(std::string_view) const { return QFontMetricsF(qfont()).height(); }

void PageWidget::line(double x1, double y1, double x2, double y2, uint32_t color) {
    ensureImage();
    QPainter p(&image_);
    p.setPen(qcolor(color));
    p.drawLine(QPointF(x1, y1), QPointF(x2, y2));
    update();
}

void PageWidget::fillBox(double x1, double y1, double x2, double y2, uint32_t color) {
    ensureImage();
    QPainter p(&image_);
    p.fillRect(QRectF(QPointF(x1, y1), QPointF(x2, y2)), qcolor(color));
    update();
}

void PageWidget::paintEvent(QPaintEvent*) {
    ensureImage();
    QPainter p(this);
    p.drawImage(0, 0, image_);
}

void PageWidget::resizeEvent(QResizeEvent* e) {
    ensureImage();
    QWidget::resizeEvent(e);
}

}  // namespace velaro::gui
