#pragma once
// "Velaro  ID3 Tag & LyricsEditor  V.1.0": one audio file at a time, its
// ID3v1 fields and its timed lyrics edited while it plays in the window's own
// player, and both saved into the file.

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "../platform/media_graph.h"
#include "../settings/m_config.h"
#include "../ui/control_array.h"
#include "../ui/form.h"
#include "frm_lyrics.h"
#include "tags_state.h"
#include "timed_lyrics.h"

namespace velaro::tags {

// The skinned player's calls the editor makes; each may be left empty
// until that player exists, and then does nothing.
struct SkinnedPlayerHook {
    std::function<std::string()> state;               // "true", "false", "pause"
    std::function<double()> position;                 // seconds
    std::function<void()> stop;
    std::function<void(double seconds)> playAndSeek;  // start its track and seek
    std::function<void()> pause;
    std::function<void()> refreshTag;
    std::function<int()> volume;  // hundredths of a dB
    std::function<void()> enamenu;  // the main window's menus back on
    // The compact player's time label, and whether it shows the time gone (else the time left).
    std::function<void(const std::string&)> setMiniTime;
    std::function<bool()> miniShowsElapsed;
};

// The hidden work list's columns behind FILE.
enum WorkColumn { kTitle, kArtist, kAlbum, kYear, kGenre, kLyrics, kComment, kWorkColumns };

struct WorkRow {
    std::string file;
    std::array<std::string, kWorkColumns> cols;
};

class FrmTags : public ui::Form {
public:
    FrmTags(ui::Runtime& rt, TagsState& state, const settings::mConfig& config, platform::MediaGraph& graph);

    ui::Menu btnParcourTx{this, "btnParcourTx"};
    ui::Menu btnParcourSon{this, "btnParcourSon"};
    ui::Menu btnParcourTxt{this, "btnParcourTxt"};
    ui::CommandButton cmdok{this, "cmdok"};
    ui::Frame TabStrip{this, "TabStrip"};
    ui::ControlArray<ui::PictureBox> pictab{this, "pictab", 3};
    ui::Frame fraId3{this, "fraId3"};
    ui::Frame fraMpeg{this, "fraMpeg"};
    ui::TextBox txtTitle{this, "txtTitle"};
    ui::TextBox txtArtist{this, "txtArtist"};
    ui::TextBox txtAlbum{this, "txtAlbum"};
    ui::TextBox txtYear{this, "txtYear"};
    ui::TextBox Txtcomment{this, "Txtcomment"};
    ui::ComboBox cboGenre{this, "cboGenre"};
    ui::ControlArray<ui::CheckBox> chkTags{this, "chkTags", 4};
    ui::Label lblMPEGInfo{this, "lblMPEGInfo"};
    ui::TextBox txtLyrics{this, "txtLyrics"};
    ui::CommandButton cmdAdd{this, "cmdAdd"};
    ui::CommandButton cmdUndo{this, "cmdUndo"};
    ui::CommandButton cmdApply{this, "cmdApply"};
    ui::CommandButton cmdCancel{this, "cmdCancel"};
    ui::ControlArray<ui::CommandButton> cmdPlayer{this, "cmdPlayer", 5};
    ui::Label lblTiempoT{this, "lblTiempoT"};
    ui::Label lblDuracion{this, "lblDuracion"};
    ui::PictureBox picSliderRep{this, "picSliderRep"};
    ui::PictureBox picSliderVol{this, "picSliderVol"};
    ui::ControlArray<ui::Label> imgNormal{this, "imgNormal", 0};
    ui::Label lblfile{this, "lblfile"};
    ui::ProgressBar pbprogress{this, "pbprogress"};
    ui::ListBox LyricsRef{this, "LyricsRef"};
    ui::Timer playTimer{this, "playTimer", 100};

    // The hidden work list, one row per opened file, keyed by path.
    std::vector<WorkRow> listRef;
    FrmLyrics frmLyrics;
    SkinnedPlayerHook skinned;

    // Window state.
    std::string playFlag = "false";
    std::string currentFile, playingFile, textFile, genreText;
    bool companionLyrics = false;
    std::string savedState;
    double savedPosition = 0;
    bool resumeLocal = false;
    bool seeking = false;
    double dragStart = 0, thumbStart = 0;
    bool volumeDragging = false;
    double volumePos = 0;
    int playerVolume = 0;
    int16_t lyricPos = 0;
    UndoStack undo;
    std::vector<std::string> lyricLines;
    int32_t lineCount = 0;
    bool graphOpen = false;
    // True while the window fills itself from a file: the genre box's Click is then no user's change.
    bool filling = false;

    // The path a test or the view chose for the next file dialog answer is the dialog's business.
    void OpenFileForEdit();
    void LoadFileFields();
    void ClearFields(bool enabled);
    void StoreFields();
    void Load_Album_Tags();
    void SaveTags();
    void SuspendPlayback(const std::string& path);
    void ResumePlayback(const std::string& path);
    void PlayFile(const std::string& path);
    void TogglePause();
    void Stop_Player();
    void Five_Seg_Forward();
    void Five_Seg_Backward();
    void Ajust_Volume(double pos);
    void ShowTime(double seconds);
    void SliderReproduccioN_Down(double x);
    void SliderReproduccioN_Move(double x);
    void SliderReproduccioN_Up(int button);
    void SliderVolume_Down(double y);
    void SliderVolume_Move(double y);
    void Load_File_Tags();
    void Show_Lyrics(const std::string& text);
    bool Chargement_Paroles();

    void btnParcourTxt_Click();
    void cmdAdd_Click();
    void cmdUndo_Click();
    void cmdApply_Click();
    void cmdok_Click();
    void cmdPlayer_Click(int index);
    void playTimer_Timer();
    void TabStrip_Click(int index);
    // A key pressed in one of the editable boxes (its code, before it lands).
    void fieldKeyDown(int keyCode);
    void cboGenre_DropDown();
    void cboGenre_Click();
    void chkTags_Click(int index);
    // The target of the position thumb in seconds.
    double seekTarget() const;

protected:
    void Form_Load() override;
    void Form_Unload(int& cancel) override;

private:
    WorkRow* row(const std::string& file);
    void resetWalk();
    std::string recordFromBoxes(const Mp3Info& info, const std::array<int, 4>& checks) const;

    TagsState& state_;
    const settings::mConfig& config_;
    platform::MediaGraph& graph_;
};

// The position thumb's left for a position: 1 at the start, 129 at the end.
double thumbLeft(double seconds, double duration);
// The volume for the volume thumb's top (0 loudest .. 89): 0 to -5000.
int volumeForThumb(double top);

}  // namespace velaro::tags
