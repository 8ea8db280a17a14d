#pragma once
// Dialogs that answer from a queue and log every box shown. With the queue
// empty, a message box gets its default button and every other dialog is cancelled.

#include <deque>
#include <string>
#include <variant>
#include <vector>

#include "dialogs.h"

namespace velaro::ui {

class ScriptedDialogs : public Dialogs {
public:
    enum class Kind { MsgBox, Open, Save, Color, Font, Input };
    struct Shown {
        Kind kind;
        std::string title;
        std::string text;  // prompt, or the file dialog's filter
        int style = 0;
        std::string answer;  // what was answered, as text
    };
    struct Cancel {};
    using Answer = std::variant<int, FileDialogResult, uint32_t, ui::Font, std::string, Cancel>;

    void push(Answer a) { answers_.push_back(std::move(a)); }
    void answerMsgBox(int result) { push(result); }
    void answerFile(std::string path, int filterIndex = 1) {
        push(FileDialogResult{false, std::move(path), filterIndex});
    }
    void answerInput(std::string text) { push(std::move(text)); }
    void answerCancel() { push(Cancel{}); }

    const std::vector<Shown>& shown() const { return shown_; }
    std::vector<Shown> messageBoxes() const;
    void clearLog() { shown_.clear(); }
    size_t pending() const { return answers_.size(); }

    int msgBox(std::string_view prompt, int style, std::string_view title) override;
    FileDialogResult showOpen(const FileDialogRequest& req) override;
    FileDialogResult showSave(const FileDialogRequest& req) override;
    std::optional<uint32_t> showColor(uint32_t initial) override;
    std::optional<ui::Font> showFont(const ui::Font& initial) override;
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view initial) override;

private:
    std::optional<Answer> next();
    FileDialogResult file(Kind kind, const FileDialogRequest& req);
    std::deque<Answer> answers_;
    std::vector<Shown> shown_;
};

}  // namespace velaro::ui
