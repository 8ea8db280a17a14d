#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "core/ui/form.h"
#include "core/ui/recording_canvas.h"
#include "core/ui/scripted_dialogs.h"
#include "core/ui/virtual_loop.h"

using namespace velaro::ui;

namespace {

struct LoopFixture : ::testing::Test {
    VirtualLoop loop;
    ScriptedDialogs dialogs;
    Runtime rt{loop, dialogs};
    Form main{rt, "frmMain"};
    std::vector<std::string> log;
    void note(const std::string& what) { log.push_back(std::to_string(loop.now()) + " " + what); }
    void SetUp() override { main.load(); }
};

class CancellingForm : public Form {
public:
    using Form::Form;
    bool refuse = true;

protected:
    void Form_QueryUnload(int& cancel) override { cancel = refuse ? 1 : 0; }
};

}  // namespace

TEST_F(LoopFixture, TimersFireInTimeOrderAtTheirIntervals) {
    Timer fast(&main, "Timer", 10, true);
    Timer slow(&main, "Timer1", 25, true);
    fast.Tick = [&] { note("fast"); };
    slow.Tick = [&] { note("slow"); };
    fast.formStateChanged();
    slow.formStateChanged();
    loop.advance(50);
    EXPECT_EQ(log, (std::vector<std::string>{"10 fast", "20 fast", "25 slow", "30 fast", "40 fast",
                                             "50 fast", "50 slow"}));
    log.clear();
    slow.setEnabled(false);
    fast.setInterval(100);  // a new interval starts the count again
    loop.advance(150);
    EXPECT_EQ(log, (std::vector<std::string>{"150 fast"}));
}

TEST_F(LoopFixture, TimersStopWithTheirFormAndDoNotReenter) {
    Form other(rt, "frmOther");
    Timer t(&other, "tmr", 10, true);
    t.Tick = [&] { note("tick"); };
    loop.advance(30);
    EXPECT_TRUE(log.empty());  // not loaded yet
    other.load();
    loop.advance(20);
    other.unload();
    loop.advance(50);
    EXPECT_EQ(log, (std::vector<std::string>{"40 tick", "50 tick"}));

    // A tick that lets events run is not entered again by its own timer.
    log.clear();
    int depth = 0, maxDepth = 0;
    Timer busy(&main, "Timer", 10, true);
    busy.Tick = [&] {
        maxDepth = std::max(maxDepth, ++depth);
        for (int i = 0; i < 35; ++i) loop.doEvents();
        --depth;
    };
    busy.formStateChanged();
    loop.advance(100);
    EXPECT_EQ(maxDepth, 1);
}

TEST_F(LoopFixture, DoEventsInAHandlerWaitsForAFlagATimerRaises) {
    bool flag = false;
    Timer raiser(&main, "Timer2", 300, true);
    raiser.Tick = [&] {
        flag = true;
        note("raised");
    };
    raiser.formStateChanged();
    CommandButton rec(&main, "cmdrec");
    rec.Click = [&] {
        note("waiting");
        while (!flag) loop.doEvents();
        note("done");
    };
    loop.at(100, [&] { rec.userClick(); });
    loop.advance(1000);
    EXPECT_EQ(log, (std::vector<std::string>{"100 waiting", "300 raised", "300 done", "600 raised",
                                             "900 raised"}));
}

TEST_F(LoopFixture, SleepRunsNoTimersAndMissedTicksAreNotQueued) {
    Timer t(&main, "Timer", 10, true);
    t.Tick = [&] { note("tick"); };
    t.formStateChanged();
    int64_t rendered = 0;
    loop.attachAudio([&](int64_t frames) { rendered += frames; }, 44100);
    loop.at(5, [&] {
        loop.sleep(100);
        note("woke");
    });
    loop.advance(120);
    EXPECT_EQ(log, (std::vector<std::string>{"105 woke", "105 tick", "110 tick", "120 tick"}));
    EXPECT_EQ(rendered, 44100 * 120 / 1000);  // audio goes on through the sleep
}

TEST_F(LoopFixture, NestedModalFormsReturnInOrder) {
    Form a(rt, "frmA"), b(rt, "frmB");
    loop.at(10, [&] {
        note("b shows");
        b.showModal();
        note("b returned");
    });
    loop.at(20, [&] { b.hide(); });
    loop.at(30, [&] { a.unload(); });
    note("a shows");
    a.showModal();
    note("a returned");
    EXPECT_EQ(log, (std::vector<std::string>{"0 a shows", "10 b shows", "20 b returned", "30 a returned"}));
    EXPECT_TRUE(b.loaded());
    EXPECT_FALSE(b.visible());
}

TEST_F(LoopFixture, AModalLoopThatCanNeverEndIsReported) {
    Form a(rt, "frmA");
    EXPECT_THROW(a.showModal(), LoopStalled);
}

TEST_F(LoopFixture, UnloadOthersKeepsTheMainFormAndRespectsCancel) {
    Form a(rt, "frmA"), b(rt, "frmB");
    CancellingForm stubborn(rt, "frmStubborn");
    a.show();
    stubborn.show();
    b.load();
    ASSERT_EQ(rt.forms.loaded().size(), 4u);
    rt.forms.unloadOthers(main);
    EXPECT_TRUE(main.loaded());
    EXPECT_FALSE(a.loaded());
    EXPECT_FALSE(b.loaded());
    EXPECT_TRUE(stubborn.loaded());
    stubborn.refuse = false;
    rt.forms.unloadOthers(main);
    EXPECT_EQ(rt.forms.loaded(), (std::vector<Form*>{&main}));
}

TEST_F(LoopFixture, WorkPostedFromAnotherThreadRunsOnTheLoop) {
    std::thread worker([&] {
        for (int i = 0; i < 100; ++i) loop.post([&] { log.push_back("p"); });
    });
    worker.join();
    EXPECT_TRUE(log.empty());
    loop.doEvents();
    EXPECT_EQ(log.size(), 100u);
}

TEST(Canvas, RecordsPrintsWithFixedMetrics) {
    RecordingCanvas c(100, 200);
    c.foreColor = 0xFF;
    c.print("ab", false);
    c.print("c", true);
    EXPECT_EQ(c.currentX, 0);
    EXPECT_EQ(c.currentY, 200);
    c.cls();
    c.currentX = 50;
    c.print("xyz", false);
    auto p = c.printsSinceCls();
    ASSERT_EQ(p.size(), 1u);
    EXPECT_EQ(p[0].text, "xyz");
    EXPECT_EQ(p[0].x, 50);
    EXPECT_EQ(c.currentX, 350);
    EXPECT_EQ(c.textWidth("abcd"), 400);
}
