#include "qt_window_service.h"

#include <QWindow>

namespace velaro::gui {

QWidget* QtWindowService::window(ui::Form& form) const {
    auto it = windows_.find(&form);
    return it == windows_.end() ? nullptr : it->second.data();
}

void QtWindowService::setTopMost(ui::Form& form, bool on) {
    QWidget* w = window(form);
    if (!w) return;
    const bool shown = w->isVisible();
    w->setWindowFlag(Qt::WindowStaysOnTopHint, on);
    if (shown) w->show();  // changing a flag hides the window
}

void QtWindowService::setOpacity(ui::Form& form, int alpha) {
    if (QWidget* w = window(form)) w->setWindowOpacity(alpha / 255.0);
}

void QtWindowService::startMove(ui::Form& form) {
    QWidget* w = window(form);
    if (w && w->windowHandle()) w->windowHandle()->startSystemMove();
}

}  // namespace velaro::gui
