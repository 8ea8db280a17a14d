#pragma once
// "Velaro PlayList": the list of songs and backings the main window takes
// its next file from. Two lists in step (the report list with number, title
// and artist; the hidden list of paths), `.mpl` files, sorts, shuffle and
// reverse, picking an entry, and the window's look with its settings file.

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "../platform/platform.h"
#include "../tags/frm_id3.h"
#include "../tags/id3v1.h"
#include "../ui/common_dialog.h"
#include "../ui/form.h"
#include "dir_lists.h"
#include "frm_options.h"
#include "list_view.h"

namespace velaro::player {

// The path picked in the playlist; empty when nothing was picked.
extern std::string playlistSelection;

// A file-system path (UTF-8 here) in the 8-bit code page of playlists and
// titles; a name that is not UTF-8 is taken as already in the code page.
std::string pathInCodePage(const std::string& path);
// The reverse, for showing a path: UTF-8 as it is, anything else read as the code page.
std::string pathForDisplay(const std::string& path);

// The window's designed geometry, in twips.
inline constexpr double kTwipsPerPixel = 15;

class pList : public ui::Form {
public:
    // `appDir`: where songtemp.tmp and playlist.mpl live.
    pList(ui::Runtime& rt, platform::Platform& platform, std::string appDir);
    ~pList() override;

    ListView lstPlayList1{this, "lstPlayList1"};
    ui::ListBox lstFilenames{this, "lstFilenames"};
    DirListBox Dir1;
    FileListBox File1;
    ui::PictureBox Picture4{this, "Picture4"};
    ui::CheckBox cbShuffle{this, "cbShuffle"};
    ui::CheckBox cbRepeat{this, "cbRepeat"};
    ui::CommandButton cmdShowPlaylist{this, "cmdShowPlaylist"};
    ui::CommandButton cmdOpen{this, "cmdOpen"};
    ui::CommandButton CmdOpenlist{this, "CmdOpenlist"};
    ui::CommandButton cmdSave{this, "cmdSave"};
    ui::CommandButton CmdDelPlay{this, "CmdDelPlay"};
    ui::CommandButton cmdDel{this, "cmdDel"};
    ui::CommandButton cmdClear{this, "cmdClear"};
    ui::CommandButton cmdRefresh{this, "cmdRefresh"};
    ui::CommonDialog CommonDialog1{this, "CommonDialog1"};

    // Pop-ups and their items.
    ui::Menu mnuSort{this, "mnuSort"};
    ui::Menu mnuForm{this, "mnuForm"};
    ui::Menu mnuControls{this, "mnuControls"};
    ui::Menu mnuOpen{this, "mnuOpen"};
    ui::Menu mnuSave{this, "mnuSave"};
    ui::Menu mnuDelete{this, "mnuDelete"};
    ui::Menu mnuClear{this, "mnuClear"};
    ui::Menu mnuExit{this, "mnuExit"};
    ui::Menu mnuHidePlaylist{this, "mnuHidePlaylist"};
    ui::Menu mnuHidePlaylist2{this, "mnuHidePlaylist2"};
    ui::Menu mnuCompact{this, "mnuCompact"};
    ui::Menu mnuFullView{this, "mnuFullView"};
    ui::Menu mnuSortBy{this, "mnuSortBy"};
    ui::Menu mnuArtist{this, "mnuArtist"};
    ui::Menu mnuTitle{this, "mnuTitle"};
    ui::Menu mnuFilename{this, "mnuFilename"};
    ui::Menu mnuRandom{this, "mnuRandom"};
    ui::Menu mnuReverse{this, "mnuReverse"};
    ui::Menu mnuFileInfo{this, "mnuFileInfo"};
    ui::Menu mnuFont{this, "mnuFont"};
    ui::Menu mnuFontColor{this, "mnuFontColor"};
    ui::Menu mnuBackColor{this, "mnuBackColor"};
    ui::Menu mnuFont2{this, "mnuFont2"};
    ui::Menu mnuFontColor2{this, "mnuFontColor2"};
    ui::Menu mnuBackColor2{this, "mnuBackColor2"};
    ui::Menu mnuOptions{this, "mnuOptions"};

