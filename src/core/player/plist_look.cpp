// The look of the playlist window: dragging the borderless form, the
// collapse of the list, the compact view, fonts and colours, and its
// settings file skin.ini.

#include <initializer_list>

#include "../base/byte_text.h"
#include "../base/paths.h"
#include "../base/safe_file.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "plist.h"

namespace velaro::player {

namespace {

std::string colourText(uint32_t c) { return std::to_string(static_cast<int32_t>(c)); }
std::string boolText(bool b) { return b ? "True" : "False"; }

// A text converted to a number as an assignment converts it: blanks around
// are fine, anything else that is not a number is a type mismatch.
double textToNumber(const std::string& s) {
    const std::string t = trim(s);
    if (t.empty()) throw VbError(VbErr::TypeMismatch);
    size_t used = 0;
    double v = 0;
    try {
        v = std::stod(t, &used);
    } catch (const std::exception&) {
        throw VbError(VbErr::TypeMismatch);
    }
    if (used != t.size()) throw VbError(VbErr::TypeMismatch);
    return v;
}

// Val: the number at the start of the text, 0 when there is none.
double leadingNumber(const std::string& s) {
    const std::string t = trim(s);
    try {
        return std::stod(t);
    } catch (const std::exception&) {
        return 0;
    }
}

// The old runtime's conversion of a text to a Boolean.
bool textToBool(const std::string& s) {
    const std::string l = lcase(trim(s));
    if (l == "true") return true;
    if (l == "false") return false;
    return textToNumber(s) != 0;
}

}  // namespace

// ---------------------------------------------------------------- look

void pList::Form_MouseDown(int button, int, double, double) {
    if (button == 1) dragging = true;
    if (button == 2 && popupMenu) popupMenu(mnuForm);
}

void pList::Form_MouseMove(int, int, double x, double y) {
    if (dragging) {
        formLeft += x - dragX;
        formTop += y - dragY;
        return;
    }
    resumeNext([&] {
        dragX = cint(x);
        dragY = cint(y);
    });
}

void pList::Form_MouseUp(int button, int, double, double) {
    if (button == 1) dragging = false;
}

void pList::cmdShowPlaylist_MouseMove(int, int, double, double) {
    cmdShowPlaylist.setForeColor(lstPlayList1.foreColor());
}

void pList::collapseSteps(int sign) {
    for (int step = 0; step < 50; ++step) {
        const double move = Picture4.height() / 54 * sign;
        for (ui::Control* c : std::initializer_list<ui::Control*>{&cmdOpen, &cmdRefresh, &cmdClear, &cmdSave,
                                                                   &cbRepeat, &cbShuffle})
            c->move(c->left(), c->top() - move);
        formHeight -= move;
        notifyGeometry();
        rt.loop.doEvents();
    }
}

void pList::collapse(ui::Menu& own) {
    if (!own.checked()) {
        Picture4.setVisible(false);
        collapseSteps(+1);
        mnuHidePlaylist.setChecked(true);
        mnuHidePlaylist2.setChecked(true);
        cmdShowPlaylist.setVisible(true);
    } else {
        cmdShowPlaylist.setVisible(false);
        collapseSteps(-1);
        Picture4.setVisible(true);
        mnuHidePlaylist.setChecked(false);
        mnuHidePlaylist2.setChecked(false);
    }
}

void pList::mnuHidePlaylist_Click() { collapse(mnuHidePlaylist); }
void pList::mnuHidePlaylist2_Click() { collapse(mnuHidePlaylist2); }

void pList::mnuCompact_Click() {
    if (!mnuCompact.checked()) {
        mnuCompact.setChecked(true);
        return;
    }
    formHeight = cbShuffle.top() + cbShuffle.height() + 500;
    notifyGeometry();
    mnuCompact.setChecked(false);
}

void pList::ApplyFont(int kind, const std::string& name, double size, std::optional<bool> bold,
                      std::optional<bool> italic, int32_t color) {
    std::vector<ui::Control*> targets;
    if (kind == 2) targets = {&lstPlayList1};
    else if (kind == 4) targets = {&cbRepeat, &cbShuffle};
    for (ui::Control* c : targets) {
        ui::Font f = c->font();
        if (!name.empty()) f.name = name;
        if (size > 0) f.size = size;
        if (bold) f.bold = *bold;
        if (italic) f.italic = *italic;
        c->setFont(f);
        if (color != -1) c->setForeColor(static_cast<uint32_t>(color));
    }
}

namespace {
// The font dialog from a control's font, with the smallest readable size.
std::optional<ui::Font> chooseFont(ui::CommonDialog& d, const ui::Font& from) {
    d.Flags = 3;
    d.FontValue = from;
    d.CancelError = true;
    try {
        d.ShowFont();
    } catch (const std::exception&) {
        return std::nullopt;
    }
    ui::Font f = d.FontValue;
    if (f.size < 8) f.size = 8;
    return f;
}

std::optional<uint32_t> chooseColour(ui::CommonDialog& d, uint32_t from) {
    d.Color = from;
    d.CancelError = true;
    try {
        d.ShowColor();
    } catch (const std::exception&) {
        return std::nullopt;
    }
    return d.Color;
}
}  // namespace

void pList::mnuFont_Click() {
    if (auto f = chooseFont(CommonDialog1, lstPlayList1.font()))
        ApplyFont(2, f->name, f->size, f->bold, f->italic, listFontColor);
}

void pList::mnuFontColor_Click() {
    if (auto c = chooseColour(CommonDialog1, lstPlayList1.foreColor())) {
        listFontColor = static_cast<int32_t>(*c);
        ApplyFont(2, "", 0, false, false, listFontColor);
    }
}

void pList::mnuBackColor_Click() {
    if (auto c = chooseColour(CommonDialog1, lstPlayList1.backColor())) lstPlayList1.setBackColor(*c);
}

void pList::mnuFont2_Click() {
    if (auto f = chooseFont(CommonDialog1, cbRepeat.font()))
        ApplyFont(4, f->name, f->size, f->bold, f->italic, otherFontColor);
}

void pList::mnuFontColor2_Click() {
    if (auto c = chooseColour(CommonDialog1, cbRepeat.foreColor())) {
        otherFontColor = static_cast<int32_t>(*c);
        ApplyFont(4, "", 0, false, false, otherFontColor);
    }
}

void pList::mnuBackColor2_Click() {
    if (auto c = chooseColour(CommonDialog1, formBackColor)) {
        formBackColor = *c;
        cbRepeat.setBackColor(*c);
        cbShuffle.setBackColor(*c);
        notifyGeometry();
    }
}

// ---------------------------------------------------------------- settings file

void pList::SaveSettings() {
    const std::string path = settingsDir + "skin.ini";
    const std::pair<std::string, const char*> lines[] = {
        {colourText(lstPlayList1.foreColor()), " //Playlist Font Color"},
        {colourText(cbRepeat.foreColor()), " //All Other Font Color"},
        {lstPlayList1.font().name, " //Playlist Font Name"},
        {cbRepeat.font().name, " //Other Font Name"},
        {colourText(lstPlayList1.backColor()), " //Playlist Background Color"},
        {colourText(formBackColor), " //All Other Background Color"},
        {boolText(ConfirmDelete), " //Confirm Delete"},
        {boolText(SavePlaylistOnExit), " //Save Playlist"},
        {boolText(SaveSettingsOnExit), " //Save Settings"},
        {boolText(ScrollTitle), " //Scroll Title"},
        {std::to_string(cbRepeat.value()), " //Repeat"},
        {std::to_string(cbShuffle.value()), " //Shuffle"},
        {PlayerTitle, " //Player Title"}};
    std::string bytes;
    for (const auto& [value, label] : lines) bytes += value + label + "\r\n";
    if (fileExists(path)) deleteFile(path);
    replaceFileSafely(path, bytes);
}

void pList::LoadINIFile() {
    const std::string path = settingsDir + "skin.ini";
    if (!fileExists(path)) return;
    std::string bytes;
    try {
        bytes = readWholeFile(path);
    } catch (const std::exception&) {
        return;
    }
    std::vector<std::string> lines;
    for (size_t start = 0; start < bytes.size();) {
        size_t end = bytes.find_first_of("\r\n", start);
        if (end == std::string::npos) end = bytes.size();
        lines.push_back(bytes.substr(start, end - start));
        start = end;
        if (start < bytes.size() && bytes[start] == '\r') ++start;
        if (start < bytes.size() && bytes[start] == '\n') ++start;
    }
    // Groups of thirteen until the end; a line that does not convert ends the reading there.
    try {
        for (size_t g = 0; g < lines.size(); g += 13) {
            for (size_t k = 0; k < 13; ++k) {
                if (g + k >= lines.size()) throw VbError(VbErr::InputPastEnd);
                const std::string& line = lines[g + k];
                const size_t slash = line.find('/');
                if (slash == std::string::npos) throw VbError(VbErr::InvalidCall);
                const std::string v = line.substr(0, slash);
                auto colour = [&] { return static_cast<uint32_t>(clng(textToNumber(v))); };
                switch (k + 1) {
                case 1: lstPlayList1.setForeColor(colour()); break;
                case 2: {
                    const uint32_t c = colour();
                    cbRepeat.setForeColor(c);
                    cbShuffle.setForeColor(c);
                    break;
                }
                case 3: {
                    ui::Font f = lstPlayList1.font();
                    f.name = trim(v);
                    lstPlayList1.setFont(f);
                    break;
                }
                case 4:
                    for (ui::CheckBox* cb : {&cbRepeat, &cbShuffle}) {
                        ui::Font f = cb->font();
                        f.name = trim(v);
                        cb->setFont(f);
                    }
                    break;
                case 5: lstPlayList1.setBackColor(colour()); break;
                case 6: {
                    const uint32_t c = colour();
                    formBackColor = c;
                    cbRepeat.setBackColor(c);
                    cbShuffle.setBackColor(c);
                    break;
                }
                case 7: ConfirmDelete = textToBool(v); break;
                case 8: SavePlaylistOnExit = textToBool(v); break;
                case 9: SaveSettingsOnExit = textToBool(v); break;
                case 10: ScrollTitle = textToBool(v); break;
                case 11: cbRepeat.setValue(cint(leadingNumber(v))); break;
                case 12: cbShuffle.setValue(cint(leadingNumber(v))); break;
                default: break;  // the player title is read and dropped
                }
            }
        }
    } catch (const std::exception&) {
    }
    notifyGeometry();
}

void pList::LoadImages() {
    static const std::pair<const char*, const char*> images[] = {
        {"bkgrnd1.bmp", "BKGRND1"},         {"bkgrnd2.bmp", "BKGRND2"},       {"Button.bmp", "BUTTON"},
        {"ButtonDown.bmp", "BUTTONDOWN"},   {"NextTrack.bmp", "NEXTTRACK"},   {"NextTrackDown.bmp", "NEXTTRACKDOWN"},
        {"Pause.bmp", "PAUSE"},             {"PauseActive.bmp", "PAUSEACTIVE"}, {"PauseDown.bmp", "PAUSEDOWN"},
        {"Play.bmp", "PLAY"},               {"PlayActive.bmp", "PLAYACTIVE"}, {"PlayDown.bmp", "PLAYDOWN"},
        {"PrevTrack.bmp", "PREVTRACK"},     {"PrevTrackDown.bmp", "PREVTRACKDOWN"},
        {"SmallButton.bmp", "SMALLBUTTON"}, {"Stop.bmp", "STOP"},             {"StopActive.bmp", "STOPACTIVE"},
        {"StopDown.bmp", "STOPDOWN"},       {"TitleBar.bmp", "TITLEBAR"},     {"bkgrnd3.bmp", "BKGRND3"}};
    imageKeys.clear();
    try {
        for (const auto& [file, key] : images) {
            const std::string path = settingsDir + file;
            if (!fileExists(path)) throw VbError(VbErr::FileNotFound, "File not found: " + path);
            imageKeys.push_back(key);
        }
    } catch (const std::exception& e) {
        rt.dialogs.msgBox(std::string(e.what()) + " su LoadImages", ui::vbOKOnly, "VelaroDeck");
    }
}

std::string pList::FormatTime(int seconds) {
    const int m = seconds / 60, s = seconds % 60;
    return std::to_string(m) + ":" + (s < 10 ? "0" : "") + std::to_string(s);
}

}  // namespace velaro::player
