#pragma once
// An event loop on the wall clock, for the command line's real-time runs:
// timers fire when their time comes, sleep really waits, and work posted
// from other threads wakes the loop.

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

#include "event_loop.h"
#include "timer_schedule.h"

namespace velaro::ui {

class RealtimeLoop : public EventLoop {
public:
    RealtimeLoop();
    int64_t now() const override;
    void doEvents() override;
    void post(std::function<void()> fn) override;
    void sleep(int64_t ms) override;
    void runUntil(const std::function<bool()>& done) override;
    void timerChanged(Timer& timer) override;
    void timerGone(Timer& timer) override;

    // Runs events until done() holds, waiting at most `tickMs` between looks.
    void run(const std::function<bool()>& done, int64_t tickMs = 5);

private:
    void waitForWork(int64_t maxMs);
    std::chrono::steady_clock::time_point start_;
    TimerSchedule timers_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> posted_;
};

}  // namespace velaro::ui
