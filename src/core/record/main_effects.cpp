#include "main_effects.h"

#include <cctype>

#include "../base/vb_error.h"
#include "../shell/frm_main.h"

namespace velaro::record {

using platform::DSEFFECTDESC;

namespace {

std::string lower(std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// An entry's text in lower case decides its class; an unknown one has none.
std::string classOfEntry(const std::string& entry) {
    using platform::EffectClass;
    const std::string e = lower(entry);
    EffectClass c;
    if (e == "chorus") c = EffectClass::Chorus;
    else if (e == "echo") c = EffectClass::Echo;
    else if (e == "parameq") c = EffectClass::ParamEq;
    else if (e == "reverb") c = EffectClass::WavesReverb;
    else if (e == "flanger") c = EffectClass::Flanger;
    else if (e == " ") c = EffectClass::Compressor;
    else if (e == "distortion") c = EffectClass::Distortion;
    else if (e == "gargle") c = EffectClass::Gargle;
    else return {};
    return platform::classNameOf(c);
}

}  // namespace

MainEffects::MainEffects(song::frmMain& form)
    : f(form),
      lstavail(&form, "lstavail"),
      CmdCompr(&form, "CmdCompr"),
      cmdecho(&form, "cmdecho"),
      CmdEQ(&form, "CmdEQ"),
      cmdFl(&form, "cmdFl"),
      cmdrev(&form, "cmdrev"),
      Cmdrus(&form, "Cmdrus"),
      Waves(form.rt),
      Flanger(form.rt),
      Echo(form.rt),
      Distortion(form.rt),
      Compressor(form.rt),
      Chorus(form.rt),
      Gargle(form.rt),
      ParamEQ(form.rt),
      choices_{{form.Mchor, Cmdrus, "Chorus"}, {form.Mecho, cmdecho, "Echo"},   {form.Mequal, CmdEQ, "Parameq"},
               {form.Mrev, cmdrev, "Reverb"},  {form.Mnfla, cmdFl, "Flanger"}, {form.Mecompr, CmdCompr, " "}} {
    for (const char* name : {"Gargle", "Chorus", "Flanger", "Echo", "Distortion", "Compressor", "ParamEQ", "WavesReverb"})
        lstavail.addItem(name);
    CmdCompr.setCaption("Compressor");
    cmdecho.setCaption("Echo");
    CmdEQ.setCaption("ParamEq");
    cmdFl.setCaption("Flanger");
    cmdrev.setCaption("Reverb");
    Cmdrus.setCaption("Chorus");
    // Only the compressor is in the chain at first: the other buttons wait for their menus.
    for (ui::CommandButton* b : {&cmdecho, &CmdEQ, &cmdFl, &cmdrev, &Cmdrus}) b->setEnabled(false);

    for (Choice& c : choices_) c.menu.Click = [this, &c] { menuClick(c); };
    f.lstuse.Click = [this] { lstuse_Click(); };
    f.cmdApply.setCaption("Apply");
    f.cmdApply.Click = [this] { cmdApply(); };
    CmdCompr.Click = [this] { buttonClick(Compressor, "Press Play or Rec"); };
    cmdecho.Click = [this] { buttonClick(Echo, "Press MidiPlay or MidiRec"); };
    CmdEQ.Click = [this] { buttonClick(ParamEQ, "Press MidiPlay or MidiRec"); };
    cmdFl.Click = [this] { buttonClick(Flanger, "Press MidiPlay or MidiRec"); };
    cmdrev.Click = [this] { buttonClick(Waves, "Press MidiPlay or MidiRec"); };
    Cmdrus.Click = [this] { buttonClick(Chorus, "Press MidiPlay or MidiRec"); };
    f.openEffectPanels = [this] { applyAndOpenCompressor(); };
    f.unloadEffectPanels = [this] { unloadPanels(); };
}

void MainEffects::menuClick(const Choice& c) {
    // A checked menu does nothing: one entry per class.
    if (c.menu.checked()) return;
    c.menu.setChecked(true);
    ++f.effectCount;
    effectsDirty = true;
    c.button.setEnabled(true);
    f.lstuse.addItem(c.entry);
}

void MainEffects::CONTREFF() {
    // Each menu in turn sets the flag, so the last one, the compressor's, decides.
    for (const Choice& c : choices_) effectsDirty = c.menu.checked();
}

void MainEffects::fetchEffectBuffer() { effectBuffer = f.platform.songEffects; }

void MainEffects::cmdApply() {
    CONTREFF();
    if (!effectsDirty) return;
    auto& dialogs = f.rt.dialogs;
    if (f.dmSegment == 0)
        dialogs.msgBox("You must first load an audio file before you can apply effects to it.", ui::vbInformation,
                       "No buffer");
    if (f.songRunning)
        dialogs.msgBox("Stop the currently playing sound before adding effects.", ui::vbInformation,
                       "Sound is playing");
    if (f.lstuse.listCount() == 0) {
        if (dialogs.msgBox("Do you want to turn off effects for this buffer?", ui::vbYesNo, "No effects") == ui::vbYes) {
            removeff();
        } else {
            dialogs.msgBox("You must first select some effects to use.", ui::vbOKOnly, "No effects");
        }
        return;
    }
    const int count = f.effectCount > 0 ? f.effectCount : 0;
    std::vector<DSEFFECTDESC> desc(count);
    std::vector<int32_t> results(count);
    for (int i = 0; i < count; ++i) desc[i].guidDSFXClass = classOfEntry(f.lstuse.list(i));
    fetchEffectBuffer();
    int32_t hr = platform::E_FAIL;
    if (effectBuffer) {
        effectBuffer->Activate(false);
        hr = effectBuffer->SetFX(count, desc, results);
        effectBuffer->Activate(true);
    }
    if (hr != platform::DS_OK) dialogs.msgBox("This set of effects could not be set on thi", ui::vbOKOnly, "");
}

void MainEffects::removeff() {
    fetchEffectBuffer();
    if (!effectBuffer) return;
    std::vector<int32_t> results;
    effectBuffer->Activate(false);
    effectBuffer->SetFX(0, {}, results);
    effectBuffer->Activate(true);
}

void MainEffects::lstuse_Click() {
    // The last entry stays.
    if (f.effectCount == 1) return;
    f.unloadOthers();
    if (f.songRunning)
        f.rt.dialogs.msgBox("Stop the currently playing sound before adding o remove effects.", ui::vbOKOnly,
                            "Sound is playing");
    const std::string entry = f.lstuse.text();
    for (const char* name : {"Parameq", "Reverb", "Chorus", "Echo", "Flanger", " "}) {
        if (entry != name) continue;
        for (Choice& c : choices_)
            if (std::string(c.entry) == name) {
                c.button.setEnabled(false);
                c.menu.setChecked(false);
            }
        // Removing one effect takes the whole chain off until the next apply.
        removeff();
        break;
    }
    const int at = f.lstuse.listIndex();
    if (at >= 0) f.lstuse.removeItem(at);
    --f.effectCount;
}

void MainEffects::vareff() {
    for (ui::CommandButton* b : {&cmdFl, &cmdrev, &cmdecho, &Cmdrus, &CmdEQ}) b->setEnabled(false);
}

void MainEffects::openPanel(EffectPanel& panel) {
    panel.SetBuffer(effectIndex, effectBuffer);
    try {
        panel.show();
    } catch (const VbError& e) {
        // Nothing catches it in the panel: the runtime shows its error.
        panel.unload();
        f.rt.dialogs.msgBox("Run-time error '" + std::to_string(static_cast<int>(e.code())) + "':\n\n" + e.what(),
                            ui::vbCritical, "VELARO DECK");
    }
}

void MainEffects::buttonClick(EffectPanel& panel, const char* refusal) {
    if (!f.songRunning && !f.recordingActive) {
        f.rt.dialogs.msgBox(refusal, ui::vbOKOnly, "VELARO DECK");
        return;
    }
    fetchEffectBuffer();
    openPanel(panel);
}

void MainEffects::applyAndOpenCompressor() {
    resumeNext([&] { cmdApply(); });
    fetchEffectBuffer();
    openPanel(Compressor);
}

void MainEffects::unloadPanels() {
    for (EffectPanel* p : std::initializer_list<EffectPanel*>{&Waves, &Flanger, &Echo, &Distortion, &Compressor,
                                                               &Chorus, &Gargle, &ParamEQ})
        p->unload();
}

}  // namespace velaro::record
