#include "effect_panels.h"

#include "../base/vb_error.h"
#include "../base/vb_number.h"

namespace velaro::record {

using namespace platform;

EffectPanel::EffectPanel(ui::Runtime& rt, std::string name, EffectClass cls)
    : ui::Form(rt, std::move(name)), effectClass(cls) {
    caption = this->name();  // a form whose caption was never set shows its name
    cmdok.setCaption("OK");
    cmdok.Click = [this] {
        SaveAll();
        unload();
    };
}

void EffectPanel::SetBuffer(int index, SongEffects* buffer) {
    effectIndex = index;
    effectBuffer = buffer;
}

int EffectPanel::whole(double v) { return clng(v); }

void EffectPanel::slider(ui::Slider& s, int small, int large, int design, const char* text) {
    s.smallChange = small;
    s.largeChange = large;
    s.setValue(design);
    s.setCaption(text);
    // Moving and finished alike: the effect follows the thumb.
    s.Scroll = [this] { SaveAll(); };
    s.Change = [this] { SaveAll(); };
}

void EffectPanel::option(ui::OptionButton& o, const char* text) {
    o.setCaption(text);
    o.Click = [this] { SaveAll(); };
    o.MouseUp = [this](int, int, double, double) { SaveAll(); };
}

void EffectPanel::Form_Load() {
    fxObject = 0;
    if (effectBuffer)
        fxObject = effectBuffer->GetObjectInPath(classNameOf(effectClass), effectIndex, interfaceNameOf(effectClass));
    if (fxObject == 0) throw VbError(static_cast<VbErr>(E_FAIL), "Automation error");
    EffectRecord r;
    if (!effectBuffer->GetAllParameters(fxObject, r)) throw VbError(static_cast<VbErr>(E_FAIL), "Automation error");
    loadRecord(r);
}

void EffectPanel::SaveAll() {
    // Before the load has found its effect there is nothing to write to.
    if (!effectBuffer || fxObject == 0) return;
    effectBuffer->SetAllParameters(fxObject, readControls());
}

// ---- frmWaves ----

frmWaves::frmWaves(ui::Runtime& rt) : EffectPanel(rt, "frmWaves", EffectClass::WavesReverb) {
    caption = "                   Reverb modify";
    slider(sldInGain, 1, 10, 0, "Gain");
    slider(sldReverbMix, 2, 10, -12, "Reverb Mix");
    slider(sldReverbTime, 10, 100, 3000, "Reverb Time");
}

void frmWaves::loadRecord(const EffectRecord& r) {
    const auto& p = std::get<DSFXWavesReverb>(r);
    sldInGain.setValue(whole(p.fInGain));
    sldReverbMix.setValue(whole(p.fReverbMix));
    sldReverbTime.setValue(whole(p.fReverbTime));
}

EffectRecord frmWaves::readControls() const {
    DSFXWavesReverb p;
    p.fInGain = static_cast<float>(sldInGain.value());
    p.fReverbMix = static_cast<float>(sldReverbMix.value());
    p.fReverbTime = static_cast<float>(sldReverbTime.value());
    p.fHighFreqRTRatio = 0.001f;
    return p;
}

// ---- frmFlanger, frmChorus ----

ModulationPanel::ModulationPanel(ui::Runtime& rt, std::string name, EffectClass cls, int delayMax, int delayLarge)
    : EffectPanel(rt, std::move(name), cls) {
    slider(sldWetDry, 5, 10, 1, " Mix Effects");
    slider(sldDepth, 1, 5, 0, " Depth");
    slider(sldFeedback, 1, 10, 1, " Feedback");
    slider(sldFreq, 1, 5, 0, " Frequency");
    option(optSin, "Sine");
    option(optTriangle, "Triangle");
    sldDelay.setRange(0, delayMax);
    slider(sldDelay, 1, delayLarge, 0, " Delay");
    slider(sldPhase, 1, 2, 0, "  Phase");
}

template <class R>
static void loadModulation(ModulationPanel& f, const R& p, int (*whole)(double)) {
    f.sldWetDry.setValue(whole(p.fWetDryMix));
    f.sldDepth.setValue(whole(p.fDepth));
    f.sldFeedback.setValue(whole(p.fFeedback));
    f.sldFreq.setValue(whole(p.fFrequency));
    // Only a sine is shown; otherwise the options stay as they are.
    if (p.lWaveform == 1) f.optSin.setValue(true);
    f.sldDelay.setValue(whole(p.fDelay));
    f.sldPhase.setValue(p.lPhase);
}

template <class R>
static R readModulation(const ModulationPanel& f) {
    R p;
    p.fWetDryMix = static_cast<float>(f.sldWetDry.value());
    p.fDepth = static_cast<float>(f.sldDepth.value());
    p.fFeedback = static_cast<float>(f.sldFeedback.value());
    p.fFrequency = static_cast<float>(f.sldFreq.value());
    p.lWaveform = f.optSin.value() ? 1 : 0;
    p.fDelay = static_cast<float>(f.sldDelay.value());
    p.lPhase = f.sldPhase.value();
    return p;
}

void ModulationPanel::loadRecord(const EffectRecord& r) {
    if (const auto* fl = std::get_if<DSFXFlanger>(&r)) loadModulation(*this, *fl, &whole);
    else if (const auto* ch = std::get_if<DSFXChorus>(&r)) loadModulation(*this, *ch, &whole);
}

EffectRecord ModulationPanel::readControls() const {
    if (effectClass == EffectClass::Chorus) return readModulation<DSFXChorus>(*this);
    return readModulation<DSFXFlanger>(*this);
}

frmFlanger::frmFlanger(ui::Runtime& rt) : ModulationPanel(rt, "frmFlanger", EffectClass::Flanger, 4, 2) {
    caption = "               Flanger Effects";
}

frmChorus::frmChorus(ui::Runtime& rt) : ModulationPanel(rt, "frmChorus", EffectClass::Chorus, 20, 5) {}

// ---- frmEcho ----

frmEcho::frmEcho(ui::Runtime& rt) : EffectPanel(rt, "frmEcho", EffectClass::Echo) {
    caption = "                   Echo Effects ";
    slider(sldWetDry, 5, 10, 1, " Mix effects");
    slider(sldFeedback, 1, 10, 1, " Feedback");
    slider(sldLeft, 10, 100, 1, " Left Delay");
    slider(sldRight, 10, 100, 1, " Right Delay");
    chkPan.setCaption("Pan Delay Max");
    chkPan.Click = [this] { SaveAll(); };
    chkPan.MouseUp = [this](int, int, double, double) { SaveAll(); };
}

void frmEcho::loadRecord(const EffectRecord& r) {
    const auto& p = std::get<DSFXEcho>(r);
    sldWetDry.setValue(whole(p.fWetDryMix));
    sldFeedback.setValue(whole(p.fFeedback));
    sldLeft.setValue(whole(p.fLeftDelay));
    sldRight.setValue(whole(p.fRightDelay));
    // Checked whatever the effect holds: the first save writes 1.
    chkPan.setValue(1);
}

EffectRecord frmEcho::readControls() const {
    DSFXEcho p;
    p.fWetDryMix = static_cast<float>(sldWetDry.value());
    p.fFeedback = static_cast<float>(sldFeedback.value());
    p.fLeftDelay = static_cast<float>(sldLeft.value());
    p.fRightDelay = static_cast<float>(sldRight.value());
    p.lPanDelay = chkPan.value();
    return p;
}

// ---- frmDistortion ----

frmDistortion::frmDistortion(ui::Runtime& rt) : EffectPanel(rt, "frmDistortion", EffectClass::Distortion) {
    caption = "Distortion Effects Update";
    slider(sldGain, 1, 10, 0, "Gain");
    slider(sldEdge, 1, 10, 0, "Edge");
    slider(sldPostEQCenter, 100, 500, 100, "Post EQ Center Frequency");
    slider(sldPostEQBand, 100, 500, 100, "Post EQ Bandwith");
    slider(sldPreLow, 100, 500, 100, "Prelow Pass Cutoff");
}

void frmDistortion::loadRecord(const EffectRecord& r) {
    const auto& p = std::get<DSFXDistortion>(r);
    sldGain.setValue(whole(p.fGain));
    sldEdge.setValue(whole(p.fEdge));
    sldPostEQCenter.setValue(whole(p.fPostEQCenterFrequency));
    sldPostEQBand.setValue(whole(p.fPostEQBandwidth));
    sldPreLow.setValue(whole(p.fPreLowpassCutoff));
}

EffectRecord frmDistortion::readControls() const {
    DSFXDistortion p;
    p.fGain = static_cast<float>(sldGain.value());
    p.fEdge = static_cast<float>(sldEdge.value());
    p.fPostEQCenterFrequency = static_cast<float>(sldPostEQCenter.value());
    p.fPostEQBandwidth = static_cast<float>(sldPostEQBand.value());
    p.fPreLowpassCutoff = static_cast<float>(sldPreLow.value());
    return p;
}

// ---- frmCompressor ----

frmCompressor::frmCompressor(ui::Runtime& rt) : EffectPanel(rt, "frmCompressor", EffectClass::Compressor) {
    caption = "Gain";
    slider(sldOutputGain, 10, 10, -6, "Level");
    slider(sldAttack, 5, 10, 1, "");
    slider(sldRelease, 5, 10, 50, "");
    slider(sldThreshold, 1, 10, 0, "Threshold");
    slider(sldRatio, 1, 10, 1, "Ratio");
    slider(sldDelay, 1, 1, 0, "Pre-Delay");
}

void frmCompressor::loadRecord(const EffectRecord& r) {
    const auto& p = std::get<DSFXCompressor>(r);
    // The level shows the attack, not the gain in force, until it is moved.
    sldOutputGain.setValue(whole(p.fAttack));
    sldAttack.setValue(whole(p.fAttack));
    sldRelease.setValue(whole(p.fRelease));
    sldThreshold.setValue(whole(p.fThreshold));
    sldRatio.setValue(whole(p.fRatio));
    sldDelay.setValue(whole(p.fPredelay));
}

EffectRecord frmCompressor::readControls() const {
    DSFXCompressor p;
    // Up is less: the level slider's value negated, by way of a 16-bit integer.
    const int16_t up = checked16(30 - sldOutputGain.value());
    p.fGain = static_cast<float>(up - 30);
    p.fAttack = static_cast<float>(sldAttack.value());
    p.fRelease = static_cast<float>(sldRelease.value());
    p.fThreshold = static_cast<float>(sldThreshold.value());
    p.fRatio = static_cast<float>(sldRatio.value());
    p.fPredelay = static_cast<float>(sldDelay.value());
    return p;
}

// ---- frmGargle ----

frmGargle::frmGargle(ui::Runtime& rt) : EffectPanel(rt, "frmGargle", EffectClass::Gargle) {
    slider(sldRate, 10, 100, 1, "");
    option(optTriangle, "Triangle");
    option(optSquare, "Square");
}

void frmGargle::loadRecord(const EffectRecord& r) {
    const auto& p = std::get<DSFXGargle>(r);
    sldRate.setValue(p.lRateHz);
    if (p.lWaveShape == 1) optSquare.setValue(true);
    else if (p.lWaveShape == 0) optTriangle.setValue(true);
}

EffectRecord frmGargle::readControls() const {
    DSFXGargle p;
    p.lRateHz = sldRate.value();
    p.lWaveShape = optSquare.value() ? 1 : 0;
    return p;
}

// ---- frmParamEQ ----

frmParamEQ::frmParamEQ(ui::Runtime& rt) : EffectPanel(rt, "frmParamEQ", EffectClass::ParamEq) {
    caption = "       Parametric Equalizer";
    slider(sldCenter, 100, 500, 80, " Frequency");
    slider(sldBand, 1, 4, 1, "Bandwith");
    slider(sldGain, 1, 5, 0, "Gain");
    slider(Slider1, 100, 500, 80, "");
    slider(Slider2, 1, 4, 36, "");
    slider(Slider3, 1, 5, 15, "");
}

void frmParamEQ::loadRecord(const EffectRecord& r) {
    const auto& p = std::get<DSFXParamEq>(r);
    sldBand.setValue(whole(p.fBandwidth));
    sldCenter.setValue(whole(p.fCenter));
    // Crossed over against their ranges, and clamped by them.
    Slider1.setValue(whole(p.fBandwidth));
    Slider2.setValue(whole(p.fCenter));
    sldGain.setValue(whole(p.fGain));
}

EffectRecord frmParamEQ::readControls() const {
    DSFXParamEq p;
    p.fCenter = static_cast<float>(sldCenter.value());
    p.fBandwidth = static_cast<float>(sldBand.value());
    p.fGain = static_cast<float>(sldGain.value());
    return p;
}

}  // namespace velaro::record
