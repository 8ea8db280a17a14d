#pragma once
// The program's folders on Linux and the path helpers its logic uses.

#include <string>
#include <string_view>

namespace velaro {

inline constexpr char kPathSep = '/';

// The path with a trailing separator added when it has none (RPP).
std::string RPP(std::string_view path);

// Where config.vlr, the takes and the settings live: $VELARO_HOME, else
// $XDG_DATA_HOME/velaro-deck, else ~/.local/share/velaro-deck. Created when missing.
std::string applicationFolder();
// $TMPDIR, else /tmp.
std::string tempFolder();
// The folder of the running executable; helper programs lie beside it.
std::string programFolder();
// The old drive root as a dialog's starting folder: the user's home here.
std::string homeFolder();

// Whole-file helpers for the logic's binary opens; both throw VbError on failure.
// A write goes to a new file that replaces the old one only when complete.
std::string readWholeFile(const std::string& path);
void writeWholeFile(const std::string& path, std::string_view bytes);
bool fileExists(const std::string& path);
// FileLen: -1 never; a missing file is an error.
int64_t fileLength(const std::string& path);
// Kill: a missing file is an error, as it was.
void deleteFile(const std::string& path);

}  // namespace velaro
