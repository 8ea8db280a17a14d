#pragma once
// mConfig: where the skin and settings files lie, the INI reader with its
// colour form, and the stay-on-top, transparency and drag helpers.

#include <cstdint>
#include <string>
#include <variant>

namespace velaro::ui {
class Form;
}
namespace velaro::platform {
class WindowService;
}

namespace velaro::settings {

// A setting is a text, or a colour number (red in the low byte).
using Setting = std::variant<std::string, int32_t>;

inline constexpr const char* kNoValue = "NO_TA";
// The program's name, for its settings file beside it.
inline constexpr const char* kProgramName = "velaro-deck";

struct mConfig {
    // The application folder; empty means the program's usual one.
    std::string appFolder;
    // Nothing assigns these yet; they keep their zero values.
    std::string skinName;
    int16_t windowAlpha = 0;
    bool alwaysOnTop = false;
    bool MiniMode = false;

    // 0: the application folder with a trailing separator; 1: the skin's folder.
    std::string GetPath(int kind) const;
    // From the program's own INI (fromAppFile), or the skin's "Skin.ini",
    // as text or (isColor) as "r,g,b" made into a colour number.
    Setting ReadSetting(const std::string& section, const std::string& key, const Setting& def, bool isColor,
                        bool fromAppFile) const;
    // The colour form of ReadSetting with a colour default.
    int32_t ReadColor(const std::string& section, const std::string& key, int32_t def) const;

    // The active player window (frmMini in mini mode) kept above others or not.
    void SetOnTop(platform::WindowService& ws, ui::Form* frmMini, ui::Form* MusicMp3) const;
};

// Alpha = level * level / 100 (integer part); only where windows can be see-through.
void SetTransparency(platform::WindowService& ws, ui::Form& window, int level);
void DragWindow(platform::WindowService& ws, ui::Form& form);

}  // namespace velaro::settings
