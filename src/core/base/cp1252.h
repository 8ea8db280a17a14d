#pragma once
// Texts from files are bytes in Windows-1252; the command line and the screen speak UTF-8.

#include <string>
#include <string_view>

namespace velaro {

// Every byte maps to one code point (the five unassigned bytes to the C1
// controls of the same number), so decoding never fails.
std::string cp1252ToUtf8(std::string_view bytes);
// Characters with no Windows-1252 byte become '?'; broken UTF-8 too.
std::string utf8ToCp1252(std::string_view utf8);

}  // namespace velaro
