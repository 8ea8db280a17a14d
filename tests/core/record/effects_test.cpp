// The effect chain on the main form and the eight panels, on the virtual
// clock with scripted dialogs and a song buffer that keeps the records.

#include <gtest/gtest.h>

#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "support/song_bytes.h"

using namespace velaro;
using namespace velaro::testing;
using platform::EffectClass;

namespace {

std::string shortSong() {
    std::string s = smfHeader(0, 1, 96);
    s += smfTrack(bytes({0x00, 0x90, 0x3C, 0x40, 0x60, 0x80, 0x3C, 0x40, 0x00, 0xFF, 0x2F, 0x00}));
    return s;
}

struct Effects : ::testing::Test {
    ui::Headless ui;
    platform::InertPlatform inert;
    platform::EffectBook& book = static_cast<platform::EffectBook&>(*inert.get().songEffects);
    song::frmMain f{ui.rt, inert.get()};
    record::MainEffects& fx = f.effects;

    void SetUp() override { f.load(); }
    void open() {
        ui.dialogs.answerFile(writeTemp("effects.mid", shortSong()));
        f.MnuOpenSong.userClick();
    }
    void play() {
        f.Cmd_Play.userClick();
        ASSERT_TRUE(f.songRunning);
    }
    void stop() { f.Cmd_Stop.userClick(); }
    std::vector<std::string> boxes() const {
        std::vector<std::string> out;
        for (const auto& b : ui.dialogs.messageBoxes()) out.push_back(b.title + ": " + b.text);
        return out;
    }
    void clickEntry(const std::string& text) {
        for (int i = 0; i < f.lstuse.listCount(); ++i)
            if (f.lstuse.list(i) == text) {
                // Choosing a row clicks; the chosen row is clicked again by hand.
                if (f.lstuse.listIndex() == i) f.lstuse.Click();
                else f.lstuse.setListIndex(i);
                return;
            }
        FAIL() << "no entry " << text;
    }
    template <class R>
    R recordOf(EffectClass c, int index = 0) {
        platform::EffectRecord r;
        const auto obj = book.GetObjectInPath(platform::classNameOf(c), index, platform::interfaceNameOf(c));
        EXPECT_TRUE(book.GetAllParameters(obj, r));
        return std::get<R>(r);
    }
    // A chain set straight on the buffer, for the classes no menu offers.
    void chainOf(std::vector<EffectClass> classes) {
        std::vector<platform::DSEFFECTDESC> d;
        for (EffectClass c : classes) d.push_back({platform::classNameOf(c), 0});
        std::vector<int32_t> results;
        ASSERT_EQ(book.SetFX(static_cast<int>(d.size()), d, results), platform::DS_OK);
    }
};

}  // namespace

TEST_F(Effects, TheCompressorIsThereFromTheStartAndCannotBeClickedAway) {
    ASSERT_EQ(f.lstuse.listCount(), 1);
    EXPECT_EQ(f.lstuse.list(0), " ");
    EXPECT_EQ(f.effectCount, 1);
    EXPECT_TRUE(f.Mecompr.checked());
    clickEntry(" ");
    EXPECT_EQ(f.lstuse.listCount(), 1);
    EXPECT_EQ(f.effectCount, 1);
    EXPECT_TRUE(boxes().empty());
    EXPECT_EQ(fx.lstavail.listCount(), 8);
}

TEST_F(Effects, MenusAddOneEntryEachAndPlayPutsTheChainOnInListOrder) {
    open();
    f.Mecho.Click();
    f.Mecho.Click();  // checked already: nothing
    f.Mrev.Click();
    f.Mchor.Click();
    EXPECT_EQ(f.effectCount, 4);
    ASSERT_EQ(f.lstuse.listCount(), 4);
    EXPECT_EQ(f.lstuse.list(1), "Echo");
    EXPECT_TRUE(fx.cmdecho.enabled() && fx.cmdrev.enabled() && fx.Cmdrus.enabled());
    EXPECT_FALSE(fx.cmdFl.enabled());
    play();
    EXPECT_EQ(book.chain(), (std::vector<EffectClass>{EffectClass::Compressor, EffectClass::Echo,
                                                      EffectClass::WavesReverb, EffectClass::Chorus}));
    // The compressor panel comes up with every start.
    EXPECT_TRUE(fx.Compressor.visible());
    EXPECT_TRUE(boxes().empty()) << boxes().front();
}

