#pragma once
// The lyric page in a terminal: prints become text at a row and column, in
// 24-bit ANSI colour. On a terminal the page is redrawn in place; into a pipe
// each page is written out whole as it is finished.

#include <cstdio>
#include <string>
#include <vector>

#include "core/ui/canvas.h"

namespace velaro::cli {

class TerminalCanvas : public ui::Canvas {
public:
    // One character is kCharWidth units wide; a row takes the page's line
    // height plus its gap, so the page's own arithmetic lands on whole rows.
    static constexpr double kCharWidth = 10;
    static constexpr double kLineHeight = 20;

    TerminalCanvas(std::FILE* out, int columns, bool inPlace, int topRow = 3);
    void cls() override;
    void print(std::string_view text, bool lineEnd) override;
    double textWidth(std::string_view text) const override;
    double textHeight(std::string_view) const override { return kLineHeight; }
    void line(double, double, double, double, uint32_t) override {}
    void fillBox(double, double, double, double, uint32_t) override {}
    void paintCell(int, int, double, double) override {}
    double scaleWidth() const override { return columns_ * kCharWidth; }
    double scaleHeight() const override { return 6 * (kLineHeight + 12); }

    // Writes what a pipe has not seen yet of the page.
    void flush();

private:
    struct Piece {
        int row, col;
        uint32_t color;
        std::string text;
    };
    int rowOf(double y) const;
    std::FILE* out_;
    int columns_;
    bool inPlace_;
    int topRow_;
    std::vector<Piece> page_;
};

}  // namespace velaro::cli
