// velaro playlist: a playlist as the playlist window keeps it. Loads a .mpl,
// adds files and folders, sorts, reverses and shuffles with the window's own
// handlers, prints the rows and can save the .mpl (CR LF, Windows-1252).

#include <charconv>
#include <cstdio>
#include <iostream>

#include "arg_value.h"
#include "commands.h"
#include "core/base/byte_text.h"
#include "core/base/cp1252.h"
#include "core/platform/inert.h"
#include "core/player/plist.h"
#include "core/player/vb_random.h"
#include "core/ui/headless.h"
#include "engine/icu_collation.h"

namespace velaro::cli {

namespace {

struct PlaylistOptions {
    std::string file;
    std::vector<std::pair<bool, std::string>> adds;  // (folder?, path) in the order given
    std::string sort;
    bool reverse = false;
    std::optional<uint64_t> seed;
    std::string out;
    bool json = false;
};

const char* kPlaylistUsage =
    "usage: velaro playlist [FILE.mpl] [--add PATH ...] [--add-dir DIR ...] [--sort artist|title|filename]\n"
    "                       [--reverse] [--shuffle SEED] [-o OUT.mpl] [--json]\n";

bool parsePlaylist(const std::vector<std::string>& args, PlaylistOptions& o, std::string& error) {
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        std::string v;
        if (a == "--add" || a == "--add-dir") {
            const bool folder = a == "--add-dir";
            size_t taken = 0;
            // One or more paths follow, up to the next option.
            while (i + 1 < args.size() && (args[i + 1].empty() || args[i + 1][0] != '-')) {
                o.adds.emplace_back(folder, args[++i]);
                ++taken;
            }
            if (taken == 0) {
                error = a + " needs a path";
                return false;
            }
        } else if (a == "--sort") {
            if (!takeValue(args, i, v, error)) return false;
            if (v != "artist" && v != "title" && v != "filename") {
                error = "--sort takes artist, title or filename";
                return false;
            }
            o.sort = v;
        } else if (a == "--reverse") {
            o.reverse = true;
        } else if (a == "--shuffle") {
            if (!takeValue(args, i, v, error)) return false;
            uint64_t seed = 0;
            auto [p, ec] = std::from_chars(v.data(), v.data() + v.size(), seed);
            if (ec != std::errc() || p != v.data() + v.size()) {
                error = "--shuffle takes a whole number 0 or above";
                return false;
            }
            o.seed = seed;
        } else if (a == "-o") {
            if (!takeValue(args, i, o.out, error)) return false;
        } else if (a == "--json") {
            o.json = true;
        } else if (!a.empty() && a[0] == '-') {
            error = "unknown option " + a;
            return false;
        } else if (o.file.empty()) {
            o.file = a;
        } else {
            error = "one playlist file only (files to add go after --add)";
            return false;
        }
    }
    return true;
}

// A JSON string: quotes, backslashes and control characters escaped, the rest as it is.
std::string jsonText(const std::string& utf8) {
    std::string out = "\"";
    for (unsigned char c : utf8) {
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            case '\b': out += "\\b"; break;
            case '\f': out += "\\f"; break;
            default:
                if (c < 0x20) {
                    char buf[8];
                    std::snprintf(buf, sizeof buf, "\\u%04x", c);
                    out += buf;
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    return out + "\"";
}

// A folder as the folder scan wants it: no trailing separator but the root's.
std::string folderPath(std::string dir) {
    while (dir.size() > 1 && dir.back() == '/') dir.pop_back();
    return dir;
}

}  // namespace

int runPlaylist(const std::vector<std::string>& args) {
    PlaylistOptions o;
    std::string error;
    if (!parsePlaylist(args, o, error)) {
        std::cerr << "velaro playlist: " << error << '\n' << kPlaylistUsage;
        return 2;
    }
    ui::Headless ui;
    platform::InertPlatform inert;
    engine::IcuCollation icu;
    if (icu.ok()) inert.get().collation = &icu;
    // Never loaded: the window's start (songtemp.tmp) is not this command's business.
    player::pList list(ui.rt, inert.get(), "");

    // A missing playlist gives an empty list, as the window takes it.
    if (!o.file.empty()) list.LoadPlaylist(o.file);
    for (const auto& [folder, path] : o.adds) {
        if (folder) {
            try {
                list.AddDirectory(folderPath(path));
            } catch (const std::exception& e) {
                std::cerr << "velaro playlist: " << path << ": not a folder\n";
                return 1;
            }
        } else if (lcase(right(path, 3)) == "mpl") {
            list.LoadPlaylist(path);
        } else if (list.AddEntry(path)) {
            list.lstFilenames.addItem(path);
        }
    }
    if (o.sort == "artist") list.mnuArtist_Click();
    else if (o.sort == "title") list.mnuTitle_Click();
    else if (o.sort == "filename") list.mnuFilename_Click();
    if (o.reverse) list.mnuReverse_Click();
    if (o.seed) {
        player::programRandom().seed(*o.seed);
        list.mnuRandom_Click();
    }

    if (!o.out.empty()) {
        try {
            list.WritePlaylist(o.out);
        } catch (const std::exception& e) {
            std::cerr << "velaro playlist: " << e.what() << '\n';
            return 1;
        }
    }

    const int rows = list.lstPlayList1.count();
    auto path = [&](int row) { return list.lstFilenames.list(row - 1); };
    if (o.json) {
        // Written as the issue shows it: ", " and ": " between items, text as UTF-8.
        std::string j = "{\"rows\": [";
        for (int r = 1; r <= rows; ++r) {
            const player::ListItem& it = list.lstPlayList1.item(r);
            if (r > 1) j += ", ";
            j += "{\"number\": " + jsonText(it.text) + ", \"title\": " + jsonText(cp1252ToUtf8(it.subItems[0])) +
                 ", \"artist\": " + jsonText(cp1252ToUtf8(it.subItems[1])) +
                 ", \"path\": " + jsonText(player::pathForDisplay(path(r))) + "}";
        }
        j += "]}";
        std::cout << j << '\n';
    } else {
        for (int r = 1; r <= rows; ++r) {
            const player::ListItem& it = list.lstPlayList1.item(r);
            std::cout << it.text << '\t' << cp1252ToUtf8(it.subItems[0]) << '\t' << cp1252ToUtf8(it.subItems[1])
                      << '\t' << player::pathForDisplay(path(r)) << '\n';
        }
    }
    return 0;
}

}  // namespace velaro::cli
