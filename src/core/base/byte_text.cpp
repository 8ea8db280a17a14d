#include "byte_text.h"

#include <cstring>

#include "vb_error.h"

namespace velaro {

int64_t FIND(int64_t start, std::string_view text, std::string_view pattern) {
    if (start < 1) throw VbError(VbErr::InvalidCall);
    if (start > static_cast<int64_t>(text.size())) return 0;
    if (pattern.empty()) return start;
    if (pattern.size() == 1) {
        const void* hit = std::memchr(text.data() + start - 1, pattern[0], text.size() - start + 1);
        return hit ? static_cast<const char*>(hit) - text.data() + 1 : 0;
    }
    size_t at = text.find(pattern, static_cast<size_t>(start - 1));
    return at == std::string_view::npos ? 0 : static_cast<int64_t>(at) + 1;
}

uint8_t byteAt(std::string_view text, int64_t pos) {
    if (pos < 1 || pos > static_cast<int64_t>(text.size())) throw VbError(VbErr::InvalidCall);
    return static_cast<uint8_t>(text[pos - 1]);
}

std::string mid(std::string_view text, int64_t start, int64_t length) {
    if (start < 1 || length < 0) throw VbError(VbErr::InvalidCall);
    if (start > static_cast<int64_t>(text.size())) return {};
    auto avail = static_cast<int64_t>(text.size()) - (start - 1);
    return std::string(text.substr(start - 1, static_cast<size_t>(std::min(avail, length))));
}

std::string mid(std::string_view text, int64_t start) {
    if (start < 1) throw VbError(VbErr::InvalidCall);
    if (start > static_cast<int64_t>(text.size())) return {};
    return std::string(text.substr(start - 1));
}

std::string ltrim(std::string_view s) {
    size_t b = s.find_first_not_of(' ');
    return b == std::string_view::npos ? std::string() : std::string(s.substr(b));
}

std::string rtrim(std::string_view s) {
    size_t e = s.find_last_not_of(' ');
    return e == std::string_view::npos ? std::string() : std::string(s.substr(0, e + 1));
}

std::string trim(std::string_view s) { return rtrim(ltrim(s)); }

std::string ucase(std::string_view s) {
    std::string r(s);
    for (char& c : r)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return r;
}

std::string lcase(std::string_view s) {
    std::string r(s);
    for (char& c : r)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return r;
}

std::string right(std::string_view s, int64_t n) {
    if (n < 0) throw VbError(VbErr::InvalidCall);
    if (n >= static_cast<int64_t>(s.size())) return std::string(s);
    return std::string(s.substr(s.size() - static_cast<size_t>(n)));
}

std::string left(std::string_view s, int64_t n) {
    if (n < 0) throw VbError(VbErr::InvalidCall);
    return std::string(s.substr(0, static_cast<size_t>(std::min<int64_t>(n, s.size()))));
}

std::string hexByte(uint8_t b) {
    static const char* digits = "0123456789ABCDEF";
    std::string r;
    if (b >= 16) r += digits[b >> 4];
    r += digits[b & 15];
    return r;
}

std::string hexByte2(uint8_t b) {
    std::string r = hexByte(b);
    return r.size() == 1 ? "0" + r : r;
}

int32_t hexValue(std::string_view digits) {
    if (digits.empty() || digits.size() > 8) throw VbError(VbErr::TypeMismatch);
    uint32_t v = 0;
    for (char c : digits) {
        int d;
        if (c >= '0' && c <= '9') d = c - '0';
        else if (c >= 'A' && c <= 'F') d = c - 'A' + 10;
        else if (c >= 'a' && c <= 'f') d = c - 'a' + 10;
        else throw VbError(VbErr::TypeMismatch);
        v = v * 16 + static_cast<uint32_t>(d);
    }
    if (digits.size() <= 4) return static_cast<int16_t>(static_cast<uint16_t>(v));
    return static_cast<int32_t>(v);
}

}  // namespace velaro
