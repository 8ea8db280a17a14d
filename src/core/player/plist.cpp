#include "plist.h"

#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "../base/byte_text.h"
#include "../base/cp1252.h"
#include "../base/delimited_record.h"
#include "../base/paths.h"
#include "../base/safe_file.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../tags/frm_id3.h"
#include "selection_sort.h"
#include "vb_random.h"

namespace velaro::player {

std::string playlistSelection;

namespace {
bool isUtf8(const std::string& s) {
    for (size_t i = 0; i < s.size();) {
        const auto c = static_cast<unsigned char>(s[i]);
        const size_t n = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
        if (n == 0 || i + n > s.size()) return false;
        for (size_t k = 1; k < n; ++k)
            if ((static_cast<unsigned char>(s[i + k]) >> 6) != 2) return false;
        i += n;
    }
    return true;
}
}  // namespace

std::string pathInCodePage(const std::string& path) { return isUtf8(path) ? utf8ToCp1252(path) : path; }
std::string pathForDisplay(const std::string& path) { return isUtf8(path) ? path : cp1252ToUtf8(path); }

VbRandom& programRandom() {
    static VbRandom r;
    return r;
}

namespace {

constexpr const char* kRestingTitle = "Velaro PlayList";
constexpr const char* kOpenFilter =
    "MP3 Audio (*.mp3)|*.mp3|Wave Files (*.wav)|*.wav|MIDI Files (*.mid)|*.mid|KAR Files (*.kar)|*.kar|";
constexpr int kOverwritePrompt = 2;
constexpr int kKeyDelete = 46;

// The row number in a row's text, as the handlers read it back: a 16-bit integer.
int16_t rowNumber(const std::string& text) {
    const std::string t = trim(text);
    if (t.empty()) throw VbError(VbErr::TypeMismatch);
    int64_t v = 0;
    for (char c : t) {
        if (c < '0' || c > '9') throw VbError(VbErr::TypeMismatch);
        v = v * 10 + (c - '0');
        if (v > 32767) throw VbError(VbErr::Overflow);
    }
    return static_cast<int16_t>(v);
}

// Left$ with a count that may come out negative: nothing rather than an error.
std::string leftOrEmpty(const std::string& s, int64_t n) { return n <= 0 ? std::string() : left(s, n); }

std::string fileNamePart(const std::string& path) {
    const size_t at = path.rfind(kPathSep);
    return at == std::string::npos ? path : path.substr(at + 1);
}

}  // namespace

pList::pList(ui::Runtime& rt, platform::Platform& platform, std::string dir)
    : ui::Form(rt, "pList"), frmOptions(rt, *this), appDir(std::move(dir)), platform_(platform) {
    caption = kRestingTitle;
    lstPlayList1.columnHeaders = {"Number", "SongTitle"};
    lstFilenames.setVisible(false);
    cbShuffle.toolTipText = "Suona i brani Random";
    cbRepeat.toolTipText = "Ripetizione brani";
    cmdShowPlaylist.setCaption("Show Playlist");
    cmdShowPlaylist.setVisible(false);
    cmdRefresh.toolTipText = "Exit Playlist";

    const std::pair<ui::Control*, const char*> captions[] = {
        {&cmdOpen, "Add/New"},           {&CmdOpenlist, "Open Playlist"},     {&cmdSave, "Save"},
        {&CmdDelPlay, "Del Playlist"},   {&cmdDel, "Del Song"},               {&cmdClear, "Clear"},
        {&cmdRefresh, "Exit"},           {&cbRepeat, "Repeat"},               {&cbShuffle, "Shuffle"},
        {&mnuSort, "Ordina"},            {&mnuForm, "Form"},                  {&mnuControls, "Controlli"},
        {&mnuOpen, "&Apri"},             {&mnuSave, "&Salva"},                {&mnuDelete, "&Cancella"},
        {&mnuClear, "&Elimina"},         {&mnuExit, "Esci"},                  {&mnuHidePlaylist, "&Nascondi lista"},
        {&mnuHidePlaylist2, "&Nascondi lista"}, {&mnuCompact, "&Visualizzazione compatta"},
        {&mnuFullView, "&Full View"},    {&mnuSortBy, "Ordina Per"},          {&mnuArtist, "&Artista/Titolo"},
        {&mnuTitle, "&Canzone"},         {&mnuFilename, "&Nome file"},        {&mnuRandom, "&Casuale"},
        {&mnuReverse, "Inverso"},        {&mnuFileInfo, "&Info"},             {&mnuFont, "&Font"},
        {&mnuFontColor, "Font &Colori"}, {&mnuBackColor, "&Sfondo"},          {&mnuFont2, "&Font"},
        {&mnuFontColor2, "Font &Colori"}, {&mnuBackColor2, "&Sfondo"},        {&mnuOptions, "&Opzioni"}};
    for (const auto& [c, text] : captions) c->setCaption(text);
    for (ui::Menu* m : {&mnuSort, &mnuForm, &mnuControls}) m->setVisible(false);  // pop-ups only

    designLayout();

    cmdOpen.Click = [this] { cmdOpen_Click(); };
    mnuOpen.Click = [this] { cmdOpen_Click(); };
    CmdOpenlist.Click = [this] { CmdOpenlist_Click(); };
    cmdSave.Click = [this] { cmdSave_Click(); };
    mnuSave.Click = [this] { cmdSave_Click(); };
    CmdDelPlay.Click = [this] { CmdDelPlay_Click(); };
    cmdDel.Click = [this] { cmdDel_Click(); };
    mnuDelete.Click = [this] { cmdDel_Click(); };
    cmdClear.Click = [this] { cmdClear_Click(); };
    mnuClear.Click = [this] { cmdClear_Click(); };
    cmdRefresh.Click = [this] { cmdRefresh_Click(); };
    mnuExit.Click = [this] { cmdRefresh_Click(); };
    mnuHidePlaylist.Click = [this] { mnuHidePlaylist_Click(); };
    mnuHidePlaylist2.Click = [this] { mnuHidePlaylist2_Click(); };
    cmdShowPlaylist.Click = [this] { mnuHidePlaylist_Click(); };
    mnuCompact.Click = [this] { mnuCompact_Click(); };
    mnuFullView.Click = [this] { mnuCompact_Click(); };
    mnuArtist.Click = [this] { mnuArtist_Click(); };
    mnuTitle.Click = [this] { mnuTitle_Click(); };
    mnuFilename.Click = [this] { mnuFilename_Click(); };
    mnuRandom.Click = [this] { mnuRandom_Click(); };
    mnuReverse.Click = [this] { mnuReverse_Click(); };
    mnuFileInfo.Click = [this] { mnuFileInfo_Click(); };
    mnuFont.Click = [this] { mnuFont_Click(); };
    mnuFontColor.Click = [this] { mnuFontColor_Click(); };
    mnuBackColor.Click = [this] { mnuBackColor_Click(); };
    mnuFont2.Click = [this] { mnuFont2_Click(); };
    mnuFontColor2.Click = [this] { mnuFontColor2_Click(); };
    mnuBackColor2.Click = [this] { mnuBackColor2_Click(); };
    mnuOptions.Click = [this] { mnuOptions_Click(); };
    lstPlayList1.DblClick = [this] { lstPlayList1_DblClick(); };
    lstPlayList1.KeyDown = [this](int key) { lstPlayList1_KeyDown(key); };
    lstPlayList1.MouseDown = [this](int b, int s, double x, double y) { lstPlayList1_MouseDown(b, s, x, y); };
    lstPlayList1.OLEDragDrop = [this](const std::vector<std::string>& n) { lstPlayList1_OLEDragDrop(n); };
    cmdShowPlaylist.MouseMove = [this](int b, int s, double x, double y) { cmdShowPlaylist_MouseMove(b, s, x, y); };
}

// The controls as the form designer left them; an unloaded form comes back so.
void pList::designLayout() {
    // The designed layout: the panel with the list and three buttons, then
    // the buttons and boxes that stay when the list collapses.
    Picture4.move(0, 0);
    Picture4.setWidth(5400);
    Picture4.setHeight(4800);
    lstPlayList1.move(60, 60);
    lstPlayList1.setWidth(5280);
    lstPlayList1.setHeight(4200);
    auto place = [](ui::Control& c, double l, double t, double w, double h) {
        c.move(l, t);
        c.setWidth(w);
        c.setHeight(h);
    };
    place(CmdOpenlist, 60, 4340, 1300, 375);
    place(CmdDelPlay, 1420, 4340, 1300, 375);
    place(cmdDel, 2780, 4340, 1300, 375);
    place(cmdOpen, 60, 4860, 1250, 375);
    place(cmdSave, 1370, 4860, 1250, 375);
    place(cmdClear, 2680, 4860, 1250, 375);
    place(cmdRefresh, 3990, 4860, 1250, 375);
    place(cbRepeat, 60, 5340, 2000, 255);
    place(cbShuffle, 2160, 5340, 2000, 255);
    place(cmdShowPlaylist, 60, 60, 1500, 375);

    formLeft = 3000;
    formTop = 1500;
    formWidth = 5400;
    formHeight = 6100;
    formBackColor = 0xE0E0E0;
    for (ui::Control* c : std::initializer_list<ui::Control*>{&lstPlayList1, &cbRepeat, &cbShuffle}) {
        c->setFont(ui::Font{});
        c->setForeColor(0x000000);
    }
    lstPlayList1.setBackColor(0xFFFFFF);
    cbRepeat.setBackColor(formBackColor);
    cbShuffle.setBackColor(formBackColor);
    cmdShowPlaylist.setForeColor(0x000000);
    cmdShowPlaylist.setVisible(false);
    Picture4.setVisible(true);
    for (ui::Menu* m : {&mnuHidePlaylist, &mnuHidePlaylist2, &mnuCompact}) m->setChecked(false);
}

pList::~pList() = default;

const platform::TextCollation& pList::collation() const {
    if (platform_.collation) return *platform_.collation;
    return plainCollation_;
}

tags::clsMP3Info& pList::tagReader() {
    if (!tagReader_) tagReader_ = std::make_unique<tags::clsMP3Info>();
    return *tagReader_;
}

// ---------------------------------------------------------------- lifecycle

void pList::Form_Load() {
    appDir = RPP(appDir);
    currentIndex = 1;
    atEnd = true;
    listFontColor = -1;
    otherFontColor = -1;
    // The playlist opened last comes back; any failure just leaves the list as it is.
    try {
        const std::string bytes = readWholeFile(appDir + "songtemp.tmp");
        const auto fields = readRecords(bytes);
        if (fields.empty()) return;
        const std::string path = cp1252ToUtf8(fieldText(fields.front()));
        LoadPlaylist(path);
        caption = std::string(kRestingTitle) + "    " + path;
    } catch (const std::exception&) {
    }
}

void pList::Form_Unload(int&) {
    const std::string saved = appDir + "playlist.mpl";
    if (SavePlaylistOnExit) {
        resumeNext([&] { WritePlaylist(saved); });
    } else if (fileExists(saved)) {
        resumeNext([&] { deleteFile(saved); });
    }
    const std::string settings = settingsDir + "skin.ini";
    if (SaveSettingsOnExit) {
        resumeNext([&] { SaveSettings(); });
    } else if (fileExists(settings)) {
        resumeNext([&] { deleteFile(settings); });
    }
    tagReader_.reset();
    if (frmOptions.loaded()) frmOptions.unload();
    // The form's controls go with it; its variables (the options among them) stay.
    lstPlayList1.clear();
    lstFilenames.clear();
    cbRepeat.setValue(0);
    cbShuffle.setValue(0);
    caption = kRestingTitle;
    designLayout();
    notifyGeometry();
}

// ---------------------------------------------------------------- entries

bool pList::AddEntry(const std::string& path) {
    const std::string kind = lcase(right(path, 3));
    std::string title, artist;
    if (kind == "mp3") {
        // A file the tag reader cannot make sense of still gets its row.
        resumeNext([&] {
            tags::clsMP3Info& reader = tagReader();
            reader.setFilename(path);
            title = reader.Title();
            artist = reader.Artist();
        });
        if (lcase(title).empty()) {
            const std::string name = pathInCodePage(fileNamePart(path));
            title = leftOrEmpty(name, static_cast<int64_t>(name.size()) - 4);
        }
    } else if (kind == "mid" || kind == "kar" || kind == "wav") {
        const std::string shown = pathInCodePage(path);
        title = leftOrEmpty(shown, static_cast<int64_t>(shown.size()) - 4);
        artist = "Unknown";
    } else {
        return false;
    }
    const int row = lstPlayList1.add(std::to_string(lstPlayList1.count() + 1));
    lstPlayList1.item(row).subItems[0] = title;
    lstPlayList1.item(row).subItems[1] = artist;
    return true;
}

void pList::DeleteEntry(int index) {
    if (ConfirmDelete) {
        const std::string text = "Rimuovere la canzone dala lista?\r\nLista MP3:\r\n" + lstFilenames.list(index - 1);
        if (rt.dialogs.msgBox(text, ui::vbYesNo | ui::vbQuestion, "Sei sicuro?") != ui::vbYes) return;
    }
    lstFilenames.removeItem(index - 1);
    lstPlayList1.remove(index);
    for (int i = 1; i <= lstPlayList1.count(); ++i) lstPlayList1.item(i).text = std::to_string(i);
    lstPlayList1.refresh();
}

void pList::LoadPlaylist(const std::string& path) {
    std::error_code ec;
    if (path.empty() || !std::filesystem::is_regular_file(path, ec)) return;
    const std::string bytes = readWholeFile(path);
    // Lines end at CR LF; a lone CR or LF ends one too, so files from any editor read.
    size_t start = 0;
    while (start < bytes.size()) {
        size_t end = bytes.find_first_of("\r\n", start);
        if (end == std::string::npos) end = bytes.size();
        const std::string line = cp1252ToUtf8(std::string_view(bytes).substr(start, end - start));
        if (AddEntry(line)) lstFilenames.addItem(line);
        start = end;
        if (start < bytes.size() && bytes[start] == '\r') ++start;
        if (start < bytes.size() && bytes[start] == '\n') ++start;
    }
}

void pList::WritePlaylist(const std::string& path) {
    std::string bytes;
    for (int i = 0; i < lstFilenames.listCount(); ++i) bytes += pathInCodePage(lstFilenames.list(i)) + "\r\n";
    replaceFileSafely(path, bytes);
}

void pList::AddDirectory(const std::string& path) {
    Dir1.setPath(path);
    File1.setPath(path);
    const int count = Dir1.listCount();
    for (int i = 0; i < count; ++i) {
        // Sub-folders first; the list is read again, as a deeper scan may have changed it.
        if (i >= Dir1.listCount()) continue;
        AddDirectory(Dir1.list(i));
    }
    for (int i = 0; i < File1.listCount(); ++i) {
        const std::string kind = lcase(right(File1.list(i), 3));
        if (kind != "mp3" && kind != "mid" && kind != "wav") continue;  // no .kar from a folder
        const std::string full = Dir1.path() + "/" + File1.list(i);
        if (AddEntry(full)) lstFilenames.addItem(full);
    }
    // Back where the caller was.
    Dir1.setPath(UpOneDir(Dir1.path()));
    File1.setPath(Dir1.path());
}

std::string pList::UpOneDir(const std::string& path) {
    size_t last = std::string::npos;
    for (size_t i = 0; i < path.size(); ++i)
        if (path[i] == kPathSep) last = i;
    std::string up = last == std::string::npos ? std::string() : path.substr(0, last);
    // One level below the root gives the root with its separator (a drive
    // root took three characters; here the root is the separator alone).
    if (up.empty()) up += kPathSep;
    return up;
}

void pList::PlayEntry(int index) {
    if (index < 1) index = 1;
    SelectEntry(index);
}

void pList::SelectEntry(int index) {
    if (index > lstPlayList1.count()) return;
    resumeNext([&] {
        ListItem& old = lstPlayList1.item(currentIndex);
        old.bold = old.subBold[0] = old.subBold[1] = false;
    });
    currentIndex = static_cast<int16_t>(index);
    playlistSelection = lstFilenames.list(index - 1);

    // Opening the file for binary access makes it when it is missing.
    const std::string& path = playlistSelection;
    std::error_code ec;
    bool made = false;
    int64_t length = 0;
    if (std::filesystem::exists(path, ec)) {
        length = std::filesystem::is_regular_file(path, ec) ? static_cast<int64_t>(std::filesystem::file_size(path, ec)) : 0;
        if (ec) length = 0;
    } else if (!path.empty()) {
        std::ofstream touch(path, std::ios::binary);
        made = static_cast<bool>(touch);
    }
    if (length == 0) {
        rt.dialogs.msgBox("File Not Found", ui::vbCritical, "VelaroDeck");
        // Only the empty file this open made goes again; a user's own file stays.
        if (made) std::filesystem::remove(path, ec);
        return;
    }
    const ListItem& row = lstPlayList1.item(index);
    windowTitle = PlayerTitle + " - [" + row.subItems[0] + "-" + row.subItems[1] + "]  ";
    caption = windowTitle;
    notifyGeometry();
    lstPlayList1.setSelectedItem(index);
    lstPlayList1.ensureVisible(index);
    ListItem& now = lstPlayList1.item(index);
    now.bold = now.subBold[0] = now.subBold[1] = true;
    lstPlayList1.refresh();
    hide();
}

int16_t pList::RandomIndex(int n) {
    const double v = std::floor((static_cast<double>(n) + 1) * programRandom().Rnd());
    if (v > 32767 || v < -32768) throw VbError(VbErr::Overflow);
    return static_cast<int16_t>(v);
}

namespace {
void reseedFromClock() {
    const auto t = std::chrono::system_clock::now().time_since_epoch();
    programRandom().seed(static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(t).count()));
}
}  // namespace

