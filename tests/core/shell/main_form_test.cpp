// The main form's start, its configuration file, its toggles and its two ways out.

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

#include "core/base/paths.h"
#include "core/platform/inert.h"
#include "core/shell/config_vlr.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"

using namespace velaro;

namespace {

const std::string kDefaults = "\"OK\",2,32896,16744576,18,\"tahoma\",\"\",#FALSE#,#FALSE#,#FALSE#,#FALSE#,0\r\n";

// A library with two inputs, the first one enabled, and a version of our choosing.
struct Streams : platform::InertAudioStreams {
    uint32_t version = platform::kStreamsVersion;
    std::vector<bool> enabled = {true, false};
    uint32_t GetVersion() override { return version; }
    std::vector<std::string> RecordInputs() override { return {"Mic", "Line"}; }
    bool RecordInputEnabled(int i) override { return enabled.at(static_cast<size_t>(i)); }
};

struct MainForm : ::testing::Test {
    std::string home = tempFolder() + "/velaro-home-" + std::to_string(getpid()) + "-" +
                       ::testing::UnitTest::GetInstance()->current_test_info()->name();
    ui::Headless ui;
    platform::InertPlatform inert;
    Streams streams;
    platform::Platform p = [this] {
        platform::Platform q = inert.get();
        q.streams = &streams;
        return q;
    }();
    std::unique_ptr<song::frmMain> f;
    // The start moves into the application folder, which an earlier test may
    // have removed: then the temporary folder stands in.
    std::string cwd = [] {
        std::error_code ec;
        const auto here = std::filesystem::current_path(ec);
        return ec ? std::filesystem::temp_directory_path().string() : here.string();
    }();

    void SetUp() override {
        std::filesystem::remove_all(home);
        setenv("VELARO_HOME", home.c_str(), 1);
        f = std::make_unique<song::frmMain>(ui.rt, p);
    }
    void TearDown() override {
        unsetenv("VELARO_HOME");
        std::filesystem::current_path(cwd);
    }
    void start(const std::string& config = {}) {
        if (!config.empty()) writeWholeFile(RPP(applicationFolder()) + "config.vlr", config);
        f->load();
    }
    std::vector<std::string> boxes() const {
        std::vector<std::string> out;
        for (const auto& b : ui.dialogs.messageBoxes()) out.push_back(b.title + ": " + b.text);
        return out;
    }
};

}  // namespace

TEST(ConfigVlr, WrittenAsDelimitedRecords) {
    shell::ConfigVlr c;
    c.configMark = "OK";
    c.chosenInput = 2;
    EXPECT_EQ(shell::writeConfig(c), kDefaults);
    c.fontName = " ";
    c.normalizePercent = "95";
    c.meterEnabled = c.soundBankOn = true;
    c.colorSung = -1;
    c.meterDeviceId = 3;
    const std::string text = shell::writeConfig(c);
    EXPECT_EQ(text, "\"OK\",2,32896,-1,18,\" \",\"95\",#FALSE#,#TRUE#,#FALSE#,#TRUE#,3\r\n");
    shell::ConfigVlr back;
    EXPECT_EQ(shell::readConfig(text, back), 12);
    EXPECT_EQ(shell::writeConfig(back), text);
}

TEST(ConfigVlr, ADamagedFileStopsWhereItBreaks) {
    shell::ConfigVlr c;
    c.fontSize = 40;
    EXPECT_EQ(shell::readConfig("\"OK\",3,255,\"red\",9", c), 3);  // a text where a number belongs
    EXPECT_EQ(c.configMark, "OK");
    EXPECT_EQ(c.colorUnsung, 255);
    EXPECT_EQ(c.colorSung, 0xFF8080);  // kept
    EXPECT_EQ(c.fontSize, 40);
    EXPECT_EQ(shell::readConfig("", c), 0);
    EXPECT_EQ(shell::readConfig("\"OK\",1,2,3,999", c), 4);  // 999 is no byte
}