    // The form's own geometry and background; the borderless window has no frame of its own.
    double formLeft = 3000, formTop = 1500, formWidth = 5400, formHeight = 6100;
    uint32_t formBackColor = 0xE0E0E0;

    // ---- public options, set by frmOptions ----
    bool ConfirmDelete = false;
    bool SavePlaylistOnExit = false;
    bool SaveSettingsOnExit = false;
    bool ScrollTitle = false;
    std::string PlayerTitle;

    FrmOptions frmOptions;

    // ---- operations ----
    bool AddEntry(const std::string& path);
    void DeleteEntry(int index);
    void LoadPlaylist(const std::string& path);
    // Throws VbError when the file cannot be written; the old one then stays.
    void WritePlaylist(const std::string& path);
    void AddDirectory(const std::string& path);
    static std::string UpOneDir(const std::string& path);
    void PlayEntry(int index);
    void SelectEntry(int index);
    int16_t RandomIndex(int n);
    void NextEntry();
    void PreviousEntry();
    void ReplaySelected();
    void SaveSettings();
    void LoadINIFile();
    // `bold` and `italic` apply only when given.
    void ApplyFont(int kind, const std::string& name, double size, std::optional<bool> bold,
                   std::optional<bool> italic, int32_t color);
    void LoadImages();
    static std::string FormatTime(int seconds);

    // ---- handlers ----
    void cmdOpen_Click();
    void CmdOpenlist_Click();
    void cmdSave_Click();
    void CmdDelPlay_Click();
    void cmdDel_Click();
    void cmdClear_Click();
    void cmdRefresh_Click();
    void mnuArtist_Click();
    void mnuTitle_Click();
    void mnuFilename_Click();
    void mnuReverse_Click();
    void mnuRandom_Click();
    void mnuFileInfo_Click();
    void mnuHidePlaylist_Click();
    void mnuHidePlaylist2_Click();
    void mnuCompact_Click();
    void mnuFont_Click();
    void mnuFontColor_Click();
    void mnuBackColor_Click();
    void mnuFont2_Click();
    void mnuFontColor2_Click();
    void mnuBackColor2_Click();
    void mnuOptions_Click();
    void lstPlayList1_DblClick();
    void lstPlayList1_KeyDown(int keyCode);
    void lstPlayList1_MouseDown(int button, int shift, double x, double y);
    void lstPlayList1_OLEDragDrop(const std::vector<std::string>& names);
    void Form_MouseDown(int button, int shift, double x, double y);
    void Form_MouseMove(int button, int shift, double x, double y);
    void Form_MouseUp(int button, int shift, double x, double y);
    void cmdShowPlaylist_MouseMove(int button, int shift, double x, double y);

    // ---- what the front end fills in ----
    // Row of the list under a point, 0 for none (the list's hit test).
    std::function<int(double x, double y)> hitTest;
    std::function<void(ui::Menu&)> popupMenu;
    // The small ID3 editor on a file, modally; nothing is shown without it.
    std::function<void(tags::FrmID3&)> showId3Editor;
    // The form's geometry, background or caption changed.
    std::function<void()> geometryChanged;
    // Keys of the images LoadImages found, in order.
    std::vector<std::string> imageKeys;

    // ---- window state ----
    int16_t currentIndex = 1;
    bool dragging = false;
    int16_t dragX = 0, dragY = 0;
    std::string windowTitle;
    bool atEnd = true;
    std::string settingsDir;
    std::string appDir;
    int32_t listFontColor = -1, otherFontColor = -1;

    void notifyGeometry() {
        if (geometryChanged) geometryChanged();
    }

protected:
    void Form_Load() override;
    void Form_Unload(int& cancel) override;

private:
    void designLayout();
    tags::clsMP3Info& tagReader();
    void rebuildView();
    void swapRows(int a, int b);
    void collapseSteps(int sign);
    void collapse(ui::Menu& own);
    void openFileDialog(bool listOnly);
    const platform::TextCollation& collation() const;

    platform::Platform& platform_;
    std::unique_ptr<tags::clsMP3Info> tagReader_;
    platform::PlainTextCollation plainCollation_;
};

}  // namespace velaro::player
