#pragma once
// "MusicMp3 1.0": the skinned player. One album's files in a list, cover art,
// painted picture buttons, a position knob and a volume knob, the status
// strip. The tag editor drives it without showing it; frmMini is its small
// face. The album scan that would fill albumCount is not part of this
// program, so Play, Pause_Play and Stop_Player leave at once while it is 0.

#include <array>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "../platform/media_graph.h"
#include "../platform/window_service.h"
#include "../settings/m_config.h"
#include "../tags/tags_state.h"
#include "../ui/control_array.h"
#include "../ui/form.h"
#include "frm_mini.h"

namespace velaro::tags {
class FrmTags;
class FrmLyrics;
}  // namespace velaro::tags

namespace velaro::player {

// The strips the picture buttons are painted from: cell = row * columns + column,
// row 0 normal, row 1 pressed or active.
enum Strip : int { kStripBotones = 0, kStripMenu = 1, kStripDiscos = 2, kStripMini = 3 };
inline constexpr int kBotonesColumns = 5;
inline constexpr int kMenuColumns = 10;
inline constexpr int kDiscosColumns = 3;
inline constexpr int kMiniColumns = 7;

inline constexpr int kPlayerTwipsPerPixel = 15;
// Travel of the knobs in pixels.
inline constexpr int kSeekKnobMax = 129;
inline constexpr int kVolumeKnobMax = 89;

// What the player windows share for the whole run.
struct PlayerModule {
    std::string scrollText;  // text of the status strip
    int16_t currentAlbum = 0;
    int16_t albumCount = 0;  // nothing assigns it: the transport stays behind its guard
};

// A file list: the files of one folder whose names match a pattern such as
// "*.mp3;*.wav", sorted by name without regard to case.
class PatternFileList : public ui::ListBox {
public:
    PatternFileList(ui::Form* owner, std::string name, std::string pattern);
    const std::string& path() const { return path_; }
    // Reads the folder again; a folder that cannot be read gives an empty list.
    void setPath(const std::string& folder);
    const std::string pattern;

private:
    std::string path_;
};

// An image control: shows a picture file, or nothing for an empty name.
class ImageBox : public ui::Control {
public:
    using Control::Control;
    const std::string& picture() const { return picture_; }
    void setPicture(std::string file);

private:
    std::string picture_;
};

// Wildcard match with * and ?, as the runtime's Like on lower-cased names.
bool likeMatch(const std::string& text, const std::string& pattern);
// Seconds as MM:SS, or HH:MM:SS from one hour on.
std::string Convert_Time(int32_t seconds);

class MusicMp3 : public ui::Form {
public:
    MusicMp3(ui::Runtime& rt, tags::TagsState& state, settings::mConfig& config, PlayerModule& module,
             platform::MediaGraph& graph);

    // ---- controls ----
    PatternFileList ListaRep{this, "ListaRep", "*.mp3;*.wav;*.wma"};
    PatternFileList fileCaratulas{this, "fileCaratulas", "*.jpg;*.bmp"};
    PatternFileList FileAleatorio{this, "FileAleatorio", "*.mp3"};
    PatternFileList FileSearch{this, "FileSearch", "*.mp3"};
    ui::ListBox DirSearch{this, "DirSearch"};
    ui::ListBox LyricsRef{this, "LyricsRef"};
    ImageBox ImagenCaratulA{this, "ImagenCaratulA"};
    ui::ControlArray<ui::PictureBox> picAlbum{this, "picAlbum", 0};
    ui::ControlArray<ui::PictureBox> imgNormal{this, "imgNormal", 17};
    ui::PictureBox picBotones{this, "picBotones"};
    ui::PictureBox picMenu{this, "picMenu"};
    ui::PictureBox picDiscos{this, "picDiscos"};
    ui::PictureBox picSliderVol{this, "picSliderVol"};
    ui::PictureBox picFondo{this, "picFondo"};
    ui::PictureBox picWallOriginal{this, "picWallOriginal"};
    ui::PictureBox picWallProp{this, "picWallProp"};
    ui::PictureBox PicMusic{this, "PicMusic"};
    ui::PictureBox picScroll{this, "picScroll"};
    ui::Label lblBitrate{this, "lblBitrate"};
    ui::Label lblFreq{this, "lblFreq"};
    ui::Label lblTiempoT{this, "lblTiempoT"};
    ui::Label lblDuracion{this, "lblDuracion"};
    ui::Label lblTrackRuta{this, "lblTrackRuta"};
    ui::Label lblTrackRep{this, "lblTrackRep"};
    ui::Timer playTimer{this, "playTimer", 100, true};
    ui::Timer Timer_Intro{this, "Timer_Intro", 1000};
    ui::Timer Timer_Texto{this, "Timer_Texto", 80};
    ui::ControlArray<ui::TextBox> txtSTIcon{this, "txtSTIcon", 5};

