// Show_Lyrics and the walk on a 2,000-line lyric text: the parse into both
// sorted lists (once per Play), the window's labels, and a song's worth of
// play-timer ticks of SyncLyrics, forward and after seeks.

#include <chrono>
#include <cstdio>
#include <string>

#include "core/settings/m_config.h"
#include "core/tags/frm_lyrics.h"
#include "core/tags/timed_lyrics.h"
#include "core/ui/headless.h"

using namespace velaro;

namespace {

template <class F>
double bestMs(int rounds, F f) {
    double best = 1e300;
    for (int r = 0; r < rounds; ++r) {
        const auto t0 = std::chrono::steady_clock::now();
        f();
        best = std::min(best, std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count());
    }
    return best;
}

}  // namespace

int main() {
    constexpr int kLines = 2000;
    std::string text;
    // Two seconds a line, written out of order in pairs so the sort has work to do.
    for (int i = 0; i < kLines; i += 2)
        text += "[" + tags::TimeText((i + 1) * 2) + "]line " + std::to_string(i + 1) + " of the song\r\n[" +
                tags::TimeText(i * 2) + "]line " + std::to_string(i) + " of the song\r\n";

    ui::Headless h;
    tags::TagsState state;
    settings::mConfig config;
    tags::FrmLyrics window(h.rt, state, config);
    ui::Form editor(h.rt, "frmTags");
    ui::ListBox ref(&editor, "LyricsRef");

    const double parseMs = bestMs(5, [&] {
        ref.clear();
        window.LyricsRef.clear();
        for (const auto& e : tags::LyricEntries(text)) {
            tags::addSorted(window.LyricsRef, e);
            tags::addSorted(ref, e);
        }
    });
    const double labelsMs = bestMs(5, [&] { window.Order_lblLyrics(); });

    // Ten ticks a second over the whole song, then a seek back and forward every 30 s.
    const int seconds = kLines * 2 + 10;
    int ticks = 0;
    const double walkMs = bestMs(3, [&] {
        window.Reset_Values();
        int16_t pos = 0;
        ticks = 0;
        for (int t = 0; t < seconds * 10; ++t) {
            int s = t / 10;
            if (t % 300 == 299) s = std::max(0, s - 60);
            tags::SyncLyrics(tags::TimeText(s), ref, pos, [&] { window.Move_Next_Focus_Lyrics(); },
                             [&] { window.Move_Previous_Focus_Lyrics(); });
            ++ticks;
        }
    });

    std::printf("bench_lyrics: %d lines, %d entries\n", kLines, ref.listCount());
    std::printf("  Show_Lyrics into both sorted lists: %8.2f ms\n", parseMs);
    std::printf("  Order_lblLyrics (2,000 labels):     %8.2f ms\n", labelsMs);
    std::printf("  SyncLyrics, %d ticks:            %8.2f ms  (%.2f us a tick; the timer allows 100,000)\n", ticks,
                walkMs, walkMs * 1000 / ticks);
    return 0;
}
