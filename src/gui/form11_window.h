#pragma once
// " Normalize Wave File" as a window: source, target, percent, a real progress bar.

#include "core/record/form11.h"
#include "record_bindings.h"

namespace velaro::gui {

class Form11Window : public FormWindow {
public:
    Form11Window(record::Form11& form, QWidget* parent);
};

}  // namespace velaro::gui
