#pragma once
// The dialog service on Qt's message boxes and common dialogs. Titles and
// texts are the program's own, in UTF-8.

#include <QStringList>

#include "core/ui/dialogs.h"

class QWidget;

namespace velaro::gui {

class QtDialogs : public ui::Dialogs {
public:
    explicit QtDialogs(QWidget* parent = nullptr) : parent_(parent) {}
    void setParent(QWidget* parent) { parent_ = parent; }

    int msgBox(std::string_view prompt, int style, std::string_view title) override;
    ui::FileDialogResult showOpen(const ui::FileDialogRequest& req) override;
    ui::FileDialogResult showSave(const ui::FileDialogRequest& req) override;
    std::optional<uint32_t> showColor(uint32_t initial) override;
    std::optional<ui::Font> showFont(const ui::Font& initial) override;
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view initial) override;

private:
    ui::FileDialogResult file(const ui::FileDialogRequest& req, bool save);
    QWidget* parent_;
};

// "Kar File (*.kar)|*.kar|Mid File(*.mid)|*.mid" as Qt's name filters.
QStringList qtNameFilters(const std::string& filter);

}  // namespace velaro::gui
