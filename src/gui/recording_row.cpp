// The take's row of the main window: the buttons bound to the recording part
// of the form, the lamp that flickers while a take runs, and the take format
// list that Wave Setup shows.

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include "bindings.h"
#include "main_window.h"
#include "record_bindings.h"

namespace velaro::gui {

namespace {

// The lamp shows the picture box's back colour (red in the low byte).
void bindLamp(ui::PictureBox& c, QLabel* w) {
    auto sync = [&c, w] {
        const uint32_t v = c.backColor();
        w->setStyleSheet(QString("background-color: rgb(%1,%2,%3); border-radius: 7px;")
                             .arg(v & 0xFF)
                             .arg((v >> 8) & 0xFF)
                             .arg((v >> 16) & 0xFF));
        w->setVisible(c.visible());
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
}

}  // namespace

QLayout* MainWindow::buildRecording(QWidget* box) {
    auto* row = new QHBoxLayout;
    for (ui::CommandButton* c : {&f_.cmdrec, &f_.cmdstop, &f_.cmdplaystop, &f_.Cmdplw, &f_.cmdstw}) {
        auto* b = new QPushButton(box);
        bindButton(*c, b);
        remember(*c, b);
        row->addWidget(b);
    }
    auto* lamp = new QLabel(box);
    lamp->setFixedSize(14, 14);
    lamp->setToolTip("Recording");
    bindLamp(f_.Picture2, lamp);
    remember(f_.Picture2, lamp);
    row->addWidget(lamp);
    auto* formats = new QComboBox(box);
    bindCombo(f_.cmbQuality, formats);
    remember(f_.cmbQuality, formats);
    row->addWidget(formats);
    row->addStretch();
    return row;
}

}  // namespace velaro::gui
