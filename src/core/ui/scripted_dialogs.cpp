#include "scripted_dialogs.h"

namespace velaro::ui {

int defaultAnswer(int style) {
    static const int kButtons[6][3] = {
        {vbOK, vbOK, vbOK},         {vbOK, vbCancel, vbCancel},   {vbAbort, vbRetry, vbIgnore},
        {vbYes, vbNo, vbCancel},    {vbYes, vbNo, vbNo},          {vbRetry, vbCancel, vbCancel},
    };
    int set = style & 7;
    if (set > 5) set = 0;
    int which = (style >> 8) & 3;
    if (which > 2) which = 0;
    return kButtons[set][which];
}

std::optional<ScriptedDialogs::Answer> ScriptedDialogs::next() {
    if (answers_.empty()) return std::nullopt;
    Answer a = std::move(answers_.front());
    answers_.pop_front();
    return a;
}

std::vector<ScriptedDialogs::Shown> ScriptedDialogs::messageBoxes() const {
    std::vector<Shown> out;
    for (const auto& s : shown_)
        if (s.kind == Kind::MsgBox) out.push_back(s);
    return out;
}

int ScriptedDialogs::msgBox(std::string_view prompt, int style, std::string_view title) {
    int result = defaultAnswer(style);
    if (auto a = next())
        if (auto* v = std::get_if<int>(&*a)) result = *v;
    shown_.push_back({Kind::MsgBox, std::string(title), std::string(prompt), style,
                      std::to_string(result)});
    return result;
}

FileDialogResult ScriptedDialogs::file(Kind kind, const FileDialogRequest& req) {
    FileDialogResult r;
    if (auto a = next())
        if (auto* v = std::get_if<FileDialogResult>(&*a)) r = *v;
    shown_.push_back({kind, req.title, req.filter, req.flags, r.cancelled ? "" : r.fileName});
    return r;
}

FileDialogResult ScriptedDialogs::showOpen(const FileDialogRequest& req) {
    return file(Kind::Open, req);
}

FileDialogResult ScriptedDialogs::showSave(const FileDialogRequest& req) {
    return file(Kind::Save, req);
}

std::optional<uint32_t> ScriptedDialogs::showColor(uint32_t) {
    std::optional<uint32_t> r;
    if (auto a = next())
        if (auto* v = std::get_if<uint32_t>(&*a)) r = *v;
    shown_.push_back({Kind::Color, {}, {}, 0, r ? std::to_string(*r) : ""});
    return r;
}

std::optional<ui::Font> ScriptedDialogs::showFont(const ui::Font&) {
    std::optional<ui::Font> r;
    if (auto a = next())
        if (auto* v = std::get_if<ui::Font>(&*a)) r = *v;
    shown_.push_back({Kind::Font, {}, {}, 0, r ? r->name : ""});
    return r;
}

std::optional<std::string> ScriptedDialogs::inputBox(std::string_view prompt, std::string_view title,
                                                     std::string_view) {
    std::optional<std::string> r;
    if (auto a = next())
        if (auto* v = std::get_if<std::string>(&*a)) r = *v;
    shown_.push_back({Kind::Input, std::string(title), std::string(prompt), 0, r.value_or("")});
    return r;
}

}  // namespace velaro::ui