TEST_F(Effects, RemovingAnEntryDropsTheWholeChainUntilTheNextPlay) {
    open();
    f.Mecho.Click();
    f.Mrev.Click();
    play();
    stop();
    clickEntry("Echo");
    EXPECT_FALSE(f.Mecho.checked());
    EXPECT_FALSE(fx.cmdecho.enabled());
    EXPECT_EQ(f.effectCount, 2);
    EXPECT_EQ(book.size(), 0);
    play();
    EXPECT_EQ(book.chain(), (std::vector<EffectClass>{EffectClass::Compressor, EffectClass::WavesReverb}));
    // Removing while the song plays says so and goes on.
    clickEntry("Reverb");
    EXPECT_EQ(boxes().back(), "Sound is playing: Stop the currently playing sound before adding o remove effects.");
    EXPECT_EQ(f.lstuse.listCount(), 1);
}

TEST_F(Effects, WithoutTheCompressorMenuTheFlagStaysDownAndNothingIsApplied) {
    open();
    f.Mecho.Click();
    clickEntry(" ");
    EXPECT_FALSE(f.Mecompr.checked());
    EXPECT_FALSE(fx.CmdCompr.enabled());
    play();
    // The echo is in the list but the last menu tested is the compressor's.
    EXPECT_FALSE(fx.effectsDirty);
    EXPECT_EQ(book.size(), 0);
    // The compressor panel finds no compressor: the runtime's error box.
    ASSERT_FALSE(boxes().empty());
    EXPECT_EQ(ui.dialogs.messageBoxes().back().title, "VELARO DECK");
    EXPECT_NE(boxes().back().find("Automation error"), std::string::npos);
    EXPECT_FALSE(fx.Compressor.loaded());
}

TEST_F(Effects, ApplyTellsWhatIsWrongAndGoesOn) {
    fx.cmdApply();
    EXPECT_EQ(boxes().at(0),
              "No buffer: You must first load an audio file before you can apply effects to it.");
    open();
    play();
    ui.dialogs.clearLog();
    fx.cmdApply();
    EXPECT_EQ(boxes().at(0), "Sound is playing: Stop the currently playing sound before adding effects.");
    EXPECT_EQ(book.size(), 1);  // applied all the same
    stop();

    // An entry of no known class: the whole set fails and the buffer is bare.
    ui.dialogs.clearLog();
    f.lstuse.addItem("Wahwah");
    ++f.effectCount;
    fx.cmdApply();
    EXPECT_EQ(boxes().at(0), ": This set of effects could not be set on thi");
    EXPECT_EQ(book.size(), 0);

    // An empty list asks; No explains, Yes takes the effects off.
    f.lstuse.clear();
    fx.cmdApply();
    ui.dialogs.clearLog();
    chainOf({EffectClass::Echo});
    ui.dialogs.answerMsgBox(ui::vbNo);
    fx.cmdApply();
    EXPECT_EQ(boxes(), (std::vector<std::string>{"No effects: Do you want to turn off effects for this buffer?",
                                                 "No effects: You must first select some effects to use."}));
    EXPECT_EQ(book.size(), 1);
    ui.dialogs.answerMsgBox(ui::vbYes);
    fx.cmdApply();
    EXPECT_EQ(book.size(), 0);
}