void pList::NextEntry() {
    const int count = lstPlayList1.count();
    if (cbShuffle.value() == 1) {
        reseedFromClock();
        int r = RandomIndex(count - 1);
        // One entry: r is always 0 and differs from currentIndex 1.
        while (r == currentIndex) r = RandomIndex(count - 1);
        PlayEntry(r);
        return;
    }
    if (currentIndex != count) {
        PlayEntry(currentIndex + 1);
    } else if (cbRepeat.value() == 1) {
        PlayEntry(1);
    } else {
        atEnd = true;
        SelectEntry(1);
    }
}

void pList::PreviousEntry() {
    if (cbShuffle.value() == 1) {
        reseedFromClock();
        PlayEntry(RandomIndex(lstPlayList1.count() - 1));
        return;
    }
    if (currentIndex <= 1) PlayEntry(lstPlayList1.count());
    else PlayEntry(currentIndex - 1);
}

void pList::ReplaySelected() {
    const int sel = lstPlayList1.selectedItem();
    if (sel == 0) throw VbError(VbErr::InvalidCall, "Object variable not set");
    PlayEntry(rowNumber(lstPlayList1.item(sel).text));
}

// ---------------------------------------------------------------- sorts

void pList::rebuildView() {
    lstPlayList1.clear();
    for (int i = 0; i < lstFilenames.listCount(); ++i) AddEntry(lstFilenames.list(i));
    lstPlayList1.refresh();
}

