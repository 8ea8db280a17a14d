#pragma once
// The ID3v1 record: the playlist's reader clsMP3Info, which guesses from the
// file name when there is no tag, and the in-place writer WriteId3.

#include <array>
#include <cstdint>
#include <string>

namespace velaro::tags {

// Six texts in the order the class holds them.
struct NameRecord {
    std::string Title, Artist, Album, Comment, Year, Genre;
};

class clsMP3Info {
public:
    // Assigning reads the file at once.
    void setFilename(const std::string& path);
    const std::string& Filename() const { return path_; }
    // Each without leading and trailing blanks (zero bytes stay).
    std::string Title() const;
    std::string Artist() const;
    std::string Album() const;
    std::string Year() const;
    std::string Comment() const;
    std::string Genre() const;

    static bool IsMp3File(const std::string& path);
    static NameRecord ParseFileName(const std::string& path);
    static int CountDelimiters(const std::string& text, const std::string& delimiter);
    static std::string FolderAsArtist(const std::string& path);

private:
    std::string path_;
    NameRecord f_;
};

// title, artist, album (30 each), year (4), comment (30), then the genre byte.
using Id3Fields = std::array<char, 125>;

// Builds the record from texts: each cut to its width and padded with blanks.
Id3Fields makeId3Fields(const std::string& title, const std::string& artist, const std::string& album,
                        const std::string& year, const std::string& comment, uint8_t genre);

// Id3Module.WriteId3: patches the record in place at the end of the file. A
// file without a tag first gets "TAG" over its last 128 bytes, so its length
// never changes. Throws VbError when the file cannot be opened or is shorter
// than a tag; a missing file is not made.
void WriteId3(const std::string& path, const Id3Fields& record);

// VB's IsNumeric for the texts the name guesser meets.
bool isNumericText(const std::string& s);

}  // namespace velaro::tags
