// libFuzzer target: any bytes as a lyric text: stamps at every kind of
// caret, undo, the parse into the sorted list, the walk and the lyrics
// window's moves; and the same bytes as an INI file.
// clang++ -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -Isrc \
//   tests/fuzz/fuzz_lyrics.cpp src/core/*/*.cpp -o fuzz_lyrics
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/base/ini_file.h"
#include "core/settings/m_config.h"
#include "core/tags/frm_lyrics.h"
#include "core/tags/timed_lyrics.h"
#include "core/ui/headless.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velaro;
    const std::string text(reinterpret_cast<const char*>(data), size);
    ui::Headless h;
    tags::TagsState state;
    settings::mConfig config;
    tags::FrmLyrics window(h.rt, state, config);
    ui::Form form(h.rt, "frmTags");
    ui::TextBox box(&form, "txtLyrics");
    tags::UndoStack undo;
    box.setText(text);
    const int n = static_cast<int>(size);
    for (int caret : {0, n / 3, n / 2, n, n + 5}) {
        box.selStart = caret;
        tags::StampLine(box, caret * 7.5, undo);
    }
    for (int i = 0; i < 3; ++i) tags::UndoStamp(box, undo);
    for (const auto& e : tags::LyricEntries(box.text())) tags::addSorted(window.LyricsRef, e);
    window.Order_lblLyrics();
    int16_t pos = 0;
    for (int s : {0, 5, 3600, 2, 99999, 0}) {
        try {
            tags::SyncLyrics(tags::TimeText(s), window.LyricsRef, pos, [&] { window.Move_Next_Focus_Lyrics(); },
                             [&] { window.Move_Previous_Focus_Lyrics(); });
        } catch (const std::exception&) {
        }
    }
    const IniFile ini = IniFile::parse(text);
    ini.get("Skin", "RepBackColor");
    return 0;
}