void pList::mnuArtist_Click() {
    const int n = std::min(lstPlayList1.count(), lstFilenames.listCount());
    if (n == 0) return;
    std::vector<std::string> titles(n), artists(n), paths(n);
    for (int i = 0; i < n; ++i) {
        titles[i] = lstPlayList1.item(i + 1).subItems[0];
        artists[i] = lstPlayList1.item(i + 1).subItems[1];
        paths[i] = lstFilenames.list(i);
    }
    const auto& c = collation();
    const auto a = collationRanks(c, artists), t = collationRanks(c, titles);
    const int64_t base = static_cast<int64_t>(n) + 1;
    std::vector<int64_t> keys(n);
    for (int i = 0; i < n; ++i) keys[i] = a[i] * base + t[i];
    const SelectionSteps steps = selectionSortSteps(keys, base);
    for (int i = 0; i < n; ++i) {
        const int m = steps.pick[i];
        // The kept artist is the one that last won outright: an equal artist
        // later in the list wins on its title but leaves that spelling behind.
        const std::string keptArtist = artists[steps.firstOfMajor[i]];
        const std::string keptTitle = titles[m];
        const std::string oldTitle = titles[i], oldArtist = artists[i];
        titles[i] = keptTitle;
        artists[i] = keptArtist;
        if (m != i) {
            titles[m] = oldTitle;
            artists[m] = oldArtist;
            std::swap(paths[i], paths[m]);
        }
    }
    for (int i = 0; i < n; ++i) {
        lstPlayList1.item(i + 1).subItems[0] = titles[i];
        lstPlayList1.item(i + 1).subItems[1] = artists[i];
        lstFilenames.setList(i, paths[i]);
    }
    lstPlayList1.refresh();
}

