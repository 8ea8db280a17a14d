#pragma once

#include <string>

namespace velaro::ui {

struct Font {
    std::string name = "MS Sans Serif";
    double size = 8.25;
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strikethrough = false;
    bool operator==(const Font&) const = default;
};

}  // namespace velaro::ui
