#include "ini_file.h"

#include <fstream>
#include <iterator>

#include "byte_text.h"
#include "safe_file.h"

namespace velaro {

namespace {

std::string strip(std::string_view s) {
    size_t a = 0, b = s.size();
    while (a < b && (s[a] == ' ' || s[a] == '\t')) ++a;
    while (b > a && (s[b - 1] == ' ' || s[b - 1] == '\t' || s[b - 1] == '\r')) --b;
    return std::string(s.substr(a, b - a));
}

bool sameName(const std::string& a, const std::string& b) { return lcase(a) == lcase(b); }

// The section a line opens, if it is a head.
std::optional<std::string> sectionOf(const std::string& line) {
    const std::string t = strip(line);
    if (t.size() < 2 || t.front() != '[') return std::nullopt;
    const size_t close = t.find(']');
    if (close == std::string::npos) return std::nullopt;
    return strip(std::string_view(t).substr(1, close - 1));
}

bool splitPair(const std::string& line, std::string& key, std::string& value) {
    const std::string t = strip(line);
    if (t.empty() || t[0] == ';') return false;
    const size_t eq = t.find('=');
    if (eq == std::string::npos) return false;
    key = strip(std::string_view(t).substr(0, eq));
    value = strip(std::string_view(t).substr(eq + 1));
    return true;
}

}  // namespace

IniFile IniFile::load(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return {};
    return parse(std::string{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()});
}

IniFile IniFile::parse(const std::string& bytes) {
    IniFile f;
    size_t from = 0;
    while (from < bytes.size()) {
        size_t end = bytes.find('\n', from);
        if (end == std::string::npos) end = bytes.size();
        std::string line = bytes.substr(from, end - from);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        f.lines_.push_back(std::move(line));
        from = end + 1;
    }
    return f;
}

std::optional<std::string> IniFile::get(const std::string& section, const std::string& key) const {
    bool inside = false, seen = false;
    for (const auto& line : lines_) {
        if (auto s = sectionOf(line)) {
            // Only the first section of a name is read.
            if (inside) return std::nullopt;
            inside = !seen && sameName(*s, section);
            seen = seen || inside;
            continue;
        }
        std::string k, v;
        if (inside && splitPair(line, k, v) && sameName(k, key)) {
            if (v.size() >= 2 && (v.front() == '"' || v.front() == '\'') && v.back() == v.front())
                v = v.substr(1, v.size() - 2);
            return v;
        }
    }
    return std::nullopt;
}

void IniFile::set(const std::string& section, const std::string& key, const std::string& value) {
    const std::string pair = key + "=" + value;
    size_t i = 0;
    for (; i < lines_.size(); ++i)
        if (auto s = sectionOf(lines_[i]); s && sameName(*s, section)) break;
    if (i == lines_.size()) {
        lines_.push_back("[" + section + "]");
        lines_.push_back(pair);
        return;
    }
    size_t end = i + 1;
    for (; end < lines_.size() && !sectionOf(lines_[end]); ++end) {
        std::string k, v;
        if (splitPair(lines_[end], k, v) && sameName(k, key)) {
            lines_[end] = pair;
            return;
        }
    }
    // Behind the section's last non-blank line.
    while (end > i + 1 && strip(lines_[end - 1]).empty()) --end;
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(end), pair);
}

std::string IniFile::text() const {
    std::string out;
    for (const auto& l : lines_) out += l + "\n";
    return out;
}

void IniFile::save(const std::string& path) const { replaceFileSafely(path, text()); }

std::string GetPrivateProfileString(const std::string& section, const std::string& key, const std::string& def,
                                    const std::string& path, size_t size) {
    std::string v = IniFile::load(path).get(section, key).value_or(def);
    if (size > 0 && v.size() > size - 1) v.resize(size - 1);
    return v;
}

}  // namespace velaro
