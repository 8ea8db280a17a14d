#pragma once
// An effect panel as a small window: each slider with its caption and value,
// the options and the check box, and OK; the sound follows the thumb.

#include "core/record/effect_panels.h"
#include "record_bindings.h"

namespace velaro::gui {

class EffectPanelWindow : public FormWindow {
public:
    EffectPanelWindow(record::EffectPanel& panel, QWidget* parent);
};

}  // namespace velaro::gui
