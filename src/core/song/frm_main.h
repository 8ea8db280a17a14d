#pragma once
// The main form's model: the song it holds, its transport, its channel strip
// and the controls its logic drives.

#include <array>
#include <functional>
#include <cstdint>
#include <string>
#include <vector>

#include "../platform/platform.h"
#include "../ui/common_dialog.h"
#include "../ui/control_array.h"
#include "../ui/canvas.h"
#include "../ui/form.h"
#include "song_model.h"

namespace velaro::song {

class frmMain : public ui::Form {
public:
    frmMain(ui::Runtime& rt, platform::Platform& platform);
    ~frmMain() override;

    platform::Platform& platform;

    // ---- menus ----
    ui::Menu MnuOpenSong{this, "MnuOpenSong"};
    ui::Menu pLmenu{this, "pLmenu"};
    ui::Menu mnew{this, "mnew"};
    ui::Menu dlsbank{this, "dlsbank"};
    ui::Menu Meff{this, "Meff"};
    ui::Menu SaveT{this, "SaveT"};
    ui::Menu SaveSyncro{this, "SaveSyncro"};

    // ---- transport and recording buttons ----
    ui::CommandButton Cmd_Play{this, "Cmd_Play"};
    ui::CommandButton Cmd_Stop{this, "Cmd_Stop"};
    ui::CommandButton CmdPause{this, "CmdPause"};
    ui::CommandButton cmdrec{this, "cmdrec"};
    ui::CommandButton cmdstop{this, "cmdstop"};
    ui::CommandButton cmdSave{this, "cmdSave"};
    ui::CommandButton cmdApply{this, "cmdApply"};
    ui::CommandButton Cmdplw{this, "Cmdplw"};
    ui::CommandButton cmdstw{this, "cmdstw"};
    ui::CommandButton Command4{this, "Command4"};
    ui::CommandButton Command5{this, "Command5"};
    ui::CommandButton Command6{this, "Command6"};
    ui::CommandButton Command9{this, "Command9"};  // the seek bar's thumb

    // ---- song display ----
    ui::CommonDialog CMDialog1{this, "CMDialog1"};
    ui::Frame Frame4{this, "Frame4"};
    ui::Frame Frame8{this, "Frame8"};
    ui::Label lblS{this, "lblS"};
    ui::Label lblM{this, "lblM"};
    ui::Label Label5{this, "Label5"};
    ui::Label lblTime{this, "lblTime"};
    ui::Label Label9{this, "Label9"};
    ui::Label LabelSongLength{this, "LabelSongLength"};
    ui::ControlArray<ui::Label> lblInfo{this, "lblInfo", 3};
    ui::TextBox Text2{this, "Text2"};
    ui::PictureBox Picture1{this, "Picture1"};
    ui::PictureBox Picture2{this, "Picture2"};
    ui::PictureBox Picture3{this, "Picture3"};  // the lyric page
    ui::PictureBox Picture4{this, "Picture4"};  // the seek bar
    ui::ScrollBar HScroll3{this, "HScroll3", -1, 0, 100};

    // ---- tempo, transpose, volume ----
    ui::Slider vslidertempo{this, "vslidertempo", -1, 0, 127};
    ui::ScrollBar vscroll1{this, "vscroll1", -1, -10, 10};
    ui::Slider Slider1{this, "Slider1", -1, 50, 100};

    // ---- the 16 channel strips ----
    ui::ControlArray<ui::Slider> Slider2{this, "Slider2", 16, 0, 127};
    ui::ControlArray<ui::CheckBox> Check1{this, "Check1", 16};
    ui::ControlArray<ui::OptionButton> Option1{this, "Option1", 16};
    ui::ControlArray<ui::Label> Label3{this, "Label3", 16};
    ui::ListBox List3{this, "List3"};
    ui::CheckBox Check2{this, "Check2"};  // "Pc": program changes
    ui::CheckBox Check3{this, "Check3"};  // "Rv"

    // ---- vocal remover (shown in audio backing mode) ----
    ui::CheckBox Chkrem{this, "Chkrem"};
    ui::ControlArray<ui::Slider> vseq{this, "vseq", 8, -15, 15};

    // ---- timers ----
    ui::Timer Timer{this, "Timer", 10};
    ui::Timer Timer1{this, "Timer1", 0};
    ui::Timer TimTps{this, "TimTps", 1000};
    ui::Timer Timer5{this, "Timer5", 1000};
    ui::Timer Timer2{this, "Timer2", 300};
    ui::Timer Timer3{this, "Timer3", 400};
    ui::Timer Timer4{this, "Timer4", 300};

    // The current song: the file dialog's FileName.
    const std::string& songPath() const { return CMDialog1.FileName; }
    void setSongPath(std::string path) { CMDialog1.FileName = std::move(path); }