TEST_F(Effects, PanelButtonsWantTheSongRunning) {
    open();
    f.Mecho.Click();
    fx.cmdecho.userClick();
    fx.CmdCompr.userClick();
    EXPECT_EQ(boxes(), (std::vector<std::string>{"VELARO DECK: Press MidiPlay or MidiRec", "VELARO DECK: Press Play or Rec"}));
    EXPECT_FALSE(fx.Echo.loaded());
    play();
    fx.cmdecho.userClick();
    EXPECT_TRUE(fx.Echo.visible());
    // A take greys the buttons but the compressor's.
    fx.vareff();
    EXPECT_FALSE(fx.cmdecho.enabled());
    EXPECT_TRUE(fx.CmdCompr.enabled());
}

TEST_F(Effects, CompressorPanelWritesTheNegatedLevelAndShowsTheAttack) {
    open();
    play();
    // Loaded from the defaults: the level slider shows the attack (10), so the
    // gain written without a touch is -10.
    EXPECT_EQ(fx.Compressor.sldOutputGain.value(), 10);
    auto c = recordOf<platform::DSFXCompressor>(EffectClass::Compressor);
    EXPECT_EQ(c.fGain, -10);
    EXPECT_EQ(c.fAttack, 10);
    EXPECT_EQ(c.fThreshold, -20);
    EXPECT_EQ(c.fRatio, 3);
    EXPECT_EQ(c.fPredelay, 4);
    fx.Compressor.sldOutputGain.setValue(30);
    EXPECT_EQ(recordOf<platform::DSFXCompressor>(EffectClass::Compressor).fGain, -30);
    fx.Compressor.sldOutputGain.setValue(-30);
    EXPECT_EQ(recordOf<platform::DSFXCompressor>(EffectClass::Compressor).fGain, 30);
    fx.Compressor.cmdok.userClick();
    EXPECT_FALSE(fx.Compressor.loaded());
}

TEST_F(Effects, EchoPanelChecksPanAndSlidersReachTheRunningEffect) {
    open();
    f.Mecho.Click();
    play();
    fx.cmdecho.userClick();
    EXPECT_EQ(fx.Echo.chkPan.value(), 1);
    EXPECT_EQ(fx.Echo.sldLeft.value(), 500);
    EXPECT_EQ(recordOf<platform::DSFXEcho>(EffectClass::Echo).lPanDelay, 1);
    fx.Echo.sldLeft.setValue(250);
    EXPECT_EQ(recordOf<platform::DSFXEcho>(EffectClass::Echo).fLeftDelay, 250);
    // The thumb's moving event saves as well as the finished one.
    platform::EffectRecord changed = platform::DSFXEcho{};
    book.SetAllParameters(fx.Echo.fxObject, changed);
    fx.Echo.sldRight.Scroll();
    EXPECT_EQ(recordOf<platform::DSFXEcho>(EffectClass::Echo).fLeftDelay, 250);
}

TEST_F(Effects, ModulationPanelsShowOnlyASine) {
    chainOf({EffectClass::Compressor, EffectClass::Flanger, EffectClass::Chorus});
    platform::EffectRecord tri = platform::DSFXChorus{50, 10, 25, 1.1f, 0, 16, 3};
    book.SetAllParameters(book.GetObjectInPath("GUID_DSFX_STANDARD_CHORUS", 0, "IID_DirectSoundFXChorus"), tri);
    fx.Flanger.SetBuffer(0, &book);
    fx.Flanger.show();
    EXPECT_TRUE(fx.Flanger.optSin.value());
    EXPECT_EQ(recordOf<platform::DSFXFlanger>(EffectClass::Flanger).lWaveform, 1);
    EXPECT_EQ(fx.Flanger.sldFeedback.value(), -50);
    fx.Chorus.SetBuffer(0, &book);
    fx.Chorus.show();
    EXPECT_FALSE(fx.Chorus.optSin.value());
    EXPECT_FALSE(fx.Chorus.optTriangle.value());
    EXPECT_EQ(fx.Chorus.sldDelay.value(), 16);  // the chorus's delay reaches 20
    fx.Chorus.sldDepth.setValue(40);
    EXPECT_EQ(recordOf<platform::DSFXChorus>(EffectClass::Chorus).lWaveform, 0);
    EXPECT_EQ(recordOf<platform::DSFXChorus>(EffectClass::Chorus).fDepth, 40);
}

