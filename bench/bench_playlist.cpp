// The playlist with 20,000 MP3s: adding the folder (every tag read), then each
// sort, checked against a literal selection sort on the same list (the aim:
// add <= 2 s, sort <= 100 ms, the same outcome to the last tie).

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "core/base/paths.h"
#include "core/platform/inert.h"
#include "core/player/plist.h"
#include "core/ui/headless.h"
#include "engine/icu_collation.h"

using namespace velaro;
namespace fs = std::filesystem;

namespace {

constexpr int kFiles = 20000;

std::string id3(const std::string& title, const std::string& artist) {
    std::string t = "TAG";
    for (const auto& [text, w] : {std::pair{title, 30}, {artist, 30}}) {
        std::string f = text;
        f.resize(static_cast<size_t>(w), ' ');
        t += f;
    }
    t.resize(127, ' ');
    return t + '\0';
}

double msSince(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
}

struct Row {
    std::string title, artist, path, titleKey, artistKey, pathKey;
};

std::vector<Row> rowsOf(player::pList& l, const platform::TextCollation& c) {
    std::vector<Row> rows;
    for (int i = 1; i <= l.lstPlayList1.count(); ++i) {
        const auto& it = l.lstPlayList1.item(i);
        const std::string p = l.lstFilenames.list(i - 1);
        rows.push_back({it.subItems[0], it.subItems[1], p, c.sortKey(it.subItems[0]), c.sortKey(it.subItems[1]),
                        c.sortKey(p)});
    }
    return rows;
}

// The file-name sort rebuilds the rows from the files, so only the paths are its outcome.
bool sameAs(player::pList& l, const std::vector<Row>& rows, bool pathsOnly) {
    for (size_t i = 0; i < rows.size(); ++i) {
        if (pathsOnly) {
            if (l.lstFilenames.list(static_cast<int>(i)) != rows[i].path) return false;
            continue;
        }
        const auto& it = l.lstPlayList1.item(static_cast<int>(i) + 1);
        if (it.subItems[0] != rows[i].title || it.subItems[1] != rows[i].artist ||
            l.lstFilenames.list(static_cast<int>(i)) != rows[i].path)
            return false;
    }
    return true;
}

// The sorts as written, comparison by comparison (collation keys stand for the compare).
void literalArtist(std::vector<Row>& r) {
    for (size_t i = 0; i < r.size(); ++i) {
        size_t idx = i, keptArtist = i;
        for (size_t j = i; j < r.size(); ++j) {
            if (r[j].artistKey < r[keptArtist].artistKey) {
                keptArtist = idx = j;
            } else if (r[j].artistKey == r[keptArtist].artistKey && r[j].titleKey < r[idx].titleKey) {
                idx = j;
            }
        }
        Row old = r[i];
        const std::string artist = r[keptArtist].artist, artistKey = r[keptArtist].artistKey;
        r[i].title = r[idx].title;
        r[i].titleKey = r[idx].titleKey;
        r[i].artist = artist;
        r[i].artistKey = artistKey;
        std::swap(r[i].path, r[idx].path);
        if (idx != i) {
            r[idx].title = old.title;
            r[idx].titleKey = old.titleKey;
            r[idx].artist = old.artist;
            r[idx].artistKey = old.artistKey;
        }
    }
}

template <class Key>
void literalBy(std::vector<Row>& r, Key key) {
    for (size_t i = 0; i < r.size(); ++i) {
        size_t idx = i;
        for (size_t j = i; j < r.size(); ++j)
            if (key(r[j]) < key(r[idx])) idx = j;
        std::swap(r[i], r[idx]);
    }
}

}  // namespace

int main() {
    const std::string dir = tempFolder() + "/velaro-bench-playlist";
    fs::remove_all(dir);
    const char* artists[] = {"Modugno", "MODUGNO", "Mina", "Dalla", "Battisti", "Celentano", "\xC9" "dith", "edith"};
    const char* titles[] = {"Volare", "Azzurro", "Caruso", "Emozioni", "Grande grande", "Il mondo", "\xC9t\xE9", "ete"};
    for (int d = 0; d < 20; ++d) fs::create_directories(dir + "/cd" + std::to_string(d));
    for (int i = 0; i < kFiles; ++i) {
        const std::string title = std::string(titles[(i * 7) % 8]) + " " + std::to_string(i % 211);
        writeWholeFile(dir + "/cd" + std::to_string(i % 20) + "/track" + std::to_string(i) + ".mp3",
                       std::string(417, '\0') + id3(title, artists[(i * 3) % 8]));
    }

    ui::Headless ui;
    platform::InertPlatform inert;
    engine::IcuCollation icu;
    inert.get().collation = &icu;
    player::pList l(ui.rt, inert.get(), dir);
    auto t0 = std::chrono::steady_clock::now();
    l.AddDirectory(dir);
    const double addMs = msSince(t0);
    std::printf("add %d MP3s from 20 folders (tag reads): %.0f ms (aim <= 2000)\n", l.lstPlayList1.count(), addMs);

    struct Sort {
        const char* name;
        void (player::pList::*run)();
    } sorts[] = {{"artist", &player::pList::mnuArtist_Click},
                 {"title", &player::pList::mnuTitle_Click},
                 {"filename", &player::pList::mnuFilename_Click}};
    for (const auto& s : sorts) {
        std::vector<Row> expect = rowsOf(l, icu);
        t0 = std::chrono::steady_clock::now();
        (l.*s.run)();
        const double ms = msSince(t0);
        const auto t1 = std::chrono::steady_clock::now();
        if (std::string(s.name) == "artist") literalArtist(expect);
        else if (std::string(s.name) == "title") literalBy(expect, [](const Row& r) -> const std::string& { return r.titleKey; });
        else literalBy(expect, [](const Row& r) -> const std::string& { return r.pathKey; });
        const double literalMs = msSince(t1);
        std::printf("sort by %-8s: %7.1f ms%s (aim <= 100); literal selection sort %.0f ms; outcome %s\n", s.name, ms,
                    std::string(s.name) == "filename" ? " with the rebuild's tag reads" : "", literalMs,
                    sameAs(l, expect, std::string(s.name) == "filename") ? "identical" : "DIFFERENT");
    }
    // The rebuild alone: reverse swaps the paths and rebuilds the same way.
    t0 = std::chrono::steady_clock::now();
    l.mnuReverse_Click();
    std::printf("rebuild of the rows from the files (as after the file-name sort): %.0f ms\n", msSince(t0));
    fs::remove_all(dir);
    return 0;
}
