// velaro lyrics: the lyric text the tag editor would load from a file, the
// sorted entries it makes of it, and where the lyrics window's highlight
// stands at given clock positions.

#include <charconv>
#include <cmath>
#include <filesystem>
#include <iostream>

#include "arg_value.h"
#include "commands.h"
#include "core/base/byte_text.h"
#include "core/base/cp1252.h"
#include "core/base/vb_number.h"
#include "core/settings/m_config.h"
#include "core/tags/frm_lyrics.h"
#include "core/tags/mmp3.h"
#include "core/tags/timed_lyrics.h"
#include "core/ui/headless.h"
#include "json_writer.h"

namespace velaro::cli {

namespace {

constexpr const char* kLyricsUsage = "usage: velaro lyrics FILE [--json] [--at SECONDS[,SECONDS...]]\n";

bool isTextFile(const std::string& path) {
    const std::string ext = lcase(std::filesystem::path(path).extension().string());
    return ext == ".txt" || ext == ".lrc";
}

bool parsePositions(const std::string& list, std::vector<double>& out) {
    size_t from = 0;
    for (;;) {
        const size_t comma = list.find(',', from);
        const std::string item = trim(list.substr(from, comma == std::string::npos ? std::string::npos : comma - from));
        double v = 0;
        auto [p, ec] = std::from_chars(item.data(), item.data() + item.size(), v);
        if (item.empty() || ec != std::errc() || p != item.data() + item.size() || !std::isfinite(v) || v < 0 ||
            v > 359999)
            return false;
        out.push_back(v);
        if (comma == std::string::npos) return true;
        from = comma + 1;
    }
}

}  // namespace

// The text as the editor would hold it: a text file read line by line, or the
// Lyrics3 lyrics of an audio file. False when the file cannot be read.
bool editorLyricText(const std::string& path, std::string& text, std::string& error) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        error = "no such file";
        return false;
    }
    if (isTextFile(path)) {
        ui::Headless h;
        ui::Form form(h.rt, "frmTags");
        ui::TextBox box(&form, "txtLyrics");
        std::vector<std::string> lines;
        if (!tags::Chargement_Paroles(path, box, lines)) {
            error = "cannot read the file";
            return false;
        }
        text = box.text();
        return true;
    }
    tags::Mmp3 module;
    text = module.GetMp3Info(path).Lyrics;
    return true;
}

int runLyrics(const std::vector<std::string>& args) {
    std::string file, error;
    bool json = false;
    std::vector<double> positions;
    bool at = false;
    for (size_t i = 0; i < args.size(); ++i) {
        std::string v;
        if (args[i] == "--json") {
            json = true;
        } else if (args[i] == "--at") {
            if (!takeValue(args, i, v, error)) break;
            if (!parsePositions(v, positions)) {
                error = "--at takes seconds (0 or more) separated by commas";
                break;
            }
            at = true;
        } else if (!args[i].empty() && args[i][0] == '-') {
            error = "unknown option " + args[i];
        } else if (file.empty()) {
            file = args[i];
        } else {
            error = "one file only";
        }
        if (!error.empty()) break;
    }
    if (error.empty() && file.empty()) error = "no file given";
    if (!error.empty()) {
        std::cerr << "velaro lyrics: " << error << '\n' << kLyricsUsage;
        return 2;
    }

    std::string text;
    if (!editorLyricText(file, text, error)) {
        std::cerr << "velaro lyrics: " << file << ": " << error << '\n';
        return 1;
    }

    // The lyrics window's list, sorted as the editor's list sorts it.
    ui::Headless h;
    tags::TagsState state;
    settings::mConfig config;
    tags::FrmLyrics window(h.rt, state, config);
    for (const auto& e : tags::LyricEntries(text)) tags::addSorted(window.LyricsRef, e);

    if (at) {
        // As if the file had a lyrics tag and the window were open: one tick of the walk per position.
        window.Order_lblLyrics();
        int16_t lyricPos = 0;
        for (double s : positions) {
            const std::string clock = tags::TimeText(static_cast<int64_t>(roundHalfEven(s)));
            try {
                tags::SyncLyrics(clock, window.LyricsRef, lyricPos, [&] { window.Move_Next_Focus_Lyrics(); },
                                 [&] { window.Move_Previous_Focus_Lyrics(); });
            } catch (const std::exception&) {
                // An overflowing walk stops where it stood, as the timer's tick did.
            }
            JsonWriter j(true);
            j.beginObject();
            j.key("at").value(s);
            j.key("lyricPos").value(int64_t{lyricPos} + 1);
            j.key("entry").value(cp1252ToUtf8(window.highlightedText()));
            j.endObject();
            std::cout << j.str() << '\n';
        }
        return 0;
    }

    if (json) {
        JsonWriter j(true);
        j.beginObject();
        j.key("text").value(cp1252ToUtf8(text));
        j.key("entries").beginArray();
        for (int i = 0; i < window.LyricsRef.listCount(); ++i) j.value(cp1252ToUtf8(window.LyricsRef.list(i)));
        j.endArray();
        j.endObject();
        std::cout << j.str() << '\n';
        return 0;
    }
    std::string shown = cp1252ToUtf8(text);
    std::cout << shown;
    if (!shown.empty() && shown.back() != '\n') std::cout << '\n';
    std::cout << "-- " << window.LyricsRef.listCount() << " entries\n";
    for (int i = 0; i < window.LyricsRef.listCount(); ++i) std::cout << cp1252ToUtf8(window.LyricsRef.list(i)) << '\n';
    return 0;
}

}  // namespace velaro::cli
