// velaro info FILE [--json]: reads a song as the main window does and prints its model.

#include <cstdio>
#include <iostream>

#include "commands.h"
#include "core/base/byte_text.h"
#include "core/base/cp1252.h"
#include "core/base/vb_number.h"
#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "json_writer.h"

namespace velaro::cli {

namespace {

using song::frmMain;

void writeJson(const frmMain& f, const ui::ScriptedDialogs& dialogs, std::ostream& out) {
    JsonWriter j;
    j.beginObject();
    j.key("smfFormat").value(int{f.smfFormat});
    j.key("smfTracks").value(int{f.smfTracks});
    j.key("divisionQuarter").value(f.divisionQuarter);
    j.key("tempoUs").value(f.tempoUs);
    j.key("songBpm").value(f.songBpm);
    j.key("msPerTick").value(f.msPerTick);
    j.key("skipConversion").value(f.skipConversion);
    j.key("lyricRich").value(int{f.lyricRich});
    j.key("notices").beginArray();
    for (const auto& box : dialogs.messageBoxes())
        j.beginObject().key("title").value(box.title).key("text").value(box.text).endObject();
    j.endArray();
    j.key("channels").beginArray();
    for (const auto& r : f.channelTable) {
        j.beginObject();
        j.key("patchChanged").value(int{r.patchChanged});
        j.key("volumeChanged").value(int{r.volumeChanged});
        j.key("patch").value(int{r.patch});
        j.key("channelNo").value(int{r.channelNo});
        j.key("volume").value(int{r.volume});
        j.key("pan").value(int{r.pan});
        j.key("rowState").value(int{r.rowState});
        j.endObject();
    }
    j.endArray();
    j.key("words").beginArray();
    for (size_t i = 1; i < f.wordTable.size(); ++i) {
        const auto& w = f.wordTable[i];
        j.beginObject();
        j.key("timeMs").value(w.timeMs);
        j.key("deltaMs").value(w.deltaMs);
        j.key("text").value(cp1252ToUtf8(w.text));
        j.key("textLen").value(int{w.textLen});
        j.key("linePos").value(int64_t{w.linePos});
        j.key("lineIndex").value(int{w.lineIndex});
        j.endObject();
    }
    j.endArray();
    j.key("lines").beginArray();
    for (const auto& l : f.lineTable) j.value(cp1252ToUtf8(l));
    j.endArray();
    j.key("fullLyricText").value(cp1252ToUtf8(f.fullLyricText));
    j.endObject();
    out << j.str() << '\n';
}

void writeText(const frmMain& f, const ui::ScriptedDialogs& dialogs, std::ostream& out) {
    out << "Song:        " << f.songPath() << '\n';
    out << "Format:      " << f.smfFormat << "    Tracks: " << f.smfTracks << '\n';
    out << "Division/4:  " << numberText(f.divisionQuarter) << "    Tempo: " << numberText(f.tempoUs)
        << " us/quarter (" << vbFormat(f.songBpm, "0.00") << " BPM)    ms per tick: "
        << numberText(f.msPerTick) << '\n';
    out << "Lyric check: skipConversion " << (f.skipConversion ? "true" : "false") << ", lyricRich "
        << int{f.lyricRich} << '\n';
    for (const auto& box : dialogs.messageBoxes())
        out << "Notice:      [" << box.title << "] " << box.text << '\n';
    out << "\nCh  Used  Patch  Volume  Pan  State\n";
    for (int c = 0; c < 16; ++c) {
        const auto& r = f.channelTable[c];
        char line[96];
        std::snprintf(line, sizeof line, "%2d  %4s  %5d  %6d  %3d  %5d\n", c + 1,
                      r.channelNo > 0 ? "yes" : "-", r.patch, r.volume, r.pan, r.rowState);
        out << line;
    }
    out << "\nWords (" << f.wordTable.size() - 1 << " records):\n";
    for (size_t i = 1; i < f.wordTable.size(); ++i) {
        const auto& w = f.wordTable[i];
        if (w.text.empty()) continue;
        out << "  " << vbFormat(w.timeMs, "0.00") << " ms  line " << w.lineIndex << " @" << w.linePos
            << "  \"" << cp1252ToUtf8(w.text) << "\"\n";
    }
    out << "\nLines (" << f.lineTable.size() << "):\n";
    for (size_t i = 0; i < f.lineTable.size(); ++i)
        out << "  " << i << ": " << cp1252ToUtf8(f.lineTable[i]) << '\n';
}

}  // namespace

int runInfo(const std::vector<std::string>& args) {
    std::string file;
    bool json = false;
    for (const auto& a : args) {
        if (a == "--help" || a == "-h") {
            std::cout << "usage: velaro info FILE [--json]\n\n"
                         "Reads a song file as the main window does and prints its model: header,\n"
                         "first tempo, the 16 channel rows, the word and line tables, and any notice\n"
                         "the lyric layout check shows. --json prints one JSON object instead.\n";
            return 0;
        }
        if (a == "--json") {
            json = true;
        } else if (!a.empty() && a[0] == '-' && a != "-") {
            std::cerr << "velaro info: unknown option " << a << "\nusage: velaro info FILE [--json]\n";
            return 2;
        } else if (file.empty()) {
            file = a;
        } else {
            std::cerr << "velaro info: one file only\nusage: velaro info FILE [--json]\n";
            return 2;
        }
    }
    if (file.empty()) {
        std::cerr << "usage: velaro info FILE [--json]\n";
        return 2;
    }

    ui::Headless ui;  // every box gets its default button
    platform::InertPlatform inert;
    frmMain form(ui.rt, inert.get());
    form.setSongPath(file);

    // The open path's order: the model is cleared and read, then the lyric
    // layout of a .mid file is checked.
    form.ZeroVariables();
    form.readfile();
    form.SOLTON();
    const std::string ext = right(file, 3);
    if ((ext == "mid" || ext == "MID") && !form.skipConversion) form.senzatesto();

    if (json) writeJson(form, ui.dialogs, std::cout);
    else writeText(form, ui.dialogs, std::cout);
    return 0;
}

}  // namespace velaro::cli
