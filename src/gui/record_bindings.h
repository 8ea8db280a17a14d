#pragma once
// Bindings the encoding windows need beyond the common ones: drop-down
// lists, one-line texts, progress bars, a button whose handler may stop with
// a run-time error, and a top-level window that follows its form.

#include <QComboBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QWidget>

#include "core/ui/control.h"
#include "core/ui/form.h"

namespace velaro::gui {

void bindCombo(ui::ComboBox& c, QComboBox* w);
void bindLine(ui::TextBox& c, QLineEdit* w);
void bindProgress(ui::ProgressBar& c, QProgressBar* w);
// A run-time error out of the handler shows as the runtime's error box.
void bindButtonShowingErrors(ui::CommandButton& c, QAbstractButton* w);

// A window that is shown and hidden with its form, shows its caption, and
// unloads the form when the user closes it.
class FormWindow : public QWidget {
public:
    FormWindow(ui::Form& form, QWidget* parent);

protected:
    void closeEvent(QCloseEvent* e) override;
    void follow();
    ui::Form& form_;
};

}  // namespace velaro::gui
