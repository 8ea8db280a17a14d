#include "frm_main.h"

#include "../base/paths.h"

namespace velaro::song {

frmMain::frmMain(ui::Runtime& rt, platform::Platform& p)
    : ui::Form(rt, "frmMain"),
      platform(p),
      soundBankPath(RPP(applicationFolder()) + "sound01.dls"),
      convertedPath(RPP(tempFolder()) + "converto.kar") {
    caption = "VELARO DECK";
    MnuOpenSong.setCaption("&Open Midi Song");
    pLmenu.setCaption("&Playlist");
    mnew.setCaption("&DigitalRecorder");
    dlsbank.setCaption("&Load Sound Bank");
    const std::pair<ui::Menu*, const char*> kMenus[] = {
        {&MnuFile, "&File"}, {&mnutil, "&Utility"}, {&cvmenu, "&Settings"}, {&Meff, "&Effects"},
        {&cdRipper, "&FromCdAudio"}, {&menuwave, "&Open Wave Mp3 File"}, {&SaveT, "&SaveText"},
        {&SaveSyncro, "&SaveSync"}, {&MnuMp3, "&Mp3 Audio Karaoke Editor"}, {&mnuExit, "E&xit"},
        {&inputRec, "&InputRecording"}, {&inputmenu, "RecDrive"}, {&MnuNorm, "&Normalize"},
        {&mnwave, "&Wave Setup"}, {&Mmp3, "&Mp3 Setup"}, {&wavp3, "Wav to Mp3"}, {&Mchor, "Chorus"},
        {&Mecho, "Echo"}, {&Mequal, "ParamEq"}, {&Mrev, "Reverb"}, {&Mnfla, "Flanger"},
        {&Mecompr, "Compressor"}, {&NormMnu, "Normalize (Y/N)"}, {&loadSbank, "LoadSoundBank(Y/N)"},
        {&MnuMeter, "Vumeter (Y/N)"}, {&SaveC, "Save Configuration"}, {&Mhelp, "Help"}, {&MnuAbout, "&About"}};
    for (const auto& [menu, text] : kMenus) menu->setCaption(text);
    Command4.setCaption("Font");
    Command5.setCaption("ForeColorText");
    Command6.setCaption("BackColorText");
    Cmd_Play.setCaption("Play");
    Cmd_Stop.setCaption("Stop");
    Check2.setCaption("Pc");
    Check3.setCaption("Rv");
    Frame8.setCaption("    Midi Player   ");

    // Design state: nothing to play yet.
    for (ui::Control* c : {static_cast<ui::Control*>(&Cmd_Play), static_cast<ui::Control*>(&Cmd_Stop),
                           static_cast<ui::Control*>(&CmdPause), static_cast<ui::Control*>(&SaveT),
                           static_cast<ui::Control*>(&SaveSyncro)})
        c->setEnabled(false);
    List3.setVisible(false);
    vslidertempo.setValue(64);
    Slider1.setValue(75);
    Picture4.setWidth(6000);
    Command9.setWidth(300);

    MnuOpenSong.Click = [this] { MnuOpenSong_Click(); };
    pLmenu.Click = [this] { pLmenu_Click(); };
    Cmd_Play.Click = [this] { Cmd_Play_Click(); };
    Cmd_Stop.Click = [this] { Cmd_Stop_Click(); };
    CmdPause.Click = [this] { CmdPause_Click(); };
    Timer.Tick = [this] { Timer_Timer(); };
    Timer1.Tick = [this] { Timer1_Tick(); };
    TimTps.Tick = [this] { TimTps_Timer(); };
    Command4.Click = [this] { Command4_Click(); };
    Command5.Click = [this] { Command5_Click(); };
    Command6.Click = [this] { Command6_Click(); };
    SaveT.Click = [this] { SaveT_Click(); };
    SaveSyncro.Click = [this] { SaveSyncro_Click(); };
    SaveC.Click = [this] { SaveC_Click(); };
    menuwave.Click = [this] { menuwave_Click(); };
    MnuMp3.Click = [this] { MnuMp3_Click(); };
    mnew.Click = [this] { mnew_Click(); };
    cdRipper.Click = [this] { cdRipper_Click(); };
    dlsbank.Click = [this] { dlsbank_Click(); };
    mnuExit.Click = [this] { mnuExit_Click(); };
    NormMnu.Click = [this] { NormMnu_Click(); };
    loadSbank.Click = [this] { loadSbank_Click(); };
    MnuMeter.Click = [this] { MnuMeter_Click(); };
    Mhelp.Click = [this] { call(showHelp); };
    MnuAbout.Click = [this] { call(showAbout); };
    vslidertempo.Change = [this] { vslidertempo_Change(); };
    vscroll1.Change = [this] { vscroll1_Change(); };
    Slider1.Change = [this] { Slider1_Change(); };
    Slider2.bind(&ui::Slider::Change, [this](int c) { Slider2_Change(c); });
    Check1.bind(&ui::CheckBox::Click, [this](int c) { Check1_Click(c); });
    Option1.bind(&ui::OptionButton::Click, [this](int c) { Option1_Click(c); });
    List3.Click = [this] { List3_Click(); };
    Check2.Click = [this] { Check2_Click(); };
    Command9.MouseDown = [this](int b, int s, double x, double y) { Command9_MouseDown(b, s, x, y); };
    Command9.MouseMove = [this](int b, int s, double x, double y) { Command9_MouseMove(b, s, x, y); };
    Command9.MouseUp = [this](int b, int s, double x, double y) { Command9_MouseUp(b, s, x, y); };
    Picture4.MouseMove = [this](int b, int s, double x, double y) { Picture4_MouseMove(b, s, x, y); };

}

frmMain::~frmMain() = default;

}  // namespace velaro::song
