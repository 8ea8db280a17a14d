// velaro mp3info / tag / id3: what an MP3 file holds, and the two ways of
// writing its tags. Texts in files are Windows-1252, on the command line UTF-8.
// A write that cannot be done leaves the file as it was and exits non-zero.

#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>

#include "arg_value.h"
#include "commands.h"
#include "core/base/cp1252.h"
#include "core/base/paths.h"
#include "core/tags/frm_id3.h"
#include "core/tags/id3v1.h"
#include "core/tags/mmp3.h"
#include "core/ui/headless.h"
#include "json_writer.h"

namespace velaro::cli {

namespace {

using tags::Mmp3;
using tags::Mp3Info;

struct TagOptions {
    std::string file;
    std::map<std::string, std::string> text;  // title, artist, album, year, comment (UTF-8)
    std::optional<int> genrePos;
    std::optional<std::string> lyricsFile;
    bool noLyrics = false;
    bool json = false;
};

bool parseTagOptions(const std::vector<std::string>& args, bool forTag, bool forInfo, TagOptions& o,
                     std::string& error) {
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        auto value = [&](std::string& v) { return takeValue(args, i, v, error); };
        std::string v;
        if (forInfo && a == "--json") {
            o.json = true;
        } else if (!forInfo && (a == "--title" || a == "--artist" || a == "--album" || a == "--year" ||
                                a == "--comment")) {
            if (!value(v)) return false;
            o.text[a.substr(2)] = v;
        } else if (forTag && a == "--genre-pos") {
            if (!value(v)) return false;
            int n = 0;
            auto [p, ec] = std::from_chars(v.data(), v.data() + v.size(), n);
            if (ec != std::errc() || p != v.data() + v.size() || n > 256) {
                error = "--genre-pos takes a whole number up to 256";
                return false;
            }
            o.genrePos = n;
        } else if (forTag && a == "--lyrics-file") {
            if (!value(v)) return false;
            o.lyricsFile = v;
        } else if (forTag && a == "--no-lyrics") {
            o.noLyrics = true;
        } else if (!a.empty() && a[0] == '-') {
            error = "unknown option " + a;
            return false;
        } else if (o.file.empty()) {
            o.file = a;
        } else {
            error = "one file only";
            return false;
        }
    }
    if (o.lyricsFile && o.noLyrics) error = "--lyrics-file and --no-lyrics exclude each other";
    else if (o.file.empty()) error = "no file given";
    return error.empty();
}

// Why a write into `path` cannot be done, or "" when it can.
std::string cannotWrite(const std::string& path, int64_t needsAtLeast) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) return "no such file";
    // No write permission for anyone is read-only, for root too.
    const auto perms = std::filesystem::status(path, ec).permissions();
    using P = std::filesystem::perms;
    if (access(path.c_str(), W_OK) != 0 || (perms & (P::owner_write | P::group_write | P::others_write)) == P::none)
        return "the file is read-only";
    if (static_cast<int64_t>(std::filesystem::file_size(path, ec)) < needsAtLeast)
        return "the file is shorter than an ID3v1 tag";
    return {};
}

std::string crlfLines(const std::string& bytes) {
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 16);
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == '\n' && (i == 0 || bytes[i - 1] != '\r')) out += '\r';
        out += bytes[i];
    }
    return out;
}

void writeInfo(const Mp3Info& m, const Mmp3& module, bool json) {
    const std::pair<const char*, const std::string*> texts[] = {
        {"BitRate", &m.BitRate}, {"ChannelMode", &m.ChannelMode}, {"Copyrighted", &m.Copyrighted},
        {"Crc", &m.Crc},         {"Emphasis", &m.Emphasis},       {"SampleRate", &m.SampleRate},
        {"Layer", &m.Layer},     {"Length", &m.Length},           {"MpegVersion", &m.MpegVersion},
        {"Original", &m.Original}, {"Size", &m.Size},             {"Spare", &m.Spare},
        {"Title", &m.Title},     {"Artist", &m.Artist},           {"Album", &m.Album},
        {"Year", &m.Year},       {"Comment", &m.Comment}};
    if (!json) {
        for (const auto& [k, v] : texts) std::cout << k << ": " << cp1252ToUtf8(*v) << '\n';
        std::cout << "Genre: " << (m.Genre ? std::to_string(*m.Genre) : "") << '\n';
        std::cout << "Lyrics: " << cp1252ToUtf8(m.Lyrics) << '\n';
        std::cout << "HasId3Tag: " << module.HasId3Tag << "  HasLyricsTag: " << module.HasLyricsTag
                  << "  LyricsSeen: " << module.LyricsSeen << "  LyricsBlockStart: " << module.LyricsBlockStart
                  << '\n';
        return;
    }
    JsonWriter j;
    j.beginObject();
    for (size_t i = 0; i < 17; ++i) j.key(texts[i].first).value(cp1252ToUtf8(*texts[i].second));
    j.key("Genre");
    if (m.Genre) j.value(int64_t{*m.Genre});
    else j.value("");
    j.key("Lyrics").value(cp1252ToUtf8(m.Lyrics));
    j.key("HasId3Tag").value(module.HasId3Tag);
    j.key("HasLyricsTag").value(module.HasLyricsTag);
    j.key("LyricsSeen").value(module.LyricsSeen);
    j.key("LyricsBlockStart").value(int64_t{module.LyricsBlockStart});
    j.endObject();
    std::cout << j.str() << '\n';
}

}  // namespace