void pList::mnuTitle_Click() {
    const int n = std::min(lstPlayList1.count(), lstFilenames.listCount());
    if (n == 0) return;
    std::vector<std::string> titles(n);
    for (int i = 0; i < n; ++i) titles[i] = lstPlayList1.item(i + 1).subItems[0];
    const auto t = collationRanks(collation(), titles);
    const SelectionSteps steps = selectionSortSteps(std::vector<int64_t>(t.begin(), t.end()));
    for (int i = 0; i < n; ++i) {
        if (steps.pick[i] != i) swapRows(i + 1, steps.pick[i] + 1);
    }
    lstPlayList1.refresh();
}

void pList::swapRows(int a, int b) {
    ListItem& x = lstPlayList1.item(a);
    ListItem& y = lstPlayList1.item(b);
    std::swap(x.subItems[0], y.subItems[0]);
    std::swap(x.subItems[1], y.subItems[1]);
    const std::string pa = lstFilenames.list(a - 1);
    lstFilenames.setList(a - 1, lstFilenames.list(b - 1));
    lstFilenames.setList(b - 1, pa);
}

void pList::mnuFilename_Click() {
    const int n = lstFilenames.listCount();
    std::vector<std::string> paths(n), shown(n);
    for (int i = 0; i < n; ++i) {
        paths[i] = lstFilenames.list(i);
        shown[i] = pathInCodePage(paths[i]);
    }
    const auto p = collationRanks(collation(), shown);
    const SelectionSteps steps = selectionSortSteps(std::vector<int64_t>(p.begin(), p.end()));
    for (int i = 0; i < n; ++i) std::swap(paths[i], paths[steps.pick[i]]);
    for (int i = 0; i < n; ++i) lstFilenames.setList(i, paths[i]);
    rebuildView();
}

