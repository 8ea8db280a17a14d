#pragma once
// An event loop on a virtual clock, for tests and the command line. Time moves
// only when told: advance() fires due timers in time order and runs scripted
// user actions at their times; doEvents() inside a handler moves the clock one
// step; sleep() moves it without running anything. Audio, when attached, is
// rendered offline for the frames each move covers. The same script gives the
// same result every run.

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "event_loop.h"
#include "timer_schedule.h"

namespace velaro::ui {

// A nested loop that nothing could ever end: no timer, action or posted event is left.
class LoopStalled : public std::runtime_error {
public:
    LoopStalled() : std::runtime_error("event loop waits for something that can never happen") {}
};

class VirtualLoop : public EventLoop {
public:
    explicit VirtualLoop(int64_t stepMs = 1) : stepMs_(stepMs) {}

    int64_t now() const override { return now_; }
    void doEvents() override;
    void post(std::function<void()> fn) override;
    void sleep(int64_t ms) override;
    void runUntil(const std::function<bool()>& done) override;
    void timerChanged(Timer& timer) override;
    void timerGone(Timer& timer) override;

    // Runs everything due in the next `ms` milliseconds, then stands at now + ms.
    void advance(int64_t ms);
    // Runs until done() holds or `limitMs` of virtual time has passed; says whether done() held.
    bool advanceUntil(const std::function<bool()>& done, int64_t limitMs);
    // A user action at an absolute virtual time (a past time runs at the next chance).
    void at(int64_t timeMs, std::function<void()> action);
    size_t pendingActions() const { return actions_.size(); }

    // Offline audio: render(frames) is called for the frames each clock move covers.
    void attachAudio(std::function<void(int64_t frames)> render, int sampleRate);
    int64_t framesRendered() const { return framesDone_; }

private:
    void runPosted();
    bool anythingScheduled() const;
    // Fires what is due up to `target` in time order, then moves the clock there.
    void stepTo(int64_t target);
    void moveClock(int64_t t);

    int64_t stepMs_;
    int64_t now_ = 0;
    TimerSchedule timers_;
    std::multimap<int64_t, std::function<void()>> actions_;
    std::mutex postMutex_;
    std::deque<std::function<void()>> posted_;
    std::function<void(int64_t)> render_;
    int sampleRate_ = 0;
    int64_t framesDone_ = 0;
};

}  // namespace velaro::ui
