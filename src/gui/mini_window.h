#pragma once
// frmMini on Qt: the compact face, a borderless strip of seven painted
// buttons, the time and the status strip.

#include "core/player/frm_mini.h"
#include "record_bindings.h"

namespace velaro::gui {

class MiniWindow : public FormWindow {
public:
    explicit MiniWindow(player::FrmMini& mini, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent*) override;
    void keyPressEvent(QKeyEvent* e) override;
    void moveEvent(QMoveEvent* e) override;

private:
    player::FrmMini& m_;
};

}  // namespace velaro::gui