void pList::mnuReverse_Click() {
    int a = 0, b = lstFilenames.listCount() - 1;
    while (a <= b) {
        const std::string t = lstFilenames.list(a);
        lstFilenames.setList(a, lstFilenames.list(b));
        lstFilenames.setList(b, t);
        ++a;
        --b;
    }
    rebuildView();
}

void pList::mnuRandom_Click() {
    // Any position with any position: not a fair shuffle, and it stays so.
    const int count = lstFilenames.listCount();
    for (int i = 0; i < count; ++i) {
        const int r = RandomIndex(count - 1);
        const std::string t = lstFilenames.list(i);
        lstFilenames.setList(i, lstFilenames.list(r));
        lstFilenames.setList(r, t);
    }
    rebuildView();
}

// ---------------------------------------------------------------- buttons

void pList::openFileDialog(bool listOnly) {
    CommonDialog1.FileName.clear();
    CommonDialog1.Flags = kOverwritePrompt;
    CommonDialog1.CancelError = true;
    if (listOnly) {
        CommonDialog1.DefaultExt = ".mpl";
        CommonDialog1.Filter = "PlayList (*.mpl)|*.mpl";
    } else {
        CommonDialog1.Filter = kOpenFilter;
    }
    CommonDialog1.ShowOpen();
    const std::string name = CommonDialog1.FileName;
    if (name.empty()) return;
    if (lcase(right(name, 3)) != "mpl") {
        if (AddEntry(name)) lstFilenames.addItem(name);
    } else {
        LoadPlaylist(name);
    }
    if (listOnly) {
        caption = std::string(kRestingTitle) + "    " + name;
        notifyGeometry();
        resumeNext([&] { replaceFileSafely(appDir + "songtemp.tmp", pathInCodePage(name) + "\r\n"); });
    }
}

