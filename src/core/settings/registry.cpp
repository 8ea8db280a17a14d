#include "registry.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "../base/ini_file.h"
#include "../ui/dialogs.h"

namespace velaro::settings {

namespace {

constexpr const char* kEmpty = "$$EMPTY$$";
constexpr const char* kInputTitle = "Registry";

std::string rootName(uint32_t root) {
    switch (root) {
        case HKEY_LOCAL_MACHINE: return "HKEY_LOCAL_MACHINE";
        case HKEY_CURRENT_USER: return "HKEY_CURRENT_USER";
        case 0x80000000: return "HKEY_CLASSES_ROOT";
        case 0x80000003: return "HKEY_USERS";
        default: return "HKEY_" + std::to_string(root);
    }
}

std::string section(uint32_t root, const std::string& key) { return rootName(root) + "\\" + key; }

std::string defaultStore() {
    std::string base;
    if (const char* x = std::getenv("XDG_CONFIG_HOME"); x && *x) base = x;
    else if (const char* h = std::getenv("HOME"); h && *h) base = std::string(h) + "/.config";
    else base = "/tmp";
    return base + "/velaro-deck/registry.ini";
}

}  // namespace

Registry::Registry(std::string storePath) : path_(storePath.empty() ? defaultStore() : std::move(storePath)) {}

void Registry::RegSetValue(uint32_t root, const std::string& key, const std::string& name, const RegValue& value) {
    IniFile f = IniFile::load(path_);
    std::string stored;
    if (auto* s = std::get_if<std::string>(&value)) {
        stored = "\"" + *s + "\"";
    } else {
        char hex[16];
        std::snprintf(hex, sizeof hex, "%08x", std::get<uint32_t>(value));
        stored = std::string("dword:") + hex;
    }
    f.set(section(root, key), name, stored);
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(path_).parent_path(), ec);
    f.save(path_);
}

std::optional<std::pair<int, RegValue>> Registry::RegQueryTyped(uint32_t root, const std::string& key,
                                                                const std::string& name) const {
    // The reader takes one pair of quotes off: read the raw line's form again here.
    const IniFile f = IniFile::load(path_);
    const auto v = f.get(section(root, key), name);
    if (!v) return std::nullopt;
    if (v->rfind("dword:", 0) == 0) {
        const std::string digits = v->substr(6);
        if (digits.empty() || digits.size() > 8 || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
            return std::nullopt;
        return std::make_pair(REG_DWORD, RegValue{static_cast<uint32_t>(std::stoul(digits, nullptr, 16))});
    }
    return std::make_pair(REG_SZ, RegValue{*v});
}

RegValue Registry::RegGetValue(uint32_t root, const std::string& key, const std::string& name,
                               const RegValue& def) const {
    const auto typed = RegQueryTyped(root, key, name);
    if (!typed) return def;
    return typed->second;
}

std::string Registry::RegistryQuery(const std::string& valueName, const std::string& prompt, ui::Dialogs* dialogs,
                                    std::string* failure) {
    try {
        const RegValue v = RegGetValue(HKEY_LOCAL_MACHINE, kPlayerKey, valueName, std::string(kEmpty));
        if (auto* s = std::get_if<std::string>(&v); s && *s != kEmpty) return *s;
        if (auto* d = std::get_if<uint32_t>(&v)) return std::to_string(*d);
        if (prompt.empty() || !dialogs) return {};
        const std::string answer = dialogs->inputBox(prompt, kInputTitle, "").value_or("");
        RegSetValue(HKEY_LOCAL_MACHINE, kPlayerKey, valueName, answer);
        return answer;
    } catch (const std::exception& e) {
        if (failure) *failure = std::string("RegistryQuery ") + e.what();
        return {};
    }
}

}  // namespace velaro::settings
