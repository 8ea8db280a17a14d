#include "id3v1.h"

#include <filesystem>
#include <fstream>

#include "../base/byte_text.h"
#include "../base/paths.h"
#include "../base/safe_file.h"
#include "../base/vb_error.h"
#include "genres.h"

namespace velaro::tags {

namespace {

std::string replaceAll(std::string s, const std::string& from, const std::string& to) {
    for (size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size()))
        s.replace(at, from.size(), to);
    return s;
}

std::vector<std::string> split(const std::string& s, const std::string& d) {
    std::vector<std::string> out;
    size_t start = 0;
    for (size_t at = s.find(d); at != std::string::npos; at = s.find(d, start)) {
        out.push_back(s.substr(start, at - start));
        start = at + d.size();
    }
    out.push_back(s.substr(start));
    return out;
}

std::string lower(const std::string& s) { return lcase(s); }

}  // namespace

bool isNumericText(const std::string& text) {
    const std::string s = trim(text);
    if (s.empty()) return false;
    size_t i = 0;
    if (s[i] == '+' || s[i] == '-') ++i;
    bool digits = false, point = false;
    for (; i < s.size(); ++i) {
        const char c = s[i];
        if (c >= '0' && c <= '9') digits = true;
        else if (c == '.' && !point) point = true;
        else if ((c == 'e' || c == 'E') && digits) {
            ++i;
            if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
            if (i >= s.size()) return false;
            for (; i < s.size(); ++i)
                if (s[i] < '0' || s[i] > '9') return false;
            return true;
        } else return false;
    }
    return digits;
}

int clsMP3Info::CountDelimiters(const std::string& text, const std::string& delimiter) {
    if (text.empty()) return 0;
    return static_cast<int>(split(text, delimiter).size()) - 1;
}

std::string clsMP3Info::FolderAsArtist(const std::string& path) {
    const size_t at = path.rfind('/');
    if (at == std::string::npos) return trim(path);
    return trim(path.substr(0, at)) + " - " + trim(path.substr(at + 1));
}

bool clsMP3Info::IsMp3File(const std::string& path) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) return false;
    const std::string p = lower(path);
    return p.find(".mp3") != std::string::npos || p.find(".mp2") != std::string::npos ||
           p.find(".mp1") != std::string::npos;
}

NameRecord clsMP3Info::ParseFileName(const std::string& path) {
    NameRecord r;
    std::string name = path;
    if (size_t slash = name.rfind('/'); slash != std::string::npos) name = name.substr(slash + 1);
    if (size_t dot = name.rfind('.'); dot != std::string::npos) name = name.substr(0, dot);
    name = trim(name);

    if (CountDelimiters(name, " ") < 1) {
        r.Title = replaceAll(name, "_", " ");
        return r;
    }
    name = trim(replaceAll(name, "_", " "));

    if (!name.empty() && name[0] == '(' && CountDelimiters(name, "-") < 3) {
        const size_t close = name.find(')');
        // No closing bracket: the length is negative, an invalid call as it was.
        if (close == std::string::npos) throw VbError(VbErr::InvalidCall);
        r.Artist = name.substr(1, close - 1);
        name = trim(name.substr(close + 1));
        if (!name.empty() && name[0] == '-') {
            r.Title = trim(name.substr(1));
        } else if (size_t hyphen = name.find('-'); hyphen != std::string::npos) {
            r.Album = name.substr(hyphen + 1);
            r.Title = name.substr(0, hyphen);
        } else {
            r.Title = name;
        }
    } else {
        const std::vector<std::string> parts = split(name, "- ");
        for (size_t i = 0; i < parts.size(); ++i) {
            if (isNumericText(parts[i])) continue;
            if (r.Artist.empty()) {
                r.Artist = parts[i];
            } else if (i > 0 && isNumericText(parts[i - 1])) {
                if (r.Title.empty()) r.Title = parts[i];
            } else if (r.Album.empty()) {
                r.Album = parts[i];
            }
        }
    }
    r.Artist = replaceAll(replaceAll(r.Artist, "(", ""), ")", "");

    // The folder stands in as the artist, one folder at a time.
    if (r.Title.empty() && (name.empty() || name[0] != '(') && path.find('/') != path.rfind('/'))
        return ParseFileName(FolderAsArtist(path));
    return r;
}

void clsMP3Info::setFilename(const std::string& path) {
    const auto& table = longGenreTable();
    path_ = path;
    f_ = NameRecord{};
    if (!IsMp3File(path)) return;
    std::string buffer;
    const int64_t length = fileLength(path);
    if (length - 127 > 0) {
        std::ifstream in(path, std::ios::binary);
        buffer.resize(128);
        in.seekg(length - 128);
        in.read(buffer.data(), 128);
        buffer.resize(static_cast<size_t>(in.gcount()));
    }
    if (buffer.size() == 128 && buffer.compare(0, 3, "TAG") == 0) {
        f_.Title = buffer.substr(3, 30);
        f_.Artist = buffer.substr(33, 30);
        f_.Album = buffer.substr(63, 30);
        f_.Year = buffer.substr(93, 4);
        f_.Comment = buffer.substr(97, 30);
        const auto genre = static_cast<uint8_t>(buffer[127]);
        f_.Genre = genre < table.size() ? table[genre] : std::string();
    } else {
        f_ = ParseFileName(path);
    }
}

std::string clsMP3Info::Title() const { return trim(f_.Title); }
std::string clsMP3Info::Artist() const { return trim(f_.Artist); }
std::string clsMP3Info::Album() const { return trim(f_.Album); }
std::string clsMP3Info::Year() const { return trim(f_.Year); }
std::string clsMP3Info::Comment() const { return trim(f_.Comment); }
std::string clsMP3Info::Genre() const { return trim(f_.Genre); }

Id3Fields makeId3Fields(const std::string& title, const std::string& artist, const std::string& album,
                        const std::string& year, const std::string& comment, uint8_t genre) {
    Id3Fields r;
    r.fill(' ');
    size_t at = 0;
    for (const auto& [text, width] : {std::pair{&title, 30}, {&artist, 30}, {&album, 30}, {&year, 4}, {&comment, 30}}) {
        text->copy(r.data() + at, std::min<size_t>(text->size(), width));
        at += width;
    }
    r[124] = static_cast<char>(genre);
    return r;
}

void WriteId3(const std::string& path, const Id3Fields& record) {
    // A missing file is an error here, never a new file.
    if (!fileExists(path)) throw VbError(VbErr::PathFileAccess, "cannot open " + path + " for writing");
    const int64_t length = fileLength(path);
    if (length - 127 < 1) throw VbError(VbErr::InvalidCall, path + " is shorter than a tag");
    // "TAG" and the record over the last 128 bytes: an old tag is replaced,
    // and a file without one gives up its last 128 bytes of audio.
    writeTailInPlace(path, length - 128, "TAG" + std::string(record.data(), record.size()));
}

}  // namespace velaro::tags