void pList::cmdOpen_Click() {
    try {
        openFileDialog(false);
    } catch (const std::exception&) {
    }
}

void pList::CmdOpenlist_Click() {
    // Cleared before the dialog: a cancel leaves the list empty.
    lstPlayList1.clear();
    lstFilenames.clear();
    try {
        openFileDialog(true);
    } catch (const std::exception&) {
    }
}

void pList::cmdSave_Click() {
    CommonDialog1.Filter = "Playlist (*.mpl)|*.mpl";
    CommonDialog1.CancelError = true;
    try {
        CommonDialog1.ShowSave();
    } catch (const std::exception&) {
        return;
    }
    if (CommonDialog1.FileName.empty()) return;
    try {
        WritePlaylist(CommonDialog1.FileName);
    } catch (const std::exception& e) {
        rt.dialogs.msgBox(e.what(), ui::vbCritical, "VelaroDeck");
    }
}

void pList::CmdDelPlay_Click() {
    lstPlayList1.clear();
    lstFilenames.clear();
    CommonDialog1.FileName.clear();
    CommonDialog1.Flags = kOverwritePrompt;
    CommonDialog1.CancelError = true;
    CommonDialog1.Filter = "PlayList (*.mpl)|*.mpl|All Files (*.*)|*.*";
    try {
        CommonDialog1.ShowOpen();
    } catch (const std::exception&) {
        return;
    }
    const std::string name = CommonDialog1.FileName;
    if (name.empty()) return;
    if (lcase(right(name, 3)) != "mpl") {
        // Not a playlist: it joins the list, delete button or not.
        if (AddEntry(name)) lstFilenames.addItem(name);
        return;
    }
    const int answer = rt.dialogs.msgBox(name + "\r\n\r\nRimuovere la Playlist?", ui::vbYesNo | ui::vbQuestion,
                                         "Sei sicuro?");
    if (answer == ui::vbYes) resumeNext([&] { deleteFile(name); });
}