    // ---- form state ----
    std::string playState = "false";
    bool showFullPath = false;
    bool listShowing = false;
    // The graph's interfaces are held (mediaPosition, mediaControl, basicAudio).
    bool graphLoaded = false;
    int32_t volumeLevel = 0;
    std::string trackArtist, trackAlbum;
    int16_t lyricIndex = 1;
    bool introActive = false;
    int16_t introSeconds = 0;
    bool repeatActive = false;
    bool muteActive = false;
    int stateTimeout = 0;  // never assigned
    bool seekDragging = false;
    bool volumeDragging = false;
    float dragOrigin = 0, dragGrip = 0;
    int16_t seekTarget = 0;  // nothing assigns it: releasing the knob rewinds
    std::vector<int16_t> shuffleOrder;
    bool shuffleReady = false;
    int16_t shufflePos = 0;
    std::vector<std::string> shuffleHistory;
    int16_t historyCount = 0;
    bool historyStarted = false;
    bool scrollStarted = false;
    int16_t scrollPause = 0;
    bool scrollTicking = false;

    // Form position on the screen, in twips.
    double Left = 0, Top = 0;

    // The compact face of this player.
    FrmMini frmMini;

    // ---- who else is there ----
    // The tag editor and the lyrics window, when open in this run.
    tags::FrmTags* frmTags = nullptr;
    tags::FrmLyrics* frmLyrics = nullptr;
    // The desktop's window helpers; without them stay-on-top, see-through and drag do nothing.
    platform::WindowService* windows = nullptr;
    // Unloading the player ends the whole program.
    std::function<void()> endProgram;
    // The random numbers of the shuffle, 0 <= Rnd < 1; Randomize reseeds.
    std::function<double()> Rnd;
    std::function<void()> Randomize;

    // ---- transport ----
    void Play();
    void Start_Play();
    void Stop_Player();
    void Pause_Play();
    void Five_Seg_Forward();
    void Five_Seg_Backward();
    void Ajust_Volume(double top);
    void ShowTime(double seconds);
    void Previous_Track();
    void Next_Track();
    void Next_Album();
    void Previous_Album();
    void Randomize_Click();
    void Intro();
    void Player_Repeat();
    void Player_Mute();
    void Minimize_Me();
    void ListaRep_Click();

    // ---- knobs ----
    void SliderReproduccioN_Down(int button, float x);
    void SliderReproduccioN_Move(int button, float x);
    void SliderReproduccioN_Up(int button);
    void SliderVolume_Down(int button, float y);
    void SliderVolume_Move(int button, float y);
    void SliderVolume_Up(int button);

    // ---- picture buttons and keys ----
    void imgNormal_MouseDown(int index, int button);
    void imgNormal_MouseUp(int index, int button);
    void Form_KeyUp(int keyCode, int shift);
    void Form_KeyPress(char key);

    // ---- the face ----
    void Images_Buttons(int index, bool active);
    void RefreshTransportButtons();
    void Select_Album(int index);
    void Play_Album(int index);
    void Front_Click();
    void Search_Caratula(const std::string& path);
    void Load_File_Tags();
    void Show_Lyrics(const std::string& text);
    void ShowLyricsPanel();
    void SyncLyricFocus();
    void Scroll_Text(const std::string& text, ui::PictureBox& strip);
    void Randomize_Order(const std::string& mode);
    void lblTrackRuta_Click();
    void picScroll_Click();

    // Timer events.
    void playTimer_Timer();
    void Timer_Intro_Timer();
    void Timer_Texto_Timer();

    // Paints row `row` of element `index`'s cell into it.
    void paintButton(int index, int row);
    // The position of the current graph in seconds, 0 without one.
    double position();

    // The tag editor drives this player through its hook; the player outlives the editor.
    void attachEditor(tags::FrmTags& editor);

    tags::TagsState& state;
    settings::mConfig& config;
    PlayerModule& module;

protected:
    void Form_Load() override;
    void Form_Unload(int& cancel) override;

private:
    void releaseGraph();
    bool textFits(const std::string& text, ui::PictureBox& strip);
    platform::MediaGraph& graph_;
    std::mt19937 rng_;
};

}  // namespace velaro::player
