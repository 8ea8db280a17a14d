#pragma once
// "Wav to Mp3" as a window: files, the encoder's settings and a real progress bar.

#include "core/record/form1.h"
#include "record_bindings.h"

namespace velaro::gui {

class Form1Window : public FormWindow {
public:
    Form1Window(record::Form1& form, QWidget* parent);
};

}  // namespace velaro::gui
