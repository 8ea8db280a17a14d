#pragma once
// "Velaro Cd Ripper": the drives and their abilities, the track list with or
// without CD-TEXT, the door, extraction of a track to the wave file (handed to
// the main window as its backing) or to WMA, and playback of the disc.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "../platform/platform.h"
#include "../ui/control_array.h"
#include "../ui/form.h"

namespace velaro::song {
class frmMain;
}

namespace velaro::cd {

class frmDemo : public ui::Form {
public:
    // `main` takes the ripped wave; nullptr when the window runs alone.
    frmDemo(ui::Runtime& rt, platform::Platform& platform, song::frmMain* main = nullptr);
    ~frmDemo() override;

    static constexpr double kSmallHeight = 6540;
    static constexpr double kInfoHeight = 11490;

    ui::ComboBox cmbCDDrives{this, "cmbCDDrives"};
    ui::ControlArray<ui::CheckBox> chkRWFlags{this, "chkRWFlags", 15};
    ui::Label lblMaxReadSpeed{this, "lblMaxReadSpeed"};
    ui::Label lblCacheSize{this, "lblCacheSize"};
    ui::ListBox lstTracks{this, "lstTracks"};
    ui::TextBox txtCDArtist{this, "txtCDArtist"};
    ui::TextBox txtCDAlbum{this, "txtCDAlbum"};
    // 0 Play, 1 Pause/Resume, 2 Stop, 3 Lock, 4 Unlock, 5 Open, 6 Close, 7 Extract, 8 Fade Out, 9 Drive Info.
    ui::ControlArray<ui::CommandButton> Cmdbutton{this, "Cmdbutton", 10};
    ui::ControlArray<ui::OptionButton> optExtractMode{this, "optExtractMode", 2};
    ui::Frame picWMAExtractOptions{this, "picWMAExtractOptions"};
    ui::ComboBox cmbWMAEncodingBitrate{this, "cmbWMAEncodingBitrate"};
    ui::CheckBox chkWMAFileTags{this, "chkWMAFileTags"};
    ui::ControlArray<ui::TextBox> txtWMATags{this, "txtWMATags", 8};
    ui::ControlArray<ui::Label> lblWMATags{this, "lblWMATags", 8};
    ui::ProgressBar prgExtract{this, "prgExtract"};
    ui::Slider SliderPosition{this, "SliderPosition", -1, 0, 10000};
    ui::Slider SliderVolume{this, "SliderVolume", -1, -1000, 0};
    ui::Label lblVolume{this, "lblVolume"};
    ui::Slider SliderBalance{this, "SliderBalance", -1, -100, 100};
    ui::Label lblBalance{this, "lblBalance"};
    ui::Label lblTrackPosition{this, "lblTrackPosition"};
    ui::ControlArray<ui::PictureBox> picVUMeter{this, "picVUMeter", 2};
    ui::Timer tmrPlaybackPosition{this, "tmrPlaybackPosition", 50, true};

    int32_t cdDrive = 0;
    int32_t lastDrive = -1;
    platform::CdStreamId cdStream = 0;
    std::vector<std::string> tagNames;
    bool seekDragging = false;
    bool trackSaved = false;
    double height = kSmallHeight;
    // Stop pressed while a track is extracted: the loop ends, the file keeps what was read.
    bool extractStop = false;
    bool extracting = false;

    void cmbCDDrives_Click();
    void ShowDriveInfo();
    void RefreshTrackList();
    void LoadTrackListFromCDText(int tracks, const std::string& block);
    void ShowError(const std::string& text, int code);

    void Cmdbutton_Click(int index);
    void ExtractAudioTrack(int track);
    void ExtractAudioTrackToWMA(int track, int bitRate);
    void LoadWMAEncoderRates();
    void savefile();
    static void KILLTRACK();
    static std::string trackPath();
    static std::string wmaPath(int track);

    void PlayTrack(int track);
    void PlayNextTrack(int track);
    void CDError();
    void FadeOut();
    void tmrPlaybackPosition_Timer();
    int volumePercent() const;

protected:
    void Form_Load() override;
    void Form_Unload(int& cancel) override;

private:
    bool ripBlock(int64_t pos, int64_t length);
    void routineFailed(const std::exception& e, const char* routine);
    void drawLevel(ui::PictureBox& pic, uint32_t level);
    // A sync from the library thread, run on the loop if the stream is still ours.
    std::function<void()> onLoop(platform::CdStreamId stream, std::function<void()> fn);

    platform::Platform& platform_;
    platform::CdLibrary& cd_;
    song::frmMain* main_;
    bool emptyDisc_ = false;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace velaro::cd