    // ---- song model ----
    std::string songBytes;
    int16_t smfFormat = 0;
    int16_t smfTracks = 0;
    double divisionQuarter = 0;
    double tempoUs = 0;
    float songBpm = 0;
    double msPerTick = 0;
    std::string fullLyricText;
    std::array<ChannelRow, 16> channelTable{};
    std::vector<WordRec> wordTable{WordRec{}};  // index 0 unused
    std::vector<std::string> lineTable{std::string()};
    int32_t wordCursor = 0;

    // ---- session ----
    uint8_t songState = 0;  // 0 stopped, 1 playing, 2 paused
    bool pausedFlag = false;
    bool deviceOpen = false;
    bool perfReady = false;
    bool keepSongModel = false;
    bool stopRequested = false;
    bool songRunning = false;
    bool songStoppedFlag = false;
    bool recordStopFlag = false;
    bool midiMode = false;
    bool audioFileMode = false;
    bool noSongMode = false;
    bool digitalRecorderMode = false;
    bool recordingActive = false;
    bool programChangeOn = false;
    int32_t resumeMusicTime = 0;
    double resumeMs = 0;
    int32_t timeOffsetMs = 0;
    double playTempo = 0;
    int32_t lengthSeconds = 0;
    int16_t percentPlayed = 0;
    int16_t lastSyncLine = 0;
    int32_t syncMinutes = 0;
    double syncSeconds = 0;
    int32_t tpsMinutes = 0;  // the minute counter of TimTps
    int32_t tpsSeconds = 0;
    std::string lengthMinutesField, lengthSecondsField;
    std::string rvText;  // written when reverb is asked for; nothing reads it
    std::string soundBankPath;

    // Performance objects: handles into the platform's performance.
    platform::SegmentId dmSegment = 0;
    platform::SegmentId dmPatchSegment = 0;
    platform::CollectionId dmCollection = 0;
    platform::SegmentStateId dmSegmentState = 0;
    bool loaderCreated = false;

    // ---- instruments ----
    int16_t instrumentCursorChannel = 0;
    int16_t listClickCount = 0;
    std::string instrumentName = std::string(12, ' ');
    const std::string drumsWord = "drums";
    bool loadingPatches = false;  // keeps Check2's notice quiet while loading

    // ---- file variants and the patch file ----
    bool skipConversion = false;
    uint8_t lyricRich = 0;
    std::string soltonBytes;  // the bytes SOLTON read, which senzatesto searches
    std::array<uint8_t, 411> patchBuffer{};
    std::string tempPatchPath;
    std::string convertedPath;

    // ---- song reading ----
    void ZeroVariables();
    void readfile();
    void GetWords(std::string text);
    void CreateFileTemp();
    void SOLTON();
    void senzatesto();
    void midkar();

    // ---- song session ----
    void MnuOpenSong_Click();
    void OpenFile();
    void pLmenu_Click();
    bool songDialog();  // SONGPLAY1: false on cancel
    void OpenMusic();
    void Cmd_Play_Click();
    void Cmd_Stop_Click();
    void CmdPause_Click();

    // ---- playback ----
    void Initialize();
    void CloseDevice();
    void SeekEnd();
    void Timer_Timer();
    void Play();
    void PLAYERMIDI();
    void SetMusicPosition();
    void UpdateBar(int percent);
    void vslidertempo_Change();
    void vscroll1_Change();
    void Slider1_Change();
    void Command9_MouseDown(int button, int shift, double x, double y);
    void Command9_MouseMove(int button, int shift, double x, double y);
    void Command9_MouseUp(int button, int shift, double x, double y);
    void Picture4_MouseMove(int button, int shift, double x, double y);

    // ---- instruments and channels ----
    static std::string GetPatch(int16_t program);
    void LoadPatches();
    void descrizionestrumenti(int program);
    void SetChannels();
    void Slider2_Change(int c);
    void Check1_Click(int c);
    void Option1_Click(int c);
    void List3_Click();
    void Check2_Click();

    // ---- what later parts of the program fill in; until then they do nothing ----
    std::function<void()> dismenu, enamenu, dmenu;  // top menus off / on
    std::function<void()> STOPVALUE;                // recorder after a replay
    std::function<void()> openEffectPanels;         // compressor panel on the song's buffer
    std::function<void()> unloadEffectPanels;
    std::function<void()> PlayAudio;                // the audio backing path
    std::function<std::string()> showPlaylist;      // pList modally; the chosen file or ""
    std::function<void()> recorderPlay;             // PLAYERMIDI's recorder side
    std::function<void()> Timer1_Timer;             // the karaoke page tick

    int wordUpperBound() const { return static_cast<int>(wordTable.size()) - 1; }
    int lineUpperBound() const { return static_cast<int>(lineTable.size()) - 1; }

private:
    void scanChannel(int c);
    void call(const std::function<void()>& hook) {
        if (hook) hook();
    }
    void openCommon(bool withDialog);
    void dialogSuccessState();
    // The start-point arithmetic shared by the three ways of playing.
    void prepareStart();
    void showLength();
    // The minute and second fields of the segment's length, in a unit of their own.
    void lengthFields();
    double thumbGrab_ = 0;
    bool thumbDown_ = false;
};

}  // namespace velaro::song
