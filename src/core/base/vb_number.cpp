#include "vb_number.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "vb_error.h"

namespace velaro {

double roundHalfEven(double v) {
    if (!std::isfinite(v)) return v;
    return std::nearbyint(v);  // the default rounding mode is to nearest, ties to even
}

double vbInt(double v) { return std::floor(v); }
double vbFix(double v) { return std::trunc(v); }

static int64_t roundedInRange(double v, double lo, double hi) {
    if (!std::isfinite(v)) throw VbError(VbErr::Overflow);
    double r = roundHalfEven(v);
    if (r < lo || r > hi) throw VbError(VbErr::Overflow);
    return static_cast<int64_t>(r);
}

int16_t cint(double v) { return static_cast<int16_t>(roundedInRange(v, -32768.0, 32767.0)); }
int32_t clng(double v) {
    return static_cast<int32_t>(roundedInRange(v, -2147483648.0, 2147483647.0));
}
uint8_t cbyte(double v) { return static_cast<uint8_t>(roundedInRange(v, 0.0, 255.0)); }

int16_t checked16(int64_t v) {
    if (v < std::numeric_limits<int16_t>::min() || v > std::numeric_limits<int16_t>::max())
        throw VbError(VbErr::Overflow);
    return static_cast<int16_t>(v);
}

int32_t checked32(int64_t v) {
    if (v < std::numeric_limits<int32_t>::min() || v > std::numeric_limits<int32_t>::max())
        throw VbError(VbErr::Overflow);
    return static_cast<int32_t>(v);
}

double vbDivide(double a, double b) {
    if (b == 0.0) throw VbError(a == 0.0 ? VbErr::Overflow : VbErr::DivisionByZero);
    double r = a / b;
    if (!std::isfinite(r)) throw VbError(VbErr::Overflow);
    return r;
}

namespace {

// Decimal digits of |v| rounded half away from zero to `frac` places, taken
// from its 15-significant-digit form as the runtime did. Returns the integer
// digits and the fraction digits.
void decimalDigits(double v, int frac, std::string& intPart, std::string& fracPart) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.14e", std::fabs(v));
    // buf: d.dddddddddddddde[+-]xx
    std::string mant;
    mant += buf[0];
    mant.append(buf + 2, 14);
    int exp10 = std::atoi(buf + 17);
    // digits value = 0.mant * 10^(exp10+1); place the decimal point
    int pointAt = exp10 + 1;  // digits before the point
    std::string digits = mant;
    if (pointAt <= 0) {
        digits = std::string(static_cast<size_t>(-pointAt), '0') + digits;
        pointAt = 0;
    } else if (pointAt > static_cast<int>(digits.size())) {
        digits += std::string(static_cast<size_t>(pointAt) - digits.size(), '0');
    }
    // keep pointAt + frac digits, round on the next one
    size_t keep = static_cast<size_t>(pointAt + frac);
    if (digits.size() < keep + 1) digits += std::string(keep + 1 - digits.size(), '0');
    bool up = digits[keep] >= '5';
    digits.resize(keep);
    if (up) {
        int i = static_cast<int>(keep) - 1;
        for (; i >= 0; --i) {
            if (digits[i] == '9') {
                digits[i] = '0';
            } else {
                ++digits[i];
                break;
            }
        }
        if (i < 0) {
            digits.insert(digits.begin(), '1');
            ++pointAt;
        }
    }
    intPart = digits.substr(0, static_cast<size_t>(pointAt));
    fracPart = digits.substr(static_cast<size_t>(pointAt));
    size_t nz = intPart.find_first_not_of('0');
    intPart = nz == std::string::npos ? std::string() : intPart.substr(nz);
}

}  // namespace

std::string vbFormat(double value, std::string_view pattern) {
    size_t dot = pattern.find('.');
    std::string_view ip = pattern.substr(0, dot);
    std::string_view fp = dot == std::string_view::npos ? std::string_view() : pattern.substr(dot + 1);
    int minInt = 0, fracDigits = 0, minFrac = 0;
    bool group = false;
    for (char c : ip) {
        if (c == '0') ++minInt;
        if (c == ',') group = true;
    }
    for (char c : fp) {
        if (c == '0') ++minFrac, ++fracDigits;
        if (c == '#') ++fracDigits;
    }
    std::string intPart, fracPart;
    if (std::isfinite(value)) decimalDigits(value, fracDigits, intPart, fracPart);
    while (static_cast<int>(intPart.size()) < minInt) intPart.insert(intPart.begin(), '0');
    if (group && intPart.size() > 3) {
        std::string g;
        int n = static_cast<int>(intPart.size());
        for (int i = 0; i < n; ++i) {
            g += intPart[i];
            if ((n - i - 1) % 3 == 0 && i != n - 1) g += ',';
        }
        intPart = g;
    }
    while (static_cast<int>(fracPart.size()) > minFrac && !fracPart.empty() && fracPart.back() == '0')
        fracPart.pop_back();
    bool nonZero = intPart.find_first_not_of("0,") != std::string::npos ||
                   fracPart.find_first_not_of('0') != std::string::npos;
    std::string out = (value < 0 && nonZero) ? "-" : "";
    out += intPart;
    if (dot != std::string_view::npos) out += "." + fracPart;
    return out;
}

std::string numberText(double v) {
    if (!std::isfinite(v)) return "0";
    // Whole numbers read best whole: 500000, not 5e+05.
    if (v == std::trunc(v) && std::fabs(v) < 1e15) return std::to_string(static_cast<int64_t>(v));
    char buf[64];
    auto res = std::to_chars(buf, buf + sizeof buf, v);
    return std::string(buf, res.ptr);
}

std::string numberText(float v) {
    if (!std::isfinite(v)) return "0";
    if (v == std::trunc(v) && std::fabs(v) < 1e7f) return std::to_string(static_cast<int64_t>(v));
    char buf[64];
    auto res = std::to_chars(buf, buf + sizeof buf, v);
    return std::string(buf, res.ptr);
}

}  // namespace velaro
