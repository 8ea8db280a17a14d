#pragma once
// A canvas that records what is drawn, with fixed-width text metrics, so tests
// can say what the page shows.

#include <string>
#include <vector>

#include "canvas.h"

namespace velaro::ui {

class RecordingCanvas : public Canvas {
public:
    enum class Op { Cls, Print, Line, FillBox, PaintCell };
    struct Entry {
        Op op;
        std::string text;
        double x = 0, y = 0, x2 = 0, y2 = 0;
        uint32_t color = 0;
        int strip = 0, cell = 0;
        bool lineEnd = false;
    };

    explicit RecordingCanvas(double charWidth = 100, double lineHeight = 200, double width = 6000,
                             double height = 3000)
        : charWidth_(charWidth), lineHeight_(lineHeight), width_(width), height_(height) {}

    void cls() override;
    void print(std::string_view text, bool lineEnd) override;
    double textWidth(std::string_view text) const override;
    double textHeight(std::string_view text) const override;
    void line(double x1, double y1, double x2, double y2, uint32_t color) override;
    void fillBox(double x1, double y1, double x2, double y2, uint32_t color) override;
    void paintCell(int strip, int cell, double x, double y) override;
    double scaleWidth() const override { return width_; }
    double scaleHeight() const override { return height_; }
    void resize(double w, double h) { width_ = w, height_ = h; }

    const std::vector<Entry>& entries() const { return entries_; }
    // What was printed since the last Cls, in order.
    std::vector<Entry> printsSinceCls() const;
    void clearLog() { entries_.clear(); }

private:
    double charWidth_, lineHeight_, width_, height_;
    std::vector<Entry> entries_;
};

}  // namespace velaro::ui
