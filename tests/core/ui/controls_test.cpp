#include <gtest/gtest.h>

#include <vector>

#include "core/base/vb_error.h"
#include "core/ui/control_array.h"
#include "core/ui/form.h"
#include "core/ui/scripted_dialogs.h"
#include "core/ui/virtual_loop.h"

using namespace velaro;
using namespace velaro::ui;

namespace {

struct Fixture : ::testing::Test {
    VirtualLoop loop;
    ScriptedDialogs dialogs;
    Runtime rt{loop, dialogs};
    Form form{rt, "frmTest"};
    std::vector<std::string> log;
};

}  // namespace

TEST_F(Fixture, CodeRaisesEventsOnlyWhenTheValueChanges) {
    CheckBox check(&form, "Check1");
    Slider slider(&form, "Slider2", -1, 0, 127);
    ScrollBar scroll(&form, "vscroll1", -1, -10, 10);
    TextBox text(&form, "Text2");
    ListBox list(&form, "List3");
    check.Click = [&] { log.push_back("check " + std::to_string(check.value())); };
    slider.Change = [&] { log.push_back("slider " + std::to_string(slider.value())); };
    scroll.Change = [&] { log.push_back("scroll " + std::to_string(scroll.value())); };
    text.Change = [&] { log.push_back("text " + text.text()); };
    list.Click = [&] { log.push_back("list " + list.text()); };
    list.addItem("a");
    list.addItem("b");

    check.setValue(1);
    check.setValue(1);
    slider.setValue(90);
    slider.setValue(90);
    slider.setValue(500);  // clamped to the range
    scroll.setValue(-10);  // already there: no event
    scroll.setValue(3);
    scroll.setValue(3);
    text.setText("x");
    text.setText("x");
    list.setListIndex(1);
    list.setListIndex(1);
    EXPECT_EQ(log, (std::vector<std::string>{"check 1", "slider 90", "slider 127", "scroll 3",
                                             "text x", "list b"}));
    EXPECT_THROW(scroll.setValue(11), VbError);  // scroll bars do not clamp
    EXPECT_THROW(check.setValue(3), VbError);
    EXPECT_THROW(list.setListIndex(2), VbError);
    EXPECT_EQ(list.list(7), "");
}

TEST_F(Fixture, OptionButtonsClearTheirGroupWithoutEvents) {
    ControlArray<OptionButton> opts(&form, "Option1", 3);
    OptionButton other(&form, "Option9", -1, /*group=*/1);
    opts.bind(&OptionButton::Click, [&](int i) { log.push_back("opt " + std::to_string(i)); });
    other.setValue(true);
    opts(0).setValue(true);
    opts(2).setValue(true);
    opts(2).setValue(true);  // already on: nothing
    opts(2).setValue(false);  // going off raises nothing
    EXPECT_EQ(log, (std::vector<std::string>{"opt 0", "opt 2"}));
    EXPECT_FALSE(opts(0).value());
    EXPECT_TRUE(other.value());  // another group is left alone
}

TEST_F(Fixture, HandlersChainThroughControlsTheyChange) {
    // A check box handler that moves a slider triggers the slider's own handler.
    ControlArray<Slider> sliders(&form, "Slider2", 2, 0, 127);
    ControlArray<CheckBox> checks(&form, "Check1", 2);
    checks.bind(&CheckBox::Click, [&](int c) {
        sliders(c).setValue(checks(c).value() ? 100 : 0);
        sliders(c).setEnabled(checks(c).value() == 1);
    });
    sliders.bind(&Slider::Change,
                 [&](int c) { log.push_back(std::to_string(c) + "=" + std::to_string(sliders(c).value())); });
    checks(1).setValue(1);
    checks(1).userClick();
    EXPECT_EQ(log, (std::vector<std::string>{"1=100", "1=0"}));
    EXPECT_FALSE(sliders(1).enabled());
    EXPECT_THROW(sliders(5), VbError);
    EXPECT_EQ(form.control("Slider2", 1), &sliders(1));
}

TEST_F(Fixture, ListKeepsSelectionThroughEdits) {
    ListBox l(&form, "lst");
    l.addItem("b");
    l.addItem("c");
    l.setListIndex(1);
    l.addItem("a", 0);
    EXPECT_EQ(l.listIndex(), 2);
    EXPECT_EQ(l.text(), "c");
    l.removeItem(2);
    EXPECT_EQ(l.listIndex(), -1);
    l.sorted = true;
    l.addItem("aa");
    EXPECT_EQ(l.list(1), "aa");
}

TEST(Dialogs, ScriptedAnswersAndDefaults) {
    ScriptedDialogs d;
    EXPECT_EQ(d.msgBox("q", vbYesNo | vbDefaultButton2, "T"), vbNo);
    EXPECT_EQ(d.msgBox("q", vbYesNoCancel, "T"), vbYes);
    EXPECT_EQ(d.msgBox("q", vbOKOnly | vbExclamation, "T"), vbOK);
    d.answerMsgBox(vbCancel);
    d.answerFile("/x/song.kar", 2);
    EXPECT_EQ(d.msgBox("sure?", vbOKCancel, "VELARO"), vbCancel);
    auto r = d.showOpen({"Open Song File", "Kar File (*.kar)|*.kar"});
    EXPECT_FALSE(r.cancelled);
    EXPECT_EQ(r.fileName, "/x/song.kar");
    EXPECT_TRUE(d.showOpen({}).cancelled);  // queue empty: cancel
    ASSERT_EQ(d.messageBoxes().size(), 4u);
    EXPECT_EQ(d.messageBoxes()[3].text, "sure?");
    EXPECT_EQ(d.messageBoxes()[3].title, "VELARO");
}
