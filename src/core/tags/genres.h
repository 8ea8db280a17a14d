#pragma once
// The two genre lists, kept exactly as the program spells them.

#include <string>
#include <vector>

namespace velaro::tags {

// The playlist's list: 148 rows, row index = genre byte.
const std::vector<std::string>& longGenreTable();
// The editor's list: 126 rows. The editor's box puts one entry holding a
// single zero character before them, so box position = genre byte + 1.
const std::vector<std::string>& shortGenreTable();

}  // namespace velaro::tags
