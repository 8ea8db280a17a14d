#pragma once
// Registry: the player's value store, kept per user as an INI file in the
// configuration folder, one section per key path ("HKEY_LOCAL_MACHINE\SoftWare\MP3Player").
// String values are stored in quotes, double words as "dword:" and eight hex digits.

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace velaro::ui {
class Dialogs;
}

namespace velaro::settings {

inline constexpr uint32_t HKEY_LOCAL_MACHINE = 0x80000002;
inline constexpr uint32_t HKEY_CURRENT_USER = 0x80000001;
inline constexpr int REG_SZ = 1;
inline constexpr int REG_DWORD = 4;
inline constexpr const char* kPlayerKey = "SoftWare\\MP3Player";

using RegValue = std::variant<std::string, uint32_t>;

class Registry {
public:
    // The store's file; empty: $XDG_CONFIG_HOME/velaro-deck/registry.ini (~/.config when unset).
    explicit Registry(std::string storePath = {});
    const std::string& storePath() const { return path_; }

    // Creates the key when needed and sets a string (1) or double word (4) value.
    // Throws VbError when the store cannot be written.
    void RegSetValue(uint32_t root, const std::string& key, const std::string& name, const RegValue& value);
    // The value, or `def` when it or its key is missing or of another type.
    RegValue RegGetValue(uint32_t root, const std::string& key, const std::string& name, const RegValue& def) const;
    // The value with its type (1 or 4); nothing when missing or of an unknown type.
    std::optional<std::pair<int, RegValue>> RegQueryTyped(uint32_t root, const std::string& key,
                                                          const std::string& name) const;

    // The value under "SoftWare\MP3Player"; when absent, without a prompt "",
    // with one the user's answer to an input box, stored and returned.
    // `failure` receives "RegistryQuery " and the cause when the store fails.
    std::string RegistryQuery(const std::string& valueName, const std::string& prompt, ui::Dialogs* dialogs,
                              std::string* failure = nullptr);

private:
    std::string path_;
};

}  // namespace velaro::settings
