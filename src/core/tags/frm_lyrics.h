#pragma once
// "Velaro  Mp3 Karaoke": the lyrics of the playing file as a column of
// labels, ten to a page, the current one red and bold. It keeps no time of
// its own: SyncLyrics moves it a line at a time.

#include <cstdint>
#include <string>

#include "../settings/m_config.h"
#include "../ui/control_array.h"
#include "../ui/form.h"
#include "tags_state.h"

namespace velaro::tags {

class FrmTags;

inline constexpr uint32_t kLyricRed = 255;
inline constexpr uint32_t kLyricSung = 0xFF8080;
// The design height of a lyric label; a view sets the real one from its font.
inline constexpr double kLyricLabelHeight = 375;

class FrmLyrics : public ui::Form {
public:
    FrmLyrics(ui::Runtime& rt, TagsState& state, const settings::mConfig& config);

    ui::PictureBox picBody{this, "picBody"};
    ui::PictureBox picLyrics{this, "picLyrics"};
    ui::ControlArray<ui::Label> lblLyrics{this, "lblLyrics", 1};
    ui::Label lblNoLyrics{this, "lblNoLyrics"};
    ui::Label Lblyr{this, "Lblyr"};
    ui::Label lblTitle{this, "lblTitle"};
    ui::Label lblAlbum{this, "lblAlbum"};
    ui::Label lblArtist{this, "lblArtist"};
    ui::ListBox LyricsRef{this, "LyricsRef"};

    int16_t lyricIndex = 0;
    int16_t pageLine = 0;
    int16_t lyricLast = 0;
    uint32_t lyricForeColor = 0xFFFFFF;

    // The editor whose texts the window shows (set by the editor).
    const FrmTags* editor = nullptr;

    void Reset_Values();
    void Order_lblLyrics();
    void Move_Next_Focus_Lyrics();
    void Move_Previous_Focus_Lyrics();

    // The words of the highlighted label, "" when none is (past the last line).
    std::string highlightedText() const;

protected:
    void Form_Load() override;
    void Form_Unload(int& cancel) override;

private:
    TagsState& state_;
    const settings::mConfig& config_;
};

}  // namespace velaro::tags
