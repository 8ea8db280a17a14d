#pragma once
// The main form's model: the song it holds, its transport, its channel strip
// and the controls its logic drives.

#include <array>
#include <functional>
#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "../platform/platform.h"
#include "../record/main_effects.h"
#include "../record/main_backing.h"
#include "../record/main_encoding.h"
#include "../record/main_recording.h"
#include "../ui/common_dialog.h"
#include "../ui/control_array.h"
#include "../ui/canvas.h"
#include "../ui/form.h"
#include "../song/song_model.h"
#include "mixer_panel.h"

namespace velaro::song {

class frmMain : public ui::Form {
public:
    frmMain(ui::Runtime& rt, platform::Platform& platform);
    ~frmMain() override;

    platform::Platform& platform;

    // ---- menus: the four top menus, then their entries ----
    ui::Menu MnuFile{this, "MnuFile"};
    ui::Menu mnutil{this, "mnutil"};
    ui::Menu cvmenu{this, "cvmenu"};
    ui::Menu Meff{this, "Meff"};
    ui::Menu MnuOpenSong{this, "MnuOpenSong"};
    ui::Menu cdRipper{this, "cdRipper"};
    ui::Menu menuwave{this, "menuwave"};
    ui::Menu pLmenu{this, "pLmenu"};
    ui::Menu SaveT{this, "SaveT"};
    ui::Menu SaveSyncro{this, "SaveSyncro"};
    ui::Menu MnuMp3{this, "MnuMp3"};
    ui::Menu mnew{this, "mnew"};
    ui::Menu mnuExit{this, "mnuExit"};
    ui::Menu dlsbank{this, "dlsbank"};
    ui::Menu inputRec{this, "inputRec"};
    ui::Menu inputmenu{this, "inputmenu"};
    ui::Menu MnuNorm{this, "MnuNorm"};
    ui::Menu mnwave{this, "mnwave"};
    ui::Menu Mmp3{this, "Mmp3"};
    ui::Menu wavp3{this, "wavp3"};
    ui::Menu Mchor{this, "Mchor"};
    ui::Menu Mecho{this, "Mecho"};
    ui::Menu Mequal{this, "Mequal"};
    ui::Menu Mrev{this, "Mrev"};
    ui::Menu Mnfla{this, "Mnfla"};
    ui::Menu Mecompr{this, "Mecompr"};
    ui::Menu NormMnu{this, "NormMnu"};
    ui::Menu loadSbank{this, "loadSbank"};
    ui::Menu MnuMeter{this, "MnuMeter"};
    ui::Menu SaveC{this, "SaveC"};
    ui::Menu Mhelp{this, "Mhelp"};
    ui::Menu MnuAbout{this, "MnuAbout"};

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
    ui::CommandButton cmdplaystop{this, "cmdplaystop"};
    ui::CommandButton encstop{this, "encstop"};

    // ---- recording input, effects list and the mixer panel ----
    ui::ComboBox cmbInput{this, "cmbInput"};
    ui::ComboBox cboRecSrcType{this, "cboRecSrcType"};
    ui::ComboBox cmbQuality{this, "cmbQuality"};
    ui::ListBox lstuse{this, "lstuse"};
    ui::Slider Slider4{this, "Slider4", -1, 0, 100};
    ui::Slider Sldmastervolume{this, "Sldmastervolume", -1, 0, 100};
    ui::Slider sldInputLevel{this, "sldInputLevel", -1, 0, 100};
    ui::Slider SLDPLAYVOLUME{this, "SLDPLAYVOLUME", -1, 0, 100};
    ui::CheckBox CHKPLAYMUTE{this, "CHKPLAYMUTE"};

    // ---- song display ----
    ui::CommonDialog CMDialog1{this, "CMDialog1"};
    ui::CommonDialog Cmdialog2{this, "Cmdialog2"};
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

    // ---- configuration (config.vlr) and process-wide settings ----
    std::string configMark;
    int32_t chosenInput = -1;
    int32_t colorUnsung = 0x8080;
    int32_t colorSung = 0xFF8080;
    int32_t fontSize = 18;
    std::string fontName = "tahoma";
    std::string normalizePercent;
    bool normalizeAfterSave = false;
    bool meterEnabled = false;
    bool soundBankOn = false;
    int32_t meterDeviceId = 0;
    int32_t recordRate = 44100;
    int16_t recordChannels = 2;
    uint8_t recordBits = 16;
    int32_t mp3BitRate = 192000;
    bool playStopFlag = false;
    bool usingRippedTrack = false;
    int effectCount = 0;
    double calibrationFactor = 0;
    int inputLevelStored = 20;  // the input level the mixer holds: the slider shows 100 less it
    bool encoderProgressGuard = false;
    bool CdWaveLoaded = false;  // the CD window extracted a track
    bool ended = false;         // the program has ended (by exit, close box or a fatal start)
    int endCode = 0;

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

    record::MainEncoding encoding{*this};  // after every control and field it uses
    record::MainRecording recording{*this};
    record::MainBacking backing{*this};  // after the recording part, whose hooks it fills

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

    // ---- main form lifecycle, configuration and modes ----
    void Form_Load() override;
    void Form_QueryUnload(int& cancel) override;
    void BASSDLL();
    void confload();
    void confsave();
    void SaveC_Click();
    void abilita();
    void dismenu();
    void enamenu();
    void dmenu();
    void unloadOthers();
    void Error_(const std::string& text);
    // A save that failed left the old file as it was; the box says why.
    void reportWriteFailure(const std::exception& e);
    void menuwave_Click();
    void PlayAudio();
    void MnuMp3_Click();
    void mnew_Click();
    void cdRipper_Click();
    void dlsbank_Click();
    void mnuExit_Click();
    void NormMnu_Click();
    void loadSbank_Click();
    void MnuMeter_Click();
    std::string configPath() const;
    std::string tempPatchFile() const;

    // ---- karaoke page and text export ----
    void Timer1_Tick();
    void writeStamp(int16_t line);
    void Command4_Click();
    void Command5_Click();
    void Command6_Click();
    void TimTps_Timer();
    void SaveT_Click();
    void SaveSyncro_Click();

    // ---- what later parts of the program fill in; until then they do nothing ----
    std::function<void()> meterStart, meterStop, Vmeter;  // the level meter
    std::function<void()> chooseInput;                    // the mixer's recording input
    std::function<void()> showTags;                       // the tag editor
    std::function<void()> showCdRipper;                   // the CD window, modally
    std::function<void()> showHelp, showAbout;
    // The program ends: the front end closes down with this code.
    std::function<void(int code)> endProgram;
    std::function<void()> STOPVALUE;                // recorder after a replay
    std::function<void()> openEffectPanels;         // compressor panel on the song's buffer
    std::function<void()> unloadEffectPanels;
    std::function<std::string()> showPlaylist;      // pList modally; the chosen file or ""
    std::function<void()> recorderPlay;             // PLAYERMIDI's recorder side

    record::MainEffects effects{*this};  // after the hooks it fills in
    MixerPanel mixer{*this};

    int wordUpperBound() const { return static_cast<int>(wordTable.size()) - 1; }
    int lineUpperBound() const { return static_cast<int>(lineTable.size()) - 1; }

private:
    void end(int code);
    void clearChannelRows();
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