TEST_F(Effects, GargleDistortionParamEqAndReverbPanels) {
    chainOf({EffectClass::Gargle, EffectClass::Distortion, EffectClass::ParamEq, EffectClass::WavesReverb});
    auto setRecord = [&](EffectClass c, platform::EffectRecord r) {
        book.SetAllParameters(book.GetObjectInPath(platform::classNameOf(c), 0, platform::interfaceNameOf(c)), r);
    };
    // Gargle: 1 is a square, 0 a triangle, anything else leaves the options.
    setRecord(EffectClass::Gargle, platform::DSFXGargle{300, 1});
    fx.Gargle.SetBuffer(0, &book);
    fx.Gargle.show();
    EXPECT_TRUE(fx.Gargle.optSquare.value());
    EXPECT_EQ(fx.Gargle.sldRate.value(), 300);
    fx.Gargle.unload();
    fx.Gargle.optSquare.setValue(false);
    setRecord(EffectClass::Gargle, platform::DSFXGargle{20, 7});
    fx.Gargle.show();
    EXPECT_FALSE(fx.Gargle.optSquare.value() || fx.Gargle.optTriangle.value());
    fx.Gargle.optTriangle.setValue(true);
    EXPECT_EQ(recordOf<platform::DSFXGargle>(EffectClass::Gargle).lWaveShape, 0);

    // Distortion: a slider's value is the field's value, no scaling.
    fx.Distortion.SetBuffer(0, &book);
    fx.Distortion.show();
    EXPECT_EQ(fx.Distortion.sldGain.value(), -18);
    fx.Distortion.sldEdge.setValue(100);
    EXPECT_EQ(recordOf<platform::DSFXDistortion>(EffectClass::Distortion).fEdge, 100);

    // ParamEQ: the two spare sliders take each other's fields, clamped.
    fx.ParamEQ.SetBuffer(0, &book);
    fx.ParamEQ.show();
    EXPECT_EQ(fx.ParamEQ.sldCenter.value(), 8000);
    EXPECT_EQ(fx.ParamEQ.sldBand.value(), 12);
    EXPECT_EQ(fx.ParamEQ.Slider1.value(), 80);
    EXPECT_EQ(fx.ParamEQ.Slider2.value(), 36);
    fx.ParamEQ.sldGain.setValue(-7);
    fx.ParamEQ.Slider3.setValue(-15);  // runs the save, adds nothing of its own
    const auto eq = recordOf<platform::DSFXParamEq>(EffectClass::ParamEq);
    EXPECT_EQ(eq.fGain, -7);
    EXPECT_EQ(eq.fCenter, 8000);
    EXPECT_EQ(eq.fBandwidth, 12);

    // Reverb: the high-frequency ratio is always 0.001.
    setRecord(EffectClass::WavesReverb, platform::DSFXWavesReverb{-3.4f, -10.5f, 1200.6f, 0.5f});
    fx.Waves.SetBuffer(0, &book);
    fx.Waves.show();
    EXPECT_EQ(fx.Waves.sldInGain.value(), -3);
    EXPECT_EQ(fx.Waves.sldReverbMix.value(), -10);  // half to even
    EXPECT_EQ(fx.Waves.sldReverbTime.value(), 1201);
    EXPECT_FLOAT_EQ(recordOf<platform::DSFXWavesReverb>(EffectClass::WavesReverb).fHighFreqRTRatio, 0.001f);
    EXPECT_EQ(recordOf<platform::DSFXWavesReverb>(EffectClass::WavesReverb).fReverbTime, 1201);
}