TEST_F(MainForm, StartsWithTheSavedConfiguration) {
    start("\"OK\",1,255,65280,24,\"Courier\",\"90\",#TRUE#,#FALSE#,#TRUE#,#TRUE#,2\r\n");
    EXPECT_FALSE(f->ended);
    EXPECT_EQ(f->colorUnsung, 255);
    EXPECT_EQ(f->colorSung, 65280);
    EXPECT_EQ(f->Picture3.font().name, "Courier");
    EXPECT_EQ(f->Picture3.font().size, 24);
    EXPECT_EQ(f->Check2.value(), 1);
    EXPECT_TRUE(boxes().empty());  // the Program Change notice keeps quiet at start
    EXPECT_TRUE(f->NormMnu.checked());
    EXPECT_TRUE(f->loadSbank.checked());
    EXPECT_EQ(f->soundBankPath, RPP(applicationFolder()) + "sound01.dls");
    EXPECT_EQ(f->chosenInput, 1);  // the file's value wins over the one found
    EXPECT_EQ(f->caption, "      VELARO DECK - Karaoke Recorder  MP3Karaoke Editor   V. 1.0    Velaro Multimedia");
    EXPECT_EQ(f->lstuse.listCount(), 1);
    EXPECT_TRUE(f->Mecompr.checked());
    EXPECT_FALSE(f->Meff.enabled());
    EXPECT_EQ(f->vslidertempo.value(), 64);
    EXPECT_EQ(f->sldInputLevel.value(), 80);
    EXPECT_EQ(f->cboRecSrcType.listCount(), 10);
    EXPECT_EQ(f->List3.listCount(), 128);
    EXPECT_EQ(f->Check3.value(), 1);
    EXPECT_FALSE(f->Check1(0).visible());
}

TEST_F(MainForm, AFileNotMarkedOkGivesTheDefaultColumn) {
    start("\"NO\",1,255,65280,24,\"Courier\",\"90\",#TRUE#,#TRUE#,#TRUE#,#TRUE#,2\r\n");
    EXPECT_EQ(f->colorUnsung, 0x8080);
    EXPECT_EQ(f->colorSung, 0xFF8080);
    EXPECT_EQ(f->Picture3.font().name, "tahoma");
    EXPECT_TRUE(f->Picture3.font().bold);
    EXPECT_EQ(f->Picture3.font().size, 18);
    EXPECT_FALSE(f->normalizeAfterSave);
    EXPECT_FALSE(f->loadSbank.checked());
    EXPECT_EQ(f->chosenInput, 0);  // as the start found it: the first input is on
    EXPECT_EQ(f->lblInfo(0).caption(), "0");
}

TEST_F(MainForm, NoFileOrABlankFontName) {
    start();
    EXPECT_EQ(f->fontName, "tahoma");
    EXPECT_FALSE(f->ended);

    auto g = std::make_unique<song::frmMain>(ui.rt, p);
    writeWholeFile(RPP(applicationFolder()) + "config.vlr",
                   "\"OK\",0,1,2,30,\" \",\"\",#FALSE#,#FALSE#,#FALSE#,#FALSE#,0\r\n");
    const std::string design = g->Picture3.font().name;
    g->load();
    EXPECT_EQ(g->Picture3.font().name, design);  // one blank: the design font stays
    EXPECT_EQ(g->Picture3.font().size, 30);
}

TEST_F(MainForm, WrongLibraryVersionEndsWithItsBox) {
    streams.version = (2u << 16) | 1u;
    int code = -1;
    f->endProgram = [&](int c) { code = c; };
    start();
    EXPECT_TRUE(f->ended);
    EXPECT_EQ(code, 1);
    EXPECT_EQ(boxes(), (std::vector<std::string>{"Incorrect BASS.DLL: BASS version 2.1 was not loaded"}));
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].style, ui::vbCritical);
}

TEST_F(MainForm, NoEnabledInputLeavesMinusOne) {
    streams.enabled = {false, false};
    start();
    EXPECT_EQ(f->chosenInput, -1);
    EXPECT_EQ(f->cmbInput.listCount(), 2);
}

