#pragma once
// The eight effect panels: each shows one effect of the song's chain, read
// from its record when it loads, and writes every slider's value into the
// record at once (no scaling), so the running sound changes as it moves.

#include <string>

#include "../platform/song_effects.h"
#include "../ui/form.h"

namespace velaro::record {

class EffectPanel : public ui::Form {
public:
    EffectPanel(ui::Runtime& rt, std::string name, platform::EffectClass cls);

    // Keeps the buffer and the index; called before the panel is shown.
    void SetBuffer(int index, platform::SongEffects* buffer);
    // Reads the controls into a fresh record and hands it to the effect.
    void SaveAll();

    ui::CommandButton cmdok{this, "cmdOK"};
    platform::SongEffects* effectBuffer = nullptr;
    int effectIndex = 0;
    platform::EffectObject fxObject = 0;
    const platform::EffectClass effectClass;

protected:
    // Finds the effect and shows its record; an effect that is not in the
    // chain stops the load with the runtime's error.
    void Form_Load() override;
    virtual void loadRecord(const platform::EffectRecord& r) = 0;
    virtual platform::EffectRecord readControls() const = 0;
    // A slider with its range, steps, design value and caption; both its
    // events run the save.
    void slider(ui::Slider& s, int small, int large, int design, const char* text);
    void option(ui::OptionButton& o, const char* text);
    static int whole(double v);
};

class frmWaves : public EffectPanel {
public:
    explicit frmWaves(ui::Runtime& rt);
    ui::Slider sldInGain{this, "sldInGain", -1, -96, 0};
    ui::Slider sldReverbMix{this, "sldReverbMix", -1, -96, 0};
    ui::Slider sldReverbTime{this, "sldReverbTime", -1, 1, 3000};

protected:
    void loadRecord(const platform::EffectRecord& r) override;
    platform::EffectRecord readControls() const override;
};

// Flanger and chorus: the same seven fields; the chorus's delay reaches 20.
class ModulationPanel : public EffectPanel {
public:
    ModulationPanel(ui::Runtime& rt, std::string name, platform::EffectClass cls, int delayMax, int delayLarge);
    ui::Slider sldWetDry{this, "sldWetDry", -1, 0, 100};
    ui::Slider sldDepth{this, "sldDepth", -1, 0, 100};
    ui::Slider sldFeedback{this, "sldFeedback", -1, -99, 99};
    ui::Slider sldFreq{this, "sldFreq", -1, 0, 10};
    ui::OptionButton optSin{this, "optSin"};
    ui::OptionButton optTriangle{this, "optTriangle"};
    ui::Slider sldDelay{this, "sldDelay", -1, 0, 4};
    ui::Slider sldPhase{this, "sldPhase", -1, 0, 4};

protected:
    void loadRecord(const platform::EffectRecord& r) override;
    platform::EffectRecord readControls() const override;
};

class frmFlanger : public ModulationPanel {
public:
    explicit frmFlanger(ui::Runtime& rt);
};

class frmChorus : public ModulationPanel {
public:
    explicit frmChorus(ui::Runtime& rt);
};

class frmEcho : public EffectPanel {
public:
    explicit frmEcho(ui::Runtime& rt);
    ui::Slider sldWetDry{this, "sldWetDry", -1, 0, 100};
    ui::Slider sldFeedback{this, "sldFeedback", -1, 0, 100};
    ui::Slider sldLeft{this, "sldLeft", -1, 1, 2000};
    ui::Slider sldRight{this, "sldRight", -1, 1, 2000};
    ui::CheckBox chkPan{this, "chkPan"};

protected:
    void loadRecord(const platform::EffectRecord& r) override;
    platform::EffectRecord readControls() const override;
};

class frmDistortion : public EffectPanel {
public:
    explicit frmDistortion(ui::Runtime& rt);
    ui::Slider sldGain{this, "sldGain", -1, -60, 0};
    ui::Slider sldEdge{this, "sldEdge", -1, 0, 100};
    ui::Slider sldPostEQCenter{this, "sldPostEQCenter", -1, 100, 8000};
    ui::Slider sldPostEQBand{this, "sldPostEQBand", -1, 100, 8000};
    ui::Slider sldPreLow{this, "sldPreLow", -1, 100, 8000};

protected:
    void loadRecord(const platform::EffectRecord& r) override;
    platform::EffectRecord readControls() const override;
};

class frmCompressor : public EffectPanel {
public:
    explicit frmCompressor(ui::Runtime& rt);
    ui::Slider sldOutputGain{this, "sldOutputGain", -1, -30, 30};
    ui::Slider sldAttack{this, "sldAttack", -1, 1, 500};
    ui::Slider sldRelease{this, "sldRelease", -1, 50, 3000};
    ui::Slider sldThreshold{this, "sldThreshold", -1, -60, 0};
    ui::Slider sldRatio{this, "sldRatio", -1, 1, 100};
    ui::Slider sldDelay{this, "sldDelay", -1, 0, 4};

protected:
    void loadRecord(const platform::EffectRecord& r) override;
    platform::EffectRecord readControls() const override;
};

class frmGargle : public EffectPanel {
public:
    explicit frmGargle(ui::Runtime& rt);
    ui::Slider sldRate{this, "sldRate", -1, 1, 1000};
    ui::OptionButton optTriangle{this, "optTriangle"};
    ui::OptionButton optSquare{this, "optSquare"};

protected:
    void loadRecord(const platform::EffectRecord& r) override;
    platform::EffectRecord readControls() const override;
};

class frmParamEQ : public EffectPanel {
public:
    explicit frmParamEQ(ui::Runtime& rt);
    ui::Slider sldCenter{this, "sldCenter", -1, 80, 16000};
    ui::Slider sldBand{this, "sldBand", -1, 1, 36};
    ui::Slider sldGain{this, "sldGain", -1, -15, 15};
    // Not read by the save; moving them only runs it.
    ui::Slider Slider1{this, "Slider1", -1, 80, 16000};
    ui::Slider Slider2{this, "Slider2", -1, 1, 36};
    ui::Slider Slider3{this, "Slider3", -1, -15, 15};

protected:
    void loadRecord(const platform::EffectRecord& r) override;
    platform::EffectRecord readControls() const override;
};

}  // namespace velaro::record
