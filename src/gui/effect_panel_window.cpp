#include "effect_panel_window.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QRadioButton>
#include <QSlider>

#include "bindings.h"

namespace velaro::gui {

EffectPanelWindow::EffectPanelWindow(record::EffectPanel& panel, QWidget* parent) : FormWindow(panel, parent) {
    setObjectName(QString::fromStdString(panel.name()));
    auto* grid = new QGridLayout(this);
    grid->setColumnMinimumWidth(1, 260);
    int row = 0;
    // The panel's controls in the order the form holds them.
    for (ui::Control* c : panel.controls()) {
        if (auto* s = dynamic_cast<ui::Slider*>(c)) {
            auto* name = new QLabel(QString::fromStdString(s->caption()).trimmed(), this);
            if (name->text().isEmpty()) name->setText(QString::fromStdString(s->name()));
            auto* w = new QSlider(Qt::Horizontal, this);
            w->setObjectName(QString::fromStdString(s->name()));
            w->setSingleStep(s->smallChange);
            w->setPageStep(s->largeChange);
            bindSlider(*s, w);
            auto* value = new QLabel(this);
            value->setMinimumWidth(48);
            value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
            auto show = [s, value] { value->setNum(s->value()); };
            show();
            s->addObserver([show](ui::Control&) { show(); });
            grid->addWidget(name, row, 0);
            grid->addWidget(w, row, 1);
            grid->addWidget(value, row, 2);
            ++row;
        } else if (auto* o = dynamic_cast<ui::OptionButton*>(c)) {
            auto* w = new QRadioButton(QString::fromStdString(o->caption()), this);
            bindOption(*o, w);
            grid->addWidget(w, row++, 1);
        } else if (auto* k = dynamic_cast<ui::CheckBox*>(c)) {
            auto* w = new QCheckBox(this);
            bindCheck(*k, w);
            grid->addWidget(w, row++, 1);
        }
    }
    auto* ok = new QPushButton(this);
    bindButton(panel.cmdok, ok);
    grid->addWidget(ok, row, 2);
    follow();
}

}  // namespace velaro::gui
