#pragma once
// The main form's model: the song it holds and the controls its logic drives.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "../platform/platform.h"
#include "../ui/common_dialog.h"
#include "../ui/control_array.h"
#include "../ui/form.h"
#include "song_model.h"

namespace velaro::song {

class frmMain : public ui::Form {
public:
    frmMain(ui::Runtime& rt, platform::Platform& platform);

    platform::Platform& platform;

    // ---- controls ----
    ui::CommonDialog CMDialog1{this, "CMDialog1"};
    ui::ControlArray<ui::Slider> Slider2{this, "Slider2", 16, 0, 127};
    ui::ControlArray<ui::CheckBox> Check1{this, "Check1", 16};
    ui::ControlArray<ui::OptionButton> Option1{this, "Option1", 16};

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
    std::vector<WordRec> wordTable{WordRec{}};     // index 0 unused
    std::vector<std::string> lineTable{std::string()};
    int32_t wordCursor = 0;
    bool keepSongModel = false;

    // ---- file variants and the patch file ----
    bool skipConversion = false;
    uint8_t lyricRich = 0;
    std::string soltonBytes;  // the bytes SOLTON read, which senzatesto searches
    std::array<uint8_t, 411> patchBuffer{};
    std::string tempPatchPath;
    std::string convertedPath;

    // ---- operations ----
    void ZeroVariables();
    void readfile();
    void GetWords(std::string text);
    void CreateFileTemp();
    void SOLTON();
    void senzatesto();

    int wordUpperBound() const { return static_cast<int>(wordTable.size()) - 1; }
    int lineUpperBound() const { return static_cast<int>(lineTable.size()) - 1; }

private:
    void scanChannel(int c);
};

}  // namespace velaro::song
