#include "recording_canvas.h"

namespace velaro::ui {

void RecordingCanvas::cls() {
    entries_.push_back({Op::Cls, {}, 0, 0, 0, 0, backColor});
    currentX = 0;
    currentY = 0;
}

void RecordingCanvas::print(std::string_view text, bool lineEnd) {
    Entry e{Op::Print, std::string(text), currentX, currentY, 0, 0, foreColor};
    e.lineEnd = lineEnd;
    entries_.push_back(e);
    if (lineEnd) {
        currentX = 0;
        currentY += textHeight(text);
    } else {
        currentX += textWidth(text);
    }
}

double RecordingCanvas::textWidth(std::string_view text) const {
    return charWidth_ * static_cast<double>(text.size());
}

double RecordingCanvas::textHeight(std::string_view) const { return lineHeight_; }

void RecordingCanvas::line(double x1, double y1, double x2, double y2, uint32_t color) {
    entries_.push_back({Op::Line, {}, x1, y1, x2, y2, color});
}

void RecordingCanvas::fillBox(double x1, double y1, double x2, double y2, uint32_t color) {
    entries_.push_back({Op::FillBox, {}, x1, y1, x2, y2, color});
}

void RecordingCanvas::paintCell(int strip, int cell, double x, double y) {
    Entry e{Op::PaintCell, {}, x, y};
    e.strip = strip;
    e.cell = cell;
    entries_.push_back(e);
}

std::vector<RecordingCanvas::Entry> RecordingCanvas::printsSinceCls() const {
    std::vector<Entry> out;
    for (const auto& e : entries_) {
        if (e.op == Op::Cls) out.clear();
        else if (e.op == Op::Print) out.push_back(e);
    }
    return out;
}

}  // namespace velaro::ui
