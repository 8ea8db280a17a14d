#include "bindings.h"

#include <QSignalBlocker>

#include "core/base/cp1252.h"

namespace velaro::gui {

QString uiText(const std::string& utf8) { return QString::fromStdString(utf8); }

namespace {

// Captions and lists hold Windows-1252 bytes when they come from files; the
// program's own captions are plain ASCII, the same in both.
QString shownText(const std::string& bytes) { return QString::fromStdString(cp1252ToUtf8(bytes)); }

void common(ui::Control& c, QWidget* w) {
    w->setEnabled(c.enabled());
    w->setVisible(c.visible());
}

}  // namespace

void bindButton(ui::CommandButton& c, QAbstractButton* w) {
    auto sync = [&c, w] {
        common(c, w);
        if (!c.caption().empty()) w->setText(shownText(c.caption()));
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
    QObject::connect(w, &QAbstractButton::clicked, w, [&c] { c.userClick(); });
}

void bindCheck(ui::CheckBox& c, QAbstractButton* w) {
    auto sync = [&c, w] {
        QSignalBlocker block(w);
        common(c, w);
        if (!c.caption().empty()) w->setText(shownText(c.caption()));
        w->setChecked(c.value() == 1);
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
    QObject::connect(w, &QAbstractButton::clicked, w, [&c, w] {
        c.userClick();
        QSignalBlocker block(w);
        w->setChecked(c.value() == 1);
    });
}

void bindOption(ui::OptionButton& c, QAbstractButton* w) {
    w->setAutoExclusive(false);  // the model keeps the group
    auto sync = [&c, w] {
        QSignalBlocker block(w);
        common(c, w);
        w->setChecked(c.value());
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
    QObject::connect(w, &QAbstractButton::clicked, w, [&c, w] {
        c.userClick();
        QSignalBlocker block(w);
        w->setChecked(c.value());
    });
}

namespace {

// Sliders and scroll bars alike; a value the control refuses is dropped.
template <class C>
void bindRange(C& c, QAbstractSlider* w) {
    auto sync = [&c, w] {
        QSignalBlocker block(w);
        common(c, w);
        w->setRange(std::min(c.min(), c.max()), std::max(c.min(), c.max()));
        w->setValue(c.value());
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
    QObject::connect(w, &QAbstractSlider::valueChanged, w, [&c](int v) {
        try {
            c.setValue(v);
        } catch (const std::exception&) {
        }
    });
}

}  // namespace

void bindSlider(ui::Slider& c, QAbstractSlider* w) { bindRange(c, w); }
void bindScroll(ui::ScrollBar& c, QAbstractSlider* w) { bindRange(c, w); }

void bindLabel(ui::Control& c, QLabel* w) {
    auto sync = [&c, w] {
        common(c, w);
        w->setText(shownText(c.caption()));
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
}

void bindFrame(ui::Frame& c, QGroupBox* w) {
    auto sync = [&c, w] {
        common(c, w);
        w->setTitle(shownText(c.caption()).trimmed());
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
}

void bindText(ui::TextBox& c, QPlainTextEdit* w) {
    auto sync = [&c, w] {
        QSignalBlocker block(w);
        common(c, w);
        const QString t = shownText(c.text());
        if (w->toPlainText() != t) {
            w->setPlainText(t);
            w->moveCursor(QTextCursor::End);
        }
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
    QObject::connect(w, &QPlainTextEdit::textChanged, w, [&c, w] {
        std::string bytes = utf8ToCp1252(w->toPlainText().replace("\n", "\r\n").toStdString());
        c.setText(bytes);
    });
}

void bindList(ui::ListBox& c, QListWidget* w) {
    auto sync = [&c, w] {
        QSignalBlocker block(w);
        common(c, w);
        if (w->count() != c.listCount()) {
            w->clear();
            for (int i = 0; i < c.listCount(); ++i) w->addItem(shownText(c.list(i)));
        }
        w->setCurrentRow(c.listIndex());
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
    QObject::connect(w, &QListWidget::itemClicked, w, [&c, w](QListWidgetItem* item) {
        const int row = w->row(item);
        try {
            // A click on the chosen row still clicks, as it did.
            if (row == c.listIndex()) {
                if (c.Click) c.Click();
            } else {
                c.setListIndex(row);
            }
        } catch (const std::exception&) {
        }
    });
}

void bindMenu(ui::Menu& c, QAction* a) {
    auto sync = [&c, a] {
        a->setEnabled(c.enabled());
        a->setVisible(c.visible());
        a->setText(shownText(c.caption()));
        if (a->isCheckable()) a->setChecked(c.checked());
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
    QObject::connect(a, &QAction::triggered, a, [&c, a] {
        c.userClick();
        if (a->isCheckable()) a->setChecked(c.checked());
    });
}

}  // namespace velaro::gui
