#include "cd_text.h"

#include <cctype>
#include <cmath>

namespace velaro::cd {

namespace {

std::string twoDigits(int64_t v) {
    std::string s = std::to_string(v);
    if (s.size() < 2) s.insert(0, 2 - s.size(), '0');
    return s.substr(s.size() - 2);  // cut from the right
}

bool startsWithUpper(std::string_view s, std::string_view key) {
    if (s.size() < key.size()) return false;
    for (size_t i = 0; i < key.size(); ++i)
        if (std::toupper(static_cast<unsigned char>(s[i])) != key[i]) return false;
    return true;
}

// The number in front of the "=", read by its numeric prefix as Val did: "3x" is 3, "" is 0.
long numberAt(std::string_view s) {
    size_t i = 0;
    while (i < s.size() && s[i] == ' ') ++i;
    long n = 0;
    bool any = false;
    while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i])) && n < 100000) {
        n = n * 10 + (s[i++] - '0');
        any = true;
    }
    return any ? n : 0;
}

void takeEntry(std::string_view s, size_t keyLength, std::vector<std::string>& into) {
    const size_t eq = s.find('=');
    const std::string_view number = s.substr(keyLength, eq == std::string_view::npos ? std::string_view::npos : eq - keyLength);
    const long n = numberAt(number);
    const std::string value = eq == std::string_view::npos ? std::string() : std::string(s.substr(eq + 1));
    if (n >= 0 && n < static_cast<long>(into.size())) into[static_cast<size_t>(n)] = value;
}

}  // namespace

std::string Seconds2HMS(double seconds) {
    const auto t = static_cast<int64_t>(std::floor(seconds + 0.5));
    const int64_t hours = t / 3600;
    const int64_t rest = t % 3600;
    const std::string ms = twoDigits(rest / 60) + ":" + twoDigits(rest % 60);
    return hours <= 0 ? ms : twoDigits(hours) + ":" + ms;
}

CdText parseCdText(std::string_view block, int tracks) {
    CdText text;
    const size_t rooms = static_cast<size_t>(tracks < 0 ? 0 : tracks) + 1;
    text.titles.assign(rooms, "");
    text.performers.assign(rooms, "");
    size_t pos = 0;
    while (pos < block.size()) {
        const size_t end = block.find('\0', pos);
        const std::string_view s = block.substr(pos, end == std::string_view::npos ? std::string_view::npos : end - pos);
        if (s.empty()) break;
        if (startsWithUpper(s, "TITLE")) takeEntry(s, 5, text.titles);
        else if (startsWithUpper(s, "PERFORMER")) takeEntry(s, 9, text.performers);
        if (end == std::string_view::npos) break;
        pos = end + 1;
    }
    return text;
}

// Rounded with halves to even, as the runtime did.
std::string trackTime(int64_t bytes) { return Seconds2HMS(std::nearbyint(static_cast<double>(bytes) / kBytesPerSecond)); }

std::string trackLine(int track, int64_t bytes) {
    return twoDigits(track) + "\tTrack " + std::to_string(track) + "\t[" + trackTime(bytes) + "]";
}

std::string trackLine(int track, int64_t bytes, const std::string& title, const std::string& performer) {
    return twoDigits(track) + "\t" + title + " / " + performer + "\t[" + trackTime(bytes) + "]";
}

std::string waveHeader(int channels, int rate, int bits, uint32_t dataBytes) {
    std::string h;
    const auto u32 = [&h](uint32_t v) {
        for (int i = 0; i < 4; ++i) h += static_cast<char>((v >> (8 * i)) & 0xFF);
    };
    const auto u16 = [&h](uint32_t v) {
        for (int i = 0; i < 2; ++i) h += static_cast<char>((v >> (8 * i)) & 0xFF);
    };
    const int block = channels * bits / 8;
    h += "RIFF";
    u32(dataBytes + 36);
    h += "WAVE";
    h += "fmt ";
    u32(16);
    u16(1);
    u16(static_cast<uint32_t>(channels));
    u32(static_cast<uint32_t>(rate));
    u32(static_cast<uint32_t>(rate * block));
    u16(static_cast<uint32_t>(block));
    u16(static_cast<uint32_t>(bits));
    h += "data";
    u32(dataBytes);
    return h;
}

}  // namespace velaro::cd
