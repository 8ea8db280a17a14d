#include "m_config.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "../base/byte_text.h"
#include "../base/ini_file.h"
#include "../base/paths.h"
#include "../base/vb_number.h"
#include "../platform/window_service.h"

namespace velaro::settings {

namespace {

// CInt of a colour part: blanks around are fine, anything not a number fails.
bool colourPart(const std::string& text, int& out) {
    const std::string t = trim(text);
    if (t.empty()) return false;
    char* end = nullptr;
    const double v = std::strtod(t.c_str(), &end);
    if (end != t.c_str() + t.size()) return false;
    const double r = roundHalfEven(v);
    if (r < 0 || r > 32767) return false;
    out = static_cast<int>(r);
    return true;
}

}  // namespace

std::string mConfig::GetPath(int kind) const {
    std::string path = RPP(appFolder.empty() ? applicationFolder() : appFolder);
    if (kind == 1) path += "Staiflubra/Skins/" + skinName + "/";
    return path;
}

Setting mConfig::ReadSetting(const std::string& section, const std::string& key, const Setting& def, bool isColor,
                             bool fromAppFile) const {
    if (fromAppFile) {
        const std::string v =
            GetPrivateProfileString(section, key, kNoValue, GetPath(0) + kProgramName + ".ini");
        if (v == kNoValue) {
            if (auto* s = std::get_if<std::string>(&def)) return trim(*s);
            return def;
        }
        return trim(v);
    }
    const std::string v = GetPrivateProfileString(section, key, kNoValue, GetPath(1) + "Skin.ini");
    if (isColor) {
        if (v == kNoValue) return def;
        std::vector<std::string> parts;
        size_t from = 0;
        for (;;) {
            const size_t at = v.find(',', from);
            parts.push_back(v.substr(from, at == std::string::npos ? std::string::npos : at - from));
            if (at == std::string::npos) break;
            from = at + 1;
        }
        int rgb[3] = {0, 0, 0};
        if (parts.size() != 3) return def;
        for (int i = 0; i < 3; ++i)
            if (!colourPart(parts[static_cast<size_t>(i)], rgb[i])) return def;
        // RGB() takes no part above 255.
        for (int& c : rgb) c = std::min(c, 255);
        return int32_t{rgb[0] + rgb[1] * 256 + rgb[2] * 65536};
    }
    if (v == kNoValue) {
        if (auto* s = std::get_if<std::string>(&def)) return trim(*s);
        return def;
    }
    return trim(v);
}

int32_t mConfig::ReadColor(const std::string& section, const std::string& key, int32_t def) const {
    const Setting s = ReadSetting(section, key, def, true, false);
    if (auto* c = std::get_if<int32_t>(&s)) return *c;
    return def;
}

void mConfig::SetOnTop(platform::WindowService& ws, ui::Form* frmMini, ui::Form* MusicMp3) const {
    ui::Form* target = MiniMode ? frmMini : MusicMp3;
    if (target) ws.setTopMost(*target, alwaysOnTop);
}

void SetTransparency(platform::WindowService& ws, ui::Form& window, int level) {
    if (!ws.layeredWindows()) return;
    const int alpha = static_cast<int>(int64_t{level} * level / 100);
    if (alpha < 0 || alpha > 255) return;  // out of the byte's range: the trap leaves silently
    ws.setOpacity(window, alpha);
}

void DragWindow(platform::WindowService& ws, ui::Form& form) { ws.startMove(form); }

}  // namespace velaro::settings
