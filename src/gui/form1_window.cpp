#include "form1_window.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QRadioButton>

#include "bindings.h"

namespace velaro::gui {

Form1Window::Form1Window(record::Form1& f, QWidget* parent) : FormWindow(f, parent) {
    auto* grid = new QGridLayout(this);
    int row = 0;
    auto fileRow = [&](ui::TextBox& text, ui::CommandButton& browse) {
        grid->addWidget(new QLabel(QString::fromStdString(text.caption()), this), row, 0);
        auto* line = new QLineEdit(this);
        line->setMinimumWidth(320);
        bindLine(text, line);
        grid->addWidget(line, row, 1, 1, 2);
        auto* b = new QPushButton(this);
        bindButton(browse, b);
        grid->addWidget(b, row, 3);
        ++row;
    };
    fileRow(f.Text1, f.Command1);
    fileRow(f.Text2, f.Command2);

    auto combo = [&](ui::ComboBox& c, int column) {
        auto* label = new QLabel(QString::fromStdString(c.caption()), this);
        auto* box = new QComboBox(this);
        bindCombo(c, box);
        // The caption goes and comes with its list.
        c.addObserver([label, &c](ui::Control&) { label->setVisible(c.visible()); });
        label->setVisible(c.visible());
        grid->addWidget(label, row, column);
        grid->addWidget(box, row + 1, column);
    };
    combo(f.Combo1, 0);
    combo(f.Combo2, 1);
    combo(f.Combo3, 1);
    combo(f.Combo4, 2);
    row += 2;

    auto* vbr = new QRadioButton(this);
    bindOption(f.Option1, vbr);
    auto* cbr = new QRadioButton(this);
    bindOption(f.Option2, cbr);
    auto* crc = new QCheckBox(this);
    bindCheck(f.Check1, crc);
    auto* intensity = new QCheckBox(this);
    bindCheck(f.Check2, intensity);
    grid->addWidget(vbr, row, 0);
    grid->addWidget(cbr, row, 1);
    grid->addWidget(crc, row, 2);
    grid->addWidget(intensity, row, 3);
    ++row;

    auto* bar = new QProgressBar(this);
    bindProgress(f.prog, bar);
    grid->addWidget(bar, row, 0, 1, 3);
    auto* encode = new QPushButton(this);
    bindButton(f.Command3, encode);
    grid->addWidget(encode, row, 3);
    follow();
}

}  // namespace velaro::gui
