#include "form11_window.h"

#include <QGridLayout>
#include <QLabel>

#include "bindings.h"

namespace velaro::gui {

Form11Window::Form11Window(record::Form11& f, QWidget* parent) : FormWindow(f, parent) {
    auto* grid = new QGridLayout(this);
    auto fileRow = [&](int row, const char* what, ui::TextBox& text, ui::CommandButton& browse) {
        grid->addWidget(new QLabel(what, this), row, 0);
        auto* line = new QLineEdit(this);
        line->setMinimumWidth(320);
        bindLine(text, line);
        grid->addWidget(line, row, 1, 1, 2);
        auto* b = new QPushButton(this);
        bindButton(browse, b);
        grid->addWidget(b, row, 3);
    };
    fileRow(0, "Wave", f.Text1, f.Command1);
    fileRow(1, "Normalized", f.Text2, f.Command2);

    auto* percent = new QLineEdit(this);
    percent->setMaximumWidth(80);
    bindLine(f.Text3, percent);
    grid->addWidget(percent, 2, 0);
    auto* label1 = new QLabel(this);
    bindLabel(f.Label1, label1);
    grid->addWidget(label1, 2, 1);

    auto* bar = new QProgressBar(this);
    bar->setTextVisible(false);
    bindProgress(f.prog, bar);
    grid->addWidget(bar, 3, 0, 1, 2);
    auto* label2 = new QLabel(this);
    bindLabel(f.Label2, label2);
    grid->addWidget(label2, 3, 2);
    auto* start = new QPushButton(this);
    bindButtonShowingErrors(f.Command3, start);
    grid->addWidget(start, 3, 3);
    follow();
}

}  // namespace velaro::gui
