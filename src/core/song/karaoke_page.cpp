// The karaoke page: on each tick of Timer1 the next word is reached when the
// song clock passes it, and the page of five lines is drawn anew with the
// sung part of the first line in its own colour. Each new line reached is
// stamped into Text2.

#include "../base/byte_text.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../shell/frm_main.h"

namespace velaro::song {

namespace {
constexpr double kPageTop = 68;
constexpr double kLineGap = 12;
}  // namespace

void frmMain::Timer1_Tick() {
    ui::Canvas& page = Picture3.canvas();
    auto& perf = *platform.performance;
    int32_t L = 0;
    double x0 = 0;
    // Steps 1 to 8 have no guard of their own; a failure ends the tick.
    try {
        if (wordCursor == 0) wordCursor = 1;
        rt.loop.doEvents();
        timeOffsetMs = clng(perf.GetMasterTempo() * 1000.0 - songBpm);
        const double now = tempoUs * (perf.GetSeek(dmSegmentState) / 768000.0) - timeOffsetMs;
        if (wordCursor + 1 > wordUpperBound()) return;
        if (now < wordTable.at(static_cast<size_t>(wordCursor)).timeMs) return;
        ++wordCursor;
        L = wordTable.at(static_cast<size_t>(wordCursor)).lineIndex;
        x0 = page.scaleWidth() / 2 - page.textWidth(lineTable.at(static_cast<size_t>(L))) / 2;
        if (L != lastSyncLine) {
            writeStamp(static_cast<int16_t>(L));
            lastSyncLine = static_cast<int16_t>(L);
        }
    } catch (const std::exception&) {
        return;
    }

    // From here errors are ignored: lines past the end are simply not there.
    double x[5] = {x0, 0, 0, 0, 0};
    for (int k = 1; k <= 4; ++k)
        resumeNext([&] { x[k] = page.scaleWidth() / 2 - page.textWidth(lineTable.at(static_cast<size_t>(L + k))) / 2; });
    const std::string& line = lineTable[static_cast<size_t>(L)];
    const WordRec& word = wordTable[static_cast<size_t>(wordCursor)];
    Timer5.setEnabled(!trim(line).empty());

    resumeNext([&] { page.cls(); });
    page.currentY = kPageTop;
    page.currentX = x0;
    page.foreColor = static_cast<uint32_t>(colorSung);
    resumeNext([&] { page.print(left(line, word.linePos), false); });
    resumeNext([&] { page.print(word.text, false); });
    page.foreColor = static_cast<uint32_t>(colorUnsung);
    resumeNext([&] {
        page.print(right(line, static_cast<int64_t>(line.size()) - (word.linePos + word.textLen)), true);
    });
    for (int k = 1; k <= 4; ++k) {
        page.currentY += kLineGap;
        page.currentX = x[k];
        resumeNext([&] { page.print(lineTable.at(static_cast<size_t>(L + k)), true); });
    }
    page.currentY += kLineGap;
    resumeNext([&] { rt.loop.doEvents(); });
}

void frmMain::writeStamp(int16_t line) {
    auto& perf = *platform.performance;
    const double total = vbInt(vbDivide((perf.GetSeek(dmSegmentState) / 768.0) * 60, playTempo));
    syncMinutes = clng(vbInt(total / 60));
    syncSeconds = vbInt(total - syncMinutes * 60.0);
    int32_t minutes = syncMinutes;
    double seconds = syncSeconds;
    // Set back so the line shows just before it is sung; the uneven rules are kept.
    if (minutes == 0) {
        if (seconds > 2) seconds -= 1;
    } else if (seconds <= 2) {
        seconds += 57;
        minutes -= 1;
    } else {
        seconds -= 1;
    }
    Text2.setText(Text2.text() + "[" + vbFormat(minutes, "00") + ":" + vbFormat(seconds, "00") + "]" +
                  lineTable.at(static_cast<size_t>(line)) + "\r\n");
}

void frmMain::Command4_Click() {
    Cmdialog2.Flags = 1;
    Cmdialog2.CancelError = true;
    try {
        Cmdialog2.ShowFont();
    } catch (const std::exception&) {
        return;
    }
    const ui::Font chosen = Cmdialog2.FontValue;
    ui::Font font = Picture3.font();
    // Underline comes from the other dialog, which never had a font chosen.
    font.underline = CMDialog1.FontValue.underline;
    if (!chosen.name.empty() && chosen.name != " ") font.name = chosen.name;
    font.italic = chosen.italic;
    font.bold = chosen.bold;
    font.size = static_cast<int>(chosen.size);
    Picture3.setFont(font);
    Picture3.canvas().font = font;
    fontName = font.name;
    fontSize = static_cast<int32_t>(font.size);
}

void frmMain::Command5_Click() {
    Cmdialog2.CancelError = true;
    try {
        Cmdialog2.ShowColor();
    } catch (const std::exception&) {
        return;
    }
    colorSung = static_cast<int32_t>(Cmdialog2.Color);
    Picture3.canvas().foreColor = static_cast<uint32_t>(colorSung);
}

void frmMain::Command6_Click() {
    Cmdialog2.CancelError = true;
    try {
        Cmdialog2.ShowColor();
    } catch (const std::exception&) {
        return;
    }
    colorUnsung = static_cast<int32_t>(Cmdialog2.Color);
    // The page shows the sung colour here too: the change appears with the next word.
    Picture3.canvas().foreColor = static_cast<uint32_t>(colorSung);
}

void frmMain::TimTps_Timer() {
    if (!digitalRecorderMode && !audioFileMode) return;
    int32_t seconds = 0, minutes = 0;
    resumeNext([&] { seconds = clng(std::stod("0" + lblS.caption())); });
    resumeNext([&] { minutes = clng(std::stod("0" + lblM.caption())); });
    seconds += 1;
    if (seconds > 59) {
        minutes += 1;
        seconds = 0;
    }
    tpsSeconds = seconds;
    tpsMinutes = minutes;
    lblS.setCaption(seconds < 10 ? "0" + std::to_string(seconds) : std::to_string(seconds));
    // From ten minutes on the minutes land in the seconds label, as they always did.
    if (minutes < 10) lblM.setCaption("0" + std::to_string(minutes));
    else lblS.setCaption(std::to_string(minutes));
}

}  // namespace velaro::song
