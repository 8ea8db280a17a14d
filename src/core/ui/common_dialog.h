#pragma once
// The common dialog control: file dialog settings kept as properties between
// uses, FileName included, shown through the dialog service.

#include <string>

#include "control.h"

namespace velaro::ui {

class CommonDialog : public Control {
public:
    using Control::Control;
    std::string DialogTitle;
    std::string Filter;
    int FilterIndex = 1;
    std::string InitDir;
    std::string DefaultExt;
    std::string FileName;
    int Flags = 0;
    bool CancelError = false;
    uint32_t Color = 0;
    Font FontValue;

    // Cancel with CancelError set is the runtime's cancel error.
    void ShowOpen();
    void ShowSave();
    void ShowColor();
    void ShowFont();

private:
    void file(bool save);
};

}  // namespace velaro::ui
