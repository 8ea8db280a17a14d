#pragma once
// Window operations the player windows ask of the desktop: stay on top,
// see-through, move with the mouse. A desktop without one of them ignores it.

namespace velaro::ui {
class Form;
}

namespace velaro::platform {

class WindowService {
public:
    virtual ~WindowService() = default;
    virtual void setTopMost(ui::Form& window, bool on) = 0;
    // Whether the desktop can make a window see-through.
    virtual bool layeredWindows() = 0;
    // 0 invisible .. 255 opaque.
    virtual void setOpacity(ui::Form& window, int alpha) = 0;
    // The window follows the mouse until the button goes up.
    virtual void startMove(ui::Form& window) = 0;
};

}  // namespace velaro::platform
