#pragma once
// What the logic draws on a picture box. Coordinates are in the box's own
// scale; CurrentX/CurrentY move with printing as they did.

#include <cstdint>
#include <string_view>

#include "font.h"

namespace velaro::ui {

class Canvas {
public:
    virtual ~Canvas() = default;

    // Fills with the back colour and puts the pen at 0,0.
    virtual void cls() = 0;
    // Prints at CurrentX/CurrentY in the fore colour; CurrentX moves past the
    // text, and with a line end CurrentX returns to 0 and CurrentY goes down a line.
    virtual void print(std::string_view text, bool lineEnd) = 0;
    virtual double textWidth(std::string_view text) const = 0;
    virtual double textHeight(std::string_view text) const = 0;
    virtual void line(double x1, double y1, double x2, double y2, uint32_t color) = 0;
    virtual void fillBox(double x1, double y1, double x2, double y2, uint32_t color) = 0;
    // Paints cell `cell` of a strip of equal bitmaps at x, y.
    virtual void paintCell(int strip, int cell, double x, double y) = 0;
    virtual double scaleWidth() const = 0;
    virtual double scaleHeight() const = 0;

    double currentX = 0;
    double currentY = 0;
    uint32_t foreColor = 0x000000;
    uint32_t backColor = 0xFFFFFF;
    Font font;
};

}  // namespace velaro::ui
