#pragma once
// INI files as the system's profile calls read them: "[Section]" heads,
// "key=value" lines, section and key names without regard to case, the first
// match wins, blanks around names and values dropped, one pair of quotes
// around a value taken off. A missing file is simply empty. Writes keep the
// rest of the file as it was and replace the file safely.

#include <optional>
#include <string>
#include <vector>

namespace velaro {

class IniFile {
public:
    IniFile() = default;
    // Reads `path`; a missing or unreadable file gives an empty one.
    static IniFile load(const std::string& path);
    static IniFile parse(const std::string& bytes);

    std::optional<std::string> get(const std::string& section, const std::string& key) const;
    // Sets the value, adding the section and the key where they are missing.
    void set(const std::string& section, const std::string& key, const std::string& value);
    std::string text() const;
    // Writes through a new file beside `path`; throws VbError on failure.
    void save(const std::string& path) const;

private:
    std::vector<std::string> lines_;
};

// GetPrivateProfileString: the value cut to size-1 bytes, or the default.
std::string GetPrivateProfileString(const std::string& section, const std::string& key, const std::string& def,
                                    const std::string& path, size_t size = 255);

}  // namespace velaro