TEST_F(MainForm, OnlyExitSavesTheConfiguration) {
    start();
    const std::string file = RPP(applicationFolder()) + "config.vlr";
    f->colorSung = 123;
    f->unload();  // the close box: no question, nothing saved
    EXPECT_FALSE(fileExists(file));
    EXPECT_TRUE(f->ended);

    auto g = std::make_unique<song::frmMain>(ui.rt, p);
    g->load();
    g->colorSung = 123;
    ui.dialogs.answerMsgBox(ui::vbNo);
    g->mnuExit.userClick();
    EXPECT_FALSE(g->ended);
    g->mnuExit.userClick();  // the default answer of the box is Yes
    EXPECT_TRUE(g->ended);
    EXPECT_EQ(readWholeFile(file), "\"\",0,32896,123,18,\"tahoma\",\"\",#FALSE#,#FALSE#,#FALSE#,#FALSE#,0\r\n");
    auto exitBox = ui.dialogs.messageBoxes().back();
    EXPECT_EQ(exitBox.text, "Exit ?");
    EXPECT_EQ(exitBox.title, "Velaro Deck");
    EXPECT_EQ(exitBox.style, ui::vbYesNo | ui::vbInformation);
}

TEST_F(MainForm, SaveConfigurationWritesAndSaysDone) {
    start();
    f->SaveC.userClick();
    EXPECT_TRUE(fileExists(RPP(applicationFolder()) + "config.vlr"));
    EXPECT_EQ(boxes().back(), "VELARO DECK: Done!");
}

TEST_F(MainForm, TogglesAndTheirOneWayDoors) {
    start();
    f->NormMnu.userClick();
    f->NormMnu.userClick();
    f->loadSbank.userClick();
    f->loadSbank.userClick();
    f->MnuMeter.userClick();
    f->MnuMeter.userClick();
    EXPECT_EQ(boxes(), (std::vector<std::string>{"Velaro Deck: Normalize Enabled", "Velaro Deck: Normalize Disabled",
                                                 "Velaro Deck: SoundBank Enabled", "Velaro Deck: SounBank Disabled",
                                                 "Velaro Deck: VUMeter Enabled", "Velaro Deck: VUMeter Disabled"}));
    EXPECT_TRUE(f->NormMnu.enabled());
    EXPECT_FALSE(f->loadSbank.enabled());
    EXPECT_FALSE(f->MnuMeter.enabled());
    f->loadSbank.userClick();  // a disabled menu does nothing
    EXPECT_EQ(boxes().size(), 6u);
}

TEST_F(MainForm, ModesAndMenus) {
    start();
    ui::Form other(ui.rt, "frmOther");
    other.show();
    ui.dialogs.answerFile("/music/backing.mp3");
    f->menuwave.userClick();
    EXPECT_TRUE(f->audioFileMode);
    EXPECT_FALSE(f->midiMode);
    EXPECT_FALSE(other.loaded());
    EXPECT_EQ(f->songPath(), "/music/backing.mp3");
    EXPECT_EQ(f->Frame8.caption(), "     Audio          Player     ");
    EXPECT_TRUE(f->Cmdplw.enabled());
    EXPECT_FALSE(f->MnuFile.enabled());  // dismenu
    EXPECT_EQ(ui.dialogs.shown().back().text, "MP3 Audio (*.mp3)|*.MP3|Wave Files (*.wav)|*.WAV");

    ui.dialogs.answerCancel();
    f->menuwave.userClick();
    EXPECT_FALSE(f->backing.Chkrem.visible());

    f->mnew.userClick();
    EXPECT_TRUE(f->noSongMode);
    EXPECT_TRUE(f->digitalRecorderMode);
    EXPECT_TRUE(f->songPath().empty());
    EXPECT_TRUE(f->cmdrec.enabled());
    EXPECT_EQ(f->Picture2.backColor(), 0x4040u);

    f->enamenu();
    EXPECT_TRUE(f->MnuFile.enabled());
    f->dmenu();
    EXPECT_FALSE(f->MnuOpenSong.enabled());
    EXPECT_FALSE(f->mnew.enabled());

    f->Error_("Can't play");
    EXPECT_EQ(ui.dialogs.messageBoxes().back().text, "Can't play\r\n\r\nBASS Error Code: 0\r\nBASS_FX Error Code: ");
    EXPECT_EQ(ui.dialogs.messageBoxes().back().title, "Error");
}

TEST_F(MainForm, TheRipperWindowWithoutATrack) {
    start();
    bool shown = false;
    f->showCdRipper = [&] { shown = true; };
    f->cdRipper.userClick();
    EXPECT_TRUE(shown);
    EXPECT_FALSE(f->usingRippedTrack);  // TRACK.WAV is empty
    writeWholeFile(RPP(applicationFolder()) + "TRACK.WAV", "RIFF");
    f->cdRipper.userClick();
    EXPECT_TRUE(f->usingRippedTrack);
}
