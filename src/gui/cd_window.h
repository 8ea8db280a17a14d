#pragma once
// "Velaro Cd Ripper" as a window: drives, the track list, transport, volume,
// balance, position, the two level bars, extraction with its progress and
// WMA options, and the drive info pane.

#include <QGroupBox>

#include "core/cd/frm_demo.h"
#include "record_bindings.h"

namespace velaro::gui {

class PageWidget;

class CdWindow : public FormWindow {
public:
    CdWindow(cd::frmDemo& form, QWidget* parent);
    ~CdWindow() override;

private:
    cd::frmDemo& f_;
    QGroupBox* info_ = nullptr;
    PageWidget* meters_[2] = {nullptr, nullptr};
};

}  // namespace velaro::gui
