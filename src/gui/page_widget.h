#pragma once
// The lyric page: a canvas painted with QPainter into a backing image, shown
// by the widget. The page's own arithmetic works in the widget's pixels.

#include <QImage>
#include <QWidget>

#include <string>
#include <vector>

#include "core/ui/canvas.h"

namespace velaro::gui {

class PageWidget : public QWidget, public ui::Canvas {
public:
    explicit PageWidget(QWidget* parent = nullptr);

    void cls() override;
    void print(std::string_view text, bool lineEnd) override;
    double textWidth(std::string_view text) const override;
    double textHeight(std::string_view text) const override;
    void line(double x1, double y1, double x2, double y2, uint32_t color) override;
    void fillBox(double x1, double y1, double x2, double y2, uint32_t color) override;
    void paintCell(int, int, double, double) override {}
    double scaleWidth() const override { return width(); }
    double scaleHeight() const override { return height(); }

    // What the page shows now, one entry per print since the last clear (for tests and views).
    const std::vector<std::pair<std::string, uint32_t>>& shown() const { return shown_; }

protected:
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;

private:
    QFont qfont() const;
    void ensureImage();
    QImage image_;
    std::vector<std::pair<std::string, uint32_t>> shown_;
};

QColor qcolor(uint32_t bgr);

}  // namespace velaro::gui
