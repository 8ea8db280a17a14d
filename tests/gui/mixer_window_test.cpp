// The window's Mixer group: every slider is bound upside down to its mixer
// level, the record input list comes with its menu, the mute box follows
// the mixer.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QComboBox>
#include <QSlider>

#include "core/platform/inert.h"
#include "core/ui/scripted_dialogs.h"
#include "gui/main_window.h"
#include "gui/qt_loop.h"

using namespace velaro;

namespace {

struct KeepingMixer : platform::InertSystemMixer {
    int master = 0, line = 0, record = 0;
    int selected = kMicLine;
    void SetMasterVolume(int v) override { master = v; }
    int MasterVolume() override { return master; }
    void SetRecordVolume(int v) override { record = v; }
    int RecordVolume() override { return record; }
    void SetSelectedLine(int l) override { selected = l; }
    int SelectedLine() override { return selected; }
    void SetLineVolume(int v) override {
        if (selected == kMicLine) line = v;
    }
    void SetLineMute(bool on) override { raiseMuteChange(on); }
};

}  // namespace

TEST(MixerGroup, SlidersActFromTheTopAndTheInputListComesWithItsMenu) {
    gui::QtLoop loop;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt(loop, dialogs);
    platform::InertPlatform inert;
    KeepingMixer mixer;
    platform::Platform p = inert.get();
    p.mixer = &mixer;
    song::frmMain form(rt, p);
    gui::MainWindow window(form);
    window.show();

    auto* micro = qobject_cast<QSlider*>(window.widgetFor("SLDPLAYVOLUME"));
    auto* master = qobject_cast<QSlider*>(window.widgetFor("Sldmastervolume"));
    ASSERT_NE(micro, nullptr);
    ASSERT_NE(master, nullptr);
    EXPECT_EQ(micro->toolTip(), "Micro Level");
    EXPECT_EQ(master->toolTip(), "Volume Output");
    EXPECT_EQ(window.widgetFor("sldInputLevel")->toolTip(), "Record Level");
    EXPECT_EQ(window.widgetFor("Slider4")->toolTip(), "Audio Level");
    micro->setValue(25);
    EXPECT_EQ(mixer.line, 75);
    micro->setValue(0);  // the top of its travel
    EXPECT_EQ(mixer.line, 100);
    master->setValue(30);
    EXPECT_EQ(mixer.master, 70);

    auto* inputs = qobject_cast<QComboBox*>(window.widgetFor("cmbInput"));
    ASSERT_NE(inputs, nullptr);
    EXPECT_FALSE(inputs->isVisible());
    form.inputRec.userClick();
    EXPECT_TRUE(inputs->isVisible());

    auto* mute = qobject_cast<QAbstractButton*>(window.widgetFor("CHKPLAYMUTE"));
    ASSERT_NE(mute, nullptr);
    mixer.SetLineMute(true);
    EXPECT_TRUE(mute->isChecked());
}
