#pragma once
// The backing player's panel in the main window: the player label, the
// vocal remover and bass boost boxes, the two eight-band equalisers
// (`vseq` in `Frame4`, `Veq1`), the bass stream's level `Slider3`, `vcompr`,
// and the backing's key and speed. Bound to the form's backing part.

#include <functional>

#include <QWidget>

#include "core/record/main_backing.h"

namespace velaro::gui {

// `remember` hands each widget to the window's control-to-widget map.
QWidget* buildBackingPanel(record::MainBacking& b, QWidget* parent,
                           const std::function<void(ui::Control&, QWidget*)>& remember);

}  // namespace velaro::gui