int runMp3Info(const std::vector<std::string>& args) {
    TagOptions o;
    std::string error;
    if (!parseTagOptions(args, false, true, o, error)) {
        std::cerr << "velaro mp3info: " << error << "\nusage: velaro mp3info FILE [--json]\n";
        return 2;
    }
    Mmp3 module;
    const Mp3Info info = module.GetMp3Info(o.file);
    writeInfo(info, module, o.json);
    return 0;
}

int runTag(const std::vector<std::string>& args) {
    TagOptions o;
    std::string error;
    if (!parseTagOptions(args, true, false, o, error)) {
        std::cerr << "velaro tag: " << error
                  << "\nusage: velaro tag FILE [--title T] [--artist A] [--album B] [--year Y] [--comment C] "
                     "[--genre-pos N] [--lyrics-file F | --no-lyrics]\n";
        return 2;
    }
    if (const std::string why = cannotWrite(o.file, 0); !why.empty()) {
        std::cerr << "velaro tag: cannot write " << o.file << ": " << why << '\n';
        return 1;
    }
    std::string lyricsBytes;
    if (o.lyricsFile) {
        try {
            lyricsBytes = crlfLines(readWholeFile(*o.lyricsFile));
        } catch (const std::exception&) {
            std::cerr << "velaro tag: cannot read " << *o.lyricsFile << '\n';
            return 1;
        }
    }

    Mmp3 module;
    const Mp3Info info = module.GetMp3Info(o.file);
    auto field = [&](const char* name, const std::string& fromFile) {
        auto it = o.text.find(name);
        return it == o.text.end() ? fromFile : utf8ToCp1252(it->second);
    };
    // The editor's rule: box position 0 or less is "Other" (12), else position less one.
    const int position = o.genrePos ? *o.genrePos : info.Genre.value_or(0);
    const auto genre = static_cast<uint8_t>(position <= 0 ? 12 : position - 1);
    const tags::Id3Fields fields = tags::makeId3Fields(field("title", info.Title), field("artist", info.Artist),
                                                       field("album", info.Album), field("year", info.Year),
                                                       field("comment", info.Comment), genre);
    const std::string record = "TAG" + std::string(fields.data(), fields.size());
    const std::string lyrics = o.lyricsFile ? lyricsBytes : o.noLyrics ? std::string() : info.Lyrics;

    if (!module.WriteLyricsTag(o.file, record, lyrics)) {
        const std::string& why = module.WriteError;
        // The saver's own messages already name the file.
        if (why.rfind("cannot write ", 0) == 0) std::cerr << "velaro tag: " << why << '\n';
        else std::cerr << "velaro tag: cannot write " << o.file << ": " << why << '\n';
        return 1;
    }
    return 0;
}

int runId3(const std::vector<std::string>& args) {
    TagOptions o;
    std::string error;
    if (!parseTagOptions(args, false, false, o, error)) {
        std::cerr << "velaro id3: " << error
                  << "\nusage: velaro id3 FILE [--title T] [--artist A] [--album B] [--year Y] [--comment C]\n";
        return 2;
    }
    if (o.text.empty()) {
        tags::clsMP3Info info;
        try {
            info.setFilename(o.file);
        } catch (const std::exception&) {
            // The name guesser gave up half way: what it had stays.
        }
        JsonWriter j;
        j.beginObject();
        j.key("Title").value(cp1252ToUtf8(info.Title()));
        j.key("Artist").value(cp1252ToUtf8(info.Artist()));
        j.key("Album").value(cp1252ToUtf8(info.Album()));
        j.key("Year").value(cp1252ToUtf8(info.Year()));
        j.key("Comment").value(cp1252ToUtf8(info.Comment()));
        j.key("Genre").value(cp1252ToUtf8(info.Genre()));
        j.endObject();
        std::cout << j.str() << '\n';
        return 0;
    }
    if (const std::string why = cannotWrite(o.file, 128); !why.empty()) {
        std::cerr << "velaro id3: cannot write " << o.file << ": " << why << '\n';
        return 1;
    }
    // The editor's save: what it shows, changed by the options, genre reset to 0.
    ui::Headless ui;
    tags::FrmID3 form(ui.rt);
    form.Filename = o.file;
    try {
        form.load();
    } catch (const std::exception&) {
    }
    const std::pair<const char*, ui::TextBox*> boxes[] = {{"title", &form.txtSong},   {"artist", &form.txtArtist},
                                                          {"album", &form.txtAlbum},  {"year", &form.txtYear},
                                                          {"comment", &form.txtComments}};
    for (const auto& [name, box] : boxes)
        if (auto it = o.text.find(name); it != o.text.end()) box->setText(utf8ToCp1252(it->second));
    form.cmdSave_Click();
    if (!form.saveError.empty()) {
        std::cerr << "velaro id3: " << form.saveError << '\n';
        return 1;
    }
    return 0;
}

}  // namespace velaro::cli