void pList::cmdDel_Click() {
    // No row selected: nothing to do.
    const int sel = lstPlayList1.selectedItem();
    if (sel == 0) return;
    resumeNext([&] { DeleteEntry(sel); });
}

void pList::cmdClear_Click() {
    lstPlayList1.clear();
    lstFilenames.clear();
}

void pList::cmdRefresh_Click() { unload(); }

void pList::lstPlayList1_DblClick() {
    const int sel = lstPlayList1.selectedItem();
    if (sel == 0) return;
    resumeNext([&] { PlayEntry(rowNumber(lstPlayList1.item(sel).text)); });
}

void pList::lstPlayList1_KeyDown(int keyCode) {
    if (keyCode != kKeyDelete) return;
    cmdDel_Click();
}

void pList::lstPlayList1_MouseDown(int button, int, double x, double y) {
    if (button != 2) return;
    const int row = hitTest ? hitTest(x, y) : 0;
    if (row > 0 && row <= lstPlayList1.count()) lstPlayList1.setSelectedItem(row);
    if (popupMenu) popupMenu(mnuSort);
}

void pList::lstPlayList1_OLEDragDrop(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        resumeNext([&] {
            if (name.find('.') != std::string::npos) {
                if (AddEntry(name)) lstFilenames.addItem(name);
            } else {
                AddDirectory(name);
            }
        });
    }
}

void pList::mnuFileInfo_Click() {
    const int sel = lstPlayList1.selectedItem();
    if (sel == 0) return;  // error 91: the trap leaves
    const std::string path = lstFilenames.list(sel - 1);
    const std::string kind = lcase(right(path, 3));
    if (kind == "mid" || kind == "kar" || kind == "wav") return;
    const std::string inUse;  // never assigned: only an empty path meets it
    if (path == inUse) {
        rt.dialogs.msgBox("Il File \xC3\xA8 in uso.\r\nImpossibile scrivere il TAG ID3.", ui::vbCritical, "Dumbass");
        return;
    }
    resumeNext([&] {
        tags::FrmID3 editor(rt);
        editor.Filename = path;
        if (showId3Editor) showId3Editor(editor);
    });
    resumeNext([&] {
        tags::clsMP3Info& reader = tagReader();
        reader.setFilename(path);
        lstPlayList1.item(sel).subItems[0] = reader.Title();
        lstPlayList1.item(sel).subItems[1] = reader.Artist();
    });
    lstPlayList1.refresh();
}

void pList::mnuOptions_Click() { frmOptions.show(); }

}  // namespace velaro::player
