#pragma once
// The main form's effects part: the Effects menu, the chain list `lstuse`,
// the effect buttons, the chain put on the song's buffer (`cmdApply`) and
// the eight panels that change its effects while the song plays.

#include "../platform/song_effects.h"
#include "../ui/control.h"
#include "effect_panels.h"

namespace velaro::song {
class frmMain;
}

namespace velaro::record {

struct MainEffects {
    explicit MainEffects(song::frmMain& form);

    song::frmMain& f;
    ui::ListBox lstavail;
    ui::CommandButton CmdCompr, cmdecho, CmdEQ, cmdFl, cmdrev, Cmdrus;
    bool effectsDirty = false;
    platform::SongEffects* effectBuffer = nullptr;
    int effectIndex = 0;  // handed to the panels and never assigned: the first of a class

    frmWaves Waves;
    frmFlanger Flanger;
    frmEcho Echo;
    frmDistortion Distortion;
    frmCompressor Compressor;
    frmChorus Chorus;
    frmGargle Gargle;
    frmParamEQ ParamEQ;

    void CONTREFF();
    void cmdApply();
    void removeff();
    void fetchEffectBuffer();
    void lstuse_Click();
    // At the start of a take: the effect buttons but the compressor's go grey.
    void vareff();
    // Play and Rec: the chain goes on, and the compressor panel comes up
    // without waiting.
    void applyAndOpenCompressor();
    void unloadPanels();

private:
    struct Choice {
        ui::Menu& menu;
        ui::CommandButton& button;
        const char* entry;
    };
    void menuClick(const Choice& c);
    void buttonClick(EffectPanel& panel, const char* refusal);
    void openPanel(EffectPanel& panel);
    Choice choices_[6];
};

}  // namespace velaro::record
