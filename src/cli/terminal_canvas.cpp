#include "terminal_canvas.h"

#include <algorithm>
#include <cmath>

#include "core/base/cp1252.h"

namespace velaro::cli {

namespace {
constexpr double kPageTop = 68;
constexpr double kRowPitch = TerminalCanvas::kLineHeight + 12;

// Colours are 0x00BBGGRR.
std::string ansiColor(uint32_t c) {
    return "\x1b[1;38;2;" + std::to_string(c & 0xFF) + ";" + std::to_string((c >> 8) & 0xFF) + ";" +
           std::to_string((c >> 16) & 0xFF) + "m";
}
}  // namespace

TerminalCanvas::TerminalCanvas(std::FILE* out, int columns, bool inPlace, int topRow)
    : out_(out), columns_(std::max(20, columns)), inPlace_(inPlace), topRow_(topRow) {}

int TerminalCanvas::rowOf(double y) const {
    return std::max(0, static_cast<int>(std::lround((y - kPageTop) / kRowPitch)));
}

double TerminalCanvas::textWidth(std::string_view text) const { return kCharWidth * static_cast<double>(text.size()); }

void TerminalCanvas::cls() {
    flush();
    page_.clear();
    currentX = currentY = 0;
    if (inPlace_) {
        for (int r = 0; r < 6; ++r) std::fprintf(out_, "\x1b[%d;1H\x1b[2K", topRow_ + r);
        std::fflush(out_);
    }
}

void TerminalCanvas::print(std::string_view text, bool lineEnd) {
    const int row = rowOf(currentY);
    const int col = std::max(0, static_cast<int>(std::lround(currentX / kCharWidth)));
    page_.push_back({row, col, foreColor, std::string(text)});
    if (inPlace_) {
        std::fprintf(out_, "\x1b[%d;%dH%s%s\x1b[0m", topRow_ + row, col + 1, ansiColor(foreColor).c_str(),
                     cp1252ToUtf8(text).c_str());
        std::fflush(out_);
    }
    if (lineEnd) {
        currentX = 0;
        currentY += kLineHeight;
    } else {
        currentX += textWidth(text);
    }
}

void TerminalCanvas::flush() {
    if (inPlace_ || page_.empty()) return;
    // A pipe gets the finished page as plain rows, still in colour.
    int lastRow = 0;
    for (const auto& p : page_) lastRow = std::max(lastRow, p.row);
    for (int r = 0; r <= lastRow; ++r) {
        int col = 0;
        std::string line;
        for (const auto& p : page_) {
            if (p.row != r) continue;
            if (p.col > col) line += std::string(static_cast<size_t>(p.col - col), ' ');
            col = std::max(col, p.col) + static_cast<int>(p.text.size());
            line += ansiColor(p.color) + cp1252ToUtf8(p.text) + "\x1b[0m";
        }
        std::fprintf(out_, "%s\n", line.c_str());
    }
    std::fprintf(out_, "\n");
    std::fflush(out_);
    page_.clear();
}

}  // namespace velaro::cli
