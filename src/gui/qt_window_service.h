#pragma once
// The window helpers on Qt: stay on top through the window flag, see-through
// through the window opacity, and a drag handed to the window system.

#include <QPointer>
#include <QWidget>
#include <map>

#include "core/platform/window_service.h"

namespace velaro::gui {

class QtWindowService : public platform::WindowService {
public:
    void attach(ui::Form& form, QWidget* window) { windows_[&form] = window; }
    void setTopMost(ui::Form& form, bool on) override;
    bool layeredWindows() override { return true; }
    void setOpacity(ui::Form& form, int alpha) override;
    void startMove(ui::Form& form) override;

private:
    QWidget* window(ui::Form& form) const;
    std::map<ui::Form*, QPointer<QWidget>> windows_;
};

}  // namespace velaro::gui
