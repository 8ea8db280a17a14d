#pragma once
// The seek bar: the bar Picture4 and its thumb Command9, drawn to the
// widget's width; presses, drags and releases of the thumb go to the form in
// the bar's own units.

#include <QWidget>

#include "core/shell/frm_main.h"

namespace velaro::gui {

class SeekBar : public QWidget {
public:
    SeekBar(song::frmMain& form, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {400, 22}; }

protected:
    void paintEvent(QPaintEvent*) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;

private:
    double toModel(double x) const;
    QRectF thumbRect() const;
    song::frmMain& f_;
    bool dragging_ = false;
};

}  // namespace velaro::gui
