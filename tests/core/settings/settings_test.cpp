// The INI reader, the settings paths and colours, and the registry store.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "core/base/ini_file.h"
#include "core/settings/m_config.h"
#include "core/settings/registry.h"
#include "core/platform/window_service.h"
#include "core/ui/headless.h"

using namespace velaro;
using namespace velaro::settings;

namespace {

std::string home(const std::string& name) {
    const std::string dir = ::testing::TempDir() + "/settings-" + name;
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

void writeFile(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

struct FakeWindows : platform::WindowService {
    bool layered = true;
    std::vector<std::string> calls;
    void setTopMost(ui::Form& w, bool on) override { calls.push_back(w.name() + (on ? " top" : " normal")); }
    bool layeredWindows() override { return layered; }
    void setOpacity(ui::Form& w, int a) override { calls.push_back(w.name() + " alpha " + std::to_string(a)); }
    void startMove(ui::Form& w) override { calls.push_back(w.name() + " move"); }
};

}  // namespace

TEST(IniFile, ReadsAsTheProfileCallsDo) {
    const IniFile f = IniFile::parse(
        "; comment\r\n[Skin]\r\n  RepBackColor =  1,2,3  \r\nquoted=\"  a b \"\r\n[skin]\r\nlate=1\r\n"
        "[Other]\r\nRepBackColor=9\r\n");
    EXPECT_EQ(f.get("SKIN", "repbackcolor").value_or("?"), "1,2,3");
    EXPECT_EQ(f.get("Skin", "quoted").value_or("?"), "  a b ");
    EXPECT_FALSE(f.get("Skin", "late"));  // only the first section of a name counts
    EXPECT_EQ(f.get("Other", "RepBackColor").value_or("?"), "9");
    EXPECT_FALSE(f.get("Missing", "x"));
    EXPECT_FALSE(IniFile::parse("\x01\xff[=]\n=\n[").get("", ""));
    EXPECT_EQ(GetPrivateProfileString("a", "b", "NO_TA", "/nonexistent/x.ini"), "NO_TA");
}

TEST(IniFile, SetKeepsTheRestAndSavesSafely) {
    const std::string dir = home("ini");
    IniFile f = IniFile::parse("[A]\nx=1\n\n[B]\ny=2\n");
    f.set("a", "X", "5");
    f.set("A", "z", "6");
    f.set("C", "w", "7");
    EXPECT_EQ(f.text(), "[A]\nX=5\nz=6\n\n[B]\ny=2\n[C]\nw=7\n");
    f.save(dir + "/t.ini");
    EXPECT_EQ(IniFile::load(dir + "/t.ini").get("C", "w").value_or("?"), "7");
}

TEST(Settings, PathsAndReadSetting) {
    mConfig c;
    c.appFolder = home("paths");
    EXPECT_EQ(c.GetPath(0), c.appFolder + "/");
    EXPECT_EQ(c.GetPath(1), c.appFolder + "/Staiflubra/Skins//");  // no skin name: the Skins folder itself
    writeFile(c.GetPath(1) + "Skin.ini",
              "[Skin]\nRepBackColor= 255 , 128, 0\nRepForeColor=1,2\nBad=a,b,c\nName=  Blue  \nGone=NO_TA\n"
              "Big=300,0,0\n");
    EXPECT_EQ(c.ReadColor("Skin", "RepBackColor", 0), 255 + 128 * 256);
    EXPECT_EQ(c.ReadColor("Skin", "RepForeColor", 0xFFFFFF), 0xFFFFFF);
    EXPECT_EQ(c.ReadColor("Skin", "Bad", 7), 7);
    EXPECT_EQ(c.ReadColor("Skin", "Big", 7), 255);
    EXPECT_EQ(std::get<std::string>(c.ReadSetting("Skin", "Name", std::string("x"), false, false)), "Blue");
    EXPECT_EQ(std::get<std::string>(c.ReadSetting("Skin", "Gone", std::string(" d "), false, false)), "d");
    writeFile(c.GetPath(0) + "velaro-deck.ini", "[Configuration]\nMulInstances= 1 \n");
    EXPECT_EQ(std::get<std::string>(c.ReadSetting("Configuration", "MulInstances", std::string("0"), false, true)),
              "1");
    EXPECT_EQ(std::get<std::string>(c.ReadSetting("Configuration", "Mini", std::string("0"), false, true)), "0");
}

TEST(Settings, WindowHelpers) {
    ui::Headless h;
    ui::Form mini(h.rt, "frmMini"), player(h.rt, "MusicMp3");
    FakeWindows ws;
    mConfig c;
    c.SetOnTop(ws, &mini, &player);
    c.alwaysOnTop = true;
    c.MiniMode = true;
    c.SetOnTop(ws, &mini, &player);
    SetTransparency(ws, player, 100);
    SetTransparency(ws, player, 159);
    SetTransparency(ws, player, 200);  // beyond the byte: nothing
    DragWindow(ws, player);
    ws.layered = false;
    SetTransparency(ws, player, 50);
    EXPECT_EQ(ws.calls, (std::vector<std::string>{"MusicMp3 normal", "frmMini top", "MusicMp3 alpha 100",
                                                  "MusicMp3 alpha 252", "MusicMp3 move"}));
}

TEST(Registry, QueryPromptsOnceAndKeepsTheAnswer) {
    const std::string dir = home("registry");
    Registry r(dir + "/sub/registry.ini");
    ui::Headless h;
    EXPECT_EQ(r.RegistryQuery("Skin", "", &h.dialogs), "");
    EXPECT_TRUE(h.dialogs.shown().empty());
    h.dialogs.answerInput("Classic");
    EXPECT_EQ(r.RegistryQuery("Skin", "Which skin?", &h.dialogs), "Classic");
    ASSERT_EQ(h.dialogs.shown().size(), 1u);
    EXPECT_EQ(h.dialogs.shown()[0].text, "Which skin?");
    EXPECT_EQ(r.RegistryQuery("Skin", "Which skin?", &h.dialogs), "Classic");
    EXPECT_EQ(h.dialogs.shown().size(), 1u);
    r.RegSetValue(HKEY_LOCAL_MACHINE, kPlayerKey, "Count", uint32_t{10});
    const auto typed = r.RegQueryTyped(HKEY_LOCAL_MACHINE, kPlayerKey, "Count");
    ASSERT_TRUE(typed);
    EXPECT_EQ(typed->first, REG_DWORD);
    EXPECT_EQ(std::get<uint32_t>(typed->second), 10u);
    EXPECT_EQ(std::get<std::string>(r.RegGetValue(HKEY_CURRENT_USER, kPlayerKey, "Skin", std::string("def"))), "def");
    // A store that cannot be written reports through the trap's text.
    Registry bad("/proc/velaro-no/registry.ini");
    std::string failure;
    h.dialogs.answerInput("x");
    EXPECT_EQ(bad.RegistryQuery("Skin", "?", &h.dialogs, &failure), "");
    EXPECT_EQ(failure.rfind("RegistryQuery ", 0), 0u);
}
