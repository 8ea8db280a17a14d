#include "qt_dialogs.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QFontDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>

namespace velaro::gui {

namespace {

QString q(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }

}  // namespace

QStringList qtNameFilters(const std::string& filter) {
    const QStringList parts = q(filter).split('|');
    QStringList out;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        QString name = parts[i];
        const int paren = name.indexOf('(');
        if (paren >= 0) name = name.left(paren).trimmed();
        out << name + " (" + QString(parts[i + 1]).replace(';', ' ') + ")";
    }
    return out;
}

int QtDialogs::msgBox(std::string_view prompt, int style, std::string_view title) {
    QMessageBox box(parent_);
    box.setWindowTitle(q(title));
    box.setText(q(prompt));
    switch (style & 0x70) {
        case ui::vbCritical: box.setIcon(QMessageBox::Critical); break;
        case ui::vbQuestion: box.setIcon(QMessageBox::Question); break;
        case ui::vbExclamation: box.setIcon(QMessageBox::Warning); break;
        case ui::vbInformation: box.setIcon(QMessageBox::Information); break;
        default: break;
    }
    struct B {
        QMessageBox::StandardButton qt;
        int answer;
    };
    static const std::vector<std::vector<B>> sets = {
        {{QMessageBox::Ok, ui::vbOK}},
        {{QMessageBox::Ok, ui::vbOK}, {QMessageBox::Cancel, ui::vbCancel}},
        {{QMessageBox::Abort, ui::vbAbort}, {QMessageBox::Retry, ui::vbRetry}, {QMessageBox::Ignore, ui::vbIgnore}},
        {{QMessageBox::Yes, ui::vbYes}, {QMessageBox::No, ui::vbNo}, {QMessageBox::Cancel, ui::vbCancel}},
        {{QMessageBox::Yes, ui::vbYes}, {QMessageBox::No, ui::vbNo}},
        {{QMessageBox::Retry, ui::vbRetry}, {QMessageBox::Cancel, ui::vbCancel}},
    };
    const size_t set = static_cast<size_t>(style & 7) < sets.size() ? static_cast<size_t>(style & 7) : 0;
    QMessageBox::StandardButtons buttons;
    for (const B& b : sets[set]) buttons |= b.qt;
    box.setStandardButtons(buttons);
    const size_t def = std::min<size_t>(static_cast<size_t>((style >> 8) & 3), sets[set].size() - 1);
    box.setDefaultButton(sets[set][def].qt);
    const int clicked = box.exec();
    for (const B& b : sets[set])
        if (b.qt == clicked) return b.answer;
    // Closed with Escape or the window's box: the cancelling answer when there is one.
    return sets[set].size() > 1 ? sets[set].back().answer : ui::vbOK;
}

ui::FileDialogResult QtDialogs::file(const ui::FileDialogRequest& req, bool save) {
    QFileDialog dlg(parent_, q(req.title));
    dlg.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dlg.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    const QStringList filters = qtNameFilters(req.filter);
    if (!filters.isEmpty()) {
        dlg.setNameFilters(filters);
        const int index = std::clamp(req.filterIndex, 1, static_cast<int>(filters.size())) - 1;
        dlg.selectNameFilter(filters[index]);
    }
    if (!req.initDir.empty()) dlg.setDirectory(q(req.initDir));
    if (!req.fileName.empty()) dlg.selectFile(q(req.fileName));
    if (!req.defaultExt.empty()) dlg.setDefaultSuffix(q(req.defaultExt).remove(0, req.defaultExt[0] == '.' ? 1 : 0));
    ui::FileDialogResult r;
    if (dlg.exec() != QDialog::Accepted || dlg.selectedFiles().isEmpty()) return r;
    r.cancelled = false;
    r.fileName = dlg.selectedFiles().first().toStdString();
    r.filterIndex = static_cast<int>(filters.indexOf(dlg.selectedNameFilter())) + 1;
    return r;
}

ui::FileDialogResult QtDialogs::showOpen(const ui::FileDialogRequest& req) { return file(req, false); }
ui::FileDialogResult QtDialogs::showSave(const ui::FileDialogRequest& req) { return file(req, true); }

std::optional<uint32_t> QtDialogs::showColor(uint32_t initial) {
    const QColor c = QColorDialog::getColor(QColor(initial & 0xFF, (initial >> 8) & 0xFF, (initial >> 16) & 0xFF),
                                            parent_);
    if (!c.isValid()) return std::nullopt;
    return static_cast<uint32_t>(c.red() | (c.green() << 8) | (c.blue() << 16));
}

std::optional<ui::Font> QtDialogs::showFont(const ui::Font& initial) {
    bool ok = false;
    QFont start(q(initial.name), static_cast<int>(initial.size));
    start.setBold(initial.bold);
    start.setItalic(initial.italic);
    const QFont f = QFontDialog::getFont(&ok, start, parent_);
    if (!ok) return std::nullopt;
    ui::Font out;
    out.name = f.family().toStdString();
    out.size = f.pointSizeF();
    out.bold = f.bold();
    out.italic = f.italic();
    out.underline = f.underline();
    out.strikethrough = f.strikeOut();
    return out;
}

std::optional<std::string> QtDialogs::inputBox(std::string_view prompt, std::string_view title,
                                               std::string_view initial) {
    bool ok = false;
    const QString text = QInputDialog::getText(parent_, q(title), q(prompt), QLineEdit::Normal, q(initial), &ok);
    if (!ok) return std::nullopt;
    return text.toStdString();
}

}  // namespace velaro::gui
