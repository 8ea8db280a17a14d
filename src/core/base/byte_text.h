#pragma once
// Byte texts as the old runtime held them: one char per byte, positions 1-based.

#include <cstdint>
#include <string>
#include <string_view>

namespace velaro {

using Bytes = std::string;

// FIND(start, text, pattern): 1-based position of the first occurrence at or
// after start, 0 when there is none or start lies past the end. A start below
// 1 is an invalid call, as it was for the runtime's search.
int64_t FIND(int64_t start, std::string_view text, std::string_view pattern);

// The byte at 1-based position pos; a read outside the text is an error
// (the runtime's numeric value of an empty one-character piece).
uint8_t byteAt(std::string_view text, int64_t pos);
// The same read without the error, for hot loops: false when it would fail,
// leaving `out` as it was (which is what a skipped statement does).
inline bool tryByteAt(std::string_view text, int64_t pos, uint8_t& out) {
    if (pos < 1 || pos > static_cast<int64_t>(text.size())) return false;
    out = static_cast<uint8_t>(text[static_cast<size_t>(pos - 1)]);
    return true;
}

// Mid$(text, start, length): start below 1 or a negative length is an invalid
// call; a start past the end gives an empty text; a length past the end is cut.
std::string mid(std::string_view text, int64_t start, int64_t length);
std::string mid(std::string_view text, int64_t start);  // to the end

std::string trim(std::string_view s);   // spaces only, as Trim$
std::string ltrim(std::string_view s);  // LTrim$
std::string rtrim(std::string_view s);  // RTrim$
std::string ucase(std::string_view s);  // ASCII upper case, as UCase$ for these uses
std::string lcase(std::string_view s);
std::string right(std::string_view s, int64_t n);
std::string left(std::string_view s, int64_t n);

// Hex$ of a byte: upper case, no leading zero ("A", "1F", "0").
std::string hexByte(uint8_t b);
// The same padded to two digits ("0A").
std::string hexByte2(uint8_t b);

// Value of "&H" + digits, as the runtime reads hexadecimal text: up to four
// digits is a 16-bit integer (so "&HFFFF" is -1), up to eight a 32-bit one.
int32_t hexValue(std::string_view digits);

}  // namespace velaro
