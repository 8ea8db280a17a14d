#include "record_bindings.h"

#include <QCloseEvent>
#include <QMessageBox>
#include <QPointer>
#include <QSignalBlocker>
#include <cmath>

#include "core/base/cp1252.h"
#include "core/base/vb_error.h"

namespace velaro::gui {

namespace {

void common(ui::Control& c, QWidget* w) {
    w->setEnabled(c.enabled());
    w->setVisible(c.visible());
}

}  // namespace

void bindCombo(ui::ComboBox& c, QComboBox* w) {
    auto sync = [&c, w] {
        QSignalBlocker block(w);
        common(c, w);
        if (w->count() != c.listCount()) {
            w->clear();
            for (int i = 0; i < c.listCount(); ++i) w->addItem(QString::fromStdString(cp1252ToUtf8(c.list(i))));
        }
        w->setCurrentIndex(c.listIndex());
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
    QObject::connect(w, qOverload<int>(&QComboBox::activated), w, [&c](int row) {
        try {
            // Choosing the chosen row again still clicks, as it did.
            if (row == c.listIndex()) {
                if (c.Click) c.Click();
            } else {
                c.setListIndex(row);
            }
        } catch (const std::exception&) {
        }
    });
}

void bindLine(ui::TextBox& c, QLineEdit* w) {
    auto sync = [&c, w] {
        QSignalBlocker block(w);
        common(c, w);
        const QString text = QString::fromStdString(cp1252ToUtf8(c.text()));
        if (w->text() != text) w->setText(text);
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
    QObject::connect(w, &QLineEdit::textEdited, w,
                     [&c](const QString& t) { c.setText(utf8ToCp1252(t.toStdString())); });
}

void bindProgress(ui::ProgressBar& c, QProgressBar* w) {
    // Tenths, so that the bar moves as finely as the values it is given.
    w->setRange(0, 1000);
    w->setFormat("%p%");
    auto sync = [&c, w] {
        common(c, w);
        const double span = c.max - c.min;
        w->setValue(span > 0 ? static_cast<int>(std::lround(1000 * (c.value() - c.min) / span)) : 0);
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
}

void bindButtonShowingErrors(ui::CommandButton& c, QAbstractButton* w) {
    auto sync = [&c, w] {
        common(c, w);
        if (!c.caption().empty()) w->setText(QString::fromStdString(c.caption()));
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
    QObject::connect(w, &QAbstractButton::clicked, w, [&c, w] {
        try {
            c.userClick();
        } catch (const VbError& e) {
            QMessageBox::critical(w->window(), "VELARO DECK",
                                  QString("Run-time error '%1':\n\n%2").arg(int(e.code())).arg(e.what()));
        } catch (const std::exception& e) {
            QMessageBox::critical(w->window(), "VELARO DECK", e.what());
        }
    });
}

FormWindow::FormWindow(ui::Form& form, QWidget* parent) : QWidget(parent, Qt::Window), form_(form) {
    QPointer<FormWindow> self(this);
    auto previous = form.rt.formStateChanged;
    form.rt.formStateChanged = [self, previous, &form](ui::Form& f) {
        if (previous) previous(f);
        if (self && &f == &form) self->follow();
    };
}

void FormWindow::follow() {
    setWindowTitle(QString::fromStdString(form_.caption).trimmed());
    setCursor(form_.mousePointer == ui::kPointerHourglass ? Qt::WaitCursor : Qt::ArrowCursor);
    if (form_.visible() && !isVisible()) {
        show();
        raise();
        activateWindow();
    } else if (!form_.visible() && isVisible()) {
        hide();
    }
}

void FormWindow::closeEvent(QCloseEvent* e) {
    // The close box unloads the form, as it did.
    form_.unload();
    e->accept();
}

}  // namespace velaro::gui
