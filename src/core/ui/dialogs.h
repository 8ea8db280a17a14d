#pragma once
// Boxes and common dialogs the logic shows. Message box styles and answers
// are the old runtime's numbers, since the logic tests them by value.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "font.h"

namespace velaro::ui {

enum MsgBoxStyle : int {
    vbOKOnly = 0,
    vbOKCancel = 1,
    vbAbortRetryIgnore = 2,
    vbYesNoCancel = 3,
    vbYesNo = 4,
    vbRetryCancel = 5,
    vbCritical = 16,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64,
    vbDefaultButton2 = 256,
    vbDefaultButton3 = 512,
};

enum MsgBoxResult : int { vbOK = 1, vbCancel = 2, vbAbort = 3, vbRetry = 4, vbIgnore = 5, vbYes = 6, vbNo = 7 };

// The answer a box gives when the user just presses Enter.
int defaultAnswer(int style);

struct FileDialogRequest {
    std::string title;
    std::string filter;  // "Text (*.txt)|*.txt|All|*.*"
    int filterIndex = 1;
    std::string initDir;
    std::string defaultExt;
    std::string fileName;
    int flags = 0;
};

struct FileDialogResult {
    bool cancelled = true;
    std::string fileName;
    int filterIndex = 1;
};

class Dialogs {
public:
    virtual ~Dialogs() = default;
    virtual int msgBox(std::string_view prompt, int style, std::string_view title) = 0;
    virtual FileDialogResult showOpen(const FileDialogRequest& req) = 0;
    virtual FileDialogResult showSave(const FileDialogRequest& req) = 0;
    virtual std::optional<uint32_t> showColor(uint32_t initial) = 0;
    virtual std::optional<Font> showFont(const Font& initial) = 0;
    // nullopt when cancelled (the runtime gave an empty text then).
    virtual std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                                std::string_view initial) = 0;
};

}  // namespace velaro::ui
