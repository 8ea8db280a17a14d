#pragma once
// Numbers of the old runtime: its rounding, its fixed-width integers with
// overflow as a run-time error, its division errors and its Format patterns.

#include <cstdint>
#include <string>
#include <string_view>

namespace velaro {

// Round to nearest, halves to even (CInt/CLng and every implicit conversion).
double roundHalfEven(double v);
// Int: toward minus infinity. Fix: toward zero.
double vbInt(double v);
double vbFix(double v);

// Conversions into 16- and 32-bit integers: rounding as the runtime did,
// overflow (or a value that is not a number) is a run-time error.
int16_t cint(double v);
int32_t clng(double v);
uint8_t cbyte(double v);
int16_t checked16(int64_t v);
int32_t checked32(int64_t v);
inline int16_t add16(int16_t a, int64_t b) { return checked16(int64_t{a} + b); }
inline int32_t add32(int32_t a, int64_t b) { return checked32(int64_t{a} + b); }

// a / b with the runtime's division-by-zero error (also for 0/0).
double vbDivide(double a, double b);

// Format(value, pattern) for digit patterns: '0' a digit always shown, '#' a
// digit shown when significant, ',' in the integer part groups thousands, '.'
// the decimal point, which stays even with no digits behind it ("###.#" of 5
// is "5."). Rounds halves away from zero on the value's 15-digit decimal form.
std::string vbFormat(double value, std::string_view pattern);

// Shortest text that reads back to the same value ("120", "1.0416666666666667").
std::string numberText(double v);
std::string numberText(float v);

}  // namespace velaro
